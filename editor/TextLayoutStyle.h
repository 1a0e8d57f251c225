#pragma once

#include <QFont>

namespace penwick {

/// How text is laid out. Lengths are logical pixels.
struct TextLayoutStyle
{
    QFont font;
    QString emojiFamily;   ///< The one among the font's families for emoji; empty without one.
    qreal width = 0;       ///< Rows wrap here.
    qreal tabWidth = 0;    ///< Distance of tab stops.
    qreal columnWidth = 0; ///< Of one ASCII character.
    qreal rowHeight = 1;
    qreal ascent = 1; ///< From a row's top to its baseline.
};

/// The style of rows `width` wide, all of a height that Latin and Japanese characters fit in alike.
[[nodiscard]] TextLayoutStyle makeTextLayoutStyle(const QFont &font, qreal width);

} // namespace penwick

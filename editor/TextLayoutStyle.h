#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace penwick {

/// How text is laid out. Lengths are logical pixels.
struct TextLayoutStyle
{
    QFont font;
    qreal width = 0;    ///< Rows wrap here.
    qreal tabWidth = 0; ///< Distance of tab stops.
    qreal rowHeight = 1;
    qreal ascent = 1;                ///< From a row's top to its baseline.
    QColor substitutes;              ///< Colour of the signs drawn for control characters.
    bool hasControlPictures = false; ///< Some font has signs of their own for them.
};

/// The style of rows `width` wide, all of a height that Latin and Japanese characters fit in alike.
[[nodiscard]] TextLayoutStyle
makeTextLayoutStyle(const QFont &font, const QPalette &palette, qreal width);

} // namespace penwick

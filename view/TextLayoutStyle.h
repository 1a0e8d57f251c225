#pragma once

#include <QFont>

namespace penwick {

/// Which blanks and line ends have a mark. Characters that have no glyph always have one.
enum class ShownMarks {
    None,
    Blanks, ///< Tabs, U+3000 and the blanks at the ends of lines.
    All,    ///< These, every space, LF and CR LF.
};

/// How text is laid out. Lengths are logical pixels.
struct TextLayoutStyle
{
    QFont font;
    QString emojiFamily;   ///< The emoji family among the font's families; empty if there is none.
    qreal width = 0;       ///< Rows wrap here, if they do.
    qreal tabWidth = 0;    ///< Distance of tab stops.
    qreal columnWidth = 0; ///< Of one ASCII character.
    qreal rowHeight = 1;
    qreal ascent = 1;     ///< From a row's top to its baseline.
    qreal spaceAbove = 0; ///< Of a row, above the height that the font needs.
    qreal spaceBelow = 0;
    ShownMarks shownMarks = ShownMarks::None;
    bool wraps = true;  ///< False: a segment is one row, whatever its width.
    int wrapColumn = 0; ///< Most columns in a row, if the window does not limit it; else 0.

    bool operator==(const TextLayoutStyle &) const = default;
};

/// Makes the rows higher, with the text in their middle.
/// \param percent of the height, 100 or more.
void addLineSpacing(TextLayoutStyle &style, int percent);

/// Returns the style for rows `width` wide. The row height suits Latin and Japanese characters
/// alike.
/// \param tabWidth the distance of tab stops in columns.
[[nodiscard]] TextLayoutStyle makeTextLayoutStyle(const QFont &font, qreal width, int tabWidth);

} // namespace penwick

#pragma once

#include <QColor>
#include <QPalette>

namespace penwick {

/// The colours of lines and of their numbers, made for one palette. Text keeps a readable contrast
/// (4.5, see `contrastRatio`) on each background, as far as the palette's own colours have one.
struct LineColors
{
    explicit LineColors(const QPalette &palette);

    QColor lineNumber;  ///< Of a line without the caret; readable on the plain background.
    QColor currentLine; ///< Behind the line of the caret.
    QColor errorLine;   ///< Behind a line with an error.
    QColor errorSign;
};

} // namespace penwick

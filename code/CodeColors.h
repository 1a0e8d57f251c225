#pragma once

#include "code/JavaScriptTokens.h"
#include "controls/ColorContrast.h" // IWYU pragma: export
#include "view/LineColors.h"

#include <QColor>
#include <QPalette>

namespace penwick {

/// The colours for code, made for one palette. They have a readable contrast (4.5, see
/// `contrastRatio`) on the plain background and on a line with an error. On the marks of the find
/// bar the contrast is at least 3.0: the marks are temporary, and colours that are readable there
/// too would hardly differ from each other. Where no mixture reaches the contrast, the palette's
/// text colour is used.
struct CodeColors : LineColors
{
    explicit CodeColors(const QPalette &palette);

    /// Returns the colour of a token; invalid for kinds that look like plain text.
    [[nodiscard]] QColor colorOf(JavaScriptToken::Kind kind) const;

    QColor comment;
    QColor string;
    QColor regularExpression;
    QColor number; ///< Also of constants.
    QColor keyword;
};

} // namespace penwick

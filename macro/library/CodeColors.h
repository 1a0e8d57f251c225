#pragma once

#include "macro/library/JavaScriptTokens.h"

#include <QColor>
#include <QPalette>

namespace penwick {

/// The colours that code is shown in, made for one palette. Whatever carries meaning is readable on
/// every background that code can have: plain, marked by the find bar, and in a line with an error.
/// Where the palette's text colour itself is not, nothing else can be.
struct CodeColors
{
    explicit CodeColors(const QPalette &palette);

    /// Of a token; invalid for the kinds that look like plain text.
    [[nodiscard]] QColor colorOf(JavaScriptToken::Kind kind) const;

    QColor comment;
    QColor string;
    QColor regularExpression;
    QColor number; ///< Also of constants.
    QColor keyword;
    QColor lineNumber;
    QColor errorLine; ///< Behind the text.
    QColor errorSign;
};

/// How much two colours differ in lightness, 1 to 21, as the accessibility guidelines for the web
/// measure it. They ask for 4.5 between text and what is behind it.
[[nodiscard]] double contrastRatio(const QColor &a, const QColor &b);

} // namespace penwick

#pragma once

#include "macro/library/JavaScriptTokens.h"

#include <QColor>
#include <QPalette>

namespace penwick {

/// The colours that code is shown in, made for one palette. They are readable (4.5, see below),
/// also in a line with an error. On what the find bar marks they can be made out at least (3.0):
/// marks pass, and colours that suit them as well would hardly differ from each other. Where the
/// palette's text colour itself cannot be read, nothing else can be.
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

#include "code/CodeColors.h"

#include "view/TextViewPainter.h"

#include <algorithm>

namespace penwick {

namespace {

constexpr double kReadable = 4.5;
constexpr double kDiscernible = 3;

/// A colour behind text, and the least contrast of the text to it.
struct Background
{
    QColor color;
    double contrast = kReadable;
};

/// Mixes `wish` with the text's colour, as little as needed to be readable on all backgrounds.
/// Falls back to the text's colour.
QColor readable(const QColor &wish, const QColor &text, const QList<Background> &backgrounds)
{
    constexpr int kSteps = 20;
    for (int step = 0; step < kSteps; ++step) {
        const QColor color = mixedColor(wish, text, static_cast<double>(step) / kSteps);
        const bool isReadable =
            std::all_of(backgrounds.begin(), backgrounds.end(), [&](const Background &b) {
                return contrastRatio(color, b.color) >= b.contrast;
            });
        if (isReadable)
            return color;
    }
    return text;
}

} // namespace

CodeColors::CodeColors(const QPalette &palette)
    : LineColors(palette)
{
    const QColor text = palette.color(QPalette::Active, QPalette::Text);
    const QColor base = palette.color(QPalette::Active, QPalette::Base);
    const bool isDark = contrastRatio(text, Qt::black) > contrastRatio(base, Qt::black);
    const QList<Background> backgrounds{
        {base}, {errorLine}, {textMarkColor(palette), kDiscernible}};
    const auto inText = [&](const QColor &wish) { return readable(wish, text, backgrounds); };
    comment = inText(mixedColor(base, text, 0.5));
    string = inText(isDark ? QColor(152, 206, 130) : QColor(20, 105, 45));
    regularExpression = inText(isDark ? QColor(250, 176, 110) : QColor(160, 68, 0));
    number = inText(isDark ? QColor(130, 190, 255) : QColor(0, 84, 180));
    keyword = inText(isDark ? QColor(212, 150, 235) : QColor(135, 20, 150));
}

QColor CodeColors::colorOf(JavaScriptToken::Kind kind) const
{
    using Kind = JavaScriptToken::Kind;
    switch (kind) {
    case Kind::Comment:
        return comment;
    case Kind::String:
        return string;
    case Kind::RegularExpression:
        return regularExpression;
    case Kind::Number:
    case Kind::Constant:
        return number;
    case Kind::Keyword:
        return keyword;
    case Kind::Identifier:
    case Kind::Punctuation:
        break;
    }
    return {};
}

} // namespace penwick

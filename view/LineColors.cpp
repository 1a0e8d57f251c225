#include "view/LineColors.h"

#include "controls/ColorContrast.h"

namespace penwick {

LineColors::LineColors(const QPalette &palette)
{
    constexpr double kReadable = 4.5;
    const QColor text = palette.color(QPalette::Active, QPalette::Text);
    const QColor base = palette.color(QPalette::Active, QPalette::Base);
    const bool isDark = contrastRatio(text, Qt::black) > contrastRatio(base, Qt::black);
    const QColor red = isDark ? QColor(255, 100, 90) : QColor(200, 20, 30);
    lineNumber = colorWithContrast(mixedColor(base, text, 0.4), text, base, kReadable);
    const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
    currentLine =
        colorWithContrast(mixedColor(base, highlight, isDark ? 0.16 : 0.1), base, text, kReadable);
    errorLine = mixedColor(base, red, isDark ? 0.22 : 0.14);
    errorSign = colorWithContrast(red, text, base, kReadable);
}

} // namespace penwick

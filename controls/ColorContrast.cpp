#include "controls/ColorContrast.h"

#include "controls/SidebarDelegate.h"

#include <algorithm>
#include <cmath>

namespace penwick {

namespace {

constexpr int kSteps = 20;
constexpr double kReadable = 4.5;

double luminance(const QColor &color)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

} // namespace

double contrastRatio(const QColor &a, const QColor &b)
{
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor mixedColor(const QColor &a, const QColor &b, double shareOfB)
{
    const auto mix = [shareOfB](int x, int y) {
        return static_cast<int>(std::lround(x + (y - x) * shareOfB));
    };
    return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

QColor
colorWithContrast(const QColor &wish, const QColor &end, const QColor &background, double contrast)
{
    for (int step = 0; step < kSteps; ++step) {
        const QColor color = mixedColor(wish, end, static_cast<double>(step) / kSteps);
        if (contrastRatio(color, background) >= contrast)
            return color;
    }
    return end;
}

QColor readableHighlight(const QPalette &palette, QPalette::ColorGroup group)
{
    const QColor ink = palette.color(group, QPalette::HighlightedText);
    const QColor wish = palette.color(group, QPalette::Highlight);
    const bool isLightInk = contrastRatio(ink, Qt::black) > contrastRatio(ink, Qt::white);
    const QColor end = isLightInk ? Qt::black : Qt::white;
    for (int step = 0; step < kSteps; ++step) {
        const QColor color = mixedColor(wish, end, static_cast<double>(step) / kSteps);
        if (contrastRatio(ink, mixedColor(color, ink, double{kBadgeInkShare})) >= kReadable)
            return color;
    }
    return end;
}

} // namespace penwick

#include "editor/TextLayoutStyle.h"

#include <QFontMetricsF>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace penwick {

namespace {

constexpr int kTabColumns = 4;
constexpr uint kFirstControlPicture = 0x2400;

} // namespace

TextLayoutStyle makeTextLayoutStyle(const QFont &font, const QPalette &palette, qreal width)
{
    QTextLayout probe(QStringLiteral("Ag漢字"), font);
    probe.beginLayout();
    QTextLine line = probe.createLine();
    probe.endLayout();
    const QFontMetricsF metrics(font);
    TextLayoutStyle style;
    style.font = font;
    style.width = std::max<qreal>(1, width);
    style.tabWidth = metrics.horizontalAdvance(u'0') * kTabColumns;
    style.ascent = std::ceil(std::max(metrics.ascent(), line.ascent()));
    style.rowHeight =
        style.ascent + std::ceil(std::max(metrics.descent(), line.descent()) + metrics.leading());
    style.substitutes = palette.color(QPalette::PlaceholderText);
    style.hasControlPictures = metrics.inFontUcs4(kFirstControlPicture);
    return style;
}

} // namespace penwick

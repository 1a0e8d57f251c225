#include "view/TextLayoutStyle.h"

#include <QFontMetricsF>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace penwick {

TextLayoutStyle makeTextLayoutStyle(const QFont &font, qreal width, int tabWidth)
{
    // The ideographic full stop is drawn by the Japanese font, as ideographs are, but has no script
    // of its own. An ideograph would cause another font lookup, even for texts without ideographs.
    QTextLayout probe(QStringLiteral("Ag。"), font);
    probe.beginLayout();
    QTextLine line = probe.createLine();
    probe.endLayout();
    const QFontMetricsF metrics(font);
    TextLayoutStyle style;
    style.font = font;
    const QStringList emoji = font.families().filter(QStringLiteral("emoji"), Qt::CaseInsensitive);
    style.emojiFamily = emoji.value(0);
    style.width = std::max<qreal>(1, width);
    style.columnWidth = metrics.horizontalAdvance(u'0');
    style.tabWidth = style.columnWidth * tabWidth;
    style.ascent = std::ceil(std::max(metrics.ascent(), line.ascent()));
    style.rowHeight =
        style.ascent + std::ceil(std::max(metrics.descent(), line.descent()) + metrics.leading());
    return style;
}

void addLineSpacing(TextLayoutStyle &style, int percent)
{
    constexpr int kWhole = 100;
    const qreal extra = std::round(style.rowHeight * (percent - kWhole) / kWhole);
    style.spaceAbove = std::floor(extra / 2);
    style.spaceBelow = extra - style.spaceAbove;
    style.rowHeight += extra;
    style.ascent += style.spaceAbove;
}

} // namespace penwick

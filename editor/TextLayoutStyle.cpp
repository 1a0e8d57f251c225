#include "editor/TextLayoutStyle.h"

#include <QFontMetricsF>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace penwick {

namespace {

constexpr int kTabColumns = 4;

} // namespace

TextLayoutStyle makeTextLayoutStyle(const QFont &font, qreal width)
{
    // The full stop comes from the font of Japanese, as ideographs do, but belongs to no script of
    // its own: those would have the font looked up once more, also for texts that hold none.
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
    style.tabWidth = style.columnWidth * kTabColumns;
    style.ascent = std::ceil(std::max(metrics.ascent(), line.ascent()));
    style.rowHeight =
        style.ascent + std::ceil(std::max(metrics.descent(), line.descent()) + metrics.leading());
    return style;
}

} // namespace penwick

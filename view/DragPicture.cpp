#include "view/DragPicture.h"

#include "view/TextSegments.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace penwick {

QPixmap dragPicture(const Text &text, const QFont &font, const QPalette &palette, qreal scale)
{
    constexpr qint64 kMostUnits = 60;
    constexpr int kMostWidth = 240;
    constexpr int kMargin = 4;
    const qint64 lineEnd = segments::lineAt(text, 0).end;
    const qint64 end = text.clusterBoundaryAtOrBefore(std::min(lineEnd, kMostUnits));
    QString line = text.slice(0, end).simplified();
    if (end < text.size())
        line += QChar(0x2026);
    const QFontMetrics metrics(font);
    line = metrics.elidedText(line, Qt::ElideRight, kMostWidth);
    const QSize size(metrics.horizontalAdvance(line) + 2 * kMargin, metrics.height() + kMargin);
    QPixmap pixmap(QSize(static_cast<int>(std::ceil(size.width() * scale)),
                         static_cast<int>(std::ceil(size.height() * scale))));
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(palette.color(QPalette::Active, QPalette::Highlight));
    QPainter painter(&pixmap);
    painter.setFont(font);
    painter.setPen(palette.color(QPalette::Active, QPalette::HighlightedText));
    painter.drawText(QRect(QPoint(), size), Qt::AlignCenter | Qt::TextSingleLine, line);
    return pixmap;
}

} // namespace penwick

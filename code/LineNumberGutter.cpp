#include "code/LineNumberGutter.h"

#include "code/CodeColors.h"
#include "view/TextView.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace penwick {

namespace {

constexpr qreal kPadding = 6;
constexpr int kFewestDigits = 2; // So that the text does not move at the tenth line.

} // namespace

LineNumberGutter::LineNumberGutter(TextView *view, QWidget *parent)
    : QWidget(parent)
    , m_view(view)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    setCursor(Qt::ArrowCursor);
    connect(m_view, &TextView::visibleTextDidChange, this, [this] {
        updateWidth();
        update();
    });
}

void LineNumberGutter::setErrorLine(std::optional<qint64> line)
{
    if (line != m_errorLine)
        update();
    m_errorLine = line;
}

qreal LineNumberGutter::signSize() const
{
    return std::round(QFontMetricsF(font()).ascent() * 0.8);
}

QSize LineNumberGutter::sizeHint() const
{
    const qint64 last = m_view->string().metrics().lineFeeds + 1;
    const auto digits = std::max<qsizetype>(kFewestDigits, QString::number(last).size());
    const qreal digit = QFontMetricsF(font()).horizontalAdvance(u'0');
    const qreal width =
        kPadding + signSize() + kPadding / 2 + static_cast<qreal>(digits) * digit + kPadding;
    return {static_cast<int>(std::ceil(width)), 0};
}

void LineNumberGutter::updateWidth()
{
    const int wanted = sizeHint().width();
    if (minimumWidth() != wanted || maximumWidth() != wanted)
        setFixedWidth(wanted);
}

void LineNumberGutter::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), palette().color(QPalette::Base));
    const CodeColors colors(palette());
    const qint64 caretLine = m_view->string().metricsBefore(m_view->caretOffset()).lineFeeds;
    const QFontMetricsF metrics(font());
    for (const TextView::VisibleLine &line : m_view->visibleLines()) {
        if (line.number == m_errorLine) {
            painter.fillRect(QRectF(0, line.top, width(), line.bottom - line.top),
                             colors.errorLine);
            paintSign(painter, line.top, colors.errorSign);
        }
        const bool standsOut = line.number == caretLine || line.number == m_errorLine;
        painter.setPen(standsOut ? palette().color(QPalette::Text) : colors.lineNumber);
        const QString number = QString::number(line.number + 1);
        const qreal left = width() - kPadding - metrics.horizontalAdvance(number);
        painter.drawText(QPointF(left, line.top + m_view->rowAscent()), number);
    }
}

/// Paints a disc with an exclamation mark, so that the sign is recognizable without its colour.
void LineNumberGutter::paintSign(QPainter &painter, qreal top, const QColor &color) const
{
    const qreal size = signSize();
    const QRectF disc(kPadding, top + (m_view->rowHeight() - size) / 2, size, size);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(disc);
    painter.setBrush(palette().color(QPalette::Base));
    const qreal stroke = size * 0.16;
    const QPointF center = disc.center();
    const QRectF bar(center.x() - stroke / 2, disc.top() + size * 0.2, stroke, size * 0.34);
    painter.drawRoundedRect(bar, stroke / 2, stroke / 2);
    painter.drawEllipse(
        QPointF(center.x(), disc.top() + size * 0.72), stroke * 0.62, stroke * 0.62);
    painter.restore();
}

void LineNumberGutter::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateWidth();
}

void LineNumberGutter::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_view->setFocus(Qt::MouseFocusReason);
    const Text &text = m_view->string();
    const qint64 hit = m_view->offsetAt({0, event->pos().y()});
    const qint64 line = text.metricsBefore(hit).lineFeeds;
    const qint64 start = text.offsetAfterLineFeed(line);
    m_view->setSelectedRange({start, text.offsetAfterLineFeed(line + 1) - start});
}

void LineNumberGutter::wheelEvent(QWheelEvent *event)
{
    QCoreApplication::sendEvent(m_view->viewport(), event);
}

} // namespace penwick

#include "view/LineNumberGutter.h"

#include "view/LineColors.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace penwick {

namespace {

constexpr qreal kPadding = 6;

} // namespace

LineNumberGutter::LineNumberGutter(TextView *view, TextView::LineCount count, QWidget *parent)
    : QWidget(parent)
    , m_view(view)
    , m_count(count)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    setCursor(Qt::ArrowCursor);
    followView();
    connect(m_view, &TextView::visibleTextDidChange, this, &LineNumberGutter::followView);
}

void LineNumberGutter::setErrorLine(std::optional<qint64> line)
{
    if (line != m_errorLine)
        update();
    m_errorLine = line;
}

void LineNumberGutter::setMarksCurrentLine(bool marks)
{
    if (marks != m_marksCurrentLine)
        update();
    m_marksCurrentLine = marks;
}

qreal LineNumberGutter::signSize() const
{
    return std::round(QFontMetricsF(font()).ascent() * 0.8);
}

QSize LineNumberGutter::sizeHint() const
{
    // So that the text does not move at the tenth or hundredth line.
    const qsizetype fewestDigits = hasSigns() ? 2 : 3;
    const qint64 lineCount = m_view->lineCount(m_count);
    const auto digits = std::max(fewestDigits, QString::number(lineCount).size());
    const qreal digit = QFontMetricsF(font()).horizontalAdvance(u'0');
    const qreal sign = hasSigns() ? signSize() + kPadding / 2 : 0;
    const qreal width = kPadding + sign + static_cast<qreal>(digits) * digit + kPadding;
    return {static_cast<int>(std::ceil(width)), 0};
}

void LineNumberGutter::followView()
{
    if (font() != m_view->font())
        setFont(m_view->font());
    updateWidth();
    if (std::exchange(m_willCompare, true))
        return;
    // Later, because the view may be in the middle of a change.
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_willCompare = false;
            const qint64 caretLine = m_view->lineAt(m_view->caretOffset(), m_count);
            std::vector<TextView::VisibleLine> lines = m_view->visibleLines(m_count);
            if (std::exchange(m_caretLine, caretLine) != caretLine || lines != m_lines)
                update();
            m_lines = std::move(lines);
        },
        Qt::QueuedConnection);
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
    const LineColors colors(palette());
    const qint64 caretLine = m_view->lineAt(m_view->caretOffset(), m_count);
    for (const TextView::VisibleLine &line : m_view->visibleLines(m_count))
        paintLine(painter, line, colors, line.number == caretLine);
}

void LineNumberGutter::paintLine(QPainter &painter,
                                 const TextView::VisibleLine &line,
                                 const LineColors &colors,
                                 bool hasCaret) const
{
    const QRectF area(0, line.top, width(), line.bottom - line.top);
    if (hasCaret && m_marksCurrentLine)
        painter.fillRect(area, colors.currentLine);
    if (line.number == m_errorLine) {
        painter.fillRect(area, colors.errorLine);
        paintSign(painter, line.top, colors.errorSign);
    }
    const bool standsOut = hasCaret || line.number == m_errorLine;
    painter.setPen(standsOut ? palette().color(QPalette::Text) : colors.lineNumber);
    const QString number = QString::number(line.number + 1);
    const qreal left = width() - kPadding - QFontMetricsF(font()).horizontalAdvance(number);
    painter.drawText(QPointF(left, line.top + m_view->rowAscent()), number);
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

void LineNumberGutter::selectLines(QMouseEvent *event)
{
    // The gutter is as high as the text, so the event has the height of a row.
    if (event->type() == QEvent::MouseButtonPress && event->button() == Qt::LeftButton)
        m_view->setFocus(Qt::MouseFocusReason);
    m_view->selectLines(event);
}

void LineNumberGutter::wheelEvent(QWheelEvent *event)
{
    QCoreApplication::sendEvent(m_view->viewport(), event);
}

} // namespace penwick

#include "window/LineEndMark.h"

#include "controls/VerbatimText.h"
#include "text/LineEnds.h"
#include "window/LineEndCommands.h"
#include "wording/WordingLookup.h"

#include <QKeyEvent>
#include <QStyleOptionFocusRect>
#include <QStylePainter>

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr int kPadding = 4; // Left and right of the text.

QString countLine(const QString &name, qint64 count)
{
    return wording::text(u"status.lineEnds.count"_s, {name, QString::number(count)});
}

/// Returns a line for each kind of line break that the text has.
QStringList countLines(const TextMetrics &metrics)
{
    QStringList lines;
    for (const LineEnd kind : kLineEnds)
        if (const qint64 count = metrics.lineEnds(kind); count > 0)
            lines << countLine(LineEndCommands::name(kind), count);
    if (const qint64 others = metrics.lineBreaks() - metrics.lineEnds(); others > 0)
        lines << countLine(wording::text(u"status.lineEnds.others"_s), others);
    return lines;
}

} // namespace

LineEndMark::LineEndMark(QWidget *parent)
    : QAbstractButton(parent)
{
    // Only Tab moves the focus here; a click leaves it in the text.
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    hide();
}

void LineEndMark::setContent(const Text &text)
{
    const TextMetrics before = m_content.metrics();
    const TextMetrics now = text.metrics();
    m_content = text;
    if (!now.hasMixedLineEnds() && now.lineEnds() > 0)
        m_former = firstLineEnd(text);
    const auto isCountedTheSame = [&](LineEnd kind) {
        return before.lineEnds(kind) == now.lineEnds(kind);
    };
    const bool isSame = before.separators == now.separators &&
                        std::all_of(std::begin(kLineEnds), std::end(kLineEnds), isCountedTheSame);
    if (!isSame)
        redraw();
}

LineEnd LineEndMark::wanted() const
{
    return m_former ? *m_former : mostFrequentLineEnd(m_content);
}

void LineEndMark::redraw()
{
    const TextMetrics metrics = m_content.metrics();
    setVisible(metrics.hasMixedLineEnds());
    if (!metrics.hasMixedLineEnds())
        return;
    m_label = wording::text(u"status.lineEnds.mark"_s);
    setVerbatimText(this, m_label);
    const QString title = wording::text(u"status.lineEnds.mixed"_s);
    const QStringList counts = countLines(metrics);
    const QString hint =
        wording::text(u"status.lineEnds.unify"_s, {LineEndCommands::name(wanted())});
    setToolTip(verbatimToolTip(title + u'\n' + counts.join(u'\n'), hint));
    setAccessibleName(title + u"  "_s + counts.join(u"  "_s));
    setAccessibleDescription(hint);
    updateGeometry();
    update();
}

QSize LineEndMark::sizeHint() const
{
    ensurePolished();
    return {fontMetrics().horizontalAdvance(m_label) + 2 * kPadding, fontMetrics().height()};
}

void LineEndMark::paintEvent(QPaintEvent * /*event*/)
{
    // The mark is as high as a line of the bar, too little for a frame around the text.
    constexpr float kAlpha = 0.15F;
    constexpr float kHoverAlpha = 0.25F;
    constexpr float kDownAlpha = 0.4F;
    constexpr qreal kRadius = 3;
    QStylePainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor ink = palette().color(QPalette::WindowText);
    QColor ground = ink;
    ground.setAlphaF(isDown() ? kDownAlpha : underMouse() ? kHoverAlpha : kAlpha);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(rect(), kRadius, kRadius);
    painter.setPen(ink);
    // The same baseline as the labels beside it.
    const int top = (height() - fontMetrics().height()) / 2;
    painter.drawText(kPadding, top + fontMetrics().ascent(), m_label);
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, option);
    }
}

void LineEndMark::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void LineEndMark::enterEvent(QEnterEvent *event)
{
    QAbstractButton::enterEvent(event);
    update();
}

void LineEndMark::leaveEvent(QEvent *event)
{
    QAbstractButton::leaveEvent(event);
    update();
}

} // namespace penwick

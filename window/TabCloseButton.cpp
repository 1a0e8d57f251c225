#include "window/TabCloseButton.h"

#include <QPainter>
#include <QStyle>

namespace penwick {

TabCloseButton::TabCloseButton(QWidget *parent)
    : QAbstractButton(parent)
{
    // A shortcut closes the tab from the keyboard.
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
    resize(sizeHint());
}

void TabCloseButton::setEdited(bool isEdited)
{
    m_isEdited = isEdited;
    update();
}

QSize TabCloseButton::sizeHint() const
{
    ensurePolished();
    return {style()->pixelMetric(QStyle::PM_TabCloseIndicatorWidth, nullptr, this),
            style()->pixelMetric(QStyle::PM_TabCloseIndicatorHeight, nullptr, this)};
}

void TabCloseButton::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal side = qMin(width(), height());
    QRectF box(0, 0, side, side);
    box.moveCenter(QRectF(rect()).center());
    const QColor ink = palette().color(QPalette::WindowText);
    if (m_isEdited && !underMouse()) {
        const qreal inset = side * 0.3;
        painter.setPen(Qt::NoPen);
        painter.setBrush(ink);
        painter.drawEllipse(box.adjusted(inset, inset, -inset, -inset));
        return;
    }
    if (underMouse()) {
        QColor ground = ink;
        ground.setAlphaF(isDown() ? 0.3F : 0.15F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(ground);
        painter.drawRoundedRect(box, side / 6, side / 6);
    }
    paintCross(painter, box);
}

void TabCloseButton::paintCross(QPainter &painter, const QRectF &box) const
{
    const qreal inset = box.width() * 0.3;
    const QRectF cross = box.adjusted(inset, inset, -inset, -inset);
    QColor ink = palette().color(QPalette::WindowText);
    ink.setAlphaF(underMouse() ? 1.0F : 0.65F);
    painter.setPen(QPen(ink, qMax(1.0, box.width() / 12), Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(cross.topLeft(), cross.bottomRight());
    painter.drawLine(cross.topRight(), cross.bottomLeft());
}

void TabCloseButton::enterEvent(QEnterEvent *event)
{
    QAbstractButton::enterEvent(event);
    update();
}

void TabCloseButton::leaveEvent(QEvent *event)
{
    QAbstractButton::leaveEvent(event);
    update();
}

} // namespace penwick

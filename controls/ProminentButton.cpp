#include "controls/ProminentButton.h"

#include "controls/FocusRing.h"

#include <QPainter>
#include <QStyleOptionButton>

namespace penwick {

ProminentButton::ProminentButton(QWidget *parent)
    : QPushButton(parent)
{
    setAttribute(Qt::WA_Hover);
}

QColor ProminentButton::fillColor() const
{
    constexpr int kHovered = 108; // Percent of the highlight's darkness.
    constexpr int kPressed = 125;
    const QColor highlight = palette().color(QPalette::Active, QPalette::Highlight);
    if (isDown())
        return highlight.darker(kPressed);
    return underMouse() ? highlight.darker(kHovered) : highlight;
}

// Drawn here, for the style makes a button's colour paler than its white text can stand.
void ProminentButton::paintEvent(QPaintEvent *event)
{
    if (!isEnabled()) {
        QPushButton::paintEvent(event);
        return;
    }
    constexpr qreal kRadius = 3;
    const QColor ink = palette().color(QPalette::Active, QPalette::HighlightedText);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fillColor());
    const QRectF frame = QRectF(rect()).adjusted(0, 1, 0, -1);
    painter.drawRoundedRect(frame, kRadius, kRadius);
    if (hasFocus())
        paintFocusRing(&painter, frame.toRect(), ink);
    painter.setPen(ink);
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextShowMnemonic, text());
}

} // namespace penwick

#include "controls/ProminentButton.h"

#include "controls/ColorContrast.h"
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
    constexpr int kHovered = 108; // Factors for QColor::darker, in percent.
    constexpr int kPressed = 125;
    const QColor highlight = readableHighlight(palette());
    if (isDown())
        return highlight.darker(kPressed);
    return underMouse() ? highlight.darker(kHovered) : highlight;
}

// Drawn here, since the style lightens the button's colour so much that its white text has too
// little contrast.
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

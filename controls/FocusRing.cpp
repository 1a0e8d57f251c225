#include "controls/FocusRing.h"

#include "controls/ProminentButton.h"

#include <QApplication>
#include <QPainter>

namespace penwick {

namespace {

/// Covers a button and ignores the mouse, so that the button gets all mouse events.
class Ring final : public QWidget
{
public:
    explicit Ring(QPushButton *button)
        : QWidget(button)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setGeometry(button->rect());
        show();
    }

protected:
    void paintEvent(QPaintEvent * /*event*/) override
    {
        QPainter painter(this);
        paintFocusRing(&painter, rect(), palette().color(QPalette::ButtonText));
    }
};

} // namespace

void paintFocusRing(QPainter *painter, const QRect &rect, const QColor &color)
{
    constexpr qreal kInset = 2.5;
    constexpr qreal kRadius = 2;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(color);
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(
        QRectF(rect).adjusted(kInset, kInset, -kInset, -kInset), kRadius, kRadius);
    painter->restore();
}

DefaultButtonFocus::DefaultButtonFocus(QObject *parent)
    : QObject(parent)
{
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget * /*old*/, QWidget *now) {
        focusChanged(now);
    });
}

void DefaultButtonFocus::focusChanged(QWidget *now)
{
    delete m_ring;
    auto *button = qobject_cast<QPushButton *>(now);
    // A prominent button draws its own ring.
    if (button != nullptr && button->isDefault() && qobject_cast<ProminentButton *>(now) == nullptr)
        m_ring = new Ring(button);
}

} // namespace penwick

#include "window/StatusMessageLabel.h"

#include "controls/VerbatimText.h"
#include "platform/desktop/ContextMenu.h"
#include "view/TextViewMenu.h"
#include "wording/WordingLookup.h"

#include <QAccessibleWidget>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QStyleOptionFocusRect>
#include <QStylePainter>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

/// Adds a press action to the label for assistive technology; Qt's labels have none.
class AccessibleStatusMessage final : public QAccessibleWidget
{
public:
    explicit AccessibleStatusMessage(StatusMessageLabel *label)
        : QAccessibleWidget(label, QAccessible::StaticText)
    {
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? label()->text() : QAccessibleWidget::text(kind);
    }

    [[nodiscard]] QStringList actionNames() const override
    {
        return QStringList{pressAction()} + QAccessibleWidget::actionNames();
    }

    void doAction(const QString &actionName) override
    {
        if (actionName == pressAction())
            label()->dismiss();
        else
            QAccessibleWidget::doAction(actionName);
    }

private:
    [[nodiscard]] StatusMessageLabel *label() const
    {
        return static_cast<StatusMessageLabel *>(widget());
    }
};

QAccessibleInterface *createInterface(const QString & /*className*/, QObject *object)
{
    auto *label = qobject_cast<StatusMessageLabel *>(object);
    return label != nullptr ? new AccessibleStatusMessage(label) : nullptr;
}

} // namespace

StatusMessageLabel::StatusMessageLabel(QWidget *parent)
    : ElidedLabel(parent)
{
    // Installing the same factory again changes nothing.
    QAccessible::installFactory(&createInterface);
    // Only Tab moves the focus here; a click leaves it in the text.
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    setCursor(Qt::PointingHandCursor);
}

void StatusMessageLabel::setMessage(const QString &message)
{
    if (m_message == message)
        return;
    m_message = message;
    setLine(message);
    setToolTip(longToolTip(message));
}

void StatusMessageLabel::copy()
{
    QGuiApplication::clipboard()->setText(m_message);
}

void StatusMessageLabel::contextMenuEvent(QContextMenuEvent *event)
{
    auto *menu = new QMenu(this);
    menu->addAction(textMenuEntry(wording::text(u"menu.edit.copy"_s), QKeySequence::Copy),
                    this,
                    &StatusMessageLabel::copy);
    const bool isByMouse = event->reason() == QContextMenuEvent::Mouse;
    popUpContextMenu(menu, isByMouse ? event->globalPos() : mapToGlobal(rect().topLeft()));
    event->accept();
}

void StatusMessageLabel::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        dismiss();
    event->accept();
}

void StatusMessageLabel::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
    case Qt::Key_Escape:
        dismiss();
        break;
    default:
        ElidedLabel::keyPressEvent(event);
    }
}

void StatusMessageLabel::paintEvent(QPaintEvent *event)
{
    ElidedLabel::paintEvent(event);
    if (hasFocus()) {
        QStylePainter painter(this);
        QStyleOptionFocusRect option;
        option.initFrom(this);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, option);
    }
}

QColor StatusMessageLabel::textColor() const
{
    // Less prominent than the counters but readable; the palette's placeholder colour is too faint.
    constexpr float kSecondaryAlpha = 0.7F;
    QColor color = ElidedLabel::textColor();
    color.setAlphaF(kSecondaryAlpha);
    return color;
}

} // namespace penwick

#include "window/HeldKeys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>
#include <QWindow>

namespace penwick {

HeldKeys::HeldKeys(QWidget *window)
    : m_window(window)
{
}

HeldKeys::~HeldKeys() = default;

void HeldKeys::collect()
{
    const QPointer<HeldKeys> self(this);
    qApp->installEventFilter(this);
    QCoreApplication::processEvents();
    if (!self.isNull())
        qApp->removeEventFilter(this);
}

void HeldKeys::deliver()
{
    QWidget *receiver = m_window.isNull() ? nullptr : m_window->focusWidget();
    for (std::unique_ptr<QKeyEvent> &key : m_keys)
        if (receiver != nullptr)
            QCoreApplication::postEvent(receiver, key.release());
    m_keys.clear();
}

void HeldKeys::hold(const QKeyEvent &key)
{
    const Qt::KeyboardModifiers modifiers =
        key.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
    const bool isText = !key.text().isEmpty() && key.text().front().isPrint();
    if (isText || modifiers == Qt::NoModifier)
        m_keys.emplace_back(key.clone());
    else
        QApplication::beep();
}

bool HeldKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (m_window.isNull())
        return false;
    const auto *widget = qobject_cast<const QWidget *>(watched);
    if (event->type() == QEvent::ShortcutOverride && widget && widget->window() == m_window) {
        event->accept(); // A key, not a shortcut.
        return true;
    }
    if (watched != m_window->windowHandle())
        return false;
    switch (event->type()) {
    case QEvent::KeyPress:
        hold(*static_cast<QKeyEvent *>(event));
        return true;
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
        return true;
    default:
        return false;
    }
}

} // namespace penwick

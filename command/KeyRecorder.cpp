#include "command/KeyRecorder.h"

#include "command/ReadablePlaceholder.h"

#include <QKeyEvent>

namespace penwick {

namespace {

bool isModifier(int key)
{
    return key == Qt::Key_Control || key == Qt::Key_Shift || key == Qt::Key_Alt ||
           key == Qt::Key_Meta || key == Qt::Key_AltGr || key == Qt::Key_Super_L ||
           key == Qt::Key_Super_R || key == Qt::Key_CapsLock || key == Qt::Key_unknown || key == 0;
}

/// True for keys that leave the field.
bool isPassedOn(const QKeyEvent &event)
{
    const bool isPlain = (event.modifiers() & ~Qt::ShiftModifier) == 0;
    return isPlain && (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab ||
                       event.key() == Qt::Key_Escape);
}

} // namespace

KeyRecorder::KeyRecorder(QWidget *parent)
    : QLineEdit(parent)
{
    setReadOnly(true);
    setContextMenuPolicy(Qt::NoContextMenu);
    makePlaceholderReadable(this);
}

void KeyRecorder::setKey(const QKeySequence &key)
{
    setText(key.toString(QKeySequence::NativeText));
}

bool KeyRecorder::event(QEvent *event)
{
    // Otherwise a shortcut of the window would take the key.
    if (event->type() == QEvent::ShortcutOverride &&
        !isPassedOn(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    return QLineEdit::event(event);
}

void KeyRecorder::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        makePlaceholderReadable(this);
    QLineEdit::changeEvent(event);
}

void KeyRecorder::keyPressEvent(QKeyEvent *event)
{
    if (isPassedOn(*event)) {
        event->ignore();
        return;
    }
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const bool isErasing = event->key() == Qt::Key_Backspace || event->key() == Qt::Key_Delete;
    if (isErasing && modifiers == Qt::NoModifier)
        Q_EMIT keyPressed({});
    else if (!isModifier(event->key()))
        Q_EMIT keyPressed(QKeyCombination(modifiers, static_cast<Qt::Key>(event->key())));
}

} // namespace penwick

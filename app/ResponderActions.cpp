#include "app/ResponderActions.h"

#include "view/TextView.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMenuBar>
#include <QMetaMethod>
#include <QMimeData>
#include <QPointer>
#include <QVariant>
#include <QWidget>

#include <optional>

namespace penwick {

namespace {

constexpr char kFormerFocus[] = "formerFocus"; // A property of a menu bar.

const char *operationName(MenuCommand command)
{
    switch (command) {
    case MenuCommand::Undo:
        return "undo";
    case MenuCommand::Redo:
        return "redo";
    case MenuCommand::Cut:
        return "cut";
    case MenuCommand::Copy:
        return "copy";
    case MenuCommand::Paste:
        return "paste";
    default:
        return nullptr;
    }
}

struct Responder
{
    QWidget *widget;
    QMetaMethod operation;
};

QWidget *firstResponder()
{
    QWidget *focus = QApplication::focusWidget();
    return qobject_cast<QMenuBar *>(focus) != nullptr
               ? focus->property(kFormerFocus).value<QPointer<QWidget>>().data()
               : focus;
}

std::optional<Responder> findResponder(MenuCommand command)
{
    const QByteArray signature = QByteArray(operationName(command)) + "()";
    for (QWidget *widget = firstResponder(); widget != nullptr; widget = widget->parentWidget()) {
        const int index = widget->metaObject()->indexOfMethod(signature.constData());
        if (index >= 0)
            return Responder{widget, widget->metaObject()->method(index)};
        if (widget->isWindow())
            break;
    }
    return std::nullopt;
}

bool clipboardHasText()
{
    const QMimeData *data = QApplication::clipboard()->mimeData();
    return data != nullptr && data->hasText();
}

bool canPerform(const TextView &view, MenuCommand command)
{
    switch (command) {
    case MenuCommand::Undo:
        return view.textStorage()->canUndo();
    case MenuCommand::Redo:
        return view.textStorage()->canRedo();
    case MenuCommand::Cut:
    case MenuCommand::Copy:
        return view.selectedRange().length > 0;
    default:
        return view.canPaste();
    }
}

bool canPerform(const QLineEdit &field, MenuCommand command)
{
    switch (command) {
    case MenuCommand::Undo:
        return field.isUndoAvailable();
    case MenuCommand::Redo:
        return field.isRedoAvailable();
    case MenuCommand::Cut:
        return field.hasSelectedText() && !field.isReadOnly();
    case MenuCommand::Copy:
        return field.hasSelectedText();
    default:
        return !field.isReadOnly() && clipboardHasText();
    }
}

} // namespace

bool isResponderCommand(MenuCommand command)
{
    return operationName(command) != nullptr;
}

void rememberFocusBefore(QMenuBar *bar)
{
    QObject::connect(qApp, &QApplication::focusChanged, bar, [bar](QWidget *before, QWidget *now) {
        if (now == bar)
            bar->setProperty(kFormerFocus, QVariant::fromValue(QPointer<QWidget>(before)));
    });
}

void performResponderCommand(MenuCommand command)
{
    if (const auto responder = findResponder(command))
        responder->operation.invoke(responder->widget, Qt::DirectConnection);
}

bool canPerformResponderCommand(MenuCommand command)
{
    const auto responder = findResponder(command);
    if (!responder)
        return false;
    if (const auto *view = qobject_cast<const TextView *>(responder->widget))
        return canPerform(*view, command);
    if (const auto *field = qobject_cast<const QLineEdit *>(responder->widget))
        return canPerform(*field, command);
    return true;
}

} // namespace penwick

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

const char *operationName(CommandId command)
{
    switch (command) {
    case CommandId::Undo:
        return "undo";
    case CommandId::Redo:
        return "redo";
    case CommandId::Cut:
        return "cut";
    case CommandId::Copy:
        return "copy";
    case CommandId::Paste:
        return "paste";
    case CommandId::SelectAll:
        return "selectAll";
    case CommandId::Deselect:
        return "deselect";
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

std::optional<Responder> findResponder(CommandId command)
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

bool canPerform(const TextView &view, CommandId command)
{
    switch (command) {
    case CommandId::Undo:
        return view.textStorage()->canUndo();
    case CommandId::Redo:
        return view.textStorage()->canRedo();
    case CommandId::Cut:
        return view.selectedRange().length > 0 && !view.isReadOnly();
    case CommandId::Copy:
        return view.hasSelection();
    case CommandId::SelectAll:
        return view.selectedRange().length < view.textStorage()->length();
    case CommandId::Deselect:
        return view.hasSelection() || view.columns() != nullptr;
    default:
        return view.canPaste();
    }
}

bool canPerform(const QLineEdit &field, CommandId command)
{
    switch (command) {
    case CommandId::Undo:
        return field.isUndoAvailable();
    case CommandId::Redo:
        return field.isRedoAvailable();
    case CommandId::Cut:
        return field.hasSelectedText() && !field.isReadOnly();
    case CommandId::Copy:
        return field.hasSelectedText();
    case CommandId::SelectAll:
        return !field.text().isEmpty();
    default:
        return !field.isReadOnly() && clipboardHasText();
    }
}

} // namespace

bool isResponderCommand(CommandId command)
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

void performResponderCommand(CommandId command)
{
    if (const auto responder = findResponder(command))
        responder->operation.invoke(responder->widget, Qt::DirectConnection);
}

bool canPerformResponderCommand(CommandId command)
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

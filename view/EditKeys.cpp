#include "view/EditKeys.h"

#include <QKeySequence>

namespace penwick {

namespace {

struct Binding
{
    QKeySequence::StandardKey key;
    EditCommand command;
};

constexpr Binding kBindings[] = {
    {QKeySequence::Undo, EditCommand::Undo},
    {QKeySequence::Redo, EditCommand::Redo},
    {QKeySequence::Cut, EditCommand::Cut},
    {QKeySequence::Copy, EditCommand::Copy},
    {QKeySequence::Paste, EditCommand::Paste},
    {QKeySequence::SelectAll, EditCommand::SelectAll},
    {QKeySequence::Deselect, EditCommand::Deselect},
    {QKeySequence::Backspace, EditCommand::DeleteBackward},
    {QKeySequence::Delete, EditCommand::DeleteForward},
    {QKeySequence::DeleteStartOfWord, EditCommand::DeleteWordBackward},
    {QKeySequence::DeleteEndOfWord, EditCommand::DeleteWordForward},
    {QKeySequence::DeleteEndOfLine, EditCommand::DeleteToLineEnd},
    {QKeySequence::DeleteCompleteLine, EditCommand::DeleteLine},
};

} // namespace

std::optional<EditCommand> editCommandFor(const QKeyEvent &event)
{
    for (const Binding &binding : kBindings)
        if (event.matches(binding.key))
            return binding.command;
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const bool isPlainOrShifted = (modifiers & ~Qt::ShiftModifier) == 0;
    // Shift may still be held from typing: it does not change Backspace and Return.
    if (event.key() == Qt::Key_Backspace && isPlainOrShifted)
        return EditCommand::DeleteBackward;
    if ((event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter) && isPlainOrShifted)
        return EditCommand::InsertLineEnd;
    if (event.key() == Qt::Key_Tab && modifiers == Qt::NoModifier)
        return EditCommand::InsertTab;
    return std::nullopt;
}

bool isTextInput(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    // Some keyboard layouts use Control with Alt for third-level characters.
    const bool isCommand =
        modifiers.testFlag(Qt::ControlModifier) != modifiers.testFlag(Qt::AltModifier) ||
        modifiers.testFlag(Qt::MetaModifier);
    if (event.text().isEmpty() || isCommand)
        return false;
    const QChar first = event.text().at(0);
    // Persian keyboard layouts enter zero-width joiners and non-joiners (format characters), and
    // custom layouts may enter private-use characters.
    return first.isPrint() || first.isHighSurrogate() || first.category() == QChar::Other_Format ||
           first.category() == QChar::Other_PrivateUse;
}

} // namespace penwick

#pragma once

#include <QKeyEvent>

#include <optional>

namespace penwick {

/// The editing commands that a key press can trigger.
enum class EditCommand {
    Undo,
    Redo,
    Cut,
    Copy,
    Paste,
    SelectAll,
    Deselect,
    InsertLineEnd,
    InsertTab,
    DeleteSelection, ///< Has no key of its own.
    DeleteBackward,
    DeleteForward,
    DeleteWordBackward,
    DeleteWordForward,
    DeleteToLineEnd,
    DeleteLine
};

/// False for the commands that a text allows that cannot be changed.
[[nodiscard]] constexpr bool changesText(EditCommand command)
{
    return command != EditCommand::Copy && command != EditCommand::SelectAll &&
           command != EditCommand::Deselect;
}

/// Returns the command of a key press: one that the platform binds to it, or Backspace, Return,
/// Enter or Tab. None for other keys.
[[nodiscard]] std::optional<EditCommand> editCommandFor(const QKeyEvent &event);

/// True when a key press enters its text and is no command.
[[nodiscard]] bool isTextInput(const QKeyEvent &event);

} // namespace penwick

#pragma once

#include <QKeyEvent>

#include <optional>

namespace penwick {

/// What a key does to the text besides entering its own character.
enum class EditCommand {
    Undo,
    Redo,
    Cut,
    Copy,
    Paste,
    SelectAll,
    Deselect,
    InsertLineFeed,
    InsertTab,
    DeleteBackward,
    DeleteForward,
    DeleteWordBackward,
    DeleteWordForward,
    DeleteToLineEnd,
    DeleteLine
};

/// The command of a key press by the platform's bindings, if it has one.
[[nodiscard]] std::optional<EditCommand> editCommandFor(const QKeyEvent &event);

/// True for a key press that enters its text, not one that commands.
[[nodiscard]] bool entersText(const QKeyEvent &event);

} // namespace penwick

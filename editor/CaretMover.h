#pragma once

#include "editor/TextStorage.h"
#include "editor/TextViewport.h"

#include <QKeyEvent>

#include <optional>

namespace penwick {

/// The ways a key moves the caret. Left and Right are directions on the screen.
enum class CaretMove {
    Left,
    Right,
    WordLeft,
    WordRight,
    Up,
    Down,
    RowStart,
    RowEnd,
    BlockStart,
    BlockEnd,
    ParagraphUp,
    ParagraphDown,
    PageUp,
    PageDown,
    DocumentStart,
    DocumentEnd
};

/// A caret move asked for by a key, and whether it extends the selection.
struct CaretMoveRequest
{
    CaretMove move = CaretMove::Left;
    bool extends = false;
};

/// The request of a key press by the platform's bindings; none when the key moves no caret.
[[nodiscard]] std::optional<CaretMoveRequest> caretMoveFor(const QKeyEvent &event);

/// True for moves from row to row, which keep their column.
[[nodiscard]] bool isVertical(CaretMove move);

/// Finds where a move leads. `column` is the x to keep in vertical moves.
[[nodiscard]] TextCaret
moveCaret(TextViewport &viewport, const Text &text, TextCaret from, CaretMove move, qreal column);

/// The end of `selection` that is on its right or left side on the screen.
[[nodiscard]] qint64 edgeOfSelection(TextViewport &viewport, TextRange selection, bool onRight);

/// How far a key deletes that deletes to the end of the line: there it takes the line break.
[[nodiscard]] qint64 lineEndToDelete(const Text &text, qint64 offset);

/// Start and end of the line that `offset` stands in, its line break included.
[[nodiscard]] TextRange lineAround(const Text &text, qint64 offset);

} // namespace penwick

#pragma once

#include "editor/TextStorage.h"
#include "view/TextViewport.h"

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

/// The caret move of a key press, and whether it extends the selection.
struct CaretMoveRequest
{
    CaretMove move = CaretMove::Left;
    bool extends = false;
};

/// Returns the caret move that the platform binds to a key press, or none.
[[nodiscard]] std::optional<CaretMoveRequest> caretMoveFor(const QKeyEvent &event);

/// True for moves from row to row, which keep the caret's column.
[[nodiscard]] bool isVertical(CaretMove move);

/// Returns the caret after a move.
/// \param column the x that vertical moves keep, in logical pixels.
[[nodiscard]] TextCaret
moveCaret(TextViewport &viewport, const Text &text, TextCaret from, CaretMove move, qreal column);

/// Returns the end of `selection` that is on its right or left side on the screen, as an offset in
/// UTF-16 code units.
[[nodiscard]] qint64 edgeOfSelection(TextViewport &viewport, TextRange selection, bool onRight);

/// Returns where "delete to the end of the line" stops when it starts at `offset`: at the end of
/// the line or, if `offset` is there already, after the line break.
[[nodiscard]] qint64 lineEndToDelete(const Text &text, qint64 offset);

/// Returns the range of the line that contains `offset`, including its line break.
[[nodiscard]] TextRange lineAround(const Text &text, qint64 offset);

} // namespace penwick

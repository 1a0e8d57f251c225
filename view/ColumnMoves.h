#pragma once

#include "lines/ColumnSelection.h"
#include "view/CaretMover.h"

#include <QKeyEvent>

#include <optional>

namespace penwick {

/// Returns the move of a rectangle's corner that a key press asks for: Alt and Shift with an arrow,
/// Home, End, Page Up or Page Down. None for other keys.
[[nodiscard]] std::optional<CaretMove> columnMoveFor(const QKeyEvent &event);

/// True for the moves that a corner can make.
[[nodiscard]] bool isColumnMove(CaretMove move);

/// What moves depend on.
struct ColumnMoveStyle
{
    int tabWidth = 1;    ///< Columns.
    qint64 pageRows = 1; ///< Lines of a page move.
};

/// Returns the corner after a move for which `isColumnMove` is true. It moves by lines of the text,
/// not by the rows that a wrapped line has on the screen.
[[nodiscard]] ColumnPlace
movedPlace(const Text &text, ColumnPlace from, CaretMove move, const ColumnMoveStyle &style);

} // namespace penwick

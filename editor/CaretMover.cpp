#include "editor/CaretMover.h"

#include "text/WordBoundaries.h"

#include <QKeySequence>

namespace penwick {

namespace {

struct Binding
{
    QKeySequence::StandardKey key;
    CaretMove move;
    bool extends;
};

constexpr Binding kBindings[] = {
    {QKeySequence::MoveToPreviousChar, CaretMove::Left, false},
    {QKeySequence::SelectPreviousChar, CaretMove::Left, true},
    {QKeySequence::MoveToNextChar, CaretMove::Right, false},
    {QKeySequence::SelectNextChar, CaretMove::Right, true},
    {QKeySequence::MoveToPreviousWord, CaretMove::WordLeft, false},
    {QKeySequence::SelectPreviousWord, CaretMove::WordLeft, true},
    {QKeySequence::MoveToNextWord, CaretMove::WordRight, false},
    {QKeySequence::SelectNextWord, CaretMove::WordRight, true},
    {QKeySequence::MoveToPreviousLine, CaretMove::Up, false},
    {QKeySequence::SelectPreviousLine, CaretMove::Up, true},
    {QKeySequence::MoveToNextLine, CaretMove::Down, false},
    {QKeySequence::SelectNextLine, CaretMove::Down, true},
    {QKeySequence::MoveToStartOfLine, CaretMove::RowStart, false},
    {QKeySequence::SelectStartOfLine, CaretMove::RowStart, true},
    {QKeySequence::MoveToEndOfLine, CaretMove::RowEnd, false},
    {QKeySequence::SelectEndOfLine, CaretMove::RowEnd, true},
    {QKeySequence::MoveToStartOfBlock, CaretMove::BlockStart, false},
    {QKeySequence::SelectStartOfBlock, CaretMove::BlockStart, true},
    {QKeySequence::MoveToEndOfBlock, CaretMove::BlockEnd, false},
    {QKeySequence::SelectEndOfBlock, CaretMove::BlockEnd, true},
    {QKeySequence::MoveToPreviousPage, CaretMove::PageUp, false},
    {QKeySequence::SelectPreviousPage, CaretMove::PageUp, true},
    {QKeySequence::MoveToNextPage, CaretMove::PageDown, false},
    {QKeySequence::SelectNextPage, CaretMove::PageDown, true},
    {QKeySequence::MoveToStartOfDocument, CaretMove::DocumentStart, false},
    {QKeySequence::SelectStartOfDocument, CaretMove::DocumentStart, true},
    {QKeySequence::MoveToEndOfDocument, CaretMove::DocumentEnd, false},
    {QKeySequence::SelectEndOfDocument, CaretMove::DocumentEnd, true},
};

/// Rows of the page before that stay in view, so that the eye finds its place.
constexpr int kPageOverlap = 1;

TextCaret
moveByRows(TextViewport &viewport, const Text &text, TextCaret from, int rows, qreal column)
{
    bool moved = false;
    const TextCaret target = viewport.verticalMove(from, rows, column, moved);
    if (moved)
        return target;
    return {rows < 0 ? 0 : text.size(), false};
}

} // namespace

std::optional<CaretMoveRequest> caretMoveFor(const QKeyEvent &event)
{
    for (const Binding &binding : kBindings) {
        if (event.matches(binding.key))
            return CaretMoveRequest{binding.move, binding.extends};
    }
    return std::nullopt;
}

bool isVertical(CaretMove move)
{
    return move == CaretMove::Up || move == CaretMove::Down || move == CaretMove::PageUp ||
           move == CaretMove::PageDown;
}

TextRange lineAround(const Text &text, qint64 offset)
{
    const TextLineBounds line = segments::lineAt(text, offset);
    return {line.start, line.nextStart() - line.start};
}

TextCaret
moveCaret(TextViewport &viewport, const Text &text, TextCaret from, CaretMove move, qreal column)
{
    const qint64 offset = from.offset;
    const int page = std::max(1, viewport.rowsPerPage() - kPageOverlap);
    // In a line that runs from right to left, the next character is on the left.
    const bool leftIsForward = move <= CaretMove::WordRight && viewport.isRightToLeft(offset);
    switch (move) {
    case CaretMove::Left:
    case CaretMove::Right:
        if ((move == CaretMove::Left) == leftIsForward)
            return {text.nextClusterBoundary(offset), false};
        return {text.previousClusterBoundary(offset), false};
    case CaretMove::WordLeft:
    case CaretMove::WordRight:
        if ((move == CaretMove::WordLeft) == leftIsForward)
            return {words::nextWordStart(text, offset), false};
        return {words::previousWordStart(text, offset), false};
    case CaretMove::Up:
        return moveByRows(viewport, text, from, -1, column);
    case CaretMove::Down:
        return moveByRows(viewport, text, from, 1, column);
    case CaretMove::PageUp:
        return moveByRows(viewport, text, from, -page, column);
    case CaretMove::PageDown:
        return moveByRows(viewport, text, from, page, column);
    case CaretMove::RowStart:
        return viewport.rowStart(from);
    case CaretMove::RowEnd:
        return viewport.rowEnd(from);
    case CaretMove::BlockStart:
        return {segments::lineAt(text, offset).start, false};
    case CaretMove::BlockEnd:
        return {segments::lineAt(text, offset).end, false};
    case CaretMove::DocumentStart:
        return {0, false};
    case CaretMove::DocumentEnd:
        return {text.size(), false};
    }
    return from;
}

} // namespace penwick

#include "view/CaretMover.h"

#include "text/WordBoundaries.h"

#include <QKeySequence>

#include <algorithm>

namespace penwick {

namespace {

struct MoveKeys
{
    QKeySequence::StandardKey key;
    CaretMove move;
    bool extends;
};

constexpr MoveKeys kMoveKeys[] = {
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

/// Rows of the previous page that stay visible after a page move, for orientation.
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

/// Returns the caret in the row of `from` that is nearest to `x` on its right or left side, or none
/// when `x` is at that edge of the row.
std::optional<TextCaret>
neighbourInRow(TextViewport &viewport, const Text &text, TextCaret from, qreal x, bool toRight)
{
    const TextCaret end = viewport.rowEnd(from);
    // At a soft wrap, the end offset belongs to the next row.
    const qint64 last = end.atRowEnd ? end.offset - 1 : end.offset;
    std::optional<TextCaret> best;
    qreal bestDistance = 0;
    constexpr qint64 kReach = 1024; // More than fit in a row that wraps.
    const qint64 first = std::max(viewport.rowStart(from).offset, from.offset - kReach);
    for (qint64 offset = text.clusterBoundaryAtOrBefore(first);
         offset <= std::min(last, from.offset + kReach);
         offset = text.nextClusterBoundary(offset)) {
        const TextCaret caret{offset, false};
        const qreal distance = (viewport.caretX(caret) - x) * (toRight ? 1 : -1);
        if (distance > 0 && (!best || distance < bestDistance)) {
            best = caret;
            bestDistance = distance;
        }
        if (offset == text.size())
            break;
    }
    return best;
}

/// Moves one cluster left or right on the screen in a line with mixed directions, where the order
/// on the screen differs from the order in the text.
TextCaret visualStep(TextViewport &viewport, const Text &text, TextCaret from, bool toRight)
{
    const qreal x = viewport.caretX(from);
    if (const auto next = neighbourInRow(viewport, text, from, x, toRight))
        return *next;
    const bool isForward = toRight != viewport.isRightToLeft(from.offset);
    TextCaret beyond{text.previousClusterBoundary(viewport.rowStart(from).offset), false};
    if (isForward) {
        const TextCaret end = viewport.rowEnd(from);
        beyond = {end.atRowEnd ? end.offset : text.nextClusterBoundary(end.offset), false};
    }
    // Enter the row above or below at its opposite side.
    constexpr qreal kFar = 1e9;
    return neighbourInRow(viewport, text, beyond, toRight ? -kFar : kFar, toRight).value_or(beyond);
}

TextCaret moveByParagraph(const Text &text, qint64 offset, bool down)
{
    TextLineBounds line = segments::lineAt(text, offset);
    if (down && offset >= line.end)
        line = segments::lineAt(text, line.nextStart());
    else if (!down && offset <= line.start && offset > 0)
        line = segments::lineAt(text, offset - 1);
    return {down ? line.end : line.start, false};
}

} // namespace

std::optional<CaretMoveRequest> caretMoveFor(const QKeyEvent &event)
{
    for (const MoveKeys &binding : kMoveKeys)
        if (event.matches(binding.key))
            return CaretMoveRequest{binding.move, binding.extends};
    // Control with Up and Down moves by paragraph, but Qt has no standard key for it.
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const bool isUp = event.key() == Qt::Key_Up;
    if ((isUp || event.key() == Qt::Key_Down) &&
        (modifiers & ~Qt::ShiftModifier) == Qt::ControlModifier)
        return CaretMoveRequest{isUp ? CaretMove::ParagraphUp : CaretMove::ParagraphDown,
                                modifiers.testFlag(Qt::ShiftModifier)};
    return std::nullopt;
}

bool isVertical(CaretMove move)
{
    return move == CaretMove::Up || move == CaretMove::Down || move == CaretMove::PageUp ||
           move == CaretMove::PageDown;
}

qint64 edgeOfSelection(TextViewport &viewport, TextRange selection, bool onRight)
{
    const TextCaret start{selection.location, false};
    const TextCaret end{selection.end(), true};
    bool endIsOnRight = !viewport.isRightToLeft(selection.end());
    if (viewport.rowStart(start) == viewport.rowStart(end)) // In one row, compare x positions.
        endIsOnRight = viewport.caretX(end) > viewport.caretX(start);
    return endIsOnRight == onRight ? selection.end() : selection.location;
}

qint64 lineEndToDelete(const Text &text, qint64 offset)
{
    const TextLineBounds line = segments::lineAt(text, offset);
    return offset < line.end ? line.end : line.nextStart();
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
        if (viewport.hasRightToLeft(offset))
            return visualStep(viewport, text, from, move == CaretMove::Right);
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
    case CaretMove::ParagraphUp:
    case CaretMove::ParagraphDown:
        return moveByParagraph(text, offset, move == CaretMove::ParagraphDown);
    case CaretMove::DocumentStart:
        return {0, false};
    case CaretMove::DocumentEnd:
        return {text.size(), false};
    }
    return from;
}

} // namespace penwick

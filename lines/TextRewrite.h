#pragma once

#include "lines/ColumnSelection.h"
#include "lines/Indentation.h"
#include "text/SelectedText.h"

#include <optional>

namespace penwick {

/// What the text commands do. Those from `UpperCase` on change the characters of the selection, the
/// others the selected lines, or without a selection the line of the caret (see `selectedLines`).
enum class TextChangeKind {
    Indent,
    Outdent,
    Duplicate, ///< The copy follows the lines, and is selected like them.
    MoveUp,
    MoveDown,
    Join, ///< A single line is joined with the next one.
    Sort, ///< By code points; equal lines keep their order.
    TrimEnds,
    BlanksToTabs,
    TabsToBlanks,
    UpperCase,
    LowerCase,
    FullWidth,
    HalfWidth,
};

/// A replacement of one range of a text, and the selection after it. Where equal lines are moved,
/// range and replacement are empty. Offsets are UTF-16 code units,
/// 0-based.
struct TextRewrite
{
    TextRange range;
    Text replacement;
    qint64 anchor = 0;
    qint64 caret = 0;
};

/// True for the commands from `UpperCase` on.
[[nodiscard]] bool changesCharacters(TextChangeKind kind);

/// False where `rewrite` cannot change anything, such as moving the first line up, and for more
/// than 2^28 units. O(log n).
[[nodiscard]] bool canRewrite(TextChangeKind kind, const SelectedText &text);

/// Returns what a command changes; no value for nothing. The line breaks keep their places: moving
/// and sorting exchange what is between them. Time and memory grow with the selected part only.
[[nodiscard]] std::optional<TextRewrite>
rewrite(TextChangeKind kind, const SelectedText &text, const Indentation &style);

/// What a command makes of the rows of a rectangle, and the rectangle that covers them afterwards.
struct RowsRewrite
{
    RowsChange change;
    TextRectangle rectangle;
};

/// The same for a command that changes characters, in each row of a rectangle. `columns` is one of
/// `text`.
[[nodiscard]] std::optional<RowsRewrite>
rewriteRows(TextChangeKind kind, const Text &text, const ColumnSelection &columns);

} // namespace penwick

#pragma once

#include "lines/LineBlock.h"
#include "lines/LineColumns.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace penwick {

/// A place by line and column (see `ColumnStop`), both 0-based. The column can be past the end of
/// the line.
struct ColumnPlace
{
    qint64 line = 0;
    qint64 column = 0;

    bool operator==(const ColumnPlace &) const = default;
};

/// A rectangle of lines and columns, from its fixed corner to its moving one. With equal columns it
/// is a caret in each row.
struct TextRectangle
{
    ColumnPlace anchor;
    ColumnPlace caret;

    [[nodiscard]] LineSpan lines() const
    {
        return {std::min(anchor.line, caret.line), std::abs(anchor.line - caret.line) + 1};
    }

    [[nodiscard]] qint64 left() const { return std::min(anchor.column, caret.column); }

    [[nodiscard]] qint64 right() const { return std::max(anchor.column, caret.column); }

    /// True when it has no width.
    [[nodiscard]] bool isEmpty() const { return anchor.column == caret.column; }

    bool operator==(const TextRectangle &) const = default;
};

/// What a rectangle covers in one line: the clusters that end between its edges. No cluster is cut.
struct RectangleRow
{
    TextRange range; ///< In the text, UTF-16 code units, 0-based.
    /// Columns from the end of the line to the edges, where they are past it; otherwise 0.
    qint64 blanksToLeft = 0;
    qint64 blanksToRight = 0;
};

/// \param line one of the lines of `text`, 0-based.
[[nodiscard]] RectangleRow
rowOf(const Text &text, const TextRectangle &rectangle, qint64 line, int tabWidth);

/// The place of an offset; none beyond the reach of columns.
[[nodiscard]] std::optional<ColumnPlace> placeOf(const Text &text, qint64 offset, int tabWidth);

/// The rows joined by line feeds. None for a rectangle of more than 2^27 units in its lines.
[[nodiscard]] std::optional<Text>
textOf(const Text &text, const TextRectangle &rectangle, int tabWidth);

/// What replaces the rows of a rectangle.
struct RowContents
{
    qint64 count = 0; ///< Rows; those past the rectangle's last one replace nothing.
    /// The content of a row, counted from the first one. Valid until the next call.
    std::function<QStringView(qint64)> at;
    qint64 width = 0; ///< Shorter contents are filled with spaces where text follows.
};

/// A replacement of whole lines, line breaks included.
struct RowsChange
{
    TextRange range;
    Text replacement;
    qint64 caret = 0; ///< After the content of the last row, in the new text.
};

/// Replaces each row in one pass. Where the line is shorter, spaces lead to the content, unless
/// that is empty or starts with a line break. Rows past the end of the text become new lines. An
/// empty line after a CR gets one more LF in front, because CR and LF would become one line break.
/// None where the result would have more than 2^27 units in these lines.
[[nodiscard]] std::optional<RowsChange> replaceRows(const Text &text,
                                                    const TextRectangle &rectangle,
                                                    const RowContents &contents,
                                                    int tabWidth);

} // namespace penwick

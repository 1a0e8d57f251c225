#pragma once

#include "lines/TextRectangle.h"

#include <QString>

#include <optional>

namespace penwick {

/// A rectangular selection, and the run of edits in its rows. What the edits insert and delete is
/// always determined from the text before the first one. So the caret of each row stays exactly
/// behind what was inserted there, also where tabs and wide characters differ from row to row.
///
/// The edits return what to replace in the present text; no value when they change nothing, or when
/// the lines have more than 2^27 units. Valid until the text is changed in another way.
class ColumnSelection final
{
public:
    /// \param rectangle its lines exist in `text`.
    ColumnSelection(const Text &text, const TextRectangle &rectangle, int tabWidth);

    /// The part of a line of the rectangle.
    /// \param now the present text.
    [[nodiscard]] RectangleRow rowAt(const Text &now, qint64 line) const;

    /// The rectangle in the present text. After an edit it has no width, and is where the caret of
    /// the row of the moving corner is.
    [[nodiscard]] TextRectangle rectangle(const Text &now) const;

    [[nodiscard]] LineSpan lines() const { return m_rectangle.lines(); }

    /// True when each row is a caret.
    [[nodiscard]] bool isEmpty() const { return m_isEdited || m_rectangle.isEmpty(); }

    [[nodiscard]] int tabWidth() const { return m_tabWidth; }

    /// Replaces each row, or inserts at its caret.
    /// \param units without line breaks.
    [[nodiscard]] std::optional<RowsChange> insert(const Text &now, QStringView units);
    /// Replaces each row by a content of its own, with line breaks or without. Afterwards this is
    /// no longer valid.
    [[nodiscard]] std::optional<RowsChange> insertRows(const Text &now,
                                                       const RowContents &contents) const;
    /// Deletes each row. Without a width, deletes before the carets: the last character that was
    /// inserted, or as many columns as the character before the moving corner takes.
    [[nodiscard]] std::optional<RowsChange> deleteBackward(const Text &now);
    /// The same after the carets.
    [[nodiscard]] std::optional<RowsChange> deleteForward(const Text &now);

private:
    [[nodiscard]] std::optional<RowsChange>
    edit(const Text &now, const TextRectangle &rectangle, const QString &inserted);

    Text m_base;               // Before the edits.
    TextRectangle m_rectangle; // In `m_base`, with what was deleted beside it.
    QString m_inserted;        // In each row of `m_rectangle`.
    TextRange m_lines;         // The lines in the present text.
    int m_tabWidth;
    bool m_isEdited = false;
};

/// The column of the cluster boundary before `column` in a line, or 1 less past the line's end; 0
/// for 0.
[[nodiscard]] qint64 columnBefore(const Text &text, ColumnPlace place, int tabWidth);
/// The column of the boundary after it, or 1 more past the line's end. No more than the reach.
[[nodiscard]] qint64 columnAfter(const Text &text, ColumnPlace place, int tabWidth);

} // namespace penwick

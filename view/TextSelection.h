#pragma once

#include "editor/TextStorage.h"
#include "lines/ColumnSelection.h"
#include "view/CaretMover.h"
#include "view/TextViewport.h"

#include <QObject>

#include <optional>

namespace penwick {

/// The selection of a text view. It extends from the anchor, its fixed end, to the caret, its
/// moving end. Offsets are UTF-16 code units, 0-based.
class TextSelection final : public QObject
{
    Q_OBJECT

public:
    enum class Scroll { ToCaret, Stay };

    /// \param storage, viewport not owned; must outlive this object.
    TextSelection(TextStorage *storage, TextViewport *viewport);

    [[nodiscard]] TextRange range() const;

    [[nodiscard]] qint64 anchor() const { return m_anchor; }

    [[nodiscard]] TextCaret caret() const { return m_caret; }

    /// The selected rectangle, or null. Then `range` is its part in the first row, `anchor` and
    /// `caret` are the ends of that part.
    [[nodiscard]] const ColumnSelection *columns() const
    {
        return m_columns ? &*m_columns : nullptr;
    }

    /// True when no character is selected.
    [[nodiscard]] bool isEmpty() const;

    /// The selected text; cheap to copy. Of a rectangle, the rows joined by line feeds.
    [[nodiscard]] Text text() const;
    /// True when the character at `point` of the viewport is selected.
    [[nodiscard]] bool contains(QPointF point) const;
    /// Returns `offset` clamped to the text and moved out of a surrogate pair.
    [[nodiscard]] qint64 snapped(qint64 offset) const;

    /// Selects from `anchor` to `caret`, both snapped.
    void select(qint64 anchor, TextCaret caret, Scroll scroll = Scroll::ToCaret);
    /// The same without scrolling, signals or a record for undo.
    void place(qint64 anchor, TextCaret caret);
    /// Performs the caret move of a key press.
    void move(CaretMoveRequest request);
    /// Selects a rectangle; scrolls to its moving corner. The other functions that select end it.
    void selectColumns(const ColumnSelection &columns, Scroll scroll = Scroll::ToCaret);
    /// The same between two corners of the present text.
    void selectRectangle(const TextRectangle &rectangle, Scroll scroll = Scroll::ToCaret);
    /// Moves the moving corner of the rectangle, which at first is the present selection. Without
    /// a move, it only becomes one. Does nothing where no column is counted.
    void moveColumns(std::optional<CaretMove> move);
    /// The corners of the rectangle or, without one, the ends of the selection; none where no
    /// column is counted.
    [[nodiscard]] std::optional<TextRectangle> rectangle() const;
    /// The place nearest to a point of the viewport, which may be past a line's end.
    [[nodiscard]] std::optional<ColumnPlace> placeAt(QPointF point) const;
    /// Distance of the tab stops, in columns.
    [[nodiscard]] int tabWidth() const;

    /// Scrolls the caret into view.
    void showCaret();
    /// Offers the selected text, if any, as the primary selection, which a middle click pastes.
    void offerAsPrimary() const;

Q_SIGNALS:
    /// The caret may have moved, in the text or on the screen.
    void caretMoved();
    /// `select` was called. `before` is the range before, which may be the same.
    void selected(TextRange before);

private:
    TextStorage *m_storage;
    TextViewport *m_viewport;
    qint64 m_anchor = 0;
    TextCaret m_caret;
    std::optional<qreal> m_column; // The x that vertical moves keep.
    std::optional<ColumnSelection> m_columns;
};

} // namespace penwick

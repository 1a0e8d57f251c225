#pragma once

#include "editor/TextStorage.h"
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

    /// The selected text; cheap to copy.
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
};

} // namespace penwick

#pragma once

#include "editor/TextStorage.h"

#include <QAccessibleWidget>

namespace penwick {

class TextView;

/// What assistive technology sees of a `TextView`: an editable text of several lines. Offsets are
/// UTF-16 code units, 0-based. A line is one row as it is seen, a paragraph goes from line break to
/// line break. Each answer looks at a bounded stretch of the text, except where a paragraph or the
/// whole text is asked for.
class TextViewAccessible final : public QAccessibleWidget,
                                 public QAccessibleTextInterface,
                                 public QAccessibleEditableTextInterface
{
public:
    explicit TextViewAccessible(TextView *view);

    /// Makes the interface known to the toolkit; once per process is enough.
    static void install();

    /// Tells listeners, if there are any, that `range` of the text `before` was replaced by
    /// `newLength` units, which stand in the view's storage by now.
    static void
    announceChange(TextView *view, const Text &before, TextRange range, qint64 newLength);
    /// Tells listeners where the caret and the selection are; the latter was `before`.
    static void announceCaret(TextView *view, TextRange before);

    [[nodiscard]] void *interface_cast(QAccessible::InterfaceType type) override;
    [[nodiscard]] QAccessible::State state() const override;
    /// What labels the view: also what labels a widget that it is the focus proxy of.
    [[nodiscard]] QList<QPair<QAccessibleInterface *, QAccessible::Relation>>
    relations(QAccessible::Relation match) const override;

    void selection(int selectionIndex, int *startOffset, int *endOffset) const override;
    [[nodiscard]] int selectionCount() const override;
    void addSelection(int startOffset, int endOffset) override;
    void removeSelection(int selectionIndex) override;
    void setSelection(int selectionIndex, int startOffset, int endOffset) override;
    [[nodiscard]] int cursorPosition() const override;
    void setCursorPosition(int position) override;

    /// Name and description of the view, or without one, of a widget that it is the focus proxy of.
    [[nodiscard]] QString text(QAccessible::Text text) const override;
    [[nodiscard]] QString text(int startOffset, int endOffset) const override;
    [[nodiscard]] int characterCount() const override;
    [[nodiscard]] QString textBeforeOffset(int offset,
                                           QAccessible::TextBoundaryType boundary,
                                           int *startOffset,
                                           int *endOffset) const override;
    [[nodiscard]] QString textAfterOffset(int offset,
                                          QAccessible::TextBoundaryType boundary,
                                          int *startOffset,
                                          int *endOffset) const override;
    [[nodiscard]] QString textAtOffset(int offset,
                                       QAccessible::TextBoundaryType boundary,
                                       int *startOffset,
                                       int *endOffset) const override;
    [[nodiscard]] QRect characterRect(int offset) const override;
    [[nodiscard]] int offsetAtPoint(const QPoint &point) const override;
    void scrollToSubstring(int startIndex, int endIndex) override;
    [[nodiscard]] QString attributes(int offset, int *startOffset, int *endOffset) const override;

    void deleteText(int startOffset, int endOffset) override;
    void insertText(int offset, const QString &text) override;
    void replaceText(int startOffset, int endOffset, const QString &text) override;

private:
    [[nodiscard]] TextView *view() const;
    [[nodiscard]] QString piece(std::pair<qint64, qint64> range, int *start, int *end) const;
    [[nodiscard]] std::pair<qint64, qint64> around(qint64 offset,
                                                   QAccessible::TextBoundaryType boundary) const;
};

} // namespace penwick

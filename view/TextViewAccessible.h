#pragma once

#include "editor/TextStorage.h"

#include <QAccessibleWidget>

namespace penwick {

class TextView;

/// The accessibility interface of a `TextView`: a multi-line text, editable unless it is read-only.
/// Offsets are UTF-16 code units, 0-based. A line is one visual row; a paragraph extends from line
/// break to line break. Each query reads a bounded stretch of the text, except one for a paragraph
/// or the whole text.
class TextViewAccessible final : public QAccessibleWidget,
                                 public QAccessibleTextInterface,
                                 public QAccessibleEditableTextInterface
{
public:
    explicit TextViewAccessible(TextView *view);

    /// Registers the interface with Qt. Further calls do nothing.
    static void install();

    /// Notifies accessibility clients, if there are any, that `range` of the text `before` was
    /// replaced by `newLength` units. The view's storage must already hold the new text.
    static void
    announceChange(TextView *view, const Text &before, TextRange range, qint64 newLength);
    /// Notifies accessibility clients of the caret and the selection.
    /// \param before the previous selection.
    static void announceCaret(TextView *view, TextRange before);

    [[nodiscard]] void *interface_cast(QAccessible::InterfaceType type) override;
    [[nodiscard]] QAccessible::State state() const override;
    /// Includes the labels of a widget that the view is the focus proxy of.
    [[nodiscard]] QList<QPair<QAccessibleInterface *, QAccessible::Relation>>
    relations(QAccessible::Relation match) const override;

    void selection(int selectionIndex, int *startOffset, int *endOffset) const override;
    [[nodiscard]] int selectionCount() const override;
    void addSelection(int startOffset, int endOffset) override;
    void removeSelection(int selectionIndex) override;
    void setSelection(int selectionIndex, int startOffset, int endOffset) override;
    [[nodiscard]] int cursorPosition() const override;
    void setCursorPosition(int position) override;

    /// Returns the view's name or description; if it has none, that of the widget that it is the
    /// focus proxy of. Returns nothing for the value.
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

#include "editor/TextViewAccessible.h"

#include "editor/CaretMover.h"
#include "editor/TextView.h"
#include "text/WordBoundaries.h"

#include <algorithm>

namespace penwick {

namespace {

QAccessibleInterface *makeInterface(const QString &className, QObject *object)
{
    Q_UNUSED(className)
    if (auto *view = qobject_cast<TextView *>(object))
        return new TextViewAccessible(view);
    return nullptr;
}

} // namespace

TextViewAccessible::TextViewAccessible(TextView *view)
    : QAccessibleWidget(view, QAccessible::EditableText)
{
}

void TextViewAccessible::install()
{
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    Q_UNUSED(isInstalled)
}

void TextViewAccessible::announceChange(TextView *view,
                                        const Text &before,
                                        TextRange range,
                                        qint64 newLength)
{
    if (!QAccessible::isActive())
        return;
    // A bus carries no file of any size, and nobody has one read out at once.
    constexpr qint64 kMostUnits = 1 << 16;
    const Text &now = view->string();
    QAccessibleTextUpdateEvent updated(
        view,
        static_cast<int>(range.location),
        before.slice(range.location, std::min(range.length, kMostUnits)),
        now.slice(range.location, std::min(newLength, kMostUnits)));
    QAccessible::updateAccessibility(&updated);
}

void TextViewAccessible::announceCaret(TextView *view, TextRange before)
{
    if (!QAccessible::isActive())
        return;
    const TextRange range = view->selectedRange();
    QAccessibleTextCursorEvent moved(view, static_cast<int>(view->caretOffset()));
    QAccessible::updateAccessibility(&moved);
    if (range != before && (range.length > 0 || before.length > 0)) {
        QAccessibleTextSelectionEvent selected(
            view, static_cast<int>(range.location), static_cast<int>(range.end()));
        QAccessible::updateAccessibility(&selected);
    }
}

TextView *TextViewAccessible::view() const
{
    return qobject_cast<TextView *>(object());
}

void *TextViewAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface *>(this);
    if (type == QAccessible::EditableTextInterface)
        return static_cast<QAccessibleEditableTextInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessible::State TextViewAccessible::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.editable = true;
    state.multiLine = true;
    state.selectableText = true;
    return state;
}

QString TextViewAccessible::text(QAccessible::Text text) const
{
    // The value of a text is told through the text interface, never as one string.
    return text == QAccessible::Value ? QString() : QAccessibleWidget::text(text);
}

void TextViewAccessible::selection(int selectionIndex, int *startOffset, int *endOffset) const
{
    const TextRange range = selectionIndex == 0 ? view()->selectedRange() : TextRange{};
    *startOffset = static_cast<int>(range.location);
    *endOffset = static_cast<int>(range.end());
}

int TextViewAccessible::selectionCount() const
{
    return view()->selectedRange().length > 0 ? 1 : 0;
}

void TextViewAccessible::addSelection(int startOffset, int endOffset)
{
    setSelection(0, startOffset, endOffset);
}

void TextViewAccessible::removeSelection(int selectionIndex)
{
    if (selectionIndex == 0)
        view()->setSelectedRange({view()->selectedRange().end(), 0});
}

void TextViewAccessible::setSelection(int selectionIndex, int startOffset, int endOffset)
{
    if (selectionIndex == 0)
        view()->setSelectedRange({startOffset, std::max(0, endOffset - startOffset)});
}

int TextViewAccessible::cursorPosition() const
{
    return static_cast<int>(view()->caretOffset());
}

void TextViewAccessible::setCursorPosition(int position)
{
    view()->setSelectedRange({position, 0});
}

QString TextViewAccessible::text(int startOffset, int endOffset) const
{
    return view()->string().slice(startOffset, endOffset - startOffset);
}

int TextViewAccessible::characterCount() const
{
    return static_cast<int>(view()->string().size());
}

std::pair<qint64, qint64> TextViewAccessible::around(qint64 offset,
                                                     QAccessible::TextBoundaryType boundary) const
{
    const Text &text = view()->string();
    offset = std::clamp<qint64>(offset, 0, text.size());
    switch (boundary) {
    case QAccessible::CharBoundary: {
        const qint64 start = text.clusterBoundaryAtOrBefore(offset);
        return {start, text.nextClusterBoundary(start)};
    }
    case QAccessible::WordBoundary:
        return words::wordAround(text, offset);
    case QAccessible::NoBoundary:
        return {0, text.size()};
    default: {
        // Sentences and rows are told as lines: a screen reader asks for them to read on.
        const TextRange line = lineAround(text, offset);
        return {line.location, line.end()};
    }
    }
}

QString TextViewAccessible::piece(std::pair<qint64, qint64> range, int *start, int *end) const
{
    *start = static_cast<int>(range.first);
    *end = static_cast<int>(range.second);
    return view()->string().slice(range.first, range.second - range.first);
}

QString TextViewAccessible::textBeforeOffset(int offset,
                                             QAccessible::TextBoundaryType boundary,
                                             int *startOffset,
                                             int *endOffset) const
{
    const qint64 start = around(offset, boundary).first;
    if (start <= 0)
        return piece({0, 0}, startOffset, endOffset);
    return piece(around(start - 1, boundary), startOffset, endOffset);
}

QString TextViewAccessible::textAfterOffset(int offset,
                                            QAccessible::TextBoundaryType boundary,
                                            int *startOffset,
                                            int *endOffset) const
{
    const qint64 size = view()->string().size();
    const qint64 end = around(offset, boundary).second;
    if (end >= size)
        return piece({size, size}, startOffset, endOffset);
    return piece(around(end, boundary), startOffset, endOffset);
}

QString TextViewAccessible::textAtOffset(int offset,
                                         QAccessible::TextBoundaryType boundary,
                                         int *startOffset,
                                         int *endOffset) const
{
    return piece(around(offset, boundary), startOffset, endOffset);
}

QRect TextViewAccessible::characterRect(int offset) const
{
    const TextView *text = view();
    const QRectF start = text->caretRectAt(offset);
    const QRectF end = text->caretRectAt(text->string().nextClusterBoundary(offset));
    QRectF rect = start;
    // The last character of a row ends on the next one.
    if (end.top() == start.top() && end.left() > start.left())
        rect.setRight(end.left());
    const QRect aligned = rect.toAlignedRect();
    return {text->viewport()->mapToGlobal(aligned.topLeft()), aligned.size()};
}

int TextViewAccessible::offsetAtPoint(const QPoint &point) const
{
    return static_cast<int>(view()->offsetAt(view()->viewport()->mapFromGlobal(point)));
}

void TextViewAccessible::scrollToSubstring(int startIndex, int endIndex)
{
    Q_UNUSED(endIndex)
    view()->scrollTo(startIndex);
}

QString TextViewAccessible::attributes(int offset, int *startOffset, int *endOffset) const
{
    Q_UNUSED(offset)
    *startOffset = 0;
    *endOffset = characterCount();
    return {};
}

void TextViewAccessible::deleteText(int startOffset, int endOffset)
{
    replaceText(startOffset, endOffset, {});
}

void TextViewAccessible::insertText(int offset, const QString &text)
{
    replaceText(offset, offset, text);
}

void TextViewAccessible::replaceText(int startOffset, int endOffset, const QString &text)
{
    const TextRange range{startOffset, std::max(0, endOffset - startOffset)};
    const Text replacement{QStringView(text)};
    view()->shouldChangeText(range, replacement);
    view()->replaceCharacters(range, replacement);
    view()->didChangeText();
}

} // namespace penwick

#include "view/TextViewAccessible.h"

#include "text/WordBoundaries.h"
#include "view/CaretMover.h"
#include "view/TextView.h"

#include <QFontInfo>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <limits>

namespace penwick {

namespace {

QAccessibleInterface *makeInterface(const QString &className, QObject *object)
{
    Q_UNUSED(className)
    if (auto *view = qobject_cast<TextView *>(object))
        return new TextViewAccessible(view);
    return nullptr;
}

/// Converts an offset to the `int` of Qt's accessibility interfaces. Of a text longer than that,
/// clients see the beginning.
int toInt(qint64 offset)
{
    return static_cast<int>(std::clamp<qint64>(offset, 0, std::numeric_limits<int>::max()));
}

/// Returns the interface of the outermost widget that passes its focus on to `widget`, or null. To
/// the user, that widget with its frame and bars is the text field, and the label belongs to it.
QAccessibleInterface *interfaceAround(const QWidget *widget)
{
    QWidget *outer = nullptr;
    const QWidget *inner = widget;
    for (QWidget *parent = widget->parentWidget(); parent != nullptr && !parent->isWindow();
         parent = parent->parentWidget()) {
        if (parent->focusProxy() != inner)
            continue;
        outer = parent;
        inner = parent;
    }
    return outer != nullptr ? QAccessible::queryAccessibleInterface(outer) : nullptr;
}

/// Returns the sentence at `offset`, as far as it lies in its paragraph and within a bounded
/// stretch of it.
std::pair<qint64, qint64> sentenceAround(const Text &text, qint64 offset)
{
    constexpr qint64 kReach = 2048;
    const TextRange line = lineAround(text, offset);
    const qint64 start = text.clusterBoundaryAtOrBefore(
        std::max(line.location, std::min(offset, line.end()) - kReach));
    const QString window = text.slice(start, std::min(line.end() - start, 2 * kReach));
    QTextBoundaryFinder finder(QTextBoundaryFinder::Sentence, window);
    finder.setPosition(offset - start);
    const qsizetype first = finder.isAtBoundary() ? finder.position() : finder.toPreviousBoundary();
    finder.setPosition(offset - start);
    const qsizetype last = finder.toNextBoundary();
    return {start + std::max<qsizetype>(first, 0), start + (last < 0 ? window.size() : last)};
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
    // Limits the size of the message: the accessibility bus is not made for large texts, and no
    // client reads one out at once.
    constexpr qint64 kMostUnits = 1 << 16;
    const Text &now = view->string();
    QAccessibleTextUpdateEvent updated(
        view,
        toInt(range.location),
        before.slice(range.location, std::min(range.length, kMostUnits)),
        now.slice(range.location, std::min(newLength, kMostUnits)));
    QAccessible::updateAccessibility(&updated);
}

void TextViewAccessible::announceCaret(TextView *view, TextRange before)
{
    if (!QAccessible::isActive())
        return;
    const TextRange range = view->selectedRange();
    QAccessibleTextCursorEvent moved(view, toInt(view->caretOffset()));
    QAccessible::updateAccessibility(&moved);
    if (range != before && (range.length > 0 || before.length > 0)) {
        QAccessibleTextSelectionEvent selected(view, toInt(range.location), toInt(range.end()));
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
    if (type == QAccessible::EditableTextInterface && !view()->isReadOnly())
        return static_cast<QAccessibleEditableTextInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessible::State TextViewAccessible::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.editable = !view()->isReadOnly();
    state.readOnly = view()->isReadOnly();
    state.multiLine = true;
    state.selectableText = true;
    return state;
}

QString TextViewAccessible::text(QAccessible::Text text) const
{
    // Clients read the content through the text interface, never as one string.
    if (text == QAccessible::Value)
        return {};
    const QString own = QAccessibleWidget::text(text);
    QAccessibleInterface *outer = interfaceAround(widget());
    return own.isEmpty() && outer != nullptr ? outer->text(text) : own;
}

QList<QPair<QAccessibleInterface *, QAccessible::Relation>>
TextViewAccessible::relations(QAccessible::Relation match) const
{
    auto all = QAccessibleWidget::relations(match);
    if (QAccessibleInterface *outer = interfaceAround(widget()))
        all += outer->relations(match & QAccessible::Label);
    return all;
}

void TextViewAccessible::selection(int selectionIndex, int *startOffset, int *endOffset) const
{
    const TextRange range = selectionIndex == 0 ? view()->selectedRange() : TextRange{};
    *startOffset = toInt(range.location);
    *endOffset = toInt(range.end());
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
    return toInt(view()->caretOffset());
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
    return toInt(view()->string().size());
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
    case QAccessible::WordBoundary: {
        // On a line break, `wordAround` would return the line's last word.
        const TextLineBounds line = segments::lineAt(text, offset);
        if (line.breakLength > 0 && offset >= line.end)
            return {line.end, line.nextStart()};
        return words::wordAround(text, offset);
    }
    case QAccessible::NoBoundary:
        return {0, text.size()};
    case QAccessible::SentenceBoundary:
        return sentenceAround(text, offset);
    case QAccessible::LineBoundary: {
        // A screen reader's line is one row on the screen.
        const TextRange row = view()->rowAround(offset);
        return {row.location, row.end()};
    }
    default: {
        const TextRange line = lineAround(text, offset);
        return {line.location, line.end()};
    }
    }
}

QString TextViewAccessible::piece(std::pair<qint64, qint64> range, int *start, int *end) const
{
    *start = toInt(range.first);
    *end = toInt(range.second);
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
    const QRectF rect = view()->characterRectAt(offset);
    if (rect.isEmpty())
        return {};
    const QRect aligned = rect.toRect();
    return {view()->viewport()->mapToGlobal(aligned.topLeft()), aligned.size()};
}

int TextViewAccessible::offsetAtPoint(const QPoint &point) const
{
    return toInt(view()->offsetAt(view()->viewport()->mapFromGlobal(point)));
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
    const QFont &font = view()->font();
    return QStringLiteral("font-family:\"%1\";font-size:%2pt;")
        .arg(font.family())
        .arg(QFontInfo(font).pointSizeF());
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
    view()->replaceText({startOffset, std::max(0, endOffset - startOffset)},
                        Text(QStringView(text)));
}

} // namespace penwick

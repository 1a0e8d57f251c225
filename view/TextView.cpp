#include "view/TextView.h"

#include "platform/desktop/ContextMenu.h"
#include "view/ColumnMoves.h"
#include "view/TextMimeData.h"
#include "view/TextViewAccessible.h"
#include "view/TextViewMenu.h"
#include "view/TextViewPainter.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace penwick {

namespace {

/// Also true at the start of the text.
bool isAfterLineFeed(const Text &text, qint64 offset)
{
    return offset == 0 || text.at(offset - 1) == u'\n';
}

} // namespace

TextView::TextView(TextStorage *storage, const QFont &font, QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_storage(storage)
    , m_selection(storage, &m_viewport)
    , m_editing(storage, &m_viewport, &m_selection)
    , m_inputMethod(&m_viewport, &m_editing)
    , m_mouse(&m_viewport, &m_selection)
    , m_dragAndDrop(this, &m_viewport, &m_editing, &m_inputMethod, [this] { refresh(); })
    , m_caretBlink([this] {
        const QRectF caret = m_viewport.caretRect(m_selection.caret());
        viewport()->update(caret.toAlignedRect().adjusted(-2, 0, 3, 0));
    })
{
    TextViewAccessible::install();
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    setAttribute(Qt::WA_KeyCompression, false);
    viewport()->setCursor(Qt::IBeamCursor);
    viewport()->setAcceptDrops(true);
    m_viewport.setText(m_storage->text());
    connect(m_storage, &TextStorage::changed, this, &TextView::storageChanged);
    connect(m_storage, &TextStorage::undoStateChanged, this, &TextView::actionStateDidChange);
    connect(&m_selection, &TextSelection::caretMoved, this, &TextView::caretMoved);
    connect(&m_selection, &TextSelection::selected, this, &TextView::selected);
    connect(&m_editing, &TextEditing::edited, this, &TextView::textDidChange);
    setFont(font);
    updateStyle();
}

TextView::~TextView() = default;

void TextView::setString(const Text &text)
{
    m_inputMethod.discard();
    m_storage->setText(text);
    m_viewport.scrollToStart();
    m_selection.place(0, {});
    caretMoved();
    Q_EMIT selectionDidChange();
}

void TextView::extend(const Text &text)
{
    m_storage->extend(text);
    refresh();
    Q_EMIT textDidChange();
}

void TextView::makeReadOnly()
{
    m_inputMethod.discard();
    m_editing.makeReadOnly();
    setAttribute(Qt::WA_InputMethodEnabled, false);
    viewport()->setAcceptDrops(false);
    Q_EMIT actionStateDidChange();
}

void TextView::setPlace(const Place &place)
{
    setSelectionInPlace(place.anchor, place.caret);
    m_viewport.scrollTo(place.top);
    refresh();
}

void TextView::setSelectedRange(TextRange range)
{
    if (range != selectedRange() || range.end() != caretOffset())
        m_inputMethod.commit(); // The composition is tied to the caret.
    m_storage->breakUndoCoalescing();
    m_selection.select(range.location, {range.location + std::max<qint64>(0, range.length), false});
}

void TextView::selected(TextRange before)
{
    TextViewAccessible::announceCaret(this, before);
    if (selectedRange() != before)
        Q_EMIT selectionDidChange();
}

QRectF TextView::characterRectAt(qint64 offset) const
{
    return m_viewport.characterRect(
        string().clusterBoundaryAtOrBefore(m_selection.snapped(offset)));
}

TextRange TextView::rowAround(qint64 offset) const
{
    return m_viewport.rowAround(m_selection.snapped(offset));
}

void TextView::scrollTo(qint64 offset)
{
    m_viewport.makeVisible({offset, false});
    refresh();
}

void TextView::caretMoved()
{
    refresh();
    m_caretBlink.restart(hasFocus());
    updateMicroFocus();
    Q_EMIT actionStateDidChange();
}

void TextView::storageChanged(qint64 offset, qint64 oldLength, qint64 newLength)
{
    const Text before = m_viewport.text();
    if (TextDecoration *decoration = m_viewport.decoration())
        decoration->textChanged(m_storage->text(), offset, oldLength, newLength);
    m_viewport.textChanged(m_storage->text(), offset, oldLength, newLength);
    m_selection.place(m_selection.anchor(), {caretOffset(), false});
    // The view's own edits end a composition beforehand, so this edit came from outside. The
    // composition was meant for the old text.
    m_inputMethod.discard();
    repaintChanges();
    Q_EMIT visibleTextDidChange();
    if (isReadOnly()) // The text grows by itself, which no client should read out.
        return;
    // Last, because a listener may query the view at once.
    TextViewAccessible::announceChange(this, before, {offset, oldLength}, newLength);
}

bool TextView::canPaste() const
{
    return !isReadOnly() && offersText(QGuiApplication::clipboard()->mimeData());
}

bool TextView::shouldChangeText(TextRange /*range*/, const Text & /*replacement*/)
{
    m_inputMethod.discard();
    m_storage->setSelectionForUndo(selectedRange());
    return true;
}

void TextView::replaceText(TextRange range,
                           const Text &replacement,
                           const std::function<void()> &selectAfter)
{
    shouldChangeText(range, replacement);
    m_storage->beginUndoGrouping();
    replaceCharacters(range, replacement);
    if (selectAfter)
        selectAfter();
    m_storage->endUndoGrouping();
    didChangeText();
}

void TextView::setSelectionInPlace(qint64 anchor, qint64 caret)
{
    m_selection.select(anchor, {caret, false}, TextSelection::Scroll::Stay);
}

void TextView::applyOutsideChange(TextRange range, const Text &replacement)
{
    shouldChangeText(range, replacement);
    m_editing.replaceKeepingLines(range, replacement);
    didChangeText();
}

void TextView::perform(EditCommand command)
{
    if (command == EditCommand::Undo || command == EditCommand::Redo)
        m_inputMethod.discard();
    else
        m_inputMethod.commit();
    m_editing.perform(command);
}

void TextView::selectColumns(std::optional<CaretMove> move)
{
    m_inputMethod.commit();
    m_selection.moveColumns(move);
}

void TextView::endColumns()
{
    if (m_selection.columns() != nullptr)
        setSelectionInPlace(anchorOffset(), caretOffset());
}

void TextView::keyPressEvent(QKeyEvent *event)
{
    const auto command = editCommandFor(*event);
    if (isReadOnly() && (command ? changesText(*command) : isTextInput(*event))) {
        event->ignore();
        return;
    }
    // A key event that arrives here is not part of the composition, which therefore ends first.
    if (const auto move = columnMoveFor(*event)) {
        selectColumns(move);
    } else if (const auto request = caretMoveFor(*event)) {
        m_inputMethod.commit();
        m_selection.move(*request);
    } else if (command) {
        perform(*command);
    } else if (event->key() == Qt::Key_Escape && m_selection.columns() != nullptr) {
        deselect();
    } else if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        QContextMenuEvent menu(QContextMenuEvent::Keyboard, {}, {}, event->modifiers());
        contextMenuEvent(&menu);
    } else if (isTextInput(*event)) {
        m_inputMethod.commit();
        m_editing.replaceSelection(Text(event->text()), TextEditing::Kind::Typing);
    } else {
        event->ignore();
    }
}

void TextView::inputMethodEvent(QInputMethodEvent *event)
{
    event->accept();
    m_inputMethod.handle(*event);
}

QVariant TextView::inputMethodQuery(Qt::InputMethodQuery query) const
{
    switch (query) {
    case Qt::ImEnabled:
        return isEnabled() && !isReadOnly();
    case Qt::ImHints:
        return static_cast<int>(Qt::ImhMultiLine | Qt::ImhNoAutoUppercase);
    case Qt::ImFont:
        return font();
    case Qt::ImCursorRectangle:
        return m_viewport.caretRect(m_selection.caret()).translated(viewport()->pos());
    case Qt::ImAnchorRectangle:
        return m_viewport.caretRect({m_selection.anchor(), false}).translated(viewport()->pos());
    default:
        break;
    }
    const QVariant answer = m_inputMethod.answer(query);
    return answer.isValid() ? answer : QAbstractScrollArea::inputMethodQuery(query);
}

void TextView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_inputMethod.commit();
        m_storage->breakUndoCoalescing();
        m_mouse.press(*event);
    } else if (event->button() != Qt::MiddleButton) { // The middle button pastes on release.
        event->ignore();
    }
}

void TextView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_mouse.move(*event))
        m_dragAndDrop.drag();
}

void TextView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_mouse.release(*event);
        return;
    }
    if (event->button() != Qt::MiddleButton || isReadOnly() ||
        !viewport()->rect().contains(event->pos()))
        return;
    const QMimeData *mime = QGuiApplication::clipboard()->mimeData(QClipboard::Selection);
    if (const auto text = textOf(mime)) {
        m_inputMethod.commit();
        m_editing.insertAt(m_viewport.caretAt(event->position()), *text);
    }
}

void TextView::contextMenuEvent(QContextMenuEvent *event)
{
    m_inputMethod.commit();
    QPoint position = event->globalPos();
    if (event->reason() != QContextMenuEvent::Mouse) {
        m_selection.showCaret();
        const QRectF caret = m_viewport.caretRect(m_selection.caret());
        position = viewport()->mapToGlobal(caret.bottomLeft().toPoint());
    } else if (!m_selection.contains(event->pos())) { // A click on the selection keeps it.
        m_storage->breakUndoCoalescing();
        const TextCaret place = m_viewport.caretAt(event->pos());
        m_selection.select(place.offset, place, TextSelection::Scroll::Stay);
    }
    QMenu *menu = makeTextViewMenu(this);
    Q_EMIT contextMenuWillOpen(menu);
    popUpContextMenu(menu, position);
    event->accept();
}

void TextView::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    m_caretBlink.restart(hasFocus());
    repaintAll();
}

void TextView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    // A menu takes the focus only temporarily: keep the composition.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::MenuBarFocusReason)
        m_inputMethod.commit();
    m_caretBlink.restart(false);
    m_storage->breakUndoCoalescing();
    repaintAll();
}

void TextView::setMarks(Marks marks)
{
    m_marks = std::move(marks);
    updateMarks();
}

void TextView::setDecoration(TextDecoration *decoration)
{
    m_viewport.setDecoration(decoration);
    if (decoration != nullptr)
        decoration->textChanged(string(), 0, 0, string().size());
    updateStyle();
}

void TextView::setIndentation(const Indentation &style)
{
    m_editing.setIndentation(style);
    updateStyle();
}

void TextView::setLineSpacing(int percent)
{
    if (std::exchange(m_lineSpacing, percent) != percent)
        updateStyle();
}

void TextView::setShownMarks(ShownMarks marks)
{
    if (std::exchange(m_shownMarks, marks) != marks)
        updateStyle();
}

void TextView::setMarksCurrentLine(bool marks)
{
    if (std::exchange(m_marksCurrentLine, marks) != marks)
        repaintAll();
}

qint64 TextView::lineCount(LineCount count) const
{
    const TextMetrics metrics = string().metrics();
    return (count == LineCount::LineFeeds ? metrics.lineFeeds : metrics.lineBreaks()) + 1;
}

qint64 TextView::lineAt(qint64 offset, LineCount count) const
{
    return count == LineCount::LineFeeds
               ? string().metricsBefore(offset).lineFeeds
               : string().lineBreaksBefore(segments::lineAt(string(), offset).start);
}

void TextView::setWrapping(Wrapping wrapping, int column)
{
    const bool isSameColumn = wrapping != Wrapping::Column || column == m_wrapColumn;
    m_wrapColumn = column;
    if (std::exchange(m_wrapping, wrapping) == wrapping && isSameColumn)
        return;
    const bool showedCaret =
        m_viewport.caretRect(m_selection.caret()).intersects(viewport()->rect());
    updateStyle();
    if (showedCaret)
        m_viewport.makeVisible(m_selection.caret());
    refresh();
}

std::vector<TextView::VisibleLine> TextView::visibleLines(LineCount count) const
{
    std::vector<VisibleLine> lines;
    qint64 last = -1;
    m_viewport.forEachVisible([&](const SegmentLayout &layout, qreal y) {
        // A line that does not wrap begins on its only row, visible or not.
        const TextSegment &segment = layout.segment();
        const qint64 start = m_viewport.style().wraps ? segment.start : segment.lineStart;
        if (std::exchange(last, start) == start)
            return;
        const bool startsLine = count == LineCount::LineFeeds ? isAfterLineFeed(string(), start)
                                                              : start == segment.lineStart;
        const qreal bottom = y + layout.rowCount() * rowHeight();
        if (bottom <= 0 || y >= viewport()->height())
            return;
        // When the segment that starts the line is not laid out, it is not visible: use a top above
        // the viewport.
        if (lines.empty())
            lines.push_back(
                {lineAt(segment.start, count), startsLine ? y : y - rowHeight(), bottom});
        else if (startsLine)
            lines.push_back({lines.back().number + 1, y, bottom});
        lines.back().bottom = bottom;
    });
    return lines;
}

void TextView::selectLines(QMouseEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        if (event->button() != Qt::LeftButton)
            return event->ignore();
        m_inputMethod.commit();
        m_storage->breakUndoCoalescing();
        return m_mouse.pressLine(*event);
    case QEvent::MouseMove:
        return static_cast<void>(m_mouse.move(*event));
    default:
        if (event->button() == Qt::LeftButton)
            m_mouse.release(*event);
    }
}

TextViewPicture TextView::picture() const
{
    TextViewPicture picture;
    picture.selection = selectedRange();
    picture.columns = m_selection.columns();
    picture.caret = m_selection.caret();
    picture.isActive = hasFocus() && isActiveWindow();
    const bool isHidden = hasMarkedText() && m_viewport.composition().cursor < 0;
    picture.caretIsShown = hasFocus() && m_caretBlink.isShown() && !isHidden;
    if (const auto place = m_dragAndDrop.target()) { // Where a drop would insert the text.
        picture.caret = *place;
        picture.caretIsShown = true;
    }
    picture.caretWidth = style()->pixelMetric(QStyle::PM_TextCursorWidth, nullptr, this);
    picture.size = QSizeF(viewport()->size());
    picture.palette = palette();
    if (m_marksCurrentLine)
        picture.currentLine = segments::lineAt(string(), caretOffset()).start;
    if (m_marks) {
        picture.marks = &m_marks(m_viewport.visibleRange());
        // With marks, keep the selected match distinct even while the focus is elsewhere in the
        // window.
        picture.isActive = picture.isActive || (!picture.marks->empty() && isActiveWindow());
    }
    return picture;
}

void TextView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    paintTextView(painter, QRectF(event->rect()), m_viewport, picture());
}

bool TextView::event(QEvent *event)
{
    if (event->type() == QEvent::WindowActivate || event->type() == QEvent::WindowDeactivate)
        repaintAll();
    return QAbstractScrollArea::event(event);
}

void TextView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange ||
        event->type() == QEvent::StyleChange)
        updateStyle();
}

void TextView::updateStyle()
{
    if (TextDecoration *decoration = m_viewport.decoration())
        decoration->paletteChanged(palette());
    const QSizeF size = viewport()->size();
    const qreal width = size.width() - 2 * TextViewport::kMargin;
    TextLayoutStyle layoutStyle = makeTextLayoutStyle(font(), width, indentation().tabWidth);
    layoutStyle.shownMarks = m_shownMarks;
    layoutStyle.wraps = m_wrapping != Wrapping::Off;
    if (m_wrapping == Wrapping::Column)
        layoutStyle.wrapColumn = m_wrapColumn;
    if (m_wrapping != Wrapping::Window)
        layoutStyle.width = layoutStyle.wrapColumn * layoutStyle.columnWidth;
    addLineSpacing(layoutStyle, m_lineSpacing);
    m_viewport.setGeometry(layoutStyle, size);
    repaintAll();
    refresh();
}

void TextView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    const QRectF caret = m_viewport.caretRect(m_selection.caret());
    const bool wasBeside = caret.right() < 0 || caret.left() > m_viewport.size().width();
    const bool showedCaret = !caret.isNull() && !wasBeside;
    updateStyle();
    if (showedCaret && hasFocus())
        m_viewport.makeVisible(m_selection.caret());
    refresh();
}

void TextView::repaintChanges()
{
    if (std::exchange(m_willRepaint, true))
        return;
    // The paint is an event of low priority, so this comes before it.
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_willRepaint = false;
            if (viewport()->isVisible())
                viewport()->update(m_paintedRows.changesTo(picture(), m_viewport));
            else
                m_paintedRows.forget();
        },
        Qt::QueuedConnection);
}

void TextView::repaintAll()
{
    m_paintedRows.forget();
    viewport()->update();
}

void TextView::refresh()
{
    repaintChanges();
    if (m_isUpdatingScrollBars)
        return;
    m_isUpdatingScrollBars = true;
    // A bar that appears or disappears changes the width and with it the rows.
    constexpr int kPasses = 3;
    constexpr int kStepsPerPage = 20;
    for (int pass = 0; pass < kPasses; ++pass) {
        const QSize size = viewport()->size();
        const TextViewport::ScrollRange range = m_viewport.scrollRange();
        verticalScrollBar()->setRange(0, range.maximum);
        verticalScrollBar()->setPageStep(range.pageStep);
        verticalScrollBar()->setSingleStep(std::max(1, range.pageStep / m_viewport.rowsPerPage()));
        verticalScrollBar()->setValue(range.value);
        const TextViewport::ScrollRange sideways = m_viewport.sidewaysRange();
        horizontalScrollBar()->setRange(0, sideways.maximum);
        horizontalScrollBar()->setPageStep(sideways.pageStep);
        horizontalScrollBar()->setSingleStep(std::max(1, sideways.pageStep / kStepsPerPage));
        horizontalScrollBar()->setValue(sideways.value);
        if (viewport()->size() == size)
            break;
    }
    m_isUpdatingScrollBars = false;
    Q_EMIT visibleTextDidChange();
}

void TextView::wheelEvent(QWheelEvent *event)
{
    constexpr int kRows = 3; // Per notch.
    constexpr qreal kNotch = 120;
    QPointF distance = event->pixelDelta();
    if (distance.isNull())
        distance = QPointF(event->angleDelta()) / kNotch * kRows * m_viewport.style().rowHeight;
    const bool hasSides = horizontalScrollBar()->maximum() > 0;
    // A wheel that turns one way only scrolls sideways with Shift.
    if (hasSides && event->modifiers().testFlag(Qt::ShiftModifier) && distance.x() == 0)
        distance = distance.transposed();
    m_viewport.scrollByPixels(-distance.y());
    if (hasSides && distance.x() != 0)
        m_viewport.scrollSidewaysBy(-distance.x());
    refresh();
    updateMicroFocus();
    event->accept();
}

void TextView::scrollContentsBy(int dx, int dy)
{
    if (m_isUpdatingScrollBars)
        return;
    if (dy != 0)
        m_viewport.scrollToValue(verticalScrollBar()->value(), verticalScrollBar()->maximum());
    if (dx != 0) {
        const QScrollBar *bar = horizontalScrollBar();
        m_viewport.scrollSidewaysToValue(bar->value(), bar->maximum(), isRightToLeft() ? dx : -dx);
    }
    // Keep the bar's value: a correction would move its handle away from the mouse.
    repaintAll();
    updateMicroFocus();
    Q_EMIT visibleTextDidChange();
}

} // namespace penwick

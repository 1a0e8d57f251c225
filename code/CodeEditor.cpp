#include "code/CodeEditor.h"

#include "controls/VerbatimText.h"
#include "find/FindBar.h"
#include "find/FindController.h"
#include "platform/settings/NotificationCenter.h"
#include "preferences/Preferences.h"
#include "text/CutText.h"
#include "view/EditorFont.h"
#include "view/LineNumberGutter.h"
#include "view/TextView.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolTip>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr int kFontSize = 13; // Logical pixels, at a zoom of 100 %.
constexpr int kRadius = 6;
constexpr int kFrame = 3; // Wide enough to keep the content out of the rounded corners.

int zoomedFontSize()
{
    constexpr int kWhole = 100;
    const int percent = Preferences::standard().number(PreferenceId::Zoom);
    return (kFontSize * percent + kWhole / 2) / kWhole;
}

bool isKey(const QKeyEvent &event, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    return event.key() == key && (event.modifiers() & ~Qt::KeypadModifier) == modifiers;
}

bool isEnter(const QKeyEvent &event)
{
    const bool isReturn = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    return isReturn && (modifiers == Qt::NoModifier || modifiers == Qt::ShiftModifier);
}

bool isForNextField(const QKeyEvent &event)
{
    return isKey(event, Qt::Key_Tab, Qt::ControlModifier);
}

bool isForPreviousField(const QKeyEvent &event)
{
    // Keyboards report Shift+Tab in different ways.
    return isKey(event, Qt::Key_Backtab, Qt::ShiftModifier) ||
           isKey(event, Qt::Key_Backtab, Qt::NoModifier) ||
           isKey(event, Qt::Key_Tab, Qt::ShiftModifier) ||
           isKey(event, Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier) ||
           isKey(event, Qt::Key_Tab, Qt::ControlModifier | Qt::ShiftModifier);
}

bool isForLevels(const QKeyEvent &event)
{
    return isKey(event, Qt::Key_BracketRight, Qt::ControlModifier) ||
           isKey(event, Qt::Key_BracketLeft, Qt::ControlModifier);
}

} // namespace

CodeEditor::CodeEditor(QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    makeTextArea();
    layout->addWidget(m_area, 1);
    m_findBar = new FindBar(this);
    m_findBar->hide();
    layout->addWidget(m_findBar);
    m_findController = new FindController(m_view, m_findBar, this, Qt::WidgetWithChildrenShortcut);
    connect(m_view, &TextView::textDidChange, this, &CodeEditor::textChanged);
    // Connected after the view: the view has updated the decoration when this slot is called.
    connect(&m_storage, &TextStorage::changed, this, &CodeEditor::errorMarkChanged);
    setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(m_view);
    NotificationCenter::defaultCenter().addObserver(
        UIWordingProfileDidChange, this, [this] { relabel(); });
    relabel();
}

CodeEditor::~CodeEditor()
{
    // As children they would be destroyed after the storage and the decoration, which they use.
    delete m_findController;
    delete m_gutter;
    delete m_view;
}

void CodeEditor::makeTextArea()
{
    m_area = new QWidget(this);
    auto *layout = new QHBoxLayout(m_area);
    layout->setContentsMargins(kFrame, kFrame, kFrame, kFrame);
    layout->setSpacing(0);
    m_view = new TextView(&m_storage, editorFont(zoomedFontSize()), m_area);
    m_view->setDecoration(&m_decoration);
    m_view->installEventFilter(this);
    m_gutter = new LineNumberGutter(m_view, TextView::LineCount::LineFeeds, m_area);
    for (QWidget *marked : {m_view->viewport(), static_cast<QWidget *>(m_gutter)})
        marked->installEventFilter(this);
    Preferences::observe(
        PreferenceId::Zoom, this, [this] { m_view->setFont(editorFont(zoomedFontSize())); });
    layout->addWidget(m_gutter);
    layout->addWidget(m_view, 1);
}

void CodeEditor::relabel()
{
    const QString keys = wording::text(u"macro.manage.codeKeys"_s);
    const QString error = cutText(m_errorMessage, kLongestShown);
    setAccessibleDescription(error.isEmpty() ? keys : error + u' ' + keys);
    m_gutter->setAccessibleName(wording::text(u"editor.lineNumbers"_s));
}

QString CodeEditor::text() const
{
    return m_storage.text().toString();
}

void CodeEditor::setText(const QString &text)
{
    m_view->setString(Text(QStringView(text)));
}

void CodeEditor::markErrorLine(int line, const QString &message)
{
    if (line < 1) {
        clearErrorMark();
        return;
    }
    const qint64 last = m_storage.text().metrics().lineFeeds;
    const qint64 number = std::min<qint64>(line - 1, last);
    m_decoration.setErrorLine(number);
    m_view->scrollTo(m_storage.text().offsetAfterLineFeed(number));
    m_errorMessage = cutText(message, kLongestToolTip);
    relabel();
    errorMarkChanged();
}

void CodeEditor::clearErrorMark()
{
    m_decoration.setErrorLine(std::nullopt);
    errorMarkChanged();
}

int CodeEditor::errorLine() const
{
    return static_cast<int>(m_decoration.errorLine().value_or(-1) + 1);
}

void CodeEditor::errorMarkChanged()
{
    m_gutter->setErrorLine(m_decoration.errorLine());
    m_view->viewport()->update();
    if (!m_decoration.errorLine() && !m_errorMessage.isEmpty()) {
        m_errorMessage.clear();
        relabel();
    }
}

void CodeEditor::showErrorToolTip(const QHelpEvent &event, QWidget *widget) const
{
    const auto lines = m_view->visibleLines(); // The gutter has the same height.
    const bool isOnMark = std::any_of(lines.begin(), lines.end(), [&](const auto &line) {
        return line.number == m_decoration.errorLine() && line.top <= event.pos().y() &&
               event.pos().y() < line.bottom;
    });
    QToolTip::showText(
        event.globalPos(), isOnMark ? verbatimToolTip(m_errorMessage) : QString(), widget);
}

QSize CodeEditor::sizeHint() const
{
    constexpr int kColumns = 60;
    constexpr int kRows = 12;
    const QFontMetrics metrics(m_view->font());
    return {kColumns * metrics.horizontalAdvance(u'0'), kRows * metrics.height()};
}

void CodeEditor::undo()
{
    m_view->undo();
}

void CodeEditor::redo()
{
    m_view->redo();
}

bool CodeEditor::apply(const std::optional<indentation::Edit> &edit)
{
    if (!edit)
        return false;
    m_view->replaceText(edit->range, Text(QStringView(edit->replacement)), [&] {
        m_view->setSelectedRange(edit->selection);
    });
    return true;
}

bool CodeEditor::handleKey(const QKeyEvent &event)
{
    const Text &text = m_storage.text();
    const TextRange selection = m_view->selectedRange();
    if (isForNextField(event) || isForPreviousField(event)) {
        focusNextPrevChild(isForNextField(event));
        return true;
    }
    // While an input method is composing, the view handles the keys; in a rectangle, too.
    if (m_view->hasMarkedText() || m_view->columns() != nullptr)
        return false;
    if (isEnter(event)) {
        return apply(indentation::lineBreak(
            text, selection, [this](qint64 offset) { return m_decoration.isPunctuation(offset); }));
    }
    if (isKey(event, Qt::Key_Tab, Qt::NoModifier))
        return apply(indentation::tab(text, selection));
    if (isKey(event, Qt::Key_BracketRight, Qt::ControlModifier))
        return apply(indentation::indent(text, selection));
    if (isKey(event, Qt::Key_BracketLeft, Qt::ControlModifier)) {
        static_cast<void>(apply(indentation::unindent(text, selection)));
        return true;
    }
    return event.text() == u"}" && apply(indentation::closingBrace(text, selection));
}

bool CodeEditor::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        showErrorToolTip(*static_cast<QHelpEvent *>(event), qobject_cast<QWidget *>(object));
        return true;
    }
    if (object != m_view)
        return QWidget::eventFilter(object, event);
    switch (event->type()) {
    case QEvent::ShortcutOverride: {
        const auto &key = *static_cast<QKeyEvent *>(event);
        if (isForNextField(key) || isForPreviousField(key) || isForLevels(key))
            event->accept(); // Before a shortcut of the window takes it.
        break;
    }
    case QEvent::KeyPress:
        if (handleKey(*static_cast<QKeyEvent *>(event)))
            return true;
        break;
    case QEvent::FocusIn:
    case QEvent::FocusOut:
        update();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(object, event);
}

void CodeEditor::keyPressEvent(QKeyEvent *event)
{
    // The text view ignores Escape, so that it arrives here.
    const bool isEscape = isKey(*event, Qt::Key_Escape, Qt::NoModifier);
    if (!isEscape || !m_findController->close())
        QWidget::keyPressEvent(event);
}

void CodeEditor::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    const bool hasFocus = m_view->hasFocus();
    QColor edge = palette().color(hasFocus ? QPalette::Highlight : QPalette::WindowText);
    if (!hasFocus)
        edge.setAlphaF(0.25F);
    const qreal width = hasFocus ? 2 : 1;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(edge, width));
    painter.setBrush(palette().color(QPalette::Base));
    const qreal inset = width / 2;
    painter.drawRoundedRect(
        QRectF(m_area->geometry()).adjusted(inset, inset, -inset, -inset), kRadius, kRadius);
}

} // namespace penwick

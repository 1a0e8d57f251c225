#include "find/FindController.h"

#include "command/CommandShortcut.h"
#include "find/FindBar.h"
#include "view/TextView.h"
#include "view/TextViewMenu.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QMenu>
#include <QShortcut>

namespace penwick {

namespace {

/// A longer selection is not taken as the pattern. UTF-16 code units.
constexpr qint64 kPatternUnits = 1'000;
/// Maximum number of queued steps. Key repeat can be faster than the search; further steps are
/// dropped.
constexpr std::size_t kQueuedSteps = 8;

} // namespace

FindController::FindController(TextView *view,
                               FindBar *bar,
                               QWidget *scope,
                               Qt::ShortcutContext context)
    : QObject(scope)
    , m_view(view)
    , m_bar(bar)
    , m_session(view->textStorage())
{
    connectBar();
    addShortcuts(scope, context);
    connect(m_view, &TextView::selectionDidChange, this, &FindController::selectionDidChange);
    connect(m_view, &TextView::contextMenuWillOpen, this, &FindController::extendMenu);
    connect(m_view->textStorage(), &TextStorage::changed, this, &FindController::textDidChange);
    connect(&m_session, &FindSession::found, this, &FindController::found);
    connect(&m_session, &FindSession::notFound, this, &FindController::notFound);
    connect(&m_session, &FindSession::countDidChange, this, &FindController::showState);
    connect(&m_session, &FindSession::errorDidChange, this, &FindController::showState);
    connect(&m_session, &FindSession::marksDidChange, m_view, &TextView::updateMarks);
    connect(&m_session, &FindSession::replacementReady, this, &FindController::applyReplacement);
    connect(&m_session, &FindSession::replaceAllReady, this, &FindController::applyReplaceAll);
    m_view->installEventFilter(this);
    m_view->viewport()->installEventFilter(this);
    m_view->setMarks([this](TextRange range) -> const std::vector<TextRange> & {
        return m_session.marksIn(range);
    });
}

FindController::~FindController()
{
    m_view->setMarks({});
}

void FindController::connectBar()
{
    connect(m_bar, &FindBar::patternDidChange, this, &FindController::patternDidChange);
    connect(m_bar, &FindBar::nextRequested, this, &FindController::findNext);
    connect(m_bar, &FindBar::previousRequested, this, &FindController::findPrevious);
    connect(m_bar, &FindBar::replaceRequested, this, &FindController::replace);
    connect(m_bar, &FindBar::replaceAllRequested, this, &FindController::replaceAll);
    connect(m_bar, &FindBar::closeRequested, this, &FindController::close);
}

void FindController::addShortcuts(QWidget *scope, Qt::ShortcutContext context)
{
    const auto add = [this, scope, context](CommandId id, void (FindController::*slot)()) {
        QShortcut *shortcut = makeShortcut(id, scope);
        shortcut->setContext(context);
        connect(shortcut, &QShortcut::activated, this, slot);
    };
    add(CommandId::Find, &FindController::showFind);
    add(CommandId::Replace, &FindController::showReplace);
    add(CommandId::FindNext, &FindController::findNext);
    add(CommandId::FindPrevious, &FindController::findPrevious);
}

void FindController::extendMenu(QMenu *menu)
{
    menu->addSeparator();
    menu->addAction(textMenuEntry(commandTitle(CommandId::Find), shownKey(CommandId::Find)),
                    this,
                    &FindController::showFind);
    menu->addAction(textMenuEntry(commandTitle(CommandId::Replace), shownKey(CommandId::Replace)),
                    this,
                    &FindController::showReplace);
}

void FindController::showFind()
{
    m_bar->setReplaceIsShown(false);
    open();
}

void FindController::showReplace()
{
    m_bar->setReplaceIsShown(true);
    open();
}

void FindController::open()
{
    const bool wasOpen = !m_bar->isHidden();
    if (!wasOpen || m_view->hasFocus()) {
        m_origin = m_view->selectedRange();
        takeSelectionAsPattern();
    }
    m_bar->show();
    m_bar->focusSearchField();
    m_session.setCounting(true);
    m_session.setSelection(m_view->selectedRange());
    showState();
}

void FindController::takeSelectionAsPattern()
{
    const TextRange range = m_view->selectedRange();
    if (range.length == 0 || range.length > kPatternUnits)
        return;
    const QString selected = m_view->string().slice(range.location, range.length);
    if (Text(selected).metrics().separators == 0)
        m_bar->setPatternText(selected);
}

bool FindController::close()
{
    if (m_bar->isHidden())
        return false;
    m_queue.clear();
    m_pending = Pending::Nothing;
    m_session.cancelSearch();
    m_bar->hide();
    m_bar->showReplacing(false);
    m_session.setCounting(false);
    m_view->setFocus(Qt::OtherFocusReason);
    return true;
}

void FindController::patternDidChange()
{
    m_queue.clear();
    m_isWrapped = false;
    m_bar->showReplacing(false);
    m_session.setPattern(m_bar->pattern());
    searchFrom({m_origin.location, false}, Pending::Typing);
    showState();
}

void FindController::searchFrom(FindPlace place, Pending pending)
{
    m_pending = pending;
    // A search while typing always wraps: a match before the caret is as good as one after it.
    m_session.findNext(place, pending == Pending::Typing || m_bar->wraps());
}

void FindController::findNext()
{
    request(Direction::Forward);
}

void FindController::findPrevious()
{
    request(Direction::Backward);
}

void FindController::request(Direction direction)
{
    if (m_bar->pattern().string.isEmpty())
        showFind();
    else if (!m_session.isSearching())
        perform(direction);
    else if (m_pending != Pending::ReplaceAll && m_queue.size() < kQueuedSteps)
        m_queue.push_back(direction);
}

FindPlace FindController::placeAfterSelection() const
{
    const TextRange range = m_view->selectedRange();
    if (range.length > 0)
        return {range.end(), true};
    // Step past an empty match, which would be found again.
    const bool isMatch = m_lastFound == TextRange{range.location, 0};
    return {isMatch ? findOffsetAfter(m_view->string(), range.location) : range.location, false};
}

void FindController::perform(Direction direction)
{
    if (direction == Direction::Forward) {
        searchFrom(placeAfterSelection(), Pending::Step);
    } else {
        m_pending = Pending::Step;
        m_session.findPrevious(m_view->selectedRange().location, m_bar->wraps());
    }
}

void FindController::performQueued()
{
    if (m_queue.empty() || m_session.isSearching())
        return;
    const Direction direction = m_queue.front();
    m_queue.pop_front();
    perform(direction);
}

void FindController::select(TextRange range)
{
    m_isSelecting = true;
    m_view->setSelectedRange(range);
    m_isSelecting = false;
    m_session.setSelection(m_view->selectedRange());
}

void FindController::found(const TextRange &match, bool isWrapped)
{
    m_lastFound = match;
    m_isWrapped = isWrapped;
    const bool isStep = m_pending != Pending::Typing;
    m_pending = Pending::Nothing;
    select(match);
    if (isStep)
        m_origin = {match.location, 0};
    showState();
    performQueued();
}

void FindController::notFound()
{
    const Pending pending = std::exchange(m_pending, Pending::Nothing);
    m_queue.clear();
    m_isWrapped = false;
    if (pending == Pending::Typing) {
        m_lastFound.reset();
        select(m_origin);
    } else if (pending == Pending::Replacement) {
        perform(Direction::Forward);
        return;
    } else if (!m_session.error()) {
        QApplication::beep();
    }
    showState();
}

void FindController::replace()
{
    if (m_session.isSearching() || m_session.error())
        return;
    m_bar->showReplacing(false);
    const TextRange range = m_view->selectedRange();
    m_pending = Pending::Replacement;
    m_session.replaceMatch(range, m_bar->replacement());
}

void FindController::applyReplacement(const TextRange &match, const QString &replacement)
{
    const Text text(replacement);
    m_view->replaceText(match, text);
    searchFrom({match.location + text.size(), true}, Pending::Step);
}

void FindController::replaceAll()
{
    if (m_session.error())
        return;
    m_queue.clear();
    m_pending = Pending::ReplaceAll;
    m_caretToKeep = m_view->caretOffset();
    m_session.replaceAll(m_bar->replacement(), m_caretToKeep);
    if (m_session.isSearching())
        m_bar->showReplacing(true);
}

void FindController::applyReplaceAll(const ReplaceAllResult &result)
{
    if (m_view->caretOffset() != m_caretToKeep) {
        replaceAll(); // The caret moved during the search: start over.
        return;
    }
    m_pending = Pending::Nothing;
    if (result.count > 0)
        m_view->replaceText(result.range, result.replacement, [&] { select({result.caret, 0}); });
    m_bar->showReplaced(result.count);
}

void FindController::selectionDidChange()
{
    m_session.setSelection(m_view->selectedRange());
    if (m_isSelecting)
        return;
    abandonSearch();
    m_origin = m_view->selectedRange();
    m_lastFound.reset();
    m_isWrapped = false;
    showState();
}

/// Cancels the search and the queued steps, so that a late result does not move the selection while
/// the user works in the text. Replace All continues: it keeps the caret, and starts over when the
/// caret has moved.
void FindController::abandonSearch()
{
    m_queue.clear();
    if (m_pending == Pending::ReplaceAll)
        return;
    m_session.cancelSearch();
    m_pending = Pending::Nothing;
}

bool FindController::eventFilter(QObject *object, QEvent *event)
{
    const auto *composing = event->type() == QEvent::InputMethod
                                ? static_cast<const QInputMethodEvent *>(event)
                                : nullptr;
    if (event->type() == QEvent::MouseButtonPress ||
        (composing != nullptr && !composing->preeditString().isEmpty()))
        abandonSearch();
    return QObject::eventFilter(object, event);
}

void FindController::textDidChange()
{
    // The last match and the queued requests refer to the old text.
    m_lastFound.reset();
    m_queue.clear();
    m_pending = Pending::Nothing;
    m_bar->showReplacing(false);
}

void FindController::showState()
{
    m_bar->showError(m_session.error());
    m_bar->showCount(m_session.count(), m_isWrapped);
}

} // namespace penwick

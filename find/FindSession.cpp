#include "find/FindSession.h"

#include <utility>

namespace penwick {

namespace {

// Milliseconds. The waits are how long a call blocks before its result is reported later.
constexpr int kSearchWait = 8;      // For a search, a replacement or the count.
constexpr int kMarkWait = 4;        // For marks and the number of the selected match.
constexpr int kRestartDelay = 150;  // Debounces the count while the user types.
constexpr int kProgressPeriod = 80; // Between updates of the displayed count.

} // namespace

FindSession::FindSession(TextStorage *storage, QObject *parent)
    : QObject(parent)
    , m_storage(storage)
    , m_error(FindPatternError{})
{
    m_restartTimer.setSingleShot(true);
    m_restartTimer.setInterval(kRestartDelay);
    m_progressTimer.setInterval(kProgressPeriod);
    connect(&m_restartTimer, &QTimer::timeout, this, &FindSession::restartCount);
    connect(&m_progressTimer, &QTimer::timeout, this, &FindSession::showProgress);
    connect(storage, &TextStorage::changed, this, &FindSession::textDidChange);
    connect(&m_search, &BackgroundTask::failed, this, [this] {
        reportTooComplex();
        Q_EMIT notFound();
    });
    connect(&m_counting, &BackgroundTask::failed, this, &FindSession::countDidFail);
}

void FindSession::abandonAll()
{
    ++m_revision;
    m_search.cancel();
    m_counting.cancel();
    m_numbering.cancel();
    m_marking.cancel();
    m_progressTimer.stop();
    m_restartTimer.stop();
    m_counter.reset();
}

void FindSession::setPattern(const FindPattern &pattern)
{
    abandonAll();
    m_error.reset();
    m_finder.reset();
    if (auto finder = TextFinder::compile(pattern))
        m_finder = *std::move(finder);
    else
        m_error = finder.error();
    restartCount();
    Q_EMIT marksDidChange();
}

void FindSession::setCounting(bool isCounting)
{
    if (m_isCounting == isCounting)
        return;
    m_isCounting = isCounting;
    abandonAll();
    restartCount();
    Q_EMIT marksDidChange();
}

void FindSession::textDidChange()
{
    if (!m_isCounting && !m_search.isRunning())
        return;
    abandonAll();
    // Keep showing the old count until the new one is known: it is rarely far off.
    m_restartTimer.start();
    Q_EMIT marksDidChange();
}

void FindSession::restartCount()
{
    m_count = {};
    if (!m_isCounting || !m_finder || m_storage.isNull()) {
        m_count.isComplete = true;
        Q_EMIT countDidChange();
        return;
    }
    m_counter = std::make_shared<FindCount>(*m_finder, m_storage->text());
    m_counting.start(
        [this, counter = m_counter](const BackgroundTask::IsCancelled &isCancelled) {
            while (!isCancelled() && counter->countStep())
                ;
            return [this] { showProgress(); };
        },
        kSearchWait);
    if (m_counting.isRunning()) {
        m_progressTimer.start();
        showProgress();
    }
}

void FindSession::showProgress()
{
    if (!m_counter)
        return;
    const FindCount::Progress progress = m_counter->progress();
    m_count.total = progress.count;
    m_count.isComplete = progress.isComplete || progress.isTooComplex;
    if (m_count.isComplete)
        m_progressTimer.stop();
    if (progress.isTooComplex)
        reportTooComplex();
    askNumber();
    Q_EMIT countDidChange();
}

void FindSession::setSelection(TextRange selection)
{
    if (selection == m_selection)
        return;
    m_selection = selection;
    m_count.number = 0;
    if (!m_counter)
        return;
    askNumber();
    Q_EMIT countDidChange();
}

void FindSession::askNumber()
{
    if (m_count.number != 0)
        return;
    const TextRange range = m_selection;
    const auto show = [this](std::optional<qint64> number) {
        m_count.number = number.value_or(0);
        Q_EMIT countDidChange();
    };
    m_numbering.start(
        [counter = m_counter, range, show](const BackgroundTask::IsCancelled &isCancelled) {
            const std::optional<qint64> number = counter->numberOf(range, isCancelled);
            return [show, number] { show(number); };
        },
        kMarkWait);
}

void FindSession::reportTooComplex()
{
    if (m_error)
        return;
    m_error = FindPatternError{FindPatternError::Code::TooComplex, 0, {}};
    Q_EMIT errorDidChange();
}

void FindSession::countDidFail()
{
    m_progressTimer.stop();
    m_count.isComplete = true;
    reportTooComplex();
    Q_EMIT countDidChange();
}

void FindSession::cancelSearch()
{
    m_search.cancel();
}

void FindSession::report(const FindResult &result)
{
    if (result.isTooComplex)
        reportTooComplex();
    if (result.match)
        Q_EMIT found(*result.match, result.isWrapped);
    else
        Q_EMIT notFound();
}

void FindSession::startSearch(SearchWork work)
{
    m_search.cancel();
    if (!m_finder || m_storage.isNull()) {
        Q_EMIT notFound();
        return;
    }
    m_search.start(
        [finder = *m_finder, text = m_storage->text(), work = std::move(work)](
            const FindIsCancelled &isCancelled) { return work(finder, text, isCancelled); },
        kSearchWait);
}

void FindSession::findNext(FindPlace from, bool wraps)
{
    startSearch([this, from, wraps](const TextFinder &finder,
                                    const Text &text,
                                    const FindIsCancelled &isCancelled) {
        const FindResult result = penwick::findNext(finder, text, from, wraps, isCancelled);
        return [this, result] { report(result); };
    });
}

void FindSession::findPrevious(qint64 offset, bool wraps)
{
    startSearch([this, offset, wraps](const TextFinder &finder,
                                      const Text &text,
                                      const FindIsCancelled &isCancelled) {
        const FindResult result = penwick::findPrevious(finder, text, offset, wraps, isCancelled);
        return [this, result] { report(result); };
    });
}

void FindSession::replaceMatch(const TextRange &match, const QString &replacement)
{
    startSearch([this, match, replacement](const TextFinder &finder,
                                           const Text &text,
                                           const FindIsCancelled &isCancelled) {
        const auto result =
            replacementAt(finder, FindReplacement(replacement, finder), text, match, isCancelled);
        return [this, match, result] {
            if (result)
                Q_EMIT replacementReady(match, *result);
            else
                Q_EMIT notFound();
        };
    });
}

void FindSession::replaceAll(const QString &replacement, qint64 caret)
{
    startSearch([this, replacement, caret](const TextFinder &finder,
                                           const Text &text,
                                           const FindIsCancelled &isCancelled) {
        const ReplaceAllResult result = replaceAllMatches(
            finder, FindReplacement(replacement, finder), text, caret, isCancelled);
        return [this, result] {
            if (result.isTooComplex)
                reportTooComplex();
            else
                Q_EMIT replaceAllReady(result);
        };
    });
}

const std::vector<TextRange> &FindSession::marksIn(TextRange range)
{
    if (!m_isCounting || !m_finder || m_storage.isNull()) {
        m_marks.clear();
        m_markedRevision = 0;
        return m_marks;
    }
    const bool isKnown = m_markedRevision == m_revision && m_markedRange == range;
    if (isKnown || m_marking.isRunning())
        return m_marks;
    // Without a count there are no checkpoints; the search then starts near the range.
    const auto counter =
        m_counter ? m_counter : std::make_shared<FindCount>(*m_finder, m_storage->text());
    const auto isWithinCall = std::make_shared<bool>(true);
    m_marking.start(
        [this, counter, range, isWithinCall](const BackgroundTask::IsCancelled &isCancelled) {
            const auto marks =
                counter->matchesIn(range.location, range.end(), kMarkLimit, isCancelled);
            return [this, range, marks, isWithinCall] {
                m_marks = marks;
                m_markedRange = range;
                m_markedRevision = m_revision;
                if (!*isWithinCall)
                    Q_EMIT marksDidChange();
            };
        },
        kMarkWait);
    *isWithinCall = false;
    return m_marks;
}

} // namespace penwick

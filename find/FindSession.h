#pragma once

#include "editor/BackgroundTask.h"
#include "editor/TextStorage.h"
#include "find/FindCount.h"
#include "find/FindReplacement.h"
#include "find/TextFinder.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace penwick {

/// Searches one storage for a pattern and keeps the results. Every search runs on a background
/// thread over a snapshot of the text. A quick result is reported within the call, any other in a
/// later turn of the event loop; it is discarded when the text or the pattern has changed in the
/// meantime. Ranges are in UTF-16 code units, 0-based.
class FindSession final : public QObject
{
    Q_OBJECT

public:
    /// \param storage not owned; held weakly.
    explicit FindSession(TextStorage *storage, QObject *parent = nullptr);

    /// Cancels all work for the old pattern.
    void setPattern(const FindPattern &pattern);

    /// Why the pattern cannot be searched for; an empty pattern is an error too.
    [[nodiscard]] const std::optional<FindPatternError> &error() const { return m_error; }

    /// Switches counting and marking of matches. Switch it on only while the results are visible.
    void setCounting(bool isCounting);

    struct Count
    {
        qint64 number = 0; ///< Of the selected match, 1-based; 0: none or not known yet.
        qint64 total = 0;
        bool isComplete = false; ///< False while there may be more.
    };

    [[nodiscard]] const Count &count() const { return m_count; }

    /// Sets the selection, whose number is `Count::number`.
    void setSelection(TextRange selection);

    /// Both emit `found` or `notFound`, and cancel a search that is still running.
    void findNext(FindPlace from, bool wraps);
    void findPrevious(qint64 offset, bool wraps);

    [[nodiscard]] bool isSearching() const { return m_search.isRunning(); }

    /// Cancels a running search or replacement without a report.
    void cancelSearch();

    /// Computes the replacement for `match`. Emits `replacementReady`, or `notFound` when the
    /// pattern does not match there.
    void replaceMatch(const TextRange &match, const QString &replacement);
    /// Computes the text with all matches replaced. Emits `replaceAllReady`, `errorDidChange` when
    /// the search is abandoned, or `notFound` when the pattern cannot be searched for. `caret` is
    /// as in `replaceAllMatches`.
    void replaceAll(const QString &replacement, qint64 caret);

    /// Returns the matches in a range of the text, ascending. When computing them takes longer,
    /// returns the last known ones and emits `marksDidChange` later.
    [[nodiscard]] const std::vector<TextRange> &marksIn(TextRange range);

    /// Maximum number of matches that are marked at a time.
    static constexpr std::size_t kMarkLimit = 20'000;

Q_SIGNALS:
    void found(const penwick::TextRange &match, bool isWrapped);
    void notFound();
    void replacementReady(const penwick::TextRange &match, const QString &replacement);
    void replaceAllReady(const penwick::ReplaceAllResult &result);
    void countDidChange();
    void marksDidChange();
    /// `error` changed other than by `setPattern`: matching was abandoned.
    void errorDidChange();

private:
    void textDidChange();
    void abandonAll();
    void restartCount();
    void showProgress();
    void askNumber();
    void reportTooComplex();
    void countDidFail();
    void report(const FindResult &result);

    using SearchWork = std::function<BackgroundTask::Completion(
        const TextFinder &, const Text &, const FindIsCancelled &)>;
    /// Searches the text as it is now, in place of a search that is still running. Emits `notFound`
    /// when the pattern cannot be searched for.
    void startSearch(SearchWork work);

    QPointer<TextStorage> m_storage;
    std::optional<FindPatternError> m_error;
    std::optional<TextFinder> m_finder; // Empty when the pattern does not compile.
    bool m_isCounting = false;
    quint64 m_revision = 1; // Incremented when earlier results become outdated.

    std::shared_ptr<FindCount> m_counter; // Holds a snapshot of the text.
    Count m_count;
    TextRange m_selection;
    std::vector<TextRange> m_marks;
    TextRange m_markedRange;
    quint64 m_markedRevision = 0; // The revision of `m_marks`; 0: unknown.

    BackgroundTask m_search;
    BackgroundTask m_counting;
    BackgroundTask m_numbering;
    BackgroundTask m_marking;
    QTimer m_progressTimer;
    QTimer m_restartTimer;
};

} // namespace penwick

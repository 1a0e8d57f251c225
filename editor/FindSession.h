#pragma once

#include "editor/BackgroundTask.h"
#include "editor/FindCount.h"
#include "editor/FindReplacement.h"
#include "editor/TextFinder.h"
#include "editor/TextStorage.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

namespace penwick {

/// What is looked for in one storage, and what became of it. Every search runs on another thread
/// over a copy of the text's value; what it finds is reported within the call if it comes quickly,
/// else in a later turn, and dropped when the text or the pattern has changed meanwhile. Ranges are
/// in UTF-16 code units, 0-based.
class FindSession final : public QObject
{
    Q_OBJECT

public:
    /// \param storage not owned; held weakly.
    explicit FindSession(TextStorage *storage, QObject *parent = nullptr);

    /// Abandons what runs for the old pattern.
    void setPattern(const FindPattern &pattern);

    [[nodiscard]] const FindPattern &pattern() const { return m_pattern; }

    /// Why nothing can be found; an empty pattern is such a reason too.
    [[nodiscard]] const std::optional<FindPatternError> &error() const { return m_error; }

    /// Whether matches are counted and marked: only while somebody can see it.
    void setCounting(bool isCounting);

    struct Count
    {
        qint64 number = 0; ///< Of the match that is selected, from 1; 0: none or not known yet.
        qint64 total = 0;
        bool isComplete = false; ///< Else there may be more.
    };

    [[nodiscard]] const Count &count() const { return m_count; }

    /// Tells what is selected, for `Count::number`.
    void setSelection(TextRange selection);

    /// Reports through `found` or `notFound`. Abandons a search that still runs.
    void findNext(FindPlace from, bool wraps);
    void findPrevious(qint64 offset, bool wraps);

    [[nodiscard]] bool isSearching() const { return m_search.isRunning(); }

    /// Abandons what is being searched or replaced, without a report.
    void cancelSearch();

    /// Works out what takes the place of `match`; reports through `replacementReady`, or through
    /// `notFound` when the pattern does not match there.
    void replaceMatch(const FindMatch &match, const QString &replacement);
    /// Works out the text with all matches replaced; reports through `replaceAllReady`. `caret` as
    /// in `replaceAllMatches`.
    void replaceAll(const QString &replacement, qint64 caret);

    /// The matches in a stretch of the text, ascending. Those last known, when it takes time to
    /// find out: then `marksDidChange` follows.
    [[nodiscard]] const std::vector<FindMatch> &marksIn(TextRange range);

    /// The most matches that are marked at a time.
    static constexpr std::size_t kMarkLimit = 20'000;

Q_SIGNALS:
    void found(const penwick::FindMatch &match, bool isWrapped);
    void notFound();
    void replacementReady(const penwick::FindMatch &match, const QString &replacement);
    void replaceAllReady(const penwick::ReplaceAllResult &result);
    void countDidChange();
    void marksDidChange();
    /// `error` changed other than by `setPattern`: matching was given up.
    void errorDidChange();

private:
    void textDidChange();
    void abandonAll();
    void restartCount();
    void showProgress();
    void askNumber();
    void giveUp();
    void searchDidFail();
    void countDidFail();
    void report(const FindResult &result);

    QPointer<TextStorage> m_storage;
    FindPattern m_pattern;
    std::optional<FindPatternError> m_error;
    std::optional<TextFinder> m_finder; // Nothing where the pattern has an error.
    bool m_isCounting = false;
    quint64 m_revision = 1; // Of text and pattern together.

    std::shared_ptr<FindCount> m_counter; // Of the text as it was when the count began.
    Count m_count;
    TextRange m_selection;
    std::vector<FindMatch> m_marks;
    TextRange m_markedRange;
    quint64 m_markedRevision = 0; // 0: nothing is known.

    BackgroundTask m_search;
    BackgroundTask m_counting;
    BackgroundTask m_numbering;
    BackgroundTask m_marking;
    QTimer m_progressTimer;
    QTimer m_restartTimer;
};

} // namespace penwick

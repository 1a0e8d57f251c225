#pragma once

#include "editor/FindPattern.h"
#include "text/Text.h"

#include <QElapsedTimer>
#include <QRegularExpression>

#include <tl/expected.hpp>

namespace penwick {

/// How much of a text an expression is shown at a time, UTF-16 code units. Tests take small sizes
/// to meet many edges; what is found never depends on them.
struct FindSizes
{
    qint64 smallest = 512;      ///< Of a stretch whose places are all tried in one call.
    qint64 largest = 32'768;    ///< The same, where the calls are quick.
    qint64 behind = 1'024;      ///< What is shown before the stretch.
    qint64 single = 4'096;      ///< Of the first stretch for one place that needs more.
    qint64 whole = 64LL << 20U; ///< The most that one place may need.
};

/// A regular expression made ready to search texts of any size: what it finds is what it would find
/// in the whole text as one string. Immutable, cheaply copied, usable from several threads at once.
class FindExpression final
{
public:
    [[nodiscard]] static tl::expected<FindExpression, FindPatternError>
    compile(const FindPattern &pattern, const FindSizes &sizes);

    [[nodiscard]] int groupCount() const { return m_quick.captureCount(); }

    /// True when a match may begin behind the place where it was tried: `\K`.
    [[nodiscard]] bool movesStart() const { return m_movesStart; }

private:
    friend class FindExpressionSearch;

    FindExpression() = default;
    void examine(QStringView string);

    QRegularExpression m_quick;
    QRegularExpression m_patient; // Slower, but with a stack as large as it needs.
    FindSizes m_sizes;
    qint64 m_behind = 0;
    bool m_movesStart = false;
    bool m_triesInsideCrLf = false;
    bool m_seesLineStarts = false;
    bool m_beginsWithRestOfLine = false;
    bool m_needsWhole = false; // Depends on where a search begins: it has to see all at once.
};

/// Tries an expression at the places of one text, ascending. It keeps what it has cut out of the
/// text, so it lives for one stretch only.
class FindExpressionSearch final
{
public:
    FindExpressionSearch(const FindExpression &expression, const Text &text);

    struct Outcome
    {
        enum class Kind {
            Match,      ///< `match` is the next one; `start` and `end` are its place in the text.
            Nothing,    ///< Nothing matches at the places before `start`.
            TooComplex, ///< Trying the place took too much.
        };
        Kind kind = Kind::Nothing;
        qint64 start = 0; ///< UTF-16 code units, 0-based. One more than the text's size: no more.
        qint64 end = 0;
        QRegularExpressionMatch match; ///< Valid until the next call.
    };

    /// Goes on at `from`, for a bounded time: the answer may be that nothing is there, for a short
    /// way.
    [[nodiscard]] Outcome next(qint64 from);

    /// Nanoseconds from when this was made to the latest answer.
    [[nodiscard]] qint64 elapsed() const { return m_elapsed; }

private:
    enum class Places { All, One };
    struct Try;

    [[nodiscard]] Outcome tryMany(qint64 from);
    [[nodiscard]] Outcome tryOne(qint64 from);
    [[nodiscard]] Outcome tryWhole(qint64 from);
    [[nodiscard]] Try attempt(qint64 from, qint64 end, Places places);
    void adaptLength();
    void show(qint64 from, qint64 end);
    [[nodiscard]] qint64 placeFrom(qint64 offset) const;
    [[nodiscard]] qint64 placeAfter(qint64 offset) const;
    [[nodiscard]] qint64 endAfter(qint64 from, qint64 length) const;
    [[nodiscard]] Outcome found(const QRegularExpressionMatch &match) const;
    [[nodiscard]] static Outcome nothingBefore(qint64 offset);

    const FindExpression &m_expression;
    const Text &m_text;
    QElapsedTimer m_timer;
    qint64 m_elapsed = 0;
    QString m_units;           // A stretch of the text,
    qint64 m_start = 0;        // which begins here.
    qint64 m_end = 0;          // Of the stretch whose places are all tried,
    qint64 m_length = 0;       // and the length of the next one.
    qint64 m_lookedBehind = 0; // At the least, by any match.
    qint64 m_singlyUntil = 0;  // The places before this are tried one by one.
};

} // namespace penwick

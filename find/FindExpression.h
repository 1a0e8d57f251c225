#pragma once

#include "find/FindPattern.h"
#include "text/Text.h"

#include <QElapsedTimer>
#include <QRegularExpression>

#include <tl/expected.hpp>

namespace penwick {

/// How much text the regular expression library is given at a time, in UTF-16 code units. Tests set
/// small sizes to cover many boundaries; the matches never depend on the sizes.
struct FindSizes
{
    qint64 smallest = 512;      ///< Minimum length of a stretch that is searched in one call.
    qint64 largest = 32'768;    ///< Maximum length of such a stretch, used while calls are fast.
    qint64 behind = 1'024;      ///< Context before the stretch.
    qint64 single = 4'096;      ///< First length for a single place that needs more text.
    qint64 whole = 64LL << 20U; ///< Maximum length for a single place.
};

/// A regular expression compiled for texts of any size: it finds what it would find in the whole
/// text as one string. Immutable, cheap to copy, safe to use from several threads at once.
class FindExpression final
{
public:
    [[nodiscard]] static tl::expected<FindExpression, FindPatternError>
    compile(const FindPattern &pattern, const FindSizes &sizes);

    [[nodiscard]] int groupCount() const { return m_quick.captureCount(); }

    /// True when the expression holds `\K`: a match may begin after the place where it was tried.
    [[nodiscard]] bool movesStart() const { return m_movesStart; }

private:
    friend class FindExpressionSearch;

    FindExpression() = default;
    void examine(QStringView string);

    QRegularExpression m_quick;       // JIT-compiled, with low limits.
    QRegularExpression m_interpreted; // Slower, but its stack grows as needed.
    FindSizes m_sizes;
    qint64 m_behind = 0;
    bool m_movesStart = false;
    bool m_triesInsideCrLf = false;
    bool m_seesLineStarts = false;
    bool m_beginsWithRestOfLine = false;
    bool m_needsWhole = false; // Depends on where a search begins: needs the whole text at once.
};

/// Tries an expression at the places of one text, ascending. A place is an offset where a match
/// attempt begins. The object caches a stretch of the text and is meant for one step of a search.
/// It keeps references to both constructor arguments.
class FindExpressionSearch final
{
public:
    FindExpressionSearch(const FindExpression &expression, const Text &text);

    struct Outcome
    {
        enum class Kind {
            Match,      ///< `match` is the next match; `start` and `end` are its range.
            Nothing,    ///< Nothing matches at the places before `start`.
            TooComplex, ///< The place exceeds the limits on time, memory or length.
        };
        Kind kind = Kind::Nothing;
        qint64 start = 0; ///< UTF-16 code units, 0-based. The text's size + 1: none is left.
        qint64 end = 0;
        QRegularExpressionMatch match; ///< Valid until the next call.
    };

    /// Continues at `from`, for a bounded time: `Nothing` may cover a short stretch only.
    [[nodiscard]] Outcome next(qint64 from);

    /// Nanoseconds from construction to the latest outcome.
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
    QString m_units;           // A cached stretch of the text.
    qint64 m_start = 0;        // Offset of `m_units` in the text.
    qint64 m_end = 0;          // End of the stretch that is searched in one call.
    qint64 m_length = 0;       // Length of the next such stretch.
    qint64 m_lookedBehind = 0; // How far the expression is known to look behind.
    qint64 m_singlyUntil = 0;  // Places before this offset are tried one by one.
};

} // namespace penwick

#include "find/FindExpression.h"

#include "find/MatchView.h"
#include "text/Separators.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

/// Makes the expression recognize all line breaks that the editor shows. QRegularExpression has no
/// option for this, nor for the limits below, so they are prefixed to the pattern.
constexpr QStringView kLineBreaks = u"(*ANY)";
/// Limit of the JIT-compiled expression. It is fast, but a counted step may take any time, and its
/// stack is small: `(a|b)*` exhausts it on a long line. Beyond the limit the interpreter takes
/// over.
constexpr QStringView kJitLimits = u"(*LIMIT_MATCH=20000)";
/// Limits of the interpreter, about a tenth of a second and 48 MiB. They stop expressions that
/// backtrack excessively or need too much memory.
constexpr QStringView kInterpreterLimits = u"(*NO_JIT)(*LIMIT_MATCH=2500000)(*LIMIT_HEAP=49152)";

/// PCRE2 looks behind by at most 65,535 characters. One more character keeps the start of the
/// subject from being taken for the start of the text. A character has up to two UTF-16 code units.
constexpr qint64 kFarthestBehind = qint64{2} * (65'535 + 1);

constexpr qint64 kMillisecond = 1'000'000; // In nanoseconds.
constexpr qint64 kQuickCall = 1 * kMillisecond;
constexpr qint64 kSlowCall = 10 * kMillisecond;

/// True for an expression that also tries to match between CR and LF. PCRE2 skips that place unless
/// the expression names CR or LF explicitly. It offers no query for this, so a probe is matched.
bool triesInsideCrLf(const QString &string, QRegularExpression::PatternOptions options)
{
    const QRegularExpression probe(
        kLineBreaks.toString() + u"(?:"_s + string + u"(?!)|(?<=\\p{Cc})(?=\\p{Cc}))"_s, options);
    return probe.isValid() ? probe.match(u"\r\n"_s).hasMatch() : string.contains(u"\\n"_s);
}

bool isSeparatorUnit(QChar unit)
{
    return isSeparator(unit.unicode());
}

/// Returns the first offset from `offset` on that holds no line separator, or the text's size.
qint64 offsetBehindSeparators(const Text &text, qint64 offset)
{
    constexpr qint64 kUnits = 4'096;
    while (offset < text.size()) {
        const QString units = text.slice(offset, kUnits);
        const auto other = std::find_if_not(units.begin(), units.end(), isSeparatorUnit);
        if (other != units.end())
            return offset + std::distance(units.begin(), other);
        offset += units.size();
    }
    return text.size();
}

/// True for an expression that starts with `.*` such that, if it fails at one place of a line, it
/// fails at all later places of that line. PCRE2 uses this too, but only within one call.
bool beginsWithRestOfLine(QStringView string)
{
    const bool isGroup = string.startsWith(u"(.*)");
    if (!isGroup && !string.startsWith(u".*"))
        return false;
    // The group must be mandatory and not repeated. Back references, alternatives, verbs and
    // special groups other than assertions and non-capturing groups are excluded.
    static const QRegularExpression kOther(
        uR"(^\(\.\*\)[?*+{]|\||\\[0-9gkK]|\(\*|\(\?(?![:=!]|<[=!]))"_s);
    return !matchView(kOther, string).hasMatch();
}

} // namespace

tl::expected<FindExpression, FindPatternError> FindExpression::compile(const FindPattern &pattern,
                                                                       const FindSizes &sizes)
{
    QRegularExpression::PatternOptions options =
        QRegularExpression::MultilineOption | QRegularExpression::UseUnicodePropertiesOption;
    if (!pattern.matchesCase)
        options |= QRegularExpression::CaseInsensitiveOption;
    const QString string = Text(pattern.string).toString();
    const QString prefix = kLineBreaks.toString() + kJitLimits.toString();
    FindExpression result;
    result.m_quick = QRegularExpression(prefix + string, options);
    if (!result.m_quick.isValid()) {
        const qint64 offset = result.m_quick.patternErrorOffset() - prefix.size();
        return tl::unexpected(FindPatternError{FindPatternError::Code::InvalidExpression,
                                               std::clamp<qint64>(offset, 0, string.size()),
                                               result.m_quick.errorString()});
    }
    result.m_quick.optimize();
    result.m_interpreted = QRegularExpression(
        kLineBreaks.toString() + kInterpreterLimits.toString() + string, options);
    result.m_interpreted.optimize();
    result.m_sizes = sizes;
    result.m_behind = sizes.behind;
    result.m_triesInsideCrLf = triesInsideCrLf(string, options);
    result.examine(string);
    return result;
}

/// Looks for constructs that need special treatment. The scan is lexical: a false hit, in a comment
/// for instance, only costs time.
void FindExpression::examine(QStringView string)
{
    m_beginsWithRestOfLine = beginsWithRestOfLine(string);
    for (qsizetype i = 0; i < string.size(); ++i) {
        const QStringView rest = string.mid(i);
        if (string[i] == u'\\') {
            m_movesStart = m_movesStart || rest.startsWith(u"\\K");
            m_needsWhole = m_needsWhole || rest.startsWith(u"\\G");
            ++i;
        } else if (rest.startsWith(u"(?<=") || rest.startsWith(u"(?<!")) {
            m_behind = std::max(m_behind, kFarthestBehind);
        } else if (rest.startsWith(u"(*")) {
            m_needsWhole = true;
        }
        m_seesLineStarts = m_seesLineStarts || string[i] == u'^';
    }
}

FindExpressionSearch::FindExpressionSearch(const FindExpression &expression, const Text &text)
    : m_expression(expression)
    , m_text(text)
    , m_length(expression.m_sizes.smallest)
{
    m_timer.start();
}

struct FindExpressionSearch::Try
{
    enum class Kind {
        Match,
        Nothing,
        NeedsMore, // No match before `offset`; one there may reach beyond the stretch.
        Failed,
    };
    Kind kind = Kind::Failed;
    qint64 offset = 0;
    QRegularExpressionMatch match;
};

/// Returns the end of a stretch of about `length` units. When the expression contains `^`, the
/// stretch never ends after a line break: `^` does not match at the very end of a subject, and
/// PCRE2 does not report that more text could change that.
qint64 FindExpressionSearch::endAfter(qint64 from, qint64 length) const
{
    const qint64 end = findCutAtOrAfter(m_text, from + length);
    if (!m_expression.m_seesLineStarts || end == 0 || !isSeparator(m_text.at(end - 1)))
        return end;
    return findCutAtOrAfter(m_text, offsetBehindSeparators(m_text, end) + 1);
}

FindExpressionSearch::Outcome FindExpressionSearch::next(qint64 from)
{
    if (m_expression.m_needsWhole)
        return tryWhole(from);
    return from < m_singlyUntil ? tryOne(from) : tryMany(from);
}

FindExpressionSearch::Outcome FindExpressionSearch::tryMany(qint64 from)
{
    if (m_end <= from)
        m_end = endAfter(from, m_length);
    Try tried = attempt(from, m_end, Places::All);
    const bool isHere = tried.kind == Try::Kind::NeedsMore && tried.offset == from;
    if (isHere && m_end < findCutAtOrAfter(m_text, from + m_length)) {
        m_end = endAfter(from, m_length); // This was only the rest of a stretch.
        tried = attempt(from, m_end, Places::All);
    }
    adaptLength();
    switch (tried.kind) {
    case Try::Kind::Match:
        return found(tried.match);
    case Try::Kind::Nothing:
        return nothingBefore(m_end < m_text.size() ? m_end : m_end + 1);
    case Try::Kind::NeedsMore:
        m_end = 0;
        return tried.offset > from ? nothingBefore(tried.offset) : tryOne(from);
    case Try::Kind::Failed:
        break;
    }
    // Some place in the stretch exceeds the limits of `m_quick`.
    m_singlyUntil = std::max(m_end, from + 1);
    m_length = m_expression.m_sizes.smallest;
    return tryOne(from);
}

/// Adapts the length of the next stretch to the duration of the last call, because a call cannot be
/// interrupted.
void FindExpressionSearch::adaptLength()
{
    const qint64 before = std::exchange(m_elapsed, m_timer.nsecsElapsed());
    if (m_elapsed - before < kQuickCall)
        m_length = std::min(2 * m_length, m_expression.m_sizes.largest);
    else if (m_elapsed - before > kSlowCall)
        m_length = std::max(m_length / 4, m_expression.m_sizes.smallest);
}

FindExpressionSearch::Outcome FindExpressionSearch::tryOne(qint64 from)
{
    constexpr qint64 kGrowth = 4;
    Try tried;
    tried.kind = Try::Kind::NeedsMore;
    for (qint64 size = m_expression.m_sizes.single; tried.kind == Try::Kind::NeedsMore;
         size *= kGrowth) {
        const qint64 bounded = std::min(size, m_expression.m_sizes.whole);
        tried = attempt(from, endAfter(from, bounded), Places::One);
        if (tried.kind == Try::Kind::NeedsMore && bounded < size)
            tried.kind = Try::Kind::Failed;
    }
    m_elapsed = m_timer.nsecsElapsed();
    if (tried.kind == Try::Kind::Match)
        return found(tried.match);
    if (tried.kind == Try::Kind::Failed)
        return {Outcome::Kind::TooComplex, from, from, {}};
    return nothingBefore(placeAfter(from));
}

FindExpressionSearch::Outcome FindExpressionSearch::tryWhole(qint64 from)
{
    if (m_text.size() > m_expression.m_sizes.whole)
        return {Outcome::Kind::TooComplex, from, from, {}};
    const Try tried = attempt(from, m_text.size(), Places::All);
    m_elapsed = m_timer.nsecsElapsed();
    if (tried.kind == Try::Kind::Match)
        return found(tried.match);
    if (tried.kind == Try::Kind::Nothing)
        return nothingBefore(m_text.size() + 1);
    return {Outcome::Kind::TooComplex, from, from, {}};
}

FindExpressionSearch::Try FindExpressionSearch::attempt(qint64 from, qint64 end, Places places)
{
    show(from, end);
    const QStringView units = QStringView(m_units).first(static_cast<qsizetype>(end - m_start));
    const auto at = static_cast<qsizetype>(from - m_start);
    const bool isLast = end == m_text.size();
    // Before the text's end, ask for a partial match where more text could change the result, for
    // instance that of an assertion.
    const auto type =
        isLast ? QRegularExpression::NormalMatch : QRegularExpression::PartialPreferFirstMatch;
    // A text holds no lone surrogates. Checking the subject in each call would take quadratic time.
    QRegularExpression::MatchOptions options =
        QRegularExpression::DontCheckSubjectStringMatchOption;
    if (places == Places::One)
        options |= QRegularExpression::AnchorAtOffsetMatchOption;
    Try result;
    result.match = matchView(m_expression.m_quick, units, at, type, options);
    if (!result.match.isValid() && (places == Places::One || m_expression.m_needsWhole))
        result.match = matchView(m_expression.m_interpreted, units, at, type, options);
    result.offset = from;
    if (!result.match.isValid())
        return result;
    const qint64 start = m_start + result.match.capturedStart();
    if (result.match.hasPartialMatch()) {
        result.kind = Try::Kind::NeedsMore;
        // The range of a partial match includes the text that was looked behind at.
        if (places == Places::One)
            m_lookedBehind = std::max(m_lookedBehind, from - start);
        else if (start + m_lookedBehind > from)
            result.offset = placeFrom(start + m_lookedBehind);
    } else if (!result.match.hasMatch()) {
        result.kind = Try::Kind::Nothing;
    } else {
        // An empty match at the stretch's end may not have looked beyond it: more text is needed.
        result.kind = !isLast && start >= end ? Try::Kind::NeedsMore : Try::Kind::Match;
    }
    return result;
}

void FindExpressionSearch::show(qint64 from, qint64 end)
{
    if (!m_units.isNull() && m_start + m_units.size() >= end)
        return;
    m_start =
        m_expression.m_needsWhole ? 0 : findCutAtOrAfter(m_text, from - m_expression.m_behind);
    // Cut out more than requested, so that few calls need another stretch.
    const qint64 last =
        findCutAtOrAfter(m_text, std::max(end, from + 2 * m_expression.m_sizes.largest));
    m_units = m_text.slice(m_start, last - m_start);
    if (m_units.isNull())
        m_units = u""_s;
}

/// Returns the first place at or after `offset`. No place lies inside a surrogate pair, nor inside
/// CR LF unless the expression tries there.
qint64 FindExpressionSearch::placeFrom(qint64 offset) const
{
    if (offset <= 0 || offset >= m_text.size())
        return offset;
    const char16_t unit = m_text.at(offset);
    const bool isInCrLf = unit == u'\n' && m_text.at(offset - 1) == u'\r';
    const bool isLeftOut = isInCrLf && !m_expression.m_triesInsideCrLf;
    return QChar::isLowSurrogate(unit) || isLeftOut ? offset + 1 : offset;
}

/// Returns the next place worth trying after `offset`, where nothing matches.
qint64 FindExpressionSearch::placeAfter(qint64 offset) const
{
    if (!m_expression.m_beginsWithRestOfLine)
        return placeFrom(offset + 1);
    const auto *separator =
        std::find_if(m_units.begin() + (offset - m_start), m_units.end(), isSeparatorUnit);
    if (separator != m_units.end())
        return placeFrom(m_start + std::distance(m_units.begin(), separator) + 1);
    const bool isLast = m_start + m_units.size() == m_text.size();
    return isLast ? m_text.size() + 1 : placeFrom(offset + 1);
}

FindExpressionSearch::Outcome
FindExpressionSearch::found(const QRegularExpressionMatch &match) const
{
    return {Outcome::Kind::Match,
            m_start + match.capturedStart(),
            m_start + match.capturedEnd(),
            match};
}

FindExpressionSearch::Outcome FindExpressionSearch::nothingBefore(qint64 offset)
{
    return {Outcome::Kind::Nothing, offset, offset, {}};
}

} // namespace penwick

#include "editor/FindExpression.h"

#include "editor/MatchView.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

/// All the line breaks that the editor shows. Nothing in QRegularExpression sets them, nor the
/// limits below.
constexpr QStringView kLineBreaks = u"(*ANY)";
/// Compiled expressions are quick, but their steps are of any length, and their stack is small:
/// `(a|b)*` uses it up on a long line. What is more than this is left to the patient one.
constexpr QStringView kQuickLimits = u"(*LIMIT_MATCH=20000)";
/// An end for expressions that try more ways through a text than anyone can wait for, and for those
/// that would need more memory than a text is worth: about a tenth of a second, 48 MB.
constexpr QStringView kPatientLimits = u"(*NO_JIT)(*LIMIT_MATCH=2500000)(*LIMIT_HEAP=49152)";

/// PCRE2 looks behind by at most 65,535 characters; and one more, so that the start of what it is
/// shown is not taken for the start of the text.
constexpr qint64 kFarthestBehind = qint64{2} * (65'535 + 1);

constexpr qint64 kMillisecond = 1'000'000; // In nanoseconds.
constexpr qint64 kQuickCall = 1 * kMillisecond;
constexpr qint64 kSlowCall = 10 * kMillisecond;

/// True for an expression that also tries to match between CR and LF: PCRE2 leaves that place out
/// unless the expression names one of the two. The only way to ask it is to watch it.
bool triesInsideCrLf(const QString &string, QRegularExpression::PatternOptions options)
{
    const QRegularExpression probe(
        kLineBreaks.toString() + u"(?:"_s + string + u"(?!)|(?<=\\p{Cc})(?=\\p{Cc}))"_s, options);
    return probe.isValid() ? probe.match(u"\r\n"_s).hasMatch() : string.contains(u"\\n"_s);
}

bool isSeparator(QChar unit)
{
    const char16_t code = unit.unicode();
    return (code >= u'\n' && code <= u'\r') || code == u'\u0085' || code == u'\u2028' ||
           code == u'\u2029';
}

/// The first offset from `offset` on that holds no line separator; the size where there is none.
qint64 offsetBehindSeparators(const Text &text, qint64 offset)
{
    constexpr qint64 kUnits = 4'096;
    while (offset < text.size()) {
        const QString units = text.slice(offset, kUnits);
        const auto other = std::find_if_not(units.begin(), units.end(), isSeparator);
        if (other != units.end())
            return offset + std::distance(units.begin(), other);
        offset += units.size();
    }
    return text.size();
}

/// True for an expression that begins with `.*` in such a way that, where it fails at one place of
/// a line, it fails at all that follow in it. PCRE2 knows of that too, but not from call to call.
bool beginsWithRestOfLine(QStringView string)
{
    const bool isGroup = string.startsWith(u"(.*)");
    if (!isGroup && !string.startsWith(u".*"))
        return false;
    // The group must be there, and nothing may refer to what was taken, or offer another way.
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
    const QString prefix = kLineBreaks.toString() + kQuickLimits.toString();
    FindExpression result;
    result.m_quick = QRegularExpression(prefix + string, options);
    if (!result.m_quick.isValid()) {
        const qint64 offset = result.m_quick.patternErrorOffset() - prefix.size();
        return tl::unexpected(FindPatternError{FindPatternError::Code::InvalidExpression,
                                               std::clamp<qint64>(offset, 0, string.size()),
                                               result.m_quick.errorString()});
    }
    result.m_quick.optimize();
    result.m_patient =
        QRegularExpression(kLineBreaks.toString() + kPatientLimits.toString() + string, options);
    result.m_patient.optimize();
    result.m_sizes = sizes;
    result.m_behind = sizes.behind;
    result.m_triesInsideCrLf = triesInsideCrLf(string, options);
    result.examine(string);
    return result;
}

/// What is found where there is nothing, in a comment for instance, only costs time.
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
        NeedsMore, // Nothing matches before `offset`; what does there, reaches beyond the stretch.
        Failed,
    };
    Kind kind = Kind::Failed;
    qint64 offset = 0;
    QRegularExpressionMatch match;
};

/// Where a stretch that should be as long as that ends. At its very end `^` matches nowhere, and
/// PCRE2 does not say that more text could make a difference: so it never ends behind a line break.
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
        m_end = endAfter(from, m_length); // It was only a rest.
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
    // Some place in the stretch is beyond the limits of the quick expression.
    m_singlyUntil = std::max(m_end, from + 1);
    m_length = m_expression.m_sizes.smallest;
    return tryOne(from);
}

/// One call cannot be interrupted, so its stretch grows only as long as calls are quick.
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
    // Where more text could make a difference, be it to an assertion, the answer is a partial
    // match.
    const auto type =
        isLast ? QRegularExpression::NormalMatch : QRegularExpression::PartialPreferFirstMatch;
    // A text never holds a lone surrogate, and checking each time would take the square of the
    // time.
    QRegularExpression::MatchOptions options =
        QRegularExpression::DontCheckSubjectStringMatchOption;
    if (places == Places::One)
        options |= QRegularExpression::AnchorAtOffsetMatchOption;
    Try result;
    result.match = matchView(m_expression.m_quick, units, at, type, options);
    if (!result.match.isValid() && (places == Places::One || m_expression.m_needsWhole))
        result.match = matchView(m_expression.m_patient, units, at, type, options);
    result.offset = from;
    if (!result.match.isValid())
        return result;
    const qint64 start = m_start + result.match.capturedStart();
    if (result.match.hasPartialMatch()) {
        result.kind = Try::Kind::NeedsMore;
        // What an expression may look behind is told as a part of the partial match.
        if (places == Places::One)
            m_lookedBehind = std::max(m_lookedBehind, from - start);
        else if (start + m_lookedBehind > from)
            result.offset = placeFrom(start + m_lookedBehind);
    } else if (!result.match.hasMatch()) {
        result.kind = Try::Kind::Nothing;
    } else {
        // What is empty at the very end may not have looked beyond it.
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
    // With some more, so that few steps need another stretch.
    const qint64 last =
        findCutAtOrAfter(m_text, std::max(end, from + 2 * m_expression.m_sizes.largest));
    m_units = m_text.slice(m_start, last - m_start);
    if (m_units.isNull())
        m_units = u""_s;
}

/// The first place from `offset` on where a match is tried.
qint64 FindExpressionSearch::placeFrom(qint64 offset) const
{
    if (offset <= 0 || offset >= m_text.size())
        return offset;
    const char16_t unit = m_text.at(offset);
    const bool isInCrLf = unit == u'\n' && m_text.at(offset - 1) == u'\r';
    const bool isLeftOut = isInCrLf && !m_expression.m_triesInsideCrLf;
    return QChar::isLowSurrogate(unit) || isLeftOut ? offset + 1 : offset;
}

/// The next place worth trying after one where nothing matches.
qint64 FindExpressionSearch::placeAfter(qint64 offset) const
{
    if (!m_expression.m_beginsWithRestOfLine)
        return placeFrom(offset + 1);
    const auto *separator =
        std::find_if(m_units.begin() + (offset - m_start), m_units.end(), isSeparator);
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

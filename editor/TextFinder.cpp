#include "editor/TextFinder.h"

#include "text/WordBoundaries.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

/// All the line breaks that the editor shows; and an end for expressions that try more ways through
/// a text than anyone can wait for. Nothing in QRegularExpression sets either.
constexpr QStringView kPrefix = u"(*ANY)(*LIMIT_MATCH=1000000)";
/// Compiled expressions have a small stack, which `(a|b)*` uses up on a long line.
constexpr QStringView kPatientPrefix = u"(*NO_JIT)(*ANY)(*LIMIT_MATCH=1000000)";

bool isSeparator(QChar unit)
{
    const char16_t code = unit.unicode();
    return (code >= u'\n' && code <= u'\r') || code == u'\u0085' || code == u'\u2028' ||
           code == u'\u2029';
}

/// False where ignoring case changes nothing, as in most Japanese; it takes several times as long.
bool hasCase(const QString &string)
{
    return string.toCaseFolded() != string || string.toUpper() != string;
}

bool hasLongLine(QStringView units, qsizetype limit)
{
    qsizetype length = 0;
    for (const QChar unit : units) {
        length = isSeparator(unit) ? 0 : length + 1;
        if (length > limit)
            return true;
    }
    return false;
}

/// True where neither a surrogate pair nor CR LF is divided.
bool canCut(const Text &text, qint64 offset)
{
    if (offset <= 0 || offset >= text.size())
        return true;
    const char16_t after = text.at(offset);
    return !QChar::isLowSurrogate(after) && !(after == u'\n' && text.at(offset - 1) == u'\r');
}

qint64 cutAtOrAfter(const Text &text, qint64 offset)
{
    const qint64 inside = std::clamp<qint64>(offset, 0, text.size());
    return canCut(text, inside) ? inside : inside + 1;
}

/// True for an empty match that only tells again where the match before it ended.
bool isRepeated(const FindMatch &match, FindPlace place)
{
    return match.isEmpty() && place.isAfterMatch && match.start == place.offset;
}

qsizetype indexAfter(QStringView units, qsizetype index)
{
    if (index + 1 >= units.size())
        return index + 1;
    const bool isPair = units[index].isHighSurrogate() && units[index + 1].isLowSurrogate();
    const bool isCrLf = units[index] == u'\r' && units[index + 1] == u'\n';
    return index + (isPair || isCrLf ? 2 : 1);
}

} // namespace

tl::expected<TextFinder, FindPatternError> TextFinder::compile(const FindPattern &pattern)
{
    if (pattern.string.isEmpty())
        return tl::unexpected(FindPatternError{FindPatternError::Code::Empty, 0, {}});
    TextFinder finder;
    finder.m_wholeWords = pattern.wholeWords;
    finder.m_isRegularExpression = pattern.isRegularExpression;
    if (pattern.isRegularExpression) {
        if (auto error = finder.compileExpression(pattern))
            return tl::unexpected(*std::move(error));
    } else {
        const QString string = Text(pattern.string).toString();
        const bool matchesCase = pattern.matchesCase || !hasCase(string);
        finder.m_matcher =
            QStringMatcher(string, matchesCase ? Qt::CaseSensitive : Qt::CaseInsensitive);
    }
    return finder;
}

std::optional<FindPatternError> TextFinder::compileExpression(const FindPattern &pattern)
{
    QRegularExpression::PatternOptions options =
        QRegularExpression::MultilineOption | QRegularExpression::UseUnicodePropertiesOption;
    if (!pattern.matchesCase)
        options |= QRegularExpression::CaseInsensitiveOption;
    const QString string = Text(pattern.string).toString();
    m_expression = QRegularExpression(kPrefix.toString() + string, options);
    if (!m_expression.isValid()) {
        const qint64 offset = m_expression.patternErrorOffset() - kPrefix.size();
        return FindPatternError{FindPatternError::Code::InvalidExpression,
                                std::clamp<qint64>(offset, 0, string.size()),
                                m_expression.errorString()};
    }
    m_expression.optimize();
    m_patientExpression = QRegularExpression(kPatientPrefix.toString() + string, options);
    m_patientExpression.optimize();
    return std::nullopt;
}

TextFinder::Step
TextFinder::step(const Text &text, FindPlace from, const Visit &visit, qint64 end) const
{
    if (from.offset > text.size()) {
        Step step;
        step.next = from;
        step.isAtEnd = true;
        return step;
    }
    from.offset = std::max<qint64>(from.offset, 0);
    return m_isRegularExpression ? stepExpression(text, from, visit, end)
                                 : stepPlain(text, from, visit, end);
}

bool TextFinder::isAccepted(const Text &text, const FindMatch &match) const
{
    return !m_wholeWords ||
           (words::isWordBoundary(text, match.start) && words::isWordBoundary(text, match.end));
}

TextFinder::Step
TextFinder::stepPlain(const Text &text, FindPlace from, const Visit &visit, qint64 end) const
{
    const qint64 limit = std::min(end, text.size());
    const qint64 core = std::min(limit, cutAtOrAfter(text, from.offset + kPlainUnits));
    const qsizetype length = m_matcher.pattern().size();
    const QString units = text.slice(from.offset, core - from.offset + length - 1);
    Step step;
    step.next = {std::max(core, from.offset), false};
    qsizetype index = m_matcher.indexIn(units);
    while (index >= 0 && from.offset + index < core) {
        const FindMatch match{from.offset + index, from.offset + index + length};
        const bool isTaken = isAccepted(text, match);
        if (isTaken && !visit(match, nullptr)) {
            step.isStopped = true;
            step.next = {match.end, true};
            return step;
        }
        if (isTaken && match.end >= core)
            step.next = {match.end, true};
        index = m_matcher.indexIn(units, index + (isTaken ? length : 1));
    }
    step.isAtEnd = step.next.offset >= limit;
    return step;
}

/// The stretch of text that an expression sees in one step.
class TextFinder::Window final
{
public:
    Window(const Text &text, qint64 from, qint64 end)
        : m_start(cutAtOrAfter(text, from - kBehindUnits))
    {
        take(text, from, kCoreUnits, kTailUnits);
        // Expressions that try every place with every end take the square of a line's length.
        if (hasLongLine(QStringView(units).mid(static_cast<qsizetype>(from - m_start)),
                        kLongLineUnits))
            take(text, from, kLongLineUnits, kLongLineUnits);
        m_limit = std::min(m_core, end);
        m_reachesEnd = m_core == text.size() && end > text.size();
    }

    [[nodiscard]] qsizetype indexOf(qint64 offset) const
    {
        return static_cast<qsizetype>(offset - m_start);
    }

    [[nodiscard]] qint64 offsetOf(qsizetype index) const { return m_start + index; }

    /// True when a match that starts there is this step's to report.
    [[nodiscard]] bool owns(qint64 offset) const
    {
        return offset < m_limit || (m_reachesEnd && offset == m_limit);
    }

    [[nodiscard]] qint64 limit() const { return m_limit; }

    /// Where the search goes on after a match that counted, or did not.
    [[nodiscard]] FindPlace placeAfter(const FindMatch &match, bool isTaken) const
    {
        if (isTaken && !match.isEmpty())
            return {match.end, true};
        return {offsetOf(indexAfter(units, indexOf(match.start))), false};
    }

    QString units;

private:
    void take(const Text &text, qint64 from, qint64 coreUnits, qint64 tailUnits)
    {
        m_core = cutAtOrAfter(text, from + coreUnits);
        const qint64 last = cutAtOrAfter(text, m_core + tailUnits);
        units = text.slice(m_start, last - m_start);
    }

    qint64 m_start = 0;
    qint64 m_core = 0;
    qint64 m_limit = 0;
    bool m_reachesEnd = false;
};

QRegularExpressionMatch TextFinder::match(const QString &subject, qsizetype from) const
{
    // A text never holds a lone surrogate, and checking each time would take the square of the
    // time.
    constexpr auto kOption = QRegularExpression::DontCheckSubjectStringMatchOption;
    QRegularExpressionMatch match =
        m_expression.match(subject, from, QRegularExpression::NormalMatch, kOption);
    if (!match.isValid())
        match = m_patientExpression.match(subject, from, QRegularExpression::NormalMatch, kOption);
    return match;
}

TextFinder::Step
TextFinder::stepExpression(const Text &text, FindPlace from, const Visit &visit, qint64 end) const
{
    const Window window(text, from.offset, end);
    Step step;
    step.next = {std::max(window.limit(), from.offset), false};
    FindPlace place = from;
    while (window.owns(place.offset)) {
        const QRegularExpressionMatch found = match(window.units, window.indexOf(place.offset));
        step.isTooComplex = !found.isValid();
        if (step.isTooComplex) {
            step.next = place;
            return step;
        }
        const FindMatch range{window.offsetOf(found.capturedStart()),
                              window.offsetOf(found.capturedEnd())};
        if (!found.hasMatch() || !window.owns(range.start))
            break;
        const bool isTaken = !isRepeated(range, place) && isAccepted(text, range);
        place = window.placeAfter(range, isTaken);
        step.isStopped = isTaken && !visit(range, &found);
        if (step.isStopped) {
            step.next = place;
            return step;
        }
        if (place.offset > step.next.offset)
            step.next = place;
    }
    step.isAtEnd = step.next.offset > text.size() || step.next.offset >= std::min(end, text.size());
    return step;
}

namespace {

bool isCancelledNow(const FindIsCancelled &isCancelled)
{
    return isCancelled && isCancelled();
}

/// The first match from `from` on that starts before `end`.
FindResult firstMatch(const TextFinder &finder,
                      const Text &text,
                      FindPlace from,
                      qint64 end,
                      const FindIsCancelled &isCancelled)
{
    FindResult result;
    TextFinder::Step step;
    step.next = from;
    while (!step.isAtEnd && !step.isStopped && !step.isTooComplex && !isCancelledNow(isCancelled)) {
        step = finder.step(
            text,
            step.next,
            [&](const FindMatch &match, const QRegularExpressionMatch *) {
                result.match = match;
                return false;
            },
            end);
    }
    result.isTooComplex = step.isTooComplex;
    return result;
}

/// Where to begin so that matches are met as from the text's start: a line's start, if it is near.
qint64 blockStart(const Text &text, qint64 end)
{
    const qint64 nominal = std::max<qint64>(0, end - TextFinder::kCoreUnits);
    const qint64 line = text.offsetAfterLineBreak(text.lineBreaksBefore(nominal));
    const qint64 start = nominal - line <= TextFinder::kCoreUnits ? line : nominal;
    return canCut(text, start) ? start : start - 1;
}

/// The last match that starts in [start, end) and ends at or before `bound`.
FindResult lastMatch(const TextFinder &finder,
                     const Text &text,
                     std::pair<qint64, qint64> block,
                     qint64 bound,
                     const FindIsCancelled &isCancelled)
{
    FindResult result;
    TextFinder::Step step;
    step.next = {block.first, false};
    while (!step.isAtEnd && !step.isTooComplex && !isCancelledNow(isCancelled)) {
        step = finder.step(
            text,
            step.next,
            [&](const FindMatch &match, const QRegularExpressionMatch *) {
                if (match.end <= bound)
                    result.match = match;
                return true;
            },
            block.second);
    }
    result.isTooComplex = step.isTooComplex;
    return result;
}

/// The last match in [floor, offset), block by block from the end.
FindResult lastMatchBefore(const TextFinder &finder,
                           const Text &text,
                           qint64 offset,
                           qint64 floor,
                           const FindIsCancelled &isCancelled)
{
    qint64 end = offset;
    while (end > floor && !isCancelledNow(isCancelled)) {
        const qint64 start = blockStart(text, std::min(end, text.size()));
        const FindResult result = lastMatch(finder, text, {start, end}, offset, isCancelled);
        if (result.match || result.isTooComplex)
            return result;
        end = start;
    }
    return {};
}

} // namespace

FindResult findNext(const TextFinder &finder,
                    const Text &text,
                    FindPlace from,
                    bool wraps,
                    const FindIsCancelled &isCancelled)
{
    constexpr qint64 kNoEnd = std::numeric_limits<qint64>::max();
    FindResult result = firstMatch(finder, text, from, kNoEnd, isCancelled);
    if (result.match || result.isTooComplex || !wraps)
        return result;
    result = firstMatch(finder, text, {}, kNoEnd, isCancelled);
    result.isWrapped = result.match.has_value();
    return result;
}

FindResult findPrevious(const TextFinder &finder,
                        const Text &text,
                        qint64 offset,
                        bool wraps,
                        const FindIsCancelled &isCancelled)
{
    FindResult result = lastMatchBefore(finder, text, offset, 0, isCancelled);
    if (result.match || result.isTooComplex || !wraps)
        return result;
    // One more than the text is long, for an empty match at its end.
    result = lastMatchBefore(finder, text, text.size() + 1, offset, isCancelled);
    result.isWrapped = result.match.has_value();
    return result;
}

qint64 findOffsetAfter(const Text &text, qint64 offset)
{
    return offset >= text.size() ? text.size() + 1 : cutAtOrAfter(text, offset + 1);
}

} // namespace penwick

#include "find/TextFinder.h"

#include "platform/process/ThreadTime.h"
#include "text/WordBoundaries.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace penwick {

namespace {

/// Maximum number of units that one call of the matcher compares. A call cannot be interrupted.
constexpr qint64 kComparedUnits = 4'000'000;
/// Length of the blocks of a backward search, in UTF-16 code units.
constexpr qint64 kBlockUnits = 32'768;

/// False when ignoring case changes nothing, as for most Japanese. A case-insensitive search takes
/// several times as long.
bool hasCase(const QString &string)
{
    return string.toCaseFolded() != string || string.toUpper() != string;
}

/// Folds case character by character, so that offsets do not change. Done here because
/// QStringMatcher of Qt 6.8, when it ignores case, finds no pattern with a character beyond U+FFFF.
QString simplyFolded(QString string)
{
    QChar *units = string.data();
    for (qsizetype i = 0; i < string.size(); ++i) {
        const bool isPair =
            units[i].isHighSurrogate() && i + 1 < string.size() && units[i + 1].isLowSurrogate();
        if (!isPair) {
            units[i] = units[i].toCaseFolded();
            continue;
        }
        const char32_t folded = QChar::toCaseFolded(QChar::surrogateToUcs4(units[i], units[i + 1]));
        if (QChar::requiresSurrogates(folded)) {
            units[i] = QChar::highSurrogate(folded);
            units[i + 1] = QChar::lowSurrogate(folded);
        }
        ++i;
    }
    return string;
}

/// True for an empty match at the end of the match before it, which is not counted.
bool isRepeated(const TextRange &match, FindPlace place)
{
    return match.isEmpty() && place.isAfterMatch && match.location == place.offset;
}

} // namespace

tl::expected<TextFinder, FindPatternError> TextFinder::compile(const FindPattern &pattern,
                                                               const FindSizes &sizes)
{
    if (pattern.string.isEmpty())
        return tl::unexpected(FindPatternError{FindPatternError::Code::Empty, 0, {}});
    TextFinder finder;
    finder.m_wholeWords = pattern.wholeWords;
    if (pattern.isRegularExpression) {
        auto expression = FindExpression::compile(pattern, sizes);
        if (!expression)
            return tl::unexpected(std::move(expression).error());
        finder.m_expression = *std::move(expression);
    } else {
        const QString string = Text(pattern.string).toString();
        finder.m_ignoresCase = !pattern.matchesCase && hasCase(string);
        finder.m_matcher = QStringMatcher(finder.comparable(string));
    }
    return finder;
}

/// The state of a step.
class TextFinder::Stepper final
{
public:
    Stepper(const Text &text, FindPlace from, qint64 units, const Visit &visit, qint64 end)
        : m_text(text)
        , m_visit(visit)
        , m_end(end)
        , m_core(findCutAtOrAfter(text, from.offset + units))
        , m_place(from)
    {
    }

    [[nodiscard]] const Text &text() const { return m_text; }

    [[nodiscard]] FindPlace place() const { return m_place; }

    [[nodiscard]] qint64 end() const { return m_end; }

    /// Where the step ends unless it is stopped earlier.
    [[nodiscard]] qint64 limit() const { return std::min(m_core, m_end); }

    [[nodiscard]] bool goesOn() const
    {
        const bool isLast = m_core == m_text.size() && m_end > m_text.size();
        const bool isWithin = m_place.offset < limit() || (isLast && m_place.offset == m_core);
        return !m_step.isStopped && !m_step.isTooComplex && isWithin;
    }

    void moveTo(FindPlace place) { m_place = place; }

    /// Moves past the character at `offset`, where no further match is wanted.
    void skip(qint64 offset) { m_place = {findOffsetAfter(m_text, offset), false}; }

    void visit(const TextRange &match, const QRegularExpressionMatch *captures)
    {
        m_step.isStopped = !m_visit(match, captures);
    }

    void setTooComplex() { m_step.isTooComplex = true; }

    [[nodiscard]] Step finish(qint64 effort)
    {
        m_step.next = m_place;
        m_step.effort = effort;
        m_step.isAtEnd =
            !m_step.isTooComplex && (m_place.offset > m_text.size() || m_place.offset >= m_end);
        return m_step;
    }

private:
    const Text &m_text;
    const Visit &m_visit;
    qint64 m_end;
    qint64 m_core;
    FindPlace m_place;
    Step m_step;
};

TextFinder::Step
TextFinder::step(const Text &text, FindPlace from, const Visit &visit, qint64 end) const
{
    from.offset = std::max<qint64>(from.offset, 0);
    // Half as long for an expression, which sees stretches that reach beyond its step.
    Stepper stepper(text, from, m_expression ? kStepUnits / 2 : kStepUnits, visit, end);
    if (!m_expression) {
        stepPlain(stepper);
        return stepper.finish(0);
    }
    const qint64 start = threadTime();
    stepExpression(stepper);
    return stepper.finish(threadTime() - start);
}

bool TextFinder::isAccepted(const Text &text, const TextRange &match) const
{
    return !m_wholeWords || (words::isWordBoundary(text, match.location) &&
                             words::isWordBoundary(text, match.end()));
}

QString TextFinder::comparable(QString units) const
{
    return m_ignoresCase ? simplyFolded(std::move(units)) : units;
}

void TextFinder::stepPlain(Stepper &stepper) const
{
    const Text &text = stepper.text();
    const qsizetype length = m_matcher.pattern().size();
    const qint64 start = stepper.place().offset;
    const qint64 limit = std::min(stepper.limit(), text.size());
    const QString units = comparable(text.slice(start, limit - start + length - 1));
    const qint64 stride = std::max<qint64>(kComparedUnits / length, 1);
    // Reading the clock takes as long as finding a short pattern, so it is not read each time.
    constexpr qsizetype kShort = 64;
    const unsigned interval = m_wholeWords || length > kShort ? 1 : 16;
    QElapsedTimer timer;
    timer.start();
    for (unsigned i = 1; stepper.goesOn() && stepper.place().offset < limit; ++i) {
        if (i % interval == 0 && timer.elapsed() >= kStepTime)
            break;
        const qint64 from = stepper.place().offset;
        const qint64 last = std::min(from + stride, limit); // End of the places to try.
        const auto part =
            QStringView(units).left(static_cast<qsizetype>(last - start + length - 1));
        const qsizetype index = m_matcher.indexIn(part, static_cast<qsizetype>(from - start));
        if (index < 0 || start + index >= last) {
            stepper.moveTo({last, false});
            continue;
        }
        const TextRange match{start + index, length};
        const bool isTaken = isAccepted(text, match);
        stepper.moveTo(isTaken ? FindPlace{match.end(), true}
                               : FindPlace{match.location + 1, false});
        if (isTaken)
            stepper.visit(match, nullptr);
    }
    if (stepper.place().offset >= text.size()) // A plain pattern cannot match there.
        stepper.moveTo({text.size() + 1, stepper.place().isAfterMatch});
}

void TextFinder::stepExpression(Stepper &stepper) const
{
    using Kind = FindExpressionSearch::Outcome::Kind;
    FindExpressionSearch search(*m_expression, stepper.text());
    constexpr qint64 kMillisecond = 1'000'000;
    while (stepper.goesOn() && search.elapsed() < kStepTime * kMillisecond) {
        const FindPlace place = stepper.place();
        const FindExpressionSearch::Outcome outcome = search.next(place.offset);
        const auto match = TextRange::between(outcome.start, outcome.end);
        if (outcome.kind == Kind::TooComplex) {
            stepper.setTooComplex();
        } else if (outcome.kind == Kind::Nothing) {
            stepper.moveTo({outcome.start, false});
        } else if (match.location >= stepper.end()) {
            stepper.moveTo({stepper.end(), false});
        } else if (isRepeated(match, place) || !isAccepted(stepper.text(), match)) {
            stepper.skip(match.location);
        } else {
            // Step past an empty match, which would be found again. With `\K`, another match may
            // follow at the same place.
            if (match.isEmpty() && !movesStart())
                stepper.skip(match.location);
            else
                stepper.moveTo({match.end(), true});
            stepper.visit(match, &outcome.match);
        }
    }
}

TextFinder::Step TextFinder::search(const Text &text,
                                    FindPlace from,
                                    const Visit &visit,
                                    qint64 end,
                                    const FindIsCancelled &isCancelled) const
{
    FindEffort effort;
    Step step;
    step.next = from;
    while (!step.isAtEnd && !step.isStopped && !step.isTooComplex &&
           !(isCancelled && isCancelled())) {
        const FindPlace place = step.next;
        step = this->step(text, place, visit, end);
        effort.add(place, step);
        const bool goesOn = !step.isStopped && !step.isAtEnd;
        step.isTooComplex = step.isTooComplex || (goesOn && effort.isTooMuch());
    }
    return step;
}

void FindEffort::add(FindPlace from, const TextFinder::Step &step)
{
    m_effort += step.effort;
    m_units += step.next.offset - from.offset;
}

bool FindEffort::isTooMuch() const
{
    // Nanoseconds. Normal expressions are hundreds of times faster.
    constexpr qint64 kFree = 2'000'000'000;
    constexpr qint64 kPerUnit = 50'000;
    return m_effort > kFree + m_units * kPerUnit;
}

qint64 findBlockStart(const Text &text, qint64 end)
{
    const qint64 nominal = std::max<qint64>(0, end - kBlockUnits);
    const qint64 line = text.offsetAfterLineBreak(text.lineBreaksBefore(nominal));
    const qint64 start = nominal - line <= kBlockUnits ? line : nominal;
    return canCutForFinding(text, start) ? start : start - 1;
}

namespace {

/// Returns the first match from `from` on.
FindResult firstMatch(const TextFinder &finder,
                      const Text &text,
                      FindPlace from,
                      const FindIsCancelled &isCancelled)
{
    constexpr qint64 kNoEnd = std::numeric_limits<qint64>::max();
    FindResult result;
    const auto visit = [&](const TextRange &match, const QRegularExpressionMatch *) {
        result.match = match;
        return false;
    };
    result.isTooComplex = finder.search(text, from, visit, kNoEnd, isCancelled).isTooComplex;
    return result;
}

/// Returns the last match that starts in [start, end) of `block` and ends at or before `bound`.
FindResult lastMatch(const TextFinder &finder,
                     const Text &text,
                     std::pair<qint64, qint64> block,
                     qint64 bound,
                     const FindIsCancelled &isCancelled)
{
    FindResult result;
    const auto visit = [&](const TextRange &match, const QRegularExpressionMatch *) {
        if (match.end() <= bound)
            result.match = match;
        return true;
    };
    result.isTooComplex =
        finder.search(text, {block.first, false}, visit, block.second, isCancelled).isTooComplex;
    return result;
}

/// Returns the last match in [floor, offset). Searches block by block from the end.
FindResult lastMatchBefore(const TextFinder &finder,
                           const Text &text,
                           qint64 offset,
                           qint64 floor,
                           const FindIsCancelled &isCancelled)
{
    qint64 end = offset;
    while (end > floor && !(isCancelled && isCancelled())) {
        const qint64 start = findBlockStart(text, std::min(end, text.size()));
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
    FindResult result = firstMatch(finder, text, from, isCancelled);
    if (result.match || result.isTooComplex || !wraps)
        return result;
    result = firstMatch(finder, text, {}, isCancelled);
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
    // Size + 1, so that an empty match at the text's end is found.
    result = lastMatchBefore(finder, text, text.size() + 1, offset, isCancelled);
    result.isWrapped = result.match.has_value();
    return result;
}

qint64 findOffsetAfter(const Text &text, qint64 offset)
{
    return offset >= text.size() ? text.size() + 1 : findCutAtOrAfter(text, offset + 1);
}

} // namespace penwick

#include "text/WordBoundaries.h"

#include "text/Separators.h"

#include <algorithm>
#include <memory>
#include <unicode/brkiter.h>
#include <unicode/utext.h>

namespace penwick::words {

namespace {

/// UTF-16 code units to read on either side of an offset. A longer word may be split into several.
constexpr qint64 kReach = 1024;
/// A shorter reach that is enough for a dictionary to find the boundaries next to an offset.
constexpr qint64 kDictionaryReach = 128;

bool isBlank(char16_t unit)
{
    return unit == u' ' || unit == u'\t' || unit == u'\u00A0' || unit == u'\u3000';
}

/// Returns where to cut a window around `offset`: at the cluster boundary at or before `nominal`. A
/// cluster that is longer than the reach, or that would leave `offset` outside the window, is cut
/// at `nominal`, but not inside a surrogate pair.
qint64 windowEdge(const Text &text, qint64 nominal, qint64 offset)
{
    const auto boundary = text.clusterBoundaryWithin(nominal, kReach);
    if (boundary && (nominal <= offset || *boundary > offset))
        return *boundary;
    return text.pairStart(nominal);
}

/// The word boundaries of a stretch of text, in the text's offsets.
class Boundaries final
{
public:
    Boundaries(const Text &text, qint64 offset, qint64 reach = kReach)
    {
        m_start = windowEdge(text, std::max<qint64>(0, offset - reach), offset);
        const qint64 end = windowEdge(text, std::min(text.size(), offset + reach), offset);
        m_units = text.slice(m_start, end - m_start);
        UErrorCode status = U_ZERO_ERROR;
        utext_openUChars(&m_text, QStringView(m_units).utf16(), m_units.size(), &status);
        iterator().setText(&m_text, status);
    }

    ~Boundaries() { utext_close(&m_text); }

    Q_DISABLE_COPY_MOVE(Boundaries)

    [[nodiscard]] qint64 end() const { return m_start + m_units.size(); }

    [[nodiscard]] qint64 start() const { return m_start; }

    [[nodiscard]] char16_t at(qint64 offset) const { return m_units[offset - m_start].unicode(); }

    [[nodiscard]] qint64 following(qint64 offset) const
    {
        if (offset >= end())
            return end();
        return m_start + iterator().following(static_cast<int32_t>(offset - m_start));
    }

    [[nodiscard]] qint64 preceding(qint64 offset) const
    {
        if (offset <= m_start)
            return m_start;
        return m_start + iterator().preceding(static_cast<int32_t>(offset - m_start));
    }

    [[nodiscard]] bool isBoundary(qint64 offset) const
    {
        return iterator().isBoundary(static_cast<int32_t>(offset - m_start));
    }

private:
    static icu::BreakIterator &iterator()
    {
        // The iterator holds the last text it was given, so each thread needs its own.
        thread_local const std::unique_ptr<icu::BreakIterator> instance = [] {
            UErrorCode status = U_ZERO_ERROR;
            std::unique_ptr<icu::BreakIterator> words(
                icu::BreakIterator::createWordInstance(icu::Locale::getJapanese(), status));
            if (U_FAILURE(status) || !words)
                qFatal("penwick: ICU has no word break data (%s)", u_errorName(status));
            return words;
        }();
        return *instance;
    }

    QString m_units;
    qint64 m_start = 0;
    UText m_text = UTEXT_INITIALIZER;
};

/// Returns `offset` if it is a cluster boundary, else the next one. A word may end inside a cluster
/// (after a prepended mark), and so may a window.
qint64 clusterEndAtOrAfter(const Text &text, qint64 offset)
{
    const qint64 boundary = text.clusterBoundaryAtOrBefore(offset);
    return boundary == offset ? offset : text.nextClusterBoundary(offset);
}

char32_t codePointBefore(const Text &text, qint64 offset)
{
    const char16_t unit = text.at(offset - 1);
    return QChar::isLowSurrogate(unit) ? QChar::surrogateToUcs4(text.at(offset - 2), unit) : unit;
}

char32_t codePointAfter(const Text &text, qint64 offset)
{
    const char16_t unit = text.at(offset);
    return QChar::isHighSurrogate(unit) ? QChar::surrogateToUcs4(unit, text.at(offset + 1)) : unit;
}

bool isWordCharacter(char32_t character)
{
    return character == U'_' || QChar::isLetterOrNumber(character) || QChar::isMark(character);
}

/// True for scripts written without spaces between words. Also true for some others, for which the
/// dictionary lookup is unnecessary but harmless.
bool mayNeedDictionary(char32_t character)
{
    return character >= 0x2E80 ||                          // Chinese, Japanese and all above.
           (character >= 0x0E00 && character <= 0x0EFF) || // Thai and Lao.
           (character >= 0x1000 && character <= 0x109F) || // Burmese.
           (character >= 0x1780 && character <= 0x17FF);   // Khmer.
}

} // namespace

qint64 nextWordStart(const Text &text, qint64 offset)
{
    offset = std::max<qint64>(offset, 0);
    if (offset >= text.size())
        return text.size();
    const Boundaries boundaries(text, offset);
    if (isSeparator(boundaries.at(offset)))
        return text.nextClusterBoundary(offset);
    qint64 next = isBlank(boundaries.at(offset))
                      ? offset
                      : clusterEndAtOrAfter(text, boundaries.following(offset));
    while (next < boundaries.end() && isBlank(boundaries.at(next)))
        ++next;
    return clusterEndAtOrAfter(text, next);
}

qint64 previousWordStart(const Text &text, qint64 offset)
{
    offset = std::min(offset, text.size());
    if (offset <= 0)
        return 0;
    const Boundaries boundaries(text, offset);
    qint64 end = offset;
    if (isSeparator(boundaries.at(end - 1)))
        return text.previousClusterBoundary(end);
    while (end > boundaries.start() && isBlank(boundaries.at(end - 1)))
        --end;
    if (end == boundaries.start() || isSeparator(boundaries.at(end - 1)))
        return text.clusterBoundaryAtOrBefore(end);
    return text.clusterBoundaryAtOrBefore(boundaries.preceding(end));
}

std::pair<qint64, qint64> wordAround(const Text &text, qint64 offset)
{
    if (text.isEmpty())
        return {0, 0};
    offset = std::clamp<qint64>(offset, 0, text.size());
    const Boundaries boundaries(text, offset);
    // At the end of a line, use the character before `offset`.
    const bool atLineEnd = offset >= text.size() || isSeparator(boundaries.at(offset));
    if (atLineEnd && (offset == 0 || isSeparator(boundaries.at(offset - 1))))
        return {offset, offset};
    const qint64 inside = atLineEnd ? offset - 1 : offset;
    if (isBlank(boundaries.at(inside))) {
        qint64 start = inside;
        qint64 end = inside;
        while (start > boundaries.start() && isBlank(boundaries.at(start - 1)))
            --start;
        while (end < boundaries.end() && isBlank(boundaries.at(end)))
            ++end;
        return {start, clusterEndAtOrAfter(text, end)};
    }
    const qint64 start = boundaries.isBoundary(inside) ? inside : boundaries.preceding(inside);
    return {text.clusterBoundaryAtOrBefore(start),
            clusterEndAtOrAfter(text, boundaries.following(inside))};
}

bool isWordBoundary(const Text &text, qint64 offset)
{
    if (offset <= 0 || offset >= text.size())
        return true;
    const char32_t before = codePointBefore(text, offset);
    const char32_t after = codePointAfter(text, offset);
    if (!isWordCharacter(before) || !isWordCharacter(after))
        return true;
    if (QChar::isMark(after) || (!mayNeedDictionary(before) && !mayNeedDictionary(after)))
        return false;
    return Boundaries(text, offset, kDictionaryReach).isBoundary(offset);
}

} // namespace penwick::words

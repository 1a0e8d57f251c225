#include "text/GraphemeClusters.h"

#include <QChar>

#include <array>
#include <bitset>
#include <memory>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf16.h>

namespace penwick::clusters {

namespace {

constexpr std::size_t kBasicPlaneSize = 0x10000;
using SimpleSet = std::bitset<kBasicPlaneSize>;

UGraphemeClusterBreak breakClass(char32_t codePoint)
{
    return static_cast<UGraphemeClusterBreak>(
        u_getIntPropertyValue(static_cast<UChar32>(codePoint), UCHAR_GRAPHEME_CLUSTER_BREAK));
}

bool isControl(UGraphemeClusterBreak value)
{
    return value == U_GCB_CONTROL || value == U_GCB_CR || value == U_GCB_LF;
}

bool isHangul(UGraphemeClusterBreak value)
{
    return value == U_GCB_L || value == U_GCB_V || value == U_GCB_T || value == U_GCB_LV ||
           value == U_GCB_LVT;
}

bool extends(UGraphemeClusterBreak value)
{
    return value == U_GCB_EXTEND || value == U_GCB_ZWJ || value == U_GCB_SPACING_MARK;
}

/// True when a mark before the code point may join it to the character that carries the mark: in an
/// emoji sequence after a joiner, or in a syllable linked by a virama.
bool mayContinueBehindMark(UGraphemeClusterBreak mark, char32_t codePoint)
{
    const auto character = static_cast<UChar32>(codePoint);
    return (mark == U_GCB_ZWJ && u_hasBinaryProperty(character, UCHAR_EXTENDED_PICTOGRAPHIC)) ||
           u_getIntPropertyValue(character, UCHAR_INDIC_SYLLABIC_CATEGORY) != U_INSC_OTHER;
}

/// Returns the simple code units: characters of class Other or Control. A cluster ends between any
/// two of them, except in CR LF. Surrogates are not simple; ICU's iterator handles them.
SimpleSet makeSimpleSet()
{
    SimpleSet set;
    for (std::size_t unit = 0; unit < kBasicPlaneSize; ++unit) {
        if (U16_IS_SURROGATE(unit))
            continue;
        const UGraphemeClusterBreak value = breakClass(static_cast<char32_t>(unit));
        if (value == U_GCB_OTHER || isControl(value))
            set.set(unit);
    }
    return set;
}

const SimpleSet &simpleSet()
{
    // Several threads read it for every character. In a cache line with memory that one of them
    // writes to, that would be slow.
    constexpr std::size_t kCacheLine = 64;
    alignas(kCacheLine) static const SimpleSet set = makeSimpleSet();
    return set;
}

/// ICU's character iterator over one text at a time. One per thread: opening one is expensive.
class Iterator final
{
public:
    Iterator()
    {
        UErrorCode status = U_ZERO_ERROR;
        m_iterator.reset(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        // ICU's data is linked in. Without it no result would be correct.
        if (U_FAILURE(status) || !m_iterator)
            qFatal("penwick: ICU has no character break data (%s)", u_errorName(status));
    }

    ~Iterator() { utext_close(&m_text); }

    Q_DISABLE_COPY_MOVE(Iterator)

    icu::BreakIterator &over(std::u16string_view text)
    {
        UErrorCode status = U_ZERO_ERROR;
        utext_openUChars(&m_text, text.data(), static_cast<int64_t>(text.size()), &status);
        m_iterator->setText(&m_text, status);
        if (U_FAILURE(status))
            qFatal("penwick: ICU refused a text (%s)", u_errorName(status));
        return *m_iterator;
    }

private:
    UText m_text = UTEXT_INITIALIZER;
    std::unique_ptr<icu::BreakIterator> m_iterator;
};

icu::BreakIterator &iteratorOver(std::u16string_view text)
{
    thread_local Iterator iterator;
    return iterator.over(text);
}

qint64 countByIterator(std::u16string_view text)
{
    icu::BreakIterator &iterator = iteratorOver(text);
    qint64 clusters = 0;
    while (iterator.next() != icu::BreakIterator::DONE)
        ++clusters;
    return clusters;
}

/// Returns the end of the stretch from `start` that holds units that are not simple. It ends
/// between the first two simple units in a row, where a boundary is certain, or with the text.
std::size_t complexStretchEnd(std::u16string_view text, std::size_t start, const SimpleSet &simple)
{
    std::size_t end = start + 1;
    while (end < text.size() && !(simple[text[end - 1]] && simple[text[end]]))
        ++end;
    return end;
}

} // namespace

qint64 count(std::u16string_view text)
{
    const SimpleSet &simple = simpleSet();
    const std::size_t size = text.size();
    qint64 clusters = 0;
    std::size_t i = 0;
    while (i < size) {
        const char16_t unit = text[i];
        const bool nextIsSimple = i + 1 == size || simple[text[i + 1]];
        if (simple[unit] && nextIsSimple) {
            const bool joinsLineFeed = unit == u'\r' && i + 1 < size && text[i + 1] == u'\n';
            clusters += joinsLineFeed ? 0 : 1;
            ++i;
            continue;
        }
        const std::size_t start = i;
        // A simple unit before one that is not simple belongs to the stretch. The search for its
        // end compares pairs of units, so start it after the first pair.
        i = complexStretchEnd(text, simple[unit] ? start + 1 : start, simple);
        // The end of the stretch must not split CR LF, which is one cluster: leave the CR to the
        // next iteration.
        if (i < size && text[i - 1] == u'\r' && text[i] == u'\n' && i - 1 > start)
            --i;
        clusters += countByIterator(text.substr(start, i - start));
    }
    return clusters;
}

bool isCertainBoundary(char32_t before, char32_t after)
{
    if (before == U'\r' && after == U'\n')
        return false;
    const UGraphemeClusterBreak a = breakClass(before);
    const UGraphemeClusterBreak b = breakClass(after);
    if (isControl(a) || isControl(b))
        return true;
    if (extends(b) || a == U_GCB_PREPEND)
        return false;
    if (extends(a))
        return !mayContinueBehindMark(a, after);
    // Vowels and final consonants join the syllable before them. A leading consonant or a whole
    // syllable starts a new one, except after a leading consonant.
    if (isHangul(a) && isHangul(b))
        return a != U_GCB_L && (b == U_GCB_L || b == U_GCB_LV || b == U_GCB_LVT);
    return !(a == U_GCB_REGIONAL_INDICATOR && b == U_GCB_REGIONAL_INDICATOR);
}

bool isCertainBoundaryAt(std::u16string_view units, std::size_t index)
{
    const char16_t before = units[index - 1];
    const char16_t after = units[index];
    if (QChar::isLowSurrogate(after) || (QChar::isLowSurrogate(before) && index < 2) ||
        (QChar::isHighSurrogate(after) && index + 1 >= units.size()))
        return false;
    const char32_t first =
        QChar::isLowSurrogate(before) ? QChar::surrogateToUcs4(units[index - 2], before) : before;
    const char32_t second =
        QChar::isHighSurrogate(after) ? QChar::surrogateToUcs4(after, units[index + 1]) : after;
    return isCertainBoundary(first, second);
}

qsizetype following(std::u16string_view text, qsizetype offset)
{
    return iteratorOver(text).following(static_cast<int32_t>(offset));
}

qsizetype preceding(std::u16string_view text, qsizetype offset)
{
    return iteratorOver(text).preceding(static_cast<int32_t>(offset));
}

bool isBoundary(std::u16string_view text, qsizetype offset)
{
    if (offset <= 0 || offset >= static_cast<qsizetype>(text.size()))
        return true;
    return iteratorOver(text).isBoundary(static_cast<int32_t>(offset));
}

} // namespace penwick::clusters

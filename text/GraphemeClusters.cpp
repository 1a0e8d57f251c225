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

/// Many units are looked at together, because the compiler turns such loops into vector
/// instructions.
constexpr std::size_t kBlock = 32;

/// 1 when the unit is one of `count` from `first` on, otherwise 0.
constexpr int isFrom(quint16 unit, quint16 first, quint16 count)
{
    return static_cast<quint16>(unit - first) < count ? 1 : 0;
}

/// 1 for units in three large ranges: Latin, the scripts of Japanese and Chinese without their
/// combining marks, and the syllables of Korean; otherwise 0. A sum, because compilers make no
/// vector instructions of && and ||.
constexpr int isCommon(quint16 unit)
{
    return isFrom(unit, 0, 0x300) + isFrom(unit, 0x3000, 0x7000) - isFrom(unit, 0x302A, 6) -
           isFrom(unit, 0x3099, 2) + isFrom(unit, 0xAC00, 0x2BA4);
}

/// True when no common unit joins another, except in CR LF, as in every version of Unicode so far.
/// Vowels and final consonants join a syllable, but no syllable joins what is before it.
bool areCommonUnitsApart(const SimpleSet &simple)
{
    const auto isSyllable = [](std::size_t unit) {
        const UGraphemeClusterBreak value = breakClass(static_cast<char32_t>(unit));
        return value == U_GCB_LV || value == U_GCB_LVT;
    };
    for (std::size_t unit = 0; unit < kBasicPlaneSize; ++unit)
        if (isCommon(static_cast<quint16>(unit)) != 0 && !simple[unit] && !isSyllable(unit))
            return false;
    return true;
}

bool isCommonBlock(const char16_t *units)
{
    quint16 common = 0;
    for (std::size_t i = 0; i < kBlock; ++i)
        common = static_cast<quint16>(common + isCommon(units[i]));
    return common == kBlock;
}

/// Returns the end of the whole blocks of common units from `start` on.
std::size_t commonBlocksEnd(std::u16string_view text, std::size_t start, const SimpleSet &simple)
{
    static const bool areApart = areCommonUnitsApart(simple);
    // What follows a block must not join its last unit.
    const auto standsApart = [&simple](char16_t unit) {
        return simple[unit] || isCommon(unit) != 0;
    };
    std::size_t end = start;
    while (areApart && end + kBlock < text.size() && isCommonBlock(&text[end]) &&
           standsApart(text[end + kBlock]))
        end += kBlock;
    return end;
}

/// \param count less than the number of units.
qint64 lineEndPairs(const char16_t *units, std::size_t count)
{
    quint32 pairs = 0;
    for (std::size_t i = 0; i < count; ++i)
        pairs += static_cast<quint32>(isFrom(units[i], u'\r', 1) & isFrom(units[i + 1], u'\n', 1));
    return pairs;
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

/// Returns the end of the stretch from `start` that holds units that are not simple: the first unit
/// or the one after it. It ends between the first two simple units in a row, where a boundary is
/// certain, or with the text.
std::size_t complexStretchEnd(std::u16string_view text, std::size_t start, const SimpleSet &simple)
{
    // A simple unit before one that is not simple belongs to the stretch. The search for the end
    // compares pairs of units, so start it after the first pair.
    std::size_t end = start + (simple[text[start]] ? 2 : 1);
    while (end < text.size() && !(simple[text[end - 1]] && simple[text[end]]))
        ++end;
    // CR LF is one cluster: leave the CR to the next stretch.
    const bool splitsPair = end < text.size() && text[end - 1] == u'\r' && text[end] == u'\n';
    return splitsPair && end - 1 > start ? end - 1 : end;
}

} // namespace

qint64 count(std::u16string_view text)
{
    const SimpleSet &simple = simpleSet();
    const std::size_t size = text.size();
    qint64 clusters = 0;
    std::size_t nextBlocks = 0; // Where to look for common blocks again.
    std::size_t i = 0;
    while (i < size) {
        if (i >= nextBlocks) {
            const std::size_t end = commonBlocksEnd(text, i, simple);
            clusters += static_cast<qint64>(end - i) - lineEndPairs(&text[i], end - i);
            i = end;
            nextBlocks = end + kBlock;
        }
        const char16_t unit = text[i];
        const bool nextIsSimple = i + 1 == size || simple[text[i + 1]];
        if (simple[unit] && nextIsSimple) {
            const bool joinsLineFeed = unit == u'\r' && i + 1 < size && text[i + 1] == u'\n';
            clusters += joinsLineFeed ? 0 : 1;
            ++i;
            continue;
        }
        const std::size_t start = i;
        i = complexStretchEnd(text, start, simple);
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

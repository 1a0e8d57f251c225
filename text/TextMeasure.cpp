#include "text/GraphemeClusters.h"
#include "text/TextNode.h"

#include <algorithm>
#include <type_traits>

namespace penwick {

namespace {

// Narrow counters (8 bits for ASCII, 16 bits for UTF-16) let the compiler compare and add several
// characters in one vector instruction. A block is as long as an 8-bit counter can count.
constexpr std::size_t kBlock = 255;

/// Counts the U+000D from `start` to `end`, at most one block, and the CR LF pairs that start
/// there.
template <typename Units>
TextMetrics measureCarriageReturns(Units units, std::size_t start, std::size_t end)
{
    using Counter = std::conditional_t<sizeof(*units.data()) == 1, quint8, quint16>;
    const auto *const data = units.data();
    Counter carriageReturns = 0;
    for (std::size_t i = start; i < end; ++i)
        carriageReturns = static_cast<Counter>(carriageReturns + (data[i] == '\r'));
    Counter pairs = 0;
    const std::size_t pairsEnd = std::min(end, units.size() - 1);
    for (std::size_t i = start; i < pairsEnd; ++i)
        pairs = static_cast<Counter>(pairs + ((data[i] == '\r') & (data[i + 1] == '\n')));
    TextMetrics total;
    total.carriageReturns = carriageReturns;
    total.crLfPairs = pairs;
    return total;
}

} // namespace

TextMetrics measureAscii(std::string_view characters)
{
    TextMetrics total;
    const char *data = characters.data();
    const std::size_t size = characters.size();
    for (std::size_t start = 0; start < size; start += kBlock) {
        const std::size_t end = std::min(size, start + kBlock);
        quint8 lineFeeds = 0;
        quint8 separators = 0;
        for (std::size_t i = start; i < end; ++i) {
            lineFeeds = static_cast<quint8>(lineFeeds + (data[i] == '\n'));
            separators =
                static_cast<quint8>(separators + (static_cast<quint8>(data[i] - '\n') < 4));
        }
        total.lineFeeds += lineFeeds;
        total.separators += separators;
        if (lineFeeds == separators)
            continue; // The block has no CR.
        total += measureCarriageReturns(characters, start, end);
    }
    total.utf16Units = static_cast<qint64>(size);
    total.utf8Bytes = total.utf16Units;
    total.clusters = total.utf16Units - total.crLfPairs;
    return total;
}

TextMetrics measureUtf16(std::u16string_view units)
{
    TextMetrics total;
    const char16_t *data = units.data();
    const std::size_t size = units.size();
    for (std::size_t start = 0; start < size; start += kBlock) {
        const std::size_t end = std::min(size, start + kBlock);
        quint16 lineFeeds = 0;
        quint16 separators = 0;
        quint16 extraBytes = 0;
        for (std::size_t i = start; i < end; ++i) {
            const char16_t unit = data[i];
            const auto isSurrogate = static_cast<quint16>((unit & 0xF800) == 0xD800);
            lineFeeds = static_cast<quint16>(lineFeeds + (unit == u'\n'));
            separators =
                static_cast<quint16>(separators + (static_cast<quint16>(unit - u'\n') < 4) +
                                     (unit == u'\u0085') + ((unit & 0xFFFE) == 0x2028));
            // A surrogate pair takes four bytes: two for each half.
            extraBytes =
                static_cast<quint16>(extraBytes + (unit >= 0x80) + (unit >= 0x800) - isSurrogate);
        }
        total.lineFeeds += lineFeeds;
        total.separators += separators;
        total.utf8Bytes += extraBytes;
        if (separators != lineFeeds)
            total += measureCarriageReturns(units, start, end);
    }
    total.utf16Units = static_cast<qint64>(size);
    total.utf8Bytes += total.utf16Units;
    total.clusters = clusters::count(units);
    return total;
}

} // namespace penwick

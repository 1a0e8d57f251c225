#include "macro/engine/ContextJson.h"

#include "macro/script/ScriptHost.h"
#include "macro/script/SharedTexts.h"
#include "platform/json/JsonEscape.h"

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

// How many units each of the first 128 takes inside quotes: 1, 2 for a short escape, 6 for \uXXXX.
constexpr std::array<unsigned char, 128> kAsciiLengths = []() {
    std::array<unsigned char, 128> lengths{};
    for (std::size_t unit = 0; unit < lengths.size(); ++unit)
        lengths[unit] = kJsonEscapeLetters[unit] != 0 ? 2 : unit < 0x20 ? 6 : 1;
    return lengths;
}();

constexpr qsizetype lengthOf(char16_t unit)
{
    if (unit < kAsciiLengths.size())
        return kAsciiLengths[unit];
    return unit == 0x2028 || unit == 0x2029 ? 6 : 1;
}

template <typename Unit> char16_t codeUnit(Unit unit)
{
    if constexpr (sizeof(Unit) == 1)
        return static_cast<unsigned char>(unit);
    else
        return unit;
}

template <typename Unit> qint64 escapedLengthOf(const Unit *units, qsizetype size)
{
    qint64 length = 0;
    for (qsizetype i = 0; i < size; ++i)
        length += lengthOf(codeUnit(units[i]));
    return length;
}

char16_t *writeEscape(char16_t unit, qsizetype length, char16_t *to)
{
    constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    *to++ = u'\\';
    if (length == 2) {
        *to++ = static_cast<unsigned char>(kJsonEscapeLetters[unit]);
        return to;
    }
    *to++ = u'u';
    for (int shift = 12; shift >= 0; shift -= 4)
        *to++ = kDigits[(unit >> shift) & 0xF];
    return to;
}

template <typename Unit> void appendEscaped(const Unit *units, qsizetype size, QString &out)
{
    const qsizetype before = out.size();
    out.resize(before + static_cast<qsizetype>(escapedLengthOf(units, size)));
    auto *to = reinterpret_cast<char16_t *>(out.data()) + before;
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t unit = codeUnit(units[i]);
        const qsizetype length = lengthOf(unit);
        if (length == 1)
            *to++ = unit;
        else
            to = writeEscape(unit, length, to);
    }
}

/// Appends to `out`. Texts of at least `kLongText` units go to `longTexts`, unless that is null.
struct Writer
{
    QString out = {};
    std::vector<Text> *longTexts = nullptr;

    void operator()(bool value) { out += value ? "true"_L1 : "false"_L1; }

    void operator()(qint64 value) { out += QString::number(value); }

    void operator()(const QString &value)
    {
        out += u'"';
        appendEscaped(reinterpret_cast<const char16_t *>(value.utf16()), value.size(), out);
        out += u'"';
    }

    void operator()(const Text &value)
    {
        if (longTexts != nullptr && value.size() >= kLongText) {
            out += longTextName(longTexts->size());
            longTexts->push_back(value);
            return;
        }
        out += u'"';
        value.forEachChunk(0, value.size(), [this](const TextChunkView &chunk) {
            if (chunk.ascii != nullptr)
                appendEscaped(chunk.ascii, chunk.length, out);
            else
                appendEscaped(chunk.utf16, chunk.length, out);
            return true;
        });
        out += u'"';
    }

    void operator()(const ContextDictionary &value)
    {
        out += u'{';
        for (const ContextEntry &entry : value) {
            out += &entry == &value.front() ? "\""_L1 : ",\""_L1;
            out += entry.key;
            out += "\":"_L1;
            std::visit(*this, entry.value);
        }
        out += u'}';
    }

    // Shorter texts cost less to parse than to hand over.
    static constexpr qint64 kLongText = SharedTexts::kLeastLength;
};

} // namespace

QString contextJson(const ContextDictionary &dictionary, std::vector<Text> *longTexts)
{
    Writer writer{.longTexts = longTexts};
    writer(dictionary);
    return std::move(writer.out);
}

} // namespace penwick

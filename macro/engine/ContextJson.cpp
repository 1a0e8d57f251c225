#include "macro/engine/ContextJson.h"

#include "platform/json/JsonEscape.h"

#include <array>

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

/// Counts the units that `PieceWriter` would pass on.
struct Measure
{
    qint64 length = 0;

    void literal(QLatin1StringView ascii) { length += ascii.size(); }

    template <typename Unit> void chunk(const Unit *units, qsizetype size)
    {
        length += escapedLengthOf(units, size);
    }
};

/// Writes into a buffer and passes it to `sink` whenever it holds at least `kPiece` units.
struct PieceWriter
{
    const std::function<void(QStringView)> &sink;
    QString buffer = {};

    void literal(QLatin1StringView ascii)
    {
        buffer += ascii;
        handOn(kPiece);
    }

    template <typename Unit> void chunk(const Unit *units, qsizetype size)
    {
        appendEscaped(units, size, buffer);
        handOn(kPiece);
    }

    void handOn(qsizetype least)
    {
        if (buffer.size() < least)
            return;
        sink(buffer);
        buffer.resize(0);
    }

    static constexpr qsizetype kPiece = 32768;
};

template <typename Sink> void emitDictionary(const ContextDictionary &dictionary, Sink &sink);

template <typename Sink> struct EmitValue
{
    Sink &sink;

    void operator()(bool value) const { sink.literal(QLatin1StringView(value ? "true" : "false")); }

    void operator()(qint64 value) const
    {
        const QByteArray digits = QByteArray::number(value);
        sink.literal(QLatin1StringView(digits));
    }

    void operator()(const QString &value) const
    {
        sink.literal(QLatin1StringView("\""));
        sink.chunk(reinterpret_cast<const char16_t *>(value.utf16()), value.size());
        sink.literal(QLatin1StringView("\""));
    }

    void operator()(const Text &value) const
    {
        sink.literal(QLatin1StringView("\""));
        value.forEachChunk(0, value.size(), [this](const TextChunkView &chunk) {
            if (chunk.ascii != nullptr)
                sink.chunk(chunk.ascii, chunk.length);
            else
                sink.chunk(chunk.utf16, chunk.length);
            return true;
        });
        sink.literal(QLatin1StringView("\""));
    }

    void operator()(const ContextDictionary &value) const { emitDictionary(value, sink); }
};

template <typename Sink> void emitDictionary(const ContextDictionary &dictionary, Sink &sink)
{
    const char *separator = "{\"";
    for (const ContextEntry &entry : dictionary) {
        sink.literal(QLatin1StringView(separator));
        sink.literal(entry.key);
        sink.literal(QLatin1StringView("\":"));
        std::visit(EmitValue<Sink>{sink}, entry.value);
        separator = ",\"";
    }
    sink.literal(QLatin1StringView(dictionary.empty() ? "{}" : "}"));
}

} // namespace

qint64 contextJsonLength(const ContextDictionary &dictionary)
{
    Measure measure;
    emitDictionary(dictionary, measure);
    return measure.length;
}

void writeContextJson(const ContextDictionary &dictionary,
                      const std::function<void(QStringView)> &sink)
{
    PieceWriter writer{sink};
    emitDictionary(dictionary, writer);
    writer.handOn(1);
}

} // namespace penwick

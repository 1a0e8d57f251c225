#include "macro/script/SharedTexts.h"

#include "macro/script/ScriptValue.h"
#include "text/TextBuilder.h"

#include <algorithm>
#include <array>
#include <future>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace penwick {

namespace {

// Texts start at multiples of the largest page size, so that they can be mapped on every machine.
constexpr qint64 kAlignment = qint64{1} << 16;
constexpr qint64 kUnit = sizeof(char16_t);
constexpr qsizetype kPiece = 32768; // Units. Small enough to stay in the processor's cache.

/// A side's range of the file, in bytes.
struct Room
{
    qint64 start;
    qint64 end;
};

// The host's range comes first, so that a limit on the size of files keeps the host inside it.
constexpr Room roomOf(bool isHost)
{
    return isHost ? Room{0, SharedTexts::kHostRoom}
                  : Room{SharedTexts::kHostRoom, SharedTexts::kHostRoom + (qint64{1} << 34)};
}

bool writeAll(int descriptor, const char *bytes, qint64 size, qint64 at)
{
    while (size > 0) {
        const ssize_t written = pwrite(descriptor, bytes, static_cast<std::size_t>(size), at);
        if (written <= 0)
            return false;
        bytes += written;
        at += written;
        size -= written;
    }
    return true;
}

bool readAll(int descriptor, char *bytes, qint64 size, qint64 at)
{
    while (size > 0) {
        const ssize_t taken = pread(descriptor, bytes, static_cast<std::size_t>(size), at);
        if (taken <= 0)
            return false;
        bytes += taken;
        at += taken;
        size -= taken;
    }
    return true;
}

// Seeks because the host's system call filter refuses the call with which the C library may read a
// file's status. No read or write uses the file's position.
qint64 sizeOf(int descriptor)
{
    return std::max<qint64>(0, lseek(descriptor, 0, SEEK_END));
}

// Memory that is used for the first time is got page by page, which takes longer than the copy.
void adviseHugePages(char *memory, qint64 size)
{
    constexpr quintptr kHugePage = quintptr{2} << 20;
    const auto start = reinterpret_cast<quintptr>(memory);
    const quintptr from = (start + kHugePage - 1) / kHugePage * kHugePage;
    const quintptr end = (start + static_cast<quintptr>(size)) / kHugePage * kHugePage;
    if (from < end)
        madvise(memory + (from - start), end - from, MADV_HUGEPAGE);
}

bool isAscii(QStringView text)
{
    char16_t all = 0; // No early exit, so that the compiler can vectorize the loop.
    for (const QChar unit : text)
        all |= unit.unicode();
    return all < 0x80;
}

bool isAscii(QByteArrayView bytes)
{
    unsigned char all = 0;
    for (const char byte : bytes)
        all |= static_cast<unsigned char>(byte);
    return all < 0x80;
}

/// Bytes of a text of so many units.
constexpr qint64 sizeIn(SharedTexts::Form form, qsizetype length)
{
    return form == SharedTexts::Form::Utf16 ? length * kUnit : length;
}

std::optional<QString> copied(int descriptor, qint64 start, qsizetype length)
{
    QString text(length, Qt::Uninitialized);
    auto *bytes = reinterpret_cast<char *>(text.data());
    adviseHugePages(bytes, length * kUnit);
    if (!readAll(descriptor, bytes, length * kUnit, start))
        return std::nullopt;
    return text;
}

} // namespace

SharedTexts::SharedTexts(int descriptor, Side side)
    : m_descriptor(descriptor)
    , m_isHost(side == Side::Host)
    , m_end(roomOf(m_isHost).start)
{
}

void SharedTexts::startOver()
{
    for (const Mapping &mapping : std::exchange(m_mappings, {}))
        munmap(mapping.memory, mapping.size);
    m_end = roomOf(m_isHost).start;
    m_open.reset();
}

std::optional<QString> SharedTexts::mapped(qint64 start, qsizetype length) const
{
    const auto size = static_cast<std::size_t>(length * kUnit);
    void *memory = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, m_descriptor, start);
    if (memory == MAP_FAILED)
        return std::nullopt;
    m_mappings.push_back({memory, size});
    return QString::fromRawData(static_cast<const QChar *>(memory), length);
}

bool SharedTexts::hasRoomFor(qsizetype length) const
{
    return m_descriptor >= 0 && length >= kLeastLength &&
           length <= (roomOf(m_isHost).end - m_end) / kUnit;
}

// Only the host saves memory: it could not map what the editor wrote in this form.
SharedTexts::Form SharedTexts::formOf(QStringView text) const
{
    return m_isHost && isAscii(text) ? Form::Ascii : Form::Utf16;
}

bool SharedTexts::write(QStringView text, Form form, qint64 at) const
{
    if (form == Form::Ascii)
        return writeAscii(text, at);
    return writeAll(
        m_descriptor, reinterpret_cast<const char *>(text.utf16()), text.size() * kUnit, at);
}

bool SharedTexts::writeAscii(QStringView text, qint64 at) const
{
    QByteArray piece;
    for (qsizetype start = 0; start < text.size(); start += kPiece) {
        piece = text.sliced(start, std::min(kPiece, text.size() - start)).toLatin1();
        if (!writeAll(m_descriptor, piece.constData(), piece.size(), at + start))
            return false;
    }
    return true;
}

SharedTexts::Place SharedTexts::keep(qint64 end, Form form)
{
    const qint64 next = (end + kAlignment - 1) / kAlignment * kAlignment;
    const auto start =
        static_cast<quint64>(std::exchange(m_end, std::min(next, roomOf(m_isHost).end)));
    return Place{start, form};
}

std::optional<SharedTexts::Place> SharedTexts::put(QStringView text)
{
    m_open.reset();
    if (!hasRoomFor(text.size()))
        return std::nullopt;
    const Form form = formOf(text);
    if (!write(text, form, m_end))
        return std::nullopt;
    return keep(m_end + sizeIn(form, text.size()), form);
}

std::optional<SharedTexts::Place> SharedTexts::putSource(const ScriptSource &source)
{
    m_open.reset();
    if (!hasRoomFor(source.size()))
        return std::nullopt;
    qint64 end = m_end;
    bool isWritten = true;
    source.write([&](QStringView piece) {
        isWritten = isWritten && write(piece, Form::Utf16, end);
        end += piece.size() * kUnit;
    });
    if (!isWritten || end - m_end != source.size() * kUnit)
        return std::nullopt;
    return keep(end, Form::Utf16);
}

bool SharedTexts::append(QStringView piece)
{
    if (!m_open && !hasRoomFor(piece.size()))
        return false;
    const OpenText text = m_open ? *m_open : OpenText{m_end, formOf(piece)};
    const qint64 end = text.end + sizeIn(text.form, piece.size());
    const bool fits = end <= roomOf(m_isHost).end && (text.form == Form::Utf16 || isAscii(piece));
    if (!fits || !write(piece, text.form, text.end))
        return false;
    m_open = OpenText{end, text.form};
    return true;
}

SharedTexts::Place SharedTexts::finish()
{
    const OpenText text = *std::exchange(m_open, std::nullopt);
    return keep(text.end, text.form);
}

std::optional<QString> SharedTexts::get(Place place, qsizetype length) const
{
    if (!hasText(place, length))
        return std::nullopt;
    const auto start = static_cast<qint64>(place.start);
    if (place.form == Form::Utf16)
        return m_isHost ? mapped(start, length) : copied(m_descriptor, start, length);
    QString text;
    const auto take = [&text](QByteArrayView piece) {
        text.append(QLatin1StringView(piece));
        return true;
    };
    return readPart(place, 0, length, take, {}) ? std::optional(text) : std::nullopt;
}

bool SharedTexts::hasText(Place place, qsizetype length) const
{
    const Room room = roomOf(!m_isHost);
    const qint64 end = m_descriptor < 0 ? 0 : std::min(sizeOf(m_descriptor), room.end);
    if (place.start % kAlignment != 0 || place.start < static_cast<quint64>(room.start) ||
        place.start > static_cast<quint64>(end))
        return false;
    const qint64 size = end - static_cast<qint64>(place.start);
    return length >= kLeastLength && length <= size / (place.form == Form::Utf16 ? kUnit : 1);
}

bool SharedTexts::readPart(Place place,
                           qsizetype start,
                           qsizetype end,
                           const std::function<bool(QByteArrayView)> &takeAscii,
                           const std::function<bool(QStringView)> &takeUtf16) const
{
    const bool isWide = place.form == Form::Utf16;
    const qint64 unit = isWide ? kUnit : 1;
    std::array<char16_t, kPiece> piece;
    auto *bytes = reinterpret_cast<char *>(piece.data());
    while (start < end) {
        qsizetype size = std::min(kPiece, end - start);
        const qint64 at = static_cast<qint64>(place.start) + start * unit;
        if (!readAll(m_descriptor, bytes, size * unit, at))
            return false;
        if (isWide && start + size < end &&
            QChar::isHighSurrogate(piece[static_cast<std::size_t>(size) - 1]))
            --size;
        if (!(isWide ? takeUtf16(QStringView(piece.data(), size))
                     : takeAscii(QByteArrayView(bytes, size))))
            return false;
        start += size;
    }
    return true;
}

std::optional<Text> SharedTexts::part(Place place, qsizetype start, qsizetype end) const
{
    TextBuilder builder;
    const auto takeAscii = [&builder](QByteArrayView piece) {
        if (!isAscii(piece))
            return false;
        builder.appendAscii({piece.data(), static_cast<std::size_t>(piece.size())});
        return true;
    };
    const auto takeUtf16 = [&builder](QStringView piece) {
        if (!isWellFormed(piece))
            return false;
        builder.appendUtf16({piece.utf16(), static_cast<std::size_t>(piece.size())});
        return true;
    };
    if (!readPart(place, start, end, takeAscii, takeUtf16))
        return std::nullopt;
    return builder.finish();
}

// Does not cut surrogate pairs. If the other side changes the text meanwhile, a part has a lone
// one.
qsizetype SharedTexts::cutNear(Place place, qsizetype offset) const
{
    char16_t before = 0;
    const qint64 at = static_cast<qint64>(place.start) + (offset - 1) * kUnit;
    const bool cutsPair =
        place.form == Form::Utf16 && offset > 0 &&
        readAll(m_descriptor, reinterpret_cast<char *>(&before), sizeof before, at) &&
        QChar::isHighSurrogate(before);
    return cutsPair ? offset - 1 : offset;
}

std::optional<Text> SharedTexts::text(Place place, qsizetype length) const
{
    if (!hasText(place, length))
        return std::nullopt;
    constexpr qsizetype kLeastPart = qsizetype{1} << 17; // Units. Less is not worth a thread.
    constexpr qsizetype kMostParts = 8;
    const qsizetype count = std::clamp<qsizetype>(
        std::min<qsizetype>(std::thread::hardware_concurrency(), length / kLeastPart),
        1,
        kMostParts);
    const auto cut = [&](qsizetype i) {
        return i == count ? length : cutNear(place, length / count * i);
    };
    std::vector<std::future<std::optional<Text>>> parts;
    const qsizetype first = cut(1);
    qsizetype start = first;
    for (qsizetype i = 1; i < count; ++i) {
        const qsizetype end = cut(i + 1);
        // Without another thread, the part is decoded when it is needed.
        parts.push_back(std::async(std::launch::async | std::launch::deferred,
                                   [=, this] { return part(place, start, end); }));
        start = end;
    }
    std::optional<Text> text = part(place, 0, first);
    for (auto &next : parts) {
        const std::optional<Text> more = next.get();
        text = text && more ? std::optional(text->appended(*more)) : std::nullopt;
    }
    return text;
}

} // namespace penwick

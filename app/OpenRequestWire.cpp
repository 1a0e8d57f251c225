#include "app/OpenRequestWire.h"

#include <algorithm>
#include <utility>

namespace penwick {

namespace {

constexpr quint16 kVersion = 1;
constexpr QByteArrayView kMagic = "penwick!";
constexpr quint16 kNewWindow = 1;
constexpr quint16 kWait = 2;
constexpr qsizetype kMaxToken = 4096;

enum Kind : quint8 {
    Greeting = 1,
    ActivationToken = 2,
    StartupId = 3,
    File = 4,
    TextBegin = 5,
    TextBytes = 6,
    TextEnd = 7,
    Done = 8,
};

QByteArray frame(quint8 kind, QByteArrayView payload)
{
    QByteArray bytes(kFrameHeaderSize, '\0');
    bytes.append(payload.data(), payload.size());
    setFrameHeader(bytes, kind);
    return bytes;
}

tl::expected<std::optional<Frame>, Refusal> nextFrame(FrameCutter &frames)
{
    const auto frame = frames.next();
    if (!frame && frame.error() == FrameError::TooLong)
        return tl::unexpected(Refusal::TooLarge);
    if (!frame || (*frame && (*frame)->more))
        return tl::unexpected(Refusal::Malformed);
    return *frame;
}

// A place is always encoded, as zeros when absent, so that what follows starts at a fixed offset.
constexpr qsizetype kPlaceSize = 2 * sizeof(qint64);

QByteArray encodedPlace(const std::optional<TextPlace> &place)
{
    QByteArray bytes;
    appendNumber(bytes, place ? place->line : qint64{0});
    appendNumber(bytes, place ? place->column : qint64{0});
    return bytes;
}

/// Removes a place from the start of the payload.
tl::expected<std::optional<TextPlace>, Refusal> takePlace(QByteArrayView &payload)
{
    const auto line = takeNumber<qint64>(payload);
    const auto column = takeNumber<qint64>(payload);
    if (line == 0 && column == 0)
        return std::nullopt;
    if (line < 1 || column < 1) // No number is less than any number.
        return tl::unexpected(Refusal::Malformed);
    return TextPlace{*line, *column};
}

bool sendText(const OpenRequest::Item &item, const ByteSink &sink)
{
    if (!sink(frame(TextBegin, encodedPlace(item.place))))
        return false;
    const bool sent = item.text->forEachUtf8Block([&sink](QByteArrayView block) {
        for (qsizetype i = 0; i < block.size(); i += kMaxPayload) {
            const auto size = std::min(kMaxPayload, block.size() - i);
            if (!sink(frame(TextBytes, block.sliced(i, size))))
                return false;
        }
        return true;
    });
    return sent && sink(frame(TextEnd, {}));
}

bool sendItem(const OpenRequest::Item &item, const ByteSink &sink)
{
    if (item.text)
        return sendText(item, sink);
    // Truncate a path that is too long for the system anyway: opening it fails with an error.
    const auto path =
        QByteArrayView(item.path).first(std::min(item.path.size(), kMaxPayload - kPlaceSize));
    return sink(frame(File, encodedPlace(item.place).append(path.data(), path.size())));
}

} // namespace

bool sendRequest(const OpenRequest &request, const ByteSink &sink)
{
    QByteArray greeting = kMagic.toByteArray();
    appendNumber(greeting, kVersion);
    appendNumber(
        greeting,
        static_cast<quint16>((request.newWindow ? kNewWindow : 0) | (request.wait ? kWait : 0)));
    return sink(frame(Greeting, greeting)) &&
           sink(frame(ActivationToken, request.activationToken.left(kMaxToken))) &&
           sink(frame(StartupId, request.startupId.left(kMaxToken))) &&
           std::all_of(request.items.cbegin(),
                       request.items.cend(),
                       [&sink](const auto &item) { return sendItem(item, sink); }) &&
           sink(frame(Done, {}));
}

QByteArray encoded(const Reply &reply)
{
    const quint8 detail = reply.kind == Reply::Kind::Refused
                              ? static_cast<quint8>(reply.refusal)
                              : static_cast<quint8>(reply.openedAll ? 1 : 0);
    return frame(static_cast<quint8>(reply.kind), QByteArray(1, static_cast<char>(detail)));
}

tl::expected<bool, Refusal> RequestReader::append(QByteArrayView bytes)
{
    m_frames.append(bytes);
    while (true) {
        const auto frame = nextFrame(m_frames);
        if (!frame)
            return tl::unexpected(frame.error());
        if (!*frame)
            return m_complete;
        if (const auto taken = takeFrame(**frame); !taken)
            return tl::unexpected(taken.error());
    }
}

RequestReader::Step RequestReader::takeFrame(const Frame &frame)
{
    if (!m_greeted)
        return takeGreeting(frame);
    const bool belongsToText = frame.kind == TextBytes || frame.kind == TextEnd;
    if (m_complete || belongsToText != m_text.has_value())
        return tl::unexpected(Refusal::Malformed);
    switch (frame.kind) {
    case ActivationToken:
        m_request.activationToken = frame.payload.toByteArray().left(kMaxToken);
        return {};
    case StartupId:
        m_request.startupId = frame.payload.toByteArray().left(kMaxToken);
        return {};
    case File:
        return takeFile(frame.payload);
    case TextBegin:
        return beginText(frame.payload);
    case TextBytes:
        return takeTextBytes(frame.payload);
    case TextEnd:
        return endText();
    case Done:
        m_complete = true;
        return {};
    default:
        return tl::unexpected(Refusal::Malformed);
    }
}

RequestReader::Step RequestReader::takeGreeting(const Frame &frame)
{
    if (frame.kind != Greeting || !frame.payload.startsWith(kMagic))
        return tl::unexpected(Refusal::Malformed);
    QByteArrayView numbers = frame.payload.sliced(kMagic.size());
    const auto version = takeNumber<quint16>(numbers);
    const auto flags = takeNumber<quint16>(numbers);
    if (!version || !flags)
        return tl::unexpected(Refusal::Malformed);
    if (version != kVersion)
        return tl::unexpected(Refusal::OtherVersion);
    m_request.newWindow = (*flags & kNewWindow) != 0;
    m_request.wait = (*flags & kWait) != 0;
    m_greeted = true;
    return {};
}

RequestReader::Step RequestReader::takeFile(QByteArrayView payload)
{
    const auto place = takePlace(payload);
    if (!place)
        return tl::unexpected(place.error());
    if (!payload.startsWith('/') || payload.contains('\0'))
        return tl::unexpected(Refusal::Malformed);
    if (m_request.items.size() == kMaxItems)
        return tl::unexpected(Refusal::TooLarge);
    m_request.items.append({payload.toByteArray(), std::nullopt, *place});
    return {};
}

RequestReader::Step RequestReader::beginText(QByteArrayView payload)
{
    const auto place = takePlace(payload);
    if (!place)
        return tl::unexpected(place.error());
    if (m_request.items.size() == kMaxItems)
        return tl::unexpected(Refusal::TooLarge);
    m_request.items.append({{}, Text(), *place});
    m_text.emplace();
    return {};
}

RequestReader::Step RequestReader::takeTextBytes(QByteArrayView payload)
{
    m_textBytes += payload.size();
    if (m_textBytes > kMaxTextBytes)
        return tl::unexpected(Refusal::TooLarge);
    if (!m_text->append(payload))
        return tl::unexpected(Refusal::NotUtf8);
    return {};
}

RequestReader::Step RequestReader::endText()
{
    auto text = m_text->finish();
    m_text.reset();
    if (!text)
        return tl::unexpected(Refusal::NotUtf8);
    m_request.items.last().text = *std::move(text);
    return {};
}

tl::expected<std::optional<Reply>, Refusal> ReplyReader::next()
{
    const auto frame = nextFrame(m_frames);
    if (!frame)
        return tl::unexpected(frame.error());
    if (!*frame)
        return std::nullopt;
    if ((*frame)->payload.isEmpty())
        return tl::unexpected(Refusal::Malformed);
    const auto detail = static_cast<quint8>((*frame)->payload[0]);
    switch (static_cast<Reply::Kind>((*frame)->kind)) {
    case Reply::Kind::Taken:
        return Reply{.kind = Reply::Kind::Taken};
    case Reply::Kind::Refused:
        return Reply{.kind = Reply::Kind::Refused, .refusal = static_cast<Refusal>(detail)};
    case Reply::Kind::Closed:
    case Reply::Kind::Opened:
        return Reply{.kind = static_cast<Reply::Kind>((*frame)->kind), .openedAll = detail != 0};
    }
    return tl::unexpected(Refusal::Malformed);
}

} // namespace penwick

#include "fuzz/Require.h"
#include "macro/script/ScriptWire.h"
#include "macro/script/SharedTexts.h"
#include "support/SendOutcome.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <sys/mman.h>
#include <vector>

using namespace penwick;

namespace {

/// Small limits, so that short inputs reach them.
constexpr ScriptLimits kLimits{.values = 48, .bytes = 128, .depth = 6, .sourceLength = 1000};

struct Stream
{
    std::vector<Message> messages;
    std::optional<WireError> error;
};

Stream streamOf(QByteArrayView bytes, MessageReader::Side side, qsizetype portion)
{
    Stream stream;
    MessageReader reader(side);
    while (true) {
        auto message = reader.next();
        if (!message) {
            stream.error = message.error();
            REQUIRE(reader.next().error() == *stream.error); // The error is final.
            return stream;
        }
        if (*message) {
            stream.messages.push_back(std::move(**message));
            continue;
        }
        if (bytes.isEmpty())
            return stream;
        const qsizetype size = std::min(portion, bytes.size());
        reader.append(bytes.first(size));
        bytes = bytes.sliced(size);
    }
}

/// How much of the limits a value uses.
struct Extent
{
    std::size_t values = 0;
    std::size_t bytes = 0;
    std::size_t depth = 0;

    void add(const ScriptValue &value, std::size_t level)
    {
        ++values;
        if (const auto text = value.anyString())
            addText(*text);
        if (const ScriptTexts *texts = value.texts())
            addTexts(*texts);
        if (value.list() == nullptr && value.map() == nullptr)
            return;
        depth = std::max(depth, level);
        if (const ScriptValue::List *list = value.list()) {
            for (const ScriptValue &element : *list)
                add(element, level + 1);
        } else {
            for (const ScriptMember &member : *value.map()) {
                addText(member.key);
                add(member.value, level + 1);
            }
        }
    }

    void addTexts(const ScriptTexts &texts)
    {
        values += texts.lengths.size() - 1;
        const QString joined = texts.joined.toString();
        qsizetype start = 0;
        for (const quint32 length : texts.lengths) {
            REQUIRE(start == 0 || joined.at(start - 1) == u'\n');
            addText(joined.sliced(start, length));
            start += qsizetype{length} + 1;
        }
        REQUIRE(start == joined.size() + 1);
    }

    void addText(const QString &text)
    {
        REQUIRE(text.isValidUtf16());
        bytes += static_cast<std::size_t>(text.size()) * sizeof(char16_t);
    }
};

// Bytes can be compared; values cannot, because NaN does not equal itself.
QByteArray bytesOf(const ScriptOutcome &outcome)
{
    QByteArray bytes;
    const ByteSink sink = [&bytes](QByteArrayView more) {
        bytes.append(more);
        return true;
    };
    REQUIRE(sendOutcome(outcome, sink));
    return bytes;
}

/// Shared texts that a script host left for the editor. They exceed the limits.
const SharedTexts &sharedTexts()
{
    static const int file = memfd_create("fuzz", MFD_CLOEXEC);
    static const SharedTexts editor = [] {
        SharedTexts host(file, SharedTexts::Side::Host);
        REQUIRE(host.put(QString(SharedTexts::kLeastLength, u'x'))->start == 0);
        return SharedTexts(file, SharedTexts::Side::Editor);
    }();
    return editor;
}

/// Decodes the message at once, and while it arrives. Nothing when it cannot be decoded.
std::optional<ScriptOutcome> decodedOutcome(const Message &message)
{
    auto outcome = decodeOutcome(message, kLimits, &sharedTexts());
    const qsizetype portion = 1 + message.payload.size() / 16;
    OutcomeDecoder decoder(kLimits, &sharedTexts());
    for (qsizetype size = 1; size < message.payload.size(); size += portion)
        decoder.decodeAhead({message.kind, message.payload.first(size)});
    const auto inPortions = decoder.decode(message);
    REQUIRE(inPortions.has_value() == outcome.has_value());
    if (!outcome) {
        REQUIRE(inPortions.error() == outcome.error());
        return std::nullopt;
    }
    REQUIRE(bytesOf(*inPortions) == bytesOf(*outcome));
    return *std::move(outcome);
}

/// Decodes the message and encodes it again. Nothing when it cannot be decoded.
std::optional<QByteArray> sentAgain(const Message &message)
{
    QByteArray bytes;
    const ByteSink sink = [&bytes](QByteArrayView more) {
        bytes.append(more);
        return true;
    };
    bool isSent = false;
    switch (message.kind) {
    case MessageKind::Engine:
        if (const auto name = decodeText(message.payload))
            isSent = sendText(MessageKind::Engine, *name, sink);
        break;
    case MessageKind::Ready:
        if (const auto ready = decodeReady(message.payload))
            isSent = sendReady(*ready, sink);
        break;
    case MessageKind::Request:
        if (const auto request = decodeRequest(message.payload))
            isSent = sendRequest(*request, sink);
        break;
    case MessageKind::Log:
        if (const auto line = decodeText(message.payload))
            isSent = sendText(MessageKind::Log, *line, sink);
        break;
    case MessageKind::Value:
    case MessageKind::Failure:
        if (const auto outcome = decodedOutcome(message)) {
            Extent extent;
            if (*outcome)
                extent.add(**outcome, 1);
            REQUIRE(extent.values <= kLimits.values && extent.bytes <= kLimits.bytes &&
                    extent.depth <= kLimits.depth);
            isSent = sendOutcome(*outcome, sink);
        }
        break;
    }
    return isSent ? std::optional(bytes) : std::nullopt;
}

// Compares bytes, because NaN does not equal itself.
void checkRoundTrip(const Message &message, MessageReader::Side side)
{
    const auto once = sentAgain(message);
    if (!once)
        return;
    const Stream stream = streamOf(*once, side, once->size());
    REQUIRE(!stream.error && stream.messages.size() == 1);
    REQUIRE(stream.messages.front().kind == message.kind);
    REQUIRE(sentAgain(stream.messages.front()) == once);
}

} // namespace

/// The first byte selects the sending side and the size in bytes of the portions in which the rest
/// arrives.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const auto side =
        data[0] % 2 == 0 ? MessageReader::Side::FromHost : MessageReader::Side::FromEditor;
    const QByteArrayView bytes(data + 1, static_cast<qsizetype>(size - 1));
    const Stream whole = streamOf(bytes, side, std::max<qsizetype>(1, bytes.size()));
    const Stream inPortions = streamOf(bytes, side, 1 + data[0] / 2);
    REQUIRE(whole.error == inPortions.error);
    REQUIRE(whole.messages.size() == inPortions.messages.size());
    for (std::size_t i = 0; i < whole.messages.size(); ++i) {
        REQUIRE(whole.messages[i].kind == inPortions.messages[i].kind);
        REQUIRE(whole.messages[i].payload == inPortions.messages[i].payload);
        checkRoundTrip(whole.messages[i], side);
    }
    return 0;
}

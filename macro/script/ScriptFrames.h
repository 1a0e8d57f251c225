#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <functional>
#include <optional>
#include <tl/expected.hpp>

namespace penwick {

class ScriptSource;
class SharedTexts;

// The form in which editor and script host talk over a stream of bytes. A message is one frame or
// several, so that neither side has to know the length of a large one ahead. A frame is a header of
// `kFrameHeaderSize` bytes (kind, whether more of the message follows, two zeros, the length as 32
// bits) and at most `kMaxFramePayload` bytes. Numbers have the byte order of the machine, which
// both sides share.

enum class MessageKind : quint8 {
    Engine = 6,  ///< From the host, first and once: which script engine it has.
    Ready = 1,   ///< From the host, once: it waits for the request.
    Request = 2, ///< To the host, once.
    Log = 3,     ///< From the host: a line of the script.
    Value = 4,   ///< From the host, last: what the script gave.
    Failure = 5, ///< From the host, last: why it gave nothing. May come amid a value's frames.
};

constexpr qsizetype kFrameHeaderSize = 8;
constexpr qsizetype kMaxFramePayload = qsizetype{1} << 20;

/// What is wrong with bytes that came from the other side.
enum class WireError {
    UnknownKind,    ///< No kind of message, or none that may come from there.
    FrameTooLong,   ///< A frame that announces more than `kMaxFramePayload` bytes.
    BadHeader,      ///< A frame whose other fields hold what no sender writes.
    MixedMessages,  ///< A message starts before the one before it is complete. A failure may.
    MessageTooLong, ///< All frames of a message together hold too much.
    Truncated,      ///< A part reaches beyond the end of its message.
    TrailingBytes,  ///< A message goes on after its last part.
    UnknownTag,     ///< A part of no known kind.
    MalformedText,  ///< Text that is no valid UTF-16.
    TooManyValues,  ///< The limits of `ScriptLimits`.
    TooManyBytes,
    TooDeep,
};

/// Takes bytes on their way out; false when there is nobody to take them any more.
using ByteSink = std::function<bool(QByteArrayView)>;

/// One whole message.
struct Message
{
    MessageKind kind = MessageKind::Ready;
    QByteArray payload;
};

/// Cuts a message into frames and hands them to a sink as it grows.
class FrameWriter final
{
public:
    /// \param sink must outlive this.
    /// \param shared takes the long texts, where there is such a thing; must outlive this.
    FrameWriter(MessageKind kind, const ByteSink &sink, SharedTexts *shared = nullptr);

    void putBytes(const void *data, std::size_t size);

    /// \tparam Number what can be copied byte by byte.
    template <typename Number> void put(Number number) { putBytes(&number, sizeof number); }

    /// Puts the text's form (one byte a unit where all are below U+0100, else two), its length and
    /// its units, or the place among the shared texts where they are. At most 2^32 - 1 units.
    void putText(QStringView text);
    void putSource(const ScriptSource &source);
    /// Where a text might be, says that there is none.
    void putNoText();

    /// Sends the last frame. False where the sink refused a frame of this message.
    [[nodiscard]] bool finish();

private:
    void putSharedText(qsizetype length, quint64 place);
    [[nodiscard]] qsizetype room() const;
    void flushWhereFull();
    void flush(bool more);

    MessageKind m_kind;
    const ByteSink &m_sink;
    SharedTexts *m_shared;
    QByteArray m_frame; // Starts with room for the header.
    bool m_good = true;
};

/// Puts frames together to messages, from bytes that arrive in any portions.
class MessageReader final
{
public:
    enum class Side { FromEditor, FromHost };

    /// \param side where the bytes come from; decides which kinds are known.
    explicit MessageReader(Side side)
        : m_side(side)
    {
    }

    void append(QByteArrayView bytes) { m_input.append(bytes); }

    /// The next complete message, nothing while it is incomplete. After an error, which stays, the
    /// stream is of no use.
    [[nodiscard]] tl::expected<std::optional<Message>, WireError> next();

private:
    struct Header
    {
        MessageKind kind = MessageKind::Ready;
        bool more = false;
        qsizetype length = 0;
    };

    [[nodiscard]] tl::expected<std::optional<Header>, WireError> header() const;
    [[nodiscard]] tl::expected<void, WireError> take(const Header &header);
    void dropTaken();

    Side m_side;
    QByteArray m_input;
    qsizetype m_taken = 0; // Bytes at the start of m_input that are of no more use.
    std::optional<Message> m_open;
    std::optional<WireError> m_error;
};

/// Reads the parts of a message, each length checked. After the first error all reads give nothing.
class PayloadReader final
{
public:
    /// \param shared where the other side may have put texts; must outlive this.
    explicit PayloadReader(QByteArrayView payload, const SharedTexts *shared = nullptr)
        : m_rest(payload)
        , m_shared(shared)
    {
    }

    /// Zero after an error.
    template <typename Number> Number get()
    {
        Number number{};
        getBytes(&number, sizeof number);
        return number;
    }

    /// The counterpart of `FrameWriter::putText`. Empty after an error.
    [[nodiscard]] QString getText();
    /// As above; nothing for the counterpart of `FrameWriter::putNoText`.
    [[nodiscard]] std::optional<QString> getTextUnlessNone();

    /// Bytes that were not read yet.
    [[nodiscard]] qsizetype remaining() const { return m_rest.size(); }

    void fail(WireError error);

    /// The first thing that was wrong, where something was.
    [[nodiscard]] std::optional<WireError> error() const { return m_error; }

    /// As `error`, but also not content with bytes that nobody read.
    [[nodiscard]] std::optional<WireError> errorAtEnd() const;

private:
    void getBytes(void *data, std::size_t size);
    [[nodiscard]] QString getTextOf(quint8 number);
    [[nodiscard]] QString getSharedText(qsizetype length);

    QByteArrayView m_rest;
    const SharedTexts *m_shared;
    std::optional<WireError> m_error;
};

} // namespace penwick

#pragma once

#include "macro/script/SharedTexts.h"
#include "platform/process/Frames.h"

#include <QString>

#include <vector>

namespace penwick {

class ScriptSource;

// The messages on the byte stream between the editor and the script host. A message consists of one
// or more frames, so that its sender need not know the length of a large message in advance.

enum class MessageKind : quint8 {
    Engine = 6,  ///< From the host, first and once: name and version of its script engine.
    Ready = 1,   ///< From the host, once: it waits for the request.
    Request = 2, ///< To the host, for each script.
    Log = 3,     ///< From the host: a line that the script logged. May stand amid a value's frames.
    Value = 4,   ///< From the host, last of a script: its completion value.
    Failure = 5, ///< The same: why there is no value. May interrupt a value's frames.
};

constexpr qsizetype kMaxFramePayload = qsizetype{1} << 20;

/// What is wrong with data from the other side.
enum class WireError {
    UnknownKind,    ///< Not a kind of message that this sender may send.
    FrameTooLong,   ///< A frame header announces more than `kMaxFramePayload` bytes.
    BadHeader,      ///< Another field of a frame header has an invalid value.
    MixedMessages,  ///< A message follows an incomplete one that it may not interrupt.
    MissingText,    ///< There is no such shared text.
    MessageTooLong, ///< The frames of a message hold more than its kind allows.
    Truncated,      ///< A part extends beyond its message.
    TrailingBytes,  ///< Bytes follow the last part of a message.
    UnknownTag,     ///< A part of unknown kind or with an invalid value.
    MalformedText,  ///< Text that is not valid UTF-16.
    TooManyValues,  ///< More than `ScriptLimits::values`.
    TooManyBytes,
    TooDeep,
};

/// One complete message.
struct Message
{
    MessageKind kind = MessageKind::Ready;
    QByteArray payload;
};

/// Splits a message into frames and passes them to a sink as they fill.
class FrameWriter final
{
public:
    /// \param sink must outlive this.
    /// \param shared receives the long texts; null for none; must outlive this.
    FrameWriter(MessageKind kind, const ByteSink &sink, SharedTexts *shared = nullptr);

    void putBytes(const void *data, std::size_t size);

    /// \tparam Number a trivially copyable type.
    template <typename Number> void put(Number number) { putBytes(&number, sizeof number); }

    /// Writes the text's encoding, its length and its code units: one byte for each unit when all
    /// are below U+0100, otherwise two. Of a text that `shared` takes, writes the length and the
    /// place there instead of the units, and sends the frame: the other side can read the text
    /// while the rest of the message is made. At most 2^32 - 1 units.
    void putText(QStringView text);
    /// The same for a text that is in the shared memory.
    void putSharedText(qsizetype length, SharedTexts::Place place);
    void putSource(const ScriptSource &source);
    /// Writes the mark for "no text" in place of a text.
    void putNoText();

    /// Sends the last frame. False when the sink refused a frame of this message.
    [[nodiscard]] bool finish();

private:
    [[nodiscard]] qsizetype room() const;
    void flushWhereFull();
    void flush(bool more);

    MessageKind m_kind;
    const ByteSink &m_sink;
    SharedTexts *m_shared;
    QByteArray m_frame; // Starts with room for the header.
    bool m_good = true;
};

/// Assembles messages from bytes that arrive in portions of any size.
class MessageReader final
{
public:
    enum class Side { FromEditor, FromHost };

    /// \param side where the bytes come from; decides which kinds of message are valid.
    explicit MessageReader(Side side)
        : m_side(side)
    {
    }

    void append(QByteArrayView bytes) { m_frames.append(bytes); }

    /// Returns the next complete message; nothing while it is incomplete. After an error, every
    /// further call returns that error.
    [[nodiscard]] tl::expected<std::optional<Message>, WireError> next();

    /// The message of which some frames have arrived, but not all; null for none. Valid until the
    /// next call of `append` or `next`.
    [[nodiscard]] const Message *incomplete() const { return m_open ? &*m_open : nullptr; }

private:
    [[nodiscard]] tl::expected<void, WireError> take(const Frame &frame);

    Side m_side;
    FrameCutter m_frames{kMaxFramePayload};
    std::optional<Message> m_open;
    std::optional<Message> m_log; // A log amid the frames of a value.
    std::optional<WireError> m_error;
};

/// Reads the parts of a message and checks each length. After the first error, every read returns
/// an empty value.
class PayloadReader final
{
public:
    /// \param shared the other side's long texts; null for none; must outlive this.
    explicit PayloadReader(QByteArrayView payload, const SharedTexts *shared = nullptr)
        : m_rest(payload)
        , m_shared(shared)
    {
    }

    /// Zero after an error.
    template <typename Number> Number get()
    {
        const auto number = takeNumber<Number>(m_rest);
        if (!number)
            fail(WireError::Truncated);
        return number.value_or(Number{});
    }

    /// The counterpart of `FrameWriter::putText`. Empty after an error.
    [[nodiscard]] QString getText();
    /// The same; nothing for what `FrameWriter::putNoText` wrote.
    [[nodiscard]] std::optional<QString> getOptionalText();

    /// The same as a `Text`; a lone surrogate is an error.
    [[nodiscard]] Text getLongText();

    /// True when the next part is one of the shared texts.
    [[nodiscard]] bool isNextTextShared() const;

    /// Numbers without a length before them. Empty after an error, also when there are too few.
    [[nodiscard]] std::vector<quint32> getNumbers(std::size_t count);

    void fail(WireError error);

    /// How many bytes are unread. 0 after an error.
    [[nodiscard]] qsizetype left() const { return m_rest.size(); }

    /// The first error, if there was one.
    [[nodiscard]] std::optional<WireError> error() const { return m_error; }

    /// The same, but unread bytes count as an error too.
    [[nodiscard]] std::optional<WireError> errorAtEnd() const;

private:
    [[nodiscard]] QString getTextOf(quint8 number);
    [[nodiscard]] QString getSharedText(qsizetype length, SharedTexts::Form form);

    QByteArrayView m_rest;
    const SharedTexts *m_shared;
    std::optional<WireError> m_error;
};

} // namespace penwick

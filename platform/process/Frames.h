#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <cstring>
#include <functional>
#include <optional>
#include <tl/expected.hpp>

namespace penwick {

// Frames on a byte stream between two processes of one machine. A frame is a header of
// `kFrameHeaderSize` bytes (kind, whether more frames of the message follow, two zeros, the
// payload's length as 32 bits) and the payload. Numbers are in the machine's byte order.

constexpr qsizetype kFrameHeaderSize = 8;

/// Receives encoded bytes. Returns false when they can no longer be sent.
using ByteSink = std::function<bool(QByteArrayView)>;

struct Frame
{
    quint8 kind = 0;
    bool more = false;      ///< More frames of the same message follow.
    QByteArrayView payload; ///< Valid until the next call of `FrameCutter::append`.
};

/// Completes the header of a frame that begins with `kFrameHeaderSize` zeros; the payload follows.
void setFrameHeader(QByteArray &frame, quint8 kind, bool more = false);

enum class FrameError {
    BadHeader, ///< A field of a header has an invalid value.
    TooLong,   ///< A header announces a longer payload than the receiver accepts.
};

/// Splits bytes that arrive in pieces of any size into frames. Its memory grows with the received
/// bytes only, never with an announced length.
class FrameCutter final
{
public:
    /// \param longest the longest payload that is accepted, in bytes.
    explicit FrameCutter(qsizetype longest)
        : m_longest(longest)
    {
    }

    void append(QByteArrayView bytes);

    /// Returns the next frame; no value while it is incomplete. After an error, every call fails.
    [[nodiscard]] tl::expected<std::optional<Frame>, FrameError> next();

private:
    qsizetype m_longest;
    QByteArray m_input;
    qsizetype m_taken = 0; // Bytes at the start of m_input that are already read.
};

/// \tparam Number a trivially copyable type.
template <typename Number> void appendNumber(QByteArray &bytes, Number number)
{
    bytes.append(reinterpret_cast<const char *>(&number), sizeof number);
}

/// Removes a number from the start of `bytes`. Returns nothing, and removes none, if they are too
/// few.
template <typename Number> std::optional<Number> takeNumber(QByteArrayView &bytes)
{
    Number number{};
    if (bytes.size() < qsizetype{sizeof number})
        return std::nullopt;
    std::memcpy(&number, bytes.data(), sizeof number);
    bytes = bytes.sliced(sizeof number);
    return number;
}

} // namespace penwick

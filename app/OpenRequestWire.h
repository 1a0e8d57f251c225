#pragma once

#include "app/OpenRequest.h"
#include "platform/process/Frames.h"
#include "text/Utf8.h"

#include <optional>
#include <tl/expected.hpp>

namespace penwick {

// The protocol by which one process of penwick asks another to open something. Both sides send
// messages of one frame each, with at most `kMaxPayload` bytes of payload. A request is a greeting
// with the version of the protocol, then the items piece by piece, then an end. A text is sent in
// pieces too, so that neither side ever holds all of its bytes. The greeting and the refusal are
// the same in all versions.

constexpr qsizetype kMaxPayload = qsizetype{1} << 16;
constexpr qsizetype kMaxItems = 100'000;
constexpr qint64 kMaxTextBytes = qint64{1} << 30; ///< For all texts of one request together.

/// Why a request is refused.
enum class Refusal : quint8 {
    OtherVersion = 1, ///< The other process uses another version of the protocol.
    Malformed = 2,
    TooLarge = 3,
    NotUtf8 = 4,
};

/// A reply of the running process.
struct Reply
{
    enum class Kind : quint8 {
        Taken = 64,   ///< The request will be opened. The last reply if that has to wait.
        Refused = 65, ///< The request will not be opened; the last reply.
        Closed = 66,  ///< All documents of the request are closed; the last reply.
        /// Follows `Taken` for a request that does not wait and is opened at once; the last reply.
        Opened = 67,
    };

    Kind kind = Kind::Taken;
    Refusal refusal = Refusal::Malformed; ///< For `Refused` only.
    bool openedAll = true;                ///< For `Closed` and `Opened` only.

    bool operator==(const Reply &) const = default;
};

/// Passes the request to `sink` in pieces of bounded size. False once `sink` returned false.
bool sendRequest(const OpenRequest &request, const ByteSink &sink);

[[nodiscard]] QByteArray encoded(const Reply &reply);

/// Assembles a request. Its memory grows with the received bytes only, never with an announced
/// length.
class RequestReader final
{
public:
    /// \return true once the request is complete. Do not use the reader after an error.
    [[nodiscard]] tl::expected<bool, Refusal> append(QByteArrayView bytes);

    /// Returns the complete request. Call it once.
    [[nodiscard]] OpenRequest take() { return std::move(m_request); }

private:
    using Step = tl::expected<void, Refusal>;

    [[nodiscard]] Step takeFrame(const Frame &frame);
    [[nodiscard]] Step takeGreeting(const Frame &frame);
    [[nodiscard]] Step takeFile(QByteArrayView payload);
    [[nodiscard]] Step beginText(QByteArrayView payload);
    [[nodiscard]] Step takeTextBytes(QByteArrayView payload);
    [[nodiscard]] Step endText();

    FrameCutter m_frames{kMaxPayload};
    OpenRequest m_request;
    std::optional<Utf8Reader> m_text; // Set while a text is being received.
    qint64 m_textBytes = 0;
    bool m_greeted = false;
    bool m_complete = false;
};

/// Reads the replies to a request.
class ReplyReader final
{
public:
    void append(QByteArrayView bytes) { m_frames.append(bytes); }

    /// Returns the next reply; no value while it is incomplete.
    [[nodiscard]] tl::expected<std::optional<Reply>, Refusal> next();

private:
    FrameCutter m_frames{kMaxPayload};
};

} // namespace penwick

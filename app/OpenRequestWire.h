#pragma once

#include "app/OpenRequest.h"
#include "text/Utf8.h"

#include <QByteArrayView>

#include <functional>
#include <optional>
#include <tl/expected.hpp>

namespace penwick {

// The form in which one process of penwick asks another to open something. Both sides send frames:
// a kind (1 byte), three zeros, the length of the payload (4 bytes, the lowest first) and at most
// `kMaxPayload` bytes. A request is a greeting with the version of this form, then what is to be
// opened piece by piece, then an end; a text comes in pieces as well, so that neither side ever
// holds its bytes as a whole. The greeting and the refusal stay as they are in all versions.

constexpr qsizetype kMaxPayload = qsizetype{1} << 16;
constexpr qsizetype kMaxItems = 100'000;
constexpr qint64 kMaxTextBytes = qint64{1} << 30; ///< Of all texts of one request.

/// Why a request is not taken.
enum class Refusal : quint8 {
    OtherVersion = 1, ///< The other process speaks another version of this form.
    Malformed = 2,
    TooLarge = 3,
    NotUtf8 = 4,
};

/// What the running process answers.
struct Reply
{
    enum class Kind : quint8 {
        Taken = 64,   ///< Will be opened, and the last answer unless the request waits.
        Refused = 65, ///< Will not; the last answer.
        Closed = 66,  ///< All documents of the request are closed; the last answer.
    };

    Kind kind = Kind::Taken;
    Refusal refusal = Refusal::Malformed; ///< Of `Refused` only.
    bool openedAll = true;                ///< Of `Closed` only.

    bool operator==(const Reply &) const = default;
};

/// Takes bytes on their way out; false when there is nobody to take them any more.
using ByteSink = std::function<bool(QByteArrayView)>;

/// Hands the request to `sink` in pieces of bounded size. False when it refused one.
bool sendRequest(const OpenRequest &request, const ByteSink &sink);

[[nodiscard]] QByteArray encoded(const Reply &reply);

/// Cuts bytes that arrive in any portions into frames.
class FrameCutter final
{
public:
    struct Frame
    {
        quint8 kind = 0;
        QByteArrayView payload; ///< Valid until the next call.
    };

    void append(QByteArrayView bytes);

    /// The next frame, nothing while it is incomplete. An error stays.
    [[nodiscard]] tl::expected<std::optional<Frame>, Refusal> next();

private:
    QByteArray m_input;
    qsizetype m_taken = 0;
};

/// Puts a request together. What it holds grows with the request only, never with what a frame
/// announces.
class RequestReader final
{
public:
    /// \return true once the request is complete. After an error the reader is of no use.
    [[nodiscard]] tl::expected<bool, Refusal> append(QByteArrayView bytes);

    /// The complete request; only once.
    [[nodiscard]] OpenRequest take() { return std::move(m_request); }

private:
    using Step = tl::expected<void, Refusal>;

    [[nodiscard]] Step takeFrame(const FrameCutter::Frame &frame);
    [[nodiscard]] Step takeGreeting(const FrameCutter::Frame &frame);
    [[nodiscard]] Step takeFile(QByteArrayView payload);
    [[nodiscard]] Step beginText(QByteArrayView payload);
    [[nodiscard]] Step takeTextBytes(QByteArrayView payload);
    [[nodiscard]] Step endText();

    FrameCutter m_frames;
    OpenRequest m_request;
    std::optional<Utf8Reader> m_text; // While one comes.
    qint64 m_textBytes = 0;
    bool m_greeted = false;
    bool m_complete = false;
};

/// Reads the answers to a request.
class ReplyReader final
{
public:
    void append(QByteArrayView bytes) { m_frames.append(bytes); }

    /// The next answer, nothing while it is incomplete.
    [[nodiscard]] tl::expected<std::optional<Reply>, Refusal> next();

private:
    FrameCutter m_frames;
};

} // namespace penwick

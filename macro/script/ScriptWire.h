#pragma once

#include "macro/script/ScriptFrames.h"
#include "macro/script/ScriptHost.h"
#include "macro/script/ScriptValueSink.h"

#include <memory>
#include <vector>

namespace penwick {

/// Which protections are in force in a script host.
struct HostProtection
{
    bool memoryLimit = false;      ///< It cannot exceed its memory limit.
    bool systemCallFilter = false; ///< It can make no system call that reaches out of the process.
    bool fileAccessRules = false;  ///< The kernel lets it open, create and remove no file.

    bool operator==(const HostProtection &) const = default;
};

// Each `send` returns false when the sink refused a frame. Each `decode` takes a message's payload,
// trusts none of it and returns an error when it is malformed. `shared` transfers long texts; null
// sends them in the message.

/// \param kind `Engine`, with at most 500 UTF-16 code units, or `Log`.
[[nodiscard]] bool sendText(MessageKind kind, QStringView text, const ByteSink &sink);
[[nodiscard]] tl::expected<QString, WireError> decodeText(QByteArrayView payload);

[[nodiscard]] bool sendReady(const HostProtection &protection, const ByteSink &sink);
[[nodiscard]] tl::expected<HostProtection, WireError> decodeReady(QByteArrayView payload);

[[nodiscard]] bool
sendRequest(const ScriptRequest &request, const ByteSink &sink, SharedTexts *shared = nullptr);
[[nodiscard]] tl::expected<ScriptRequest, WireError>
decodeRequest(QByteArrayView payload, const SharedTexts *shared = nullptr);

/// Sends a `Value` while it is being produced, or a `Failure`. The texts of a long list go out in
/// portions, so that the other side decodes one while the next is made.
class OutcomeSender final : public ScriptValueSink
{
public:
    /// \param sink, shared must outlive this.
    explicit OutcomeSender(const ByteSink &sink, SharedTexts *shared = nullptr);

    void null() override;
    void other() override;
    void boolean(bool value) override;
    void number(double value) override;
    void text(QStringView value) override;
    void texts(QStringView joined, std::span<const quint32> lengths) override;
    void beginList() override;
    void beginMap() override;
    void key(QStringView key) override;
    void end() override;

    /// Sends the rest of the value. Call this or `fail`, once.
    [[nodiscard]] bool finish();
    /// Sends the error in place of a value. The parts received so far are void.
    [[nodiscard]] bool fail(const ScriptError &error);

private:
    [[nodiscard]] FrameWriter &writer();
    [[nodiscard]] bool addToPending(QStringView joined, std::span<const quint32> lengths);
    void sendPending();
    void putLengths(std::span<const quint32> lengths);

    const ByteSink &m_sink;
    SharedTexts *m_shared;
    FrameWriter m_writer;
    std::vector<bool> m_isMap;      // One for each open list or map.
    std::vector<quint32> m_lengths; // Of texts that are not sent but already in `m_shared`.
    qsizetype m_joinedUnits = 0;    // Of the same texts, joined.
};

/// Decodes an outcome, if the caller wishes while its message still arrives.
class OutcomeDecoder final
{
public:
    /// \param limits for the whole tree, counted as the sender counts.
    /// \param shared must outlive this.
    explicit OutcomeDecoder(const ScriptLimits &limits = {}, const SharedTexts *shared = nullptr);
    OutcomeDecoder(OutcomeDecoder &&) noexcept;
    OutcomeDecoder &operator=(OutcomeDecoder &&) noexcept;
    OutcomeDecoder(const OutcomeDecoder &) = delete;
    OutcomeDecoder &operator=(const OutcomeDecoder &) = delete;
    ~OutcomeDecoder();

    /// Decodes what has arrived of a `Value` and was not decoded before. Does nothing with a
    /// message of another kind.
    void decodeAhead(const Message &incomplete);

    /// Decodes the rest.
    /// \param message of kind `Value`, the one that was decoded ahead, or `Failure`.
    [[nodiscard]] tl::expected<ScriptOutcome, WireError> decode(const Message &message);

private:
    class ValueDecoder;

    const SharedTexts *m_shared;
    std::unique_ptr<ValueDecoder> m_value;
};

/// Decodes a complete message; see `OutcomeDecoder`.
[[nodiscard]] tl::expected<ScriptOutcome, WireError> decodeOutcome(
    const Message &message, const ScriptLimits &limits = {}, const SharedTexts *shared = nullptr);

} // namespace penwick

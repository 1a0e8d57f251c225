#pragma once

#include "macro/script/ScriptFrames.h"
#include "macro/script/ScriptHost.h"
#include "macro/script/ScriptValueSink.h"

#include <vector>

namespace penwick {

/// Which walls stand around the script host.
struct HostProtection
{
    bool memoryLimit = false;      ///< It cannot take more memory than it may have.
    bool systemCallFilter = false; ///< It makes no system call that reaches out of the process.
    bool fileAccessRules = false;  ///< The kernel lets it open, make and remove no file.

    bool operator==(const HostProtection &) const = default;
};

// Each `send` gives false where the sink refused. Each `decode` takes a message's payload, believes
// none of it, and fails with what is wrong. `shared` takes and gives long texts, where it is not
// null.

/// \param name of the script engine and its version, at most some hundred units.
[[nodiscard]] bool sendEngine(QStringView name, const ByteSink &sink);
[[nodiscard]] tl::expected<QString, WireError> decodeEngine(QByteArrayView payload);

[[nodiscard]] bool sendReady(const HostProtection &protection, const ByteSink &sink);
[[nodiscard]] tl::expected<HostProtection, WireError> decodeReady(QByteArrayView payload);

[[nodiscard]] bool
sendRequest(const ScriptRequest &request, const ByteSink &sink, SharedTexts *shared = nullptr);
[[nodiscard]] tl::expected<ScriptRequest, WireError>
decodeRequest(QByteArrayView payload, const SharedTexts *shared = nullptr);

[[nodiscard]] bool sendLog(QStringView line, const ByteSink &sink);
[[nodiscard]] tl::expected<QString, WireError> decodeLog(QByteArrayView payload);

/// Sends a `Value` as it is made, or a `Failure`.
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
    void beginList() override;
    void beginMap() override;
    void key(QStringView key) override;
    void end() override;

    /// The value is complete. Call this or `fail`, once.
    [[nodiscard]] bool finish();
    /// There is no value; what was taken of one is void.
    [[nodiscard]] bool fail(const ScriptError &error);

private:
    const ByteSink &m_sink;
    SharedTexts *m_shared;
    FrameWriter m_writer;
    std::vector<bool> m_isMap; // Of what is begun and not ended.
};

/// Sends a `Value` or a `Failure`.
[[nodiscard]] bool
sendOutcome(const ScriptOutcome &outcome, const ByteSink &sink, SharedTexts *shared = nullptr);
/// \param message of kind `Value` or `Failure`.
/// \param limits for the whole tree, in the way that the sender counts.
[[nodiscard]] tl::expected<ScriptOutcome, WireError> decodeOutcome(
    const Message &message, const ScriptLimits &limits = {}, const SharedTexts *shared = nullptr);

} // namespace penwick

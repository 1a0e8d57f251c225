#pragma once

#include "macro/script/ScriptFrames.h"
#include "macro/script/ScriptHost.h"

namespace penwick {

/// Which walls stand around the script host.
struct HostProtection
{
    bool memoryLimit = false; ///< It cannot take more memory than it may have.
    bool systemCallFilter =
        false;                    ///< It dies of a system call that running a script does not need.
    bool fileAccessRules = false; ///< The kernel lets it open, make and remove no file.

    bool operator==(const HostProtection &) const = default;
};

// Each `send` gives false where the sink refused. Each `decode` takes a message's payload, believes
// none of it, and fails with what is wrong.

[[nodiscard]] bool sendReady(const HostProtection &protection, const ByteSink &sink);
[[nodiscard]] tl::expected<HostProtection, WireError> decodeReady(QByteArrayView payload);

[[nodiscard]] bool sendRequest(const ScriptRequest &request, const ByteSink &sink);
[[nodiscard]] tl::expected<ScriptRequest, WireError> decodeRequest(QByteArrayView payload);

[[nodiscard]] bool sendLog(QStringView line, const ByteSink &sink);
[[nodiscard]] tl::expected<QString, WireError> decodeLog(QByteArrayView payload);

/// Sends a `Value` or a `Failure`.
[[nodiscard]] bool sendOutcome(const ScriptOutcome &outcome, const ByteSink &sink);
/// \param message of kind `Value` or `Failure`.
/// \param limits for the whole tree, in the way that the sender counts.
[[nodiscard]] tl::expected<ScriptOutcome, WireError> decodeOutcome(const Message &message,
                                                                   const ScriptLimits &limits = {});

} // namespace penwick

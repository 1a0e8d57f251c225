#pragma once

#include "app/OpenRequest.h"
#include "app/OpenRequestWire.h"
#include "platform/process/LocalSocket.h"

#include <chrono>
#include <tl/expected.hpp>

namespace penwick {

/// Why a request that was handed to the running process failed.
struct HandOverError
{
    enum class Kind {
        NoAnswer,     ///< The process does not respond.
        NotTaken,     ///< It ended before it took the request; another process can take it.
        Refused,      ///< See `refusal`.
        Abandoned,    ///< It ended before all documents of a waiting request were closed.
        NotAllOpened, ///< A document of the request could not be opened.
    };

    Kind kind = Kind::NoAnswer;
    Refusal refusal = Refusal::Malformed;

    bool operator==(const HandOverError &) const = default;
};

/// Hands the request over. Returns when the running process has opened it, or, for a request that
/// waits, when all of its documents are closed. A request that is taken but not opened within the
/// timeout, because of an open dialog for example, counts as opened.
/// \param timeout how long to wait for each sign of progress until the request is opened.
[[nodiscard]] tl::expected<void, HandOverError>
handOver(const OpenRequest &request, const LocalSocket &stream, std::chrono::milliseconds timeout);

} // namespace penwick

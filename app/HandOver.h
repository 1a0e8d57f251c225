#pragma once

#include "app/OpenRequest.h"
#include "app/OpenRequestWire.h"
#include "platform/LocalSocket.h"

#include <chrono>
#include <tl/expected.hpp>

namespace penwick {

/// How a request that was handed to the running process ended.
struct HandOverError
{
    enum class Kind {
        NoAnswer,     ///< The process hangs.
        NotTaken,     ///< It ended before it took the request: somebody else may.
        Refused,      ///< See `refusal`.
        Abandoned,    ///< It ended while the documents of a waiting request were open.
        NotAllOpened, ///< Some document of a waiting request could not be opened.
    };

    Kind kind = Kind::NoAnswer;
    Refusal refusal = Refusal::Malformed;

    bool operator==(const HandOverError &) const = default;
};

/// Hands the request over and returns once it was taken, or, if it waits, once all of it is closed.
/// \param patience how long the running process may take to make any progress until it has taken
///        the request.
[[nodiscard]] tl::expected<void, HandOverError>
handOver(const OpenRequest &request, const LocalSocket &stream, std::chrono::milliseconds patience);

} // namespace penwick

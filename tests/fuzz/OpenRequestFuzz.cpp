#include "app/OpenRequestWire.h"
#include "fuzz/Require.h"

#include <algorithm>
#include <cstdint>
#include <optional>

using namespace penwick;

namespace {

struct Outcome
{
    std::optional<Refusal> refusal;
    std::optional<OpenRequest> request; // Set once the request is complete.
};

Outcome read(QByteArrayView bytes, qsizetype portion)
{
    RequestReader reader;
    bool isComplete = false;
    while (!bytes.isEmpty()) {
        const qsizetype size = std::min(portion, bytes.size());
        const auto complete = reader.append(bytes.first(size));
        if (!complete)
            return {complete.error(), std::nullopt};
        isComplete = *complete;
        bytes = bytes.sliced(size);
    }
    return {std::nullopt, isComplete ? std::optional(reader.take()) : std::nullopt};
}

void checkRoundTrip(const OpenRequest &request)
{
    QByteArray bytes;
    REQUIRE(sendRequest(request, [&bytes](QByteArrayView more) {
        bytes.append(more.data(), more.size());
        return true;
    }));
    const Outcome again = read(bytes, bytes.size());
    REQUIRE(again.request && *again.request == request);
}

void checkReplies(QByteArrayView bytes)
{
    ReplyReader reader;
    reader.append(bytes);
    while (true) {
        const auto reply = reader.next();
        if (!reply || !*reply)
            return;
        ReplyReader other;
        other.append(encoded(**reply));
        const auto again = other.next();
        REQUIRE(again && *again && **again == **reply);
    }
}

} // namespace

/// The first byte sets the size in bytes of the portions in which the rest arrives.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArrayView bytes(data + 1, static_cast<qsizetype>(size - 1));
    const Outcome whole = read(bytes, std::max<qsizetype>(1, bytes.size()));
    const Outcome inPortions = read(bytes, 1 + data[0]);
    REQUIRE(whole.refusal == inPortions.refusal);
    REQUIRE(whole.request == inPortions.request);
    if (whole.request)
        checkRoundTrip(*whole.request);
    checkReplies(bytes);
    return 0;
}

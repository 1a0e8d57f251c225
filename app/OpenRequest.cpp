#include "app/OpenRequest.h"

#include "command/LinePlace.h"

#include <algorithm>

namespace penwick {

qint64 offsetOf(const TextPlace &place, const Text &text)
{
    const qint64 line = std::clamp<qint64>(place.line, 1, lineCountOf(text));
    return findPlace({line, std::max<qint64>(1, place.column)}, text).offset;
}

} // namespace penwick

#include "platform/settings/Timestamp.h"

namespace penwick {

Clock systemClock()
{
    return [] { return QDateTime::currentDateTimeUtc(); };
}

QString nowTimestamp(const Clock &clock)
{
    return clock().toUTC().toString(Qt::ISODate);
}

} // namespace penwick

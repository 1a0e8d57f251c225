#include "wording/WordingLookup.h"

#include "wording/WordingTables.h"

#include <utility>

namespace penwick::wording {

namespace {

std::optional<QHash<QString, QString>> &activeValues()
{
    static std::optional<QHash<QString, QString>> values;
    return values;
}

} // namespace

QString text(const QString &forKey)
{
    return text(forKey, forKey);
}

QString text(const QString &forKey, const QString &defaultText)
{
    if (const auto &active = activeValues()) {
        if (const auto found = active->constFind(forKey); found != active->cend())
            return *found;
    }
    return fallbackTable().value(forKey, defaultText);
}

void setActiveValues(std::optional<QHash<QString, QString>> values)
{
    activeValues() = std::move(values);
}

} // namespace penwick::wording

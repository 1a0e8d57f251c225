#include "wording/WordingLookup.h"

#include "wording/OwnTexts.h"
#include "wording/WordingTables.h"

#include <utility>

namespace penwick::wording {

namespace {

std::optional<QHash<QString, QString>> &activeValues()
{
    static std::optional<QHash<QString, QString>> values;
    return values;
}

std::optional<QString> find(const QHash<QString, QString> &texts, const QString &key)
{
    const auto found = texts.constFind(key);
    return found == texts.cend() ? std::nullopt : std::optional(*found);
}

std::optional<QString> activeOrBuiltInText(const QString &key)
{
    if (const auto &active = activeValues()) {
        if (auto found = find(*active, key))
            return found;
    }
    return find(fallbackTable(), key);
}

} // namespace

QString text(const QString &forKey)
{
    if (const auto found = activeOrBuiltInText(forKey))
        return *found;
    return ownTexts().value(forKey, forKey);
}

QString text(const QString &forKey, const QString &defaultText)
{
    return activeOrBuiltInText(forKey).value_or(defaultText);
}

void setActiveValues(std::optional<QHash<QString, QString>> values)
{
    activeValues() = std::move(values);
}

} // namespace penwick::wording

#include "platform/settings/NotificationCenter.h"

#include <utility>

namespace penwick {

NotificationCenter &NotificationCenter::defaultCenter()
{
    static auto *const center = new NotificationCenter;
    return *center;
}

void NotificationCenter::addObserver(const QString &name,
                                     QObject *context,
                                     std::function<void()> handler)
{
    auto &observers = m_observers[name];
    // Removes destroyed observers here, so that the list never grows beyond the observers that
    // existed at one time.
    observers.removeIf([](const auto &observer) { return observer->context.isNull(); });
    observers.append(std::make_shared<Observer>(Observer{context, std::move(handler)}));
}

void NotificationCenter::post(const QString &name)
{
    const auto observers = m_observers.value(name);
    for (const auto &observer : observers)
        if (!observer->context.isNull())
            observer->handler();
}

} // namespace penwick

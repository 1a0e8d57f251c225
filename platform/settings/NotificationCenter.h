#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>

namespace penwick {

/// Publish and subscribe by name within the process, on the main thread.
class NotificationCenter final
{
public:
    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter &) = delete;
    NotificationCenter &operator=(const NotificationCenter &) = delete;

    /// The application's center. Created on first use, lives until the process ends.
    [[nodiscard]] static NotificationCenter &defaultCenter();

    /// Calls `handler` on every later `post` of `name`, for as long as `context` lives.
    /// \param context not owned, not null.
    void addObserver(const QString &name, QObject *context, std::function<void()> handler);

    /// Calls the observers of `name`, oldest subscription first, and returns when all are done. An
    /// observer that subscribes during the call is first called for the next post; one that is
    /// destroyed during the call is skipped.
    void post(const QString &name);

private:
    struct Observer
    {
        QPointer<QObject> context;
        std::function<void()> handler;
    };

    QHash<QString, QList<std::shared_ptr<Observer>>> m_observers;
};

} // namespace penwick

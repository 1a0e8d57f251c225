#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>

namespace penwick {

/// Publish and subscribe by name, inside the process, on the main thread.
class NotificationCenter final
{
public:
    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter &) = delete;
    NotificationCenter &operator=(const NotificationCenter &) = delete;

    /// The one that the application uses. Created on first use, lives until the process ends.
    [[nodiscard]] static NotificationCenter &defaultCenter();

    /// Calls `handler` on every later `post` of `name`, for as long as `context` lives.
    /// \param context not owned, not null.
    void addObserver(const QString &name, QObject *context, std::function<void()> handler);

    /// Ends every subscription of `context` at once.
    void removeObserver(const QObject *context);

    /// Calls the observers of `name` before it returns, oldest subscription first. An observer that
    /// subscribes meanwhile hears the next post; one that is removed or dies meanwhile is left out.
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

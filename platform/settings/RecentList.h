#pragma once

#include "platform/settings/UserDefaults.h"

#include <QBasicTimer>
#include <QObject>
#include <QStringList>

namespace penwick {

/// A stored list of what was used last, each item once, the last one first. Several processes
/// can add to the same list at the same time.
class RecentList final : public QObject
{
    Q_OBJECT

public:
    /// \param defaults not owned; must outlive this.
    /// \param key of the list of strings in `defaults`.
    /// \param limit of the number of items.
    RecentList(UserDefaults &defaults, QString key, qsizetype limit, QObject *parent = nullptr);
    /// Stores what was added last.
    ~RecentList() override;

    [[nodiscard]] QStringList items() const;

    /// Puts an item first. The file is written soon after, because a write can take long.
    void add(const QString &item);

    /// Removes all items, also those that other processes have stored. The file is written at once.
    void clear();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void store();
    [[nodiscard]] QStringList withAdded(const QStringList &stored) const;

    UserDefaults &m_defaults;
    const QString m_key;
    const qsizetype m_limit;
    QStringList m_added; // Not stored yet; the last one first.
    QBasicTimer m_timer;
};

} // namespace penwick

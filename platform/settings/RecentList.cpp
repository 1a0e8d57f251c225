#include "platform/settings/RecentList.h"

#include <QTimerEvent>

#include <algorithm>
#include <utility>

namespace penwick {

namespace {

constexpr int kDelay = 1000; // Milliseconds until what was added is stored.

} // namespace

RecentList::RecentList(UserDefaults &defaults, QString key, qsizetype limit, QObject *parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_key(std::move(key))
    , m_limit(limit)
{
}

RecentList::~RecentList()
{
    store();
}

QStringList RecentList::items() const
{
    return withAdded(m_defaults.strings(m_key));
}

void RecentList::add(const QString &item)
{
    m_added.removeAll(item);
    m_added.prepend(item);
    m_timer.start(kDelay, this);
}

void RecentList::clear()
{
    m_added.clear();
    m_timer.stop();
    m_defaults.remove(m_key);
}

void RecentList::timerEvent(QTimerEvent * /*event*/)
{
    store();
}

void RecentList::store()
{
    m_timer.stop();
    const auto change = [this](const QStringList &stored) { return withAdded(stored); };
    if (!m_added.isEmpty() && m_defaults.changeStrings(m_key, change))
        m_added.clear();
}

QStringList RecentList::withAdded(const QStringList &stored) const
{
    QStringList items = m_added + stored;
    items.removeDuplicates();
    items.resize(std::min(items.size(), m_limit));
    return items;
}

} // namespace penwick

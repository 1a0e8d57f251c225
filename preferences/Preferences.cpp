#include "preferences/Preferences.h"

#include "platform/settings/NotificationCenter.h"

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

const QString kTrue = u"true"_s;
const QString kFalse = u"false"_s;

QString keyOf(PreferenceId id)
{
    return preference(id).key.toString();
}

QString notificationOf(PreferenceId id)
{
    return u"PreferenceDidChange."_s + keyOf(id);
}

} // namespace

Preferences::Preferences(UserDefaults &defaults)
    : m_defaults(defaults)
{
    for (const Preference &row : allPreferences())
        m_known.insert(row.id, current(row.id));
}

Preferences &Preferences::standard()
{
    // Never destroyed, as those.
    static auto *const preferences = new Preferences(UserDefaults::standard());
    return *preferences;
}

QString Preferences::text(PreferenceId id) const
{
    const Preference &row = preference(id);
    auto stored = m_defaults.string(row.key.toString());
    return stored && row.isValid(*stored) ? *std::move(stored) : row.standard.toString();
}

bool Preferences::isOn(PreferenceId id) const
{
    return text(id) == kTrue;
}

int Preferences::number(PreferenceId id) const
{
    return text(id).toInt();
}

bool Preferences::isChanged(PreferenceId id) const
{
    return text(id) != preference(id).standard;
}

bool Preferences::isBroken(PreferenceId id) const
{
    const auto stored = m_defaults.string(keyOf(id));
    return stored && !preference(id).isValid(*stored);
}

void Preferences::setText(PreferenceId id, const QString &value)
{
    if (!preference(id).isValid(value))
        return;
    m_defaults.setString(keyOf(id), value);
    notify(id);
}

void Preferences::setOn(PreferenceId id, bool isOn)
{
    setText(id, isOn ? kTrue : kFalse);
}

void Preferences::setNumber(PreferenceId id, int number)
{
    setText(id, QString::number(number));
}

void Preferences::reset(PreferenceId id)
{
    m_defaults.remove(keyOf(id));
    notify(id);
}

void Preferences::reload()
{
    m_defaults.reload();
    for (const Preference &row : allPreferences())
        notify(row.id);
}

void Preferences::notify(PreferenceId id)
{
    const Known now = current(id);
    if (std::exchange(m_known[id], now) != now)
        NotificationCenter::defaultCenter().post(notificationOf(id));
}

void Preferences::observe(PreferenceId id, QObject *context, std::function<void()> handler)
{
    NotificationCenter::defaultCenter().addObserver(
        notificationOf(id), context, std::move(handler));
}

} // namespace penwick

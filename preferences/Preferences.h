#pragma once

#include "platform/settings/UserDefaults.h"
#include "preferences/Preference.h"

#include <QHash>

#include <functional>

class QObject;

namespace penwick {

/// Reads and changes the settings of `allPreferences`. A stored value that is not valid counts as
/// not stored, and stays in the file until another one is set. Use it from the main thread.
class Preferences final
{
public:
    /// \param defaults stores them; not owned, must outlive this. No other object may set them
    ///        there: it would call no observer.
    explicit Preferences(UserDefaults &defaults);

    /// The application's settings, in `UserDefaults::standard()`.
    [[nodiscard]] static Preferences &standard();

    /// The value, as it is stored.
    [[nodiscard]] QString text(PreferenceId id) const;
    /// \param id of a switch.
    [[nodiscard]] bool isOn(PreferenceId id) const;
    /// \param id of a number.
    [[nodiscard]] int number(PreferenceId id) const;
    /// True when the value is not the one that holds without a setting.
    [[nodiscard]] bool isChanged(PreferenceId id) const;
    /// True when the file has a value that is not valid.
    [[nodiscard]] bool isBroken(PreferenceId id) const;

    /// Stores a value, then calls the observers if it is a new one. A value that is not valid is
    /// ignored.
    void setText(PreferenceId id, const QString &value);
    void setOn(PreferenceId id, bool isOn);
    void setNumber(PreferenceId id, int number);
    /// Removes the setting from the file.
    void reset(PreferenceId id);
    /// Reads the file again, then calls the observers of each setting that another program changed.
    void reload();

    /// Calls `handler` after each change of the setting, also from a broken value to the default,
    /// for as long as `context` lives.
    /// \param context not owned, not null.
    static void observe(PreferenceId id, QObject *context, std::function<void()> handler);

private:
    /// What observers know.
    struct Known
    {
        QString text;
        bool isBroken = false;

        bool operator==(const Known &) const = default;
    };

    void notify(PreferenceId id);

    [[nodiscard]] Known current(PreferenceId id) const { return {text(id), isBroken(id)}; }

    UserDefaults &m_defaults;
    QHash<PreferenceId, Known> m_known;
};

} // namespace penwick

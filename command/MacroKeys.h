#pragma once

#include "platform/settings/UserDefaults.h"

#include <QKeySequence>
#include <QObject>

namespace penwick {

/// The keys that the user has given to macros. They are settings, one for each macro, named
/// `macroKeys/` and the macro's id (percent-encoded); the value is like `Ctrl+Alt+1`.
class MacroKeys final : public QObject
{
    Q_OBJECT

public:
    /// \param defaults not owned; must outlive this.
    explicit MacroKeys(UserDefaults &defaults)
        : m_defaults(defaults)
    {
    }

    /// Those of `UserDefaults::standard()`. Created on first use, lives until the process ends.
    [[nodiscard]] static MacroKeys &shared();

    /// Returns the macro's key; empty when it has none. A stored value that is no key, or a key
    /// with a `keyObstacle`, counts as none.
    [[nodiscard]] QKeySequence keyOf(const QString &macroId) const;

    /// \param key one key, or empty for none.
    void setKey(const QString &macroId, const QKeySequence &key);

Q_SIGNALS:
    void changed();

private:
    UserDefaults &m_defaults;
};

} // namespace penwick

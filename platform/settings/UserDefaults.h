#pragma once

#include "platform/files/StoreLock.h"

#include <QByteArray>
#include <QHash>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <optional>

namespace penwick {

/// A key/value store in one INI file. Every change is written to the file before the call returns.
/// Use it from the main thread. Keys are case-sensitive.
class UserDefaults final
{
public:
    /// \param filePath absolute; the file and its folder need not exist yet.
    explicit UserDefaults(const QString &filePath);

    /// The user's choices, in `ApplicationSupport::configurationFilePath()`. Created on first use,
    /// lives until the process ends.
    [[nodiscard]] static UserDefaults &standard();

    /// What penwick remembers by itself, in `ApplicationSupport::usageFilePath()`: window frames,
    /// recent files and commands. They are apart from the choices because users edit those as a
    /// text, which must not change meanwhile. Created on first use, lives until the process ends.
    [[nodiscard]] static UserDefaults &usage();

    /// Returns std::nullopt when the key is not stored. A boolean is "true" or "false".
    [[nodiscard]] std::optional<QString> string(const QString &key) const;
    /// Empty when the key is not stored.
    [[nodiscard]] QByteArray bytes(const QString &key) const;
    /// Empty when the key is not stored.
    [[nodiscard]] QStringList strings(const QString &key) const;

    /// Each of these returns false when the file could not be written; the new value is then kept
    /// in memory until the process ends. Setting the stored value again leaves the file untouched.
    bool setString(const QString &key, const QString &value);
    bool setBoolean(const QString &key, bool value);
    bool setBytes(const QString &key, const QByteArray &value);
    bool remove(const QString &key);

    /// Reads what other programs have changed in the file.
    void reload() { sync(); }

    /// Replaces a stored list by what `change` makes of it. Other processes cannot change it
    /// meanwhile. An empty list removes the key.
    /// \return false when the file could not be written. If another process holds the lock,
    ///         `change` was not called and nothing is kept.
    bool changeStrings(const QString &key,
                       const std::function<QStringList(const QStringList &)> &change);

private:
    [[nodiscard]] QVariant value(const QString &key) const;
    [[nodiscard]] tl::expected<StoreLock::Holder, FileError> lock();
    bool write(const QString &key, const QVariant &value);
    bool sync();

    QSettings m_settings;
    StoreLock m_lock;
    QHash<QString, QVariant> m_unsaved; // Values that could not be stored.
};

} // namespace penwick

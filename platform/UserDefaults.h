#pragma once

#include "platform/StoreLock.h"

#include <QByteArray>
#include <QHash>
#include <QSettings>
#include <QString>
#include <QVariant>

#include <optional>

namespace penwick {

/// The user's small settings: a key/value store in one INI file. Every change is written to the
/// file before the call returns. Use it from the main thread. Keys are case-sensitive.
class UserDefaults final
{
public:
    /// \param filePath absolute; the file and its folder need not exist yet.
    explicit UserDefaults(const QString &filePath);

    /// The store that the application uses, in `ApplicationSupport::configurationFilePath()`.
    /// Created on first use, lives until the process ends.
    [[nodiscard]] static UserDefaults &standard();

    [[nodiscard]] bool contains(const QString &key) const;

    /// Nothing when the key is not stored.
    [[nodiscard]] std::optional<QString> string(const QString &key) const;
    /// False when the key is not stored or holds no truth value.
    [[nodiscard]] bool boolean(const QString &key) const;
    /// Empty when the key is not stored.
    [[nodiscard]] QByteArray bytes(const QString &key) const;

    /// Each of these returns false when the file could not be written: the new value then holds
    /// until the process ends. A value that is there already leaves the file untouched.
    bool setString(const QString &key, const QString &value);
    bool setBoolean(const QString &key, bool value);
    bool setBytes(const QString &key, const QByteArray &value);
    bool remove(const QString &key);

private:
    [[nodiscard]] QVariant value(const QString &key) const;
    [[nodiscard]] tl::expected<StoreLock::Holder, FileError> lock();
    bool write(const QString &key, const QVariant &value);
    bool sync();

    QSettings m_settings;
    StoreLock m_lock;
    QHash<QString, QVariant> m_kept; // What could not be stored; an invalid value for none.
};

} // namespace penwick

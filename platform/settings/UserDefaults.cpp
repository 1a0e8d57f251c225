#include "platform/settings/UserDefaults.h"

#include "platform/files/ApplicationSupport.h"
#include "platform/files/FileSystem.h"

#include <QFileInfo>

namespace penwick {

UserDefaults::UserDefaults(const QString &filePath)
    : m_settings(filePath, QSettings::IniFormat)
    , m_lock(QFileInfo(filePath).path())
{
}

UserDefaults &UserDefaults::standard()
{
    static auto *const defaults = new UserDefaults(ApplicationSupport::configurationFilePath());
    return *defaults; // Never destroyed: what is destroyed during exit may still use it.
}

UserDefaults &UserDefaults::usage()
{
    // Never destroyed: windows that close during exit still store their frames.
    static auto *const defaults = new UserDefaults(ApplicationSupport::usageFilePath());
    return *defaults;
}

std::optional<QString> UserDefaults::string(const QString &key) const
{
    const QVariant found = value(key);
    return found.isValid() ? std::optional(found.toString()) : std::nullopt;
}

QByteArray UserDefaults::bytes(const QString &key) const
{
    return value(key).toByteArray();
}

QStringList UserDefaults::strings(const QString &key) const
{
    return value(key).toStringList();
}

QVariant UserDefaults::value(const QString &key) const
{
    const auto kept = m_unsaved.constFind(key);
    return kept != m_unsaved.cend() ? *kept : m_settings.value(key);
}

bool UserDefaults::setString(const QString &key, const QString &value)
{
    return write(key, value);
}

bool UserDefaults::setBoolean(const QString &key, bool value)
{
    return write(key, value);
}

bool UserDefaults::setBytes(const QString &key, const QByteArray &value)
{
    return write(key, value);
}

bool UserDefaults::remove(const QString &key)
{
    return write(key, {});
}

bool UserDefaults::changeStrings(const QString &key,
                                 const std::function<QStringList(const QStringList &)> &change)
{
    const auto held = lock();
    if (!held && held.error().kind == FileError::Kind::Locked)
        return false;
    sync(); // Another process may have changed the list.
    const QStringList before = strings(key);
    const QStringList after = change(before);
    return after == before || write(key, after.isEmpty() ? QVariant() : QVariant(after));
}

/// Takes the lock of the settings' folder, which is created if it is missing. QSettings has its own
/// lock, but would wait half a minute for a process that hangs.
tl::expected<StoreLock::Holder, FileError> UserDefaults::lock()
{
    auto lock = m_lock.take();
    if (!lock && lock.error().kind == FileError::Kind::NotFound &&
        createFolder(QFileInfo(m_settings.fileName()).path()))
        return m_lock.take();
    return lock;
}

/// \param value invalid to remove the key.
bool UserDefaults::write(const QString &key, const QVariant &value)
{
    const auto held = lock();
    if (!held && held.error().kind == FileError::Kind::Locked) {
        m_unsaved.insert(key, value);
        return false;
    }
    m_unsaved.remove(key);
    // Another process may have stored another value in the meantime.
    const bool isInStep = sync();
    if (isInStep && m_settings.value(key) == value)
        return true;
    if (value.isValid())
        m_settings.setValue(key, value);
    else
        m_settings.remove(key);
    return sync();
}

bool UserDefaults::sync()
{
    m_settings.sync();
    return m_settings.status() == QSettings::NoError;
}

} // namespace penwick

#include "platform/UserDefaults.h"

#include "platform/ApplicationSupport.h"

namespace penwick {

UserDefaults::UserDefaults(const QString &filePath)
    : m_settings(filePath, QSettings::IniFormat)
{
}

UserDefaults &UserDefaults::standard()
{
    // Never destroyed: windows that close during exit still store their frames.
    static auto *const defaults = new UserDefaults(ApplicationSupport::configurationFilePath());
    return *defaults;
}

bool UserDefaults::contains(const QString &key) const
{
    return m_settings.contains(key);
}

std::optional<QString> UserDefaults::string(const QString &key) const
{
    if (!m_settings.contains(key))
        return std::nullopt;
    return m_settings.value(key).toString();
}

bool UserDefaults::boolean(const QString &key) const
{
    return m_settings.value(key).toBool();
}

QByteArray UserDefaults::bytes(const QString &key) const
{
    return m_settings.value(key).toByteArray();
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
    m_settings.remove(key);
    return sync();
}

bool UserDefaults::write(const QString &key, const QVariant &value)
{
    // The file may have another value by now, from another process.
    const bool isInStep = sync();
    if (isInStep && m_settings.contains(key) && m_settings.value(key) == value)
        return true;
    m_settings.setValue(key, value);
    return sync();
}

bool UserDefaults::sync()
{
    m_settings.sync();
    return m_settings.status() == QSettings::NoError;
}

} // namespace penwick

#include "command/MacroKeys.h"

#include "command/KeyObstacle.h"

#include <QUrl>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

QString settingOf(const QString &macroId)
{
    return u"macroKeys/"_s + QString::fromLatin1(QUrl::toPercentEncoding(macroId));
}

} // namespace

MacroKeys &MacroKeys::shared()
{
    static auto *const keys = new MacroKeys(UserDefaults::standard()); // Never destroyed, as those.
    return *keys;
}

QKeySequence MacroKeys::keyOf(const QString &macroId) const
{
    const auto stored = m_defaults.string(settingOf(macroId));
    const auto key = QKeySequence::fromString(stored.value_or(QString()));
    return key.count() == 1 && keyObstacle(key[0]).isEmpty() ? key : QKeySequence();
}

void MacroKeys::setKey(const QString &macroId, const QKeySequence &key)
{
    if (key.isEmpty())
        m_defaults.remove(settingOf(macroId));
    else
        m_defaults.setString(settingOf(macroId), key.toString());
    Q_EMIT changed();
}

} // namespace penwick

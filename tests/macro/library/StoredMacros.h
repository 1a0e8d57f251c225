#pragma once

#include "macro/library/MacroJson.h"
#include "macro/library/MacroManager.h"
#include "support/FakeClock.h"
#include "support/FakeIds.h"
#include "support/TemporaryHome.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace penwick::test {

/// The manager's dependencies, over a folder that may hold a file.
struct StoredMacros
{
    TemporaryHome home;
    UserDefaults defaults{home.file(QStringLiteral("config.conf"))};
    FakeClock time;
    FakeIds ids;

    [[nodiscard]] QString folder() const { return home.file(QStringLiteral("data/penwick")); }

    void writeFile(const QByteArray &content) const
    {
        home.write(QStringLiteral("data/penwick/macros.json"), content);
    }

    void writeFile(const QList<Macro> &macros) const { writeFile(MacroJson::write(macros)); }

    [[nodiscard]] QByteArray file() const
    {
        return home.read(QStringLiteral("data/penwick/macros.json"));
    }

    /// Creates a manager as the start of the program does.
    std::unique_ptr<MacroManager> start()
    {
        return std::make_unique<MacroManager>(folder(), defaults, time.clock(), ids.source());
    }
};

inline QStringList idsOf(const MacroManager &manager)
{
    QStringList ids;
    for (const Macro &macro : manager.macros())
        ids.append(macro.id);
    return ids;
}

inline QStringList namesOf(const MacroManager &manager)
{
    QStringList names;
    for (const Macro &macro : manager.macros())
        names.append(macro.name);
    return names;
}

inline QList<qint64> sortOrdersOf(const MacroManager &manager)
{
    QList<qint64> orders;
    for (const Macro &macro : manager.macros())
        orders.append(macro.sortOrder);
    return orders;
}

} // namespace penwick::test

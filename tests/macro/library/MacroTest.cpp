#include "macro/library/Macro.h"

#include <QTest>

#include <functional>

using namespace penwick;
using namespace Qt::StringLiterals;

class MacroTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void equality_anyFieldDiffers_isUnequal()
    {
        const QList<std::function<void(Macro &)>> changes{
            [](Macro &macro) { macro.id = u"x"_s; },
            [](Macro &macro) { macro.name = u"x"_s; },
            [](Macro &macro) { macro.description = u"x"_s; },
            [](Macro &macro) { macro.code = u"x"_s; },
            [](Macro &macro) { macro.isEnabled = !macro.isEnabled; },
            [](Macro &macro) { macro.source = u"x"_s; },
            [](Macro &macro) { macro.version = u"x"_s; },
            [](Macro &macro) { macro.createdAt = u"x"_s; },
            [](Macro &macro) { macro.updatedAt = u"x"_s; },
            [](Macro &macro) { macro.sortOrder = 1; },
            [](Macro &macro) { macro.category = u"x"_s; },
            [](Macro &macro) { macro.helpURL = u"x"_s; },
        };
        QCOMPARE(changes.size(), 12);
        QVERIFY(Macro() == Macro());
        for (const auto &change : changes) {
            Macro macro;
            change(macro);
            QVERIFY(macro != Macro());
        }
    }
};

QTEST_APPLESS_MAIN(MacroTest)
#include "MacroTest.moc"

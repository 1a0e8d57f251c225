#include "platform/settings/RecentList.h"

#include "support/TemporaryHome.h"
#include "support/Waits.h"

#include <QTest>

#include <optional>
#include <sys/wait.h>
#include <unistd.h>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

class RecentListTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init() { m_home.emplace(); }

    void cleanup() { m_home.reset(); }

    void items_added_areListedOnceTheLastOneFirst()
    {
        UserDefaults defaults(file());
        RecentList list(defaults, u"group/key"_s, 3);
        QCOMPARE(list.items(), QStringList());
        for (const QString &item : {u"a"_s, u"b"_s, u"a"_s, u"c"_s, u"d"_s})
            list.add(item);
        QCOMPARE(list.items(), (QStringList{u"d"_s, u"c"_s, u"a"_s}));
    }

    void items_added_areStoredSoonAndAtTheEnd()
    {
        UserDefaults defaults(file());
        const QString odd = u"a, \"b\"; 日本\n@x=%"_s;
        {
            RecentList list(defaults, u"group/key"_s, 3);
            list.add(odd);
            QTRY_COMPARE_WITH_TIMEOUT(storedItems(), QStringList(odd), kLongWait);
            list.add(u"@last"_s);
        }
        QCOMPARE(storedItems(), (QStringList{u"@last"_s, odd}));
        QVERIFY(m_home->read(u"d.conf"_s).contains("[group]\nkey="));
    }

    void items_ofTwoProcesses_areAllKept()
    {
        constexpr int kEach = 20;
        const auto addAll = [this](const QString &name) {
            UserDefaults defaults(file());
            for (int i = 0; i < kEach; ++i)
                RecentList(defaults, u"key"_s, 50)
                    .add(name + QString::number(i)); // Stored at once.
        };
        const pid_t child = ::fork();
        if (child == 0) {
            addAll(u"child"_s);
            ::_exit(0);
        }
        addAll(u"parent"_s);
        int status = -1;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QCOMPARE(status, 0);
        const QStringList items = storedItems();
        QCOMPARE(items.size(), 2 * kEach);
        QVERIFY(items.indexOf(u"child19"_s) < items.indexOf(u"child18"_s));
        QVERIFY(items.indexOf(u"parent19"_s) < items.indexOf(u"parent0"_s));
    }

    void clear_removesAlsoWhatIsNotStoredYet()
    {
        UserDefaults defaults(file());
        {
            RecentList list(defaults, u"key"_s, 50);
            list.add(u"a"_s);
        }
        {
            RecentList list(defaults, u"key"_s, 50);
            list.add(u"b"_s);
            QCOMPARE(list.items().size(), 2);
            list.clear();
            QCOMPARE(list.items(), QStringList());
        }
        QCOMPARE(storedItems(), QStringList());
        QVERIFY(!m_home->read(u"d.conf"_s).contains("key"));
    }

    void store_whileAnotherProcessHasTheLock_isTriedAgain()
    {
        UserDefaults defaults(file());
        {
            RecentList list(defaults, u"key"_s, 50);
            list.add(u"a"_s);
            {
                StoreLock other(m_home->path());
                const auto held = other.take();
                QVERIFY(held.has_value());
                QVERIFY(!defaults.changeStrings(
                    u"key"_s, [](const QStringList &) { return QStringList(u"lost"_s); }));
                QCOMPARE(storedItems(), QStringList());
            }
            QCOMPARE(list.items(), QStringList(u"a"_s));
        }
        QCOMPARE(storedItems(), QStringList(u"a"_s));
    }

private:
    [[nodiscard]] QString file() const { return m_home->file(u"d.conf"_s); }

    [[nodiscard]] QStringList storedItems() const
    {
        return UserDefaults(file()).strings(u"key"_s) +
               UserDefaults(file()).strings(u"group/key"_s);
    }

    std::optional<TemporaryHome> m_home;
};

QTEST_GUILESS_MAIN(RecentListTest)
#include "RecentListTest.moc"

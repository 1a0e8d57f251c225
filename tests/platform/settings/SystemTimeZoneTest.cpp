#include "platform/settings/SystemTimeZone.h"

#include "support/TemporaryHome.h"

#include <QDateTime>
#include <QScopeGuard>
#include <QTest>

#include <ctime>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

/// Beside `EditorWindowMacrosTest`, which compares the zones with those of scripts.
class SystemTimeZoneTest final : public QObject
{
    Q_OBJECT

private:
    /// The zone while the variable has this value.
    static QTimeZone zoneFor(const QByteArray &value)
    {
        const QByteArray former = qgetenv("TZ");
        const auto restore = qScopeGuard([&] {
            if (former.isNull())
                qunsetenv("TZ");
            else
                qputenv("TZ", former);
            ::tzset();
        });
        qputenv("TZ", value);
        return systemTimeZone();
    }

private Q_SLOTS:

    void rule_ofAZone_isIt_data()
    {
        QTest::addColumn<QByteArray>("rule");
        QTest::addColumn<QByteArray>("zone");

        QTest::newRow("Tokyo") << QByteArray("JST-9") << QByteArray("Asia/Tokyo");
        QTest::newRow("zones that once differed") << QByteArray("KST-9") << QByteArray("Etc/GMT-9");
        QTest::newRow("no name") << QByteArray("<+09>-9") << QByteArray("Etc/GMT-9");
        QTest::newRow("half an hour") << QByteArray("<+0930>-9:30") << QByteArray();
        QTest::newRow("summer time") << QByteArray("CET-1CEST,M3.5.0,M10.5.0/3") << QByteArray();
        QTest::newRow("on the other side") << QByteArray("EST5EDT,M3.2.0,M11.1.0") << QByteArray();
        QTest::newRow("none") << QByteArray("ABC-3:33") << QByteArray("UTC+03:33");
    }

    void rule_ofAZone_isIt()
    {
        QFETCH(QByteArray, rule);
        QFETCH(QByteArray, zone);
        const QTimeZone found = zoneFor(rule);
        if (!zone.isEmpty())
            QCOMPARE(found.id(), zone);
        else
            QVERIFY2(found.id().contains('/'), found.id().constData());
        // The toolkit reads rules by itself.
        const QTimeZone expected(rule);
        const QDateTime now = QDateTime::currentDateTimeUtc();
        for (int days = 0; expected.isValid() && days < 366; days += 10)
            QCOMPARE(found.offsetFromUtc(now.addDays(days)),
                     expected.offsetFromUtc(now.addDays(days)));
    }

    void copiedFile_changed_isTheNewZone()
    {
        const TemporaryHome home;
        for (const char *name : {"Asia/Kolkata", "Europe/Berlin", "America/New_York"}) {
            QFile original(u"/usr/share/zoneinfo/"_s + QLatin1StringView(name));
            QVERIFY(original.open(QIODevice::ReadOnly));
            const QString copy = home.write(u"localtime"_s, original.readAll());
            QCOMPARE(zoneFor(copy.toUtf8()).id(), QByteArray(name));
            QCOMPARE(zoneFor(':' + copy.toUtf8()).id(), QByteArray(name));
        }
    }

    void linkedFile_ofTheDatabase_isNamed()
    {
        const TemporaryHome home;
        const QString link = home.file(u"link"_s);
        QVERIFY(QFile::link(u"/usr/share/zoneinfo/Asia/Tokyo"_s, link));
        QCOMPARE(zoneFor(link.toUtf8()).id(), QByteArray("Asia/Tokyo"));
    }

    void noValue_isTheSystems()
    {
        const QByteArray former = qgetenv("TZ");
        qunsetenv("TZ");
        ::tzset();
        const QTimeZone zone = systemTimeZone();
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        QVERIFY(::localtime_r(&now, &local) != nullptr);
        QCOMPARE(zone.offsetFromUtc(QDateTime::fromSecsSinceEpoch(now)), int(local.tm_gmtoff));
        if (!former.isNull())
            qputenv("TZ", former);
    }
};

QTEST_APPLESS_MAIN(SystemTimeZoneTest)
#include "SystemTimeZoneTest.moc"

#include "platform/settings/Timestamp.h"

#include "support/FakeClock.h"

#include <QRegularExpression>
#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

class TimestampTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void nowTimestamp_fakeClock_isWholeSecondsInUtc()
    {
        FakeClock time;
        QCOMPARE(nowTimestamp(time.clock()), u"2025-03-01T09:15:00Z"_s);
        time.set(QDateTime(QDate(2024, 5, 1), QTime(0, 30, 7, 999), QTimeZone(9 * 3600)));
        QCOMPARE(nowTimestamp(time.clock()), u"2024-04-30T15:30:07Z"_s);
    }

    void nowTimestamp_otherLocaleAndZone_isTheSame()
    {
        const QLocale former;
        QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
        qputenv("TZ", "Asia/Tokyo");
        const QString text = nowTimestamp(FakeClock().clock());
        const QString now = nowTimestamp();
        QLocale::setDefault(former);
        QCOMPARE(text, u"2025-03-01T09:15:00Z"_s);
        static const QRegularExpression form(u"^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ$"_s);
        QVERIFY(form.match(now).hasMatch());
        const qint64 age =
            QDateTime::fromString(now, Qt::ISODate).secsTo(QDateTime::currentDateTimeUtc());
        QVERIFY(age >= 0 && age < 60);
    }
};

QTEST_APPLESS_MAIN(TimestampTest)
#include "TimestampTest.moc"

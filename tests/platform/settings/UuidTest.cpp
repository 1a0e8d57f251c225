#include "platform/settings/Uuid.h"

#include "support/FakeIds.h"

#include <QRegularExpression>
#include <QSet>
#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

class UuidTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void newUuid_always_isRandomInCanonicalUpperCase()
    {
        static const QRegularExpression form(
            u"^[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$"_s);
        QSet<QString> seen;
        for (int i = 0; i < 1000; ++i) {
            const QString id = i % 2 == 0 ? newUuid() : randomIds()();
            QVERIFY2(form.match(id).hasMatch(), qPrintable(id));
            seen.insert(id);
        }
        QCOMPARE(seen.size(), 1000);
    }

    void fakeIds_countUp()
    {
        const IdSource ids = FakeIds().source();
        QCOMPARE(ids(), u"00000000-0000-4000-8000-000000000001"_s);
        QCOMPARE(ids(), FakeIds::id(2));
    }
};

QTEST_APPLESS_MAIN(UuidTest)
#include "UuidTest.moc"

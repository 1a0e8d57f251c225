#include "platform/desktop/StartupNotification.h"

#include <QTest>

using namespace penwick;

class StartupNotificationTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void timeOf_ids_findsTheTime()
    {
        QCOMPARE(startup::timeOf("shell-1-host_TIME12345"), std::optional<quint32>(12345));
        QCOMPARE(startup::timeOf("a_TIME1_TIME4294967295"), std::optional<quint32>(4294967295U));
        for (const char *id : {"", "a", "a_TIME", "a_TIMEx", "a_TIME-1", "a_TIME4294967296"})
            QCOMPARE(startup::timeOf(id), std::nullopt);
    }

    void endMessage_ids_areQuoted()
    {
        QCOMPARE(startup::endMessage("a b"), "remove: ID=\"a b\"");
        QCOMPARE(startup::endMessage("a\"\\"), "remove: ID=\"a\\\"\\\\\"");
    }

    void end_withoutX11_doesNothing() { startup::end("a_TIME1"); }
};

QTEST_MAIN(StartupNotificationTest)
#include "StartupNotificationTest.moc"

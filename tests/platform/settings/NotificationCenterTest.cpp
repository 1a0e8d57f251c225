#include "platform/settings/NotificationCenter.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class NotificationCenterTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void post_observers_areCalledAtOnceInOrder()
    {
        NotificationCenter center;
        QObject context;
        QString calls;
        center.addObserver(u"name"_s, &context, [&] { calls += u'1'; });
        center.addObserver(u"other"_s, &context, [&] { calls += u'x'; });
        center.addObserver(u"name"_s, &context, [&] { calls += u'2'; });
        center.post(u"name"_s);
        QCOMPARE(calls, u"12"_s);
        center.post(u"without observers"_s);
        QCOMPARE(calls, u"12"_s);
    }

    void post_deadContext_isLeftOut()
    {
        NotificationCenter center;
        int calls = 0;
        {
            QObject context;
            center.addObserver(u"name"_s, &context, [&] { ++calls; });
        }
        center.post(u"name"_s);
        QCOMPARE(calls, 0);
    }

    void post_contextDestroyedMeanwhile_isLeftOut()
    {
        NotificationCenter center;
        QObject first;
        auto second = std::make_unique<QObject>();
        int calls = 0;
        center.addObserver(u"name"_s, &first, [&] { second.reset(); });
        center.addObserver(u"name"_s, second.get(), [&] { ++calls; });
        center.post(u"name"_s);
        QCOMPARE(calls, 0);
    }

    void post_observerAddedMeanwhile_receivesTheNextOne()
    {
        NotificationCenter center;
        QObject context;
        int calls = 0;
        center.addObserver(u"name"_s, &context, [&] {
            center.addObserver(u"name"_s, &context, [&] { ++calls; });
        });
        center.post(u"name"_s);
        QCOMPARE(calls, 0);
        center.post(u"name"_s);
        QCOMPARE(calls, 1);
    }

    void defaultCenter_isAlwaysTheSame()
    {
        QCOMPARE(&NotificationCenter::defaultCenter(), &NotificationCenter::defaultCenter());
    }
};

QTEST_APPLESS_MAIN(NotificationCenterTest)
#include "NotificationCenterTest.moc"

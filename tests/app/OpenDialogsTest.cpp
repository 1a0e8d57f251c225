#include "app/OpenDialogs.h"

#include "window/MacroRunNotice.h"

#include <QDialog>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>

using namespace penwick;
using namespace Qt::StringLiterals;

class OpenDialogsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void question_modalDialogOnly()
    {
        QWidget window;
        window.show();
        QCOMPARE(OpenDialogs::question(), nullptr);
        QDialog modeless(&window);
        modeless.show();
        QCOMPARE(OpenDialogs::question(), nullptr);
        QVERIFY(!OpenDialogs::areOpen());
        QDialog dialog(&window);
        dialog.open();
        QCOMPARE(OpenDialogs::question(), &dialog);
        QCOMPARE(OpenDialogs::front(), &dialog);
        dialog.close();
        QCOMPARE(OpenDialogs::question(), nullptr);
    }

    void notice_isNoQuestionButBlocks()
    {
        QWidget window;
        window.show();
        QWidget other;
        other.show();
        QElapsedTimer since;
        since.start();
        MacroRunNotice notice(u"name"_s, since, &window);
        notice.open();
        QCOMPARE(OpenDialogs::question(), nullptr);
        QCOMPARE(OpenDialogs::front(), &notice);
        QVERIFY(OpenDialogs::areOpen());
        QVERIFY(OpenDialogs::block(&window));
        QVERIFY(!OpenDialogs::block(&other));
        QVERIFY(!OpenDialogs::block(&notice));
    }

    void watch_dialogClosedHiddenOrDestroyed_emitsOnceLater_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("closed") << 0;
        QTest::newRow("hidden") << 1;
        QTest::newRow("destroyed") << 2;
    }

    void watch_dialogClosedHiddenOrDestroyed_emitsOnceLater()
    {
        QFETCH(int, way);
        OpenDialogs dialogs;
        QSignalSpy closed(&dialogs, &OpenDialogs::closed);
        auto dialog = std::make_unique<QDialog>();
        dialog->open();
        dialogs.watch();
        dialogs.watch();
        QTest::qWait(20);
        QCOMPARE(closed.count(), 0);
        if (way == 0)
            dialog->close();
        else if (way == 1)
            dialog->hide();
        else
            dialog.reset();
        QCOMPARE(closed.count(), 0);
        QTRY_COMPARE(closed.count(), 1);
        QDialog next;
        next.open();
        next.close();
        QTest::qWait(20);
        QCOMPARE(closed.count(), 1); // Nothing watches any more.
    }

    void watch_menuClosed_emits()
    {
        OpenDialogs dialogs;
        const QSignalSpy closed(&dialogs, &OpenDialogs::closed);
        QMenu menu;
        menu.addAction(u"a"_s);
        menu.popup(QPoint());
        QVERIFY(OpenDialogs::areOpen());
        QVERIFY(OpenDialogs::question() == nullptr);
        dialogs.watch();
        menu.close();
        QTRY_COMPARE(closed.count(), 1);
        QVERIFY(!OpenDialogs::areOpen());
    }

    void closed_dialogWithLoop_comesAfterItsCaller_data()
    {
        QTest::addColumn<bool>("isByTimer");
        QTest::addColumn<bool>("sendsOthers");
        QTest::newRow("closed by a timer") << true << false;
        QTest::newRow("closed by a posted event") << false << false;
        QTest::newRow("closed by a posted event that sends others") << false << true;
    }

    // The caller of the dialog acts on the answer before anything that waits for the dialog's end.
    void closed_dialogWithLoop_comesAfterItsCaller()
    {
        QFETCH(bool, isByTimer);
        QFETCH(bool, sendsOthers);
        OpenDialogs dialogs;
        QStringList order;
        connect(&dialogs, &OpenDialogs::closed, this, [&] { order << u"closed"_s; });
        QDialog dialog;
        QObject other;
        dialogs.watch();
        const auto close = [&] {
            dialog.accept();
            QTest::qSleep(20); // A timer started now would be due in this turn.
            if (!sendsOthers)
                return;
            QCoreApplication::postEvent(&other, new QEvent(QEvent::User));
            QCoreApplication::sendPostedEvents(&other, QEvent::User);
        };
        if (isByTimer)
            QTimer::singleShot(10, &dialog, close);
        else
            QMetaObject::invokeMethod(&dialog, close, Qt::QueuedConnection);
        dialog.exec();
        order << u"returned"_s;
        QTRY_COMPARE(order, (QStringList{u"returned"_s, u"closed"_s}));
    }
};

QTEST_MAIN(OpenDialogsTest)
#include "OpenDialogsTest.moc"

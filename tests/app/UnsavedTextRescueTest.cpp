#include "app/UnsavedTextRescue.h"

#include "app/DocumentController.h"
#include "macro/library/MacroJson.h"
#include "macro/library/MacroManager.h"
#include "platform/process/TerminationSignals.h"
#include "support/Macros.h"
#include "support/TemporaryHome.h"
#include "support/Waits.h"
#include "view/TextView.h"

#include <QDir>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of unexpected ends of the process.
class UnsavedTextRescueTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init() { m_mask = ::umask(022); }

    void cleanup() { ::umask(m_mask); }

    void place_namesThatAreTaken_isTheNextFree()
    {
        const test::TemporaryHome home;
        const QString file = home.file(u"a.txt"_s);
        QCOMPARE(placeForUnsavedText(file, home.path()), home.file(u"a.txt.unsaved"_s));
        QCOMPARE(placeForUnsavedText({}, home.path()), home.file(u"untitled.txt.unsaved"_s));
        home.write(u"a.txt.unsaved"_s, "");
        QVERIFY(QFile::link(u"nowhere"_s, home.file(u"a.txt.unsaved-2"_s)));
        QCOMPARE(placeForUnsavedText(file, home.path()), home.file(u"a.txt.unsaved-3"_s));
    }

    void run_documents_keepsWhatIsUnsavedOnly()
    {
        const test::TemporaryHome home;
        DocumentController documents;
        documents.openFile(home.write(u"same.txt"_s, "same"));
        documents.openFile(home.write(u"edited.txt"_s, "old"));
        const auto edited = documents.windowControllers().last();
        QTest::keyClicks(edited->textView(), u"x"_s);
        UnsavedTextRescue rescue(&documents);
        rescue.run();
        QCOMPARE(home.read(u"edited.txt.unsaved"_s), QByteArray("xold"));
        QCOMPARE(home.read(u"edited.txt"_s), QByteArray("old"));
        QCOMPARE(QDir(home.path()).entryList(QDir::Files | QDir::Hidden),
                 (QStringList{u"edited.txt"_s, u"edited.txt.unsaved"_s, u"same.txt"_s}));
        struct stat status = {};
        QCOMPARE(::stat(qPrintable(home.file(u"edited.txt.unsaved"_s)), &status), 0);
        QCOMPARE(status.st_mode & ALLPERMS, 0600U);
    }

    void run_saveUnderWay_finishesIt()
    {
        const test::TemporaryHome home;
        DocumentController documents;
        documents.setTransferLimits({.directBytes = 1,
                                     .reading = std::chrono::milliseconds(test::kLongWait),
                                     .pausedBytes = 1'000'000'000,
                                     .saving = std::chrono::milliseconds(0)});
        documents.openFile(home.write(u"a.txt"_s, QByteArray(20'000'000, 'x')));
        const auto controller = documents.windowControllers().last();
        QTest::keyClicks(controller->textView(), u"y"_s);
        QVERIFY(documents.saveDocument(controller.get()));
        QVERIFY(documents.documentOf(controller.get())->isWriting());
        UnsavedTextRescue rescue(&documents);
        rescue.run();
        QCOMPARE(home.read(u"a.txt"_s).size(), 20'000'001);
        QCOMPARE(QDir(home.path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"a.txt"_s});
    }

    void run_folderIsGone_usesTheHomeFolder()
    {
        const test::TemporaryHome home;
        DocumentController documents;
        documents.openFile(home.write(u"folder/a.txt"_s, "old"));
        const auto controller = documents.windowControllers().last();
        QTest::keyClicks(controller->textView(), u"x"_s);
        QVERIFY(QDir(home.file(u"folder"_s)).removeRecursively());
        UnsavedTextRescue rescue(&documents);
        rescue.run();
        QCOMPARE(home.read(u"untitled.txt.unsaved"_s), QByteArray("xold"));
    }

    void run_homeIsGone_usesTheTemporaryFolder()
    {
        const test::TemporaryHome home;
        const QTemporaryDir temporary;
        DocumentController documents;
        documents.newDocument();
        QTest::keyClicks(documents.windowControllers().last()->textView(), u"x"_s);
        qputenv("HOME", home.file(u"missing"_s).toUtf8());
        const QByteArray before = qgetenv("TMPDIR");
        qputenv("TMPDIR", temporary.path().toUtf8());
        UnsavedTextRescue rescue(&documents);
        rescue.run();
        before.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", before);
        QFile kept(temporary.filePath(u"untitled.txt.unsaved"_s));
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), QByteArray("x"));
    }

    void waylandCompositor_goes_keepsWhatIsUnsaved()
    {
        const test::TemporaryHome home;
        DocumentController documents;
        documents.openFile(home.write(u"a.txt"_s, "old"));
        QTest::keyClicks(documents.windowControllers().last()->textView(), u"x"_s);
        const UnsavedTextRescue rescue(&documents);
        const pid_t process = ::fork();
        if (process == 0) {
            // The toolkit logs this and exits.
            qWarning("The Wayland connection broke. Did the Wayland compositor die?");
            ::_exit(EXIT_SUCCESS);
        }
        int status = 0;
        QCOMPARE(::waitpid(process, &status, 0), process);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), EXIT_FAILURE);
        QCOMPARE(home.read(u"a.txt.unsaved"_s), QByteArray("xold"));
        QCOMPARE(home.read(u"a.txt"_s), QByteArray("old"));
    }

    void macroAdded_noSortOrderIsLeft_keepsWhatIsUnsaved()
    {
        const test::TemporaryHome home;
        Macro last = test::sampleMacro();
        last.sortOrder = std::numeric_limits<qint64>::max();
        home.write(u"store/macros.json"_s, MacroJson::write({last}));
        UserDefaults defaults(home.file(u"config.conf"_s));
        MacroManager macros(home.file(u"store"_s), defaults);
        DocumentController documents;
        documents.openFile(home.write(u"a.txt"_s, "old"));
        QTest::keyClicks(documents.windowControllers().last()->textView(), u"x"_s);
        // The test framework would report the fatal message of the child as a failure.
        const QtMessageHandler former = qInstallMessageHandler(nullptr);
        const auto restore = qScopeGuard([former] { qInstallMessageHandler(former); });
        const UnsavedTextRescue rescue(&documents);
        const pid_t process = ::fork();
        if (process == 0) {
            ::signal(SIGABRT, SIG_DFL); // Not the handler of the test framework.
            macros.addMacro(test::sampleMacro(u"B"_s));
            ::_exit(EXIT_SUCCESS);
        }
        int status = 0;
        QCOMPARE(::waitpid(process, &status, 0), process);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGABRT);
        QCOMPARE(home.read(u"a.txt.unsaved"_s), QByteArray("xold"));
        QCOMPARE(home.read(u"a.txt"_s), QByteArray("old"));
        QCOMPARE(MacroJson::read(home.read(u"store/macros.json"_s)).value(), QList<Macro>{last});
    }

    void signals_raised_areReportedByTheEventLoop()
    {
        TerminationSignals signals;
        const QSignalSpy spy(&signals, &TerminationSignals::received);
        ::raise(SIGTERM);
        ::raise(SIGHUP);
        QCOMPARE(spy.count(), 0);
        QTRY_COMPARE(spy.count(), 2);
        QCOMPARE(spy.at(0).at(0).toInt(), SIGTERM);
        QCOMPARE(spy.at(1).at(0).toInt(), SIGHUP);
    }

    void signals_ignoredBefore_stayIgnored()
    {
        ::signal(SIGHUP, SIG_IGN);
        TerminationSignals signals;
        const QSignalSpy spy(&signals, &TerminationSignals::received);
        ::raise(SIGHUP);
        ::raise(SIGTERM);
        QTRY_COMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).toInt(), SIGTERM);
        ::signal(SIGHUP, SIG_DFL);
    }

private:
    mode_t m_mask = 0;
};

QTEST_MAIN(UnsavedTextRescueTest)
#include "UnsavedTextRescueTest.moc"

#include "recovery/RecoverySession.h"

#include "support/ChildProcess.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <cstdio>
#include <sys/stat.h>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// Makes a session with a copy, reports that, and waits to be killed.
int keepSession(const QString &root)
{
    const auto session = RecoverySession::create(root);
    QFile copy(session->copyPath(1));
    const bool isWritten = copy.open(QIODevice::WriteOnly) && copy.write("text") > 0;
    copy.close();
    std::puts(isWritten ? "ready" : "failed");
    std::fflush(stdout);
    ::pause();
    return 0;
}

} // namespace

class RecoverySessionTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void cleanup() { QVERIFY(QDir(m_home.file(u"state"_s)).removeRecursively()); }

    void create_folders_arePrivate()
    {
        const mode_t former = ::umask(0);
        auto session = RecoverySession::create(root());
        ::umask(former);
        QVERIFY(session);
        const QString folder = QFileInfo(session->copyPath(1)).path();
        const auto kOthers = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                             QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
        for (const QString &path : {root(), folder, folder + u"/lock"_s})
            QCOMPARE(QFile(path).permissions() & kOthers, QFile::Permissions());
        QVERIFY(session->removeIfEmpty());
        QVERIFY(!QFile::exists(m_home.file(u"state/penwick"_s)));
    }

    void create_folderOfOthers_fails()
    {
        QVERIFY(QDir().mkpath(root()));
        QFile(root()).setPermissions(QFile::permissions(root()) | QFile::ReadGroup);
        const auto session = RecoverySession::create(root());
        QVERIFY(!session && session.error().kind == FileError::Kind::PermissionDenied);
        QFile(root()).setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void takeAbandoned_livingProcess_isLeftAlone()
    {
        auto own = RecoverySession::create(root());
        QVERIFY(own);
        test::ChildProcess child({u"keep"_s, root()});
        QCOMPARE(child.readLine(), QByteArray("ready"));
        QVERIFY(RecoverySession::takeAbandoned(root()).empty());
        child.kill();
        {
            const auto abandoned = RecoverySession::takeAbandoned(root());
            QCOMPARE(abandoned.size(), std::size_t(1));
            QCOMPARE(abandoned.front().copies().size(), 1);
            QCOMPARE(QFile(abandoned.front().copies().front()).size(), 4);
            // Another start does not get what this one offers.
            QVERIFY(RecoverySession::takeAbandoned(root()).empty());
        }
        auto again = RecoverySession::takeAbandoned(root());
        QCOMPARE(again.size(), std::size_t(1));
        QVERIFY(!again.front().removeIfEmpty());
        QVERIFY(QFile::remove(again.front().copies().front()));
        QVERIFY(again.front().removeIfEmpty());
        QVERIFY(own->removeIfEmpty());
        QVERIFY(!QFile::exists(root()));
    }

    void takeAbandoned_withoutCopies_removesTheFolder()
    {
        {
            const auto session = RecoverySession::create(root());
            QVERIFY(session);
        }
        QVERIFY(QFile::exists(root()));
        QVERIFY(RecoverySession::takeAbandoned(root()).empty());
        QVERIFY(!QFile::exists(root()));
        QVERIFY(RecoverySession::takeAbandoned(root()).empty());
    }

    void takeAbandoned_foreignFolder_isLeftAlone()
    {
        m_home.write(u"state/penwick/recovery/backup/memo.txt"_s, "of the user");
        QVERIFY(RecoverySession::takeAbandoned(root()).empty());
        QCOMPARE(QDir(root() + u"/backup"_s).entryList(QDir::Files), QStringList{u"memo.txt"_s});
    }

    void takeAbandoned_linkToAFolder_isLeftAlone()
    {
        m_home.write(u"documents/memo.txt"_s, "of the user");
        QVERIFY(QDir().mkpath(root()));
        const QString link = root() + u"/D9B2C1F0-6A3E-4C55-9E0B-2F6E5D0A7C11"_s;
        QVERIFY(QFile::link(m_home.file(u"documents"_s), link));
        QVERIFY(RecoverySession::takeAbandoned(root()).empty());
        QCOMPARE(QDir(m_home.file(u"documents"_s)).entryList(QDir::Files),
                 QStringList{u"memo.txt"_s});
        QVERIFY(QFile::remove(link));
    }

    void removeIfEmpty_foreignFile_stays()
    {
        auto session = RecoverySession::create(root());
        QVERIFY(session);
        const QString folder = QFileInfo(session->copyPath(1)).path();
        const QString folderName = QDir(m_home.path()).relativeFilePath(folder);
        m_home.write(folderName + u"/memo.txt"_s, "of the user");
        m_home.write(folderName + u"/.penwick-0-0"_s, "an incomplete write");
        m_home.write(folderName + u"/abcdef.text"_s, "an interrupted comparison");
        QVERIFY(session->removeIfEmpty());
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{u"memo.txt"_s});
    }

private:
    [[nodiscard]] QString root() const { return m_home.file(u"state/penwick/recovery"_s); }

    test::TemporaryHome m_home;
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"keep"_s)
        return keepSession(arguments.value(2));
    RecoverySessionTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "RecoverySessionTest.moc"

#include "platform/files/TemporaryFile.h"

#include "platform/files/FileStatus.h"
#include "support/InterceptedProcess.h"
#include "support/TemporaryHome.h"

#include <QTest>

#include <cerrno>
#include <cstdio>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

/// Makes a temporary file of "target" and moves it to `path`. Returns the error number; 0 if it was
/// moved.
int moveToFreePlace(const TemporaryHome &home, const QString &path)
{
    TemporaryFile file(QFile::encodeName(home.file(u"target"_s)));
    const auto moved = file.create(0600, TemporaryFile::Name::FromTheStart).and_then([&] {
        return file.moveToFreePlace(QFile::encodeName(path));
    });
    return moved ? 0 : moved.error().errnoValue;
}

/// Runs `work` as on a file system that cannot rename without replacing.
int withoutExclusiveRename(const std::function<int()> &work)
{
    int refused = 0;
    const auto end = InterceptedProcess::run(work, [&refused](const SystemCall &call) {
        const bool isExclusive =
            call.number == SYS_renameat2 && (call.arguments[4] & RENAME_NOREPLACE) != 0;
        refused += isExclusive ? 1 : 0;
        return isExclusive ? EINVAL : 0;
    });
    return refused == 1 ? end.status : -1;
}

} // namespace

class TemporaryFileTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void moveToFreePlace_free_isThereAndNothingElse_data() { addFileSystems(); }

    void moveToFreePlace_free_isThereAndNothingElse()
    {
        QFETCH(const bool, canRenameExclusively);
        const TemporaryHome home;
        const auto move = [&home] { return moveToFreePlace(home, home.file(u"place"_s)); };
        QCOMPARE(canRenameExclusively ? move() : withoutExclusiveRename(move), 0);
        QCOMPARE(entriesOf(home.path()), QStringList{u"place"_s});
    }

    void moveToFreePlace_taken_failsWithExistsAndReplacesNothing_data() { addFileSystems(); }

    void moveToFreePlace_taken_failsWithExistsAndReplacesNothing()
    {
        QFETCH(const bool, canRenameExclusively);
        const TemporaryHome home;
        home.write(u"place"_s, "theirs");
        const auto move = [&home] { return moveToFreePlace(home, home.file(u"place"_s)); };
        QCOMPARE(canRenameExclusively ? move() : withoutExclusiveRename(move), EEXIST);
        QCOMPARE(home.read(u"place"_s), "theirs"_ba);
    }

    void moveToFreePlace_danglingLinkIsThere_failsWithExistsAndKeepsIt_data() { addFileSystems(); }

    void moveToFreePlace_danglingLinkIsThere_failsWithExistsAndKeepsIt()
    {
        QFETCH(const bool, canRenameExclusively);
        const TemporaryHome home;
        QVERIFY(QFile::link(u"gone"_s, home.file(u"place"_s)));
        const auto move = [&home] { return moveToFreePlace(home, home.file(u"place"_s)); };
        QCOMPARE(canRenameExclusively ? move() : withoutExclusiveRename(move), EEXIST);
        QVERIFY(S_ISLNK(statusOf(home.file(u"place"_s)).st_mode));
    }

private:
    static void addFileSystems()
    {
        QTest::addColumn<bool>("canRenameExclusively");
        QTest::newRow("file system that can rename without replacing") << true;
#ifndef __SANITIZE_ADDRESS__ // The sanitizer makes calls of its own in the intercepted process.
        QTest::newRow("file system that cannot") << false;
#endif
    }
};

QTEST_APPLESS_MAIN(TemporaryFileTest)
#include "TemporaryFileTest.moc"

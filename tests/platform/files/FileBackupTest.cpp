#include "platform/files/FileBackup.h"

#include "platform/files/FileStatus.h"
#include "support/TemporaryHome.h"

#include <QTest>

#include <sys/stat.h>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

bool writeOld(const WriteBytes &write)
{
    return write("old");
}

} // namespace

class FileBackupTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void backup_hasThePermissionsOfTheOriginal()
    {
        const TemporaryHome home;
        const QString path = home.write(u"a"_s, "old");
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0640), 0);
        QVERIFY(makeBackup(path, path + u'~', writeOld).has_value());
        QCOMPARE(home.read(u"a~"_s), "old"_ba);
        QCOMPARE(modeOf(path + u'~'), 0640U);
        QVERIFY(statusOf(path + u'~').st_ino != statusOf(path).st_ino);
        QCOMPARE(entriesOf(home.path()), (QStringList{u"a"_s, u"a~"_s}));
    }

    void linkAtItsPlace_isReplacedNotFollowed()
    {
        const TemporaryHome home;
        const QString path = home.write(u"a"_s, "old");
        home.write(u"other"_s, "other");
        QVERIFY(QFile::link(u"other"_s, home.file(u"a~"_s)));
        QVERIFY(makeBackup(path, path + u'~', writeOld).has_value());
        QCOMPARE(home.read(u"other"_s), "other"_ba);
        QCOMPARE(home.read(u"a~"_s), "old"_ba);
    }

    void originalMissing_fails()
    {
        const TemporaryHome home;
        const auto made = makeBackup(home.file(u"a"_s), home.file(u"a~"_s), writeOld);
        QVERIFY(!made.has_value());
        QCOMPARE(made.error().kind, FileError::Kind::NotFound);
        QVERIFY(entriesOf(home.path()).isEmpty());
    }

    void folderAtItsPlace_failsAndLeavesNothing()
    {
        const TemporaryHome home;
        const QString path = home.write(u"a"_s, "old");
        QVERIFY(QDir().mkpath(home.file(u"a~"_s)));
        const auto made = makeBackup(path, path + u'~', writeOld);
        QVERIFY(!made.has_value());
        QCOMPARE(made.error().kind, FileError::Kind::IsFolder);
        QCOMPARE(entriesOf(home.path()), (QStringList{u"a"_s, u"a~"_s}));
    }
};

QTEST_APPLESS_MAIN(FileBackupTest)
#include "FileBackupTest.moc"

#include "platform/files/AtomicFile.h"
#include "platform/files/FileStatus.h"
#include "platform/files/SafeCopy.h"
#include "support/FileSizeLimit.h"
#include "support/InterceptedProcess.h"
#include "support/TemporaryHome.h"
#include "support/UnprivilegedUser.h"

#include <QTest>

#include <cerrno>
#include <cstdio>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

/// Tests of files that cannot be replaced by a new file: they are written in place.
class FileInPlaceTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void replace_ownerCannotBeKept_writesInPlace()
    {
        if (::geteuid() != 0)
            QSKIP("Only root can make files of other users.");
        const TemporaryHome home;
        const QString path = home.write(u"shared"_s, "old");
        const QByteArray name = QFile::encodeName(path);
        QCOMPARE(::chown(name.constData(), 1234, 5678), 0);
        QCOMPARE(::chmod(name.constData(), 0646), 0);
        QCOMPARE(::chmod(QFile::encodeName(home.path()).constData(), 0777), 0);
        const struct stat before = statusOf(path);
        const auto result = asUnprivilegedUser([&] { return replaceFile(path, "new"); });
        QVERIFY(result.has_value());
        const struct stat after = statusOf(path);
        QCOMPARE(home.read(u"shared"_s), "new"_ba);
        QCOMPARE(after.st_ino, before.st_ino);
        QCOMPARE(after.st_uid, uid_t{1234});
        QCOMPARE(after.st_gid, gid_t{5678});
        QCOMPARE(modeOf(path), 0646U);
        QCOMPARE(entriesOf(home.path()), QStringList{u"shared"_s});
    }

    void replace_folderTakesNoFiles_writesInPlace()
    {
        if (::geteuid() != 0)
            QSKIP("Only root can take on another user to be refused as.");
        const TemporaryHome home;
        const QString path = home.write(u"folder/mine"_s, "old");
        QCOMPARE(::chown(QFile::encodeName(path).constData(), kUnprivilegedUser, kUnprivilegedUser),
                 0);
        QCOMPARE(::chmod(QFile::encodeName(home.path()).constData(), 0777), 0);
        const auto result = asUnprivilegedUser([&] { return replaceFile(path, "new and longer"); });
        QVERIFY(result.has_value());
        QCOMPARE(home.read(u"folder/mine"_s), "new and longer"_ba);
        QVERIFY(asUnprivilegedUser([&] { return replaceFile(path, "n"); }).has_value());
        QCOMPARE(home.read(u"folder/mine"_s), "n"_ba);
        QCOMPARE(entriesOf(home.file(u"folder"_s)), QStringList{u"mine"_s});
        QVERIFY(!QFileInfo::exists(home.dataFolder() + u"/penwick/interrupted-saves"_s));
    }

    void replace_nowhereForASafeCopy_failsAndTouchesNothing()
    {
        if (::geteuid() != 0)
            QSKIP("Only root can take on another user to be refused as.");
        const TemporaryHome home;
        const QString path = home.write(u"folder/mine"_s, "old");
        QCOMPARE(::chown(QFile::encodeName(path).constData(), kUnprivilegedUser, kUnprivilegedUser),
                 0);
        QCOMPARE(::chmod(QFile::encodeName(home.path()).constData(), 0755), 0);
        const auto result = asUnprivilegedUser([&] { return replaceFile(path, "new"); });
        QCOMPARE(result.error(), (FileError{FileError::Kind::PermissionDenied, EACCES}));
        QCOMPARE(home.read(u"folder/mine"_s), "old"_ba);
    }

    void replace_otherHardLinks_keepHoldingTheSame()
    {
        const TemporaryHome home;
        const QString path = home.write(u"one"_s, "the old content");
        QCOMPARE(::link(QFile::encodeName(path).constData(),
                        QFile::encodeName(home.file(u"other"_s)).constData()),
                 0);
        QVERIFY(replaceFile(path, "new").has_value());
        QCOMPARE(home.read(u"one"_s), "new"_ba);
        QCOMPARE(home.read(u"other"_s), "new"_ba);
        QCOMPARE(statusOf(path).st_nlink, nlink_t{2});
        QCOMPARE(entriesOf(home.path()), (QStringList{u"one"_s, u"other"_s}));
    }

    void replace_hardLinkAndFullDisk_holdsTheOldContentAgain()
    {
        const TemporaryHome home;
        const QByteArray old(6000, 'o');
        const QString path = home.write(u"one"_s, old);
        QCOMPARE(::link(QFile::encodeName(path).constData(),
                        QFile::encodeName(home.file(u"other"_s)).constData()),
                 0);
        tl::expected<void, FileError> result;
        {
            const FileSizeLimit limit(8192);
            result = replaceFile(path, QByteArray(3000000, 'x'));
        }
        QCOMPARE(result.error(), (FileError{FileError::Kind::NoSpace, EFBIG}));
        QCOMPARE(home.read(u"other"_s), old);
        QCOMPARE(entriesOf(home.path()), (QStringList{u"one"_s, u"other"_s}));
    }

    void replace_copyOfAnInterruptedSaveIsThere_keepsItOnEveryFileSystem()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("The sanitizer makes calls of its own in the intercepted process.");
#endif
        const TemporaryHome home;
        const QString path = home.write(u"one"_s, "old");
        QCOMPARE(::link(QFile::encodeName(path).constData(),
                        QFile::encodeName(home.file(u"other"_s)).constData()),
                 0);
        {
            SafeCopy interrupted(QFile::encodeName(path));
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QVERIFY(interrupted.make(file.handle()).has_value());
            interrupted.keep();
        }
        home.write(u"one"_s, "half");
        const QStringList copies = SafeCopy::left(path);
        QCOMPARE(copies.size(), 1);
        const auto save = [&path] { return replaceFile(path, "new") ? 0 : 1; };
        const auto end = InterceptedProcess::run(save, [](const SystemCall &call) {
            const bool isExclusive =
                call.number == SYS_renameat2 && (call.arguments[4] & RENAME_NOREPLACE) != 0;
            return isExclusive ? EINVAL : 0;
        });
        QCOMPARE(end.status, 0);
        QCOMPARE(home.read(u"other"_s), "new"_ba);
        QCOMPARE(SafeCopy::left(path), copies);
        QCOMPARE(readFile(copies.first()), "old"_ba);
    }

    void replace_hardLinkGoesMeanwhile_failsAndHoldsTheOldContentAgain_data()
    {
        QTest::addColumn<bool>("isReplaced");
        QTest::newRow("removed") << false;
        QTest::newRow("replaced") << true;
    }

    void replace_hardLinkGoesMeanwhile_failsAndHoldsTheOldContentAgain()
    {
        QFETCH(bool, isReplaced);
        const TemporaryHome home;
        const QString path = home.write(u"one"_s, "old");
        const QString other = home.file(u"other"_s);
        QCOMPARE(::link(QFile::encodeName(path).constData(), QFile::encodeName(other).constData()),
                 0);
        const auto result = replaceFile(path,
                                        [&](const WriteBytes &write) {
                                            if (!QFile::remove(path))
                                                return false;
                                            if (isReplaced)
                                                home.write(u"one"_s, "theirs");
                                            return write("the new content");
                                        },
                                        {});
        QVERIFY(!result);
        QCOMPARE(result.error().kind, FileError::Kind::Changed);
        QCOMPARE(home.read(u"other"_s), "old"_ba);
        QCOMPARE(QFileInfo::exists(path), isReplaced);
        if (isReplaced)
            QCOMPARE(home.read(u"one"_s), "theirs"_ba);
    }

    void replace_fileThatSomethingIsMountedOn_writesInPlace()
    {
        const TemporaryHome home;
        const QByteArray outside = QFile::encodeName(home.write(u"outside"_s, "old"));
        const QByteArray inside = QFile::encodeName(home.write(u"folder/inside"_s, "hidden"));
        if (::mount(outside.constData(), inside.constData(), nullptr, MS_BIND, nullptr) != 0)
            QSKIP("Only root can mount.");
        const auto result = replaceFile(home.file(u"folder/inside"_s), "new");
        const QByteArray seen = home.read(u"folder/inside"_s);
        QCOMPARE(::umount(inside.constData()), 0);
        QVERIFY(result.has_value());
        QCOMPARE(seen, "new"_ba);
        QCOMPARE(home.read(u"outside"_s), "new"_ba);
        QCOMPARE(home.read(u"folder/inside"_s), "hidden"_ba);
        QCOMPARE(entriesOf(home.file(u"folder"_s)), QStringList{u"inside"_s});
    }

    void replace_fileThatIsMountedInAFolderThatIsReadOnly_writesInPlace()
    {
        const TemporaryHome home;
        const QByteArray outside = QFile::encodeName(home.write(u"outside"_s, "old"));
        const QByteArray inside = QFile::encodeName(home.write(u"folder/inside"_s, "hidden"));
        const QByteArray folder = QFile::encodeName(home.file(u"folder"_s));
        const auto mountAt = [](const QByteArray &from, const QByteArray &at, unsigned long flags) {
            return ::mount(from.constData(), at.constData(), nullptr, MS_BIND | flags, nullptr) ==
                   0;
        };
        if (!mountAt(folder, folder, 0))
            QSKIP("Only root can mount.");
        // A container may likewise see a single mounted file in a read-only folder.
        const bool isReadOnly = mountAt(folder, folder, MS_REMOUNT | MS_RDONLY);
        const bool isMounted = mountAt(outside, inside, 0);
        const auto result = replaceFile(home.file(u"folder/inside"_s), "new");
        const QByteArray seen = home.read(u"folder/inside"_s);
        QVERIFY(!isMounted || ::umount(inside.constData()) == 0);
        QCOMPARE(::umount(folder.constData()), 0);
        QVERIFY(isReadOnly && isMounted);
        QVERIFY(result.has_value());
        QCOMPARE(seen, "new"_ba);
        QCOMPARE(home.read(u"outside"_s), "new"_ba);
    }

    void replace_fileOfOthersInAStickyFolder_writesInPlace()
    {
        if (::geteuid() != 0)
            QSKIP("Only root can make files of other users.");
        const TemporaryHome home;
        const QString path = home.write(u"folder/theirs"_s, "old");
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0666), 0);
        QCOMPARE(::chown(QFile::encodeName(path).constData(), 1234, kUnprivilegedUser), 0);
        QCOMPARE(::chmod(QFile::encodeName(home.file(u"folder"_s)).constData(), 01777), 0);
        QCOMPARE(::chmod(QFile::encodeName(home.path()).constData(), 0755), 0);
        const auto result = asUnprivilegedUser([&] { return replaceFile(path, "new"); });
        QVERIFY(result.has_value());
        QCOMPARE(home.read(u"folder/theirs"_s), "new"_ba);
        QCOMPARE(statusOf(path).st_uid, uid_t{1234});
        QCOMPARE(entriesOf(home.file(u"folder"_s)), QStringList{u"theirs"_s});
    }
};

QTEST_APPLESS_MAIN(FileInPlaceTest)
#include "FileInPlaceTest.moc"

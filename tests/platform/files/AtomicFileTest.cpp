#include "platform/files/AtomicFile.h"

#include "platform/files/FileStatus.h"
#include "platform/files/TemporaryFile.h"
#include "support/FileSizeLimit.h"
#include "support/TemporaryHome.h"
#include "support/UnprivilegedUser.h"

#include <QTest>

#include <array>
#include <cerrno>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

/// An access control list in the kernel's binary form that lets one more user read.
QByteArray accessList(quint32 user)
{
    struct Entry
    {
        quint16 tag;
        quint16 permissions;
        quint32 id;
    };

    constexpr quint32 kNoId = 0xFFFFFFFF;
    const std::array<Entry, 5> entries{
        {{1, 6, kNoId}, {2, 4, user}, {4, 0, kNoId}, {0x10, 4, kNoId}, {0x20, 0, kNoId}}};
    constexpr quint32 kVersion = 2;
    return QByteArray(reinterpret_cast<const char *>(&kVersion), sizeof kVersion) +
           QByteArray(reinterpret_cast<const char *>(entries.data()), sizeof entries);
}

} // namespace

/// Tests of replacing a file by a new one in one step.
class AtomicFileTest final : public QObject
{
    Q_OBJECT

private:
    static tl::expected<FileVersion, FileError>
    replaceFile(const QString &path,
                const ProduceBytes &produce,
                const std::function<bool()> &isStillWanted = {})
    {
        return penwick::replaceFile(path, produce, isStillWanted);
    }

    static tl::expected<void, FileError> replaceFile(const QString &path, QByteArrayView content)
    {
        return penwick::replaceFile(path, content);
    }

private Q_SLOTS:

    void temporaryFile_whileAnotherWritesToTheSameTarget_takesAnotherName()
    {
        const TemporaryHome home;
        const QByteArray target = QFile::encodeName(home.file(u"a.txt"_s));
        TemporaryFile first(target);
        QVERIFY(first.create(S_IRUSR | S_IWUSR, TemporaryFile::Name::FromTheStart));
        TemporaryFile second(target);
        QVERIFY(second.create(S_IRUSR | S_IWUSR, TemporaryFile::Name::FromTheStart));
        QCOMPARE(entriesOf(home.path()).size(), 2);
    }

    void replace_newFile_writesItWithTheUsersDefaultMode()
    {
        const TemporaryHome home;
        const mode_t former = ::umask(027);
        const auto result = replaceFile(home.file(u"new.txt"_s), "content");
        ::umask(former);
        QVERIFY(result.has_value());
        QCOMPARE(home.read(u"new.txt"_s), "content"_ba);
        QCOMPARE(modeOf(home.file(u"new.txt"_s)), 0640U);
        QCOMPARE(entriesOf(home.path()), QStringList{u"new.txt"_s});
    }

    void replace_existingFile_keepsModeOwnerAndGroup()
    {
        const TemporaryHome home;
        const QString path = home.write(u"old.txt"_s, "old");
        if (::getuid() == 0)
            QCOMPARE(::chown(QFile::encodeName(path).constData(), 1234, 5678), 0);
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0751), 0);
        const struct stat before = statusOf(path);
        QVERIFY(replaceFile(path, "new").has_value());
        const struct stat after = statusOf(path);
        QCOMPARE(home.read(u"old.txt"_s), "new"_ba);
        QCOMPARE(modeOf(path), 0751U);
        QCOMPARE(after.st_uid, before.st_uid);
        QCOMPARE(after.st_gid, before.st_gid);
        QVERIFY(after.st_ino != before.st_ino);
    }

    void replace_existingFile_keepsExtendedAttributes()
    {
        const TemporaryHome home;
        const QString path = home.write(u"old.txt"_s, "old");
        const QByteArray name = QFile::encodeName(path);
        if (::setxattr(name.constData(), "user.note", "kept", 4, 0) != 0)
            QSKIP("This file system has no extended attributes.");
        QVERIFY(replaceFile(path, "new").has_value());
        char value[8] = {};
        QCOMPARE(::getxattr(name.constData(), "user.note", value, sizeof value), ssize_t{4});
        QCOMPARE(QByteArray(value), "kept"_ba);
    }

    void replace_shorterContent_leavesNothingOfTheOld()
    {
        const TemporaryHome home;
        const QString path = home.write(u"a"_s, QByteArray(100000, 'x'));
        QVERIFY(replaceFile(path, "").has_value());
        QCOMPARE(QFileInfo(path).size(), 0);
    }

    void replace_contentInPieces_isWrittenInOrder()
    {
        const TemporaryHome home;
        QByteArray expected;
        const auto result = replaceFile(home.file(u"a"_s), [&](const WriteBytes &write) {
            for (int i = 0; i < 300; ++i) {
                // Small pieces, and pieces larger than any buffer.
                const QByteArray piece(i % 50 == 49 ? 700000 : i, static_cast<char>('a' + i % 26));
                expected += piece;
                if (!write(piece))
                    return false;
            }
            return true;
        });
        QVERIFY(result.has_value());
        QVERIFY(home.read(u"a"_s) == expected);
    }

    void replace_symbolicLink_keepsItAndReplacesItsTarget()
    {
        const TemporaryHome home;
        home.write(u"far/target"_s, "old");
        QVERIFY(QFile::link(u"far/target"_s, home.file(u"link"_s)));
        QVERIFY(QFile::link(home.file(u"link"_s), home.file(u"link to link"_s)));
        QVERIFY(replaceFile(home.file(u"link to link"_s), "new").has_value());
        QVERIFY(S_ISLNK(statusOf(home.file(u"link to link"_s)).st_mode));
        QVERIFY(S_ISLNK(statusOf(home.file(u"link"_s)).st_mode));
        QVERIFY(S_ISREG(statusOf(home.file(u"far/target"_s)).st_mode));
        QCOMPARE(home.read(u"far/target"_s), "new"_ba);
        QCOMPARE(entriesOf(home.file(u"far"_s)), QStringList{u"target"_s});
    }

    void replace_danglingLink_createsItsTarget()
    {
        const TemporaryHome home;
        QVERIFY(QFile::link(u"later"_s, home.file(u"link"_s)));
        QVERIFY(replaceFile(home.file(u"link"_s), "new").has_value());
        QVERIFY(S_ISLNK(statusOf(home.file(u"link"_s)).st_mode));
        QCOMPARE(home.read(u"later"_s), "new"_ba);
    }

    void replace_ringOfLinks_fails()
    {
        const TemporaryHome home;
        QVERIFY(QFile::link(u"b"_s, home.file(u"a"_s)));
        QVERIFY(QFile::link(u"a"_s, home.file(u"b"_s)));
        const auto result = replaceFile(home.file(u"a"_s), "new");
        QCOMPARE(result.error(), (FileError{FileError::Kind::InvalidPath, ELOOP}));
    }

    void replace_relativePath_isBelowTheCurrentFolder()
    {
        const TemporaryHome home;
        const QString former = QDir::currentPath();
        QVERIFY(QDir::setCurrent(home.path()));
        const auto result = replaceFile(u"bare name"_s, "x");
        QDir::setCurrent(former);
        QVERIFY(result.has_value());
        QCOMPARE(home.read(u"bare name"_s), "x"_ba);
    }

    void replace_nameOfFullLength_succeeds()
    {
        const TemporaryHome home;
        const QString name(NAME_MAX, u'n');
        QVERIFY(replaceFile(home.file(name), "x").has_value());
        QCOMPARE(replaceFile(home.file(name + u'n'), "x").error().kind,
                 FileError::Kind::InvalidPath);
    }

    void replace_pathThatNoFileCanHave_fails()
    {
        const TemporaryHome home;
        QCOMPARE(replaceFile({}, "x").error().kind, FileError::Kind::InvalidPath);
        const QString cut = home.file(u"cut"_s) + QChar(u'\0') + u"tail"_s;
        QCOMPARE(replaceFile(cut, "x").error().kind, FileError::Kind::InvalidPath);
        QVERIFY(entriesOf(home.path()).isEmpty());
    }

    void replace_missingFolder_fails()
    {
        const TemporaryHome home;
        const auto result = replaceFile(home.file(u"gone/a"_s), "x");
        QCOMPARE(result.error(), (FileError{FileError::Kind::NotFound, ENOENT}));
        QVERIFY(entriesOf(home.path()).isEmpty());
    }

    void replace_fileInTheFoldersPlace_fails()
    {
        const TemporaryHome home;
        home.write(u"folder"_s, "a file");
        const auto result = replaceFile(home.file(u"folder/a"_s), "x");
        QCOMPARE(result.error(), (FileError{FileError::Kind::NotFound, ENOTDIR}));
        QCOMPARE(home.read(u"folder"_s), "a file"_ba);
    }

    void replace_folderVanishesMeanwhile_failsAndLeavesNothing()
    {
        const TemporaryHome home;
        home.write(u"folder/a"_s, "old");
        const auto result = replaceFile(home.file(u"folder/a"_s), [&](const WriteBytes &write) {
            return write("new") && QDir().rename(home.file(u"folder"_s), home.file(u"moved"_s));
        });
        QCOMPARE(result.error(), (FileError{FileError::Kind::NotFound, ENOENT}));
        QCOMPARE(home.read(u"moved/a"_s), "old"_ba);
    }

    void replace_targetIsFolder_fails()
    {
        const TemporaryHome home;
        home.write(u"folder/inside"_s, "x");
        const auto result = replaceFile(home.file(u"folder"_s), "x");
        QCOMPARE(result.error(), (FileError{FileError::Kind::IsFolder, EISDIR}));
        QCOMPARE(entriesOf(home.file(u"folder"_s)), QStringList{u"inside"_s});
    }

    void replace_targetBecomesFolderMeanwhile_failsAndLeavesNothing()
    {
        const TemporaryHome home;
        const auto result = replaceFile(home.file(u"a"_s), [&](const WriteBytes &write) {
            return write("new") && QDir().mkdir(home.file(u"a"_s));
        });
        QCOMPARE(result.error(), (FileError{FileError::Kind::IsFolder, EISDIR}));
        QCOMPARE(entriesOf(home.path()), QStringList{u"a"_s});
    }

    void replace_device_isRefusedAndStays()
    {
        const TemporaryHome home;
        QVERIFY(QFile::link(u"/dev/full"_s, home.file(u"full"_s)));
        QCOMPARE(replaceFile(home.file(u"full"_s), "x").error().kind, FileError::Kind::NotRegular);
        QVERIFY(S_ISCHR(statusOf(u"/dev/full"_s).st_mode));
    }

    void replace_noSpace_keepsTheOldFileAndLeavesNothing_data()
    {
        QTest::addColumn<int>("size");
        QTest::newRow("found when the buffer is flushed") << 9000;
        QTest::newRow("found while writing") << 3000000;
    }

    void replace_noSpace_keepsTheOldFileAndLeavesNothing()
    {
        QFETCH(int, size);
        const TemporaryHome home;
        const QString path = home.write(u"a"_s, "old");
        tl::expected<void, FileError> result;
        {
            const FileSizeLimit limit(8192);
            result = replaceFile(path, QByteArray(size, 'x'));
        }
        QCOMPARE(result.error(), (FileError{FileError::Kind::NoSpace, EFBIG}));
        QCOMPARE(home.read(u"a"_s), "old"_ba);
        QCOMPARE(entriesOf(home.path()), QStringList{u"a"_s});
    }

    void replace_noSpace_stopsTheProducer()
    {
        const TemporaryHome home;
        int accepted = 0;
        {
            const FileSizeLimit limit(8192);
            const auto result = replaceFile(home.file(u"a"_s), [&](const WriteBytes &write) {
                while (accepted < 1000 && write(QByteArray(100000, 'x')))
                    ++accepted;
                return false;
            });
            QCOMPARE(result.error().kind, FileError::Kind::NoSpace);
        }
        QVERIFY(accepted < 10);
    }

    void replace_producerGivesUp_keepsTheOldFileAndLeavesNothing()
    {
        const TemporaryHome home;
        const QString path = home.write(u"a"_s, "old");
        const auto result =
            replaceFile(path, [](const WriteBytes &write) { return write("half") && false; });
        QCOMPARE(result.error().kind, FileError::Kind::Cancelled);
        QCOMPARE(home.read(u"a"_s), "old"_ba);
        QCOMPARE(entriesOf(home.path()), QStringList{u"a"_s});
    }

    void replace_unwantedOnceItIsOnTheDisk_keepsTheOldFileAndLeavesNothing()
    {
        const TemporaryHome home;
        const QString path = home.write(u"a"_s, "old");
        const auto produce = [](const WriteBytes &write) { return write("new"); };
        int asked = 0;
        const auto refused = replaceFile(path, produce, [&] { return ++asked < 0; });
        QCOMPARE(refused.error().kind, FileError::Kind::Cancelled);
        QCOMPARE(asked, 1);
        QCOMPARE(home.read(u"a"_s), "old"_ba);
        QCOMPARE(entriesOf(home.path()), QStringList{u"a"_s});
        QVERIFY(replaceFile(path, produce, [] { return true; }).has_value());
        QCOMPARE(home.read(u"a"_s), "new"_ba);
    }

    void replace_writeProtectedFileOrFolder_fails()
    {
        if (::geteuid() != 0)
            QSKIP("Only root can take on another user to be refused as.");
        const TemporaryHome home;
        const QString path = home.write(u"protected"_s, "old");
        const QByteArray folder = QFile::encodeName(home.path());
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0444), 0);
        QCOMPARE(::chmod(folder.constData(), 0777), 0);
        const auto onFile = asUnprivilegedUser([&] { return replaceFile(path, "new"); });
        const auto elsewhere =
            asUnprivilegedUser([&] { return replaceFile(home.file(u"free"_s), "new"); });
        QCOMPARE(::chmod(folder.constData(), 0755), 0);
        const auto inFolder =
            asUnprivilegedUser([&] { return replaceFile(home.file(u"more"_s), "new"); });
        QCOMPARE(onFile.error(), (FileError{FileError::Kind::PermissionDenied, EACCES}));
        QVERIFY(elsewhere.has_value());
        QCOMPARE(inFolder.error(), (FileError{FileError::Kind::PermissionDenied, EACCES}));
        QCOMPARE(home.read(u"protected"_s), "old"_ba);
        QCOMPARE(entriesOf(home.path()), (QStringList{u"free"_s, u"protected"_s}));
    }

    void replace_accessControlList_isKept()
    {
        const TemporaryHome home;
        const QString path = home.write(u"old.txt"_s, "old");
        const QByteArray list = accessList(1234);
        if (::setxattr(QFile::encodeName(path).constData(),
                       "system.posix_acl_access",
                       list.constData(),
                       static_cast<size_t>(list.size()),
                       0) != 0)
            QSKIP("This file system has no access control lists.");
        const struct stat before = statusOf(path);
        QVERIFY(replaceFile(path, "new").has_value());
        QVERIFY(statusOf(path).st_ino != before.st_ino);
        QCOMPARE(modeOf(path), before.st_mode & ALLPERMS);
        QByteArray kept(100, '\0');
        kept.truncate(::getxattr(QFile::encodeName(path).constData(),
                                 "system.posix_acl_access",
                                 kept.data(),
                                 static_cast<size_t>(kept.size())));
        QCOMPARE(kept, list);
    }

    void replace_folderWithADefaultList_addsNoRights()
    {
        const TemporaryHome home;
        const QString path = home.write(u"folder/old.txt"_s, "old");
        const QByteArray list = accessList(1234);
        if (::setxattr(QFile::encodeName(home.file(u"folder"_s)).constData(),
                       "system.posix_acl_default",
                       list.constData(),
                       static_cast<size_t>(list.size()),
                       0) != 0)
            QSKIP("This file system has no access control lists.");
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0640), 0);
        QVERIFY(replaceFile(path, "new").has_value());
        QCOMPARE(modeOf(path), 0640U);
        char value[100];
        QCOMPARE(::getxattr(QFile::encodeName(path).constData(),
                            "system.posix_acl_access",
                            value,
                            sizeof value),
                 ssize_t{-1});
    }

    void replace_setUserId_isKept()
    {
        const TemporaryHome home;
        const QString path = home.write(u"tool"_s, "old");
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 06755), 0);
        QVERIFY(replaceFile(path, "new").has_value());
        QCOMPARE(modeOf(path), 06755U);
    }

    void replace_whileAnotherProcessSaves_leavesItsFileAlone()
    {
        const TemporaryHome home;
        const QString path = home.write(u"a"_s, "old");
        TemporaryFile theirs(QFile::encodeName(path));
        QVERIFY(theirs.create(0600, TemporaryFile::Name::FromTheStart).has_value());
        QVERIFY(replaceFile(path, "ours").has_value());
        QCOMPARE(entriesOf(home.path()).size(), 2);
        QCOMPARE(home.read(u"a"_s), "ours"_ba);
        QVERIFY(theirs.replaceTarget().has_value());
        QCOMPARE(entriesOf(home.path()), QStringList{u"a"_s});
    }

    void version_afterReplacing_isThatOfTheFile()
    {
        const TemporaryHome home;
        const QString path = home.file(u"a"_s);
        for (const char *content : {"new", "newer"}) {
            const auto version = replaceFile(
                path, [content](const WriteBytes &write) { return write(QByteArray(content)); });
            QVERIFY(version.has_value());
            QVERIFY(FileVersion::of(path) == *version);
        }
    }
};

QTEST_APPLESS_MAIN(AtomicFileTest)
#include "AtomicFileTest.moc"

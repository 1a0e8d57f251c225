#include "platform/files/FileSystem.h"

#include "support/CurrentFolder.h"
#include "support/TemporaryHome.h"
#include "support/UnprivilegedUser.h"

#include <QTest>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

class FileSystemTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void currentFolder_nameOfAnyBytes_isKept()
    {
        const TemporaryHome home;
        const CurrentFolder current(QFile::encodeName(home.path()) + "/a\xff");
        QCOMPARE(currentFolder().value(), QFile::encodeName(home.path()) + "/a\xff");
    }

    void currentFolder_longPath_isWhole()
    {
        const TemporaryHome home;
        const CurrentFolder current(QFile::encodeName(home.path()));
        QByteArray path = QFile::encodeName(home.path());
        const QByteArray name(200, 'x');
        for (int i = 0; i < 5; ++i) {
            QVERIFY(::mkdir(name.constData(), S_IRWXU) == 0 && ::chdir(name.constData()) == 0);
            path += '/' + name;
        }
        QCOMPARE(currentFolder().value(), path);
    }

    void currentFolder_thatWasRemoved_isNotFound()
    {
        const TemporaryHome home;
        const CurrentFolder current(QFile::encodeName(home.file(u"gone"_s)));
        QVERIFY(QDir().rmdir(home.file(u"gone"_s)));
        QCOMPARE(currentFolder().error().kind, FileError::Kind::NotFound);
    }

    void readFile_anyBytes_givesThemAll_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("NUL and bytes that are no text") << QByteArray("a\0\xFF\r\n", 5);
        for (const int size : {4095, 4096, 4097, 1000000})
            QTest::addRow("%d bytes", size) << QByteArray(size, 'x');
    }

    void readFile_anyBytes_givesThemAll()
    {
        QFETCH(QByteArray, content);
        const TemporaryHome home;
        QVERIFY(readFile(home.write(u"a"_s, content)).value() == content);
    }

    void readFileInBlocks_largeFile_givesAllOfItInOrder()
    {
        const TemporaryHome home;
        QByteArray content;
        for (int i = 0; i < 200'000; ++i)
            content += QByteArray::number(i);
        QByteArray read;
        int blocks = 0;
        QVERIFY(readFileInBlocks(home.write(u"a"_s, content), [&](QByteArrayView block) {
            read.append(block);
            return ++blocks > 0;
        }));
        QVERIFY(read == content);
        QVERIFY(blocks > 1);
    }

    void readFileInBlocks_reader_canStopIt()
    {
        const TemporaryHome home;
        const auto read =
            readFileInBlocks(home.write(u"a"_s, "abc"), [](QByteArrayView) { return false; });
        QCOMPARE(read.error().kind, FileError::Kind::Cancelled);
        QCOMPARE(
            readFileInBlocks(home.file(u"gone"_s), [](QByteArrayView) { return true; }).error(),
            (FileError{FileError::Kind::NotFound, ENOENT}));
    }

    void readFile_fileThatHidesItsSize_isReadToItsEnd()
    {
        const auto content = readFile(u"/proc/self/maps"_s);
        QVERIFY(content.has_value());
        QVERIFY(content->contains("FileSystemTest"));
    }

    void readFile_notReadable_failsWithItsReason()
    {
        const TemporaryHome home;
        home.write(u"file"_s, "x");
        QCOMPARE(::mkfifo(QFile::encodeName(home.file(u"pipe"_s)).constData(), 0600), 0);
        using Kind = FileError::Kind;
        QCOMPARE(readFile(home.file(u"gone"_s)).error(), (FileError{Kind::NotFound, ENOENT}));
        QCOMPARE(readFile(home.file(u"file/a"_s)).error(), (FileError{Kind::NotFound, ENOTDIR}));
        QCOMPARE(readFile(home.path()).error(), (FileError{Kind::IsFolder, EISDIR}));
        QCOMPARE(readFile(home.file(u"pipe"_s)).error(), (FileError{Kind::NotRegular, 0}));
        QCOMPARE(readFile({}).error(), (FileError{Kind::InvalidPath, 0}));
        QCOMPARE(readFile(home.file(u"file"_s) + QChar(u'\0')).error(),
                 (FileError{Kind::InvalidPath, 0}));
    }

    void readFile_notAllowed_isPermissionDenied()
    {
        if (::geteuid() != 0)
            QSKIP("Only root can take on another user to be refused as.");
        const TemporaryHome home;
        const QString path = home.write(u"secret"_s, "x");
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0600), 0);
        QCOMPARE(::chmod(QFile::encodeName(home.path()).constData(), 0755), 0);
        const auto result = asUnprivilegedUser([&] { return readFile(path); });
        QCOMPARE(result.error(), (FileError{FileError::Kind::PermissionDenied, EACCES}));
    }

    void removeFile_file_removesItAndOnlyIt()
    {
        const TemporaryHome home;
        home.write(u"target"_s, "x");
        QVERIFY(QFile::link(u"target"_s, home.file(u"link"_s)));
        QVERIFY(removeFile(home.file(u"link"_s)).has_value());
        QCOMPARE(folderEntries(home.path()).value(), QStringList{u"target"_s});
        QCOMPARE(removeFile(home.file(u"link"_s)).error().kind, FileError::Kind::NotFound);
        QCOMPARE(removeFile(home.path()).error().kind, FileError::Kind::IsFolder);
    }

    void createFolder_missingFolders_createsThemAll()
    {
        const TemporaryHome home;
        QVERIFY(createFolder(home.file(u"a/b/c"_s)).has_value());
        QVERIFY(createFolder(home.file(u"a/b/c/"_s)).has_value());
        QVERIFY(QFileInfo(home.file(u"a/b/c"_s)).isDir());
    }

    void createFolder_fileInTheWay_fails()
    {
        const TemporaryHome home;
        home.write(u"a"_s, "x");
        QCOMPARE(createFolder(home.file(u"a/b"_s)).error().errnoValue, EEXIST);
        QCOMPARE(home.read(u"a"_s), "x"_ba);
    }

    void folderEntries_folder_listsAllByName()
    {
        const TemporaryHome home;
        for (const auto &name : {u"b"_s, u".hidden"_s, u"日本"_s, u"B"_s, u"folder/x"_s})
            home.write(name, {});
        QCOMPARE(folderEntries(home.path()).value(),
                 (QStringList{u".hidden"_s, u"B"_s, u"b"_s, u"folder"_s, u"日本"_s}));
        QCOMPARE(folderEntries(home.file(u"gone"_s)).error(),
                 (FileError{FileError::Kind::NotFound, ENOENT}));
        QCOMPARE(folderEntries(home.file(u"b"_s)).error(),
                 (FileError{FileError::Kind::NotFound, ENOTDIR}));
    }

    void description_anyError_isNotEmpty()
    {
        QCOMPARE(FileError::fromErrno(ENOENT).description(), u"No such file or directory"_s);
        QCOMPARE(FileError::fromErrno(EROFS).kind, FileError::Kind::PermissionDenied);
        QCOMPARE(FileError::fromErrno(ENOSPC).kind, FileError::Kind::NoSpace);
        for (int kind = 0; kind <= static_cast<int>(FileError::Kind::Other); ++kind) {
            const FileError error{static_cast<FileError::Kind>(kind), 0};
            QVERIFY(!error.description().isEmpty());
        }
    }
};

QTEST_APPLESS_MAIN(FileSystemTest)
#include "FileSystemTest.moc"

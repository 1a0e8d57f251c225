#include "editor/TextDocument.h"

#include "editor/ParallelUtf8Reader.h"
#include "support/FileSizeLimit.h"
#include "support/HugeText.h"
#include "support/Waits.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <chrono>
#include <thread>

using namespace penwick;
using test::hugeText;
using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::hours kForever{1};

/// 3 MB. The first piece of it ends with a whole line.
const QByteArray kLarge = QByteArray("行\n").repeated(750'000);

void writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

/// True while this process has a descriptor of the file.
bool isOpenHere(const QString &path)
{
    const QFileInfoList descriptors =
        QDir(u"/proc/self/fd"_s).entryInfoList(QDir::AllEntries | QDir::System);
    return std::any_of(descriptors.begin(), descriptors.end(), [&path](const QFileInfo &info) {
        return info.symLinkTarget() == path;
    });
}

} // namespace

class TextDocumentTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void newDocument_isEmptyUntitledAndUnedited();
    void bytes_openedAndSaved_comeBackExactly_data();
    void bytes_openedAndSaved_comeBackExactly();
    void byteOrderMark_opened_isFirstCharacter();
    void invalidByte_anywhere_failsAsAWhole_data();
    void invalidByte_anywhere_failsAsAWhole();
    void typeName_anything_hasNoEffect();
    void contentString_asProperty_isReadAndWritten();
    void write_largeText_matchesDataOfType();
    void write_rightAfterAnEdit_writesIt();
    void write_success_setsSavePointAndPath();
    void write_failure_leavesDocumentAndPath();
    void write_fileThatIsGone_isRefusedWhereWanted();
    void write_throughSymbolicLink_keepsLinkAndMode();
    void read_missingFile_isNotFound();
    void read_folder_fails();
    void write_afterForeignWrite_isRefusedUntilAccepted();
    void reading_onAnotherThread_endsAsReadAtOnce();
    void reading_invalidLastByte_failsAsAWhole();
    void reading_cancelled_leavesTheDocument();
    void reading_documentDestroyed_isCancelled();
    void pausedReading_resumed_isRead();
    void pausedReading_resumedBeforeItPauses_isRead();
    void pausedReading_timePassed_isRead();
    void pausedReading_cancelled_ends();
    void pausedReading_documentDestroyed_ends();
    void pausedReading_invalidStart_failsAtOnce();
    void writing_editedMeanwhile_writesTheTextOfItsStart();
    void writing_cancelled_keepsTheOldFile();
    void writing_noSpace_keepsTheOldFile();
    void writing_failure_leavesDocumentAndPath();
    void waiting_forATransfer_reportsItsEndOnce();

private:
    void startPausedReading(TextDocument &document);
    /// Waits for the end of the document's transfer, and returns its error.
    static std::optional<DocumentError> endOf(TextDocument &document);

    [[nodiscard]] QString path(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TextDocumentTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void TextDocumentTest::newDocument_isEmptyUntitledAndUnedited()
{
    const TextDocument document;
    QVERIFY(document.contentString().isEmpty());
    QVERIFY(document.filePath().isEmpty());
    QVERIFY(!document.isEdited());
    QVERIFY(!document.fileVersion());
    QVERIFY(!TextDocument::autosavesInPlace());
}

void TextDocumentTest::bytes_openedAndSaved_comeBackExactly_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF"
                                                   "abc\n");
    QTest::newRow("CR LF") << QByteArray("a\r\nb\r\n");
    QTest::newRow("mixed line ends") << QByteArray("a\r\nb\nc\rd");
    QTest::newRow("no final newline") << QByteArray("abc");
    QTest::newRow("NUL") << QByteArray("a\0b", 3);
    QTest::newRow("NBSP, NEL, U+2028, U+2029")
        << QByteArray("\xC2\xA0\xC2\x85\xE2\x80\xA8\xE2\x80\xA9");
    QTest::newRow("noncharacters") << QByteArray("\xEF\xB7\x90\xEF\xBF\xBE\xEF\xBF\xBF");
    QTest::newRow("Japanese and emoji") << QByteArray("日本語👨‍👩‍👧\n");
}

void TextDocumentTest::bytes_openedAndSaved_comeBackExactly()
{
    QFETCH(QByteArray, bytes);
    writeBytes(path(u"a.txt"_s), bytes);
    TextDocument document;
    QVERIFY(document.readFromFile(path(u"a.txt"_s)).has_value());
    QCOMPARE(document.dataOfType().value(), bytes);
    QVERIFY(document.writeToFile(path(u"b.txt"_s)).has_value());
    QCOMPARE(bytesOf(path(u"b.txt"_s)), bytes);
}

void TextDocumentTest::byteOrderMark_opened_isFirstCharacter()
{
    TextDocument document;
    QVERIFY(document.readFromData(QByteArrayView("\xEF\xBB\xBFx")).has_value());
    QCOMPARE(document.contentString().size(), 2);
    QCOMPARE(document.contentString().at(0), u'\uFEFF');
}

void TextDocumentTest::invalidByte_anywhere_failsAsAWhole_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("first") << QByteArray("\xFF"
                                         "abc");
    QTest::newRow("last") << QByteArray("abc\x80");
    QTest::newRow("truncated sequence") << QByteArray("abc\xE3\x81");
    QTest::newRow("surrogate") << QByteArray("a\xED\xA0\x80z");
    QTest::newRow("overlong") << QByteArray("a\xC0\xAFz");
    QTest::newRow("Shift_JIS") << QByteArray("\x93\xFA\x96\x7B");
    QTest::newRow("UTF-16") << QByteArray("\xFF\xFE"
                                          "a\0",
                                          4);
}

void TextDocumentTest::invalidByte_anywhere_failsAsAWhole()
{
    QFETCH(QByteArray, bytes);
    TextDocument document;
    document.setContentString(Text(u"before"));
    const auto read = document.readFromData(bytes);
    QVERIFY(!read.has_value());
    QVERIFY(read.error() == kUnsupportedContent);
    QVERIFY(read.error().domain == DocumentError::Domain::NSOSStatusErrorDomain);
    QCOMPARE(read.error().code, -4);
    QCOMPARE(document.contentString().toString(), u"before"_s);

    writeBytes(path(u"bad.txt"_s), bytes);
    QVERIFY(document.readFromFile(path(u"bad.txt"_s)).error() == kUnsupportedContent);
    QVERIFY(document.filePath().isEmpty());
}

void TextDocumentTest::typeName_anything_hasNoEffect()
{
    for (const QString &type : {u"public.plain-text"_s, u"com.adobe.pdf"_s, QString()}) {
        TextDocument document;
        QVERIFY(document.readFromData(QByteArrayView("a\r\nb"), type).has_value());
        QCOMPARE(document.dataOfType(type).value(), QByteArray("a\r\nb"));
    }
}

void TextDocumentTest::contentString_asProperty_isReadAndWritten()
{
    TextDocument document;
    const QSignalSpy spy(&document, &TextDocument::contentStringChanged);
    QVERIFY(document.setProperty("contentString", QVariant::fromValue(Text(u"x"))));
    QCOMPARE(document.property("contentString").value<Text>().toString(), u"x"_s);
    QCOMPARE(spy.count(), 1);
}

void TextDocumentTest::write_largeText_matchesDataOfType()
{
    TextDocument document;
    QString text;
    for (int i = 0; i < 50'000; ++i)
        text += u"行 "_s + QString::number(i) + u" 😀 abc\r\n"_s;
    document.setContentString(Text(text));
    QVERIFY(document.writeToFile(path(u"large.txt"_s)).has_value());
    QVERIFY(bytesOf(path(u"large.txt"_s)) == text.toUtf8());
}

void TextDocumentTest::write_rightAfterAnEdit_writesIt()
{
    TextDocument document;
    document.textStorage()->replaceCharacters({}, Text(u"typed last"));
    QVERIFY(document.writeToFile(path(u"a.txt"_s)).has_value());
    QCOMPARE(bytesOf(path(u"a.txt"_s)), QByteArray("typed last"));
}

void TextDocumentTest::write_success_setsSavePointAndPath()
{
    TextDocument document;
    const QSignalSpy edited(&document, &TextDocument::editedChanged);
    const QSignalSpy moved(&document, &TextDocument::filePathChanged);
    document.textStorage()->replaceCharacters({0, 0}, Text(u"x"));
    QVERIFY(document.isEdited());
    QVERIFY(document.writeToFile(path(u"a.txt"_s)).has_value());
    QVERIFY(!document.isEdited());
    QCOMPARE(document.filePath(), path(u"a.txt"_s));
    QCOMPARE(edited.count(), 2);
    QCOMPARE(moved.count(), 1);
}

void TextDocumentTest::write_failure_leavesDocumentAndPath()
{
    TextDocument document;
    document.textStorage()->replaceCharacters({0, 0}, Text(u"x"));
    const auto written = document.writeToFile(path(u"gone/a.txt"_s));
    QVERIFY(!written.has_value());
    QVERIFY(written.error().domain == DocumentError::Domain::NSPOSIXErrorDomain);
    QVERIFY(written.error().fileErrorKind == FileError::Kind::NotFound);
    QVERIFY(document.isEdited());
    QVERIFY(document.filePath().isEmpty());
}

void TextDocumentTest::write_fileThatIsGone_isRefusedWhereWanted()
{
    TransferProgress progress;
    Replaceable existing;
    existing.missing = false;
    const auto refused = writeTextFile(path(u"gone.txt"_s), Text(u"x"), progress, existing);
    QVERIFY(!refused.has_value());
    QVERIFY(refused.error().fileErrorKind == FileError::Kind::Changed);
    QVERIFY(!QFile::exists(path(u"gone.txt"_s)));
    QVERIFY(writeTextFile(path(u"gone.txt"_s), Text(u"x"), progress).has_value());
    QVERIFY(writeTextFile(path(u"gone.txt"_s), Text(u"y"), progress, existing).has_value());
}

void TextDocumentTest::write_throughSymbolicLink_keepsLinkAndMode()
{
    writeBytes(path(u"real.txt"_s), "old");
    const auto mode = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
    QVERIFY(QFile::setPermissions(path(u"real.txt"_s), mode));
    QVERIFY(QFile::link(path(u"real.txt"_s), path(u"link.txt"_s)));
    TextDocument document;
    QVERIFY(document.readFromFile(path(u"link.txt"_s)).has_value());
    document.setContentString(Text(u"new"));
    QVERIFY(document.writeToFile(document.filePath()).has_value());
    QVERIFY(QFileInfo(path(u"link.txt"_s)).isSymLink());
    QCOMPARE(bytesOf(path(u"real.txt"_s)), QByteArray("new"));
    const auto kept = QFile::permissions(path(u"real.txt"_s));
    QVERIFY(kept.testFlag(QFile::ReadGroup));
    QVERIFY(!kept.testFlag(QFile::ReadOther));
}

void TextDocumentTest::read_missingFile_isNotFound()
{
    TextDocument document;
    const auto read = document.readFromFile(path(u"missing.txt"_s));
    QVERIFY(read.error().fileErrorKind == FileError::Kind::NotFound);
}

void TextDocumentTest::read_folder_fails()
{
    TextDocument document;
    QVERIFY(!document.readFromFile(m_folder->path()).has_value());
}

void TextDocumentTest::write_afterForeignWrite_isRefusedUntilAccepted()
{
    writeBytes(path(u"a.txt"_s), "one");
    TextDocument document;
    QVERIFY(document.readFromFile(path(u"a.txt"_s)).has_value());
    writeBytes(path(u"a.txt"_s), "one, two");
    const auto refused = document.writeToFile(path(u"a.txt"_s));
    QCOMPARE(refused.error().fileErrorKind, FileError::Kind::Changed);
    QCOMPARE(bytesOf(path(u"a.txt"_s)), QByteArray("one, two"));
    document.acceptFileVersion(FileVersion::of(path(u"a.txt"_s)));
    QVERIFY(document.writeToFile(path(u"a.txt"_s)).has_value());
    QCOMPARE(bytesOf(path(u"a.txt"_s)), QByteArray("one"));
}

std::optional<DocumentError> TextDocumentTest::endOf(TextDocument &document)
{
    bool hasEnded = false;
    std::optional<DocumentError> result;
    const QObject context;
    connect(&document,
            &TextDocument::transferEnded,
            &context,
            [&](TextDocument::Transfer /*transfer*/, const std::optional<DocumentError> &error) {
                hasEnded = true;
                result = error;
            });
    [&] { QTRY_VERIFY_WITH_TIMEOUT(hasEnded, test::kLongWait); }();
    return result;
}

void TextDocumentTest::reading_onAnotherThread_endsAsReadAtOnce()
{
    QByteArray bytes;
    while (bytes.size() < 3'000'000)
        bytes += "日本語 and ASCII\r\n";
    writeBytes(path(u"a.txt"_s), bytes);
    TextDocument document;
    const QSignalSpy started(&document, &TextDocument::transferStarted);
    document.startReading(path(u"a.txt"_s));
    QCOMPARE(started.count(), 1);
    QVERIFY(document.isReading());
    QCOMPARE(document.transferPath(), path(u"a.txt"_s));
    QVERIFY(document.contentString().isEmpty());
    QVERIFY(!endOf(document).has_value());
    QVERIFY(document.transfer() == TextDocument::Transfer::None);
    QVERIFY(document.contentString().toUtf8() == bytes);
    QCOMPARE(document.filePath(), path(u"a.txt"_s));
    QVERIFY(document.fileVersion() == FileVersion::of(path(u"a.txt"_s)));
}

void TextDocumentTest::reading_invalidLastByte_failsAsAWhole()
{
    writeBytes(path(u"a.txt"_s), QByteArray(2'000'000, 'x') + '\xFF');
    TextDocument document;
    document.setContentString(Text(u"before"));
    document.startReading(path(u"a.txt"_s));
    QVERIFY(endOf(document) == kUnsupportedContent);
    QCOMPARE(document.contentString().toString(), u"before"_s);
    QVERIFY(document.filePath().isEmpty());
}

void TextDocumentTest::reading_cancelled_leavesTheDocument()
{
    // The user has cancelled, so the text is discarded even if all of it has been read by then.
    writeBytes(path(u"a.txt"_s), "short");
    TextDocument document;
    document.startReading(path(u"a.txt"_s));
    document.cancelTransfer();
    const auto error = endOf(document);
    QVERIFY(error.has_value() && error->isCancellation());
    QVERIFY(document.contentString().isEmpty());
    QVERIFY(document.filePath().isEmpty());
}

void TextDocumentTest::reading_documentDestroyed_isCancelled()
{
    constexpr qint64 kSize = 1'000'000'000; // Takes long to read; the file itself is sparse.
    writeBytes(path(u"a.txt"_s), {});
    QVERIFY(QFile::resize(path(u"a.txt"_s), kSize));
    auto document = std::make_unique<TextDocument>();
    const QSignalSpy ended(document.get(), &TextDocument::transferEnded);
    document->startReading(path(u"a.txt"_s));
    const QDeadlineTimer deadline(test::kLongWait);
    while (!isOpenHere(path(u"a.txt"_s)) && !deadline.hasExpired())
        std::this_thread::yield();
    QVERIFY(isOpenHere(path(u"a.txt"_s)));
    document.reset();
    QVERIFY(!isOpenHere(path(u"a.txt"_s)));
    QCoreApplication::processEvents();
    QCOMPARE(ended.count(), 0);
}

/// Starts to read 3 MB with a pause that only the test ends.
void TextDocumentTest::startPausedReading(TextDocument &document)
{
    writeBytes(path(u"a.txt"_s), kLarge);
    document.startReading(path(u"a.txt"_s), kForever);
    document.waitForText(std::chrono::milliseconds(test::kLongWait));
    QVERIFY(!document.readSoFar().isEmpty());
}

void TextDocumentTest::pausedReading_resumed_isRead()
{
    using namespace std::chrono_literals;
    TextDocument document;
    startPausedReading(document);
    // Reading takes some milliseconds only.
    QVERIFY(!document.waitForTransfer(300ms).has_value());
    QCOMPARE(document.readSoFar().toUtf8(), kLarge.first(ParallelUtf8Reader::kFirstPiece));
    document.resumeReading();
    QVERIFY(!endOf(document).has_value());
    QVERIFY(document.contentString().toUtf8() == kLarge);
}

void TextDocumentTest::pausedReading_resumedBeforeItPauses_isRead()
{
    writeBytes(path(u"a.txt"_s), kLarge);
    TextDocument document;
    document.startReading(path(u"a.txt"_s), kForever);
    document.resumeReading();
    QVERIFY(!endOf(document).has_value());
    QVERIFY(document.contentString().toUtf8() == kLarge);
}

void TextDocumentTest::pausedReading_timePassed_isRead()
{
    using namespace std::chrono_literals;
    writeBytes(path(u"a.txt"_s), kLarge);
    TextDocument document;
    document.startReading(path(u"a.txt"_s), 1ms);
    QVERIFY(!endOf(document).has_value());
    QVERIFY(document.contentString().toUtf8() == kLarge);
}

void TextDocumentTest::pausedReading_cancelled_ends()
{
    TextDocument document;
    startPausedReading(document);
    document.cancelTransfer();
    const auto error = endOf(document);
    QVERIFY(error.has_value() && error->isCancellation());
    QVERIFY(document.contentString().isEmpty());
}

void TextDocumentTest::pausedReading_documentDestroyed_ends()
{
    auto document = std::make_unique<TextDocument>();
    startPausedReading(*document);
    document.reset(); // Waits for the thread.
    QVERIFY(!isOpenHere(path(u"a.txt"_s)));
}

void TextDocumentTest::pausedReading_invalidStart_failsAtOnce()
{
    writeBytes(path(u"a.txt"_s), '\xFF' + kLarge);
    TextDocument document;
    document.startReading(path(u"a.txt"_s), kForever);
    QVERIFY(endOf(document) == kUnsupportedContent);
}

void TextDocumentTest::writing_editedMeanwhile_writesTheTextOfItsStart()
{
    TextDocument document;
    TextStorage &storage = *document.textStorage();
    connect(&storage, &TextStorage::changed, &document, [&] {});
    storage.replaceCharacters({0, 0}, hugeText(20));
    document.startWriting(path(u"a.txt"_s));
    QVERIFY(document.isWriting());
    storage.replaceCharacters({0, 0}, Text(u"typed meanwhile"));
    QVERIFY(!endOf(document).has_value());
    QCOMPARE(QFileInfo(path(u"a.txt"_s)).size(), 20'000'000);
    QCOMPARE(bytesOf(path(u"a.txt"_s)).first(5), QByteArray("xxxxx"));
    QVERIFY(document.isEdited());
    QCOMPARE(document.filePath(), path(u"a.txt"_s));
    storage.undo();
    QVERIFY(!document.isEdited());
    QVERIFY(document.fileVersion() == FileVersion::of(path(u"a.txt"_s)));
}

void TextDocumentTest::writing_cancelled_keepsTheOldFile()
{
    writeBytes(path(u"a.txt"_s), "old");
    TextDocument document;
    document.textStorage()->replaceCharacters({0, 0}, hugeText(300));
    document.startWriting(path(u"a.txt"_s));
    document.cancelTransfer();
    const auto error = endOf(document);
    QVERIFY(error.has_value() && error->isCancellation());
    QCOMPARE(bytesOf(path(u"a.txt"_s)), QByteArray("old"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"a.txt"_s});
    QVERIFY(document.isEdited());
    QVERIFY(document.filePath().isEmpty());
}

void TextDocumentTest::writing_noSpace_keepsTheOldFile()
{
    writeBytes(path(u"a.txt"_s), "old");
    TextDocument document;
    document.textStorage()->replaceCharacters({0, 0}, hugeText(3));
    std::optional<DocumentError> error;
    {
        const test::FileSizeLimit limit(1'000'000);
        document.startWriting(path(u"a.txt"_s));
        error = endOf(document);
    }
    QVERIFY(error.has_value() && error->fileErrorKind == FileError::Kind::NoSpace);
    QCOMPARE(bytesOf(path(u"a.txt"_s)), QByteArray("old"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"a.txt"_s});
    QVERIFY(document.isEdited());
}

void TextDocumentTest::writing_failure_leavesDocumentAndPath()
{
    TextDocument document;
    document.textStorage()->replaceCharacters({0, 0}, Text(u"x"));
    document.startWriting(path(u"gone/a.txt"_s));
    const auto error = endOf(document);
    QVERIFY(error.has_value() && error->fileErrorKind == FileError::Kind::NotFound);
    QVERIFY(document.isEdited());
    QVERIFY(document.filePath().isEmpty());
}

void TextDocumentTest::waiting_forATransfer_reportsItsEndOnce()
{
    using namespace std::chrono_literals;
    writeBytes(path(u"a.txt"_s), "abc");
    TextDocument document;
    QVERIFY(!document.waitForTransfer(1ms).has_value());
    const QSignalSpy ended(&document, &TextDocument::transferEnded);
    document.startReading(path(u"a.txt"_s));
    const auto outcome = document.waitForTransfer(60s);
    QVERIFY(outcome.has_value() && outcome->has_value());
    QCOMPARE(ended.count(), 1);
    QCOMPARE(document.contentString().toString(), u"abc"_s);
    QCoreApplication::processEvents();
    QCOMPARE(ended.count(), 1);
}

QTEST_GUILESS_MAIN(TextDocumentTest)
#include "TextDocumentTest.moc"

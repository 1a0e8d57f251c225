#include "recovery/RecoveryCopy.h"

#include "support/FileSizeLimit.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTest>

#include <sys/stat.h>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

const std::atomic<bool> kNotCancelled = false;

RecoveryUpdate updateTo(const QString &text, qint64 time = 1)
{
    RecoveryUpdate update;
    update.origin = {u"/folder/メモ.txt"_s, u"メモ.txt"_s, FileVersion{1, 2, 3, 4}};
    update.text = Text(text);
    update.caret = text.size();
    update.time = time;
    return update;
}

/// The update after `former`, with what differs as its one change.
RecoveryUpdate changedTo(const RecoveryUpdate &former, const QString &text, qint64 time)
{
    RecoveryUpdate update = updateTo(text, time);
    update.changes = {differenceBetween(former.text, update.text)};
    return update;
}

RecoveredText readBack(const QString &path)
{
    return RecoveryCopy::read(path, kNotCancelled).value_or(RecoveredText());
}

} // namespace

class RecoveryCopyTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void write_anyText_isReadBack_data();
    void write_anyText_isReadBack();
    void write_changes_areAppended();
    void write_manyChanges_compactsTheFile();
    void write_otherOrigin_isKept();
    void write_cancelled_keepsTheFormerText();
    void write_fails_nextWriteIsWhole();
    void write_newFile_isPrivate();
    void read_cutAnywhere_givesTheLastCompletedWrite();
    void read_anyByteDamaged_givesAStateOrReportsDamage();
    void read_damagedBlock_keepsTheLengthOfTheRest();
    void read_missingOrForeignFile_fails();

private:
    [[nodiscard]] QString path() const { return m_home.file(u"1.copy"_s); }

    test::TemporaryHome m_home;
};

void RecoveryCopyTest::write_anyText_isReadBack_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("mixed") << u"a\r\nあ\0😀\u2028é\n"_s;
    QTest::newRow("several blocks") << u"日本語の文章😀\n"_s.repeated(50'000);
}

void RecoveryCopyTest::write_anyText_isReadBack()
{
    QFETCH(const QString, text);
    RecoveryCopy copy(path());
    const RecoveryUpdate update = updateTo(text, 1234);
    QVERIFY(copy.write(update, kNotCancelled));
    const RecoveredText read = readBack(path());
    QCOMPARE(read.text.toString(), text);
    QCOMPARE(read.caret, text.size());
    QVERIFY(!read.isDamaged);
    QVERIFY(read.summary.origin == update.origin);
    const auto summary = RecoveryCopy::readSummary(path());
    QVERIFY(summary && summary->origin == update.origin);
    QCOMPARE(summary->time, 1234);
    QCOMPARE(summary->utf8Bytes, text.toUtf8().size());
    copy.remove();
    QVERIFY(!QFile::exists(path()));
}

void RecoveryCopyTest::write_changes_areAppended()
{
    RecoveryCopy copy(path());
    RecoveryUpdate update = updateTo(u"one two three"_s.repeated(1000));
    QVERIFY(copy.write(update, kNotCancelled));
    const qint64 size = QFile(path()).size();
    update = changedTo(update, u"x"_s + update.text.toString(), 2);
    QVERIFY(copy.write(update, kNotCancelled));
    QVERIFY(QFile(path()).size() < size + 300);
    update = changedTo(update, update.text.toString() + u"終"_s, 3);
    QVERIFY(copy.write(update, kNotCancelled));
    const RecoveredText read = readBack(path());
    QCOMPARE(read.text.toString(), update.text.toString());
    QCOMPARE(read.summary.time, 3);
}

void RecoveryCopyTest::write_manyChanges_compactsTheFile()
{
    RecoveryCopy copy(path());
    RecoveryUpdate update = updateTo(u"a"_s.repeated(200'000));
    QVERIFY(copy.write(update, kNotCancelled));
    qint64 largest = 0;
    for (int i = 0; i < 20; ++i) {
        update = changedTo(update, QString(QChar(u'b' + i)).repeated(200'000), i);
        QVERIFY(copy.write(update, kNotCancelled));
        QCOMPARE(readBack(path()).text.toString(), update.text.toString());
        largest = std::max(largest, QFile(path()).size());
    }
    QVERIFY2(largest > 1'000'000 && largest < 1'400'000, qPrintable(QString::number(largest)));
}

void RecoveryCopyTest::write_otherOrigin_isKept()
{
    RecoveryCopy copy(path());
    RecoveryUpdate update = updateTo(u"text"_s);
    QVERIFY(copy.write(update, kNotCancelled));
    update = changedTo(update, u"text 2"_s, 2);
    update.origin = {u"/other"_s, u"other"_s, std::nullopt};
    QVERIFY(copy.write(update, kNotCancelled));
    QVERIFY(readBack(path()).summary.origin == update.origin);
}

void RecoveryCopyTest::write_cancelled_keepsTheFormerText()
{
    RecoveryCopy copy(path());
    const RecoveryUpdate update = updateTo(u"old"_s);
    QVERIFY(copy.write(update, kNotCancelled));
    const std::atomic<bool> isCancelled = true;
    for (const RecoveryUpdate &next :
         {changedTo(update, u"appended"_s, 2), updateTo(u"whole"_s, 2)}) {
        const auto written = copy.write(next, isCancelled);
        QVERIFY(!written && written.error().kind == FileError::Kind::Cancelled);
        QCOMPARE(readBack(path()).text.toString(), u"old"_s);
    }
    QCOMPARE(QDir(m_home.path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"1.copy"_s});
}

void RecoveryCopyTest::write_fails_nextWriteIsWhole()
{
    RecoveryCopy copy(path());
    RecoveryUpdate update = updateTo(u"old"_s);
    QVERIFY(copy.write(update, kNotCancelled));
    {
        const test::FileSizeLimit limit(1000);
        const auto written = copy.write(changedTo(update, u"x"_s.repeated(5000), 2), kNotCancelled);
        QVERIFY(!written && written.error().kind == FileError::Kind::NoSpace);
    }
    QCOMPARE(readBack(path()).text.toString(), u"old"_s);
    QVERIFY(!readBack(path()).isDamaged);
    update = updateTo(u"x"_s.repeated(5001), 3);
    update.changes.emplace(); // From a text that is not in the file.
    QVERIFY(copy.write(update, kNotCancelled));
    QCOMPARE(readBack(path()).text.toString(), u"x"_s.repeated(5001));
}

void RecoveryCopyTest::write_newFile_isPrivate()
{
    RecoveryCopy copy(path());
    const mode_t former = ::umask(0);
    QVERIFY(copy.write(updateTo(u"secret"_s), kNotCancelled));
    ::umask(former);
    QCOMPARE(QFile(path()).permissions() &
                 (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther),
             QFile::Permissions());
}

void RecoveryCopyTest::read_cutAnywhere_givesTheLastCompletedWrite()
{
    RecoveryCopy copy(path());
    RecoveryUpdate update = updateTo(u"最初の文"_s);
    QVERIFY(copy.write(update, kNotCancelled));
    const qint64 first = QFile(path()).size();
    update = changedTo(update, u"最初の文章😀"_s, 2);
    QVERIFY(copy.write(update, kNotCancelled));
    const QByteArray whole = m_home.read(u"1.copy"_s);
    for (qsizetype length = whole.size(); length >= 0; --length) {
        m_home.write(u"cut.copy"_s, whole.first(length));
        const RecoveredText read = readBack(m_home.file(u"cut.copy"_s));
        if (length >= first) {
            QVERIFY(!read.isDamaged);
            QCOMPARE(read.text.toString(),
                     length == whole.size() ? u"最初の文章😀"_s : u"最初の文"_s);
        } else {
            QVERIFY(read.isDamaged);
            QVERIFY(read.text.isEmpty() || read.text.toString() == u"最初の文"_s);
        }
    }
}

void RecoveryCopyTest::read_anyByteDamaged_givesAStateOrReportsDamage()
{
    RecoveryCopy copy(path());
    RecoveryUpdate update = updateTo(u"first"_s);
    QVERIFY(copy.write(update, kNotCancelled));
    update = changedTo(update, u"first and second"_s, 2);
    QVERIFY(copy.write(update, kNotCancelled));
    const QByteArray whole = m_home.read(u"1.copy"_s);
    for (qsizetype place = 0; place < whole.size(); ++place) {
        QByteArray damaged = whole;
        damaged[place] = static_cast<char>(~damaged.at(place));
        m_home.write(u"damaged.copy"_s, damaged);
        const RecoveredText read = readBack(m_home.file(u"damaged.copy"_s));
        QVERIFY2(read.isDamaged, qPrintable(QString::number(place)));
        QVERIFY(read.caret <= read.text.size());
    }
}

void RecoveryCopyTest::read_damagedBlock_keepsTheLengthOfTheRest()
{
    RecoveryCopy copy(path());
    const QString text = u"0123456789"_s.repeated(100'000);
    RecoveryUpdate update = updateTo(text);
    QVERIFY(copy.write(update, kNotCancelled));
    QVERIFY(copy.write(changedTo(update, text + u"end"_s, 2), kNotCancelled));
    QByteArray bytes = m_home.read(u"1.copy"_s);
    bytes[bytes.size() / 2] = 'x';
    m_home.write(u"1.copy"_s, bytes);
    const RecoveredText read = readBack(path());
    QVERIFY(read.isDamaged);
    const QString damaged = read.text.toString();
    QCOMPARE(damaged.size(), text.size() + 3);
    const qsizetype lost = damaged.count(QChar::ReplacementCharacter);
    QVERIFY2(lost > 0 && lost < 200'000, qPrintable(QString::number(lost)));
    const qsizetype start = damaged.indexOf(QChar::ReplacementCharacter);
    QCOMPARE(damaged.first(start), text.first(start));
    QCOMPARE(damaged.sliced(start + lost), (text + u"end"_s).sliced(start + lost));
}

void RecoveryCopyTest::read_missingOrForeignFile_fails()
{
    const auto missing = RecoveryCopy::readSummary(m_home.file(u"2.copy"_s));
    QVERIFY(!missing && missing.error().kind == FileError::Kind::NotFound);
    m_home.write(u"1.copy"_s, QByteArray(1000, 'x'));
    const RecoveredText read = readBack(path());
    QVERIFY(read.isDamaged && read.text.isEmpty());
}

QTEST_GUILESS_MAIN(RecoveryCopyTest)
#include "RecoveryCopyTest.moc"

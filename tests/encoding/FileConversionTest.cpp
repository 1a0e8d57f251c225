#include "encoding/FileConversion.h"

#include "support/EncodedTexts.h"
#include "support/TemporaryHome.h"

#include <QTest>

#include <algorithm>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

QStringList namesOf(const std::vector<Candidate> &candidates)
{
    QStringList names;
    for (const Candidate &candidate : candidates)
        names += candidate.encoding->name;
    return names;
}

} // namespace

/// Tests of finding the encodings that decode a whole file, and of converting it.
class FileConversionTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void encoded_isListedFirstAndConverted_data() { test::addEncodedTexts(); }

    void encoded_isListedFirstAndConverted();
    void validInTwo_listsBothInOrder();
    void loneSurrogate_isNotListed();
    void truncated_isNotListed();
    void badByteFarInside_isNotListed();
    void preview_startsWithTheFirstLineOfInterest();
    void mark_isNotPartOfTheText();
    void changed_fails();
    void vanished_fails();
    void cancelled_fails();
    void progress_endsAtTheTotal();

private:
    std::vector<Candidate> candidates(const QByteArray &content)
    {
        const QString path = m_home.write(u"a"_s, content);
        TransferProgress progress;
        const auto found = findCandidates(path, FileVersion::of(path), progress);
        if (!found)
            QTest::qFail("No candidates.", __FILE__, __LINE__);
        return found.value_or(std::vector<Candidate>());
    }

    tl::expected<Text, ConversionError> convert(const QByteArray &content, const Encoding &encoding)
    {
        const QString path = m_home.write(u"a"_s, content);
        TransferProgress progress;
        return convertFile(path, encoding, FileVersion::of(path), progress);
    }

    test::TemporaryHome m_home;
};

void FileConversionTest::encoded_isListedFirstAndConverted()
{
    QFETCH(QString, encoding);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    const auto found = candidates(bytes);
    QVERIFY(!found.empty());
    QVERIFY2(found.front().encoding->name == encoding, qPrintable(namesOf(found).join(u", "_s)));
    const auto converted = convert(bytes, *found.front().encoding);
    QVERIFY(converted);
    QCOMPARE(converted->toString(), text);
    QCOMPARE(found.front().preview.value(0), text.split(u'\n').value(0).trimmed());
}

void FileConversionTest::validInTwo_listsBothInOrder()
{
    // A word of kana in EUC-JP, and the same bytes are letters in other encodings.
    const auto found = candidates("\xA4\xC6\xA4\xB9\xA4\xC8");
    const QStringList names = namesOf(found);
    QCOMPARE(names.value(0), u"EUC-JP"_s);
    QVERIFY(names.contains(u"GB18030"_s));
    QVERIFY(names.contains(u"Shift_JIS (CP932)"_s));
    QVERIFY(names.contains(u"Windows-1252"_s));
    QCOMPARE(namesOf(candidates("\xA4\xC6\xA4\xB9\xA4\xC8")), names);
    QVERIFY(std::is_sorted(found.begin(), found.end(), [](const auto &a, const auto &b) {
        return a.score > b.score;
    }));
}

void FileConversionTest::loneSurrogate_isNotListed()
{
    for (const bool isBigEndian : {false, true}) {
        const QString name = isBigEndian ? u"UTF-16 BE"_s : u"UTF-16 LE"_s;
        const QByteArray good = test::inUtf16(u"\uFEFF漢字とかな"_s, isBigEndian);
        QCOMPARE(namesOf(candidates(good)).value(0), name);
        const QByteArray lone = isBigEndian ? "\xD8\x3D" : "\x3D\xD8";
        QVERIFY(!namesOf(candidates(good + lone + good.sliced(2))).contains(name));
    }
}

void FileConversionTest::truncated_isNotListed()
{
    const QByteArray good("\x82\xB1\x82\xEA\x82\xCD");
    QCOMPARE(namesOf(candidates(good)).value(0), u"Shift_JIS (CP932)"_s);
    QVERIFY(!namesOf(candidates(good.chopped(1))).contains(u"Shift_JIS (CP932)"_s));
}

void FileConversionTest::badByteFarInside_isNotListed()
{
    const QByteArray good = QByteArray("\x82\xB1\x82\xEA\n").repeated(300'000);
    QCOMPARE(namesOf(candidates(good)).value(0), u"Shift_JIS (CP932)"_s);
    const QByteArray bad = good + '\xFD' + good;
    QVERIFY(!namesOf(candidates(bad)).contains(u"Shift_JIS (CP932)"_s));
    const auto converted = convert(bad, encodings().front());
    QVERIFY(!converted);
    QCOMPARE(converted.error().byteOffset.value_or(-1), good.size());
}

void FileConversionTest::preview_startsWithTheFirstLineOfInterest()
{
    const auto found =
        candidates(QByteArray("ASCII\n").repeated(1000) + "x = \x82\xB1\r\n\r\nb\nc\nd\n");
    QCOMPARE(found.front().preview, QStringList({u"x = こ"_s, u"b"_s, u"c"_s}));
    const auto farInLine = candidates(QByteArray(500, 'x') + QByteArray("\x82\xB1").repeated(500));
    QVERIFY(farInLine.front().preview.value(0).contains(u'こ'));
    QVERIFY(farInLine.front().preview.value(0).size() <= 60);
}

void FileConversionTest::mark_isNotPartOfTheText()
{
    const auto converted = convert("\xFF\xFE\x42\x30", encodings().at(3));
    QVERIFY(converted);
    QCOMPARE(converted->toString(), u"あ"_s);
}

void FileConversionTest::changed_fails()
{
    const QString path = m_home.write(u"a"_s, "\x82\xB1");
    const auto version = FileVersion::of(path);
    m_home.write(u"a"_s, "\x82\xB1\x82\xB1");
    TransferProgress progress;
    const auto found = findCandidates(path, version, progress);
    QVERIFY(!found);
    QCOMPARE(found.error().kind, FileError::Kind::Changed);
    const auto converted = convertFile(path, encodings().front(), version, progress);
    QVERIFY(!converted && !converted.error().byteOffset);
    QCOMPARE(converted.error().fileError.kind, FileError::Kind::Changed);
}

void FileConversionTest::vanished_fails()
{
    const QString path = m_home.write(u"a"_s, "\x82\xB1");
    const auto version = FileVersion::of(path);
    QVERIFY(QFile::remove(path));
    TransferProgress progress;
    const auto found = findCandidates(path, version, progress);
    QVERIFY(!found);
    QCOMPARE(found.error().kind, FileError::Kind::NotFound);
    const auto converted = convertFile(path, encodings().front(), version, progress);
    QVERIFY(!converted && !converted.error().byteOffset);
    QCOMPARE(converted.error().fileError.kind, FileError::Kind::NotFound);
}

void FileConversionTest::cancelled_fails()
{
    const QString path = m_home.write(u"a"_s, "\x82\xB1");
    TransferProgress progress;
    progress.cancel();
    const auto found = findCandidates(path, FileVersion::of(path), progress);
    QVERIFY(!found);
    QCOMPARE(found.error().kind, FileError::Kind::Cancelled);
    const auto converted = convertFile(path, encodings().front(), FileVersion::of(path), progress);
    QVERIFY(!converted);
    QCOMPARE(converted.error().fileError.kind, FileError::Kind::Cancelled);
}

void FileConversionTest::progress_endsAtTheTotal()
{
    const QString path = m_home.write(u"a"_s, QByteArray("\x82\xB1\n").repeated(500'000));
    TransferProgress progress;
    QVERIFY(findCandidates(path, FileVersion::of(path), progress));
    QCOMPARE(progress.done(), progress.total());
    QVERIFY(progress.total() > 1'500'000);
}

QTEST_APPLESS_MAIN(FileConversionTest)
#include "FileConversionTest.moc"

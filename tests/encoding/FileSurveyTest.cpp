#include "encoding/FileSurvey.h"

#include "support/EncodedTexts.h"
#include "support/TemporaryHome.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of what a file that is not UTF-8 is taken for.
class FileSurveyTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void encoded_data() { test::addEncodedTexts(); }

    void encoded();

    void encodedFarInside_data() { test::addEncodedTexts(); }

    void encodedFarInside();
    void binary_data();
    void binary();
    void utf16_isNotBinary_data();
    void utf16_isNotBinary();
    void truncated_namesTheClosest();
    void validUtf8_isAChange();
    void missing_fails();

private:
    FileSurvey survey(const QByteArray &content)
    {
        TransferProgress progress;
        const auto survey = surveyFile(m_home.write(u"a"_s, content), progress);
        if (!survey)
            QTest::qFail("The survey has failed.", __FILE__, __LINE__);
        return survey.value_or(FileSurvey{});
    }

    test::TemporaryHome m_home;
};

void FileSurveyTest::encoded()
{
    QFETCH(QString, encoding);
    QFETCH(QByteArray, bytes);
    const FileSurvey found = survey(bytes);
    QVERIFY(found.probable != nullptr);
    QCOMPARE(found.probable->name, encoding);
    QVERIFY(!found.isBinary && found.closest == nullptr);
    const auto error = Text::fromUtf8(bytes);
    QCOMPARE(found.invalidByte, error.error().byteOffset);
}

// UTF-16 is judged by its NUL bytes, so its lead is in UTF-16, too.
void FileSurveyTest::encodedFarInside()
{
    QFETCH(QString, encoding);
    QFETCH(QByteArray, bytes);
    for (const QByteArray &line :
         {QByteArray("A line in ASCII only.\n"), QByteArray("An even line here.\r\n")}) {
        QByteArray lead = line;
        if (encoding.startsWith(u"UTF-16"))
            lead = test::inUtf16(QString::fromLatin1(line), encoding == u"UTF-16 BE");
        lead = lead.repeated(10'000);
        const FileSurvey found = survey(lead + bytes + lead);
        QVERIFY(found.probable != nullptr);
        QCOMPARE(found.probable->name, encoding);
        QVERIFY(found.invalidByte >= lead.size());
    }
}

void FileSurveyTest::binary_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("program") << QByteArray(
        "\x7F"
        "ELF\x02\x01\x01\0\0\0\0\0\0\0\0\0\x03\0\x3E\0\x01\0\0\0\xE0\x10",
        26);
    QTest::newRow("picture") << QByteArray(
        "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x02\0\0\0\x01\0\x08\x06", 26);
    QTest::newRow("NUL in Shift_JIS") << QByteArray("\x93\xFA\x96\x7B\0\x8C\xEA", 7);
    QTest::newRow("NUL in an even number of bytes") << QByteArray("\x93\xFA\0\0\x96\x7B", 6);
    QTest::newRow("UTF-32") << QByteArray("\xFF\xFE\0\0a\0\0\0", 8);
    QTest::newRow("control characters")
        << QByteArray("\x01\x02\x03\x04\x05\x06\x0E\x0F\x10\xE9\xE9", 11);
    QByteArray random;
    quint32 state = 1;
    for (int i = 0; i < 1000; ++i) {
        state = state * 1664525U + 1013904223U;
        random += static_cast<char>(state >> 24);
    }
    QTest::newRow("random") << random;
}

void FileSurveyTest::binary()
{
    QFETCH(QByteArray, bytes);
    const FileSurvey found = survey(bytes);
    QVERIFY(found.isBinary);
    QVERIFY(found.probable == nullptr && found.closest == nullptr);
}

void FileSurveyTest::utf16_isNotBinary_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("Japanese") << u"日本語のテキスト、mixed with ASCII.\r\n"_s;
    QTest::newRow("ASCII and one letter") << u"This is a café.\r\n"_s;
    QTest::newRow("Korean") << u"이 파일은 한글 편집기를 시험하기 위한 것입니다."_s;
    QTest::newRow("Russian") << u"Это простой текст."_s;
    QTest::newRow("emoji") << u"a 😀 b"_s;
}

void FileSurveyTest::utf16_isNotBinary()
{
    QFETCH(QString, text);
    for (const bool isBigEndian : {false, true}) {
        for (const QString &mark : {QString(), u"\uFEFF"_s}) {
            const QByteArray bytes = test::inUtf16(mark + text, isBigEndian);
            if (Text::fromUtf8(bytes))
                continue; // Not a file that fails to open.
            const FileSurvey found = survey(bytes);
            QVERIFY(found.probable != nullptr);
            QCOMPARE(found.probable->name, isBigEndian ? u"UTF-16 BE"_s : u"UTF-16 LE"_s);
        }
    }
}

void FileSurveyTest::truncated_namesTheClosest()
{
    const QByteArray text(
        "\x82\xB1\x82\xEA\x82\xCD\x83\x65\x83\x58\x83\x67\x82\xC5\x82\xB7\x81\x42\x82");
    const FileSurvey found = survey(text);
    QVERIFY(found.probable == nullptr && !found.isBinary);
    QVERIFY(found.closest != nullptr);
    QCOMPARE(found.closest->name, u"Shift_JIS (CP932)"_s);
    QCOMPARE(found.closestEnd, text.size() - 1);
}

void FileSurveyTest::validUtf8_isAChange()
{
    TransferProgress progress;
    const auto found = surveyFile(m_home.write(u"a"_s, "日本"), progress);
    QVERIFY(!found);
    QCOMPARE(found.error().kind, FileError::Kind::Changed);
}

void FileSurveyTest::missing_fails()
{
    TransferProgress progress;
    const auto found = surveyFile(m_home.file(u"gone"_s), progress);
    QVERIFY(!found);
    QCOMPARE(found.error().kind, FileError::Kind::NotFound);
}

QTEST_APPLESS_MAIN(FileSurveyTest)
#include "FileSurveyTest.moc"

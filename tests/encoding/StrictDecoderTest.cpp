#include "encoding/StrictDecoder.h"

#include <QTest>

#include <algorithm>

using namespace penwick;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(std::optional<qint64>)

namespace {

const Encoding &encodingNamed(const QString &name)
{
    const auto &all = encodings();
    const auto found = std::find_if(
        all.begin(), all.end(), [&](const Encoding &encoding) { return encoding.name == name; });
    if (found == all.end())
        qFatal("no such encoding");
    return *found;
}

struct Decoded
{
    QString text;
    std::optional<qint64> errorOffset;

    bool operator==(const Decoded &) const = default;
};

/// Decodes `bytes` in blocks of at most `blockSize` bytes.
Decoded decode(const QString &encoding, const QByteArray &bytes, qsizetype blockSize)
{
    StrictDecoder decoder(encodingNamed(encoding));
    Decoded decoded;
    const auto take = [&](bool succeeded) {
        const auto units = decoder.units();
        decoded.text += QStringView(units.data(), static_cast<qsizetype>(units.size()));
        return succeeded;
    };
    for (qsizetype i = 0; i < bytes.size(); i += blockSize)
        if (!take(decoder.append(
                QByteArrayView(bytes).sliced(i, std::min(blockSize, bytes.size() - i)))))
            break;
    take(decoder.finish());
    decoded.errorOffset = decoder.errorOffset();
    return decoded;
}

} // namespace

/// Tests of decoding without loss: what each encoding accepts and refuses. Every input is decoded
/// as a whole and byte by byte.
class StrictDecoderTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void accepted_data();
    void accepted();
    void refused_data();
    void refused();
    void allCharactersOfTwoBytes_areDecodedWithoutLossOrRefused();
};

void StrictDecoderTest::accepted_data()
{
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    const QString sjis = u"Shift_JIS (CP932)"_s;
    QTest::newRow("empty") << sjis << QByteArray() << QString();
    QTest::newRow("CP932") << sjis << QByteArray("\xFB\xFC\x87\x40\x81\x60\xB6\xC5\r\n\\~")
                           << u"髙①～ｶﾅ\r\n\\~"_s;
    // Codes of NEC beside those that encoding gives: another code for the same character.
    QTest::newRow("CP932, second codes") << sjis << QByteArray("\xEE\xE0\x87\x9A") << u"髙∵"_s;
    QTest::newRow("EUC-JP") << u"EUC-JP"_s
                            << QByteArray("\xC6\xFC\xCB\xDC\x8E\xB6\x8F\xB0\xA1\xAD\xA1")
                            << u"日本ｶ丂①"_s;
    QTest::newRow("ISO-2022-JP") << u"ISO-2022-JP"_s << QByteArray("\x1B$B$\"\x1B(Ba\x1B(J\n\x1B(B")
                                 << u"あa\n"_s;
    QTest::newRow("ISO-2022-JP, 8-bit katakana")
        << u"ISO-2022-JP"_s << QByteArray("\x1B$B$\"\x1B(B\xB1") << u"あｱ"_s;
    QTest::newRow("UTF-16 LE") << u"UTF-16 LE"_s << QByteArray("a\0\x42\x30\x3D\xD8\x00\xDE", 8)
                               << u"aあ😀"_s;
    QTest::newRow("UTF-16 LE, mark")
        << u"UTF-16 LE"_s << QByteArray("\xFF\xFE\x42\x30\xFF\xFE", 6) << u"あ\uFEFF"_s;
    QTest::newRow("UTF-16 BE") << u"UTF-16 BE"_s << QByteArray("\0a\x30\x42\xD8\x3D\xDE\x00", 8)
                               << u"aあ😀"_s;
    QTest::newRow("UTF-16 BE, mark") << u"UTF-16 BE"_s << QByteArray("\xFE\xFF\x30\x42") << u"あ"_s;
    QTest::newRow("UTF-16 LE, next line")
        << u"UTF-16 LE"_s << QByteArray("\x85\x00", 2) << u"\u0085"_s;
    QTest::newRow("GB18030") << u"GB18030"_s << QByteArray("\xD6\xD0\x94\x39\xDA\x33") << u"中💩"_s;
    QTest::newRow("Big5") << u"Big5 (CP950)"_s << QByteArray("\xA4\xA4\xA4\xE5") << u"中文"_s;
    QTest::newRow("EUC-KR") << u"EUC-KR (CP949)"_s << QByteArray("\xC7\xD1\xB1\xDB\x81\x41")
                            << u"한글갂"_s;
    QTest::newRow("Windows-1252") << u"Windows-1252"_s << QByteArray("\xE9\x80\x93") << u"é€“"_s;
}

void StrictDecoderTest::accepted()
{
    QFETCH(QString, encoding);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    for (const qsizetype blockSize : {qsizetype(1), qsizetype(3), qsizetype(1000)}) {
        const Decoded decoded = decode(encoding, bytes, blockSize);
        QVERIFY2(!decoded.errorOffset,
                 qPrintable(QString::number(decoded.errorOffset.value_or(-1))));
        QCOMPARE(decoded.text, text);
    }
}

void StrictDecoderTest::refused_data()
{
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qint64>("errorOffset");
    const QString sjis = u"Shift_JIS (CP932)"_s;
    QTest::newRow("CP932, truncated") << sjis << QByteArray("a\x93\xFA\x96") << qint64(3);
    QTest::newRow("CP932, invalid trail") << sjis << QByteArray("a\x93\x20") << qint64(1);
    QTest::newRow("CP932, unassigned") << sjis << QByteArray("ab\x85\x40") << qint64(2);
    QTest::newRow("CP932, single byte") << sjis << QByteArray("ab\xFD") << qint64(2);
    QTest::newRow("CP932, NUL") << sjis << QByteArray("\x93\xFA\0", 3) << qint64(2);
    QTest::newRow("EUC-JP, truncated") << u"EUC-JP"_s << QByteArray("\xC6\xFC\xCB") << qint64(2);
    QTest::newRow("EUC-JP, truncated three bytes")
        << u"EUC-JP"_s << QByteArray("\xC6\xFC\x8F\xB0") << qint64(2);
    QTest::newRow("EUC-JP, C1 control") << u"EUC-JP"_s << QByteArray("\xC6\xFC\x85") << qint64(2);
    QTest::newRow("ISO-2022-JP, truncated")
        << u"ISO-2022-JP"_s << QByteArray("\x1B$B$\"$") << qint64(5);
    QTest::newRow("ISO-2022-JP, irreversible before NUL")
        << u"ISO-2022-JP"_s << QByteArray("\x1B$B|\\r0\n\x04\x00", 10) << qint64(3);
    QTest::newRow("UTF-16 LE, odd") << u"UTF-16 LE"_s << QByteArray("\x42\x30\x44") << qint64(2);
    QTest::newRow("UTF-16 LE, lone high surrogate")
        << u"UTF-16 LE"_s << QByteArray("\x42\x30\x3D\xD8\x42\x30") << qint64(2);
    QTest::newRow("UTF-16 BE, lone low surrogate")
        << u"UTF-16 BE"_s << QByteArray("\x30\x42\xDE\x00\x30\x42", 6) << qint64(2);
    QTest::newRow("UTF-16 BE, high surrogate at the end")
        << u"UTF-16 BE"_s << QByteArray("\x30\x42\xD8\x3D") << qint64(2);
    QTest::newRow("UTF-16 BE, mark of the other")
        << u"UTF-16 BE"_s << QByteArray("\xFF\xFE") << qint64(0);
    QTest::newRow("UTF-16 LE, NUL") << u"UTF-16 LE"_s << QByteArray("a\0\0\0", 4) << qint64(2);
    QTest::newRow("GB18030, truncated")
        << u"GB18030"_s << QByteArray("\xD6\xD0\x94\x39\xDA") << qint64(2);
    QTest::newRow("GB18030, noncharacter")
        << u"GB18030"_s << QByteArray("\xD6\xD0\x84\x31\xA4\x38") << qint64(2);
    QTest::newRow("Big5, placeholder")
        << u"Big5 (CP950)"_s << QByteArray("\xA4\xA4\xFF") << qint64(2);
    QTest::newRow("EUC-KR, truncated")
        << u"EUC-KR (CP949)"_s << QByteArray("\xC7\xD1\xB1") << qint64(2);
    QTest::newRow("Windows-1252, unassigned")
        << u"Windows-1252"_s << QByteArray("\xE9\x81") << qint64(1);
}

void StrictDecoderTest::refused()
{
    QFETCH(QString, encoding);
    QFETCH(QByteArray, bytes);
    QFETCH(qint64, errorOffset);
    for (const qsizetype blockSize : {qsizetype(1), qsizetype(3), qsizetype(1000)}) {
        const Decoded decoded = decode(encoding, bytes, blockSize);
        QCOMPARE(decoded.errorOffset.value_or(-1), errorOffset);
    }
}

// What is accepted has no replacement character, and one or two characters.
void StrictDecoderTest::allCharactersOfTwoBytes_areDecodedWithoutLossOrRefused()
{
    for (const Encoding &encoding : encodings()) {
        int accepted = 0;
        for (int code = 0x8000; code <= 0xFFFF; ++code) {
            const QByteArray bytes{QByteArray(1, static_cast<char>(code >> 8)) +
                                   static_cast<char>(code & 0xFF)};
            const Decoded decoded = decode(encoding.name, bytes, 2);
            if (decoded.errorOffset)
                continue;
            ++accepted;
            QVERIFY(!decoded.text.contains(QChar::ReplacementCharacter) ||
                    encoding.script == Script::Any);
            QVERIFY(decoded.text.size() <= 2);
            QCOMPARE(decoded, decode(encoding.name, bytes, 1));
        }
        QVERIFY2(accepted > 1000, qPrintable(encoding.name));
    }
}

QTEST_APPLESS_MAIN(StrictDecoderTest)
#include "StrictDecoderTest.moc"

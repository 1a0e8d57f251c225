#include "text/Utf8.h"

#include <QRandomGenerator>
#include <QTest>

using namespace penwick;

class Utf8Test final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void validBytes_comeBackUnchanged_data();
    void validBytes_comeBackUnchanged();
    void invalidBytes_failAtTheirOffset_data();
    void invalidBytes_failAtTheirOffset();
    void blocksCutAnywhere_giveTheSameText();
    void everyCodePoint_comesBack();
    void chunkEdges_keepLongMixedText();
};

void Utf8Test::validBytes_comeBackUnchanged_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no final newline") << QByteArray("a");
    QTest::newRow("lone CR") << QByteArray("a\rb");
    QTest::newRow("CR LF") << QByteArray("a\r\nb\r\n");
    QTest::newRow("mixed line ends") << QByteArray("a\r\nb\nc\rd\n\r");
    QTest::newRow("NEL, LS, PS") << QByteArray("a\xC2\x85"
                                               "b\xE2\x80\xA8"
                                               "c\xE2\x80\xA9");
    QTest::newRow("NUL") << QByteArray("a\0b\0", 4);
    QTest::newRow("U+FEFF first and inside") << QByteArray("\xEF\xBB\xBF"
                                                           "a\xEF\xBB\xBF");
    QTest::newRow("NBSP") << QByteArray("a\xC2\xA0"
                                        "b");
    QTest::newRow("U+FFFC") << QByteArray("\xEF\xBF\xBC");
    QTest::newRow("noncharacters")
        << QByteArray("\xEF\xB7\x90\xEF\xBF\xBE\xEF\xBF\xBF\xF0\x9F\xBF\xBE\xF4\x8F\xBF\xBF");
    QTest::newRow("private use") << QByteArray("\xEE\x80\x80\xF3\xB0\x80\x80");
    QTest::newRow("variation selectors") << QByteArray("\xE8\x91\x9B\xF3\xA0\x84\x80");
}

void Utf8Test::validBytes_comeBackUnchanged()
{
    QFETCH(QByteArray, bytes);
    const auto text = Text::fromUtf8(bytes);
    QVERIFY(text.has_value());
    QCOMPARE(text->toUtf8(), bytes);
    // An edit at the end keeps all other bytes.
    QCOMPARE(text->appended(Text(u"z")).toUtf8(), bytes + "z");
}

void Utf8Test::invalidBytes_failAtTheirOffset_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qint64>("offset");
    QTest::newRow("lone trail byte") << QByteArray("ab\x80"
                                                   "c")
                                     << qint64(2);
    QTest::newRow("overlong slash") << QByteArray("a\xC0\xAF") << qint64(1);
    QTest::newRow("overlong three bytes") << QByteArray("\xE0\x80\xAF") << qint64(0);
    QTest::newRow("surrogate") << QByteArray("ab\xED\xA0\x80") << qint64(2);
    QTest::newRow("past U+10FFFF") << QByteArray("\xF4\x90\x80\x80") << qint64(0);
    QTest::newRow("five bytes") << QByteArray("\xF8\x88\x80\x80\x80") << qint64(0);
    QTest::newRow("truncated at the end") << QByteArray("abc\xE3\x81") << qint64(3);
    QTest::newRow("truncated inside") << QByteArray("abc\xE3\x81z") << qint64(3);
    QTest::newRow("Shift_JIS") << QByteArray("\x93\xFA\x96\x7B") << qint64(0);
    QTest::newRow("UTF-16") << QByteArray("\xFF\xFE"
                                          "a\0",
                                          4)
                            << qint64(0);
    QTest::newRow("late") << QByteArray(100'000, 'a') + QByteArray("\xFF") << qint64(100'000);
}

void Utf8Test::invalidBytes_failAtTheirOffset()
{
    QFETCH(QByteArray, bytes);
    QFETCH(qint64, offset);
    const auto text = Text::fromUtf8(bytes);
    QVERIFY(!text.has_value());
    QCOMPARE(text.error().byteOffset, offset);
    // Byte-by-byte input reports the same offset.
    Utf8Reader reader;
    for (qsizetype i = 0; i < bytes.size() && bytes.size() < 1000; ++i)
        reader.append(QByteArrayView(bytes).sliced(i, 1));
    if (bytes.size() < 1000)
        QCOMPARE(reader.finish().error().byteOffset, offset);
}

void Utf8Test::blocksCutAnywhere_giveTheSameText()
{
    QByteArray bytes;
    for (int i = 0; i < 3000; ++i)
        bytes += QStringLiteral("行%1 末尾👍🏽\r\n").arg(i).toUtf8();
    QRandomGenerator random(5);
    Utf8Reader reader;
    for (qsizetype i = 0; i < bytes.size();) {
        const qsizetype length = std::min<qsizetype>(bytes.size() - i, 1 + random.bounded(97));
        QVERIFY(reader.append(QByteArrayView(bytes).sliced(i, length)));
        i += length;
    }
    const auto text = reader.finish();
    QVERIFY(text.has_value());
    QCOMPARE(text->toUtf8(), bytes);
    QCOMPARE(*text, *Text::fromUtf8(bytes));
}

void Utf8Test::everyCodePoint_comesBack()
{
    QByteArray bytes;
    for (char32_t c = 0; c <= 0x10FFFF; ++c)
        if (c < 0xD800 || c > 0xDFFF)
            bytes += QString::fromUcs4(&c, 1).toUtf8();
    const auto text = Text::fromUtf8(bytes);
    QVERIFY(text.has_value());
    QVERIFY(text->toUtf8() == bytes);
}

void Utf8Test::chunkEdges_keepLongMixedText()
{
    // ASCII stretches of lengths around a chunk's size, each followed by a combining mark.
    QByteArray bytes;
    for (int length = 4090; length < 4100; ++length)
        bytes += QByteArray(length, 'a') + "\xCC\x81" + QByteArray(length - 3000, 'b') + "\r\n";
    const auto text = Text::fromUtf8(bytes);
    QVERIFY(text.has_value());
    QCOMPARE(text->toUtf8(), bytes);
    QCOMPARE(text->metrics().crLfPairs, 10);
    QCOMPARE(text->metrics().clusters, text->size() - 20);
}

QTEST_GUILESS_MAIN(Utf8Test)
#include "Utf8Test.moc"

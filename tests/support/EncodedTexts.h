#pragma once

#include <QByteArray>
#include <QString>
#include <QStringEncoder>
#include <QTest>

namespace penwick::test {

/// The text in UTF-16, without a byte-order mark unless the text has one.
inline QByteArray inUtf16(const QString &text, bool isBigEndian)
{
    QStringEncoder encoder(isBigEndian ? QStringEncoder::Utf16BE : QStringEncoder::Utf16LE);
    return encoder(text);
}

/// Adds test data: short texts as other programs write them. Columns: the name of the encoding that
/// a file of these bytes is taken for, its bytes, and its text.
inline void addEncodedTexts()
{
    using namespace Qt::StringLiterals;
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    const auto addRow = [](const char *name,
                           const QString &encoding,
                           const QString &text,
                           const QByteArray &bytes) {
        QTest::newRow(name) << encoding << bytes << text;
    };
    addRow("Shift_JIS (CP932), 0",
           u"Shift_JIS (CP932)"_s,
           u"髙橋さんの①番の資料～第二版\r\nﾊﾝｶｸ ｶﾅ と全角カナの表示を確かめます。\r\n"_s,
           QByteArray("\xEE\xE0\x8B\xB4\x82\xB3\x82\xF1\x82\xCC\x87\x40\x94\xD4\x82\xCC"
                      "\x8E\x91\x97\xBF\x81\x60\x91\xE6\x93\xF1\x94\xC5\x0D\x0A\xCA\xDD"
                      "\xB6\xB8\x20\xB6\xC5\x20\x82\xC6\x91\x53\x8A\x70\x83\x4A\x83\x69"
                      "\x82\xCC\x95\x5C\x8E\xA6\x82\xF0\x8A\x6D\x82\xA9\x82\xDF\x82\xDC"
                      "\x82\xB7\x81\x42\x0D\x0A",
                      70));
    addRow("Shift_JIS (CP932), 1",
           u"Shift_JIS (CP932)"_s,
           u"ﾊﾝｶｸｶﾅﾀﾞｹ\r\n"_s,
           QByteArray("\xCA\xDD\xB6\xB8\xB6\xC5\xC0\xDE\xB9\x0D\x0A", 11));
    addRow("Shift_JIS (CP932), 2",
           u"Shift_JIS (CP932)"_s,
           u"件名: 会議の議事録\n"_s,
           QByteArray("\x8C\x8F\x96\xBC\x3A\x20\x89\xEF\x8B\x63\x82\xCC\x8B\x63\x8E\x96"
                      "\x98\x5E\x0A",
                      19));
    addRow("EUC-JP, 3",
           u"EUC-JP"_s,
           u"日本語のテキストを編集するためのプログラムです。\n二行目にも文字があります。\n"_s,
           QByteArray("\xC6\xFC\xCB\xDC\xB8\xEC\xA4\xCE\xA5\xC6\xA5\xAD\xA5\xB9\xA5\xC8"
                      "\xA4\xF2\xCA\xD4\xBD\xB8\xA4\xB9\xA4\xEB\xA4\xBF\xA4\xE1\xA4\xCE"
                      "\xA5\xD7\xA5\xED\xA5\xB0\xA5\xE9\xA5\xE0\xA4\xC7\xA4\xB9\xA1\xA3"
                      "\x0A\xC6\xF3\xB9\xD4\xCC\xDC\xA4\xCB\xA4\xE2\xCA\xB8\xBB\xFA\xA4"
                      "\xAC\xA4\xA2\xA4\xEA\xA4\xDE\xA4\xB9\xA1\xA3\x0A",
                      76));
    addRow("GB18030, 4",
           u"GB18030"_s,
           u"这是一个用来测试的中文文件，里面有简体汉字。\n"_s,
           QByteArray("\xD5\xE2\xCA\xC7\xD2\xBB\xB8\xF6\xD3\xC3\xC0\xB4\xB2\xE2\xCA\xD4"
                      "\xB5\xC4\xD6\xD0\xCE\xC4\xCE\xC4\xBC\xFE\xA3\xAC\xC0\xEF\xC3\xE6"
                      "\xD3\xD0\xBC\xF2\xCC\xE5\xBA\xBA\xD7\xD6\xA1\xA3\x0A",
                      45));
    addRow("Big5 (CP950), 5",
           u"Big5 (CP950)"_s,
           u"這是一個用來測試的中文檔案，裡面有繁體漢字。\n"_s,
           QByteArray("\xB3\x6F\xAC\x4F\xA4\x40\xAD\xD3\xA5\xCE\xA8\xD3\xB4\xFA\xB8\xD5"
                      "\xAA\xBA\xA4\xA4\xA4\xE5\xC0\xC9\xAE\xD7\xA1\x41\xB8\xCC\xAD\xB1"
                      "\xA6\xB3\xC1\x63\xC5\xE9\xBA\x7E\xA6\x72\xA1\x43\x0A",
                      45));
    addRow("EUC-KR (CP949), 6",
           u"EUC-KR (CP949)"_s,
           u"이 파일은 한글 편집기를 시험하기 위한 것입니다.\n"_s,
           QByteArray("\xC0\xCC\x20\xC6\xC4\xC0\xCF\xC0\xBA\x20\xC7\xD1\xB1\xDB\x20\xC6"
                      "\xED\xC1\xFD\xB1\xE2\xB8\xA6\x20\xBD\xC3\xC7\xE8\xC7\xCF\xB1\xE2"
                      "\x20\xC0\xA7\xC7\xD1\x20\xB0\xCD\xC0\xD4\xB4\xCF\xB4\xD9\x2E\x0A",
                      48));
    addRow("Windows-1252, 7",
           u"Windows-1252"_s,
           u"Le café déjà vu coûte 5 € – “naïve”.\n"_s,
           QByteArray("\x4C\x65\x20\x63\x61\x66\xE9\x20\x64\xE9\x6A\xE0\x20\x76\x75\x20"
                      "\x63\x6F\xFB\x74\x65\x20\x35\x20\x80\x20\x96\x20\x93\x6E\x61\xEF"
                      "\x76\x65\x94\x2E\x0A",
                      37));
    addRow("Windows-1252, 8",
           u"Windows-1252"_s,
           u"Größe und Überfluß für die Straße\n"_s,
           QByteArray("\x47\x72\xF6\xDF\x65\x20\x75\x6E\x64\x20\xDC\x62\x65\x72\x66\x6C"
                      "\x75\xDF\x20\x66\xFC\x72\x20\x64\x69\x65\x20\x53\x74\x72\x61\xDF"
                      "\x65\x0A",
                      34));
    addRow("UTF-16 LE, 9",
           u"UTF-16 LE"_s,
           u"漢字とかなのテキスト\r\n"_s,
           QByteArray("\x22\x6F\x57\x5B\x68\x30\x4B\x30\x6A\x30\x6E\x30\xC6\x30\xAD\x30"
                      "\xB9\x30\xC8\x30\x0D\x00\x0A\x00",
                      24));
    addRow("UTF-16 BE, 10",
           u"UTF-16 BE"_s,
           u"漢字とかなのテキスト\r\n"_s,
           QByteArray("\x6F\x22\x5B\x57\x30\x68\x30\x4B\x30\x6A\x30\x6E\x30\xC6\x30\xAD"
                      "\x30\xB9\x30\xC8\x00\x0D\x00\x0A",
                      24));
}

} // namespace penwick::test

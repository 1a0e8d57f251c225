#pragma once

#include <QByteArray>

#include <cstring>

namespace penwick::bench {

/// Text of about `size` bytes: lines of forty ASCII characters.
inline QByteArray asciiLines(qsizetype size)
{
    QByteArray text;
    text.reserve(size + 64);
    for (int line = 0; text.size() < size; ++line) {
        text += "The quick brown fox jumps over ";
        text += QByteArray::number(line).rightJustified(8, '0');
        text += '\n';
    }
    return text;
}

/// Text of about `size` bytes: paragraphs of Japanese prose with some Latin words and digits.
inline QByteArray japaneseProse(qsizetype size)
{
    const QByteArray sentence("山の朝は静かで、風が木々の間をゆっくりと渡っていく。"
                              "少年は penwick を開き、昨日の続きを書きはじめた。");
    QByteArray text;
    text.reserve(size + 512);
    for (int line = 0; text.size() < size; ++line) {
        for (int i = 0; i <= line % 4; ++i)
            text += sentence;
        text += QByteArray::number(line);
        text += "。\n";
    }
    return text;
}

/// One line of about `size` bytes without a line break.
inline QByteArray oneLine(qsizetype size)
{
    QByteArray text;
    text.reserve(size + 64);
    for (int word = 0; text.size() < size; ++word) {
        text += "\"key";
        text += QByteArray::number(word);
        text += "\":[1,2,3],";
    }
    return text;
}

/// Text of about `size` bytes: lines of which every second has blanks at its end.
inline QByteArray linesWithBlanks(qsizetype size, const char *words, const char *blanks)
{
    QByteArray text;
    text.reserve(size + 512);
    for (int line = 0; text.size() < size; ++line) {
        text += words + QByteArray::number(line);
        text += line % 2 == 0 ? blanks : "";
        text += '\n';
    }
    return text;
}

/// Text of about `size` bytes that every built-in macro has something to change in: blanks at line
/// ends, empty lines, URLs and tags, in Latin and Japanese.
inline QByteArray macroFodder(qsizetype size)
{
    QByteArray text;
    text.reserve(size + 512);
    for (int line = 0; text.size() < size; ++line) {
        text += "The quick brown fox jumps over " + QByteArray::number(line) + "  \n";
        text += "少年は昨日の続きを書きはじめた。　\n\n";
        text += "<p class=\"a\">見よ <b>https://example.org/" + QByteArray::number(line);
        text += "</b>、風が木々の間を渡っていく。</p>\n";
    }
    return text;
}

} // namespace penwick::bench

#pragma once

#include "text/TextMetrics.h"

#include <QChar>
#include <QRandomGenerator>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <memory>
#include <unicode/brkiter.h>
#include <unicode/utext.h>
#include <utility>

namespace penwick::test {

/// Counts the clusters with ICU's iterator over the whole text. Slow, but independent of `Text`.
inline qint64 clustersByIcu(QStringView text)
{
    UErrorCode status = U_ZERO_ERROR;
    static const std::unique_ptr<icu::BreakIterator> iterator(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    UText units = UTEXT_INITIALIZER;
    utext_openUChars(&units, text.utf16(), text.size(), &status);
    iterator->setText(&units, status);
    qint64 count = 0;
    while (iterator->next() != icu::BreakIterator::DONE)
        ++count;
    utext_close(&units);
    return count;
}

inline bool isSeparator(char16_t unit)
{
    switch (unit) {
    case 0x000A:
    case 0x000B:
    case 0x000C:
    case 0x000D:
    case 0x0085:
    case 0x2028:
    case 0x2029:
        return true;
    default:
        return false;
    }
}

/// The expected result of `Text::metrics`, computed by scanning the whole text.
inline TextMetrics metricsOf(const QString &text)
{
    TextMetrics metrics;
    metrics.utf16Units = text.size();
    metrics.utf8Bytes = text.toUtf8().size();
    metrics.lineFeeds = text.count(u'\n');
    metrics.carriageReturns = text.count(u'\r');
    metrics.crLfPairs = text.count(QLatin1String("\r\n"));
    const char16_t *units = QStringView(text).utf16();
    metrics.separators = std::count_if(units, units + text.size(), isSeparator);
    metrics.clusters = clustersByIcu(text);
    return metrics;
}

/// The status bar's expected line and column of `offset`, computed by scanning the text.
inline std::pair<qint64, qint64> separatorLineAndColumn(const QString &text, qsizetype offset)
{
    qint64 line = 1;
    qsizetype start = 0;
    for (qsizetype i = 0; i < offset; ++i) {
        if (isSeparator(text[i].unicode())) {
            ++line;
            start = i + 1;
        }
    }
    return {line, clustersByIcu(QStringView(text).sliced(start, offset - start))};
}

/// A short random text of pieces that are hard to count: marks, emoji, flags, Hangul, separators.
inline QString randomText(QRandomGenerator &random, int pieces)
{
    static const QStringList kPieces{
        QStringLiteral("a"),        QStringLiteral("bc def"),
        QStringLiteral("\n"),       QStringLiteral("\r"),
        QStringLiteral("\r\n"),     QStringLiteral("\u0085"),
        QStringLiteral("\u2028"),   QStringLiteral("\u2029"),
        QStringLiteral("\v\f"),     QStringLiteral("日本語"),
        QStringLiteral("か\u3099"), QStringLiteral("ﾊﾞ"),
        QStringLiteral("e\u0301"),  QStringLiteral("\u0301"),
        QStringLiteral("\u200D"),   QStringLiteral("👨‍👩‍👧‍👦"),
        QStringLiteral("🇯🇵"),       QStringLiteral("👍🏽"),
        QStringLiteral("🇯"),        QStringLiteral("한국"),
        QStringLiteral("ᄀ"),       QStringLiteral("ᅡ"),
        QStringLiteral("क्षि"),      QStringLiteral("\u0600"),
        QStringLiteral("\uFEFF"),   QStringLiteral("葛󠄀"),
        QStringLiteral("\u00A0"),   QStringLiteral("ไทยนี้"),
        QStringLiteral("𠮷"),       QStringLiteral("\uFFFC"),
        QString(QChar(u'\0')),      QString(QChar(u'\uFDD0')),
        QStringLiteral("مرحبا")};
    QString text;
    for (int i = 0; i < pieces; ++i) {
        const auto index = random.bounded(kPieces.size());
        text += kPieces[index];
        // Long plain runs fill chunks of their own.
        if (random.bounded(40) == 0)
            text += QString(random.bounded(3000), random.bounded(2) == 0 ? u'x' : u'漢');
    }
    return text;
}

} // namespace penwick::test

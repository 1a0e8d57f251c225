#pragma once

#include "find/FindReplacement.h"
#include "find/TextFinder.h"
#include "text/Text.h"

#include <QList>
#include <QRandomGenerator>
#include <QString>

#include <utility>

/// Helpers for tests of what a pattern finds in a text.
namespace penwick::finding {

using Ranges = QList<std::pair<qint64, qint64>>;

inline FindPattern expression(const QString &string)
{
    return {string, true, false, true};
}

inline TextFinder finderOf(const FindPattern &pattern)
{
    auto finder = TextFinder::compile(pattern);
    if (!finder)
        qFatal("the pattern does not compile");
    return *std::move(finder);
}

inline Ranges matches(const Text &text, const TextFinder &finder)
{
    Ranges ranges;
    TextFinder::Step step;
    while (!step.isAtEnd && !step.isTooComplex) {
        step = finder.step(
            text, step.next, [&](const TextRange &match, const QRegularExpressionMatch *) {
                ranges.append({match.location, match.end()});
                return true;
            });
    }
    return ranges;
}

inline Ranges matches(const Text &text, const FindPattern &pattern)
{
    return matches(text, finderOf(pattern));
}

inline Ranges matches(const QString &text, const FindPattern &pattern)
{
    return matches(Text(text), pattern);
}

inline QString
replaced(const QString &string, const FindPattern &pattern, const QString &replacement)
{
    const Text text(string);
    const TextFinder finder = finderOf(pattern);
    const auto result = replaceAllMatches(finder, FindReplacement(replacement, finder), text, 0);
    if (result.count == 0)
        return string;
    return text.replaced(result.range.location, result.range.length, result.replacement).toString();
}

inline QString randomString(QRandomGenerator &random, int length, const QString &alphabet)
{
    const Text characters(alphabet);
    QString result;
    while (result.size() < length) {
        qint64 at = random.bounded(static_cast<int>(alphabet.size()));
        if (alphabet[at].isLowSurrogate())
            --at;
        result += alphabet.mid(at, alphabet[at].isHighSurrogate() ? 2 : 1);
    }
    return result;
}

} // namespace penwick::finding

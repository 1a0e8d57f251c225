#include "bench/Inputs.h"
#include "editor/TextStorage.h"
#include "find/FindCount.h"
#include "find/FindReplacement.h"
#include "find/TextFinder.h"
#include "text/GraphemeClusters.h"
#include "text/LineEnds.h"
#include "text/Text.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>

using namespace penwick;

namespace {

constexpr qsizetype kMegabyte = 1'000'000;

enum Input { Ascii, Japanese, OneLine };

QByteArray inputOf(const benchmark::State &state)
{
    const auto size = static_cast<qsizetype>(state.range(1)) * kMegabyte;
    switch (state.range(0)) {
    case Ascii:
        return bench::asciiLines(size);
    case Japanese:
        return bench::japaneseProse(size);
    default:
        return bench::oneLine(size);
    }
}

void setBytes(benchmark::State &state, const QByteArray &bytes)
{
    state.SetBytesProcessed(state.iterations() * bytes.size());
}

void checkUtf8(benchmark::State &state)
{
    const QByteArray bytes = inputOf(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(bytes.isValidUtf8());
    setBytes(state, bytes);
}

void readUtf8(benchmark::State &state)
{
    const QByteArray bytes = inputOf(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(Text::fromUtf8(bytes));
    setBytes(state, bytes);
}

void writeUtf8(benchmark::State &state)
{
    const QByteArray bytes = inputOf(state);
    const Text text = *Text::fromUtf8(bytes);
    for (auto _ : state) {
        qsizetype written = 0;
        text.forEachUtf8Block([&](QByteArrayView block) {
            written += block.size();
            return true;
        });
        benchmark::DoNotOptimize(written);
    }
    setBytes(state, bytes);
}

/// Types one character in the middle of the text and reads every counter of the status bar.
void typeInTheMiddle(benchmark::State &state)
{
    TextStorage storage;
    storage.setText(*Text::fromUtf8(inputOf(state)));
    const Text character(u"x");
    qint64 offset = storage.length() / 2;
    for (auto _ : state) {
        storage.replaceCharacters({offset++, 0}, character, TextStorage::EditKind::Typing);
        benchmark::DoNotOptimize(storage.text().metrics());
        benchmark::DoNotOptimize(storage.text().separatorLineAndColumn(offset));
    }
}

void undoWholeReplacement(benchmark::State &state)
{
    TextStorage storage;
    const QByteArray bytes = inputOf(state);
    storage.setText(*Text::fromUtf8(bytes));
    const Text other = *Text::fromUtf8(bytes + "x");
    storage.replaceCharacters({0, storage.length()}, other);
    for (auto _ : state) {
        storage.undo();
        storage.redo();
    }
}

/// Returns 100 MB of text that contains the word "針" `needles` times.
Text haystack(qsizetype needles)
{
    constexpr qsizetype kSize = 100 * kMegabyte;
    const QByteArray gap(std::max<qsizetype>(1, kSize / needles - 4), 'x');
    QByteArray bytes;
    bytes.reserve(kSize + needles * 4);
    for (qsizetype i = 0; i < needles; ++i)
        bytes += gap + "\n針";
    return *Text::fromUtf8(bytes);
}

TextFinder finderOf(bool isExpression)
{
    return *TextFinder::compile({QStringLiteral("針"), false, false, isExpression});
}

void countMatches(benchmark::State &state)
{
    const Text text = haystack(state.range(1));
    for (auto _ : state) {
        FindCount count(finderOf(state.range(0) != 0), text);
        while (count.countStep()) {
        }
        if (count.progress().count != state.range(1))
            state.SkipWithError("not every match was found");
    }
}

void replaceEveryMatch(benchmark::State &state)
{
    const Text text = haystack(state.range(1));
    const TextFinder finder = finderOf(state.range(0) != 0);
    const FindReplacement replacement(QStringLiteral("needle"), finder);
    for (auto _ : state)
        benchmark::DoNotOptimize(replaceAllMatches(finder, replacement, text, 0));
}

void undoReplaceAll(benchmark::State &state)
{
    TextStorage storage;
    storage.setText(haystack(state.range(1)));
    const TextFinder finder = finderOf(state.range(0) != 0);
    const FindReplacement replacement(QStringLiteral("needle"), finder);
    const ReplaceAllResult result = replaceAllMatches(finder, replacement, storage.text(), 0);
    storage.replaceCharacters({result.range.location, result.range.length}, result.replacement);
    for (auto _ : state) {
        storage.undo();
        storage.redo();
    }
}

/// Searches with patterns that would block the caller for seconds if a search step were not
/// limited. The counter `longest_ms` is the duration of the longest step.
void costlySteps(benchmark::State &state, const QString &text, const FindPattern &pattern)
{
    const Text value(text);
    const TextFinder finder = *TextFinder::compile(pattern);
    double longest = 0;
    TextFinder::Step step;
    for (auto _ : state) {
        if (step.isAtEnd || step.isTooComplex)
            step = {};
        const auto start = std::chrono::steady_clock::now();
        step = finder.step(value,
                           step.next,
                           [](const TextRange &, const QRegularExpressionMatch *) { return true; });
        const std::chrono::duration<double, std::milli> taken =
            std::chrono::steady_clock::now() - start;
        longest = std::max(longest, taken.count());
    }
    state.counters["longest_ms"] = longest;
}

FindPattern patternOf(const char16_t *string)
{
    return {QString::fromUtf16(string), true, false, true};
}

const QString kProse =
    QStringLiteral("The quick brown fox jumps over the lazy dog and runs away\n").repeated(20'000);
const QString kLine = QString(kProse).replace(u'\n', u' ');
const QString kLetters(2'000'000, u'a');
const QString kLongWord = u'b' + QString(20'000, u'a');

/// Steps from one cluster to the next in a single line of emoji.
void stepThroughEmoji(benchmark::State &state)
{
    const Text text(QStringLiteral("😀").repeated(1'000'000));
    qint64 offset = 0;
    for (auto _ : state) {
        offset = text.nextClusterBoundary(offset);
        benchmark::DoNotOptimize(text.previousClusterBoundary(offset));
        if (offset == text.size())
            offset = 0;
    }
}

void convertLineEnds(benchmark::State &state)
{
    const QByteArray bytes = inputOf(state);
    const Text text = *Text::fromUtf8(bytes);
    for (auto _ : state)
        benchmark::DoNotOptimize(text.withLineEnds(LineEnd::CrLf));
    setBytes(state, bytes);
}

void findFirstLineEnd(benchmark::State &state)
{
    const QByteArray bytes = inputOf(state);
    const Text text = *Text::fromUtf8(bytes);
    for (auto _ : state)
        benchmark::DoNotOptimize(firstLineEnd(text));
}

void matchNumbers(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgNames({"expression", "matches"});
    for (const int isExpression : {0, 1})
        for (const int count : {10'000, 1'000'000})
            benchmark->Args({isExpression, count});
    benchmark->Unit(benchmark::kMillisecond);
}

void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgNames({"input", "MB"});
    for (const int input : {Ascii, Japanese})
        for (const int size : {1, 10, 100})
            benchmark->Args({input, size});
    benchmark->Args({OneLine, 5});
    benchmark->Unit(benchmark::kMillisecond);
}

BENCHMARK(checkUtf8)->Apply(sizes);
BENCHMARK(readUtf8)->Apply(sizes);
BENCHMARK(writeUtf8)->Apply(sizes);
BENCHMARK(typeInTheMiddle)->Apply(sizes);
BENCHMARK(undoWholeReplacement)->Apply(sizes);
BENCHMARK(convertLineEnds)->Apply(sizes);
BENCHMARK(findFirstLineEnd)->Apply(sizes);
BENCHMARK(countMatches)->Apply(matchNumbers);
BENCHMARK(replaceEveryMatch)->Apply(matchNumbers);
BENCHMARK(undoReplaceAll)->Apply(matchNumbers);
BENCHMARK_CAPTURE(costlySteps, alternatives, kProse, patternOf(u"(.|\\n)*zzz"))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(costlySteps, words, kProse, patternOf(u"(\\w|\\s)+zzz"))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(costlySteps, lazy, kProse, patternOf(u"(?s)The.*?zzz"))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(costlySteps, oneLine, kLine, patternOf(u"x.*y.*z.*!"))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(costlySteps, nested, kProse, patternOf(u"(\\w+\\s*)+;"))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(costlySteps, longWord, kLetters, FindPattern{kLongWord, true, false, false})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(costlySteps, ignoringCase, kLetters, FindPattern{kLongWord, false, false, false})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(costlySteps,
                  wordsOfKana,
                  QString(1'000'000, u'あ'),
                  FindPattern{QStringLiteral("あ"), true, true, false})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(stepThroughEmoji);

} // namespace

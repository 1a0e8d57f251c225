#include "bench/Inputs.h"
#include "editor/TextStorage.h"
#include "text/GraphemeClusters.h"
#include "text/Text.h"

#include <benchmark/benchmark.h>

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

/// One character typed in the middle, with every counter of the status bar.
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

void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgNames({"input", "MB"});
    for (const int input : {Ascii, Japanese}) {
        for (const int size : {1, 10, 100})
            benchmark->Args({input, size});
    }
    benchmark->Args({OneLine, 5});
    benchmark->Unit(benchmark::kMillisecond);
}

BENCHMARK(checkUtf8)->Apply(sizes);
BENCHMARK(readUtf8)->Apply(sizes);
BENCHMARK(writeUtf8)->Apply(sizes);
BENCHMARK(typeInTheMiddle)->Apply(sizes);
BENCHMARK(undoWholeReplacement)->Apply(sizes);

} // namespace

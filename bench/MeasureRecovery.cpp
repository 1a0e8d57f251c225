// Measures what the recovery copy of an edited text costs.

#include "bench/ShownEditor.h"
#include "recovery/RecoveryKeeper.h"

#include <QApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

using namespace penwick;
using namespace penwick::bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int kKeyInterval = 100; // Milliseconds; a fast typist.

double processorSeconds(clockid_t clock)
{
    timespec time = {};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Processor time of all threads but this one.
double otherThreads()
{
    return processorSeconds(CLOCK_PROCESS_CPUTIME_ID) - processorSeconds(CLOCK_THREAD_CPUTIME_ID);
}

struct Typing
{
    std::vector<double> keyToPaint; // Milliseconds.
    double others = 0;              // Seconds of processor time in other threads.
};

/// Types into the middle of the text for some time, with pauses between sentences.
Typing typeFor(ShownEditor &editor, int seconds)
{
    Typing typing;
    TextView *view = editor.textView();
    view->setSelectedRange({view->string().size() / 2, 0});
    const double before = otherThreads();
    QTimer keys;
    int count = 0;
    QObject::connect(&keys, &QTimer::timeout, view, [&] {
        constexpr int kSentence = 100; // Keys; then a pause of a third of that.
        if (count++ % kSentence < kSentence * 2 / 3)
            typing.keyToPaint.push_back(
                editor.watch->timeToPaint([&] { QTest::keyClick(view, Qt::Key_X); }));
    });
    keys.start(kKeyInterval);
    QTest::qWait(seconds * 1000);
    typing.others = otherThreads() - before;
    return typing;
}

double percentile(std::vector<double> values, double share)
{
    std::sort(values.begin(), values.end());
    return values.at(static_cast<std::size_t>(share * static_cast<double>(values.size() - 1)));
}

int measure(const QString &path, int seconds)
{
    ShownEditor editor;
    editor.open(path);
    editor.waitUntilShown();
    const Typing without = typeFor(editor, seconds);
    const QTemporaryDir folder;
    RecoveryKeeper keeper(folder.path() + u"/recovery"_s);
    keeper.watch(
        &editor.document,
        {[&editor] { return editor.textView()->caretOffset(); }, [] { return QString(); }});
    int writes = 0;
    QObject::connect(&keeper, &RecoveryKeeper::written, [&writes] { ++writes; });
    const Typing with = typeFor(editor, seconds);
    keeper.forget(&editor.document);
    constexpr double kPercent = 100;
    const QJsonObject result{
        {u"key to paint, median"_s, percentile(with.keyToPaint, 0.5)},
        {u"key to paint, 99 of 100"_s, percentile(with.keyToPaint, 0.99)},
        {u"without: key to paint, median"_s, percentile(without.keyToPaint, 0.5)},
        {u"without: key to paint, 99 of 100"_s, percentile(without.keyToPaint, 0.99)},
        {u"share"_s, kPercent * (with.others - without.others) / seconds},
        {u"writes"_s, writes}};
    std::puts(QJsonDocument(result).toJson(QJsonDocument::Compact).constData());
    return writes > 0 ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const int seconds = arguments.value(2).toInt();
    if (arguments.size() == 3 && seconds > 0)
        return measure(arguments[1], seconds);
    std::fputs("usage: penwick_measure_recovery FILE SECONDS\n", stderr);
    return 2;
}

// Measures macro runs and prints one line of JSON with a list of milliseconds for each figure, one
// for each run: of penwick with its script host, and of the script alone in this process, whose
// result is dropped. bench/run starts it as a separate process; see `kUsage`.

#include "bench/Inputs.h"
#include "bench/ShownEditor.h"
#include "editor/TextDocument.h"
#include "macro/library/BuiltInMacroProvider.h"
#include "macro/script/ScriptHostPool.h"
#include "macro/script/ScriptRunner.h"
#include "platform/settings/UserDefaults.h"
#include "window/EditorWindowController.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <chrono>
#include <cstdio>
#include <vector>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kUsage = "usage: penwick_measure_macros names\n"
                        "       penwick_measure_macros empty RUNS\n"
                        "       penwick_measure_macros builtin NAME MB RUNS\n"
                        "       penwick_measure_macros painted MB RUNS\n";
constexpr int kHostStartTime = 5000; // Milliseconds.

QJsonArray toJson(const std::vector<double> &runs)
{
    QJsonArray array;
    for (const double run : runs)
        array.append(run);
    return array;
}

template <typename Work> double milliseconds(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

int print(const QJsonObject &object)
{
    std::puts(QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
    return 0;
}

void ignoreLog(const QString & /*line*/) {}

MacroRuntimeService serviceInHost()
{
    return {[] { return ScriptHostPool::shared().start(); }, ignoreLog};
}

/// Returns the request of a macro with its texts in memory. It drops the value of the script, so
/// that running it is the engine's work alone: the value is neither read nor sent.
ScriptRequest requestWithoutResult(const QString &code,
                                   const MacroContext &context,
                                   const std::optional<QString> &input)
{
    ScriptRequest request;
    const auto keep = [&request](ScriptRequest made, const ScriptLogSink &, ScriptWaiter *) {
        request = std::move(made);
        return ScriptOutcome();
    };
    const MacroRuntimeService service([keep] { return keep; }, ignoreLog);
    static_cast<void>(service.run(code, context, input));
    request.source = request.source.text() + u"\nundefined;"_s;
    for (ScriptSource &text : request.longTexts)
        text = text.text();
    return request;
}

double runAlone(const ScriptRequest &request)
{
    return milliseconds([&request] {
        if (!runScript(request, ignoreLog))
            qFatal("the script failed");
    });
}

std::vector<double> runsAlone(const ScriptRequest &request, int runs)
{
    std::vector<double> times(static_cast<std::size_t>(runs));
    for (double &time : times)
        time = runAlone(request);
    return times;
}

/// Waits until a spare host is ready, as it is for a user who has not run a macro just before.
/// \return false when none is ready within `kHostStartTime`.
bool waitForSpare()
{
    return ScriptHostPool::shared().protection(kHostStartTime).has_value();
}

/// Measures an empty macro in an editor window from the command to the end of the run: with a spare
/// host, without one, and with the engine in this process.
int measureEmpty(int runs)
{
    const QTemporaryDir folder;
    UserDefaults defaults(folder.filePath(u"settings.ini"_s));
    TextDocument document;
    EditorWindowController controller(defaults);
    controller.setDocument(&document);
    const auto run = [&controller] {
        controller.runMacro(u"return {};"_s, u"id"_s, u"name"_s, std::nullopt);
    };
    const ScriptRequest request = requestWithoutResult(
        u"return {};"_s, controller.buildMacroContext(u"id"_s, u"name"_s), std::nullopt);
    std::vector<double> with;
    std::vector<double> without;
    std::vector<double> bare;
    for (int i = 0; i < runs; ++i) {
        if (!waitForSpare())
            return 1;
        with.push_back(milliseconds(run));
        ScriptHostPool::shared().discard();
        without.push_back(milliseconds(run));
        bare.push_back(runAlone(request));
    }
    return print({{u"with a process ahead"_s, toJson(with)},
                  {u"without"_s, toJson(without)},
                  {u"engine"_s, toJson(bare)}});
}

std::optional<BuiltInMacroDefinition> definitionOf(const QString &name)
{
    for (const BuiltInMacroDefinition &definition : BuiltInMacroProvider::definitions())
        if (definition.id == name)
            return definition;
    return std::nullopt;
}

/// Measures a built-in macro from the text to the parsed result in a script host, and its script
/// alone in this process.
int measureBuiltIn(const BuiltInMacroDefinition &definition, qsizetype size, int runs)
{
    EditorSnapshot snapshot;
    snapshot.text = *Text::fromUtf8(bench::macroFodder(size));
    snapshot.now = QDateTime::fromString(u"2024-02-29T03:04:05Z"_s, Qt::ISODate);
    snapshot.timeZone = QTimeZone::utc();
    const MacroContext context = buildMacroContext(snapshot, u"id"_s, u"name"_s);
    const QString code = BuiltInMacroProvider::script(definition.macro);
    const QString input = definition.defaultInput.value_or(u"x"_s);
    const MacroRuntimeService service = serviceInHost();
    const auto run = [&] {
        return milliseconds([&] {
            const auto result = service.run(code, context, input);
            if (!result)
                qFatal("%s", qPrintable(result.error().errorDescription()));
        });
    };
    const ScriptRequest request = requestWithoutResult(code, context, input);
    std::vector<double> host;
    std::vector<double> bare;
    for (int i = 0; i < runs; ++i) {
        if (!waitForSpare())
            return 1;
        host.push_back(run());
        bare.push_back(runAlone(request));
    }
    return print({{u"run"_s, toJson(host)}, {u"engine"_s, toJson(bare)}});
}

struct Painted
{
    std::vector<double> times;
    std::vector<double> bare; // The script alone.
};

/// Measures the removal of trailing blanks in a window, from the command to the painted text.
/// \param words the beginning of each line.
Painted measurePainted(const char *words, const char *blanks, qsizetype size, int runs)
{
    const QTemporaryDir folder;
    UserDefaults defaults(folder.filePath(u"settings.ini"_s));
    const Text text = *Text::fromUtf8(bench::linesWithBlanks(size, words, blanks));
    const QString code = BuiltInMacroProvider::script(BuiltInMacro::TrimTrailingSpaces);
    TextDocument document;
    EditorWindowController controller(defaults);
    controller.setDocument(&document);
    controller.window()->show();
    TextView *view = controller.textView();
    bench::PaintWatch watch(view->viewport());
    int changes = 0;
    QObject::connect(view->textStorage(), &TextStorage::changed, view, [&] {
        watch.reset();
        ++changes;
    });
    Painted result;
    for (int i = 0; i < runs; ++i) {
        // An edit of the view, which also reaches the window's state: from there, a text that only
        // the storage has would be replaced during the run.
        view->replaceText({0, view->string().size()}, text);
        bench::pumpUntil([&] {
            return watch.hasPainted() && controller.documentState()->text().isSameValue(text);
        });
        if (!waitForSpare())
            qFatal("no script host");
        const int before = changes;
        result.times.push_back(milliseconds([&] {
            watch.reset();
            controller.runMacro(code, u"id"_s, u"name"_s, std::nullopt);
            bench::pumpUntil([&] { return !controller.isRunningMacro() && watch.hasPainted(); });
        }));
        if (changes != before + 1 || view->string().size() >= text.size())
            qFatal("the macro did not change the text once");
    }
    // Only now, because the engine in this process would keep memory and threads.
    view->replaceText({0, view->string().size()}, text);
    const ScriptRequest request =
        requestWithoutResult(code, controller.buildMacroContext(u"id"_s, u"name"_s), std::nullopt);
    result.bare = runsAlone(request, runs);
    return result;
}

int measurePainted(qsizetype size, int runs)
{
    const Painted ascii = measurePainted(
        "The quick brown fox jumps over the lazy dog, and then it sleeps for a while in the sun; ",
        "  ",
        size,
        runs);
    const Painted japanese = measurePainted(
        "山の朝は静かで、風が木々の間をゆっくりと渡っていく。少年は昨日の続きを書きはじめた。",
        "　",
        size,
        runs);
    return print({{u"ASCII"_s, toJson(ascii.times)},
                  {u"ASCII, script alone"_s, toJson(ascii.bare)},
                  {u"Japanese"_s, toJson(japanese.times)},
                  {u"Japanese, script alone"_s, toJson(japanese.bare)}});
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString command = arguments.value(1);
    if (command == u"names"_s) {
        for (const BuiltInMacroDefinition &definition : BuiltInMacroProvider::definitions())
            std::puts(qPrintable(definition.id));
        return 0;
    }
    if (command == u"empty"_s && arguments.size() == 3)
        return measureEmpty(arguments.at(2).toInt());
    if (command == u"painted"_s && arguments.size() == 4)
        return measurePainted(arguments.at(2).toLongLong() * 1'000'000, arguments.at(3).toInt());
    const auto definition = definitionOf(arguments.value(2));
    if (command == u"builtin"_s && definition && arguments.size() == 5) {
        return measureBuiltIn(
            *definition, arguments.at(3).toLongLong() * 1'000'000, arguments.at(4).toInt());
    }
    std::fputs(kUsage, stderr);
    return 2;
}

#include "editor/TextDocument.h"
#include "macro/library/BuiltInMacroProvider.h"
#include "platform/json/JsonText.h"
#include "support/MacroCommand.h"
#include "support/TextModel.h"
#include "view/TextView.h"
#include "window/EditorWindowController.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

#ifdef __SANITIZE_ADDRESS__ // A run takes much longer.
constexpr int kRandomResults = 150;
#else
constexpr int kRandomResults = 1000;
#endif

/// What a run made of a text.
struct Outcome
{
    QString text;
    TextRange selection;
    QString message;
    bool hasFailed = false;
};

/// Runs a macro in an editor window.
Outcome runInWindow(EditorWindowController &controller,
                    const QString &code,
                    const std::optional<QString> &input)
{
    bool hasFailed = false;
    const auto connection = QObject::connect(
        &controller, &EditorWindowController::macroFailed, [&hasFailed] { hasFailed = true; });
    controller.documentState()->setMacroNotificationMessage(std::nullopt);
    controller.runMacro(code, u"id"_s, u"name"_s, input);
    if (!QTest::qWaitFor([&] { return !controller.isRunningMacro(); }, test::kLongWait))
        qFatal("The macro does not end.");
    QCoreApplication::processEvents();
    QObject::disconnect(connection);
    const TextView *view = controller.textView();
    return {view->string().toString(),
            view->selectedRange(),
            controller.documentState()->macroNotificationMessage().value_or(QString()),
            hasFailed};
}

// A second macro that tells what selection the first one left.
const QString kTellSelection =
    u"return {notifications: [{type: 'info', message: 'selection ' + "
    "context.selection.startOffset + ' ' + context.selection.endOffset}]};"_s;

QList<JsonObject> reportsOf(const QByteArray &output)
{
    QList<JsonObject> reports;
    for (const QByteArray &line : output.split('\n'))
        if (!line.isEmpty())
            reports << *JsonText::read(line)->asObject();
    return reports;
}

/// Reads a report of a run with `kTellSelection`. A failed run has no selection.
Outcome outcomeOf(const JsonObject &report, const QByteArray &text)
{
    Outcome outcome;
    outcome.text = Text::fromUtf8(text)->toString(); // Keeps a byte-order mark.
    if (const auto error = report.constFind(u"error"_s); error != report.cend()) {
        outcome.hasFailed = true;
        outcome.message = *error->asObject()->value(u"message"_s).asText();
        return outcome;
    }
    const JsonArray notifications = *report.value(u"notifications"_s).asArray();
    const auto messageAt = [&](qsizetype i) {
        return *notifications.at(i).asObject()->value(u"message"_s).asText();
    };
    const QStringList selection = messageAt(notifications.size() - 1).split(u' ');
    outcome.selection =
        TextRange::between(selection.at(1).toLongLong(), selection.at(2).toLongLong());
    if (notifications.size() > 1)
        outcome.message = messageAt(notifications.size() - 2);
    return outcome;
}

/// The JSON of a random result, as a script would write it. Some of them fail.
JsonValue randomResult(QRandomGenerator &random)
{
    const auto offset = [&random] { return qint64(random.bounded(40)) - 5; };
    const auto words = [&random] { return test::randomText(random, random.bounded(6)); };
    JsonArray edits;
    for (int i = random.bounded(4); i > 0; --i) {
        const qint64 line = random.bounded(3);
        const JsonObject choices[] = {
            {{u"type"_s, u"replaceAll"_s}, {u"text"_s, words()}},
            {{u"type"_s, u"replaceSelection"_s}, {u"text"_s, words()}},
            {{u"type"_s, u"insertAtCursor"_s}, {u"text"_s, words()}},
            {{u"type"_s, u"replaceLines"_s},
             {u"startLine"_s, line},
             {u"endLine"_s, line + random.bounded(3)},
             {u"lines"_s, JsonArray{words(), words()}}},
            {{u"type"_s, u"insertAtCursor"_s}},
        };
        edits << choices[random.bounded(20) == 0 ? 4 : random.bounded(4)];
    }
    JsonObject result{{u"textEdits"_s, edits}};
    if (random.bounded(3) == 0)
        result[u"cursor"_s] = random.bounded(2) == 0
                                  ? JsonObject{{u"offset"_s, offset()}}
                                  : JsonObject{{u"line"_s, offset()}, {u"column"_s, offset()}};
    if (random.bounded(3) == 0)
        result[u"selection"_s] =
            random.bounded(4) == 0
                ? JsonValue()
                : JsonValue(JsonObject{{u"startOffset"_s, offset()}, {u"endOffset"_s, offset()}});
    if (random.bounded(2) == 0)
        result[u"notifications"_s] =
            JsonArray{JsonObject{{u"type"_s, u"info"_s}, {u"message"_s, words()}}};
    return result;
}

} // namespace

/// The command line and the editor window run the same macros on the same texts.
class SameAsInTheWindowTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cases_giveTheSame_data();
    void cases_giveTheSame();
    void randomResults_giveTheSame();

private:
    [[nodiscard]] static QString caseFile(const QString &name, const QString &file)
    {
        return QStringLiteral(PENWICK_MACRO_CASES) + u'/' + name + u'/' + file;
    }

    [[nodiscard]] static std::optional<QString> read(const QString &name, const QString &file)
    {
        QFile in(caseFile(name, file));
        return in.open(QIODevice::ReadOnly) ? std::optional(QString::fromUtf8(in.readAll()))
                                            : std::nullopt;
    }

    static void compare(const Outcome &inWindow, const Outcome &onCommandLine);
};

void SameAsInTheWindowTest::compare(const Outcome &inWindow, const Outcome &onCommandLine)
{
    QCOMPARE(onCommandLine.hasFailed, inWindow.hasFailed);
    if (inWindow.hasFailed) { // In the window, the edits before the failing one stay.
        QCOMPARE(onCommandLine.message, inWindow.message);
        return;
    }
    QCOMPARE(onCommandLine.text, inWindow.text);
    QCOMPARE(onCommandLine.selection, inWindow.selection);
    if (!onCommandLine.message.isEmpty()) // Else the window says that the macro has run.
        QCOMPARE(onCommandLine.message, inWindow.message);
}

void SameAsInTheWindowTest::cases_giveTheSame_data()
{
    QTest::addColumn<QString>("name");
    const QDir folder(QStringLiteral(PENWICK_MACRO_CASES));
    const QStringList names = folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QVERIFY(names.size() > 20);
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << name;
}

void SameAsInTheWindowTest::cases_giveTheSame()
{
    QFETCH(QString, name);
    const test::MacroCommand command;
    const QString before = *read(name, u"before.txt"_s);
    const auto range = JsonText::read(read(name, u"selection.json"_s)->toUtf8());
    const qint64 start = *range->asObject()->value(u"location"_s).asInteger();
    const qint64 end = start + *range->asObject()->value(u"length"_s).asInteger();
    const auto input = read(name, u"input.txt"_s);
    QString code;
    if (const auto own = read(name, u"macro.js"_s))
        code = *own;
    else
        code =
            BuiltInMacroProvider::script(*builtInMacro(read(name, u"builtin.txt"_s)->chopped(1)));

    command.home.write(u"macro.js"_s, code.toUtf8());
    command.home.write(u"text"_s, before.toUtf8());
    QStringList arguments{u"-f"_s,
                          u"macro.js"_s,
                          u"-e"_s,
                          kTellSelection,
                          u"--json"_s,
                          u"--selection=%1:%2"_s.arg(start).arg(end),
                          u"-i"_s,
                          u"text"_s};
    if (input)
        arguments << u"--input="_s + *input;
    const test::Ran ran = command.run(arguments);
    const QList<JsonObject> reports = reportsOf(ran.out);
    QCOMPARE(reports.size(), 1);
    const Outcome onCommandLine = outcomeOf(reports.first(), command.home.read(u"text"_s));

    UserDefaults defaults(command.home.file(u"settings"_s));
    TextDocument document;
    document.setContentString(Text(before));
    EditorWindowController controller(defaults);
    controller.setDocument(&document);
    controller.textView()->setSelectedRange({start, end - start});
    compare(runInWindow(controller, code, input), onCommandLine);
}

void SameAsInTheWindowTest::randomResults_giveTheSame()
{
    constexpr quint32 kSeed = 20;
    QRandomGenerator random(kSeed);
    JsonArray results;
    for (int i = 0; i < kRandomResults; ++i)
        results << randomResult(random);
    const QString code = u"const results = "_s + QString::fromUtf8(JsonText::writeLine(results)) +
                         u";\nreturn results[parseInt(context.document.text)];"_s;
    const QString text = u"一行目\r\nsecond 😀\n三行目"_s;
    constexpr qint64 kStart = 6;
    constexpr qint64 kEnd = 9;

    const test::MacroCommand command;
    command.home.write(u"macro.js"_s, code.toUtf8());
    QStringList arguments{u"-f"_s,
                          u"macro.js"_s,
                          u"-e"_s,
                          kTellSelection,
                          u"--json"_s,
                          u"-i"_s,
                          u"--selection=%1:%2"_s.arg(kStart).arg(kEnd)};
    for (int i = 0; i < kRandomResults; ++i) {
        const QString name = u"%1"_s.arg(i);
        command.home.write(name, (name.leftJustified(4) + text).toUtf8());
        arguments << name;
    }
    const test::Ran ran = command.run(arguments);
    const QList<JsonObject> reports = reportsOf(ran.out);
    QCOMPARE(reports.size(), kRandomResults);

    UserDefaults defaults(command.home.file(u"settings"_s));
    int failures = 0;
    for (int i = 0; i < kRandomResults; ++i) {
        const QString name = u"%1"_s.arg(i);
        TextDocument document;
        document.setContentString(Text(name.leftJustified(4) + text));
        EditorWindowController controller(defaults);
        controller.setDocument(&document);
        controller.textView()->setSelectedRange({kStart, kEnd - kStart});
        const Outcome inWindow = runInWindow(controller, code, std::nullopt);
        failures += inWindow.hasFailed ? 1 : 0;
        compare(inWindow, outcomeOf(reports.at(i), command.home.read(name)));
        if (QTest::currentTestFailed())
            QFAIL(qPrintable(u"Result %1: "_s.arg(i) +
                             QString::fromUtf8(JsonText::writeLine(results.at(i)))));
    }
    QVERIFY(failures > 0 && failures < kRandomResults / 2);
}

} // namespace penwick

QTEST_MAIN(penwick::SameAsInTheWindowTest)
#include "SameAsInTheWindowTest.moc"

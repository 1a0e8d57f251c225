#include "macro/library/BuiltInMacro.h"
#include "macro/library/MacroFile.h"
#include "macro/library/MacroJson.h"
#include "platform/json/JsonText.h"
#include "support/MacroCommand.h"
#include "support/UnprivilegedUser.h"
#include "wording/EnglishProfile.h"
#include "wording/UIWordingProfile.h"

#include <QFileInfo>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

const QString kIdentity = u"return {};"_s;

/// Returns the same text as a new one.
const QString kSameText =
    u"return {textEdits: [{type: 'replaceAll', text: context.document.text}]};"_s;

const QString kTrim = u"default_trimTrailingSpaces"_s;

struct stat statusOf(const MacroCommand &program, const QString &name)
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(program.home.file(name)).constData(), &status) != 0)
        qFatal("A test file has no status.");
    return status;
}

bool isUntouched(const struct stat &before, const struct stat &after)
{
    return before.st_ino == after.st_ino && before.st_mtim.tv_sec == after.st_mtim.tv_sec &&
           before.st_mtim.tv_nsec == after.st_mtim.tv_nsec;
}

QList<JsonObject> jsonLines(const QByteArray &output)
{
    QList<JsonObject> objects;
    for (const QByteArray &line : output.split('\n')) {
        const auto value = JsonText::read(line);
        if (value && value->asObject() != nullptr)
            objects << *value->asObject();
    }
    return objects;
}

Macro macroNamed(const QString &id, const QString &name, const QString &code)
{
    Macro macro;
    macro.id = id;
    macro.name = name;
    macro.code = code;
    macro.source = u"user"_s;
    return macro;
}

void store(const MacroCommand &program, const QList<Macro> &macros)
{
    program.home.write(u"data/penwick/macros.json"_s, MacroJson::write(macros));
}

void useEnglish(const MacroCommand &program)
{
    program.home.write(u"config/penwick/penwick.conf"_s, "activeUIWordingProfileId=english\n");
    program.home.write(u"data/penwick/ui-wording-profiles/english.json"_s,
                       englishProfile().toJson());
}

QStringList filesBelow(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

class BatchProgramTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void program_linksNoWindows();
    void standardInput_goesToStandardOutput();
    void bytes_throughAnIdentity_areTheSame_data();
    void bytes_throughAnIdentity_areTheSame();
    void oneFile_goesToStandardOutput();
    void severalFiles_needAMode();
    void macros_severalOnes_seeWhatTheOneBeforeLeft();
    void storedMacro_isFoundByIdThenByName();
    void store_isOnlyRead();
    void scriptFile_isRun();
    void exportedFile_isRun();
    void context_hasTheFileAndTheSelection();
    void selection_outsideTheText_fails();
    void input_isGivenOrAskedFor();
    void inPlace_writesOnlyWhatChanged();
    void inPlace_keepsLinksAndModes();
    void inPlace_withBackup_keepsTheOldText();
    void inPlace_readOnly_isRefused();
    void check_writesNothing();
    void names_areListed();
    void diff_isWritten();
    void output_isWrittenLikeASave();
    void output_thatIsTheInput_isWritten();
    void standardOutput_toTheInput_isRefused();
    void lists_nameTheFiles();
    void sameFile_isRunOnce();
    void json_hasALineForEachFile();
    void errors_doNotStopTheRun();
    void errors_nameTheFileThatTheyAreAbout();
    void messages_ofSeveralLines_nameTheFileInEach();
    void failingEdit_leavesTheFile();
    void notUtf8_isAnErrorOrSkipped();
    void notifications_areShownAndStrict();
    void log_namesTheFile();
    void log_thatIsLong_isCut();
    void timeout_stopsTheMacro();
    void verbosity_decidesWhatIsSaid();
    void profile_changesTheWords();
    void help_fitsAScreen_data();
    void help_fitsAScreen();
    void english_speaksEnglish();
    void color_isOnlyWhereItIsWanted();
    void order_isThatOfTheArguments();
    void manyNames_areTaken();
};

void BatchProgramTest::program_linksNoWindows()
{
    QProcess ldd;
    ldd.start(u"ldd"_s, {MacroCommand::path()});
    if (!ldd.waitForFinished())
        QSKIP("ldd is not installed.");
    const QByteArray libraries = ldd.readAllStandardOutput();
    QVERIFY(libraries.contains("Qt6Core"));
    for (const char *library : {"Qt6Gui", "Qt6Widgets", "Qt6DBus", "libX11", "libxcb", "wayland"})
        QVERIFY2(!libraries.contains(library), library);
}

void BatchProgramTest::standardInput_goesToStandardOutput()
{
    const MacroCommand program;
    for (const QStringList &files : {QStringList(), QStringList{u"-"_s}}) {
        const Ran ran = program.run(QStringList{u"-m"_s, kTrim} + files, "a \n日　\nb");
        QCOMPARE(ran.out, "a\n日\nb"_ba);
        QCOMPARE(ran.err, QByteArray());
        QCOMPARE(ran.status, 0);
    }
}

void BatchProgramTest::bytes_throughAnIdentity_areTheSame_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("mixed line ends") << "a\r\nb\nc\rd\r\r\n\n"_ba;
    QTest::newRow("byte-order mark") << "\xEF\xBB\xBF日\n"_ba;
    QTest::newRow("NUL") << QByteArray("a\0b\n", 4);
    QTest::newRow("separators") << "a\u2028b\u2029c\u0085d\v\f"_ba;
    QTest::newRow("no final line feed") << "a\nb"_ba;
    QTest::newRow("beyond the first plane") << "😀👩‍👩‍👧\n"_ba;
    QTest::newRow("long") << QByteArray("日本語\r\n").repeated(100'000);
}

void BatchProgramTest::bytes_throughAnIdentity_areTheSame()
{
    QFETCH(QByteArray, bytes);
    const MacroCommand program;
    for (const QString &code : {kIdentity, kSameText}) {
        const Ran ran = program.run({u"-e"_s, code}, bytes);
        QCOMPARE(ran.status, 0);
        QVERIFY(ran.out == bytes);
        program.home.write(u"a"_s, bytes);
        const struct stat before = statusOf(program, u"a"_s);
        QCOMPARE(program.run({u"-e"_s, code, u"-i"_s, u"a"_s}).status, 0);
        QVERIFY(isUntouched(before, statusOf(program, u"a"_s)));
    }
    const Ran ran = program.run({u"-e"_s,
                                 u"return {textEdits: [{type: 'insertAtCursor', text: 'x'}]};"_s,
                                 u"-i"_s,
                                 u"a"_s});
    QCOMPARE(ran.status, 0);
    QVERIFY(program.home.read(u"a"_s) == "x" + bytes);
}

void BatchProgramTest::oneFile_goesToStandardOutput()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    const Ran ran = program.run({u"-e"_s, replacing(u"1"_s, u"2"_s), u"a"_s});
    QCOMPARE(ran.status, 0);
    QCOMPARE(ran.out, "2\n"_ba);
    QCOMPARE(program.home.read(u"a"_s), "1\n"_ba);
}

void BatchProgramTest::severalFiles_needAMode()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    program.home.write(u"b"_s, "1\n");
    const Ran ran = program.run({u"-e"_s, replacing(u"1"_s, u"2"_s), u"a"_s, u"b"_s});
    QCOMPARE(ran.status, 2);
    QCOMPARE(ran.out, QByteArray());
    QVERIFY(ran.err.startsWith("penwick-macro: "));
    QCOMPARE(program.run({u"-e"_s, kIdentity, u"-o"_s, u"c"_s, u"a"_s, u"b"_s}).status, 2);
    QVERIFY(!QFile::exists(program.home.file(u"c"_s)));
}

void BatchProgramTest::macros_severalOnes_seeWhatTheOneBeforeLeft()
{
    const MacroCommand program;
    const QString select = u"return {textEdits: [{type: 'replaceAll', text: 'one two'}],"
                           "        selection: {startOffset: 4, endOffset: 7}};"_s;
    const QString see =
        u"return {textEdits: [{type: 'replaceSelection', "
        "text: '<' + context.selection.text + context.document.isModified + '>'}]};"_s;
    const Ran ran = program.run({u"-e"_s, select, u"-e"_s, see}, "zero");
    QCOMPARE(ran.out, "one <twotrue>"_ba);
    QCOMPARE(ran.status, 0);
}

void BatchProgramTest::storedMacro_isFoundByIdThenByName()
{
    const MacroCommand program;
    store(program,
          {macroNamed(u"A"_s, u"B"_s, replacing(u"x"_s, u"a"_s)),
           macroNamed(u"B"_s, u"日"_s, replacing(u"x"_s, u"b"_s)),
           macroNamed(u"C"_s, u"twice"_s, kIdentity),
           macroNamed(u"D"_s, u"twice"_s, kIdentity)});
    QCOMPARE(program.run({u"-m"_s, u"A"_s}, "x").out, "a"_ba);
    QCOMPARE(program.run({u"-m"_s, u"B"_s}, "x").out, "b"_ba);
    QCOMPARE(program.run({u"-m"_s, u"日"_s}, "x").out, "b"_ba);
    const Ran twice = program.run({u"-m"_s, u"twice"_s}, "x");
    QCOMPARE(twice.status, 2);
    QVERIFY(twice.err.contains("C, D"));
    QCOMPARE(twice.out, QByteArray());
    const Ran unknown = program.run({u"-m"_s, u"no such"_s}, "x");
    QCOMPARE(unknown.status, 2);
    QVERIFY(unknown.err.contains("no such"));
    program.home.write(u"data/penwick/macros.json"_s, "[");
    QCOMPARE(program.run({u"-m"_s, u"A"_s}, "x").status, 2);
    QCOMPARE(program.run({u"-e"_s, kIdentity}, "x").status, 0);
}

void BatchProgramTest::store_isOnlyRead()
{
    const MacroCommand program;
    const Ran list = program.run({u"--list"_s});
    QCOMPARE(list.status, 0);
    const QByteArrayList lines = list.out.split('\n');
    QCOMPARE(lines.size(), allBuiltInMacros().size() + 1);
    QCOMPARE(lines.first(), "default_trimTrailingSpaces\t行末スペースを削除\t組み込み"_ba);
    QCOMPARE(program.run({u"-m"_s, kTrim}, "a ").out, "a"_ba);
    QVERIFY(filesBelow(program.home.path()).isEmpty());
    store(program, {macroNamed(u"A"_s, u"tab\tname"_s, kIdentity)});
    QVERIFY(program.run({u"--list"_s}).out.startsWith("A\ttab name\t"));
    const QList<JsonObject> objects = jsonLines(program.run({u"--list"_s, u"--json"_s}).out);
    QCOMPARE(objects.size(), allBuiltInMacros().size() + 1);
    QCOMPARE(*objects.first().value(u"name"_s).asText(), u"tab\tname"_s);
}

void BatchProgramTest::scriptFile_isRun()
{
    const MacroCommand program;
    program.home.write(u"a.js"_s,
                       QByteArray("#!/usr/bin/env penwick-macro\n") +
                           replacing(u"x"_s, u"y"_s).toUtf8());
    QCOMPARE(program.run({u"-f"_s, u"a.js"_s}, "x").out, "y"_ba);
    program.home.write(u"e.js"_s,
                       "#!x\n// penwick:macro\n// name: 名前\nreturn {textEdits: [{type: "
                       "'replaceAll', text: context.macro.name}]};");
    QCOMPARE(program.run({u"-f"_s, u"e.js"_s}, "x").out, "名前"_ba);
    program.home.write(u"b.js"_s,
                       "\xEF\xBB\xBFreturn {textEdits: [{type: 'replaceAll', text: "
                       "context.macro.name + context.macro.id}]};");
    QCOMPARE(program.run({u"-f"_s, u"b.js"_s}, "x").out, "b.js"_ba);
    program.home.write(u"c.js"_s, "\xff");
    for (const QString &name : {u"c.js"_s, u"no.js"_s, u"."_s}) {
        const Ran ran = program.run({u"-f"_s, name}, "x");
        QCOMPARE(ran.status, 2);
        QVERIFY(ran.err.startsWith("penwick-macro: " + name.toUtf8() + ": "));
        QCOMPARE(ran.out, QByteArray());
    }
    program.home.write(u"d.js"_s, "return {};\nmissing(\n");
    const Ran broken = program.run({u"-f"_s, u"d.js"_s}, "x");
    QCOMPARE(broken.status, 2);
    QVERIFY2(broken.err.contains("(d.js:"), broken.err);
}

void BatchProgramTest::exportedFile_isRun()
{
    const MacroCommand program;
    program.home.write(u"a.json"_s,
                       MacroFile::write(macroNamed(u"A"_s, u"name"_s, replacing(u"x"_s, u"y"_s))));
    QCOMPARE(program.run({u"-f"_s, u"a.json"_s}, "x").out, "y"_ba);
    program.home.write(u"b.json"_s, "{}");
    QCOMPARE(program.run({u"-f"_s, u"b.json"_s}, "x").status, 2);
}

void BatchProgramTest::context_hasTheFileAndTheSelection()
{
    const MacroCommand program;
    const QString show =
        u"return {textEdits: [{type: 'replaceAll', text: JSON.stringify("
        "[context.file, context.selection, context.cursor.offset, context.document.isModified])}]};"_s;
    program.home.write(u"sub/a.b.txt"_s, "日本\r\n😀x\n");
    const auto shown = [&](const QStringList &options, const QByteArray &input = {}) {
        const Ran ran = program.run(QStringList{u"-e"_s, show} + options, input);
        return JsonText::read(ran.out).value_or(JsonValue());
    };
    const JsonValue file = shown({u"sub/a.b.txt"_s});
    QVERIFY(file.asArray()->at(0) == JsonValue(JsonObject{{u"name"_s, u"a.b.txt"_s},
                                                          {u"path"_s, QString()},
                                                          {u"directoryPath"_s, QString()},
                                                          {u"extension"_s, u"txt"_s},
                                                          {u"existsOnDisk"_s, true}}));
    QVERIFY(file.asArray()->at(2) == JsonValue(0));
    QVERIFY(file.asArray()->at(3) == JsonValue(false));
    const JsonValue unnamed = shown({}, "x");
    QVERIFY(unnamed.asArray()->at(0).asObject()->value(u"name"_s) == JsonValue(QString()));
    QVERIFY(unnamed.asArray()->at(0).asObject()->value(u"existsOnDisk"_s) == JsonValue(false));
    const JsonValue named = shown({u"--stdin-filename=x/c.md"_s}, "x");
    QVERIFY(named.asArray()->at(0).asObject()->value(u"name"_s) == JsonValue(u"c.md"_s));
    const auto selected = [&](const QString &option) {
        const JsonValue value = shown({option, u"sub/a.b.txt"_s});
        return *value.asArray()->at(1).asObject()->value(u"text"_s).asText();
    };
    QCOMPARE(selected(u"--selection=1:5"_s), u"本\r\n"_s); // Not half a surrogate pair.
    QCOMPARE(selected(u"--line=1"_s), u"日本"_s);
    QCOMPARE(selected(u"--line=2"_s), u"😀x"_s);
    QCOMPARE(selected(u"--line=3"_s), QString());
    QVERIFY(shown({u"--cursor=2"_s, u"sub/a.b.txt"_s}).asArray()->at(2) == JsonValue(2));
}

void BatchProgramTest::selection_outsideTheText_fails()
{
    const MacroCommand program;
    for (const QString &option : {u"--selection=0:4"_s, u"--cursor=4"_s, u"--line=3"_s}) {
        const Ran ran = program.run({u"-e"_s, kIdentity, option}, "a\nb");
        QCOMPARE(ran.status, 2);
        QCOMPARE(ran.out, QByteArray());
    }
}

void BatchProgramTest::input_isGivenOrAskedFor()
{
    const MacroCommand program;
    for (const QString &id :
         {u"default_addLinePrefix"_s, u"default_addLineSuffix"_s, u"default_insertDateTime"_s}) {
        const Ran refused = program.run({u"-m"_s, id}, "a");
        QCOMPARE(refused.status, 2);
        QVERIFY2(refused.err.contains("--input"), refused.err);
        QCOMPARE(refused.out, QByteArray());
    }
    QCOMPARE(program.run({u"-m"_s, u"default_addLinePrefix"_s, u"--input=> "_s}, "a\nb").out,
             "> a\n> b"_ba);
    QCOMPARE(program.run({u"-m"_s, u"default_insertDateTime"_s, u"--input"_s, u"今日"_s}, "a").out,
             "今日a"_ba);
}

void BatchProgramTest::inPlace_writesOnlyWhatChanged()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    program.home.write(u"b"_s, "x\n");
    const struct stat before = statusOf(program, u"b"_s);
    const Ran ran = program.run({u"-i"_s, u"-e"_s, replacing(u"1"_s, u"2"_s), u"a"_s, u"b"_s});
    QCOMPARE(ran.status, 0);
    QCOMPARE(ran.out + ran.err, QByteArray());
    QCOMPARE(program.home.read(u"a"_s), "2\n"_ba);
    QVERIFY(isUntouched(before, statusOf(program, u"b"_s)));
    QCOMPARE(filesBelow(program.home.path()), (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(program.run({u"-i"_s, u"-e"_s, kIdentity}, "x").status, 2); // Standard input.
}

void BatchProgramTest::inPlace_keepsLinksAndModes()
{
    const MacroCommand program;
    const QByteArray file = QFile::encodeName(program.home.write(u"file"_s, "1\n"));
    QCOMPARE(::chmod(file.constData(), 0751), 0);
    QVERIFY(QFile::link(u"file"_s, program.home.file(u"link"_s)));
    program.home.write(u"hard"_s, "1\n");
    QCOMPARE(::link(QFile::encodeName(program.home.file(u"hard"_s)).constData(),
                    QFile::encodeName(program.home.file(u"other"_s)).constData()),
             0);
    const Ran ran =
        program.run({u"-i"_s, u"-e"_s, replacing(u"1"_s, u"2"_s), u"link"_s, u"hard"_s});
    QCOMPARE(ran.status, 0);
    QVERIFY(QFileInfo(program.home.file(u"link"_s)).isSymLink());
    QCOMPARE(program.home.read(u"file"_s), "2\n"_ba);
    QCOMPARE(statusOf(program, u"file"_s).st_mode & ALLPERMS, mode_t{0751});
    QCOMPARE(program.home.read(u"other"_s), "2\n"_ba);
}

void BatchProgramTest::inPlace_withBackup_keepsTheOldText()
{
    const MacroCommand program;
    const QByteArray file = QFile::encodeName(program.home.write(u"a"_s, "1\n"));
    QCOMPARE(::chmod(file.constData(), 0600), 0);
    program.home.write(u"b"_s, "x\n");
    const QString code = replacing(u"1"_s, u"2"_s);
    QCOMPARE(program.run({u"--backup=.old"_s, u"-e"_s, code, u"a"_s, u"b"_s}).status, 0);
    QCOMPARE(program.home.read(u"a"_s), "2\n"_ba);
    QCOMPARE(program.home.read(u"a.old"_s), "1\n"_ba);
    QCOMPARE(statusOf(program, u"a.old"_s).st_mode & ALLPERMS, mode_t{0600});
    QCOMPARE(filesBelow(program.home.path()), (QStringList{u"a"_s, u"a.old"_s, u"b"_s}));
    program.home.write(u"a"_s, "1\n");
    QCOMPARE(program.run({u"--backup"_s, u"-e"_s, code, u"a"_s}).status, 0);
    QCOMPARE(program.home.read(u"a~"_s), "1\n"_ba);
}

void BatchProgramTest::inPlace_readOnly_isRefused()
{
    const MacroCommand program;
    const QByteArray file = QFile::encodeName(program.home.write(u"a"_s, "1\n"));
    QCOMPARE(::chmod(file.constData(), 0444), 0);
    QProcess process; // As another user: root may write to any file.
    program.startAsOtherUser(process, {u"--backup"_s, u"-e"_s, replacing(u"1"_s, u"2"_s), u"a"_s});
    QVERIFY(process.waitForFinished(kLongWait));
    QCOMPARE(process.exitCode(), 2);
    QVERIFY(process.readAllStandardError().startsWith("a: "));
    QCOMPARE(program.home.read(u"a"_s), "1\n"_ba);
    QCOMPARE(filesBelow(program.home.path()), (QStringList{u"a"_s, u"bin"_s}));
}

void BatchProgramTest::check_writesNothing()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    program.home.write(u"b"_s, "x\n");
    const struct stat before = statusOf(program, u"a"_s);
    const QString code = replacing(u"1"_s, u"2"_s);
    const Ran changed = program.run({u"--check"_s, u"-e"_s, code, u"b"_s, u"a"_s});
    QCOMPARE(changed.status, 1);
    QCOMPARE(changed.out, "a\n"_ba);
    QVERIFY(isUntouched(before, statusOf(program, u"a"_s)));
    const Ran unchanged = program.run({u"--check"_s, u"-e"_s, code, u"b"_s});
    QCOMPARE(unchanged.status, 0);
    QCOMPARE(unchanged.out, QByteArray());
    const Ran failed = program.run({u"--check"_s, u"-e"_s, code, u"a"_s, u"missing"_s});
    QCOMPARE(failed.status, 2);
    const Ran quiet = program.run({u"--check"_s, u"-q"_s, u"-e"_s, code, u"a"_s});
    QCOMPARE(quiet.status, 1);
    QCOMPARE(quiet.out, QByteArray());
    QCOMPARE(program.run({u"--check"_s, u"-e"_s, code}, "1").status, 1);
}

void BatchProgramTest::names_areListed()
{
    const MacroCommand program;
    for (const QString &name : {u"a b"_s, u"c\nd"_s, u"e"_s})
        program.home.write(name, name == u"e"_s ? "x" : "1");
    const QStringList files{u"e"_s, u"c\nd"_s, u"a b"_s};
    const QString code = replacing(u"1"_s, u"2"_s);
    QCOMPARE(program.run(QStringList{u"-l"_s, u"-e"_s, code} + files).out, "c\nd\na b\n"_ba);
    QCOMPARE(program.home.read(u"a b"_s), "1"_ba);
    const Ran ended = program.run(QStringList{u"-i0"_s, u"-e"_s, code} + files);
    QCOMPARE(ended.out, QByteArray("c\nd\0a b\0", 8));
    QCOMPARE(program.home.read(u"a b"_s), "2"_ba);
}

void BatchProgramTest::diff_isWritten()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    program.home.write(u"b"_s, "x\n");
    const QString code = replacing(u"1"_s, u"2"_s);
    const QByteArray expected = "--- a/a\n+++ b/a\n@@ -1 +1 @@\n-1\n+2\n";
    const Ran only = program.run({u"--diff"_s, u"-e"_s, code, u"a"_s, u"b"_s});
    QCOMPARE(only.out, expected);
    QCOMPARE(only.status, 0);
    const Ran checked = program.run({u"--diff"_s, u"--check"_s, u"-e"_s, code, u"a"_s, u"b"_s});
    QCOMPARE(checked.out, expected);
    QCOMPARE(checked.status, 1);
    const Ran named = program.run({u"--diff"_s, u"--stdin-filename=n"_s, u"-e"_s, code}, "1\n");
    QVERIFY(named.out.startsWith("--- a/n\n+++ b/n\n"));
    QCOMPARE(program.home.read(u"a"_s), "1\n"_ba);
    QCOMPARE(program.run({u"--diff"_s, u"-i"_s, u"-e"_s, code, u"a"_s}).out, expected);
    QCOMPARE(program.home.read(u"a"_s), "2\n"_ba);
}

void BatchProgramTest::output_isWrittenLikeASave()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    const QString code = replacing(u"1"_s, u"2"_s);
    QCOMPARE(program.run({u"-o"_s, u"new"_s, u"-e"_s, code, u"a"_s}).status, 0);
    QCOMPARE(program.home.read(u"new"_s), "2\n"_ba);
    QCOMPARE(program.home.read(u"a"_s), "1\n"_ba);
    // Also when nothing changes: a build depends on the file.
    QCOMPARE(program.run({u"-o"_s, u"same"_s, u"-e"_s, kIdentity, u"a"_s}).status, 0);
    QCOMPARE(program.home.read(u"same"_s), "1\n"_ba);
    QCOMPARE(program.run({u"-o"_s, u"from"_s, u"-e"_s, code}, "1").status, 0);
    QCOMPARE(program.home.read(u"from"_s), "2"_ba);
    QCOMPARE(program.run({u"-o"_s, u"-"_s, u"-e"_s, code, u"a"_s}).out, "2\n"_ba);
    QCOMPARE(program.run({u"-o"_s, u"no/such"_s, u"-e"_s, code, u"a"_s}).status, 2);
}

void BatchProgramTest::output_thatIsTheInput_isWritten()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    QVERIFY(QFile::link(u"a"_s, program.home.file(u"link"_s)));
    QCOMPARE(program.run({u"-o"_s, u"link"_s, u"-e"_s, replacing(u"1"_s, u"2"_s), u"a"_s}).status,
             0);
    QCOMPARE(program.home.read(u"a"_s), "2\n"_ba);
    QVERIFY(QFileInfo(program.home.file(u"link"_s)).isSymLink());
}

void BatchProgramTest::standardOutput_toTheInput_isRefused()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    QProcess process;
    process.setStandardOutputFile(program.home.file(u"a"_s), QIODevice::Append);
    program.start(process, {u"-e"_s, kIdentity, u"a"_s});
    QVERIFY(process.waitForFinished(kLongWait));
    QCOMPARE(process.exitCode(), 2);
    QCOMPARE(program.home.read(u"a"_s), "1\n"_ba);
}

void BatchProgramTest::lists_nameTheFiles()
{
    const MacroCommand program;
    for (const QString &name : {u"a"_s, u"b c"_s, u"-d"_s, u"e\nf"_s})
        program.home.write(name, "1");
    const QString code = replacing(u"1"_s, u"2"_s);
    program.home.write(u"list"_s, "a\nb c\n\n-d");
    QCOMPARE(program.run({u"-l"_s, u"--files-from=list"_s, u"-e"_s, code}).out, "a\nb c\n-d\n"_ba);
    const Ran given = program.run({u"-l"_s, u"--files0-from=-"_s, u"-e"_s, code, u"a"_s},
                                  QByteArray("e\nf\0b c\0", 8));
    QCOMPARE(given.out, "a\ne\nf\nb c\n"_ba);
    // An empty list is no reason to read standard input.
    const Ran none = program.run({u"-i"_s, u"--files-from=-"_s, u"-e"_s, code}, "");
    QCOMPARE(none.status, 0);
    QCOMPARE(program.run({u"-i"_s, u"--files-from=-"_s, u"-e"_s, code, u"-"_s}, "a").status, 2);
    QCOMPARE(program.run({u"-i"_s, u"--files-from=no"_s, u"-e"_s, code}).status, 2);
}

void BatchProgramTest::sameFile_isRunOnce()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1");
    QVERIFY(QFile::link(u"a"_s, program.home.file(u"link"_s)));
    const QString add = u"return {textEdits: [{type: 'insertAtCursor', text: '+'}]};"_s;
    QCOMPARE(program.run({u"-il"_s, u"-e"_s, add, u"a"_s, u"link"_s, u"./a"_s}).out, "a\n"_ba);
    QCOMPARE(program.home.read(u"a"_s), "+1"_ba);
}

void BatchProgramTest::json_hasALineForEachFile()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    program.home.write(u"b"_s, "x\n");
    program.home.write(u"日"_s, "throw\n");
    const QString code =
        u"if (context.document.text === 'throw\\n')\n  missing();\n"
        "return {textEdits: context.document.text[0] === '1' ?"
        " [{type: 'insertAtCursor', text: 'a'}, {type: 'insertAtCursor', text: 'b'}]"
        " : [], notifications: [{type: 'warning', message: '注意'}]};"_s;
    const Ran ran =
        program.run({u"-i"_s, u"--json"_s, u"-e"_s, code, u"a"_s, u"b"_s, u"日"_s, u"no"_s});
    QCOMPARE(ran.status, 2);
    const QList<JsonObject> lines = jsonLines(ran.out);
    QCOMPARE(lines.size(), 4);
    const JsonObject &changed = lines.at(0);
    QCOMPARE(changed.keys(),
             (QStringList{u"changed"_s,
                          u"edits"_s,
                          u"milliseconds"_s,
                          u"notifications"_s,
                          u"path"_s,
                          u"status"_s}));
    QVERIFY(changed.value(u"path"_s) == JsonValue(u"a"_s));
    QVERIFY(changed.value(u"status"_s) == JsonValue(u"changed"_s));
    QVERIFY(changed.value(u"changed"_s) == JsonValue(true));
    QVERIFY(changed.value(u"edits"_s) == JsonValue(2));
    QVERIFY(changed.value(u"notifications"_s) ==
            JsonValue(JsonArray{JsonObject{{u"type"_s, u"warning"_s}, {u"message"_s, u"注意"_s}}}));
    QVERIFY(lines.at(1).value(u"status"_s) == JsonValue(u"unchanged"_s));
    const JsonObject error = *lines.at(2).value(u"error"_s).asObject();
    QVERIFY(error.value(u"code"_s) == JsonValue(u"exception"_s));
    QVERIFY(error.value(u"line"_s) == JsonValue(2));
    QVERIFY(error.value(u"column"_s).asInteger() > 0);
    QVERIFY(error.value(u"macro"_s) == JsonValue(u"-e"_s));
    QVERIFY(error.value(u"message"_s).asText()->contains(u"missing"_s));
    QVERIFY(lines.at(3).value(u"error"_s).asObject()->value(u"code"_s) == JsonValue(u"notFound"_s));
    QCOMPARE(program.home.read(u"a"_s), "ab1\n"_ba);
}

void BatchProgramTest::errors_doNotStopTheRun()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    QVERIFY(QDir().mkpath(program.home.file(u"folder"_s)));
    const Ran ran =
        program.run({u"-i"_s, u"-e"_s, replacing(u"1"_s, u"2"_s), u"no"_s, u"folder"_s, u"a"_s});
    QCOMPARE(ran.status, 2);
    const QByteArrayList lines = ran.err.split('\n');
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines.at(0).startsWith("no: ") && lines.at(1).startsWith("folder: "));
    QCOMPARE(program.home.read(u"a"_s), "2\n"_ba);
}

void BatchProgramTest::errors_nameTheFileThatTheyAreAbout()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1");
    program.home.write(u"folder/b"_s, "1");
    const QString code = replacing(u"1"_s, u"2"_s);
    QVERIFY(
        program.run({u"-e"_s, code, u"-o"_s, u"no/out"_s, u"a"_s}).err.startsWith("a: no/out: "));
    program.home.write(u"a~/b"_s, "1");
    QVERIFY(program.run({u"-e"_s, code, u"--backup"_s, u"a"_s}).err.startsWith("a: a~: "));
    QCOMPARE(program.home.read(u"a"_s), "1"_ba);

    const QByteArray isFolder = program.run({u"-i"_s, u"-e"_s, code, u"folder"_s}).err;
    QCOMPARE(program.run({u"-f"_s, u"folder"_s}).err, "penwick-macro: " + isFolder);
    QCOMPARE(program.run({u"-e"_s, code, u"--files-from=folder"_s}).err,
             "penwick-macro: " + isFolder);
    program.home.write(u"data/penwick/macros.json"_s, "{bad");
    QVERIFY(program.run({u"--list"_s}).err.contains(": 保存されたマクロを読み込めません ("));
}

void BatchProgramTest::messages_ofSeveralLines_nameTheFileInEach()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1");
    const QString notifying = u"return {notifications: [{type: 'error', message: '1\\n2'}]};"_s;
    QCOMPARE(program.run({u"--check"_s, u"-e"_s, notifying, u"a"_s}).err, "a: 1\na: 2\n"_ba);
    const Ran thrown = program.run({u"--check"_s, u"-e"_s, u"throw '1\\nb: 2'"_s, u"a"_s});
    QVERIFY(thrown.err.endsWith("1\na: b: 2\n"));
}

void BatchProgramTest::failingEdit_leavesTheFile()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    const QString code = u"return {textEdits: [{type: 'replaceAll', text: 'x'},"
                         " {type: 'replaceLines', startLine: 5, endLine: 9, lines: []}]};"_s;
    const Ran ran = program.run({u"-i"_s, u"-e"_s, code, u"a"_s});
    QCOMPARE(ran.status, 2);
    QCOMPARE(program.home.read(u"a"_s), "1\n"_ba);
    const Ran shown = program.run({u"-e"_s, code, u"a"_s});
    QCOMPARE(shown.status, 2);
    QCOMPARE(shown.out, QByteArray());
}

void BatchProgramTest::notUtf8_isAnErrorOrSkipped()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "日\xff");
    program.home.write(u"b"_s, "1");
    const QString code = replacing(u"1"_s, u"2"_s);
    const Ran failed = program.run({u"-i"_s, u"-e"_s, code, u"a"_s, u"b"_s});
    QCOMPARE(failed.status, 2);
    QVERIFY2(failed.err.startsWith("a: ") && failed.err.contains("3"), failed.err);
    QCOMPARE(program.home.read(u"b"_s), "2"_ba);
    const Ran skipped = program.run({u"-i"_s, u"--ignore-non-utf8"_s, u"-e"_s, code, u"a"_s});
    QCOMPARE(skipped.status, 0);
    QVERIFY2(skipped.err.contains("1"), skipped.err);
    QCOMPARE(skipped.err.count('\n'), 1);
    const Ran json = program.run({u"--json"_s, u"--ignore-non-utf8"_s, u"-e"_s, code, u"a"_s});
    QVERIFY(jsonLines(json.out).first().value(u"status"_s) == JsonValue(u"skipped"_s));
    QCOMPARE(program.home.read(u"a"_s), "日\xff"_ba);
}

void BatchProgramTest::notifications_areShownAndStrict()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1");
    const auto notifying = [](const QString &type) {
        return u"return {notifications: [{type: '%1', message: 'said'}]};"_s.arg(type);
    };
    for (const QString &type : {u"warning"_s, u"error"_s}) {
        const Ran lenient = program.run({u"--check"_s, u"-e"_s, notifying(type), u"a"_s});
        QCOMPARE(lenient.status, 0);
        QCOMPARE(lenient.err, "a: said\n"_ba);
        const Ran strict =
            program.run({u"--check"_s, u"--strict"_s, u"-q"_s, u"-e"_s, notifying(type), u"a"_s});
        QCOMPARE(strict.status, 1);
        QCOMPARE(strict.err, QByteArray());
    }
    for (const QString &type : {u"info"_s, u"success"_s}) {
        const Ran ran =
            program.run({u"--check"_s, u"--strict"_s, u"-e"_s, notifying(type), u"a"_s});
        QCOMPARE(ran.status, 0);
        QCOMPARE(ran.err, QByteArray());
    }
}

void BatchProgramTest::log_namesTheFile()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1");
    const Ran ran = program.run({u"-l"_s, u"-e"_s, u"console.log('x\\n日'); return {};"_s, u"a"_s});
    QCOMPARE(ran.err, "a: x\na: 日\n"_ba);
    QCOMPARE(ran.out, QByteArray());
    const Ran endless =
        program.run({u"-l"_s,
                     u"-e"_s,
                     u"for (let i = 0; i < 50000; ++i) console.log('x'.repeat(100));"_s,
                     u"a"_s});
    QVERIFY(endless.err.size() < 2'000'000);
}

void BatchProgramTest::log_thatIsLong_isCut()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1");
    const QString code = u"console.log('x'.repeat(2e6)); console.log('y'); return {};"_s;
    QCOMPARE(program.run({u"--check"_s, u"-e"_s, code, u"a"_s}).err,
             "a: " + QByteArray(1'000'000, 'x') + "…\n");
}

void BatchProgramTest::timeout_stopsTheMacro()
{
    const MacroCommand program;
    for (int i = 0; i < 10; ++i)
        program.home.write(u"f%1"_s.arg(i), i % 3 == 0 ? "endless" : "1");
    QStringList arguments{u"-i"_s,
                          u"--json"_s,
                          u"--timeout=1"_s,
                          u"-e"_s,
                          u"while (context.document.text === 'endless'); "_s +
                              replacing(u"1"_s, u"2"_s)};
    for (int i = 0; i < 10; ++i)
        arguments << u"f%1"_s.arg(i);
    const Ran ran = program.run(arguments);
    QCOMPARE(ran.status, 2);
    const QList<JsonObject> lines = jsonLines(ran.out);
    QCOMPARE(lines.size(), 10);
    for (int i = 0; i < 10; ++i) {
        const JsonValue error = lines.at(i).value(u"error"_s);
        QCOMPARE(error.isNull(), i % 3 != 0);
        QCOMPARE(program.home.read(u"f%1"_s.arg(i)), i % 3 == 0 ? "endless"_ba : "2"_ba);
        if (i % 3 == 0)
            QVERIFY(error.asObject()->value(u"code"_s) == JsonValue(u"timeout"_s));
    }
}

void BatchProgramTest::verbosity_decidesWhatIsSaid()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1");
    program.home.write(u"b"_s, "x");
    const Ran ran = program.run({u"-iv"_s, u"-e"_s, replacing(u"1"_s, u"2"_s), u"a"_s, u"b"_s});
    const QByteArrayList lines = ran.err.split('\n');
    QCOMPARE(lines.size(), 5); // Two files, the numbers, the times.
    QVERIFY(lines.at(0).startsWith("a: ") && lines.at(1).startsWith("b: "));
}

void BatchProgramTest::profile_changesTheWords()
{
    const MacroCommand program;
    program.home.write(u"config/penwick/penwick.conf"_s, "activeUIWordingProfileId=p\n");
    UIWordingProfile profile;
    profile.id = u"p"_s;
    profile.values = {{u"error.reason.notFound"_s, u"gone"_s},
                      {u"batch.noMacro"_s, u"which macro?"_s},
                      {u"macro.error.notObject"_s, u"no object"_s}};
    program.home.write(u"data/penwick/ui-wording-profiles/p.json"_s, profile.toJson());
    QCOMPARE(program.run({u"-i"_s, u"-e"_s, kIdentity, u"no"_s}).err, "no: gone\n"_ba);
    QVERIFY(program.run({u"a"_s}).err.startsWith("penwick-macro: which macro?\n"));
    program.home.write(u"a"_s, "1");
    const Ran json = program.run({u"--json"_s, u"-e"_s, u"return 1;"_s, u"a"_s});
    const JsonObject error = *jsonLines(json.out).first().value(u"error"_s).asObject();
    QVERIFY(error.value(u"code"_s) == JsonValue(u"notAnObject"_s));
    QVERIFY(error.value(u"message"_s) == JsonValue(u"no object"_s));
}

void BatchProgramTest::help_fitsAScreen_data()
{
    QTest::addColumn<bool>("isEnglish");
    QTest::newRow("Japanese") << false;
    QTest::newRow("English") << true;
}

void BatchProgramTest::help_fitsAScreen()
{
    QFETCH(const bool, isEnglish);
    const MacroCommand program;
    if (isEnglish)
        useEnglish(program);
    const Ran ran = program.run({u"--help"_s});
    QCOMPARE(ran.status, 0);
    QVERIFY(ran.out.startsWith(isEnglish ? "Usage: " : "使い方: "));
    const QList<QByteArray> lines = ran.out.trimmed().split('\n');
    constexpr int kRows = 24;
    constexpr int kColumns = 80;
    QVERIFY(lines.size() < kRows);
    for (const QByteArray &line : lines) {
        int columns = 0;
        for (const QChar unit : QString::fromUtf8(line))
            columns += unit.unicode() < 0x1100 ? 1 : 2;
        QVERIFY2(columns <= kColumns, line.constData());
    }
    QCOMPARE(program.run({u"--version"_s}).out, "penwick-macro " PENWICK_VERSION "\n"_ba);
}

void BatchProgramTest::english_speaksEnglish()
{
    const MacroCommand program;
    useEnglish(program);
    QCOMPARE(program.run({u"-i"_s, u"-e"_s, kIdentity, u"no"_s}).err,
             "no: The file or folder was not found.\n"_ba);
    QCOMPARE(program.run({u"a"_s}).err,
             "penwick-macro: give a macro with -m, -f or -e\n"
             "penwick-macro --help explains how to use it\n"_ba);
    // The built-in profile has few texts of its own, but its locale is English.
    program.home.write(u"config/penwick/penwick.conf"_s, "activeUIWordingProfileId=default-en\n");
    QVERIFY(program.run({u"a"_s}).err.startsWith("penwick-macro: give a macro with"));
}

void BatchProgramTest::color_isOnlyWhereItIsWanted()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1\n");
    const QStringList arguments{u"--diff"_s, u"-e"_s, replacing(u"1"_s, u"2"_s), u"a"_s};
    QVERIFY(!program.run(arguments).out.contains('\x1b'));
    const Ran colored = program.run(QStringList{u"--color=always"_s} + arguments);
    QCOMPARE(colored.out,
             "\x1b[1m--- a/a\x1b[m\n\x1b[1m+++ b/a\x1b[m\n\x1b[36m@@ -1 +1 @@\x1b[m\n"
             "\x1b[31m-1\x1b[m\n\x1b[32m+2\x1b[m\n"_ba);
}

void BatchProgramTest::order_isThatOfTheArguments()
{
    const MacroCommand program;
    QStringList arguments{u"-l"_s,
                          u"-j4"_s,
                          u"-e"_s,
                          u"let n = Number(context.document.text); let until = Date.now() + n;"
                          "while (Date.now() < until);"
                          "return {textEdits: [{type: 'replaceAll', text: ''}]};"_s};
    QByteArray expected;
    for (int i = 0; i < 12; ++i) {
        const QString name = u"f%1"_s.arg(11 - i);
        program.home.write(name, i % 4 == 0 ? "50" : "1");
        arguments << name;
        expected += name.toUtf8() + '\n';
    }
    QCOMPARE(program.run(arguments).out, expected);
}

void BatchProgramTest::manyNames_areTaken()
{
    const MacroCommand program;
    program.home.write(u"a"_s, "1");
    QByteArray names;
    constexpr int kNames = 100'000;
    for (int i = 0; i < kNames - 1; ++i)
        names += "no/such/" + QByteArray::number(i) + '\0';
    names += QByteArray("a\0", 2);
    const Ran ran =
        program.run({u"-l"_s, u"--files0-from=-"_s, u"-e"_s, replacing(u"1"_s, u"2"_s)}, names);
    QCOMPARE(ran.status, 2);
    QCOMPARE(ran.out, "a\n"_ba);
    QCOMPARE(ran.err.count('\n'), kNames - 1);
}

QTEST_GUILESS_MAIN(BatchProgramTest)
#include "BatchProgramTest.moc"

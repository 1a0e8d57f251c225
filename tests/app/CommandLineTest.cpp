#include "app/CommandLine.h"

#include "text/CutText.h"

#include <QTest>

#include <limits>

using namespace penwick;
using namespace Qt::StringLiterals;

using Request = CommandLine::Request;

namespace {

CommandLine::File file(const QByteArray &name)
{
    return {name, false, std::nullopt};
}

CommandLine::File fileAt(const QByteArray &name, qint64 line, qint64 column = 1)
{
    return {name, false, TextPlace{line, column}};
}

const CommandLine::File kStandardInput{"-", true, std::nullopt};

CommandLine run(const QList<CommandLine::File> &files)
{
    CommandLine expected;
    expected.files = files;
    return expected;
}

CommandLine passing(const QByteArrayList &toolkitArguments, const QList<CommandLine::File> &files)
{
    CommandLine expected = run(files);
    expected.toolkitArguments = toolkitArguments;
    return expected;
}

CommandLine answer(Request request, const QList<CommandLine::File> &files = {})
{
    CommandLine expected = run(files);
    expected.request = request;
    return expected;
}

CommandLine rejected(CommandLine::Fault fault,
                     const QByteArray &argument,
                     const QList<CommandLine::File> &files = {})
{
    CommandLine expected = answer(Request::Reject, files);
    expected.fault = fault;
    expected.rejectedArgument = argument;
    return expected;
}

} // namespace

Q_DECLARE_METATYPE(CommandLine)

class CommandLineTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parse_arguments_givesRequestAndFiles_data();
    void parse_arguments_givesRequestAndFiles();
    void parse_openingOptions_areTaken();
    void parse_platform_isKnown_data();
    void parse_platform_isKnown();
    void parse_display_isKnown();
    void helpText_namesEveryOption();
    void faultText_isOneLineWithTheArgument();
    void versionText_namesProgramAndVersion();
};

void CommandLineTest::parse_arguments_givesRequestAndFiles_data()
{
    using Fault = CommandLine::Fault;
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::addColumn<CommandLine>("expected");
    const auto row =
        [](const char *name, const QByteArrayList &arguments, const CommandLine &expected) {
            QTest::newRow(name) << arguments << expected;
        };
    row("none", {}, run({}));
    row("files", {"a.txt", "b c.txt"}, run({file("a.txt"), file("b c.txt")}));
    row("bytes that are no text", {"a\xff\xfe"}, run({file("a\xff\xfe")}));
    row("empty name", {""}, run({file("")}));
    row("version", {"--version"}, answer(Request::ShowVersion));
    row("help among files", {"a", "-h"}, answer(Request::ShowHelp, {file("a")}));
    row("first request wins", {"--help", "--version"}, answer(Request::ShowHelp));
    row("request beats unknown option", {"--foo", "--version"}, [] {
        CommandLine expected = rejected(CommandLine::Fault::UnknownOption, "--foo");
        expected.request = Request::ShowVersion;
        return expected;
    }());
    row("unknown option", {"--foo", "a"}, rejected(Fault::UnknownOption, "--foo", {file("a")}));
    row("unknown letter", {"-x"}, rejected(Fault::UnknownOption, "-x"));
    row("option with a value it does not take",
        {"--wait=1"},
        rejected(Fault::UnknownOption, "--wait=1"));
    row("after two dashes",
        {"--", "--version", "-", "+5"},
        run({file("--version"), file("-"), file("+5")}));
    row("two dashes twice", {"--", "--"}, run({file("--")}));
    row("line", {"+5", "a"}, run({fileAt("a", 5)}));
    row("line and column", {"+5:7", "a", "b"}, run({fileAt("a", 5, 7), file("b")}));
    row("each its own", {"+5", "a", "+6", "b"}, run({fileAt("a", 5), fileAt("b", 6)}));
    row("line zero", {"+0:0", "a"}, run({fileAt("a", 1)}));
    row("line past all numbers",
        {"+99999999999999999999", "a"},
        run({fileAt("a", std::numeric_limits<qint64>::max())}));
    row("no number",
        {"+5x", "+", "+:3", "+3:", "+-1"},
        run({file("+5x"), file("+"), file("+:3"), file("+3:"), file("+-1")}));
    row("line without file", {"a", "+5"}, rejected(Fault::PlaceWithoutFile, "+5", {file("a")}));
    row("two lines", {"+5", "+6", "a"}, rejected(Fault::PlaceWithoutFile, "+5", {fileAt("a", 6)}));
    row("line before two dashes", {"+5", "--", "-a"}, run({fileAt("-a", 5)}));
    row("standard input", {"a", "-"}, run({file("a"), kStandardInput}));
    row("standard input with a line", {"+2", "-"}, run({{"-", true, TextPlace{2, 1}}}));
    row("standard input twice",
        {"-", "-"},
        rejected(Fault::StandardInputTwice, "-", {kStandardInput, kStandardInput}));
    row("toolkit option with sign",
        {"--style=fusion", "a"},
        passing({"--style=fusion"}, {file("a")}));
    row("toolkit option with value",
        {"-style", "fusion", "a"},
        passing({"-style", "fusion"}, {file("a")}));
    row("toolkit option without its value", {"a", "-style"}, passing({"-style"}, {file("a")}));
    row("toolkit switch", {"-reverse", "a"}, passing({"-reverse"}, {file("a")}));
    row("toolkit option whose value is two dashes",
        {"-style", "--", "a"},
        passing({"-style", "--"}, {file("a")}));
    row("toolkit options around others",
        {"--wait", "-style", "fusion", "+2", "a", "-reverse", "--", "-style"},
        [] {
            CommandLine expected =
                passing({"-style", "fusion", "-reverse"}, {fileAt("a", 2), file("-style")});
            expected.wait = true;
            return expected;
        }());
    row("toolkit options after two dashes",
        {"--", "-style", "-platform", "-geometry", "--display", "-reverse"},
        run({file("-style"),
             file("-platform"),
             file("-geometry"),
             file("--display"),
             file("-reverse")}));
}

void CommandLineTest::parse_arguments_givesRequestAndFiles()
{
    QFETCH(QByteArrayList, arguments);
    QFETCH(CommandLine, expected);
    const CommandLine parsed = CommandLine::parse(arguments);
    QCOMPARE(parsed.files, expected.files);
    QVERIFY(parsed == expected);
}

void CommandLineTest::parse_openingOptions_areTaken()
{
    const CommandLine parsed = CommandLine::parse({"--wait", "a", "--new-window"});
    QVERIFY(parsed.wait && parsed.newWindow);
    QCOMPARE(parsed.files, {file("a")});
    const CommandLine none = CommandLine::parse({"a"});
    QVERIFY(!none.wait && !none.newWindow);
}

void CommandLineTest::parse_platform_isKnown_data()
{
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::newRow("apart") << QByteArrayList{"-platform", "offscreen", "a"};
    QTest::newRow("with a sign") << QByteArrayList{"--platform=offscreen", "a"};
}

void CommandLineTest::parse_platform_isKnown()
{
    QFETCH(QByteArrayList, arguments);
    const CommandLine parsed = CommandLine::parse(arguments);
    QCOMPARE(parsed.platform, "offscreen");
    QCOMPARE(parsed.files, {file("a")});
}

void CommandLineTest::parse_display_isKnown()
{
    const CommandLine parsed = CommandLine::parse({"-display", ":7", "a"});
    QCOMPARE(parsed.display, ":7");
    QCOMPARE(parsed.files, {file("a")});
    QCOMPARE(CommandLine::parse({"a"}).display, QByteArray());
}

void CommandLineTest::helpText_namesEveryOption()
{
    const QString help = CommandLine::helpText();
    for (const QString &option : {u"-h, --help"_s,
                                  u"-v, --version"_s,
                                  u"--new-window"_s,
                                  u"--wait"_s,
                                  u"+LINE[:COLUMN]"_s,
                                  u"\n  - "_s,
                                  u"\n  -- "_s})
        QVERIFY2(help.contains(option), qPrintable(option));
}

void CommandLineTest::faultText_isOneLineWithTheArgument()
{
    for (const QByteArrayList &arguments :
         {QByteArrayList{"--foo"}, QByteArrayList{"+5"}, QByteArrayList{"-", "-"}}) {
        const QString text = CommandLine::parse(arguments).faultText();
        QVERIFY(text.startsWith(u"penwick: "_s) && !text.contains(u'\n'));
        QVERIFY(text.endsWith(QString::fromLatin1(arguments.last())));
    }
    const QString text = CommandLine::parse({"--foo" + QByteArray(100'000, 'x')}).faultText();
    QVERIFY(text.contains(u": --fooxxx"_s) && text.endsWith(u"x…"_s));
    QVERIFY(text.size() < 2 * kLongestShown);
}

void CommandLineTest::versionText_namesProgramAndVersion()
{
    QCOMPARE(CommandLine::versionText(), u"penwick "_s + QStringLiteral(PENWICK_VERSION));
}

QTEST_GUILESS_MAIN(CommandLineTest)
#include "CommandLineTest.moc"

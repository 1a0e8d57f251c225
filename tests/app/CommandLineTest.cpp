#include "app/CommandLine.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

using Request = CommandLine::Request;

class CommandLineTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parse_arguments_givesRequestAndFiles_data();
    void parse_arguments_givesRequestAndFiles();
    void versionText_namesProgramAndVersion();
};

void CommandLineTest::parse_arguments_givesRequestAndFiles_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("request");
    QTest::addColumn<QStringList>("files");
    const auto row = [](const char *name,
                        const QStringList &arguments,
                        Request request,
                        const QStringList &files) {
        QTest::newRow(name) << arguments << static_cast<int>(request) << files;
    };
    row("none", {}, Request::Run, {});
    row("files", {u"a.txt"_s, u"b c.txt"_s}, Request::Run, {u"a.txt"_s, u"b c.txt"_s});
    row("version", {u"--version"_s}, Request::ShowVersion, {});
    row("help among files", {u"a"_s, u"-h"_s}, Request::ShowHelp, {u"a"_s});
    row("first request wins", {u"--help"_s, u"--version"_s}, Request::ShowHelp, {});
    row("request beats unknown option", {u"--foo"_s, u"--version"_s}, Request::ShowVersion, {});
    row("unknown option", {u"--foo"_s, u"a"_s}, Request::RejectOption, {u"a"_s});
    row("after two dashes", {u"--"_s, u"--version"_s}, Request::Run, {u"--version"_s});
    row("toolkit option with value", {u"-platform"_s, u"xcb"_s, u"a"_s}, Request::Run, {u"a"_s});
    row("toolkit option with sign", {u"--style=fusion"_s, u"a"_s}, Request::Run, {u"a"_s});
    row("single dash is a file", {u"-"_s}, Request::Run, {u"-"_s});
}

void CommandLineTest::parse_arguments_givesRequestAndFiles()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, request);
    QFETCH(QStringList, files);
    const CommandLine parsed = CommandLine::parse(arguments);
    QCOMPARE(static_cast<int>(parsed.request), request);
    QCOMPARE(parsed.files, files);
}

void CommandLineTest::versionText_namesProgramAndVersion()
{
    QCOMPARE(CommandLine::versionText(), u"penwick "_s + QStringLiteral(PENWICK_VERSION));
}

QTEST_GUILESS_MAIN(CommandLineTest)
#include "CommandLineTest.moc"

#include "batch/BatchOptions.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

using Kind = UsageFault::Kind;

BatchOptions parsed(const QByteArrayList &arguments)
{
    const auto options = BatchOptions::parse(arguments);
    if (!options)
        qFatal("The options were rejected.");
    return *options;
}

} // namespace

class BatchOptionsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void macros_keepTheirOrder()
    {
        using Source = MacroSource::Kind;
        const BatchOptions options =
            parsed({"-e", "1", "a", "--macro=日", "-fx.js", "b", "--code", "2"});
        const QList<MacroSource> expected{{Source::Code, "1"},
                                          {Source::Stored, "日"},
                                          {Source::File, "x.js"},
                                          {Source::Code, "2"}};
        QVERIFY(options.macros == expected);
        QCOMPARE(options.files, (QByteArrayList{"a", "b"}));
        QVERIFY(options.writesText());
    }

    void arguments_afterTwoDashes_areFiles()
    {
        const BatchOptions options = parsed({"-e", "1", "--", "-i", "--help", "-"});
        QCOMPARE(options.files, (QByteArrayList{"-i", "--help", "-"}));
        QVERIFY(!options.inPlace);
        QVERIFY(options.request == BatchOptions::Request::Run);
    }

    void options_haveTheirDefaults()
    {
        const BatchOptions options = parsed({"-e", "1"});
        QCOMPARE(options.timeout, 60);
        QCOMPARE(options.jobs, 0);
        QCOMPARE(options.nameEnd, '\n');
        QVERIFY(!options.userInput && !options.selection && !options.backupSuffix);
        QVERIFY(options.color == BatchOptions::Color::Auto);
        QVERIFY(options.files.isEmpty() && options.lists.isEmpty());
    }

    void values_areTaken()
    {
        const BatchOptions options = parsed({"-e",
                                             "1",
                                             "--backup=.old",
                                             "-0",
                                             "--input",
                                             "",
                                             "--stdin-filename=a b",
                                             "--files-from=l",
                                             "--files0-from=-",
                                             "-j",
                                             "7",
                                             "--timeout=0",
                                             "--strict",
                                             "--ignore-non-utf8",
                                             "-v",
                                             "--color=never"});
        QVERIFY(options.inPlace);
        QCOMPARE(*options.backupSuffix, ".old"_ba);
        QVERIFY(options.names);
        QCOMPARE(options.nameEnd, '\0');
        QCOMPARE(*options.userInput, QString());
        QCOMPARE(options.standardInputName, "a b"_ba);
        QVERIFY((options.lists == QList<NameList>{{"l", '\n'}, {"-", '\0'}}));
        QCOMPARE(options.jobs, 7);
        QCOMPARE(options.timeout, 0);
        QVERIFY(options.strict && options.ignoreNonUtf8);
        QVERIFY(options.verbosity == BatchOptions::Verbosity::Verbose);
        QVERIFY(options.color == BatchOptions::Color::Never);
        QCOMPARE(*parsed({"-e", "1", "--backup"}).backupSuffix, "~"_ba);
        QVERIFY(parsed({"-e", "1", "-qi"}).verbosity == BatchOptions::Verbosity::Quiet);
    }

    void selection_hasThreeForms()
    {
        const auto selection = [](const QByteArray &option) {
            return *parsed({"-e", "1", option}).selection;
        };
        QVERIFY(selection("--selection=2:5") == SelectionOption(SelectedRange{2, 5}));
        QVERIFY(selection("--cursor=3") == SelectionOption(SelectedRange{3, 3}));
        QVERIFY(selection("--line=4") == SelectionOption(SelectedLine{4}));
    }

    void questions_needNoMacro()
    {
        using Request = BatchOptions::Request;
        QVERIFY(parsed({"--help"}).request == Request::ShowHelp);
        QVERIFY(parsed({"-h", "--version"}).request == Request::ShowHelp);
        QVERIFY(parsed({"--version", "--list"}).request == Request::ShowVersion);
        QVERIFY(parsed({"--list", "--json"}).request == Request::ListMacros);
    }

    void modes_ofOutput_writeNoText()
    {
        for (const QByteArray option : {"-i", "--check", "--diff", "-l", "-0", "--json", "-oa"})
            QVERIFY2(!parsed({"-e", "1", option}).writesText(), option.constData());
    }

    void faults_areFound_data()
    {
        QTest::addColumn<QByteArrayList>("arguments");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("argument");
        const auto row = [](const QByteArrayList &arguments, Kind kind, const QString &argument) {
            QTest::newRow(arguments.join(' ').constData())
                << arguments << static_cast<int>(kind) << argument;
        };
        row({"-e", "1", "--no-such"}, Kind::UnknownOption, u"--no-such"_s);
        row({"-e", "1", "-iz"}, Kind::UnknownOption, u"-z"_s);
        row({"-e", "1", "--check", "-zi"}, Kind::UnknownOption, u"-z"_s);
        row({"-e", "1", "--input=1", "-zi", "-l"}, Kind::UnknownOption, u"-z"_s);
        row({"-e", "1", "--in-place=1", "-il"}, Kind::UnexpectedArgument, u"--in-place=1"_s);
        row({"-e", "1", "--check", "-日"}, Kind::UnknownOption, u"-日"_s);
        row({"-e", "1", "--check", "-ij"}, Kind::MissingArgument, u"-j"_s);
        row({"-e", "1", "--input=\xFF"}, Kind::InvalidArgument, QString(QChar(0xFFFD)));
        row({"-e", "'\xFF'"}, Kind::InvalidArgument, u"'\uFFFD'"_s);
        row({"-e", "1", "-m"}, Kind::MissingArgument, u"-m"_s);
        row({"-e", "1", "--input"}, Kind::MissingArgument, u"--input"_s);
        row({"-e", "1", "--check=1"}, Kind::UnexpectedArgument, u"--check=1"_s);
        row({"-e", "1", "--selection=5:2"}, Kind::InvalidArgument, u"5:2"_s);
        row({"-e", "1", "--selection=5"}, Kind::InvalidArgument, u"5"_s);
        row({"-e", "1", "--selection=:"}, Kind::InvalidArgument, u":"_s);
        row({"-e", "1", "--line=0"}, Kind::InvalidArgument, u"0"_s);
        row({"-e", "1", "--cursor=-1"}, Kind::InvalidArgument, u"-1"_s);
        row({"-e", "1", "-j", "0"}, Kind::InvalidArgument, u"0"_s);
        row({"-e", "1", "--timeout=1e3"}, Kind::InvalidArgument, u"1e3"_s);
        row({"-e", "1", "--color=red"}, Kind::InvalidArgument, u"red"_s);
        row({"-e", "1", "--backup=/x"}, Kind::InvalidArgument, u"/x"_s);
        row({"-e", "1", "-o", ""}, Kind::InvalidArgument, QString());
        row({"-i", "a"}, Kind::NoMacro, QString());
        row({"-e", "1", "-i", "--check"}, Kind::Conflict, u"--in-place, --check"_s);
        row({"-e", "1", "-i", "-oa"}, Kind::Conflict, u"--in-place, --output"_s);
        row({"-e", "1", "--json", "--diff"}, Kind::Conflict, u"--json, --diff, -l"_s);
        row({"-e", "1", "--line=1", "--cursor=1"},
            Kind::Conflict,
            u"--selection, --line, --cursor"_s);
    }

    void faults_areFound()
    {
        QFETCH(QByteArrayList, arguments);
        QFETCH(int, kind);
        QFETCH(QString, argument);
        const auto options = BatchOptions::parse(arguments);
        QVERIFY(!options.has_value());
        QCOMPARE(static_cast<int>(options.error().kind), kind);
        QCOMPARE(options.error().argument, argument);
        QVERIFY(!options.error().message().contains(u"batch."_s)); // A text, not its key.
    }
};

QTEST_APPLESS_MAIN(BatchOptionsTest)
#include "BatchOptionsTest.moc"

#include "batch/BatchOptions.h"

#include "text/CutText.h"
#include "wording/WordingLookup.h"

#include <QFile>

#include <climits>
#include <cstring>
#include <getopt.h>
#include <utility>
#include <vector>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

using Kind = UsageFault::Kind;

// The values of options without a short form; above all characters.
enum LongOption {
    OptionBackup = 256,
    OptionCheck,
    OptionDiff,
    OptionStandardInputName,
    OptionFilesFrom,
    OptionFiles0From,
    OptionInput,
    OptionSelection,
    OptionLine,
    OptionCursor,
    OptionJson,
    OptionTimeout,
    OptionIgnoreNonUtf8,
    OptionStrict,
    OptionColor,
    OptionList,
    OptionVersion,
};

// The colon makes getopt report a missing argument as one.
constexpr char kShortOptions[] = ":m:f:e:il0o:j:qvh";
constexpr option kLongOptions[] = {
    {"macro", required_argument, nullptr, 'm'},
    {"file", required_argument, nullptr, 'f'},
    {"code", required_argument, nullptr, 'e'},
    {"in-place", no_argument, nullptr, 'i'},
    {"backup", optional_argument, nullptr, OptionBackup},
    {"check", no_argument, nullptr, OptionCheck},
    {"diff", no_argument, nullptr, OptionDiff},
    {"names", no_argument, nullptr, 'l'},
    {"null", no_argument, nullptr, '0'},
    {"output", required_argument, nullptr, 'o'},
    {"stdin-filename", required_argument, nullptr, OptionStandardInputName},
    {"files-from", required_argument, nullptr, OptionFilesFrom},
    {"files0-from", required_argument, nullptr, OptionFiles0From},
    {"input", required_argument, nullptr, OptionInput},
    {"selection", required_argument, nullptr, OptionSelection},
    {"line", required_argument, nullptr, OptionLine},
    {"cursor", required_argument, nullptr, OptionCursor},
    {"jobs", required_argument, nullptr, 'j'},
    {"json", no_argument, nullptr, OptionJson},
    {"timeout", required_argument, nullptr, OptionTimeout},
    {"ignore-non-utf8", no_argument, nullptr, OptionIgnoreNonUtf8},
    {"strict", no_argument, nullptr, OptionStrict},
    {"quiet", no_argument, nullptr, 'q'},
    {"verbose", no_argument, nullptr, 'v'},
    {"color", required_argument, nullptr, OptionColor},
    {"list", no_argument, nullptr, OptionList},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, OptionVersion},
    {nullptr, 0, nullptr, 0},
};

/// Parses a whole number without a sign.
std::optional<qint64> numberOf(const QByteArray &digits, qint64 least, qint64 most)
{
    for (const char c : digits)
        if (c < '0' || c > '9')
            return std::nullopt;
    bool fits = false;
    const qint64 number = digits.toLongLong(&fits);
    return fits && number >= least && number <= most ? std::optional(number) : std::nullopt;
}

std::optional<SelectedRange> rangeOf(const QByteArray &argument)
{
    const qsizetype colon = argument.indexOf(':');
    if (colon < 0)
        return std::nullopt;
    const auto start = numberOf(argument.first(colon), 0, LLONG_MAX);
    const auto end = numberOf(argument.sliced(colon + 1), 0, LLONG_MAX);
    if (!start || !end || *end < *start)
        return std::nullopt;
    return SelectedRange{*start, *end};
}

std::optional<BatchOptions::Color> colorOf(const QByteArray &argument)
{
    if (argument == "auto")
        return BatchOptions::Color::Auto;
    if (argument == "always")
        return BatchOptions::Color::Always;
    if (argument == "never")
        return BatchOptions::Color::Never;
    return std::nullopt;
}

/// Parses the arguments by getopt_long, which keeps its state in global variables.
class Parser final
{
public:
    explicit Parser(const QByteArrayList &arguments)
        : m_arguments(arguments)
    {
    }

    tl::expected<BatchOptions, UsageFault> parse()
    {
        QByteArray program = "penwick-macro";
        std::vector<char *> pointers{program.data()};
        for (QByteArray &argument : m_arguments)
            pointers.push_back(argument.data());
        const auto count = static_cast<int>(pointers.size());
        pointers.push_back(nullptr);
        optind = 0; // Also resets what the C library remembers of earlier arguments.
        opterr = 0;
        int option = 0;
        while (!m_fault && option != -1) {
            option = getopt_long(count, pointers.data(), kShortOptions, kLongOptions, nullptr);
            if (option == '?' || option == ':')
                rejectLast(option,
                           QByteArray(pointers[static_cast<std::size_t>(optind - 1)]),
                           QByteArray(pointers[static_cast<std::size_t>(optind)]));
            else if (option != -1)
                take(option, optarg != nullptr ? QByteArray(optarg) : QByteArray());
        }
        for (int i = optind; i < count; ++i)
            m_options.files << QByteArray(pointers[static_cast<std::size_t>(i)]);
        return finish();
    }

private:
    // Called for what getopt did not accept. It is in `argument`, which getopt has passed, or, if
    // it is one of several letters, in `next`.
    void rejectLast(int answer, const QByteArray &argument, const QByteArray &next)
    {
        const bool isAscii = optopt > 0 && optopt <= SCHAR_MAX;
        const QString letter = u"-"_s + QChar(isAscii ? static_cast<char16_t>(optopt) : u'?');
        const bool isLong = argument.startsWith("--");
        if (answer == ':')
            reject(Kind::MissingArgument, isLong ? QFile::decodeName(argument) : letter);
        else if (isAscii && std::strchr(kShortOptions, optopt) == nullptr)
            reject(Kind::UnknownOption, letter);
        else if (optopt < 0 || (optopt > SCHAR_MAX && optopt <= UCHAR_MAX)) // Part of a character.
            reject(Kind::UnknownOption, QFile::decodeName(next));
        else
            reject(isLong && optopt != 0 ? Kind::UnexpectedArgument : Kind::UnknownOption,
                   QFile::decodeName(argument));
    }

    void reject(Kind kind, const QString &argument = {})
    {
        if (!m_fault)
            m_fault = UsageFault{kind, argument};
    }

    void rejectValue(const QByteArray &value)
    {
        reject(Kind::InvalidArgument, QFile::decodeName(value));
    }

    void take(int option, const QByteArray &value)
    {
        if (!takeMacro(option, value) && !takeInput(option, value) && !takeOutput(option, value))
            takeRun(option, value);
    }

    bool takeMacro(int option, const QByteArray &value)
    {
        using Source = MacroSource::Kind;
        switch (option) {
        case 'm':
            m_options.macros << MacroSource{Source::Stored, value};
            return true;
        case 'f':
            m_options.macros << MacroSource{Source::File, value};
            return true;
        case 'e':
            m_options.macros << MacroSource{Source::Code, value};
            if (!value.isValidUtf8())
                rejectValue(value);
            return true;
        case OptionInput:
            m_options.userInput = QString::fromUtf8(value);
            if (!value.isValidUtf8())
                rejectValue(value);
            return true;
        case OptionSelection:
            select(rangeOf(value), value);
            return true;
        case OptionLine:
            if (const auto number = numberOf(value, 1, LLONG_MAX))
                select(SelectedLine{*number}, value);
            else
                rejectValue(value);
            return true;
        case OptionCursor:
            if (const auto offset = numberOf(value, 0, LLONG_MAX))
                select(SelectedRange{*offset, *offset}, value);
            else
                rejectValue(value);
            return true;
        default:
            return false;
        }
    }

    void select(const std::optional<SelectionOption> &selection, const QByteArray &value)
    {
        if (!selection)
            rejectValue(value);
        else if (m_options.selection)
            reject(Kind::Conflict, u"--selection, --line, --cursor"_s);
        m_options.selection = selection;
    }

    bool takeInput(int option, const QByteArray &value)
    {
        switch (option) {
        case OptionStandardInputName:
            m_options.standardInputName = value;
            return true;
        case OptionFilesFrom:
            m_options.lists << NameList{value, '\n'};
            return true;
        case OptionFiles0From:
            m_options.lists << NameList{value, '\0'};
            return true;
        case OptionIgnoreNonUtf8:
            m_options.ignoreNonUtf8 = true;
            return true;
        default:
            return false;
        }
    }

    bool takeOutput(int option, const QByteArray &value)
    {
        switch (option) {
        case 'i':
            m_options.inPlace = true;
            return true;
        case OptionBackup:
            takeBackup(value);
            return true;
        case OptionCheck:
            m_options.check = true;
            return true;
        case OptionDiff:
            m_options.diff = true;
            return true;
        case 'l':
            m_options.names = true;
            return true;
        case '0':
            m_options.names = true;
            m_options.nameEnd = '\0';
            return true;
        case 'o':
            m_options.outputFile = value;
            if (value.isEmpty())
                rejectValue(value);
            return true;
        case OptionJson:
            m_options.json = true;
            return true;
        default:
            return false;
        }
    }

    void takeBackup(const QByteArray &suffix)
    {
        m_options.inPlace = true;
        m_options.backupSuffix = suffix.isEmpty() ? "~"_ba : suffix;
        if (suffix.contains('/'))
            rejectValue(suffix);
    }

    void takeRun(int option, const QByteArray &value)
    {
        constexpr int kMostJobs = 1024;
        constexpr int kMostSeconds = INT_MAX / 1000; // They become milliseconds.
        switch (option) {
        case 'j':
            setNumber(m_options.jobs, value, 1, kMostJobs);
            break;
        case OptionTimeout:
            setNumber(m_options.timeout, value, 0, kMostSeconds);
            break;
        case OptionStrict:
            m_options.strict = true;
            break;
        case 'q':
            m_options.verbosity = BatchOptions::Verbosity::Quiet;
            break;
        case 'v':
            m_options.verbosity = BatchOptions::Verbosity::Verbose;
            break;
        case OptionColor:
            if (const auto color = colorOf(value))
                m_options.color = *color;
            else
                rejectValue(value);
            break;
        default:
            ask(option);
        }
    }

    void setNumber(int &number, const QByteArray &value, int least, int most)
    {
        if (const auto parsed = numberOf(value, least, most))
            number = static_cast<int>(*parsed);
        else
            rejectValue(value);
    }

    void ask(int option)
    {
        using Request = BatchOptions::Request;
        if (option == 'h')
            m_options.request = Request::ShowHelp;
        else if (option == OptionVersion && m_options.request != Request::ShowHelp)
            m_options.request = Request::ShowVersion;
        else if (option == OptionList && m_options.request == Request::Run)
            m_options.request = Request::ListMacros;
    }

    tl::expected<BatchOptions, UsageFault> finish()
    {
        if (m_options.request == BatchOptions::Request::Run)
            checkCombination();
        if (m_fault)
            return tl::unexpected(*m_fault);
        return std::move(m_options);
    }

    void checkCombination()
    {
        const bool hasOutput = !m_options.outputFile.isEmpty();
        if (m_options.macros.isEmpty())
            reject(Kind::NoMacro);
        if (m_options.inPlace && m_options.check)
            reject(Kind::Conflict, u"--in-place, --check"_s);
        if (m_options.inPlace && hasOutput)
            reject(Kind::Conflict, u"--in-place, --output"_s);
        if (m_options.check && hasOutput)
            reject(Kind::Conflict, u"--check, --output"_s);
        if (m_options.json + m_options.diff + m_options.names > 1)
            reject(Kind::Conflict, u"--json, --diff, -l"_s);
        if (m_options.outputFile == "-" && (m_options.json || m_options.diff || m_options.names))
            reject(Kind::Conflict, u"-o -, --json, --diff, -l"_s);
    }

    QByteArrayList m_arguments;
    BatchOptions m_options;
    std::optional<UsageFault> m_fault; // The first one.
};

QString keyOf(Kind kind)
{
    switch (kind) {
    case Kind::UnknownOption:
        return u"cli.unknownOption"_s;
    case Kind::MissingArgument:
        return u"batch.missingArgument"_s;
    case Kind::UnexpectedArgument:
        return u"batch.unexpectedArgument"_s;
    case Kind::InvalidArgument:
        return u"batch.invalidArgument"_s;
    case Kind::Conflict:
        return u"batch.conflict"_s;
    case Kind::NoMacro:
        return u"batch.noMacro"_s;
    case Kind::SeveralWithoutMode:
        return u"batch.severalWithoutMode"_s;
    case Kind::SeveralForOneOutput:
        return u"batch.severalForOneOutput"_s;
    case Kind::StandardInputTwice:
        return u"cli.standardInputTwice"_s;
    case Kind::StandardInputInPlace:
        return u"batch.standardInputInPlace"_s;
    }
    Q_UNREACHABLE();
}

} // namespace

QString UsageFault::message() const
{
    const QString text = wording::text(keyOf(kind));
    return argument.isEmpty() ? text : text + u": "_s + cutText(argument, kLongestShown);
}

tl::expected<BatchOptions, UsageFault> BatchOptions::parse(const QByteArrayList &arguments)
{
    return Parser(arguments).parse();
}

QString batchHelpText()
{
    struct Row
    {
        QLatin1StringView options;
        QString key;
    };

    const auto line = [](const Row &row) {
        constexpr int kColumn = 36;
        if (row.options.isEmpty())
            return wording::text(row.key);
        return u"  "_s + QString(row.options).leftJustified(kColumn - 2) + wording::text(row.key);
    };
    const Row rows[] = {
        {{}, u"batch.usage"_s},
        {{}, u"batch.about"_s},
        {{}, u"batch.help.macros"_s},
        {"-m NAME|ID, -f FILE, -e CODE"_L1, u"batch.help.sources"_s},
        {"--input=TEXT"_L1, u"batch.help.input"_s},
        {"--selection=START:END, --line=N"_L1, u"batch.help.selection"_s},
        {"--cursor=N"_L1, u"batch.help.cursor"_s},
        {{}, u"batch.help.output"_s},
        {"-i, --in-place, --backup[=SUFFIX]"_L1, u"batch.help.inPlace"_s},
        {"-o, --output=FILE"_L1, u"batch.help.outputFile"_s},
        {"--check, --diff"_L1, u"batch.help.check"_s},
        {"-l, -0"_L1, u"batch.help.names"_s},
        {"--json, -q, -v, --color=WHEN"_L1, u"batch.help.report"_s},
        {{}, u"batch.help.files"_s},
        {"--files-from=F, --files0-from=F"_L1, u"batch.help.filesFrom"_s},
        {"--stdin-filename=NAME"_L1, u"batch.help.standardInputName"_s},
        {"--ignore-non-utf8"_L1, u"batch.help.ignoreNonUtf8"_s},
        {{}, u"batch.help.run"_s},
        {"-j N, --timeout=SECONDS"_L1, u"batch.help.limits"_s},
        {"--strict"_L1, u"batch.help.strict"_s},
        {"--list, --help, --version"_L1, u"batch.help.questions"_s},
        {{}, u"batch.help.status"_s},
    };
    QStringList lines;
    for (const Row &row : rows)
        lines << line(row);
    return lines.join(u'\n');
}

} // namespace penwick

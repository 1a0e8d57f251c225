#include "app/CommandLine.h"

#include "text/CutText.h"
#include "wording/WordingLookup.h"

#include <QFile>

#include <algorithm>
#include <limits>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

using Fault = CommandLine::Fault;
using Request = CommandLine::Request;

/// True for options with a value that the toolkit takes out of the arguments when it starts.
bool isToolkitOption(QByteArrayView name)
{
    static constexpr QByteArrayView kNames[] = {"-platform",
                                                "-platformpluginpath",
                                                "-platformtheme",
                                                "-plugin",
                                                "-qwindowgeometry",
                                                "-qwindowicon",
                                                "-qwindowtitle",
                                                "-session",
                                                "-display",
                                                "-style",
                                                "-stylesheet"};
    return std::find(std::begin(kNames), std::end(kNames), name) != std::end(kNames);
}

bool isToolkitSwitch(QByteArrayView name)
{
    static constexpr QByteArrayView kNames[] = {"-reverse", "-widgetcount", "-nograb", "-dograb"};
    return std::find(std::begin(kNames), std::end(kNames), name) != std::end(kNames);
}

/// Parses a whole number without a sign. Too large a number becomes the largest.
std::optional<qint64> numberOf(QByteArrayView digits)
{
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (digits.isEmpty() || !std::all_of(digits.begin(), digits.end(), isDigit))
        return std::nullopt;
    bool fits = false;
    const qint64 number = digits.toByteArray().toLongLong(&fits);
    return fits ? number : std::numeric_limits<qint64>::max();
}

/// Parses `+LINE` or `+LINE:COLUMN`. Any other argument that begins with a plus is a file name.
std::optional<TextPlace> placeOf(QByteArrayView argument)
{
    if (!argument.startsWith('+'))
        return std::nullopt;
    const QByteArrayView numbers = argument.sliced(1);
    const qsizetype colon = numbers.indexOf(':');
    const auto line = numberOf(colon < 0 ? numbers : numbers.first(colon));
    const auto column = colon < 0 ? std::optional<qint64>(1) : numberOf(numbers.sliced(colon + 1));
    if (!line || !column)
        return std::nullopt;
    return TextPlace{std::max<qint64>(1, *line), std::max<qint64>(1, *column)};
}

bool isQuestion(Request request)
{
    return request == Request::ShowHelp || request == Request::ShowVersion;
}

/// Parses the arguments one by one.
class Parser final
{
public:
    explicit Parser(const QByteArrayList &arguments)
        : m_arguments(arguments)
    {
    }

    CommandLine parse()
    {
        for (; m_index < m_arguments.size(); ++m_index)
            take(m_arguments.at(m_index));
        if (m_place)
            reject(Fault::PlaceWithoutFile, m_placeArgument);
        return std::move(m_result);
    }

private:
    void take(const QByteArray &argument)
    {
        const auto place = placeOf(argument);
        if (m_onlyFiles)
            takeFile(argument, false);
        else if (argument == "--")
            m_onlyFiles = true;
        else if (place)
            takePlace(argument, *place);
        else if (!argument.startsWith('-') || argument == "-")
            takeFile(argument, argument == "-");
        else if (!takeOption(argument) && !takeToolkitOption(argument))
            reject(Fault::UnknownOption, argument);
    }

    void takePlace(const QByteArray &argument, const TextPlace &place)
    {
        if (m_place)
            reject(Fault::PlaceWithoutFile, m_placeArgument);
        m_place = place;
        m_placeArgument = argument;
    }

    void takeFile(const QByteArray &name, bool isStandardInput)
    {
        if (isStandardInput && std::exchange(m_hasStandardInput, true))
            reject(Fault::StandardInputTwice, name);
        m_result.files.append({name, isStandardInput, std::exchange(m_place, std::nullopt)});
    }

    bool takeOption(const QByteArray &argument)
    {
        if (argument == "--help" || argument == "-h")
            ask(Request::ShowHelp);
        else if (argument == "--version" || argument == "-v")
            ask(Request::ShowVersion);
        else if (argument == "--new-window")
            m_result.newWindow = true;
        else if (argument == "--wait")
            m_result.wait = true;
        else
            return false;
        return true;
    }

    bool takeToolkitOption(const QByteArray &argument)
    {
        // The toolkit treats `--style` and `-style` alike.
        const QByteArray option = argument.startsWith("--") ? argument.mid(1) : argument;
        const qsizetype sign = option.indexOf('=');
        const QByteArray name = sign < 0 ? option : option.first(sign);
        const bool takesValue = isToolkitOption(name);
        if (!takesValue && !isToolkitSwitch(option))
            return false;
        m_result.toolkitArguments << argument;
        if (!takesValue)
            return true;
        const QByteArray value = sign < 0 ? takeToolkitValue() : option.mid(sign + 1);
        if (name == "-platform")
            m_result.platform = value;
        else if (option == "-display") // The toolkit does not accept `-display=x`.
            m_result.display = value;
        return true;
    }

    /// Returns the argument after the current one; empty when none is left.
    QByteArray takeToolkitValue()
    {
        if (m_index + 1 >= m_arguments.size())
            return {};
        m_result.toolkitArguments << m_arguments.at(++m_index);
        return m_result.toolkitArguments.last();
    }

    void ask(Request request)
    {
        if (!isQuestion(m_result.request))
            m_result.request = request;
    }

    void reject(Fault fault, const QByteArray &argument)
    {
        if (m_result.request != Request::Run)
            return;
        m_result.request = Request::Reject;
        m_result.fault = fault;
        m_result.rejectedArgument = argument;
    }

    const QByteArrayList &m_arguments;
    qsizetype m_index = 0;
    CommandLine m_result;
    std::optional<TextPlace> m_place; // Applies to the next file.
    QByteArray m_placeArgument;
    bool m_hasStandardInput = false;
    bool m_onlyFiles = false;
};

} // namespace

CommandLine CommandLine::parse(const QByteArrayList &arguments)
{
    return Parser(arguments).parse();
}

QString CommandLine::helpText()
{
    const QStringList lines{wording::text(u"cli.usage"_s),
                            QString(),
                            wording::text(u"cli.files"_s),
                            wording::text(u"cli.oneInstance"_s),
                            QString(),
                            wording::text(u"cli.options"_s),
                            u"  -h, --help        "_s + wording::text(u"cli.help"_s),
                            u"  -v, --version     "_s + wording::text(u"cli.version"_s),
                            u"      --new-window  "_s + wording::text(u"cli.newWindow"_s),
                            u"      --wait        "_s + wording::text(u"cli.wait"_s),
                            u"  +LINE[:COLUMN]    "_s + wording::text(u"cli.place"_s),
                            u"  -                 "_s + wording::text(u"cli.standardInput"_s),
                            u"  --                "_s + wording::text(u"cli.endOfOptions"_s)};
    return lines.join(u'\n');
}

QString CommandLine::versionText()
{
    return u"penwick "_s + QStringLiteral(PENWICK_VERSION);
}

QString CommandLine::faultText() const
{
    const auto what = [this] {
        switch (fault) {
        case Fault::PlaceWithoutFile:
            return wording::text(u"cli.placeWithoutFile"_s);
        case Fault::StandardInputTwice:
            return wording::text(u"cli.standardInputTwice"_s);
        case Fault::UnknownOption:
            break;
        }
        return wording::text(u"cli.unknownOption"_s);
    };
    return u"penwick: "_s + what() + u": "_s +
           cutText(QFile::decodeName(rejectedArgument), kLongestShown);
}

} // namespace penwick

#include "app/CommandLine.h"

#include "wording/WordingLookup.h"

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// Options that the toolkit takes out of the arguments by itself, when it starts.
bool isToolkitOption(const QString &name)
{
    static const QStringList kNames{u"-platform"_s,
                                    u"-platformpluginpath"_s,
                                    u"-platformtheme"_s,
                                    u"-plugin"_s,
                                    u"-qwindowgeometry"_s,
                                    u"-qwindowicon"_s,
                                    u"-qwindowtitle"_s,
                                    u"-session"_s,
                                    u"-display"_s,
                                    u"-style"_s,
                                    u"-stylesheet"_s};
    return kNames.contains(name);
}

bool isToolkitSwitch(const QString &name)
{
    static const QStringList kNames{u"-reverse"_s, u"-widgetcount"_s, u"-nograb"_s, u"-dograb"_s};
    return kNames.contains(name);
}

enum class Kind { File, Help, Version, ToolkitOptionWithValue, ToolkitOption, Unknown };

Kind kindOf(const QString &argument)
{
    if (!argument.startsWith(u'-') || argument == u"-"_s) {
        return Kind::File;
    }
    if (argument == u"--help"_s || argument == u"-h"_s) {
        return Kind::Help;
    }
    if (argument == u"--version"_s || argument == u"-v"_s) {
        return Kind::Version;
    }
    // `--style` and `-style` are the same to the toolkit.
    const QString option = argument.startsWith(u"--"_s) ? argument.mid(1) : argument;
    if (isToolkitOption(option)) {
        return Kind::ToolkitOptionWithValue;
    }
    const bool isToolkits = isToolkitSwitch(option) || isToolkitOption(option.section(u'=', 0, 0));
    return isToolkits ? Kind::ToolkitOption : Kind::Unknown;
}

bool isQuestion(CommandLine::Request request)
{
    return request == CommandLine::Request::ShowHelp ||
           request == CommandLine::Request::ShowVersion;
}

} // namespace

/// Takes the argument at `index` and moves `index` to the last one that belongs to it.
void CommandLine::take(const QStringList &arguments, qsizetype &index)
{
    const QString &argument = arguments.at(index);
    switch (kindOf(argument)) {
    case Kind::File:
        files << argument;
        break;
    case Kind::Help:
        request = isQuestion(request) ? request : Request::ShowHelp;
        break;
    case Kind::Version:
        request = isQuestion(request) ? request : Request::ShowVersion;
        break;
    case Kind::ToolkitOptionWithValue:
        ++index;
        break;
    case Kind::ToolkitOption:
        break;
    case Kind::Unknown:
        if (request == Request::Run) {
            request = Request::RejectOption;
            rejectedOption = argument;
        }
    }
}

CommandLine CommandLine::parse(const QStringList &arguments)
{
    const qsizetype dashes = arguments.indexOf(u"--"_s);
    const qsizetype end = dashes < 0 ? arguments.size() : dashes;
    CommandLine result;
    for (qsizetype i = 0; i < end; ++i) {
        result.take(arguments, i);
    }
    if (dashes >= 0) {
        result.files += arguments.mid(dashes + 1);
    }
    return result;
}

QString CommandLine::helpText()
{
    const QStringList lines{
        wording::text(u"cli.usage"_s, u"使い方: penwick [オプション] [ファイル...]"_s),
        QString(),
        wording::text(u"cli.files"_s,
                      u"ファイルを開きます。まだ無いファイルは、保存したときに作られます。"_s),
        QString(),
        wording::text(u"cli.options"_s, u"オプション:"_s),
        u"  -h, --help     "_s + wording::text(u"cli.help"_s, u"この説明を表示して終わります"_s),
        u"  -v, --version  "_s +
            wording::text(u"cli.version"_s, u"バージョンを表示して終わります"_s),
        u"  --             "_s +
            wording::text(u"cli.endOfOptions"_s, u"以降をすべてファイル名とみなします"_s)};
    return lines.join(u'\n');
}

QString CommandLine::versionText()
{
    return u"penwick "_s + QStringLiteral(PENWICK_VERSION);
}

} // namespace penwick

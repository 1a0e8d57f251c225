#include "macro/library/MacroMetaParser.h"

#include <QList>
#include <QStringList>
#include <QStringView>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr auto kMarker = "// penwick:macro"_L1;

struct MetaLine
{
    QStringView key;
    QStringView value;
};

/// True for blanks of any width, but not for line breaks: a carriage return is part of a line.
bool isBlank(QChar c)
{
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

QStringView trimmed(QStringView text)
{
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

/// Returns the key and the value of a header line; nothing for any other line. The value is
/// everything after the first colon, because URLs and times contain colons.
std::optional<MetaLine> metaLine(QStringView line)
{
    constexpr auto kComment = "// "_L1;
    line = trimmed(line);
    if (!line.startsWith(kComment))
        return std::nullopt;
    line = line.sliced(kComment.size());
    while (line.startsWith(u':'))
        line = line.sliced(1);
    const qsizetype colon = line.indexOf(u':');
    if (colon < 0 || colon + 1 == line.size())
        return std::nullopt;
    return MetaLine{trimmed(line.first(colon)), trimmed(line.sliced(colon + 1))};
}

std::optional<QString> *fieldOf(ParsedMeta &meta, const QString &key)
{
    if (key == "name"_L1)
        return &meta.name;
    if (key == "description"_L1)
        return &meta.description;
    if (key == "category"_L1)
        return &meta.category;
    if (key == "version"_L1)
        return &meta.version;
    return key == "helpurl"_L1 ? &meta.helpURL : nullptr;
}

void take(const MetaLine &line, ParsedMeta &meta)
{
    std::optional<QString> *field = fieldOf(meta, line.key.toString().toLower());
    if (field == nullptr)
        return;
    if (line.value.isEmpty())
        field->reset();
    else
        *field = line.value.toString();
}

/// Removes the first line and its line feed from `rest`, and returns the line without the line
/// feed.
QStringView takeLine(QStringView &rest)
{
    const qsizetype end = rest.indexOf(u'\n');
    const QStringView line = end < 0 ? rest : rest.first(end);
    rest = end < 0 ? QStringView() : rest.sliced(end + 1);
    return line;
}

} // namespace

QString MacroMetaParser::buildHeader(const Macro &macro)
{
    QStringList lines{kMarker, u"// name: "_s + macro.name};
    const auto add = [&lines](QLatin1StringView key, const QString &value) {
        if (!value.isEmpty())
            lines.append(u"// "_s + key + u": "_s + value);
    };
    add("description"_L1, macro.description);
    add("category"_L1, macro.category);
    add("version"_L1, macro.version);
    add("helpURL"_L1, macro.helpURL);
    return lines.join(u'\n') + u"\n\n"_s + macro.code;
}

ParsedMeta MacroMetaParser::parse(const QString &code)
{
    ParsedMeta meta;
    QStringView rest(code);
    if (trimmed(takeLine(rest)) != kMarker) {
        meta.strippedCode = code;
        return meta;
    }
    QStringView afterLine = rest;
    while (const auto line = metaLine(takeLine(afterLine))) {
        take(*line, meta);
        rest = afterLine;
    }
    afterLine = rest;
    while (!rest.isEmpty() && trimmed(takeLine(afterLine)).isEmpty())
        rest = afterLine;
    meta.strippedCode = rest.toString();
    return meta;
}

} // namespace penwick

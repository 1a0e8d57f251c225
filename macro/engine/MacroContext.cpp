#include "macro/engine/MacroContext.h"

#include "wording/WordingLookup.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

using Dictionary = ContextDictionary;

Dictionary dictionary(const MacroContext::App &app)
{
    return {{"name"_L1, app.name}, {"version"_L1, app.version}};
}

Dictionary dictionary(const MacroContext::Capabilities &can)
{
    return {{"textEdit"_L1, can.textEdit},
            {"selection"_L1, can.selection},
            {"cursor"_L1, can.cursor},
            {"notifications"_L1, can.notifications},
            {"settingsPatch"_L1, can.settingsPatch},
            {"fileAccess"_L1, can.fileAccess},
            {"clipboard"_L1, can.clipboard},
            {"network"_L1, can.network}};
}

Dictionary dictionary(const MacroContext::Document &document)
{
    return {{"text"_L1, document.text},
            {"lineCount"_L1, document.lineCount},
            {"characterCount"_L1, document.characterCount},
            {"newline"_L1, document.newline},
            {"encoding"_L1, document.encoding},
            {"isModified"_L1, document.isModified}};
}

Dictionary dictionary(const MacroContext::File &file)
{
    return {{"name"_L1, file.name},
            {"path"_L1, file.path},
            {"directoryPath"_L1, file.directoryPath},
            {"extension"_L1, file.extension},
            {"existsOnDisk"_L1, file.existsOnDisk}};
}

Dictionary dictionary(const MacroContext::Selection &selection)
{
    return {{"hasSelection"_L1, selection.hasSelection},
            {"text"_L1, selection.text},
            {"startOffset"_L1, selection.startOffset},
            {"endOffset"_L1, selection.endOffset},
            {"startLine"_L1, selection.startLine},
            {"startColumn"_L1, selection.startColumn},
            {"endLine"_L1, selection.endLine},
            {"endColumn"_L1, selection.endColumn}};
}

Dictionary dictionary(const MacroContext::Cursor &cursor)
{
    return {{"offset"_L1, cursor.offset}, {"line"_L1, cursor.line}, {"column"_L1, cursor.column}};
}

Dictionary dictionary(const MacroContext::Editor &editor)
{
    return {{"tabId"_L1, editor.tabId}, {"tabTitle"_L1, editor.tabTitle}};
}

Dictionary dictionary(const MacroContext::DateTime &dateTime)
{
    return {{"nowIso"_L1, dateTime.nowIso}, {"timezone"_L1, dateTime.timezone}};
}

Dictionary dictionary(const MacroContext::Macro &macro)
{
    return {{"id"_L1, macro.id}, {"name"_L1, macro.name}};
}

MacroContext::Document documentOf(const EditorSnapshot &snapshot)
{
    const TextMetrics metrics = snapshot.text.metrics();
    return {.text = snapshot.text,
            .lineCount = metrics.lineFeeds + 1,
            .characterCount = metrics.clusters,
            .newline = u"LF"_s,
            .encoding = u"UTF-8"_s,
            .isModified = snapshot.isModified};
}

// Returns what follows the last dot. Empty when that dot begins or ends the name.
QString extensionOf(const QString &fileName)
{
    const qsizetype dot = fileName.lastIndexOf(u'.');
    return dot > 0 ? fileName.sliced(dot + 1) : QString();
}

MacroContext::File fileOf(const QString &path)
{
    const QString name = path.sliced(path.lastIndexOf(u'/') + 1);
    return {.name = name,
            .path = QString(),
            .directoryPath = QString(),
            .extension = extensionOf(name),
            .existsOnDisk = !path.isEmpty()};
}

MacroContext::Selection selectionOf(const EditorSnapshot &snapshot)
{
    const qint64 start = snapshot.selectionLocation;
    const qint64 end = start + snapshot.selectionLength;
    const LineAndColumn startsAt = lineAndColumn(start, snapshot.text);
    const LineAndColumn endsAt = lineAndColumn(end, snapshot.text);
    return {.hasSelection = snapshot.selectionLength >= 1,
            .text = snapshot.text.mid(start, snapshot.selectionLength),
            .startOffset = start,
            .endOffset = end,
            .startLine = startsAt.line,
            .startColumn = startsAt.column,
            .endLine = endsAt.line,
            .endColumn = endsAt.column};
}

QString zoneOffset(int seconds)
{
    if (seconds == 0)
        return u"Z"_s;
    const int minutes = std::abs(seconds) / 60;
    return u"%1%2:%3"_s.arg(QChar(seconds < 0 ? u'-' : u'+'))
        .arg(minutes / 60, 2, 10, QChar(u'0'))
        .arg(minutes % 60, 2, 10, QChar(u'0'));
}

MacroContext::DateTime dateTimeOf(const EditorSnapshot &snapshot)
{
    const QTimeZone zone = snapshot.timeZone.isValid() ? snapshot.timeZone : QTimeZone::utc();
    const QDateTime local = snapshot.now.toTimeZone(zone);
    return {.nowIso =
                local.toString(u"yyyy-MM-dd'T'HH:mm:ss"_s) + zoneOffset(local.offsetFromUtc()),
            .timezone = QString::fromLatin1(zone.id())};
}

} // namespace

ContextDictionary MacroContext::toDictionary() const
{
    return {{"schemaVersion"_L1, schemaVersion},
            {"app"_L1, dictionary(app)},
            {"capabilities"_L1, dictionary(capabilities)},
            {"document"_L1, dictionary(document)},
            {"file"_L1, dictionary(file)},
            {"selection"_L1, dictionary(selection)},
            {"cursor"_L1, dictionary(cursor)},
            {"editor"_L1, dictionary(editor)},
            {"dateTime"_L1, dictionary(dateTime)},
            {"macro"_L1, dictionary(macro)}};
}

MacroContext
buildMacroContext(const EditorSnapshot &snapshot, const QString &macroId, const QString &macroName)
{
    MacroContext context;
    context.schemaVersion = u"1.0"_s;
    context.app = {u"penwick"_s, u"1.0.0"_s}; // Scripts rely on it; not the program's version.
    context.document = documentOf(snapshot);
    context.file = fileOf(snapshot.filePath);
    context.selection = selectionOf(snapshot);
    context.cursor = {
        context.selection.endOffset, context.selection.endLine, context.selection.endColumn};
    const QString &name = context.file.name;
    context.editor = {u"tab_main"_s, name.isEmpty() ? wording::text(u"editor.untitled"_s) : name};
    context.dateTime = dateTimeOf(snapshot);
    context.macro = {macroId, macroName};
    return context;
}

LineAndColumn lineAndColumn(qint64 offset, const Text &text)
{
    const auto [line, column] = text.lineFeedLineAndColumn(offset);
    return {line, column};
}

} // namespace penwick

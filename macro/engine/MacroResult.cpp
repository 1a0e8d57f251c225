#include "macro/engine/MacroResult.h"

#include "wording/WordingLookup.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

using Code = MacroResultError::Code;

tl::unexpected<MacroResultError> failure(Code code, const QString &detail = {})
{
    return tl::unexpected(MacroResultError{code, detail});
}

std::optional<QString> stringMember(const ScriptValue &value, QStringView key)
{
    const ScriptValue *member = value.member(key);
    return member != nullptr ? member->anyString() : std::nullopt;
}

std::optional<Text> textMember(const ScriptValue &value, QStringView key)
{
    const ScriptValue *member = value.member(key);
    return member != nullptr ? member->anyText() : std::nullopt;
}

std::optional<qint64> integerMember(const ScriptValue &value, QStringView key)
{
    const ScriptValue *member = value.member(key);
    return member != nullptr ? member->integer() : std::nullopt;
}

// Returns the member if it is a list that holds only objects, otherwise an empty list.
const ScriptValue::List &objectsMember(const ScriptValue &value, QStringView key)
{
    static const ScriptValue::List kNone;
    const ScriptValue *member = value.member(key);
    const ScriptValue::List *list = member != nullptr ? member->list() : nullptr;
    const auto isObject = [](const ScriptValue &entry) { return entry.map() != nullptr; };
    return list != nullptr && std::all_of(list->begin(), list->end(), isObject) ? *list : kNone;
}

// Returns the member if it is a list that holds only strings. Strings that arrived in one piece
// stay joined, with line feeds between them.
std::optional<QList<Text>> linesMember(const ScriptValue &value, QStringView key)
{
    const ScriptValue *member = value.member(key);
    const ScriptValue::List *list = member != nullptr ? member->list() : nullptr;
    if (list == nullptr)
        return std::nullopt;
    QList<Text> lines;
    lines.reserve(static_cast<qsizetype>(list->size()));
    for (const ScriptValue &entry : *list)
        if (const ScriptTexts *texts = entry.texts())
            lines.append(texts->joined);
        else if (const auto text = entry.anyText())
            lines.append(*text);
        else
            return std::nullopt;
    return lines;
}

NotificationType notificationType(const std::optional<QString> &name)
{
    if (name == "success"_L1)
        return NotificationType::Success;
    if (name == "warning"_L1)
        return NotificationType::Warning;
    if (name == "error"_L1)
        return NotificationType::Error;
    return NotificationType::Info;
}

QList<MacroNotification> parseNotifications(const ScriptValue &value)
{
    QList<MacroNotification> notifications;
    for (const ScriptValue &entry : objectsMember(value, u"notifications"))
        if (const auto message = stringMember(entry, u"message"))
            notifications.append({notificationType(stringMember(entry, u"type")), *message});
    return notifications;
}

std::optional<MacroCursorResult> parseCursor(const ScriptValue &value)
{
    const ScriptValue *cursor = value.member(u"cursor");
    if (cursor == nullptr || cursor->map() == nullptr)
        return std::nullopt;
    return MacroCursorResult{integerMember(*cursor, u"offset"),
                             integerMember(*cursor, u"line"),
                             integerMember(*cursor, u"column")};
}

std::optional<MacroSelectionResult> parseSelection(const ScriptValue &value)
{
    const ScriptValue *selection = value.member(u"selection");
    if (selection == nullptr)
        return std::nullopt;
    if (selection->isNull())
        return MacroDeselect();
    const std::optional<qint64> start = integerMember(*selection, u"startOffset");
    const std::optional<qint64> end = integerMember(*selection, u"endOffset");
    if (!start || !end)
        return std::nullopt;
    return MacroSelect{*start, *end};
}

tl::expected<TextEditInstruction, MacroResultError> parseReplaceLines(const ScriptValue &value)
{
    const std::optional<qint64> start = integerMember(value, u"startLine");
    const std::optional<qint64> end = integerMember(value, u"endLine");
    std::optional<QList<Text>> lines = linesMember(value, u"lines");
    if (!start || !end || !lines || *start < 0 || *end < *start)
        return failure(Code::InvalidReplaceLines);
    return ReplaceLines{*start, *end, std::move(*lines)};
}

} // namespace

QString MacroResultError::errorDescription() const
{
    switch (code) {
    case Code::UnknownTextEditType:
        return wording::text(u"macro.error.invalidType"_s) + u": "_s + detail;
    case Code::ExecutionException:
        return wording::text(u"error.macroExecutionFailed"_s) + u": "_s + detail;
    case Code::NotAnObject:
        return wording::text(u"macro.error.notObject"_s);
    case Code::MissingTextField:
        return wording::text(u"macro.error.noText"_s);
    case Code::InvalidReplaceLines:
        return wording::text(u"macro.error.invalidReplaceLines"_s);
    case Code::OutOfRangeOffset:
        return wording::text(u"macro.error.outOfBounds"_s);
    case Code::NoSelectionForReplaceSelection:
        return wording::text(u"macro.error.noSelection"_s);
    case Code::Timeout:
        return wording::text(u"macro.error.timeout"_s);
    case Code::Stopped:
        return wording::text(u"macro.running.stopped"_s);
    }
    Q_UNREACHABLE();
}

tl::expected<MacroResult, MacroResultError> parseMacroResult(const ScriptValue &value,
                                                             const MacroContext &context)
{
    MacroResult result;
    result.schemaVersion = stringMember(value, u"schemaVersion").value_or(u"1.0"_s);
    for (const ScriptValue &entry : objectsMember(value, u"textEdits")) {
        tl::expected<TextEditInstruction, MacroResultError> edit = parseTextEdit(entry, context);
        if (!edit)
            return tl::unexpected(std::move(edit.error()));
        result.textEdits.append(std::move(*edit));
    }
    result.notifications = parseNotifications(value);
    result.cursor = parseCursor(value);
    result.selection = parseSelection(value);
    return result;
}

tl::expected<TextEditInstruction, MacroResultError> parseTextEdit(const ScriptValue &value,
                                                                  const MacroContext &context)
{
    // A missing type is reported as a missing text: both leave the entry incomplete.
    const std::optional<QString> type = stringMember(value, u"type");
    if (!type)
        return failure(Code::MissingTextField);
    if (*type == "replaceLines"_L1)
        return parseReplaceLines(value);

    const bool replacesSelection = *type == "replaceSelection"_L1;
    const bool replacesAll = *type == "replaceAll"_L1;
    if (!replacesSelection && !replacesAll && *type != "insertAtCursor"_L1)
        return failure(Code::UnknownTextEditType, *type);
    const std::optional<Text> text = textMember(value, u"text");
    if (!text)
        return failure(Code::MissingTextField);
    if (replacesSelection && !context.selection.hasSelection)
        return failure(Code::NoSelectionForReplaceSelection);
    if (replacesSelection)
        return ReplaceSelection{*text};
    if (replacesAll)
        return ReplaceAll{*text};
    return InsertAtCursor{*text};
}

} // namespace penwick

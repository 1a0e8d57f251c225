#pragma once

#include "macro/engine/MacroContext.h"
#include "macro/script/ScriptValue.h"
#include "text/Text.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <tl/expected.hpp>
#include <variant>

namespace penwick {

/// Replaces the whole text with `text`.
struct ReplaceAll
{
    Text text;
    bool operator==(const ReplaceAll &) const = default;
};

/// Replaces the selected text with `text`.
struct ReplaceSelection
{
    Text text;
    bool operator==(const ReplaceSelection &) const = default;
};

/// Inserts `text` after the selected text, which stays.
struct InsertAtCursor
{
    Text text;
    bool operator==(const InsertAtCursor &) const = default;
};

/// Replaces the lines from `startLine` up to but not including `endLine` with `lines`. Both are
/// 0-based; only line feeds separate lines. The parser guarantees 0 <= startLine <= endLine, not
/// that the text has these lines. An element of `lines` may hold several lines, with line feeds
/// between them.
struct ReplaceLines
{
    qint64 startLine = 0;
    qint64 endLine = 0;
    QList<Text> lines;
    bool operator==(const ReplaceLines &) const = default;
};

using TextEditInstruction =
    std::variant<ReplaceAll, ReplaceSelection, InsertAtCursor, ReplaceLines>;

/// The caret position that a macro asks for: an offset in UTF-16 code units, otherwise a line and a
/// column. Any field may be missing; the values are not checked.
struct MacroCursorResult
{
    std::optional<qint64> offset;
    std::optional<qint64> line;
    std::optional<qint64> column;
    bool operator==(const MacroCursorResult &) const = default;
};

/// Selects from one offset to the other, in UTF-16 code units. The offsets are not checked.
struct MacroSelect
{
    qint64 startOffset = 0;
    qint64 endOffset = 0;
    bool operator==(const MacroSelect &) const = default;
};

struct MacroDeselect
{
    bool operator==(const MacroDeselect &) const = default;
};

using MacroSelectionResult = std::variant<MacroSelect, MacroDeselect>;

enum class NotificationType { Success, Info, Warning, Error };

struct MacroNotification
{
    NotificationType type = NotificationType::Info;
    QString message;
    bool operator==(const MacroNotification &) const = default;
};

/// What a macro asks for. Edits and notifications keep the order of the script.
struct MacroResult
{
    QString schemaVersion;
    QList<TextEditInstruction> textEdits;
    std::optional<MacroCursorResult> cursor;
    std::optional<MacroSelectionResult> selection;
    QList<MacroNotification> notifications;
    bool operator==(const MacroResult &) const = default;
};

/// Why a run of a macro failed.
struct MacroResultError
{
    enum class Code {
        UnknownTextEditType,
        ExecutionException,
        NotAnObject,
        MissingTextField,
        InvalidReplaceLines,
        OutOfRangeOffset, ///< Never raised: offsets out of range are clamped.
        NoSelectionForReplaceSelection,
        Timeout, ///< Never raised: there is no time limit.
        Stopped, ///< The user stopped the run.
    };

    Code code = Code::ExecutionException;
    /// The unknown type, or the text of the exception; empty with the other codes.
    QString detail;
    int line = 0; ///< Of the macro's code, 1-based; 0 when the exception names no line.
    /// In the line, in UTF-16 code units, 1-based; 0 when the exception names none.
    int column = 0;

    /// Returns the message for the user, in the active wording.
    [[nodiscard]] QString errorDescription() const;

    bool operator==(const MacroResultError &) const = default;
};

/// Parses what a script returned. A malformed text edit fails the whole result, because it could
/// damage text; a malformed notification, cursor or selection is ignored.
/// \param value a map.
[[nodiscard]] tl::expected<MacroResult, MacroResultError>
parseMacroResult(const ScriptValue &value, const MacroContext &context);

/// Parses one entry of the result's `textEdits`.
/// \param value a map.
[[nodiscard]] tl::expected<TextEditInstruction, MacroResultError>
parseTextEdit(const ScriptValue &value, const MacroContext &context);

} // namespace penwick

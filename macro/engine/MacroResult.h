#pragma once

#include "macro/engine/MacroContext.h"
#include "macro/script/ScriptValue.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <tl/expected.hpp>
#include <variant>

namespace penwick {

/// Puts `text` in the place of the whole text.
struct ReplaceAll
{
    QString text;
    bool operator==(const ReplaceAll &) const = default;
};

/// Puts `text` in the place of the selected text.
struct ReplaceSelection
{
    QString text;
    bool operator==(const ReplaceSelection &) const = default;
};

/// Puts `text` after the selection, which stays.
struct InsertAtCursor
{
    QString text;
    bool operator==(const InsertAtCursor &) const = default;
};

/// Puts `lines` in the place of the lines from `startLine` up to but not including `endLine`.
/// Both are 0-based; only line feeds separate lines. At least, 0 <= startLine <= endLine holds.
struct ReplaceLines
{
    qint64 startLine = 0;
    qint64 endLine = 0;
    QStringList lines;
    bool operator==(const ReplaceLines &) const = default;
};

using TextEditInstruction =
    std::variant<ReplaceAll, ReplaceSelection, InsertAtCursor, ReplaceLines>;

/// Where the caret should go: at an offset in UTF-16 code units, else at a line and a column.
/// Any of them may be missing, and none is checked.
struct MacroCursorResult
{
    std::optional<qint64> offset;
    std::optional<qint64> line;
    std::optional<qint64> column;
    bool operator==(const MacroCursorResult &) const = default;
};

/// Select from the one offset to the other, in UTF-16 code units; neither is checked.
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

/// What a macro asks for, in the order it was asked for.
struct MacroResult
{
    QString schemaVersion;
    QList<TextEditInstruction> textEdits;
    std::optional<MacroCursorResult> cursor;
    std::optional<MacroSelectionResult> selection;
    QList<MacroNotification> notifications;
    bool operator==(const MacroResult &) const = default;
};

/// Why a macro's run failed.
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
        Timeout, ///< The person stopped the run; there is no time limit.
    };

    Code code = Code::ExecutionException;
    /// The type that is not known, or what the exception said; empty with the other codes.
    QString detail;
    int line = 0; ///< Of the macro's code, 1-based, where the exception tells; otherwise 0.

    /// The message for the user, in the active wording.
    [[nodiscard]] QString errorDescription() const;

    bool operator==(const MacroResultError &) const = default;
};

/// Reads what a script returned. A mistake that could damage text fails the whole result; a
/// malformed notification, cursor or selection is left out.
/// \param value a map.
[[nodiscard]] tl::expected<MacroResult, MacroResultError>
parseMacroResult(const ScriptValue &value, const MacroContext &context);

/// Reads one entry of the result's `textEdits`.
/// \param value a map.
[[nodiscard]] tl::expected<TextEditInstruction, MacroResultError>
parseTextEdit(const ScriptValue &value, const MacroContext &context);

} // namespace penwick

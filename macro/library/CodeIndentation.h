#pragma once

#include "editor/TextStorage.h"

#include <QString>

#include <functional>
#include <optional>

namespace penwick {

/// How code is indented while it is typed. Lines end with line feeds, a level is four blanks.
/// Offsets are UTF-16 code units, 0-based.
namespace indentation {

/// One replacement, and the selection after it.
struct Edit
{
    TextRange range;
    QString replacement;
    TextRange selection;
};

/// Tells whether the bracket at an offset is one of the code, not of a string or a comment.
using IsBracket = std::function<bool(qint64 offset)>;

/// Enter: the new line begins like the one before, a level deeper behind an opening bracket. Where
/// the caret stands right before the bracket that closes it, that one gets a line of its own.
[[nodiscard]] Edit lineBreak(const Text &text, TextRange selection, const IsBracket &isBracket);

/// A closing brace on a line that is blank so far takes a level away. Nothing where the line is not
/// of that kind: then the brace is a character like any other.
[[nodiscard]] std::optional<Edit> closingBrace(const Text &text, TextRange selection);

/// Tab: a level of blanks in place of the selection; of a selection that spans lines, every line
/// gets one.
[[nodiscard]] Edit tab(const Text &text, TextRange selection);

/// Gives a level to each line of the selection that is not empty.
[[nodiscard]] Edit indent(const Text &text, TextRange selection);

/// Takes a level from the lines of the selection; nothing when none has any.
[[nodiscard]] std::optional<Edit> unindent(const Text &text, TextRange selection);

} // namespace indentation

} // namespace penwick

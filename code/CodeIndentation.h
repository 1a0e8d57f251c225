#pragma once

#include "editor/TextStorage.h"

#include <QString>

#include <functional>
#include <optional>

namespace penwick {

/// The indentation of code while it is typed. Lines end with line feeds; a level is four spaces.
/// Offsets are UTF-16 code units, 0-based.
namespace indentation {

/// One replacement, and the selection after it.
struct Edit
{
    TextRange range;
    QString replacement;
    TextRange selection;
};

/// Returns true when the bracket at an offset is part of the code, not of a string or a comment.
using IsBracket = std::function<bool(qint64 offset)>;

/// For Enter: the new line gets the indentation of the current one, and one level more after an
/// opening bracket. If the matching closing bracket follows the caret, it gets a line of its own.
[[nodiscard]] Edit lineBreak(const Text &text, TextRange selection, const IsBracket &isBracket);

/// For a closing brace on a line of blanks only: removes one level before the brace. Returns
/// nothing on any other line or with a selection; the brace is then typed like any character.
[[nodiscard]] std::optional<Edit> closingBrace(const Text &text, TextRange selection);

/// For Tab: replaces the selection by one level of spaces. A selection that spans lines is indented
/// instead.
[[nodiscard]] Edit tab(const Text &text, TextRange selection);

/// Adds a level to each line of the selection that is not empty.
[[nodiscard]] Edit indent(const Text &text, TextRange selection);

/// Removes a level from each line of the selection; returns nothing when no line is indented.
[[nodiscard]] std::optional<Edit> unindent(const Text &text, TextRange selection);

} // namespace indentation

} // namespace penwick

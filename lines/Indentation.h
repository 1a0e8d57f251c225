#pragma once

#include "text/Text.h"

namespace penwick {

/// How a text is indented. The defaults are those without settings.
struct Indentation
{
    static constexpr int kLargestTabWidth = 16;

    int tabWidth = 4;           ///< Distance of tab stops in columns, 1 to `kLargestTabWidth`.
    bool insertsBlanks = false; ///< The Tab key inserts spaces instead of a tab.
    bool isKept = false;        ///< A new line starts with the indentation of the line before it.

    bool operator==(const Indentation &) const = default;
};

/// What Tab inserts at `offset`, in UTF-16 code units, 0-based: a tab, or spaces up to the next tab
/// stop. Wide characters count two columns. Far from the line's start, the number of spaces is that
/// of a whole level: the cost does not depend on the line's length.
[[nodiscard]] QString tabUnits(const Text &text, qint64 offset, const Indentation &style);

/// The blanks at the start of the line of `offset`, U+3000 included, up to `offset`; of very long
/// ones, the start.
[[nodiscard]] QString keptIndentation(const Text &text, qint64 offset);

/// `line` with one more level; an empty line stays empty.
[[nodiscard]] QString indentedLine(QStringView line, const Indentation &style);
/// `line` with one level less, as far as it has one.
[[nodiscard]] QString outdentedLine(QStringView line, const Indentation &style);

/// `line` with its tabs and spaces at the start as tabs as far as possible, or as spaces. The width
/// stays.
[[nodiscard]] QString lineWithTabs(QStringView line, const Indentation &style);
[[nodiscard]] QString lineWithSpaces(QStringView line, const Indentation &style);

} // namespace penwick

#pragma once

#include "text/Text.h"

#include <QStringView>

#include <optional>

namespace penwick {

/// A place by line and column, both 1-based. Lines end with a separator or CR LF, as the numbers
/// beside the text count them; the status bar counts CR LF twice. Columns count characters
/// (grapheme clusters).
struct LinePlace
{
    qint64 line = 1;
    qint64 column = 1;

    bool operator==(const LinePlace &) const = default;
};

/// Reads `12` or `12:5`, also in full-width characters and with blanks around. A number less than 1
/// means 1. No value for anything else.
[[nodiscard]] std::optional<LinePlace> parseLinePlace(const QString &typed);

/// Where a `LinePlace` is in a text.
struct FoundPlace
{
    qint64 offset = 0;     ///< UTF-16 code units.
    bool hasLine = true;   ///< False: the text has fewer lines, and this is its end.
    bool hasColumn = true; ///< False: the line is shorter, and this is its end.
};

/// The number of lines that a `LinePlace` can name, at least 1. A text that ends with a line break
/// has an empty last line.
[[nodiscard]] qint64 lineCountOf(const Text &text);

/// Never returns an offset within CR LF. O(log^2 n).
[[nodiscard]] FoundPlace findPlace(const LinePlace &place, const Text &text);

} // namespace penwick

#pragma once

#include <QString>
#include <QStringView>

namespace penwick {

/// Returns how many columns of a terminal the character takes; see below.
[[nodiscard]] int terminalColumns(char32_t character);
/// Returns how many columns of a terminal the text takes: two for each wide character (East Asian
/// Wide and Fullwidth), none for combining and control characters, one for each other.
[[nodiscard]] int terminalColumns(QStringView text);

/// Returns the text if it takes at most `columns`, otherwise the end of it that does, with an
/// ellipsis before it: the ends of paths differ, their starts do not.
[[nodiscard]] QString endWithinColumns(const QString &text, int columns);

} // namespace penwick

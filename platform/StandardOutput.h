#pragma once

#include <QStringView>

namespace penwick {

/// Writes `text` as one line of UTF-8 to standard output and flushes it. Line breaks inside the
/// text become blanks, so that a reader of the log can rely on one message per line.
void printLine(QStringView text);

} // namespace penwick

#pragma once

#include "platform/FileError.h"

#include <QByteArrayView>
#include <QStringView>

#include <tl/expected.hpp>

namespace penwick {

/// Writes all of `bytes` to standard output and waits for whoever reads them. For an answer that
/// somebody asked for, which must not be missing in silence.
[[nodiscard]] tl::expected<void, FileError> writeAnswer(QByteArrayView bytes);

// Neither of the others waits long for whoever reads: what is not taken within a moment is dropped.
// Both may be called on any thread.

/// Writes `text` as one line of UTF-8 to standard output. Line breaks inside the text become
/// blanks, so that a reader of the log can rely on one message per line.
void printLine(QStringView text);

/// Writes `text` and a line feed to standard error, as UTF-8. On a terminal, control characters
/// other than tabs and line feeds are shown instead of obeyed: the text may be a stranger's.
void writeErrorLine(QStringView text);

} // namespace penwick

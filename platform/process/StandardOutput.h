#pragma once

#include "platform/files/FileError.h"

#include <QByteArrayView>
#include <QStringView>

#include <tl/expected.hpp>

namespace penwick {

/// Writes all of `bytes` to standard output and waits for the reader. For output that the user
/// asked for, which must not be lost silently.
[[nodiscard]] tl::expected<void, FileError> writeStandardOutput(QByteArrayView bytes);

// `printLine` and `writeErrorLine` do not wait long for a reader: output that is not taken within a
// short timeout is dropped. Both may be called on any thread.

/// Writes `text` as one line of UTF-8 to standard output. Line breaks inside the text become
/// blanks, so that a reader of the log can rely on one message per line.
void printLine(QStringView text);

/// Writes `text` and a line feed to standard error, as UTF-8. On a terminal, control characters
/// other than tabs and line feeds are replaced by visible characters, since the text may come from
/// an untrusted source.
void writeErrorLine(QStringView text);

/// Like `writeErrorLine`, but waits for the reader. For messages that are the result of a program.
void writeWholeErrorLine(QStringView text);

} // namespace penwick

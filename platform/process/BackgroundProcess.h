#pragma once

namespace penwick {

enum class Fork { Parent, Child, Failed };

/// Forks; both processes return. The child has a session of its own, so that neither the terminal
/// nor the end of the parent ends it. It keeps the standard streams, so that it can report why it
/// cannot start. Call this only while the process has one thread and no window.
[[nodiscard]] Fork forkIntoBackground();

/// Opens /dev/null for the standard streams that the parent process closed, so that reading and
/// writing fail, as on closed ones. Otherwise the next file or socket to be opened would get the
/// number of a standard stream and receive its output. Call this first in the program.
void openMissingStandardStreams();

/// Redirects the standard streams to /dev/null, so that no process waits for them to be closed.
void detachStandardStreams();

} // namespace penwick

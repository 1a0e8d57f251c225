#pragma once

namespace penwick {

enum class Fork { Parent, Child, Failed };

/// Goes on in two processes. The child is free of the terminal and of the parent's end; it keeps
/// the standard streams, to be able to say what stands in the way of its start. Only while the
/// process has one thread and no window.
[[nodiscard]] Fork forkIntoBackground();

/// Opens those standard streams that whoever started the program closed, to nothing: reading fails,
/// and what is written is gone. Else the next file or socket that is opened would pass for such a
/// stream, and take in its lines. For the very start of the program.
void fillStandardStreams();

/// Lets go of the standard streams, so that nobody waits for what comes from them.
void leaveStandardStreams();

} // namespace penwick

#pragma once

namespace penwick {

/// Returns memory that the process has freed to the system, which the allocator would keep for
/// later: after a large document is closed, that is most of the process's memory. Takes up to
/// tenths of a second for gigabytes. May be called on any thread.
void trimFreedMemory();

/// Makes all threads share one pool of memory. Where each has its own, as with the GNU C library,
/// the pool of a thread grows by a system call for each few kilobytes: a long text then takes
/// longer to allocate than to read. Call it before other threads start.
void shareMemoryPool();

} // namespace penwick

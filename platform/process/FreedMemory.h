#pragma once

namespace penwick {

/// Returns memory that the process has freed to the system, which the allocator would keep for
/// later: after a large document is closed, that is most of the process's memory. Takes up to
/// tenths of a second for gigabytes. May be called on any thread.
void trimFreedMemory();

} // namespace penwick

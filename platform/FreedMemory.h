#pragma once

namespace penwick {

/// Lets the system have back what the process has freed, where the allocator would keep it for
/// later: after a large document is closed that is most of the process. Takes up to tenths of a
/// second for gigabytes; may be called on any thread.
void giveBackFreedMemory();

} // namespace penwick

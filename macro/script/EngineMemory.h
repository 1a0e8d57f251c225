#pragma once

namespace penwick {

/// From now on large pieces of memory that the engine takes come in large pages where the system
/// has them, so that a large document costs thousands of page faults less. Not before, or a process
/// that only waits would hold pages of which it uses a little.
void takeLargePages();

} // namespace penwick

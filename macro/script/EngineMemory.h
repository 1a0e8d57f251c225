#pragma once

namespace penwick {

/// From now on, new large blocks that the engine allocates use huge pages where the system has
/// them, which saves thousands of page faults with a large document, unless the system turns out to
/// be slow to deliver them. Call this after the engine has initialized: a spare host would
/// otherwise hold huge pages of which it uses little.
void enableHugePages();

/// The same for the blocks that the engine has allocated before. Call this for a script with a
/// large document: a small one would wait for pages of which it uses little.
void enableHugePagesInEarlierBlocks();

} // namespace penwick

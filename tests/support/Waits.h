#pragma once

namespace penwick::test {

/// Milliseconds. The limit of a wait for something that takes long on a slow machine. A wait ends
/// as soon as its condition is true, so the limit only delays the failure of a test.
constexpr int kLongWait = 60'000;

} // namespace penwick::test

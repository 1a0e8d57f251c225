#pragma once

#include <QtGlobal>

#include <optional>

namespace penwick {

class Text;

/// Finds the boundaries of extended grapheme clusters in a text that is stored in chunks. Each
/// function is the one of `Text` with the same purpose; see there.
namespace clusters {

[[nodiscard]] qint64 previousBoundary(const Text &text, qint64 offset);
[[nodiscard]] qint64 nextBoundary(const Text &text, qint64 offset);
[[nodiscard]] qint64 boundaryAtOrBefore(const Text &text, qint64 offset);
[[nodiscard]] std::optional<qint64> boundaryWithin(const Text &text, qint64 offset, qint64 reach);

} // namespace clusters

} // namespace penwick

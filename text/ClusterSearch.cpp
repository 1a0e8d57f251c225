#include "text/ClusterSearch.h"

#include "text/GraphemeClusters.h"
#include "text/Text.h"

#include <algorithm>

namespace penwick::clusters {

namespace {

/// Units to read on either side of an offset in the first search for a boundary. The window grows
/// when it holds none.
constexpr qint64 kFirstReach = 128;

/// A copy of a stretch of a text, and the offset of its start.
struct Window
{
    QString copy;
    qint64 start = 0;

    [[nodiscard]] std::u16string_view units() const
    {
        return {QStringView(copy).utf16(), static_cast<std::size_t>(copy.size())};
    }

    [[nodiscard]] qint64 end() const { return start + copy.size(); }

    [[nodiscard]] qint64 boundaryBefore(qint64 offset) const
    {
        return start + preceding(units(), offset - start);
    }

    [[nodiscard]] qint64 boundaryAtOrBefore(qint64 offset) const
    {
        return isBoundary(units(), offset - start) ? offset : boundaryBefore(offset);
    }
};

/// Returns a stretch around `offset` that begins at a certain cluster boundary or at the start of
/// the text, and ends `reach` units after `offset`. None when neither lies within `reach` units
/// before `offset`.
std::optional<Window> windowWithin(const Text &text, qint64 offset, qint64 reach)
{
    Window window;
    window.start = std::max<qint64>(0, offset - reach);
    window.copy = text.slice(window.start, offset - window.start + reach);
    if (window.start == 0)
        return window;
    const std::u16string_view units = window.units();
    for (std::size_t i = 1; i + 1 < units.size() && qint64(i) < reach; ++i) {
        if (isCertainBoundaryAt(units, i)) {
            window.copy.remove(0, static_cast<qsizetype>(i));
            window.start += static_cast<qint64>(i);
            return window;
        }
    }
    return std::nullopt;
}

/// As `windowWithin`, but widens `reach` until a boundary is found; the start of the text is always
/// one.
Window windowAround(const Text &text, qint64 offset, qint64 reach)
{
    for (;; reach *= 4)
        if (auto window = windowWithin(text, offset, reach))
            return *window;
}

} // namespace

qint64 previousBoundary(const Text &text, qint64 offset)
{
    // Inside a surrogate pair, ICU's iterator searches from the start of the pair and would go one
    // boundary too far.
    offset = text.pairEnd(std::min(offset, text.size()));
    if (offset <= 0)
        return 0;
    // The window for `offset - 1` begins before `offset`, so it holds the boundary.
    return windowAround(text, offset - 1, kFirstReach).boundaryBefore(offset);
}

qint64 nextBoundary(const Text &text, qint64 offset)
{
    offset = std::max<qint64>(offset, 0);
    for (qint64 reach = kFirstReach; offset < text.size(); reach *= 4) {
        const Window window = windowAround(text, offset, reach);
        const qint64 boundary = window.start + following(window.units(), offset - window.start);
        // A boundary at the end of the window is not reliable: the cluster may continue, and the
        // last unit may be half of a surrogate pair.
        if (boundary + 1 < window.end() || window.end() == text.size())
            return boundary;
    }
    return text.size();
}

qint64 boundaryAtOrBefore(const Text &text, qint64 offset)
{
    if (offset <= 0)
        return 0;
    if (offset >= text.size())
        return text.size();
    offset = text.pairStart(offset);
    return windowAround(text, offset, kFirstReach).boundaryAtOrBefore(offset);
}

std::optional<qint64> boundaryWithin(const Text &text, qint64 offset, qint64 reach)
{
    if (offset <= 0)
        return 0;
    if (offset >= text.size())
        return text.size();
    offset = text.pairStart(offset);
    for (qint64 distance = std::min(kFirstReach, reach); distance <= reach; distance *= 4)
        if (const auto window = windowWithin(text, offset, distance))
            return window->boundaryAtOrBefore(offset);
    return std::nullopt;
}

} // namespace penwick::clusters

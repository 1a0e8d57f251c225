#pragma once

#include <QtGlobal>

namespace penwick {

/// A range of a text in UTF-16 code units, 0-based.
struct TextRange
{
    qint64 location = 0;
    qint64 length = 0;

    /// \param end offset after the last unit; not before `start`.
    [[nodiscard]] static constexpr TextRange between(qint64 start, qint64 end)
    {
        return {start, end - start};
    }

    [[nodiscard]] constexpr qint64 end() const { return location + length; }

    [[nodiscard]] constexpr bool isEmpty() const { return length == 0; }

    bool operator==(const TextRange &) const = default;
};

} // namespace penwick

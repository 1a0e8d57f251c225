#pragma once

#include "encoding/Encoding.h"

#include <string_view>

namespace penwick {

/// The score of a text with a byte-order mark: higher than that of any characters.
inline constexpr int kScoreOfMark = 200;

/// Judges how much a decoded text looks like one of a script: by the share of characters that are
/// common in such texts. Wrong encodings decode to characters that are mostly rare. The result
/// depends on the characters only, so it is the same on every system.
class TextScore final
{
public:
    explicit TextScore(Script script)
        : m_script(script)
    {
    }

    /// Takes the next characters. Only the first ones that count are used, up to a limit; ASCII
    /// characters count in UTF-16 only.
    void add(std::u16string_view units);

    /// -100 to 100; 0 for a text without characters that count.
    [[nodiscard]] int value() const { return m_count > 0 ? m_sum / m_count : 0; }

private:
    [[nodiscard]] int weightOf(char16_t unit, char16_t before) const;

    Script m_script;
    int m_sum = 0;
    int m_count = 0;
    char16_t m_before = 0;
};

} // namespace penwick

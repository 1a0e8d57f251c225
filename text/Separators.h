#pragma once

namespace penwick {

/// True for the characters that end a line: U+000A to U+000D, U+0085, U+2028 and U+2029. CR LF is
/// two separators, but one visual line break.
[[nodiscard]] constexpr bool isSeparator(char16_t unit)
{
    return (unit >= u'\n' && unit <= u'\r') || unit == u'\u0085' || unit == u'\u2028' ||
           unit == u'\u2029';
}

} // namespace penwick

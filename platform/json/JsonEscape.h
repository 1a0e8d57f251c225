#pragma once

#include <array>

namespace penwick {

/// By ASCII character: the letter of its short escape in a JSON text, which is a backslash and this
/// letter; 0 for a character without one. JSON also has one for the slash, but does not require it.
inline constexpr std::array<char, 128> kJsonEscapeLetters = [] {
    std::array<char, 128> letters{};
    letters['"'] = '"';
    letters['\\'] = '\\';
    letters['\b'] = 'b';
    letters['\f'] = 'f';
    letters['\n'] = 'n';
    letters['\r'] = 'r';
    letters['\t'] = 't';
    return letters;
}();

} // namespace penwick

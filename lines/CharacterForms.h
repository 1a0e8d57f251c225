#pragma once

#include "text/Text.h"

#include <QString>

namespace penwick {

/// The forms that the characters of a text can be converted to.
enum class CharacterForm { UpperCase, LowerCase, FullWidth, HalfWidth };

/// \param text shorter than 2^29 units. Case follows no particular language. Line breaks stay.
[[nodiscard]] QString withForm(const Text &text, CharacterForm form);

} // namespace penwick

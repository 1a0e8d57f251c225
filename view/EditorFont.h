#pragma once

#include <QFont>

namespace penwick {

/// Returns the font of editable text: the system's fixed font, with fallback families for the
/// characters it lacks: Japanese in Japanese glyph shapes and emoji in colour.
/// \param pixels the size, see `setFontPixels`.
[[nodiscard]] QFont editorFont(int pixels);

} // namespace penwick

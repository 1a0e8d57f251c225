#pragma once

#include <QFont>

namespace penwick {

/// Returns the font of editable text: the system's fixed font, with fallback families for the
/// characters it lacks: Japanese in Japanese glyph shapes and emoji in colour. Where the desktop
/// prefers Chinese or Korean glyph shapes, the fixed font is the Japanese one of the same design.
/// \param pixels the size, see `setFontPixels`.
/// \param family draws what it can; the rest is drawn as without it. Empty, or a family that does
///        not exist, changes nothing.
[[nodiscard]] QFont editorFont(int pixels, const QString &family = {});

} // namespace penwick

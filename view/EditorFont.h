#pragma once

#include <QFont>

namespace penwick {

/// Returns the font of editable text: the system's fixed font, with fallback families for the
/// characters it lacks: Japanese in Japanese glyph shapes and emoji in colour.
[[nodiscard]] QFont editorFont(qreal pointSize);

} // namespace penwick

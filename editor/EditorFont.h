#pragma once

#include <QFont>

namespace penwick {

/// The font for text that a person edits: the system's fixed font, with families behind it for what
/// it lacks, Japanese in Japanese shapes and emoji in colour.
[[nodiscard]] QFont editorFont(qreal pointSize);

} // namespace penwick

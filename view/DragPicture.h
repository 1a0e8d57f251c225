#pragma once

#include "text/Text.h"

#include <QFont>
#include <QPalette>
#include <QPixmap>

namespace penwick {

/// Draws the picture at the mouse pointer while `text` is dragged: the beginning of its first line.
/// \param scale device pixels per logical pixel.
[[nodiscard]] QPixmap
dragPicture(const Text &text, const QFont &font, const QPalette &palette, qreal scale);

} // namespace penwick

#pragma once

#include "text/Text.h"

#include <QFont>
#include <QPalette>
#include <QPixmap>

namespace penwick {

/// What hangs on the mouse while `text` is dragged: the beginning of its first line.
/// \param scale device pixels of a logical one.
[[nodiscard]] QPixmap
dragPicture(const Text &text, const QFont &font, const QPalette &palette, qreal scale);

} // namespace penwick

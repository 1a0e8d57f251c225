#pragma once

#include <QColor>

class QLineEdit;

namespace penwick {

/// Returns a quieter colour than `ink` that is readable on `ground`.
[[nodiscard]] QColor quietInk(const QColor &ink, const QColor &ground);

/// Gives the placeholder of a field such a colour, because desktops may set an unreadable one. Call
/// this again when the palette has changed.
void makePlaceholderReadable(QLineEdit *field);

} // namespace penwick

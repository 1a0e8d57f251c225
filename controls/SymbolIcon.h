#pragma once

#include <QIcon>
#include <QPalette>
#include <QString>

namespace penwick {

/// One of our own line drawings as an icon: in the palette's colour of text on buttons, paler where
/// it is disabled, and sharp at every size and scale.
/// \param name of a drawing in this folder: `trash`, `play.fill`.
[[nodiscard]] QIcon symbolIcon(const QString &name);

/// The same in one colour of its own.
[[nodiscard]] QIcon symbolIcon(const QString &name, const QColor &color);

} // namespace penwick

#pragma once

#include <QIcon>
#include <QPalette>
#include <QString>

namespace penwick {

/// Returns one of penwick's own line drawings as an icon: in the palette's colour of button text,
/// paler when it is disabled, and sharp at every size and scale.
/// \param name of a drawing in the folder `symbols`: `trash`, `play.fill`.
[[nodiscard]] QIcon symbolIcon(const QString &name);

/// The same in `color`, except when it is disabled. When it is selected, the colour is mixed with
/// that of the selected text, as far as needed to be discernible on a selected row.
[[nodiscard]] QIcon symbolIcon(const QString &name, const QColor &color);

} // namespace penwick

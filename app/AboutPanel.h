#pragma once

class QWidget;

namespace penwick {

/// Shows the application's name, version and description until it is closed.
/// \param parent may be null.
void showAboutPanel(QWidget *parent);

} // namespace penwick

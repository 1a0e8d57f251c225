#pragma once

class QWidget;

namespace penwick {

/// Shows a modal dialog with the application's name, version and description, and returns when it
/// is closed.
/// \param parent may be null.
void showAboutPanel(QWidget *parent);

} // namespace penwick

#pragma once

#include "text/Text.h"

#include <QString>

#include <optional>

class QWidget;

namespace penwick::dialogs {

/// Says that a file cannot be opened because it is not UTF-8, where it stops being UTF-8, and what
/// it probably is, and offers a converted copy unless the file is a binary one. Modal.
/// \param parent may be null.
/// \return the text of the copy; no value when the user declined.
[[nodiscard]] std::optional<Text> offerConversion(QWidget *parent, const QString &path);

/// The path that is suggested for saving the copy of a file: in the same folder, never that of the
/// file itself.
[[nodiscard]] QString pathForCopyOf(const QString &path);

} // namespace penwick::dialogs

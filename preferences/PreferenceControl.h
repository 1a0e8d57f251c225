#pragma once

#include "preferences/Preference.h"

#include <functional>

class QWidget;

namespace penwick {

/// The widget in which the user chooses the value of a setting, by its kind.
struct PreferenceControl
{
    QWidget *widget; ///< Owned by the widget or layout that it is added to.
    /// Shows a value of the setting, without a call of `choose`.
    std::function<void(const QString &value)> show;
    /// Shows the texts of the active wording.
    std::function<void()> relabel;
};

/// \param row lives as long as the widget.
/// \param choose called with each value that the user chooses; it is valid.
[[nodiscard]] PreferenceControl
makePreferenceControl(const Preference &row, std::function<void(const QString &value)> choose);

/// Returns a value of the setting as users read it, in the active wording.
[[nodiscard]] QString readableValue(const Preference &row, const QString &value);

} // namespace penwick

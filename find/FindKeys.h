#pragma once

#include <QKeySequence>

/// The keys of the commands for finding. They are not those of QKeySequence::StandardKey, which
/// differ between desktops.
namespace penwick::findkeys {

constexpr QKeyCombination kClose = Qt::Key_Escape;
constexpr QKeyCombination kReplaceOne = Qt::Key_Enter; ///< In the field of the replacement.

} // namespace penwick::findkeys

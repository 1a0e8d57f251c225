#pragma once

#include <QKeySequence>

/// The keys of the find bar itself. Those of the commands for finding are in the table of all
/// commands.
namespace penwick::findkeys {

constexpr QKeyCombination kClose = Qt::Key_Escape;
constexpr QKeyCombination kReplaceOne = Qt::Key_Enter; ///< In the field of the replacement.

} // namespace penwick::findkeys

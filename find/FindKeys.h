#pragma once

#include <QKeySequence>

/// The keys of the commands for finding. They are not those of QKeySequence::StandardKey, which
/// differ between desktops.
namespace penwick::findkeys {

constexpr QKeyCombination kFind = Qt::CTRL | Qt::Key_F;
constexpr QKeyCombination kReplace = Qt::CTRL | Qt::Key_H;
constexpr QKeyCombination kNext = Qt::Key_F3;
constexpr QKeyCombination kPrevious = Qt::SHIFT | Qt::Key_F3;
constexpr QKeyCombination kClose = Qt::Key_Escape;
constexpr QKeyCombination kReplaceOne = Qt::Key_Enter; ///< In the field of the replacement.

} // namespace penwick::findkeys

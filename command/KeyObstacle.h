#pragma once

#include <QKeyCombination>
#include <QString>

namespace penwick {

/// Returns why the user cannot give a key to a macro, in the active wording: it enters or edits
/// text, input methods or the desktop need it, or a command has it. Empty when it is free.
[[nodiscard]] QString keyObstacle(QKeyCombination key);

} // namespace penwick

#pragma once

#include "command/Command.h"

#include <QKeySequence>

class QShortcut;
class QWidget;

namespace penwick {

/// Makes a shortcut with all keys of a command.
/// \param scope the shortcut's parent; the keys work in its whole window while it is visible.
[[nodiscard]] QShortcut *makeShortcut(CommandId id, QWidget *scope);

/// The key that is shown for a command; empty for none.
[[nodiscard]] QKeySequence shownKey(CommandId id);

} // namespace penwick

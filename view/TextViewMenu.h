#pragma once

#include <QKeySequence>
#include <QString>

class QMenu;

namespace penwick {

class TextView;

/// Returns the text of a menu's entry: `title` literally, with its keys as text. The entry should
/// get no shortcut: the keys work without it, and a second shortcut would make both ambiguous.
[[nodiscard]] QString textMenuEntry(const QString &title, const QKeySequence &keys);

/// Creates the context menu of `view` in the active wording. Actions that are not possible now are
/// disabled. The caller owns the menu; `view` is its parent.
[[nodiscard]] QMenu *makeTextViewMenu(TextView *view);

} // namespace penwick

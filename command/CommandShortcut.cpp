#include "command/CommandShortcut.h"

#include <QShortcut>
#include <QWidget>

namespace penwick {

QShortcut *makeShortcut(CommandId id, QWidget *scope)
{
    const Command &row = command(id);
    auto *shortcut = new QShortcut(scope);
    QList<QKeySequence> keys{row.key};
    if (row.hasSecondKey())
        keys << row.second;
    shortcut->setKeys(keys);
    return shortcut;
}

QKeySequence shownKey(CommandId id)
{
    const Command &row = command(id);
    return row.hasKey() ? QKeySequence(row.key) : QKeySequence();
}

} // namespace penwick

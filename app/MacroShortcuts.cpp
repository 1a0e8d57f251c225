#include "app/MacroShortcuts.h"

#include "command/MacroKeys.h"

#include <QSet>
#include <QShortcut>
#include <QWidget>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

const QString kShortcutName = u"macroKey"_s;

} // namespace

void rebuildMacroShortcuts(QWidget *window,
                           const QList<Macro> &macros,
                           const MacroKeys &keys,
                           const std::function<void(const QString &id)> &runMacro)
{
    for (auto *old : window->findChildren<QShortcut *>(kShortcutName, Qt::FindDirectChildrenOnly)) {
        old->setEnabled(false);
        old->setObjectName({});
        old->deleteLater(); // Its macro may be running, started by its signal.
    }
    QSet<QKeySequence> taken;
    for (const Macro &macro : macros) {
        const QKeySequence key = macro.isEnabled ? keys.keyOf(macro.id) : QKeySequence();
        if (key.isEmpty() || taken.contains(key))
            continue;
        taken.insert(key);
        auto *shortcut = new QShortcut(key, window);
        shortcut->setObjectName(kShortcutName);
        shortcut->setAutoRepeat(false);
        QObject::connect(
            shortcut, &QShortcut::activated, shortcut, [id = macro.id, runMacro] { runMacro(id); });
    }
}

} // namespace penwick

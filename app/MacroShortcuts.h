#pragma once

#include "macro/library/Macro.h"

#include <QList>

#include <functional>

class QWidget;

namespace penwick {

class MacroKeys;

/// Gives a window the keys of the enabled macros and removes those that it got before. When two
/// macros have the same key, the first one gets it.
/// \param runMacro called with the id of the macro whose key was pressed.
void rebuildMacroShortcuts(QWidget *window,
                           const QList<Macro> &macros,
                           const MacroKeys &keys,
                           const std::function<void(const QString &id)> &runMacro);

} // namespace penwick

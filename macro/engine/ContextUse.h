#pragma once

#include "macro/engine/MacroContext.h"

#include <QStringView>

namespace penwick {

/// Empties the long texts of the context that the code certainly does not read, so that they need
/// not be written for the script host: in a large document, that takes longer than most macros that
/// do not read it. Whatever the code reads is as it was.
///
/// A text counts as read unless all that the code does with `context` is to follow plain paths to
/// other values, such as `context.cursor.offset`.
/// \param code of the macro, which finds the context in the variable `context`.
[[nodiscard]] ContextDictionary withoutUnreadTexts(ContextDictionary context, QStringView code);

} // namespace penwick

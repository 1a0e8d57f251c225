#pragma once

#include "macro/engine/MacroContext.h"

#include <QString>

#include <vector>

namespace penwick {

/// Returns the dictionary as one JSON object on one line. It is also a JavaScript expression with
/// the same value, because U+2028 and U+2029 are escaped.
///
/// \param longTexts if not null, long texts are appended to it and not written. Their index gives
///        the variable that stands in their place: `longTextName`. Then the result is no JSON.
[[nodiscard]] QString contextJson(const ContextDictionary &dictionary,
                                  std::vector<Text> *longTexts = nullptr);

} // namespace penwick

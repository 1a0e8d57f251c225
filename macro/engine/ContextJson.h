#pragma once

#include "macro/engine/MacroContext.h"

#include <QString>
#include <QStringView>

#include <functional>

namespace penwick {

/// Returns the number of UTF-16 code units that `writeContextJson` passes on. Reads every text
/// once.
[[nodiscard]] qint64 contextJsonLength(const ContextDictionary &dictionary);

/// Passes the dictionary to `sink` as one JSON object on one line, in pieces. No piece is much
/// longer than a chunk of a text. The output is also a JavaScript expression with the same value,
/// because U+2028 and U+2029 are escaped.
void writeContextJson(const ContextDictionary &dictionary,
                      const std::function<void(QStringView)> &sink);

} // namespace penwick

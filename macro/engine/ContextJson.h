#pragma once

#include "macro/engine/MacroContext.h"

#include <QString>
#include <QStringView>

#include <functional>

namespace penwick {

/// Returns the number of UTF-16 code units that `appendContextJson` appends. Reads every text once.
[[nodiscard]] qint64 contextJsonLength(const ContextDictionary &dictionary);

/// Appends the dictionary as one JSON object on one line. The output is also a JavaScript
/// expression with the same value, because U+2028 and U+2029 are escaped.
///
/// Texts are escaped directly from their storage into `out`. Reserve `contextJsonLength` units in
/// `out` first, so that it is not reallocated.
void appendContextJson(const ContextDictionary &dictionary, QString &out);

/// Passes the same object to `sink` in pieces. No piece is much longer than a chunk of a text.
void writeContextJson(const ContextDictionary &dictionary,
                      const std::function<void(QStringView)> &sink);

} // namespace penwick

#pragma once

#include "macro/engine/MacroContext.h"

#include <QString>
#include <QStringView>

#include <functional>

namespace penwick {

/// The length in UTF-16 code units of what `appendContextJson` appends. Reads every text once.
[[nodiscard]] qint64 contextJsonLength(const ContextDictionary &dictionary);

/// Appends the dictionary as one JSON object in one line. The text is also a script's expression
/// with the same value: line and paragraph separators are written as escapes.
///
/// Texts go from their storage straight into `out`; reserve `contextJsonLength` there before, and
/// nothing is copied twice.
void appendContextJson(const ContextDictionary &dictionary, QString &out);

/// Hands the same object to `sink` in pieces, none much longer than a chunk of a text.
void writeContextJson(const ContextDictionary &dictionary,
                      const std::function<void(QStringView)> &sink);

} // namespace penwick

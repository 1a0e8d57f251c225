#pragma once

#include "macro/engine/TabLabel.h"

#include <QList>
#include <QStringList>

namespace penwick {

/// What the tabs of one window are called, in the order of `labels`: by the names of their
/// documents, and where those of files are alike, with as much of the folder behind them as tells
/// them apart
/// ("notes.txt — today").
[[nodiscard]] QStringList tabNames(const QList<TabLabel> &labels);

} // namespace penwick

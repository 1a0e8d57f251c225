#pragma once

#include "macro/engine/TabLabel.h"

#include <QList>
#include <QStringList>

namespace penwick {

/// What the tabs of one window are called, in the order of `labels`: by the names of their
/// documents, and where those of files are alike, with the folder that tells them apart behind them
/// ("notes.txt — today"). A folder further out is followed by "/…".
[[nodiscard]] QStringList tabNames(const QList<TabLabel> &labels);

} // namespace penwick

#pragma once

#include "window/TabLabel.h"

#include <QList>
#include <QStringList>

namespace penwick {

/// Returns the names for the tabs of one window, in the order of `labels`. A tab has the name of
/// its document. When documents have the same name, the folder by which they differ follows
/// the name ("notes.txt — today"), with "/…" after it unless it is the file's own folder. If that
/// is still ambiguous, all folders from that one on follow instead.
[[nodiscard]] QStringList tabNames(const QList<TabLabel> &labels);

} // namespace penwick

#pragma once

#include "window/TabLabel.h"

#include <QList>
#include <QStringList>

#include <functional>

namespace penwick {

/// Returns the names for the tabs of one window, in the order of `labels`. A tab has the name of
/// its document. When documents have the same name, the folder by which they differ follows
/// the name ("notes.txt — today"), with "/…" after it unless it is the file's own folder. If that
/// is still ambiguous, all folders from that one on follow instead.
[[nodiscard]] QStringList tabNames(const QList<TabLabel> &labels);

/// Returns what to show of names for which there may be little room. Names that look alike once
/// their middles are cut out are cut where they do not differ instead: at the end of the start that
/// they share, and at the start of the end that they share.
/// \param elided returns the name at an index, or another text for its place, with its middle cut
/// out
///        as far as needed.
[[nodiscard]] QStringList
distinctNames(const QStringList &names,
              const std::function<QString(qsizetype index, const QString &name)> &elided);

} // namespace penwick

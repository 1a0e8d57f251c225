#pragma once

#include "window/HintLine.h"

namespace penwick {

class AppCommands;
class DocumentController;
class RecentFiles;

/// Returns what an empty untitled text says about how to begin: the palette, opening a file, and
/// the last file that is not open, if there is one. The arguments are used until a hint has run.
[[nodiscard]] QList<Hint>
startHints(AppCommands *commands, DocumentController *documents, const RecentFiles &files);

} // namespace penwick

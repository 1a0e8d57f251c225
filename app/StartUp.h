#pragma once

#include "app/CommandLine.h"
#include "app/InstancePlace.h"
#include "app/OpenRequest.h"

#include <optional>
#include <variant>

namespace penwick {

/// How to start the editor in this process.
struct EditorStart
{
    std::optional<OpenRequest> request; ///< To be opened first; none if handed over later.
    std::optional<InstancePlace> place; ///< None if no process can hand over to this one.
    bool isInBackground = false;        ///< Forked for another process, which waits for it.
};

/// Finds out whether this process becomes the editor. If not, hands its request over to the running
/// editor, and waits for the documents to close if requested. Reads standard input to its end
/// before. Call it before the application object is made.
/// \return what to start with, or the exit status; errors have been printed.
[[nodiscard]] std::variant<EditorStart, int> startUp(const CommandLine &commandLine);

} // namespace penwick

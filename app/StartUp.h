#pragma once

#include "app/CommandLine.h"
#include "app/InstancePlace.h"
#include "app/OpenRequest.h"

#include <optional>
#include <variant>

namespace penwick {

/// What this process becomes: the editor.
struct EditorStart
{
    std::optional<OpenRequest> request; ///< To be opened first; none where it is handed over.
    std::optional<InstancePlace> place; ///< None where no other process can hand over to it.
    bool isInBackground = false;        ///< It was started for another process, which waits for it.
};

/// Finds out whether this process becomes the editor, and if not does what it was started for: it
/// hands over to the running one, and waits where it is to. Standard input is read to its end
/// before. To be called before the application object is made.
/// \return what to start with, or the status to end with; what went wrong was said.
[[nodiscard]] std::variant<EditorStart, int> startUp(const CommandLine &commandLine);

} // namespace penwick

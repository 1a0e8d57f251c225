#pragma once

namespace penwick {

/// Makes the texts of the profile that the user applied last the active ones, for messages of the
/// command line, before or instead of a start of the editor. Only reads files; a profile that
/// cannot be read changes nothing. `UIWordingProfileManager` does it for the editor.
void useRememberedProfile();

} // namespace penwick

#pragma once

class QMenu;

namespace penwick {

class TextView;

/// The context menu of `view` in the active wording, with what cannot be done now turned off.
/// The caller owns it; `view` is its parent.
[[nodiscard]] QMenu *makeTextViewMenu(TextView *view);

} // namespace penwick

#pragma once

class QMenu;

namespace penwick {

class TextView;

/// Creates the context menu of `view` in the active wording. Actions that are not possible now are
/// disabled. The caller owns the menu; `view` is its parent.
[[nodiscard]] QMenu *makeTextViewMenu(TextView *view);

} // namespace penwick

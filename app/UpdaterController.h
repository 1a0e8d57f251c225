#pragma once

#include <memory>

namespace penwick {

/// Looks for newer versions of the application.
class UpdaterController
{
public:
    virtual ~UpdaterController() = default;

    /// Looks now and tells the person what was found.
    virtual void checkForUpdates() = 0;
};

/// The platform's own way to update applications; null where it has none, as on Linux, where
/// packages are updated from outside.
[[nodiscard]] std::unique_ptr<UpdaterController> makeStandardUpdaterController();

} // namespace penwick

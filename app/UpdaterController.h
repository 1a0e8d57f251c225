#pragma once

#include <memory>

namespace penwick {

/// Checks for newer versions of the application.
class UpdaterController
{
public:
    virtual ~UpdaterController() = default;

    /// Checks now and shows the result to the user.
    virtual void checkForUpdates() = 0;
};

/// The platform's own way to update applications; null where there is none, as on Linux, where
/// packages are updated from outside.
[[nodiscard]] std::unique_ptr<UpdaterController> makeStandardUpdaterController();

} // namespace penwick

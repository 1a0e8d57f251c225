#include "app/UpdaterController.h"

namespace penwick {

std::unique_ptr<UpdaterController> makeStandardUpdaterController()
{
    return nullptr;
}

} // namespace penwick

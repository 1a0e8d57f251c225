#include "fuzz/Require.h"
#include "wording/UIWordingProfile.h"

using namespace penwick;

// Writing a parsed profile and parsing it again must give the same profile.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    const auto profile =
        UIWordingProfile::fromJson(QByteArrayView(data, static_cast<qsizetype>(size)));
    if (profile)
        REQUIRE(UIWordingProfile::fromJson(profile->toJson()) == *profile);
    return 0;
}

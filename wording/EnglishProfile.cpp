#include "wording/EnglishProfile.h"

#include <QFile>

// Without this call the linker drops the resources of a static library. `Q_INIT_RESOURCE` must be
// outside the namespace.
static void initResources()
{
    Q_INIT_RESOURCE(english);
}

namespace penwick {

using namespace Qt::StringLiterals;

const UIWordingProfile &englishProfile()
{
    static const UIWordingProfile profile = [] {
        initResources();
        QFile file(u":/penwick/profiles/english.json"_s);
        return file.open(QIODevice::ReadOnly)
                   ? UIWordingProfile::fromJson(file.readAll()).value_or(UIWordingProfile())
                   : UIWordingProfile();
    }();
    return profile;
}

} // namespace penwick

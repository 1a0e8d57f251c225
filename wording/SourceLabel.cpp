#include "wording/SourceLabel.h"

#include "wording/WordingLookup.h"

namespace penwick::wording {

using namespace Qt::StringLiterals;

QString sourceLabel(const QString &source)
{
    if (source == u"builtin"_s)
        return text(u"macro.sourceBuiltin"_s);
    if (source == u"user"_s)
        return text(u"macro.sourceUser"_s);
    if (source == u"imported"_s)
        return text(u"macro.sourceImported"_s);
    return {};
}

} // namespace penwick::wording

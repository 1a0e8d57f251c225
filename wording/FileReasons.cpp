#include "wording/FileReasons.h"

#include "wording/WordingLookup.h"

namespace penwick::wording {

using namespace Qt::StringLiterals;

QString reasonText(FileError::Kind kind)
{
    using Kind = FileError::Kind;
    switch (kind) {
    case Kind::NotFound:
        return text(u"error.reason.notFound"_s);
    case Kind::IsFolder:
        return text(u"error.reason.isFolder"_s);
    case Kind::NotRegular:
        return text(u"error.reason.notRegular"_s);
    case Kind::PermissionDenied:
        return text(u"error.reason.permissionDenied"_s);
    case Kind::NoSpace:
        return text(u"error.reason.noSpace"_s);
    case Kind::Changed:
        return text(u"error.reason.changedMeanwhile"_s);
    case Kind::Damaged:
        return text(u"error.reason.damaged"_s);
    case Kind::InvalidPath:
        return text(u"error.reason.invalidPath"_s);
    case Kind::Locked:
        return text(u"error.reason.locked"_s);
    default:
        return text(u"error.reason.other"_s);
    }
}

} // namespace penwick::wording

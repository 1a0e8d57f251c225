#include "platform/files/FileError.h"

#include <cerrno>
#include <system_error>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

FileError::Kind kindOf(int errnoValue)
{
    switch (errnoValue) {
    case ENOENT:
    case ENOTDIR:
        return FileError::Kind::NotFound;
    case EISDIR:
        return FileError::Kind::IsFolder;
    case EACCES:
    case EPERM:
    case EROFS:
        return FileError::Kind::PermissionDenied;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return FileError::Kind::NoSpace;
    case EWOULDBLOCK:
        return FileError::Kind::Locked;
    case ENAMETOOLONG:
    case ELOOP:
        return FileError::Kind::InvalidPath;
    default:
        return FileError::Kind::Other;
    }
}

} // namespace

FileError FileError::fromErrno(int errnoValue)
{
    return {kindOf(errnoValue), errnoValue};
}

tl::unexpected<FileError> systemError()
{
    return tl::unexpected(FileError::fromErrno(errno));
}

QString FileError::description() const
{
    if (kind == Kind::Locked)
        return u"Locked by another process"_s; // The system's message would not help.
    if (kind == Kind::Damaged)
        return u"File half written, a copy of the old content was kept"_s;
    if (errnoValue != 0)
        return QString::fromStdString(std::generic_category().message(errnoValue));
    switch (kind) {
    case Kind::NotRegular:
        return u"Not a regular file"_s;
    case Kind::InvalidPath:
        return u"Invalid file name"_s;
    case Kind::Changed:
        return u"Changed by another program"_s;
    case Kind::Cancelled:
        return u"Cancelled"_s;
    default:
        return u"Unknown error"_s;
    }
}

} // namespace penwick

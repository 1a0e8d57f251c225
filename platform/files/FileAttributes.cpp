#include "platform/files/FileAttributes.h"

#include <QByteArrayList>

#include <cerrno>
#include <linux/limits.h>
#include <optional>
#include <sys/xattr.h>
#include <unistd.h>

namespace penwick {

namespace {

/// A folder with a default access control list gives one to the new file even if the old file has
/// none.
constexpr auto kAccessList = "system.posix_acl_access";

bool isWithoutAttributes(int errnoValue)
{
    return errnoValue == ENOTSUP || errnoValue == ENOSYS;
}

/// Returns std::nullopt if the names cannot be read.
std::optional<QByteArrayList> attributeNames(const QByteArray &path)
{
    QByteArray names(XATTR_LIST_MAX, Qt::Uninitialized);
    const ssize_t length =
        ::listxattr(path.constData(), names.data(), static_cast<size_t>(names.size()));
    if (length < 0)
        return isWithoutAttributes(errno) ? std::optional(QByteArrayList()) : std::nullopt;
    names.truncate(length);
    QByteArrayList result = names.split('\0');
    result.removeAll(QByteArray());
    return result;
}

bool copyAttribute(const QByteArray &oldPath, const QByteArray &name, int descriptor)
{
    QByteArray value(XATTR_SIZE_MAX, Qt::Uninitialized);
    const ssize_t size = ::getxattr(
        oldPath.constData(), name.constData(), value.data(), static_cast<size_t>(value.size()));
    return size >= 0 &&
           ::fsetxattr(
               descriptor, name.constData(), value.constData(), static_cast<size_t>(size), 0) == 0;
}

bool copyExtendedAttributes(const QByteArray &oldPath, int descriptor)
{
    const auto names = attributeNames(oldPath);
    if (!names)
        return false;
    for (const QByteArray &name : *names)
        if (!copyAttribute(oldPath, name, descriptor))
            return false;
    return names->contains(kAccessList) || ::fremovexattr(descriptor, kAccessList) == 0 ||
           errno == ENODATA || isWithoutAttributes(errno);
}

} // namespace

bool copyAttributes(const QByteArray &oldPath, const struct stat &old, int descriptor)
{
    struct stat present = {};
    if (::fstat(descriptor, &present) != 0)
        return false;
    const bool hasOtherOwner = present.st_uid != old.st_uid || present.st_gid != old.st_gid;
    if (hasOtherOwner && ::fchown(descriptor, old.st_uid, old.st_gid) != 0)
        return false;
    // The permissions come last: setting or removing an access control list changes them.
    return copyExtendedAttributes(oldPath, descriptor) &&
           ::fchmod(descriptor, old.st_mode & ALLPERMS) == 0;
}

} // namespace penwick

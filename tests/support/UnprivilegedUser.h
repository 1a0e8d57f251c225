#pragma once

#include <QtGlobal>

#include <unistd.h>

namespace penwick::test {

/// A user id and group id that owns no file of the tests.
constexpr uid_t kUnprivilegedUser = 65534;

/// Calls `work` with the rights of `kUnprivilegedUser`. Only root can switch users: without root,
/// `work` runs with the rights of the current user.
template <typename Work> auto asUnprivilegedUser(Work work)
{
    const bool isRoot = ::geteuid() == 0;
    if (isRoot && (::setegid(kUnprivilegedUser) != 0 || ::seteuid(kUnprivilegedUser) != 0))
        qFatal("No other user can be taken on.");
    auto result = work();
    if (isRoot && (::seteuid(0) != 0 || ::setegid(0) != 0))
        qFatal("The user cannot be taken back.");
    return result;
}

} // namespace penwick::test

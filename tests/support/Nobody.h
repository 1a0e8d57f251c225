#pragma once

#include <QtGlobal>

#include <unistd.h>

namespace penwick::test {

/// A user id and group id that owns no file of the tests.
constexpr uid_t kNobody = 65534;

/// Calls `work` with the rights of `kNobody`. Only root can switch users: without root, `work` runs
/// with the rights of the current user.
template <typename Work> auto asNobody(Work work)
{
    const bool isRoot = ::geteuid() == 0;
    if (isRoot && (::setegid(kNobody) != 0 || ::seteuid(kNobody) != 0))
        qFatal("No other user can be taken on.");
    auto result = work();
    if (isRoot && (::seteuid(0) != 0 || ::setegid(0) != 0))
        qFatal("The user cannot be taken back.");
    return result;
}

} // namespace penwick::test

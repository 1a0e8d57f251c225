#pragma once

#include <QtGlobal>

#include <unistd.h>

namespace penwick::test {

/// A user, and a group, who owns nothing here.
constexpr uid_t kNobody = 65534;

/// Does the work with the rights of `kNobody`. Where the tests do not run as root, who alone can
/// take on another user, it is done with the rights that they have.
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

#include "macro/script/SystemCallName.h"

#include <QLibrary>

#include <cstdint>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

using Resolve = char *(*)(std::uint32_t architecture, int number);

// Loaded on demand: denied calls should never occur, and linking the library would slow down each
// start of the editor.
Resolve loadResolver()
{
    QLibrary library(u"seccomp"_s, 2);
    return reinterpret_cast<Resolve>(library.resolve("seccomp_syscall_resolve_num_arch"));
}

QString nameOf(int number)
{
    static const Resolve resolve = loadResolver();
    constexpr std::uint32_t kNative = 0; // SCMP_ARCH_NATIVE
    char *const name = resolve != nullptr ? resolve(kNative, number) : nullptr;
    QString copy = QString::fromLatin1(name);
    std::free(name);
    return copy;
}

} // namespace

QString systemCallName(const DeniedCall &call)
{
    if (call.isForeign != 0)
        return u"32-bit %1"_s.arg(call.number);
    const QString name = nameOf(call.number);
    return name.isEmpty() ? QString::number(call.number) : u"%1 (%2)"_s.arg(name).arg(call.number);
}

} // namespace penwick

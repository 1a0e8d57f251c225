#include "platform/files/FileBackup.h"

#include "platform/files/FileAttributes.h"
#include "platform/files/FileInPlace.h"
#include "platform/files/FileSystem.h"
#include "platform/files/FileWriter.h"
#include "platform/files/TemporaryFile.h"

#include <cerrno>
#include <sys/stat.h>

namespace penwick {

namespace {

tl::expected<void, FileError>
make(const QByteArray &original, TemporaryFile &file, const ProduceBytes &produce)
{
    struct stat status = {};
    if (::stat(original.constData(), &status) != 0)
        return systemError();
    if (const auto filled = fill(file.descriptor(), produce); !filled)
        return filled;
    constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
    if (!copyAttributes(original, status, file.descriptor()) &&
        ::fchmod(file.descriptor(), kPrivate) != 0)
        return systemError();
    if (!synchronise(file.descriptor()))
        return systemError();
    return {};
}

} // namespace

tl::expected<void, FileError>
makeBackup(const QString &original, const QString &backup, const ProduceBytes &produce)
{
    const auto from = systemPath(original);
    const auto to = systemPath(backup);
    if (!from || !to)
        return tl::unexpected(from ? to.error() : from.error());
    TemporaryFile::removeLeftovers(*to);
    tl::expected<void, FileError> made;
    // Some systems cannot name an open file.
    for (const auto name : {TemporaryFile::Name::None, TemporaryFile::Name::FromTheStart}) {
        TemporaryFile file(*to);
        made = file.create(S_IRUSR | S_IWUSR, name).and_then([&] {
            return make(*from, file, produce);
        });
        if (!made)
            return made;
        made = file.takeName();
        if (made)
            return file.replaceTarget();
    }
    return made;
}

} // namespace penwick

#include "platform/process/StandardInput.h"

#include "platform/files/FileDescriptor.h"

#include <cerrno>
#include <unistd.h>

namespace penwick {

tl::expected<void, FileError> readStandardInput(const TakeBytes &take)
{
    constexpr qsizetype kBlock = 1 << 16;
    QByteArray block(kBlock, Qt::Uninitialized);
    while (true) {
        const auto count = uninterrupted(
            [&] { return ::read(STDIN_FILENO, block.data(), static_cast<std::size_t>(kBlock)); });
        if (count < 0)
            return systemError();
        if (count == 0)
            return {};
        if (!take(QByteArrayView(block).first(count)))
            return tl::unexpected(FileError{FileError::Kind::Cancelled, 0});
    }
}

} // namespace penwick

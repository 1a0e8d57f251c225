#include "platform/process/BackgroundProcess.h"

#include "platform/files/FileDescriptor.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace penwick {

Fork forkIntoBackground()
{
    std::fflush(nullptr); // Otherwise both processes would write the buffered output.
    const pid_t child = ::fork();
    if (child < 0)
        return Fork::Failed;
    if (child > 0)
        return Fork::Parent;
    ::setsid();
    return Fork::Child;
}

void openMissingStandardStreams()
{
    // In this order, since open() returns the lowest free number.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(stream, F_GETFD) < 0)
            static_cast<void>(uninterrupted([stream] {
                return ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
            }));
}

void detachStandardStreams()
{
    std::fflush(nullptr);
    const FileDescriptor nothing(
        uninterrupted([] { return ::open("/dev/null", O_RDWR | O_CLOEXEC); }));
    if (!nothing.isOpen())
        return;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        static_cast<void>(uninterrupted([&] { return ::dup2(nothing.get(), stream); }));
}

} // namespace penwick

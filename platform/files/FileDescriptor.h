#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace penwick {

/// Owns a file descriptor and closes it; -1 means none.
class FileDescriptor final
{
public:
    explicit FileDescriptor(int descriptor = -1) noexcept
        : m_descriptor(descriptor)
    {
    }

    FileDescriptor(FileDescriptor &&other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }

    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }

    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;

    ~FileDescriptor() { close(); }

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }

    [[nodiscard]] int get() const { return m_descriptor; }

    /// Closes now. False, with `errno` set, when the system reports a delayed write error.
    bool close() noexcept
    {
        // Not repeated after EINTR: Linux has already released the descriptor.
        return m_descriptor < 0 || ::close(std::exchange(m_descriptor, -1)) == 0;
    }

private:
    int m_descriptor;
};

/// Repeats a system call while a signal interrupts it.
template <typename Call> auto uninterrupted(Call call)
{
    while (true) {
        const auto result = call();
        if (result != -1 || errno != EINTR)
            return result;
    }
}

} // namespace penwick

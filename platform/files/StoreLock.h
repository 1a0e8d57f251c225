#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileError.h"

#include <QString>

#include <chrono>
#include <tl/expected.hpp>
#include <utility>

namespace penwick {

/// Keeps other penwick processes from changing a folder's files between this process's reading and
/// writing them. It is the system's advisory lock on the folder itself: it leaves no lock file, and
/// the system releases it however the process ends. Other programs do not respect it.
///
/// Use it from one thread. The lock is recursive: its holder may take it again.
class StoreLock final
{
public:
    /// How long a change waits for another process, which holds the lock for milliseconds.
    static constexpr std::chrono::milliseconds kTimeout{2000};

    /// \param folder absolute path. It need not exist until the lock is taken.
    explicit StoreLock(QString folder)
        : m_folder(std::move(folder))
    {
    }

    StoreLock(const StoreLock &) = delete;
    StoreLock &operator=(const StoreLock &) = delete;

    /// Holds the lock during its lifetime. The lock must outlive it.
    class Holder final
    {
    public:
        explicit Holder(StoreLock *lock)
            : m_lock(lock)
        {
        }

        Holder(Holder &&other) noexcept
            : m_lock(std::exchange(other.m_lock, nullptr))
        {
        }

        Holder &operator=(Holder &&) = delete;

        ~Holder()
        {
            if (m_lock != nullptr)
                m_lock->release();
        }

    private:
        StoreLock *m_lock;
    };

    /// Takes the lock. Waits for another holder at most `timeout`, then fails with `Locked`. Also
    /// fails if the folder cannot be opened. On a file system without locks it succeeds without
    /// excluding other processes, since otherwise nothing could be stored there.
    [[nodiscard]] tl::expected<Holder, FileError>
    take(std::chrono::milliseconds timeout = kTimeout);

private:
    void release();

    const QString m_folder;
    FileDescriptor m_descriptor;
    int m_depth = 0;
};

} // namespace penwick

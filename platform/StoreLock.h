#pragma once

#include "platform/FileDescriptor.h"
#include "platform/FileError.h"

#include <QString>

#include <chrono>
#include <tl/expected.hpp>
#include <utility>

namespace penwick {

/// Keeps other processes of penwick from changing a folder's files between this one's reading and
/// writing them. It is the system's lock on the folder itself: nothing is left in it, and the
/// system lets go for a process that ends in whatever way. Other programs do not heed it.
///
/// Use it from one thread. The lock nests: who holds it may take it again at once.
class StoreLock final
{
public:
    /// How long a change waits for another process, which holds the lock for milliseconds.
    static constexpr std::chrono::milliseconds kPatience{2000};

    /// \param folder absolute path. It need not exist until the lock is taken.
    explicit StoreLock(QString folder)
        : m_folder(std::move(folder))
    {
    }

    StoreLock(const StoreLock &) = delete;
    StoreLock &operator=(const StoreLock &) = delete;

    /// Holds the lock for as long as it lives; the lock outlives it.
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

    /// Waits for another holder no longer than `patience`; then fails with `Locked`. Also fails
    /// where the folder cannot be opened. A file system that knows no locks gives one that binds
    /// nobody, for without it nothing could be stored there at all.
    [[nodiscard]] tl::expected<Holder, FileError>
    take(std::chrono::milliseconds patience = kPatience);

private:
    void release();

    const QString m_folder;
    FileDescriptor m_descriptor;
    int m_depth = 0;
};

} // namespace penwick

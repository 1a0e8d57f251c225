#pragma once

#include "platform/files/FileDescriptor.h"

#include <QByteArray>
#include <QByteArrayView>

namespace penwick {

/// Buffers small pieces and writes them to an open file at its current position.
class FileWriter final
{
public:
    /// \param descriptor not owned; must stay open while this is used.
    explicit FileWriter(int descriptor)
        : m_descriptor(descriptor)
    {
    }

    /// False, with `errno` set, on failure.
    bool write(QByteArrayView bytes)
    {
        constexpr qsizetype kBufferSize = 1 << 18;
        if (m_buffer.size() + bytes.size() <= kBufferSize) {
            m_buffer.append(bytes.data(), bytes.size());
            return true;
        }
        return flush() && writeThrough(bytes);
    }

    /// Writes what is buffered. Fails as `write` does.
    bool flush()
    {
        const bool isWritten = writeThrough(m_buffer);
        m_buffer.resize(0);
        return isWritten;
    }

    /// The number of bytes passed to `write`.
    [[nodiscard]] qint64 size() const { return m_written + m_buffer.size(); }

private:
    bool writeThrough(QByteArrayView bytes)
    {
        while (!bytes.isEmpty()) {
            const auto count = uninterrupted([&] {
                return ::write(m_descriptor, bytes.data(), static_cast<size_t>(bytes.size()));
            });
            if (count < 0)
                return false;
            bytes = bytes.sliced(count);
            m_written += count;
        }
        return true;
    }

    int m_descriptor;
    QByteArray m_buffer;
    qint64 m_written = 0;
};

/// Waits until what was written to the file is on the disk. False, with `errno` set, on failure.
[[nodiscard]] inline bool synchronise(int descriptor)
{
    // File systems that have nothing to synchronise fail with EINVAL.
    return uninterrupted([descriptor] { return ::fsync(descriptor); }) == 0 || errno == EINVAL;
}

} // namespace penwick

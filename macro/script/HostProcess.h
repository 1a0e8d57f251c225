#pragma once

#include "macro/script/ScriptHost.h"
#include "platform/files/FileDescriptor.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace penwick {

/// A process that runs scripts. The destructor kills it. The system also kills it when the
/// thread that started it ends, so start it from a thread that lives as long as the program.
class HostProcess final
{
public:
    struct Settings
    {
        QString program;          ///< The executable's path.
        std::uint64_t memory = 0; ///< Bytes that a script may allocate.
        QByteArray timeZone;      ///< Name of the time zone of the dates that scripts see.
        /// True to have the host report system calls that the sandbox refuses; DeniedCallHandler.h
        /// describes what that may cost. A call that ends the host is always reported.
        bool reportsRefusedCalls = true;
        /// True to have the host wait for another script after each. Otherwise it ends after one.
        bool servesMany = false;

        bool operator==(const Settings &) const = default;
    };

    /// Starts a host. Returns nothing when the system cannot start it.
    [[nodiscard]] static std::optional<HostProcess> start(const Settings &settings);

    HostProcess(HostProcess &&other) noexcept;
    HostProcess &operator=(HostProcess &&other) noexcept;
    HostProcess(const HostProcess &) = delete;
    HostProcess &operator=(const HostProcess &) = delete;
    /// Kills the process if it is still there. Does not wait until its memory is released.
    ~HostProcess();

    /// The editor's end of the connection; never blocks.
    [[nodiscard]] int descriptor() const { return m_ends.connection.get(); }

    /// The file for `SharedTexts`; -1 when the system could not create one.
    [[nodiscard]] int sharedDescriptor() const { return m_ends.shared.get(); }

    [[nodiscard]] qint64 processId() const { return m_processId; }

    /// True while the process runs; false after `end`.
    [[nodiscard]] bool isAlive() const;

    /// Returns the system calls that the sandbox has denied the process so far, as the process
    /// reports them: at most 64.
    [[nodiscard]] const QList<DeniedCall> &deniedCalls();

    /// Kills the process if it still runs, waits until it is gone and returns how it ended.
    /// \return every field but `engine`, which only the process knows.
    [[nodiscard]] HostEnding end();

private:
    /// The editor's ends of what it shares with the process.
    struct Ends
    {
        FileDescriptor connection{};
        FileDescriptor deniedCalls{};
        FileDescriptor shared{};
    };

    HostProcess(qint64 processId, Ends ends);

    qint64 m_processId; // -1 once the process was waited for or moved to another object.
    Ends m_ends;
    QList<DeniedCall> m_deniedCalls; // Those read so far.
};

/// Reaps the processes that destructors have killed and that have ended since. True when none is
/// left. Safe from any thread.
bool reapHostProcesses();

} // namespace penwick

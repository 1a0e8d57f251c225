#pragma once

#include "macro/script/ScriptHost.h"
#include "platform/FileDescriptor.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace penwick {

/// A process that runs one script: started, talked to over its descriptor, and ended with this
/// object at the latest. It ends with the thread that started it, too; so start it from one that
/// lives as long as the program.
class HostProcess final
{
public:
    struct Settings
    {
        QString program;          ///< The executable's path.
        std::uint64_t memory = 0; ///< Bytes that a script may take.
        QByteArray timeZone;      ///< Name of the time zone in which scripts see dates.
        /// Whether the host reports system calls that it is refused; see `DeniedCallHandler.h` for
        /// what that may cost. Those that end it are reported in any case.
        bool reportsRefusedCalls = true;

        bool operator==(const Settings &) const = default;
    };

    /// Nothing where the system does not start it.
    [[nodiscard]] static std::optional<HostProcess> start(const Settings &settings);

    HostProcess(HostProcess &&other) noexcept;
    HostProcess &operator=(HostProcess &&other) noexcept;
    HostProcess(const HostProcess &) = delete;
    HostProcess &operator=(const HostProcess &) = delete;
    /// Kills the process if it is still there, without waiting for its memory to be given back.
    ~HostProcess();

    /// Our end of the connection; never blocks.
    [[nodiscard]] int descriptor() const { return m_ends.connection.get(); }

    /// The file for `SharedTexts`; -1 where the system has none to offer.
    [[nodiscard]] int sharedDescriptor() const { return m_ends.shared.get(); }

    [[nodiscard]] qint64 processId() const { return m_processId; }

    /// Whether the process has neither ended nor been ended.
    [[nodiscard]] bool isAlive() const;

    /// Which system calls the sandbox has denied the process so far, as the process says: at
    /// most 64.
    [[nodiscard]] const QList<DeniedCall> &deniedCalls();

    /// Ends the process and says what had become of it before. Waits until it is gone.
    /// \return all but the engine, which the process alone knows.
    [[nodiscard]] HostEnding end();

private:
    /// Our ends of what the process and we share.
    struct Ends
    {
        FileDescriptor connection{};
        FileDescriptor deniedCalls{};
        FileDescriptor shared{};
    };

    HostProcess(qint64 processId, Ends ends);

    qint64 m_processId; // -1 once it was waited for.
    Ends m_ends;
    QList<DeniedCall> m_deniedCalls; // What was read of them.
};

/// Lets go of processes that were killed before and are gone by now. True when none is left. Safe
/// from any thread.
bool reapHostProcesses();

} // namespace penwick

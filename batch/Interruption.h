#pragma once

#include <csignal>

namespace penwick {

/// Records the first SIGINT, SIGTERM or SIGHUP instead of ending the program, for as long as this
/// exists. A second one of the same kind ends the program at once, which leaves no unfinished file
/// where the file system has unnamed files. A signal that was ignored stays ignored. Only one may
/// exist at a time.
class Interruption final
{
public:
    Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;
    ~Interruption();

    /// The number of the first signal; 0 before it.
    [[nodiscard]] static int signal();

private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

    struct sigaction m_former[3] = {};
};

} // namespace penwick

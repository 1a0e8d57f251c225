#pragma once

#include <csignal>
#include <sys/resource.h>

namespace penwick::test {

/// Limits every file to `bytes` while this lives. A write past that fails as on a full disk.
class FileSizeLimit final
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        m_formerHandler = std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit{bytes, m_former.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }

    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_formerHandler);
    }

private:
    rlimit m_former = {};
    void (*m_formerHandler)(int) = nullptr;
};

} // namespace penwick::test

#pragma once

#include <sys/resource.h>
#include <unistd.h>

namespace penwick::test {

/// Prevents the process from opening any further file while this lives.
class DescriptorLimit final
{
public:
    DescriptorLimit()
    {
        const int next = ::dup(STDERR_FILENO); // The lowest free descriptor.
        ::close(next);
        ::getrlimit(RLIMIT_NOFILE, &m_former);
        const rlimit limit{static_cast<rlim_t>(next), m_former.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }

    DescriptorLimit(const DescriptorLimit &) = delete;
    DescriptorLimit &operator=(const DescriptorLimit &) = delete;

    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &m_former); }

private:
    rlimit m_former = {};
};

} // namespace penwick::test

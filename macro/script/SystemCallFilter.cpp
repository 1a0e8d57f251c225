#include "macro/script/SystemCallFilter.h"

#include "macro/script/DeniedCallHandler.h"
#include "macro/script/SystemCallTable.h"

#include <memory>
#include <seccomp.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace penwick {

namespace {

using Kind = SystemCallDecision::Kind;
using Test = ArgumentCondition::Test;

struct ReleaseFilter
{
    void operator()(void *filter) const { seccomp_release(filter); }
};

using Filter = std::unique_ptr<void, ReleaseFilter>;

std::uint32_t actionFor(const SystemCallDecision &decision, RefusedCalls refused)
{
    if (decision.kind == Kind::Allow)
        return SCMP_ACT_ALLOW;
    if (decision.kind == Kind::Refuse && refused == RefusedCalls::Silent)
        return SCMP_ACT_ERRNO(static_cast<std::uint32_t>(decision.error));
    return SCMP_ACT_TRAP; // The handler reports the call, then answers it or ends the process.
}

scmp_arg_cmp equalBits(unsigned argument, std::uint64_t mask, std::uint64_t value)
{
    return {argument, SCMP_CMP_MASKED_EQ, mask, value & mask};
}

// The library has no "or" and no "else". A condition becomes several rules, and holds when one of
// them does.
std::vector<scmp_arg_cmp> differingBits(const ArgumentCondition &condition)
{
    std::vector<scmp_arg_cmp> rules;
    for (std::uint64_t bit = 1; bit != 0; bit <<= 1)
        if ((condition.mask & bit) != 0)
            rules.push_back(equalBits(condition.argument, bit, ~condition.value));
    return rules;
}

/// Returns rules of which one matches where the condition holds, or where it does not.
std::vector<scmp_arg_cmp> rulesWhere(const ArgumentCondition &condition, bool holds)
{
    if (condition.test == Test::Equal)
        return {{condition.argument, holds ? SCMP_CMP_EQ : SCMP_CMP_NE, condition.value, 0}};
    if ((condition.test == Test::BitsEqual) == holds)
        return {equalBits(condition.argument, condition.mask, condition.value)};
    return differingBits(condition);
}

/// Adds rules to one filter and records whether all of them could be added.
class Rules final
{
public:
    Rules(scmp_filter_ctx filter, RefusedCalls refused)
        : m_filter(filter)
        , m_refused(refused)
    {
    }

    void add(const SystemCallGroup &group)
    {
        const RefusedCalls refused = group.isReported ? m_refused : RefusedCalls::Silent;
        for (const char *name : group.names)
            addAction(name, actionFor(group.decision, refused), {});
    }

    void add(const ConditionalSystemCall &row)
    {
        for (const scmp_arg_cmp &rule : rulesWhere(row.condition, true)) {
            std::vector conditions{rule};
            if (row.alsoRequired)
                conditions.push_back(rulesWhere(*row.alsoRequired, true).front());
            addAction(row.name, SCMP_ACT_ALLOW, conditions);
        }
        if (row.otherwise.kind != Kind::Kill)
            return;
        for (const scmp_arg_cmp &rule : rulesWhere(row.condition, false))
            addAction(row.name, actionFor(row.otherwise, m_refused), {rule});
    }

    void
    addAction(const char *name, std::uint32_t action, const std::vector<scmp_arg_cmp> &conditions)
    {
        // A name that this release of the library does not know gets the filter's default, the
        // action for unknown calls. An action that equals the default needs no rule.
        const int number = seccomp_syscall_resolve_name(name);
        if (number == __NR_SCMP_ERROR || action == actionFor(kUnknownSystemCall, m_refused))
            return;
        m_good = m_good && seccomp_rule_add_array(m_filter,
                                                  action,
                                                  number,
                                                  static_cast<unsigned>(conditions.size()),
                                                  conditions.data()) == 0;
    }

    [[nodiscard]] bool areGood() const { return m_good; }

private:
    scmp_filter_ctx m_filter;
    RefusedCalls m_refused;
    bool m_good = true;
};

bool addRules(scmp_filter_ctx filter, RefusedCalls refused, std::int32_t process)
{
    Rules rules(filter, refused);
    for (const SystemCallGroup &group : systemCallGroups())
        rules.add(group);
    for (const ConditionalSystemCall &row : conditionalSystemCalls(process))
        rules.add(row);
    return rules.areGood();
}

bool selectArchitecture(scmp_filter_ctx filter, std::uint32_t architecture)
{
    return architecture == seccomp_arch_native() ||
           (seccomp_arch_add(filter, architecture) == 0 &&
            seccomp_arch_remove(filter, seccomp_arch_native()) == 0);
}

Filter makeFilter(RefusedCalls refused, std::uint32_t architecture, std::int32_t process)
{
    Filter filter(seccomp_init(actionFor(kUnknownSystemCall, refused)));
    if (!filter || !selectArchitecture(filter.get(), architecture))
        return {};
    // A call through a table other than this machine's 64-bit one is an escape.
    seccomp_attr_set(filter.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_TRAP);
    // Applies the filter to the threads that the engine has already started, too.
    seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1);
    return addRules(filter.get(), refused, process) ? std::move(filter) : Filter();
}

} // namespace

bool refuseKilledCalls()
{
    const Filter filter(seccomp_init(SCMP_ACT_ALLOW));
    bool isGood = filter != nullptr;
    // The library's default would end the process before the later filter can report the call.
    if (isGood)
        seccomp_attr_set(filter.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_ERRNO(EACCES));
    for (const SystemCallGroup &group : systemCallGroups()) {
        if (group.decision.kind != Kind::Kill)
            continue;
        for (const char *name : group.names) {
            const int number = seccomp_syscall_resolve_name(name);
            isGood =
                isGood && (number == __NR_SCMP_ERROR ||
                           seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(EACCES), number, 0) == 0);
        }
    }
    return isGood && seccomp_load(filter.get()) == 0;
}

bool filterSystemCalls(RefusedCalls refused)
{
    const Filter filter = makeFilter(refused, seccomp_arch_native(), getpid());
    exemptOtherThreads();
    return filter && seccomp_load(filter.get()) == 0;
}

bool writeSystemCallFilter(RefusedCalls refused,
                           std::uint32_t architecture,
                           std::int32_t process,
                           int descriptor)
{
    const Filter filter = makeFilter(refused, architecture, process);
    return filter && seccomp_export_bpf(filter.get(), descriptor) == 0;
}

} // namespace penwick

#pragma once

#include <cerrno>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace penwick {

/// What the sandbox does with a system call of the process that runs scripts. No call that is
/// refused or killed is ever carried out.
struct SystemCallDecision
{
    enum class Kind : std::uint8_t {
        Allow,
        Refuse, ///< The caller gets `error`.
        Kill,   ///< The process ends.
    };

    Kind kind = Kind::Refuse;
    int error = 0; ///< An errno value; 0 unless the call is refused.

    bool operator==(const SystemCallDecision &) const = default;
};

/// The decision on each call that no table names. Libraries take this answer for an older kernel
/// and do without the call.
constexpr SystemCallDecision kUnknownSystemCall{SystemCallDecision::Kind::Refuse, ENOSYS};

/// Calls with one decision and one reason for it.
struct SystemCallGroup
{
    SystemCallDecision decision;
    std::span<const char *const> names; ///< As the kernel names them.
    /// Whether a refused call is worth a report, and can be reported where it is made.
    bool isReported = true;
};

/// A condition on one argument of a call.
struct ArgumentCondition
{
    enum class Test : std::uint8_t {
        Equal,      ///< The whole argument equals `value`.
        BitsEqual,  ///< The bits of `mask` equal those of `value`.
        BitsDiffer, ///< At least one bit of `mask` differs from that of `value`.
    };

    unsigned argument = 0; ///< From 0.
    Test test = Test::Equal;
    std::uint64_t value = 0;
    std::uint64_t mask = ~std::uint64_t{0}; ///< Not used by `Equal`.
};

/// A call that is allowed with some arguments only.
struct ConditionalSystemCall
{
    const char *name;
    ArgumentCondition condition;
    SystemCallDecision otherwise = kUnknownSystemCall;  ///< `Kill` or `kUnknownSystemCall`.
    std::optional<ArgumentCondition> alsoRequired = {}; ///< Not of the kind `BitsDiffer`.
};

/// Every call in the kernel's tables for x86-64 and arm64 is in exactly one of the groups or among
/// the conditional calls, also when only one of the two tables has it.
[[nodiscard]] std::span<const SystemCallGroup> systemCallGroups();

/// Several rows with one name are alternatives: a call that matches none of them is refused. A call
/// that is killed otherwise has one row and one condition.
/// \param process the id of the process that the sandbox is for.
[[nodiscard]] std::vector<ConditionalSystemCall> conditionalSystemCalls(std::int32_t process);

} // namespace penwick

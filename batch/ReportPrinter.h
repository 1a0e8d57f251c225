#pragma once

#include "batch/BatchOptions.h"
#include "batch/FileReport.h"
#include "platform/files/FileError.h"

#include <tl/expected.hpp>

namespace penwick {

/// Writes reports in the form that the options ask for: results, names, differences and JSON to
/// standard output; messages, notifications, log lines and, with `-v`, a line for each input to
/// standard error.
class ReportPrinter final
{
public:
    /// \param options must outlive this.
    explicit ReportPrinter(const BatchOptions &options);

    /// Writes what belongs to one input. Fails when standard output takes no more.
    [[nodiscard]] tl::expected<void, FileError> print(const FileReport &report);

    /// Writes what can be said at the end.
    void printSummary();

    /// The exit status for the reports so far.
    [[nodiscard]] int exitStatus() const;

private:
    void count(const FileReport &report);
    void printMessages(const FileReport &report) const;
    void printNotifications(const FileReport &report) const;
    [[nodiscard]] tl::expected<void, FileError> printResult(const FileReport &report) const;
    [[nodiscard]] QByteArray outputOf(const FileReport &report) const;

    const BatchOptions &m_options;
    bool m_usesColor;
    qsizetype m_changed = 0;
    qsizetype m_unchanged = 0;
    qsizetype m_failed = 0;
    qsizetype m_skipped = 0;
    bool m_hasFinding = false; // Of `--strict`.
    StepTimes m_times;
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace penwick

#pragma once

#include <QString>
#include <QStringList>

namespace penwick {

/// What the person asked for on the command line.
struct CommandLine
{
    enum class Request { Run, ShowHelp, ShowVersion, RejectOption };

    Request request = Request::Run;
    QStringList files;      ///< As given, relative to the current folder.
    QString rejectedOption; ///< The option that penwick does not know.

    /// \param arguments without the program's name. Options of the toolkit (`-platform x`,
    ///        `-style=x`, ...) are passed over; what follows `--` is a file. The first request for
    ///        help or the version wins over all else.
    [[nodiscard]] static CommandLine parse(const QStringList &arguments);

    /// The answer to `--help`.
    [[nodiscard]] static QString helpText();
    /// The answer to `--version`.
    [[nodiscard]] static QString versionText();

    bool operator==(const CommandLine &) const = default;

private:
    void take(const QStringList &arguments, qsizetype &index);
};

} // namespace penwick

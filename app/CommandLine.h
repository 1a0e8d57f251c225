#pragma once

#include "app/OpenRequest.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <optional>

namespace penwick {

/// What the person asked for on the command line. Arguments are the bytes that the system gave, for
/// a file's name need be no text.
struct CommandLine
{
    enum class Request { Run, ShowHelp, ShowVersion, Reject };

    enum class Fault {
        UnknownOption,
        PlaceWithoutFile,   ///< A `+LINE` that no file follows.
        StandardInputTwice, ///< There is only one.
    };

    struct File
    {
        QByteArray name; ///< As given, relative to the current folder.
        bool isStandardInput = false;
        std::optional<TextPlace> place;

        bool operator==(const File &) const = default;
    };

    Request request = Request::Run;
    QList<File> files;
    bool newWindow = false;
    bool wait = false;
    QByteArray platform; ///< The window system that the toolkit is told to use; empty for any.
    QByteArray display;  ///< The display that it is told to use; empty for that of the environment.
    /// What is the toolkit's, in its order: it is to see nothing else, for it would take a file's
    /// name that looks like an option for one.
    QByteArrayList toolkitArguments;
    Fault fault = Fault::UnknownOption; ///< Of `Reject`, with the argument at fault.
    QByteArray rejectedArgument;

    /// \param arguments without the program's name. Options of the toolkit (`-platform x`,
    ///        `-style=x`, ...) are told apart; what follows `--` is a file. The first request for
    ///        help or the version wins over all else.
    [[nodiscard]] static CommandLine parse(const QByteArrayList &arguments);

    /// The answer to `--help`.
    [[nodiscard]] static QString helpText();
    /// The answer to `--version`.
    [[nodiscard]] static QString versionText();
    /// What is wrong, in a line for standard error.
    [[nodiscard]] QString faultText() const;

    bool operator==(const CommandLine &) const = default;
};

} // namespace penwick

#pragma once

#include "app/OpenRequest.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <optional>

namespace penwick {

/// The parsed command line. Arguments are kept as the bytes that the system passed, because a file
/// name need not be valid text.
struct CommandLine
{
    enum class Request { Run, ShowHelp, ShowVersion, Reject };

    enum class Fault {
        UnknownOption,
        PlaceWithoutFile,   ///< A `+LINE` without a file after it.
        StandardInputTwice, ///< Standard input can be read only once.
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
    QByteArray platform; ///< The window system given to the toolkit; empty for the default.
    QByteArray display;  ///< The display given to the toolkit; empty for that of the environment.
    /// The arguments of the toolkit, in their order. The toolkit gets no others: it would take a
    /// file name that looks like an option for an option.
    QByteArrayList toolkitArguments;
    Fault fault = Fault::UnknownOption; ///< For `Reject`.
    QByteArray rejectedArgument;

    /// \param arguments without the program's name. Options of the toolkit (`-platform x`,
    ///        `-style=x`, ...) go to `toolkitArguments`; every argument after `--` is a file. The
    ///        first request for help or the version takes precedence over everything else.
    [[nodiscard]] static CommandLine parse(const QByteArrayList &arguments);

    /// The output of `--help`.
    [[nodiscard]] static QString helpText();
    /// The output of `--version`.
    [[nodiscard]] static QString versionText();
    /// A one-line message for standard error that says what is wrong.
    [[nodiscard]] QString faultText() const;

    bool operator==(const CommandLine &) const = default;
};

} // namespace penwick

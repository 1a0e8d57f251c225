#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QList>
#include <QString>

#include <optional>
#include <tl/expected.hpp>
#include <variant>

namespace penwick {

/// One `-m`, `-f` or `-e`.
struct MacroSource
{
    enum class Kind { Stored, File, Code };

    Kind kind = Kind::Stored;
    QByteArray argument; ///< An id or a name, a path, or the code.

    bool operator==(const MacroSource &) const = default;
};

/// A file that holds the names of input files.
struct NameList
{
    QByteArray path;       ///< `-` for standard input.
    char separator = '\n'; ///< What ends each name.

    bool operator==(const NameList &) const = default;
};

/// Offsets in UTF-16 code units, 0-based, as macros see them.
struct SelectedRange
{
    qint64 start = 0;
    qint64 end = 0;

    bool operator==(const SelectedRange &) const = default;
};

/// A line without its line end. CR LF is one line end, as the editor shows it.
struct SelectedLine
{
    qint64 number = 1; ///< 1-based.

    bool operator==(const SelectedLine &) const = default;
};

using SelectionOption = std::variant<SelectedRange, SelectedLine>;

/// What is wrong with a command line.
struct UsageFault
{
    enum class Kind {
        UnknownOption,
        MissingArgument,
        UnexpectedArgument, ///< A value for an option that takes none.
        InvalidArgument,    ///< A value of the wrong form.
        Conflict,           ///< Two options that exclude each other.
        NoMacro,
        SeveralWithoutMode, ///< Several inputs, and nothing says where the results go.
        SeveralForOneOutput,
        StandardInputTwice,
        StandardInputInPlace,
    };

    Kind kind = Kind::UnknownOption;
    QString argument = {}; ///< The option or argument; may be empty.

    /// Returns the message for the user, in the active wording.
    [[nodiscard]] QString message() const;

    bool operator==(const UsageFault &) const = default;
};

/// The parsed command line of penwick-macro.
struct BatchOptions
{
    enum class Request { Run, ShowHelp, ShowVersion, ListMacros };
    enum class Color { Auto, Always, Never };
    enum class Verbosity { Quiet, Normal, Verbose };

    static constexpr int kDefaultTimeout = 60; ///< Seconds.

    Request request = Request::Run;
    QList<MacroSource> macros; ///< In the order in which they run.
    QByteArrayList files;      ///< As given; `-` is standard input, as is an empty list.
    QList<NameList> lists;     ///< More files.
    bool inPlace = false;
    std::optional<QByteArray> backupSuffix;
    bool check = false;
    bool diff = false;
    bool names = false; ///< Only the names of changed files.
    char nameEnd = '\n';
    QByteArray outputFile; ///< Empty for none.
    bool json = false;
    QByteArray standardInputName; ///< The file name that macros see.
    std::optional<QString> userInput;
    std::optional<SelectionOption> selection;
    int jobs = 0;                  ///< 0 for the number of processors.
    int timeout = kDefaultTimeout; ///< Seconds for each run of a macro; 0 for none.
    bool ignoreNonUtf8 = false;
    bool strict = false;
    Verbosity verbosity = Verbosity::Normal;
    Color color = Color::Auto;

    /// \param arguments without the program's name.
    [[nodiscard]] static tl::expected<BatchOptions, UsageFault>
    parse(const QByteArrayList &arguments);

    /// True when the results are written to standard output, which only one input allows.
    [[nodiscard]] bool writesText() const
    {
        return !inPlace && outputFile.isEmpty() && !check && !diff && !names && !json;
    }

    bool operator==(const BatchOptions &) const = default;
};

/// Returns the output of `--help`, without a final line feed.
[[nodiscard]] QString batchHelpText();

} // namespace penwick

#pragma once

#include <QKeyCombination>
#include <QString>

#include <optional>
#include <span>

namespace penwick {

/// What penwick can do at the user's request.
enum class CommandId {
    NewDocument,
    OpenDocument,
    PerformClose,
    SaveDocument,
    SaveDocumentAs,
    ClearRecentFiles,
    Undo,
    Redo,
    Cut,
    Copy,
    Paste,
    SelectAll,
    Deselect,
    StartColumns,
    Find,
    Replace,
    FindNext,
    FindPrevious,
    GoToLine,
    GoToHeading,
    ShowBlanks,
    ShowAllMarks,
    ShowLineNumbers,
    MarkCurrentLine,
    WrapLines,
    ZoomIn,
    ZoomOut,
    ZoomReset,
    FullScreen,
    ConvertToLf,
    ConvertToCrLf,
    ConvertToCr,
    Indent,
    Outdent,
    DuplicateLines,
    MoveLinesUp,
    MoveLinesDown,
    JoinLines,
    SortLines,
    TrimLineEnds,
    BlanksToTabs,
    TabsToBlanks,
    UpperCase,
    LowerCase,
    FullWidth,
    HalfWidth,
    NextTab,
    PreviousTab,
    ShowTabList,
    RepeatMacro,
    ShowMacroManager,
    RunTestMacro,
    RunTestMacroSelection,
    ShowProfileManager,
    UseEnglish,
    ShowSettings,
    OpenSettingsFile,
    CheckForUpdates,
    About,
    Quit,
    OpenMenuBar,
    ShowPalette,
};

/// Who carries a command out and receives its keys.
enum class CommandPlace {
    Focus,    ///< The widget with the keyboard focus, which also has the keys.
    Document, ///< The content of the front tab.
    Window,   ///< The editor window.
    Application,
};

/// One command. A key that is `Qt::Key_unknown` is none.
struct Command
{
    CommandId id;
    QStringView name; ///< Stable and English, such as `file.save`; also a word to search for.
    CommandPlace place;
    QStringView titleKey;        ///< A wording key.
    QKeyCombination key = {};    ///< The one that is shown.
    QKeyCombination second = {}; ///< Another that does the same.
    bool namesProgram = false;   ///< The title has a place for the program's name.

    [[nodiscard]] constexpr bool hasKey() const { return key != QKeyCombination(); }

    [[nodiscard]] constexpr bool hasSecondKey() const { return second != QKeyCombination(); }
};

/// Every command, in the order in which lists show them. Exactly one row for each `CommandId`.
[[nodiscard]] std::span<const Command> commands();

[[nodiscard]] const Command &command(CommandId id);

/// The title in the active wording.
[[nodiscard]] QString commandTitle(CommandId id);

/// Whether a command can be carried out now.
struct CommandState
{
    bool isAvailable = true;
    std::optional<bool> isOn = std::nullopt; ///< Without a value, the command is no switch.
};

/// Carries out the commands of a place. Commands of other places are not available there.
class CommandTarget
{
public:
    CommandTarget() = default;
    virtual ~CommandTarget() = default;
    Q_DISABLE_COPY_MOVE(CommandTarget)

    [[nodiscard]] virtual CommandState commandState(CommandId id) const = 0;
    /// Does nothing when the command is not available.
    virtual void performCommand(CommandId id) = 0;
};

} // namespace penwick

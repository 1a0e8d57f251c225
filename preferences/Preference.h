#pragma once

#include <QString>

#include <span>

namespace penwick {

/// What users can set.
enum class PreferenceId {
    FontFamily,
    FontSize,
    LineSpacing,
    ShowsBlanks,
    ShownMarks,
    ShowsLineNumbers,
    MarksCurrentLine,
    ShowsHint,
    Zoom,
    Wrapping,
    WrapColumn,
    TabWidth,
    TabKeyInserts,
    KeepsIndentation,
    ConvertsPastedLineEnds,
    UndoLimit,
    KeepsRecoveryCopies,
    KeepsRecentFiles,
    MacroMemory,
};

/// One setting. It is stored in `penwick.conf` under its key, as text.
struct Preference
{
    enum class Kind {
        Switch,     ///< "true" or "false".
        Number,     ///< A whole number, decimal, from `smallest` to `largest`, or one of `choices`.
        Choice,     ///< One of `choices`.
        Text,       ///< Any text.
        FontFamily, ///< The name of a font family, or empty for a font that penwick chooses.
    };

    struct Choice
    {
        QStringView value;    ///< As it is stored.
        QStringView titleKey; ///< A wording key.
    };

    PreferenceId id;
    QStringView key;
    Kind kind;
    QStringView titleKey; ///< A wording key.
    QStringView standard; ///< The value that holds without a setting.
    int smallest = 0;
    int largest = 0;
    std::span<const Choice> choices = {};
    QStringView unitKey = {}; ///< A wording key whose text has the unit of a number around `%1`.

    /// Whether a stored text is a value of this setting.
    [[nodiscard]] bool isValid(QStringView value) const;
};

/// Every setting, in the order in which lists show them. Exactly one row for each `PreferenceId`.
[[nodiscard]] std::span<const Preference> allPreferences();

[[nodiscard]] const Preference &preference(PreferenceId id);

} // namespace penwick

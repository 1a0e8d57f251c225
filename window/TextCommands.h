#pragma once

#include "command/Command.h"
#include "editor/BackgroundTask.h"
#include "lines/TextRewrite.h"
#include "preferences/Preferences.h"

#include <QObject>

#include <optional>

namespace penwick {

class TextView;

/// The commands that change the selected lines or characters of a text view, with their keys. With
/// a selection of several lines, Tab indents them and Shift+Tab takes a level away. Each change is
/// one undo step. A long one runs in the background; if the text changes meanwhile, it is dropped.
/// Also gives the view the indentation of the settings.
class TextCommands final : public QObject
{
    Q_OBJECT

public:
    /// \param view not owned; must outlive this.
    /// \param scope the parent of this.
    /// \param preferences not owned, must outlive this.
    /// \param wait for this time at most, in milliseconds, a change blocks the main thread.
    TextCommands(TextView *view, QObject *scope, Preferences &preferences, int wait = kDefaultWait);

    /// No value for commands that are not of this object.
    [[nodiscard]] static std::optional<TextChangeKind> kindOf(CommandId id);

    /// False when `perform` cannot change anything.
    [[nodiscard]] bool canPerform(TextChangeKind kind) const;
    void perform(TextChangeKind kind);

    bool eventFilter(QObject *object, QEvent *event) override;

private:
    static constexpr int kDefaultWait = 50; // Enough for some megabytes.

    /// With a rectangle, its lines are selected.
    [[nodiscard]] SelectedText selectedText() const;
    void performInRows(TextChangeKind kind, const ColumnSelection &columns);
    /// \param before the rectangle, which stays selected if it still is.
    void applyInRows(const TextRectangle &before, const RowsRewrite &change);
    void apply(const SelectedText &before, const std::optional<TextRewrite> &change);

    TextView *m_view;
    int m_wait;
    BackgroundTask m_task;
};

/// The indentation that the settings `tabWidth`, `tabKeyInserts` and `keepIndentation` ask for.
[[nodiscard]] Indentation indentationIn(const Preferences &preferences);

} // namespace penwick

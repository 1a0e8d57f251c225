#pragma once

#include "command/Command.h"
#include "preferences/Preferences.h"

#include <QObject>

#include <optional>

class QBoxLayout;

namespace penwick {

class LineNumberGutter;
class TextView;

/// Gives a text view the look that the settings ask for: line numbers and the mark of the current
/// line. Carries out the commands that switch them. A change acts in all views at once.
class TextLook final : public QObject
{
    Q_OBJECT

public:
    /// \param view not owned; must outlive this.
    /// \param row the layout with the view; line numbers are put at its start. Not owned, must
    ///        outlive this.
    /// \param scope the parent of this.
    /// \param preferences not owned, must outlive this.
    TextLook(TextView *view, QBoxLayout *row, QWidget *scope, Preferences &preferences);
    ~TextLook() override;

    /// No value for commands that are not of this object.
    [[nodiscard]] std::optional<CommandState> commandState(CommandId id) const;
    /// Returns false for commands that are not of this object.
    bool performCommand(CommandId id);

private:
    void updateLineNumbers();
    void updateCurrentLine();
    void relabel();

    TextView *m_view;
    QBoxLayout *m_row;
    Preferences &m_preferences;
    LineNumberGutter *m_gutter = nullptr; // Null while line numbers are off.
};

} // namespace penwick

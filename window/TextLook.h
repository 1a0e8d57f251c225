#pragma once

#include "command/Command.h"
#include "preferences/Preferences.h"

#include <QFont>
#include <QObject>

#include <optional>

class QBoxLayout;

namespace penwick {

class LineNumberGutter;
class TextView;
class Zoom;

/// Gives a text view the look that the settings ask for: font, line spacing, line numbers and the
/// mark of the current line. Carries out the commands that switch them. A change acts in all views
/// at once; caret and first visible line stay.
class TextLook final : public QObject
{
    Q_OBJECT

public:
    /// \param view has the font of `fontIn` already; not owned, must outlive this.
    /// \param row the layout with the view; line numbers are put at its start. Not owned, must
    ///        outlive this.
    /// \param zoom of the view; not owned, must outlive this.
    /// \param scope the parent of this.
    /// \param preferences not owned, must outlive this.
    TextLook(TextView *view, QBoxLayout *row, Zoom *zoom, QWidget *scope, Preferences &preferences);
    ~TextLook() override;

    /// The font of texts, zoom included.
    [[nodiscard]] static QFont fontIn(const Preferences &preferences);

    /// No value for commands that are not of this object.
    [[nodiscard]] std::optional<CommandState> commandState(CommandId id) const;
    /// Returns false for commands that are not of this object.
    bool performCommand(CommandId id);

private:
    void updateFont();
    void updateLineSpacing();
    void updateLineNumbers();
    void updateCurrentLine();
    void relabel();

    TextView *m_view;
    QBoxLayout *m_row;
    Zoom *m_zoom;
    Preferences &m_preferences;
    LineNumberGutter *m_gutter = nullptr; // Null while line numbers are off.
};

} // namespace penwick

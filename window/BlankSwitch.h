#pragma once

#include "preferences/Preferences.h"
#include "view/TextLayoutStyle.h"

#include <QObject>

class QMenu;
class QWidget;

namespace penwick {

class TextView;

/// Lets the user show the blanks of a text view, by a key and by an entry of its context menu. The
/// choice applies to all views with a switch and is a setting, `showsBlanks`; another one,
/// `shownMarks`, says which are shown.
class BlankSwitch final : public QObject
{
    Q_OBJECT

public:
    /// \param view not owned; must outlive this.
    /// \param scope the parent of this; the key works in its whole window.
    /// \param preferences stores the choice; not owned, must outlive this.
    BlankSwitch(TextView *view, QWidget *scope, Preferences &preferences);

    [[nodiscard]] bool isOn() const;
    void toggle();

    /// True when all blanks and line ends are shown.
    [[nodiscard]] bool showsAll() const { return marks() == ShownMarks::All; }

    /// Shows all blanks and line ends, or only those that are shown otherwise.
    void toggleAll();

private:
    [[nodiscard]] ShownMarks marks() const;
    void extendMenu(QMenu *menu);

    Preferences &m_preferences;
};

} // namespace penwick

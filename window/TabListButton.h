#pragma once

#include <QToolButton>

namespace penwick {

class EditorTabBar;

/// The button beside a tab bar that opens a menu of all its tabs. The current tab is checked, and a
/// dot stands after the names of edited documents. Choosing a tab makes it the current one.
class TabListButton final : public QToolButton
{
    Q_OBJECT

public:
    /// \param bar not owned; must outlive the button.
    explicit TabListButton(EditorTabBar *bar, QWidget *parent = nullptr);

    /// Opens the menu, also while the button is hidden. Returns at once.
    void popUp();

private:
    void relabel();

    EditorTabBar *m_bar;
};

} // namespace penwick

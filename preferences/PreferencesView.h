#pragma once

#include "platform/settings/NotificationCenter.h"
#include "preferences/PreferenceGroup.h"
#include "preferences/Preferences.h"

#include <QList>
#include <QWidget>

#include <functional>

class QFrame;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace penwick {

class ButtonRow;
class ElidedLabel;
class PreferenceRow;

/// Shows all settings in groups, with a field that finds them. A change acts at once.
class PreferencesView final : public QWidget
{
    Q_OBJECT

public:
    /// The services that the view uses. The references must outlive it.
    struct Services
    {
        Preferences &preferences;
        NotificationCenter &center;
        QString filePath;               ///< Of the settings.
        std::function<void()> openFile; ///< Shows that file in a tab.
    };

    explicit PreferencesView(Services services, QWidget *parent = nullptr);

    [[nodiscard]] QLineEdit *searchField() const { return m_search; }

    /// Takes over what is being typed into a control.
    void commit();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Group
    {
        PreferenceGroup content;
        ElidedLabel *title;
        QFrame *frame;
        QList<PreferenceRow *> rows;
    };

    [[nodiscard]] QWidget *makeGroups();
    void relabel();
    void showMatches();
    void focusFirstControl();
    void askToResetAll();
    void resetAll();

    Services m_services;
    QLineEdit *m_search;
    QList<Group> m_groups;
    ElidedLabel *m_nothing;
    ElidedLabel *m_path;
    QPushButton *m_open;
    QPushButton *m_resetAll;
    ButtonRow *m_buttons;
};

} // namespace penwick

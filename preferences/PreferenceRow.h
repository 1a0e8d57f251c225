#pragma once

#include "preferences/PreferenceControl.h"
#include "preferences/Preferences.h"

#include <QWidget>

class QLabel;
class QToolButton;

namespace penwick {

class ElidedLabel;
class WordQuery;

/// Shows one setting: its title, a control for its value, a mark and a button back to the default
/// while the value is another one, and a note while the file has a value that is not valid. Follows
/// every change of the setting.
class PreferenceRow final : public QWidget
{
    Q_OBJECT

public:
    /// \param row lives as long as this.
    /// \param preferences not owned; must outlive this.
    PreferenceRow(const Preference &row, Preferences &preferences, QWidget *parent = nullptr);

    /// Shows the texts of the active wording.
    void relabel();
    /// Shows the stored value.
    void refresh();
    /// True when each word occurs in the title, the key, a choice or `others`.
    /// \param others in the form of `searchable`.
    [[nodiscard]] bool matches(const WordQuery &query, const QString &others) const;

    [[nodiscard]] QWidget *control() const { return m_control.widget; }

    /// Takes over what is being typed into the control.
    void commit();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeLayout();
    void resetValue();
    void describe();

    const Preference &m_row;
    Preferences &m_preferences;
    QLabel *m_mark;
    ElidedLabel *m_title;
    PreferenceControl m_control;
    QToolButton *m_reset;
    ElidedLabel *m_note;
};

} // namespace penwick

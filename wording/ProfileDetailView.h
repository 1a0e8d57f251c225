#pragma once

#include "wording/UIWordingProfile.h"

#include <QWidget>

class QGridLayout;
class QLabel;
class QPushButton;

namespace penwick {

class ButtonRow;
class ElidedLabel;

/// Shows the properties of one profile, with buttons to apply, duplicate, delete and export it.
class ProfileDetailView final : public QWidget
{
    Q_OBJECT

public:
    explicit ProfileDetailView(QWidget *parent = nullptr);

    void setProfile(const UIWordingProfile &profile);

    /// Updates all texts after a change of the wording.
    void relabel();

Q_SIGNALS:
    void onApply();
    void onDuplicate();
    void onDelete();
    void onExport();
    /// Emitted when the user wants a file with every text, as a template.
    void onExportAll();

private:
    void makeRows();
    void setRow(int row, const QString &label, const QString &value);
    void showProfile();

    UIWordingProfile m_profile;
    ElidedLabel *m_title;
    QLabel *m_section;
    QGridLayout *m_rows;
    QPushButton *m_exportAll;
    QPushButton *m_delete;
    QPushButton *m_export;
    QPushButton *m_duplicate;
    QPushButton *m_apply;
    ButtonRow *m_buttons;
};

} // namespace penwick

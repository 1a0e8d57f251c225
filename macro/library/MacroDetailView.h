#pragma once

#include "controls/FilePanels.h"
#include "macro/library/Macro.h"

#include <QWidget>

#include <array>

class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace penwick {

class ButtonRow;
class CodeEditor;
class MacroSourceBadge;

/// One macro to edit. What is typed changes a draft only; whoever hears `onSave` stores it.
class MacroDetailView final : public QWidget
{
    Q_OBJECT

public:
    /// \param panels ask where to export to.
    explicit MacroDetailView(FilePanels panels, QWidget *parent = nullptr);

    /// Shows a macro and forgets what was typed.
    void setMacro(const Macro &macro);
    /// The macro that is shown may have changed in the store. Fields that were typed in stay, the
    /// others follow.
    void setStoredMacro(const Macro &macro);

    /// The macro as it stands here, with what was typed.
    [[nodiscard]] Macro draftMacro() const;
    [[nodiscard]] bool hasUnsavedEdits() const;

    /// Looks every text up anew.
    void relabel();

    [[nodiscard]] CodeEditor *codeEditor() const { return m_code; }

Q_SIGNALS:
    void onSave(const penwick::Macro &draft);
    void onDelete();
    void onDuplicate();
    void onTestRun(const penwick::Macro &draft);

private:
    enum Field { Name, Description, Category, HelpUrl, FieldCount };

    void makeFields(QGridLayout *rows);
    void makeButtons();
    void showTitle();
    void exportMacro();

    FilePanels m_panels;
    Macro m_macro;
    QLabel *m_title;
    MacroSourceBadge *m_badge;
    QLabel *m_section;
    std::array<QLabel *, FieldCount> m_labels{};
    std::array<QLineEdit *, FieldCount> m_fields{};
    QLabel *m_codeLabel;
    CodeEditor *m_code;
    QPushButton *m_delete;
    QPushButton *m_testRun;
    QPushButton *m_export;
    QPushButton *m_duplicate;
    QPushButton *m_save;
    ButtonRow *m_buttons;
};

} // namespace penwick

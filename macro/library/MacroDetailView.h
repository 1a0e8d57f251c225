#pragma once

#include "controls/FilePanels.h"
#include "macro/library/Macro.h"

#include <QWidget>

#include <array>

class QGridLayout;
class QLabel;
class QPushButton;

namespace penwick {

class ButtonRow;
class CodeEditor;
class ElidedLabel;
class MacroKeyRow;
class MacroSourceBadge;
class TextField;

/// Edits one macro. The user's edits change a draft only; a receiver of `onSave` stores it.
class MacroDetailView final : public QWidget
{
    Q_OBJECT

public:
    /// \param panels asks for the file to export to.
    /// \param keyRow shows the key of the macro; owned by this.
    MacroDetailView(FilePanels panels, MacroKeyRow *keyRow, QWidget *parent = nullptr);

    /// Shows a macro and discards unsaved edits.
    void setMacro(const Macro &macro);
    /// Call after the shown macro may have changed in the store. Edited fields keep their contents;
    /// the others show the stored values.
    void setStoredMacro(const Macro &macro);

    /// Returns the macro with the unsaved edits.
    [[nodiscard]] Macro draftMacro() const;
    [[nodiscard]] bool hasUnsavedEdits() const;

    /// Selects the name for typing another one.
    void editName();

    /// Shows why a test run failed, until the code changes, the next run, or another macro.
    /// \param line marked in the code; 1-based, 0 for none.
    void showRunError(const QString &message, int line);
    void clearRunError();

    /// Enables the button for test runs, which otherwise has the reason as tool tip.
    void setCanTestRun(bool canTestRun);

    /// Looks up all texts again.
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
    void showRunState();
    void exportMacro();

    FilePanels m_panels;
    Macro m_macro;
    ElidedLabel *m_title;
    MacroSourceBadge *m_badge;
    QLabel *m_section;
    std::array<QLabel *, FieldCount> m_labels{};
    std::array<TextField *, FieldCount> m_fields{};
    QLabel *m_keyLabel;
    MacroKeyRow *m_keyRow;
    QLabel *m_codeLabel;
    CodeEditor *m_code;
    ElidedLabel *m_runError;
    bool m_canTestRun = true;
    QPushButton *m_delete;
    QPushButton *m_testRun;
    QPushButton *m_export;
    QPushButton *m_duplicate;
    QPushButton *m_save;
    ButtonRow *m_buttons;
};

} // namespace penwick

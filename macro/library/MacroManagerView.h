#pragma once

#include "command/MacroKeys.h"
#include "controls/FilePanels.h"
#include "controls/ListDetailView.h"
#include "macro/library/MacroManager.h"
#include "platform/settings/NotificationCenter.h"
#include "platform/settings/Uuid.h"

#include <QWidget>

#include <functional>
#include <optional>

class QToolButton;

namespace penwick {

class MacroDetailView;

/// The list of all macros, and the selected one with controls to edit, test, duplicate, export or
/// delete it. Buttons above the list add and import macros. Every change goes through the store.
class MacroManagerView final : public QWidget
{
    Q_OBJECT

public:
    /// The view's dependencies. The references must outlive it.
    struct Services
    {
        MacroManager &macroManager;
        MacroKeys &keys;
        NotificationCenter &center;
        FilePanels panels;
        IdSource ids;
        /// Runs a draft in the editor that was active last.
        std::function<void(const Macro &draft)> testRun;
    };

    explicit MacroManagerView(Services services, QWidget *parent = nullptr);

    /// Nothing until a macro is selected.
    [[nodiscard]] const std::optional<QString> &selectedMacroId() const
    {
        return m_selectedMacroId;
    }

    /// Asks whether to save or discard unsaved edits, if there are any, and does it. Returns false
    /// when the user cancels.
    [[nodiscard]] bool resolveUnsavedEdits();

    void addMacro();
    /// Asks for a file and imports its macro.
    void importMacro();

    /// Shows why a run failed, if `code` is the code that is being edited.
    /// \param line marked in the code; 1-based, 0 for none.
    void showRunError(const QString &code, const QString &message, int line);

    /// Tells whether there is an editor for test runs. There is one at first.
    void setCanTestRun(bool canTestRun);

    [[nodiscard]] MacroDetailView *detailView() const { return m_detail; }

private:
    void connectDetail();
    void relabel();
    void showList();
    void selectMarked();
    void select(const std::optional<QString> &id);
    void setMacroEnabled(const QString &id, bool isOn);
    void askToDelete();
    void deleteMacro(const QString &id);
    [[nodiscard]] QString importFile(const QString &path);

    Services m_services;
    MacroDetailView *m_detail;
    ListDetailView *m_split;
    QToolButton *m_add;
    QToolButton *m_import;
    std::optional<QString> m_selectedMacroId;
};

} // namespace penwick

#include "app/MacroLauncher.h"

#include "app/MacroPrompts.h"
#include "controls/MessageBox.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QMainWindow>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

MacroLauncher::MacroLauncher(TargetEditor targetEditor, Clock clock)
    : m_targetEditor(std::move(targetEditor))
    , m_clock(std::move(clock))
{
}

void MacroLauncher::promptOrRun(const Macro &macro) const
{
    // Ask nothing when the answer could not be used: the target says why no macro can run there.
    const WindowController target = m_targetEditor();
    const bool mayAsk = target == nullptr || !(target->isRunningMacro() || target->isLoading());
    QWidget *parent = QApplication::activeWindow(); // It need not be an editor.
    if (mayAsk && macro.id == u"default_addLinePrefix"_s)
        runWith(macro, askForText(parent, wording::text(u"dialog.prefixMessage"_s), u"- "_s));
    else if (mayAsk && macro.id == u"default_addLineSuffix"_s)
        runWith(macro, askForText(parent, wording::text(u"dialog.suffixMessage"_s), u","_s));
    else if (mayAsk && macro.id == u"default_insertDateTime"_s)
        runWith(macro, askForDate(parent, wording::text(u"dialog.dateTimeMessage"_s), m_clock));
    else
        run(macro);
}

void MacroLauncher::runInActiveEditor(const Macro &macro) const
{
    if (m_targetEditor() != nullptr) {
        promptOrRun(macro);
        return;
    }
    MessageBox box(QMessageBox::Warning,
                   wording::text(u"macro.manageTestRunNoEditor"_s),
                   QApplication::activeWindow());
    box.addTextButton(wording::text(u"common.ok"_s), QMessageBox::AcceptRole);
    box.exec();
}

void MacroLauncher::run(const Macro &macro, const std::optional<QString> &userInput) const
{
    if (const WindowController target = m_targetEditor())
        target->runMacro(macro.code, macro.id, macro.name, userInput);
}

/// Runs the macro with the answer to its prompt; no value when the user cancelled.
void MacroLauncher::runWith(const Macro &macro, const std::optional<QString> &answer) const
{
    if (answer && !answer->isEmpty())
        run(macro, answer);
    else if (const WindowController target = m_targetEditor())
        target->showMacroMessage(NotificationType::Info,
                                 answer ? wording::text(u"macro.notification.canceledEmpty"_s)
                                        : wording::text(u"macro.notification.canceled"_s));
}

} // namespace penwick

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
    if (const WindowController target = m_targetEditor();
        target != nullptr && (target->isRunningMacro() || target->isLoading()))
        run(macro.code, macro.id, macro.name, std::nullopt);
    else if (macro.id == u"default_addLinePrefix"_s)
        promptForText(macro, wording::text(u"dialog.prefixMessage"_s), u"- "_s);
    else if (macro.id == u"default_addLineSuffix"_s)
        promptForText(macro, wording::text(u"dialog.suffixMessage"_s), u","_s);
    else if (macro.id == u"default_insertDateTime"_s)
        promptForDate(macro);
    else
        run(macro.code, macro.id, macro.name, std::nullopt);
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

void MacroLauncher::run(const QString &code,
                        const QString &id,
                        const QString &name,
                        const std::optional<QString> &userInput) const
{
    if (const WindowController target = m_targetEditor())
        target->runMacro(code, id, name, userInput);
}

void MacroLauncher::promptForText(const Macro &macro,
                                  const QString &message,
                                  const QString &initial) const
{
    const std::optional<QString> answer = askForText(promptParent(), message, initial);
    if (!answer)
        showInfo(wording::text(u"macro.notification.canceled"_s));
    else if (answer->isEmpty())
        showInfo(wording::text(u"macro.notification.canceledEmpty"_s));
    else
        run(macro.code, macro.id, macro.name, answer);
}

void MacroLauncher::promptForDate(const Macro &macro) const
{
    const std::optional<QString> date =
        askForDate(promptParent(), wording::text(u"dialog.dateTimeMessage"_s), m_clock);
    if (date)
        run(macro.code, macro.id, macro.name, date);
    else
        showInfo(wording::text(u"macro.notification.canceled"_s));
}

void MacroLauncher::showInfo(const QString &message) const
{
    if (const WindowController target = m_targetEditor())
        target->showMacroMessage(NotificationType::Info, message);
}

/// The dialog's parent is the active window, which need not be an editor.
QWidget *MacroLauncher::promptParent() const
{
    return QApplication::activeWindow();
}

} // namespace penwick

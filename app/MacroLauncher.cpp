#include "app/MacroLauncher.h"

#include "app/MacroPrompts.h"
#include "controls/MessageBox.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QMainWindow>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// What the prompts contain at first, by the ids of the macros that have one.
const QHash<QString, QString> &defaultInputs()
{
    static const QHash<QString, QString> inputs{{u"default_addLinePrefix"_s, u"- "_s},
                                                {u"default_addLineSuffix"_s, u","_s},
                                                {u"default_insertDateTime"_s, QString()}};
    return inputs;
}

} // namespace

MacroLauncher::MacroLauncher(TargetEditor targetEditor, Clock clock)
    : m_targetEditor(std::move(targetEditor))
    , m_clock(std::move(clock))
{
}

void MacroLauncher::promptOrRun(const Macro &macro, Offer offer)
{
    const auto prompt = defaultInputs().constFind(macro.id);
    // Ask nothing when the answer could not be used: the target says why no macro can run there.
    const WindowController target = m_targetEditor();
    const bool mayAsk = target == nullptr || !(target->isRunningMacro() || target->isLoading());
    if (!mayAsk || prompt == defaultInputs().cend())
        return run(macro);
    QString input = offer == Offer::LastInput ? m_inputs.value(macro.id, *prompt) : *prompt;
    const auto answer = ask(macro, &input);
    if (answer && !answer->isEmpty())
        m_inputs.insert(macro.id, input);
    runWith(macro, answer);
}

/// \param input what the prompt contains at first; receives what the user entered.
/// \return what the macro gets as its input.
std::optional<QString> MacroLauncher::ask(const Macro &macro, QString *input) const
{
    QWidget *parent = QApplication::activeWindow(); // It need not be an editor.
    if (macro.id == u"default_insertDateTime"_s)
        return askForDate(parent, wording::text(u"dialog.dateTimeMessage"_s), m_clock, input);
    const QString message = macro.id == u"default_addLinePrefix"_s
                                ? wording::text(u"dialog.prefixMessage"_s)
                                : wording::text(u"dialog.suffixMessage"_s);
    auto answer = askForText(parent, message, *input);
    *input = answer.value_or(*input);
    return answer;
}

void MacroLauncher::runInActiveEditor(const Macro &macro)
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

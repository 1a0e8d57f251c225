#include "app/AppCommands.h"

#include "app/AboutPanel.h"
#include "app/AppDelegate.h"
#include "app/ResponderActions.h"
#include "window/MainEditorView.h"
#include "window/TextViewRepresentable.h"

#include <QApplication>

using namespace Qt::StringLiterals;

namespace penwick {

CommandTarget *AppCommands::targetAt(CommandPlace place) const
{
    const auto editor = m_app->targetEditor();
    if (editor == nullptr)
        return nullptr;
    if (place == CommandPlace::Window)
        return editor->window();
    if (editor->isRunningMacro())
        return nullptr; // A change would make the macro's result useless.
    MainEditorView *content = editor->content();
    return content != nullptr ? content->textViewRepresentable() : nullptr;
}

CommandState AppCommands::commandState(CommandId id) const
{
    const CommandPlace place = command(id).place;
    if (place == CommandPlace::Focus)
        return {canPerformResponderCommand(id)};
    if (place != CommandPlace::Application) {
        const CommandTarget *target = targetAt(place);
        return target != nullptr ? target->commandState(id) : CommandState{false};
    }
    switch (id) {
    case CommandId::PerformClose:
    case CommandId::SaveDocument:
    case CommandId::SaveDocumentAs:
    case CommandId::RunTestMacro:
    case CommandId::RunTestMacroSelection:
    case CommandId::ShowPalette:
        return {m_app->targetEditor() != nullptr};
    case CommandId::GoToLine:
    case CommandId::GoToHeading:
        return {targetAt(CommandPlace::Document) != nullptr};
    case CommandId::ClearRecentFiles:
        return {!m_app->recentFiles().paths().isEmpty()};
    case CommandId::CheckForUpdates:
        return {m_app->canCheckForUpdates()};
    case CommandId::RepeatMacro:
        return {m_app->canRepeatMacro()};
    default:
        return {};
    }
}

void AppCommands::performCommand(CommandId id)
{
    const CommandPlace place = command(id).place;
    if (place == CommandPlace::Focus)
        performResponderCommand(id);
    else if (place == CommandPlace::Application)
        performHere(id);
    else if (CommandTarget *target = targetAt(place))
        target->performCommand(id);
}

void AppCommands::performHere(CommandId id)
{
    switch (id) {
    case CommandId::About:
        return showAboutPanel(QApplication::activeWindow());
    case CommandId::Quit:
        return m_app->terminate();
    case CommandId::NewDocument:
        return m_app->documentController().newDocument();
    case CommandId::OpenDocument:
        return m_app->documentController().openDocument();
    case CommandId::ClearRecentFiles:
        return m_app->recentFiles().clear();
    case CommandId::RunTestMacro:
        return m_app->runTestMacro();
    case CommandId::RunTestMacroSelection:
        return m_app->runTestMacroSelection();
    case CommandId::ShowMacroManager:
        return m_app->showMacroManager();
    case CommandId::ShowProfileManager:
        return m_app->showProfileManager();
    case CommandId::UseEnglish:
        return m_app->useEnglish();
    case CommandId::ShowSettings:
        return m_app->showSettings();
    case CommandId::OpenSettingsFile:
        return m_app->openSettingsFile();
    case CommandId::CheckForUpdates:
        return m_app->checkForUpdates();
    case CommandId::RepeatMacro:
        return m_app->repeatMacro();
    case CommandId::ShowPalette:
        return m_app->openPalette();
    case CommandId::GoToLine:
        return m_app->openPalette(u":"_s);
    case CommandId::GoToHeading:
        return m_app->openPalette(u"@"_s);
    default:
        return performOnDocument(id);
    }
}

void AppCommands::performOnDocument(CommandId id)
{
    const auto editor = m_app->targetEditor();
    if (editor == nullptr)
        return;
    DocumentController &documents = m_app->documentController();
    switch (id) {
    case CommandId::PerformClose:
        documents.closeDocument(editor.get());
        break;
    case CommandId::SaveDocument:
        documents.saveDocument(editor.get());
        break;
    case CommandId::SaveDocumentAs:
        documents.saveDocumentAs(editor.get());
        break;
    default:
        break;
    }
}

} // namespace penwick

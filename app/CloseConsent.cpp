#include "app/CloseConsent.h"

#include "app/OpenDialogs.h"
#include "platform/desktop/WindowActivation.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QScopedValueRollback>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace penwick {

CloseConsent::CloseConsent(const OpenDocuments &documents, Save save)
    : m_documents(documents)
    , m_save(std::move(save))
{
}

bool CloseConsent::offerToStopMacro()
{
    const OpenDocument *running = m_documents.withRunningMacro();
    if (running == nullptr)
        return false;
    running->controller->bringForward();
    running->controller->offerToStopMacro();
    return true;
}

bool CloseConsent::raiseOpenDialog()
{
    QWidget *question = OpenDialogs::front();
    if (question == nullptr)
        return false;
    bringForward(question);
    return true;
}

bool CloseConsent::confirmClose(OpenDocument &entry)
{
    EditorWindowController &controller = *entry.controller;
    if (controller.isRunningMacro()) {
        controller.bringForward();
        controller.offerToStopMacro();
        return false;
    }
    if (entry.document->isReading())
        return true; // A document that is being read has no changes to lose.
    if (!entry.saver->await(entry.displayName()))
        return false;
    QGuiApplication::inputMethod()->commit();
    if (!entry.document->isEdited())
        return true;
    switch (answerFor(entry)) {
    case UnsavedAnswer::Save:
        return m_save(&controller) && entry.saver->await(entry.displayName());
    case UnsavedAnswer::Discard:
        return true;
    case UnsavedAnswer::Cancel:
        break;
    }
    return false;
}

UnsavedAnswer CloseConsent::answerFor(const OpenDocument &entry)
{
    if (m_answerForAll == UnsavedAnswer::Discard)
        return *m_answerForAll;
    entry.controller->bringForward(); // Saving may ask, too.
    if (m_answerForAll)
        return *m_answerForAll;
    bool isForAll = false;
    const UnsavedAnswer answer = askAboutUnsavedChanges(
        entry.controller->window(), entry.displayName(), m_offersAll ? &isForAll : nullptr);
    if (isForAll)
        m_answerForAll = answer;
    return answer;
}

bool CloseConsent::confirmClose(const EditorWindow &window)
{
    QList<DocumentId> asked;
    while (OpenDocument *entry = nextOf(window, asked)) {
        asked << entry->controller.get();
        if (!confirmClose(*entry))
            return false;
    }
    return true;
}

bool CloseConsent::confirmCloseAll()
{
    QList<DocumentId> documents;
    for (const auto &window : m_documents.windows())
        for (const EditorWindowController *controller : window->controllers())
            documents << controller;
    const auto isUnsaved = [this](DocumentId id) {
        const OpenDocument *entry = m_documents.find(id);
        return entry != nullptr && entry->document->isEdited();
    };
    const QScopedValueRollback offersAll(m_offersAll);
    const QScopedValueRollback answerForAll(m_answerForAll);
    for (auto next = documents.cbegin(); next != documents.cend(); ++next) {
        m_offersAll = std::count_if(next, documents.cend(), isUnsaved) > 1;
        // A document may have been closed during a question about another.
        OpenDocument *entry = m_documents.find(*next);
        if (entry != nullptr && !confirmClose(*entry))
            return false;
    }
    return true;
}

/// Returns the next document to ask about. The list is searched again after each question because
/// tabs may have been opened or closed during it. A tab whose macro runs comes first: the window
/// cannot close while a macro runs.
OpenDocument *CloseConsent::nextOf(const EditorWindow &window, const QList<DocumentId> &asked) const
{
    OpenDocument *next = nullptr;
    for (const EditorWindowController *controller : window.controllers()) {
        OpenDocument *entry = asked.contains(controller) ? nullptr : m_documents.find(controller);
        if (entry != nullptr && (next == nullptr || controller->isRunningMacro()))
            next = entry;
    }
    return next;
}

} // namespace penwick

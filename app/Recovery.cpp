#include "app/Recovery.h"

#include "view/TextView.h"

#include <QFileInfo>
#include <QPointer>

#include <utility>

namespace penwick {

Recovery::Recovery(DocumentController &documents,
                   const QString &root,
                   bool keepsCopies,
                   RecoveryTimes times)
    : m_documents(documents)
    , m_root(root)
    , m_keepsCopies(keepsCopies)
    , m_keeper(root, times)
{
    connect(&documents,
            &DocumentController::documentOpened,
            this,
            [this](TextDocument *document, EditorWindowController *controller) {
                if (m_keepsCopies)
                    watch(document, controller);
            });
    connect(&documents, &DocumentController::documentClosed, this, [this](TextDocument *document) {
        m_keeper.forget(document);
    });
    connect(&m_keeper, &RecoveryKeeper::failed, this, &Recovery::failed);
}

Recovery::~Recovery() = default;

void Recovery::setKeepsCopies(bool keepsCopies)
{
    m_keepsCopies = keepsCopies;
    for (const auto &controller : m_documents.windowControllers()) {
        TextDocument *document = controller->document();
        if (document != nullptr && !keepsCopies)
            m_keeper.forget(document);
        else if (document != nullptr && !m_keeper.watches(document))
            watch(document, controller.get());
    }
}

void Recovery::watch(TextDocument *document, EditorWindowController *controller)
{
    m_keeper.watch(document,
                   {[tab = QPointer(controller)]() -> qint64 {
                        const TextView *view = tab != nullptr ? tab->textView() : nullptr;
                        return view != nullptr ? view->caretOffset() : 0;
                    },
                    [this, id = DocumentId(controller)] { return m_documents.nameOf(id); }});
}

void Recovery::offerAbandoned()
{
    if (!QFileInfo::exists(m_root)) // As a rule. Saves the start-up the thread.
        return;
    m_search.start(
        [this, root = m_root](const BackgroundTask::IsCancelled &) -> BackgroundTask::Completion {
            // A completion has to be copyable.
            auto abandoned =
                std::make_shared<RecoveryOffer::Abandoned>(RecoveryOffer::takeAbandoned(root));
            return [this, abandoned] { showOffer(std::move(*abandoned)); };
        });
}

void Recovery::showOffer(RecoveryOffer::Abandoned abandoned)
{
    const auto controllers = m_documents.windowControllers();
    if (abandoned.copies.empty() || controllers.isEmpty())
        return;
    m_offer = std::make_unique<RecoveryOffer>(std::move(abandoned), m_documents, m_keeper);
    connect(m_offer.get(), &RecoveryOffer::opened, this, [this](TextDocument *document) {
        if (m_keeper.watches(document))
            return;
        for (const auto &controller : m_documents.windowControllers())
            if (controller->document() == document)
                watch(document, controller.get());
    });
    m_offer->show(controllers.last()->window());
}

} // namespace penwick

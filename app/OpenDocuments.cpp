#include "app/OpenDocuments.h"

#include "app/DocumentPaths.h"
#include "platform/process/FreedMemory.h"
#include "view/TextView.h"
#include "wording/WordingLookup.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QThreadPool>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using paths::identityOf;

namespace {

/// From this size on, in UTF-16 code units, the memory of a closed text is returned to the system,
/// as is what its reading or writing needed.
constexpr qint64 kLargeText = 4'000'000;

/// Waits a moment, until the widgets that showed a closed text are deleted as well. Runs on another
/// thread because it may take noticeably long.
void giveBackMemoryLater()
{
    QTimer::singleShot(500ms, qApp, [] { QThreadPool::globalInstance()->start(trimFreedMemory); });
}

/// True when the document's file, or the one that it is being saved to, has this identity.
bool isHeldBy(const TextDocument &document, const QString &identity)
{
    const QStringList paths{document.filePath(), document.transferPath()};
    return std::any_of(paths.begin(), paths.end(), [&identity](const QString &path) {
        return !path.isEmpty() && identityOf(path) == identity;
    });
}

template <typename Entries, typename Predicate>
OpenDocument *first(const Entries &entries, Predicate predicate)
{
    const auto found = std::find_if(
        entries.begin(), entries.end(), [&predicate](const auto &e) { return predicate(*e); });
    return found != entries.end() ? found->get() : nullptr;
}

} // namespace

QString OpenDocument::displayName() const
{
    if (!document->filePath().isEmpty())
        return QFileInfo(document->filePath()).fileName();
    const QString untitled = wording::text(u"editor.untitled"_s);
    return untitledNumber > 1 ? untitled + u' ' + QString::number(untitledNumber) : untitled;
}

bool OpenDocument::isPristine() const
{
    const TextStorage &storage = *document->textStorage();
    return document->filePath().isEmpty() && storage.length() == 0 && !storage.isModified() &&
           !storage.canUndo() && !storage.canRedo() && !controller->isRunningMacro() &&
           !controller->textView()->hasMarkedText();
}

QList<std::shared_ptr<EditorWindowController>> OpenDocuments::controllers() const
{
    QList<std::shared_ptr<EditorWindowController>> controllers;
    for (const auto &entry : m_entries)
        controllers << entry->controller;
    return controllers;
}

QList<std::shared_ptr<EditorWindow>> OpenDocuments::windows() const
{
    QList<std::shared_ptr<EditorWindow>> windows;
    for (const auto &entry : m_entries) {
        auto window = entry->controller->window()->shared_from_this();
        if (!windows.contains(window))
            windows << std::move(window);
    }
    return windows;
}

OpenDocument *OpenDocuments::find(DocumentId document) const
{
    return first(m_entries, [document](const OpenDocument &entry) {
        return entry.controller.get() == document;
    });
}

OpenDocument *OpenDocuments::frontDocumentOf(const QWidget *window) const
{
    return first(m_entries, [window](const OpenDocument &entry) {
        return entry.controller->window() == window && entry.controller->isInFront();
    });
}

OpenDocument *OpenDocuments::withFile(const QString &path) const
{
    const QString identity = identityOf(path);
    return first(m_entries, [&identity](const OpenDocument &entry) {
        return isHeldBy(*entry.document, identity);
    });
}

OpenDocument *OpenDocuments::withRunningMacro() const
{
    return first(m_entries,
                 [](const OpenDocument &entry) { return entry.controller->isRunningMacro(); });
}

OpenDocument &OpenDocuments::add()
{
    m_entries.push_back(std::make_unique<OpenDocument>());
    return *m_entries.back();
}

void OpenDocuments::setDocument(OpenDocument &entry, std::unique_ptr<TextDocument> document)
{
    entry.untitledNumber = 0; // Frees the number of the document that is replaced.
    if (document->filePath().isEmpty())
        entry.untitledNumber = nextUntitledNumber();
    // Delete the former document later: the caller is about to remove the view of its text, and one
    // of its own signals may have led here.
    if (entry.document != nullptr) {
        Q_EMIT documentClosed(entry.document.get());
        entry.document.release()->deleteLater();
    }
    entry.document = std::move(document);
    connect(entry.document.get(),
            &TextDocument::transferEnded,
            this,
            [&storage = *entry.document->textStorage()] {
                if (storage.length() > kLargeText)
                    giveBackMemoryLater(); // The buffers of the transfer.
            });
    entry.outsideChanges =
        std::make_unique<OutsideChanges>(entry.document.get(), entry.controller.get());
}

void OpenDocuments::remove(DocumentId document)
{
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [document](const auto &e) {
        return e->controller.get() == document;
    });
    if (found == m_entries.end())
        return;
    const std::unique_ptr<OpenDocument> entry = std::move(*found);
    m_entries.erase(found);
    entry->document->cancelTransfer();
    if (entry->document->textStorage()->length() > kLargeText)
        giveBackMemoryLater();
    // Both must outlive the current event, and the tab must outlive its document.
    TextDocument *closed = entry->document.release();
    closed->deleteLater();
    QMetaObject::invokeMethod(
        this, [kept = entry->controller]() mutable { kept.reset(); }, Qt::QueuedConnection);
    Q_EMIT documentClosed(closed);
}

int OpenDocuments::nextUntitledNumber() const
{
    int number = 1;
    const auto hasNumber = [&number](const OpenDocument &entry) {
        return entry.untitledNumber == number && entry.document->filePath().isEmpty();
    };
    while (first(m_entries, hasNumber) != nullptr)
        ++number;
    return number;
}

} // namespace penwick

#include "app/OutsideChanges.h"

#include "app/DocumentDialogs.h"
#include "editor/TextDifference.h"
#include "view/TextView.h"
#include "wording/WordingLookup.h"

#include <QFileInfo>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

OutsideChanges::OutsideChanges(TextDocument *document, EditorWindowController *controller)
    : m_document(document)
    , m_controller(controller)
{
    connect(&m_dialogs, &OpenDialogs::closed, this, &OutsideChanges::settle);
}

OutsideChanges::~OutsideChanges()
{
    delete m_question;
}

void OutsideChanges::check()
{
    // The check under way, or that of the open question, may have missed a change made just now.
    m_checksAgain = m_check != nullptr || !m_question.isNull();
    const bool isTransferring = m_document->transfer() != TextDocument::Transfer::None;
    if (m_checksAgain || isTransferring || m_document->filePath().isEmpty())
        return;
    m_finding.reset(); // A result that still waits may be out of date.
    m_base = m_document->fileVersion();
    if (m_reported && m_reported->base != m_base)
        m_reported.reset();
    m_check = std::make_unique<FileCheck>(
        m_document->filePath(), m_reported ? m_reported->state : m_base, nullptr);
    connect(m_check.get(),
            &FileCheck::finished,
            this,
            [this, path = m_document->filePath()](const FileCheckResult &finding) {
                m_check.release()->deleteLater(); // It must outlive its signal.
                if (m_checksAgain)
                    QMetaObject::invokeMethod(this, &OutsideChanges::check, Qt::QueuedConnection);
                if (path == m_document->filePath())
                    take(finding);
            });
}

void OutsideChanges::take(const FileCheckResult &finding)
{
    // Show no dialog over another one. The check on the user's next return to the window shows it.
    if (finding.copies != m_copies && OpenDialogs::front() == nullptr) {
        m_copies = finding.copies;
        dialogs::showInterruptedSave(m_controller->window(), m_document->filePath(), m_copies);
    }
    if (finding.kind != FileCheckResult::Kind::Same) {
        m_finding = finding;
        settle();
    }
}

/// Returns true while the finding cannot be acted on, and calls `settle` again when that may have
/// changed.
bool OutsideChanges::hasToWait()
{
    const TextView *view = m_controller->textView();
    // A composition belongs to the present text. The view emits the signal when it ends.
    if (view->hasMarkedText() || view->textStorage()->isGrouping()) {
        connect(view,
                &TextView::actionStateDidChange,
                this,
                &OutsideChanges::settle,
                static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
        return true;
    }
    if (OpenDialogs::areOpen()) {
        m_dialogs.watch();
        return true;
    }
    return false;
}

void OutsideChanges::settle()
{
    if (m_document->transfer() != TextDocument::Transfer::None ||
        m_document->fileVersion() != m_base) {
        m_finding.reset(); // A save came first and has checked the file itself.
        return;
    }
    if (!m_controller->isInFront() || m_controller->textView() == nullptr) {
        m_finding.reset(); // The file is checked again when the tab comes to the front.
        return;
    }
    if (!m_finding || hasToWait())
        return;
    const FileCheckResult finding = *std::exchange(m_finding, std::nullopt);
    switch (finding.kind) {
    case FileCheckResult::Kind::Same:
        break;
    case FileCheckResult::Kind::Text:
        takeText(finding.stored);
        break;
    case FileCheckResult::Kind::Missing:
        keepOnly(wording::text(u"status.fileDeleted"_s), finding);
        break;
    case FileCheckResult::Kind::Unreadable:
        keepOnly(wording::text(u"status.fileUnreadable"_s), finding);
        break;
    }
}

void OutsideChanges::takeText(const StoredText &stored)
{
    if (stored.text == m_controller->textView()->string())
        m_document->adoptFileText(stored);
    else if (!m_document->isEdited())
        load(stored);
    else if (stored.text == m_document->savedText())
        m_document->acceptFileVersion(stored.version); // Touched, or changed and changed back.
    else
        ask(stored);
}

void OutsideChanges::load(const StoredText &stored)
{
    TextView *view = m_controller->textView();
    const TextDifference difference = differenceBetween(view->string(), stored.text);
    view->applyOutsideChange(difference.range, difference.replacement);
    m_document->adoptFileText(stored);
    m_controller->showMacroMessage(NotificationType::Info, wording::text(u"status.reloaded"_s));
}

void OutsideChanges::ask(const StoredText &stored)
{
    m_reported = Reported{stored.version, m_base};
    m_question = dialogs::askAboutOutsideChange(
        m_controller->window(),
        QFileInfo(m_document->filePath()).fileName(),
        [this, stored](dialogs::OutsideAnswer answer) {
            m_question.clear();
            // Nothing can have been saved meanwhile, because the question blocks the window.
            if (answer == dialogs::OutsideAnswer::LoadTheirs && m_controller->textView()) {
                load(stored);
            } else if (answer == dialogs::OutsideAnswer::KeepMine) {
                m_document->acceptFileVersion(stored.version);
                // No undo step leads to the present content of the file.
                m_document->textStorage()->forgetSavePoint();
            }
            if (m_checksAgain)
                check();
        });
}

void OutsideChanges::keepOnly(const QString &message, const FileCheckResult &finding)
{
    m_reported = Reported{finding.stored.version, m_base};
    m_document->textStorage()->forgetSavePoint();
    m_controller->showMacroMessage(NotificationType::Warning, message);
}

} // namespace penwick

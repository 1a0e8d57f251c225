#include "app/RecoveryOffer.h"

#include "app/DocumentController.h"
#include "app/DocumentDialogs.h"
#include "app/TextComparison.h"
#include "controls/Alerts.h"
#include "controls/VerbatimText.h"
#include "recovery/RecoveryKeeper.h"
#include "view/TextView.h"
#include "wording/WordingLookup.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// True when the file, whose state is `now`, is in the one that the copied text was made from. The
/// device is not compared: its number may differ after a restart of the system.
bool isUnchanged(const RecoveryOrigin &origin, std::optional<FileVersion> now)
{
    if (now && origin.version)
        now->device = origin.version->device;
    return now == origin.version;
}

/// A name beside the file that no file has.
QString suggestedPath(const RecoveryOrigin &origin)
{
    const QFileInfo file(origin.filePath.isEmpty()
                             ? QDir::homePath() + u'/' + origin.name + u".txt"_s
                             : origin.filePath);
    const QString suffix = file.suffix().isEmpty() ? QString() : u'.' + file.suffix();
    const QString base = file.path() + u'/' + file.completeBaseName() + u'-' +
                         wording::text(u"recovery.nameSuffix"_s);
    QString path = base + suffix;
    for (int number = 2; QFileInfo::exists(path); ++number)
        path = base + u'-' + QString::number(number) + suffix;
    return path;
}

} // namespace

RecoveryOffer::Abandoned RecoveryOffer::takeAbandoned(const QString &root)
{
    Abandoned abandoned{RecoverySession::takeAbandoned(root), {}};
    for (const RecoverySession &session : abandoned.sessions)
        for (const QString &path : session.copies())
            if (auto summary = RecoveryCopy::readSummary(path))
                abandoned.copies.push_back({path, *std::move(summary)});
    return abandoned;
}

RecoveryOffer::RecoveryOffer(Abandoned abandoned,
                             DocumentController &documents,
                             RecoveryKeeper &keeper)
    : m_sessions(std::move(abandoned.sessions))
    , m_documents(documents)
    , m_keeper(keeper)
{
    int id = 0;
    for (Copy &copy : abandoned.copies)
        m_copies[++id] = std::move(copy);
    connect(&m_task, &BackgroundTask::failed, this, &RecoveryOffer::taskDidFail);
}

RecoveryOffer::~RecoveryOffer()
{
    delete m_window;
    m_keeper.release(std::move(m_sessions));
}

void RecoveryOffer::show(QWidget *parent)
{
    if (m_copies.empty())
        return;
    m_window = new RecoveryWindow(parent);
    m_window->setAttribute(Qt::WA_DeleteOnClose);
    for (const auto &[id, copy] : m_copies)
        m_window->add(id, copy.summary);
    connect(m_window, &RecoveryWindow::openRequested, this, &RecoveryOffer::open);
    connect(m_window, &RecoveryWindow::compareRequested, this, &RecoveryOffer::compare);
    connect(m_window, &RecoveryWindow::saveRequested, this, &RecoveryOffer::save);
    connect(m_window, &RecoveryWindow::discardRequested, this, &RecoveryOffer::discard);
    m_window->show();
}

void RecoveryOffer::read(int id, const UseText &use)
{
    m_window->setBusy(true);
    m_task.start([this, path = m_copies.at(id).path, use](const BackgroundTask::IsCancelled &) {
        const std::atomic<bool> isCancelled = false;
        auto read = RecoveryCopy::read(path, isCancelled);
        return [this, use, read = std::move(read)] {
            if (m_window == nullptr)
                return;
            m_window->setBusy(false);
            if (read)
                use(*read);
            else
                dialogs::showOpenError(m_window, QString(), documentError(read.error()));
        };
    });
}

void RecoveryOffer::taskDidFail()
{
    if (m_window == nullptr)
        return;
    m_window->setBusy(false);
    dialogs::showOpenError(m_window, QString(), documentError(FileError::fromErrno(ENOMEM)));
}

void RecoveryOffer::open(QList<int> ids)
{
    if (ids.isEmpty())
        return;
    const int id = ids.takeFirst();
    read(id, [this, id, ids](const RecoveredText &recovered) {
        openText(id, recovered);
        open(ids);
    });
}

void RecoveryOffer::openText(int id, const RecoveredText &recovered)
{
    const RecoveryOrigin &origin = recovered.summary.origin;
    TextDocument *document =
        m_documents.newDocument(recovered.text, DocumentController::Placement::Tab);
    document->textStorage()->forgetSavePoint(); // A recovered text may be empty.
    // Read once: a save must ask if the file changes after this.
    const auto version = FileVersion::of(origin.filePath);
    const bool hasFile = !origin.filePath.isEmpty() && isUnchanged(origin, version) &&
                         m_documents.documentOfFile(origin.filePath) == nullptr;
    if (hasFile) {
        document->setFilePath(origin.filePath);
        document->acceptFileVersion(version);
    } else if (!origin.filePath.isEmpty()) {
        document->setSuggestedPath(suggestedPath(origin));
    }
    for (const auto &controller : m_documents.windowControllers())
        if (controller->document() == document && controller->textView() != nullptr)
            controller->textView()->setSelectedRange({recovered.caret, 0});
    Q_EMIT opened(document);
    m_keeper.adopt(document, m_copies.at(id).path);
    m_copies.erase(id);
    if (recovered.isDamaged)
        showAlert(m_window->parentWidget(),
                  wording::text(u"recovery.damaged"_s, {visibleLine(origin.name)}));
    m_window->remove(id);
}

void RecoveryOffer::compare(int id)
{
    const QString path = m_copies.at(id).summary.origin.filePath;
    m_window->setBusy(true);
    m_task.start([this, path, copy = m_copies.at(id).path](const BackgroundTask::IsCancelled &) {
        auto comparison = compareWithFile(path, copy);
        return [this, path, comparison = std::move(comparison)] {
            if (m_window == nullptr)
                return;
            m_window->setBusy(false);
            if (comparison)
                showComparison(m_window, QFileInfo(path).fileName(), *comparison);
            else
                dialogs::showOpenError(m_window, path, comparison.error());
        };
    });
}

void RecoveryOffer::save(int id)
{
    const QString path =
        dialogs::askForFileToSave(m_window, suggestedPath(m_copies.at(id).summary.origin));
    if (path.isEmpty() || m_window == nullptr)
        return;
    if (m_documents.documentOfFile(path) != nullptr) {
        dialogs::showFileInUse(m_window, path);
        return;
    }
    read(id, [this, id, path](const RecoveredText &recovered) { saveText(id, recovered, path); });
}

void RecoveryOffer::saveText(int id, const RecoveredText &recovered, const QString &path)
{
    m_window->setBusy(true);
    m_task.start([this, id, recovered, path](const BackgroundTask::IsCancelled &) {
        TransferProgress unwatched;
        auto written = writeTextFile(path, recovered.text, unwatched);
        const bool isDamaged = recovered.isDamaged;
        return [this, id, path, isDamaged, written = std::move(written)] {
            if (m_window != nullptr)
                savingDidEnd(id, path, isDamaged, written);
        };
    });
}

void RecoveryOffer::savingDidEnd(int id,
                                 const QString &path,
                                 bool isDamaged,
                                 const TransferOutcome &written)
{
    m_window->setBusy(false);
    if (!written) {
        dialogs::showSaveError(m_window, path, written.error());
        return;
    }
    const QString name = visibleLine(QFileInfo(path).fileName());
    if (isDamaged)
        showAlert(m_window->parentWidget(), wording::text(u"recovery.damagedSaved"_s, {name}));
    remove(id);
}

void RecoveryOffer::discard(const QList<int> &ids)
{
    const QString name = visibleLine(m_copies.at(ids.front()).summary.origin.name);
    confirmDelete(m_window,
                  wording::text(u"recovery.discard"_s),
                  ids.size() == 1
                      ? wording::text(u"recovery.discardOne"_s, {name})
                      : wording::text(u"recovery.discardSome"_s, {QString::number(ids.size())}),
                  [this, ids] {
                      for (const int id : ids)
                          remove(id);
                  });
}

void RecoveryOffer::remove(int id)
{
    m_keeper.remove(m_copies.at(id).path);
    m_copies.erase(id);
    m_window->remove(id);
}

} // namespace penwick

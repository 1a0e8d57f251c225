#include "app/UnsavedTextRescue.h"

#include "app/DocumentController.h"
#include "platform/files/FileSystem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <thread>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

UnsavedTextRescue *currentRescue = nullptr;

void runCurrent()
{
    if (UnsavedTextRescue *current = std::exchange(currentRescue, nullptr))
        current->run();
}

QtMessageHandler previousHandler = nullptr;

/// Runs the rescue when a message announces the end of the process: a fatal one, or the loss of the
/// Wayland connection. The toolkit then ends the process without running the `atexit` handlers;
/// the message, in the latter case from any thread, is the only sign before that.
void rescueBeforeEnd(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    previousHandler(type, context, message);
    const bool isMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
    if (type == QtFatalMsg && isMainThread)
        return runCurrent(); // The caller aborts.
    if (!message.startsWith(u"The Wayland connection"_s))
        return;
    if (isMainThread) {
        runCurrent();
        std::_Exit(EXIT_FAILURE);
    }
    // The main thread is about to notice as well. Give it the time to write all texts.
    constexpr auto kRescueTimeout = 30s;
    std::this_thread::sleep_for(kRescueTimeout);
}

bool isTaken(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

} // namespace

QString placeForUnsavedText(const QString &filePath, const QString &home)
{
    const QString first =
        (filePath.isEmpty() ? home + u"/untitled.txt"_s : filePath) + u".unsaved"_s;
    QString place = first;
    for (int number = 2; isTaken(place); ++number)
        place = first + u'-' + QString::number(number);
    return place;
}

namespace {

/// Another process may be ending for the same reason and take the same name; then try the next
/// name.
std::optional<QString>
writeToFreePlace(const QString &filePath, const QString &home, const Text &text)
{
    constexpr int kAttempts = 10;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        QString place = placeForUnsavedText(filePath, home);
        TransferProgress unwatched;
        const auto written = writeTextFile(place, text, unwatched, {false, std::nullopt});
        if (written)
            return place;
        if (written.error().fileErrorKind != FileError::Kind::Changed)
            break;
    }
    return std::nullopt;
}

} // namespace

UnsavedTextRescue::UnsavedTextRescue(DocumentController *documents)
    : m_documents(documents)
{
    currentRescue = this;
    static const bool kIsRegistered = std::atexit(runCurrent) == 0;
    static_cast<void>(kIsRegistered);
    previousHandler = qInstallMessageHandler(rescueBeforeEnd);
}

UnsavedTextRescue::~UnsavedTextRescue()
{
    currentRescue = nullptr;
    qInstallMessageHandler(previousHandler);
}

void UnsavedTextRescue::run()
{
    makeNewFilesPrivate(); // The intended readers are unknown.
    for (const auto &controller : m_documents->windowControllers()) {
        TextDocument *document = m_documents->documentOf(controller.get());
        document->blockSignals(true); // No dialog or message can be shown any more.
        if (document->isWriting()) {
            constexpr auto kSaveTimeout = 20s;
            static_cast<void>(document->waitForTransfer(kSaveTimeout));
        }
        if (!document->isReading() && document->isEdited())
            rescue(*document);
    }
}

void UnsavedTextRescue::rescue(const TextDocument &document)
{
    const Text &text = document.textStorage()->text();
    // If the home folder is full or missing, another folder may have room.
    const std::pair<QString, QString> places[] = {
        {document.filePath(), QDir::homePath()}, {{}, QDir::homePath()}, {{}, QDir::tempPath()}};
    for (const auto &[file, home] : places) {
        if (const auto place = writeToFreePlace(file, home, text)) {
            std::fprintf(
                stderr, "penwick: unsaved text is in %s\n", QFile::encodeName(*place).constData());
            return;
        }
    }
    std::fprintf(stderr, "penwick: unsaved text could not be kept\n");
}

} // namespace penwick

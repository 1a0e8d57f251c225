#include "app/UnsavedTextRescue.h"

#include "app/DocumentController.h"
#include "platform/FileSystem.h"

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
    if (UnsavedTextRescue *current = std::exchange(currentRescue, nullptr)) {
        current->run();
    }
}

QtMessageHandler formerHandler = nullptr;

/// The toolkit ends a process that has lost its Wayland compositor without running what `atexit`
/// holds. All that comes before is this message, from whichever thread notices first.
void watchForALostDisplay(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    formerHandler(type, context, message);
    if (!message.startsWith(u"The Wayland connection"_s)) {
        return;
    }
    if (QThread::currentThread() == QCoreApplication::instance()->thread()) {
        runCurrent();
        std::_Exit(EXIT_FAILURE);
    }
    // The main thread is about to notice too, and is given the time for all it has to write.
    constexpr auto kPatience = 30s;
    std::this_thread::sleep_for(kPatience);
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
    for (int number = 2; isTaken(place); ++number) {
        place = first + u'-' + QString::number(number);
    }
    return place;
}

namespace {

/// Another process may be ending for the same reason, and take the very name.
std::optional<QString>
writeToFreePlace(const QString &filePath, const QString &home, const Text &text)
{
    constexpr int kAttempts = 10;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        QString place = placeForUnsavedText(filePath, home);
        TransferProgress unwatched;
        const auto written = writeTextFile(place, text, unwatched, {false, std::nullopt});
        if (written) {
            return place;
        }
        if (written.error().fileErrorKind != FileError::Kind::Changed) {
            break;
        }
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
    formerHandler = qInstallMessageHandler(watchForALostDisplay);
}

UnsavedTextRescue::~UnsavedTextRescue()
{
    currentRescue = nullptr;
    qInstallMessageHandler(formerHandler);
}

void UnsavedTextRescue::run()
{
    makeNewFilesPrivate(); // Who may read them is not known here.
    for (const auto &controller : m_documents->windowControllers()) {
        TextDocument *document = m_documents->documentOf(controller.get());
        document->blockSignals(true); // Nobody can be shown anything.
        if (document->isWriting()) {
            constexpr auto kPatience = 20s;
            static_cast<void>(document->waitForTransfer(kPatience));
        }
        if (!document->isReading() && document->isEdited()) {
            rescue(*document);
        }
    }
}

void UnsavedTextRescue::rescue(const TextDocument &document)
{
    // The document's own string may lack what was typed last.
    const Text &text = document.textStorage()->text();
    // Where even the home folder is full or gone, there may be room elsewhere.
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

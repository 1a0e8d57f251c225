#include "app/UnsavedTextRescue.h"

#include "app/DocumentController.h"
#include "platform/FileSystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <cstdio>
#include <cstdlib>
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

UnsavedTextRescue::UnsavedTextRescue(DocumentController *documents)
    : m_documents(documents)
{
    currentRescue = this;
    static const bool kIsRegistered = std::atexit(runCurrent) == 0;
    static_cast<void>(kIsRegistered);
}

UnsavedTextRescue::~UnsavedTextRescue()
{
    currentRescue = nullptr;
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
    const QString home = QDir::homePath();
    for (const QString &file : {document.filePath(), QString()}) {
        const QString place = placeForUnsavedText(file, home);
        TransferProgress unwatched;
        if (writeTextFile(place, text, unwatched)) {
            std::fprintf(
                stderr, "penwick: unsaved text is in %s\n", QFile::encodeName(place).constData());
            return;
        }
    }
    std::fprintf(stderr, "penwick: unsaved text could not be kept\n");
}

} // namespace penwick

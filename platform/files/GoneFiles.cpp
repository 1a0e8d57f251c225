#include "platform/files/GoneFiles.h"

#include <QFutureWatcher>
#include <QHash>
#include <QPromise>

#include <cerrno>
#include <memory>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace penwick {

namespace {

bool isGone(const QByteArray &path)
{
    return ::access(path.constData(), F_OK) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

} // namespace

GoneFiles::GoneFiles()
    : GoneFiles(isGone)
{
}

GoneFiles::GoneFiles(IsGone isGone)
    : m_isGone(std::move(isGone))
{
}

void GoneFiles::look(const QList<QByteArray> &paths)
{
    QHash<QByteArray, QList<QByteArray>> folders;
    for (const QByteArray &path : paths)
        folders[path.left(path.lastIndexOf('/'))] << path;
    for (auto folder = folders.cbegin(); folder != folders.cend(); ++folder)
        if (!m_folders.contains(folder.key()))
            lookIn(folder.key(), *folder);
}

void GoneFiles::lookIn(const QByteArray &folder, const QList<QByteArray> &paths)
{
    const auto promise = std::make_shared<QPromise<QByteArray>>();
    const auto run = [promise, paths, isGone = m_isGone] {
        for (const QByteArray &path : paths)
            if (isGone(path))
                promise->addResult(path);
        promise->finish();
    };
    promise->start();
    auto *watcher = new QFutureWatcher<QByteArray>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, folder] {
        m_folders.remove(folder);
        watcher->deleteLater();
        for (const QByteArray &path : watcher->future().results())
            Q_EMIT found(path);
    });
    watcher->setFuture(promise->future());
    try {
        std::thread(run).detach();
        m_folders.insert(folder);
    } catch (const std::system_error &) {
        watcher->deleteLater(); // The files stay unmarked.
    }
}

} // namespace penwick

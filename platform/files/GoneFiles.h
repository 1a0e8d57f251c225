#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QSet>

#include <functional>

namespace penwick {

/// Finds out which files do not exist. It uses detached threads, one for each folder, so that the
/// main thread does not wait for a file system that does not respond. While a folder does not
/// respond, no second thread is started for it.
class GoneFiles final : public QObject
{
    Q_OBJECT

public:
    /// True when the file of an absolute path does not exist. Called on other threads.
    using IsGone = std::function<bool(const QByteArray &path)>;

    GoneFiles();
    explicit GoneFiles(IsGone isGone);

    /// \param paths absolute, as the system has them.
    void look(const QList<QByteArray> &paths);

Q_SIGNALS:
    /// Emitted from the event loop for each file that does not exist. A file whose folder cannot be
    /// read is not one of them.
    void found(const QByteArray &path);

private:
    void lookIn(const QByteArray &folder, const QList<QByteArray> &paths);

    IsGone m_isGone;
    QSet<QByteArray> m_folders; // Those with a thread.
};

} // namespace penwick

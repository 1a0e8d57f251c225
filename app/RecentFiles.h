#pragma once

#include "platform/settings/RecentList.h"
#include "preferences/Preferences.h"

#include <QByteArray>
#include <QList>
#include <QObject>

namespace penwick {

class DocumentController;
class TextDocument;

/// The files that were opened or saved last. They are stored, each as its path with % as %25; in a
/// path that is not UTF-8, every byte but those of plain ASCII names stands as such a code. Keeps
/// nothing, and lists nothing, while the setting `KeepsRecentFiles` is off.
class RecentFiles final : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype kMost = 50;

    /// \param defaults stores the files; not owned, must outlive this.
    /// \param preferences not owned; must outlive this.
    RecentFiles(UserDefaults &defaults, Preferences &preferences);

    /// Adds the files of documents from now on, when they are opened and when they are saved, but
    /// not the file of `UserDefaults::usage()`.
    /// \param documents not owned; must outlive this.
    void follow(DocumentController *documents);

    /// The absolute paths, as the system has them, the last one first.
    [[nodiscard]] QList<QByteArray> paths() const;

    /// The same without the files of open documents.
    [[nodiscard]] QList<QByteArray> closedPaths() const;

    /// \param path absolute; any other is ignored.
    void add(const QByteArray &path);
    void clear();

Q_SIGNALS:
    void changed();

private:
    void addFileOf(const TextDocument &document);

    Preferences &m_preferences;
    DocumentController *m_documents = nullptr;
    RecentList m_list;
};

} // namespace penwick

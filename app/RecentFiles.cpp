#include "app/RecentFiles.h"

#include "app/DocumentController.h"
#include "platform/files/ApplicationSupport.h"

#include <QFile>
#include <QSet>
#include <QStringDecoder>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// Returns the path as a text that can be stored, and read where it is UTF-8.
QString storedForm(const QByteArray &path)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder(path);
    if (decoder.hasError())
        return QString::fromLatin1(path.toPercentEncoding("/"));
    return text.replace(u'%', u"%25"_s);
}

} // namespace

RecentFiles::RecentFiles(UserDefaults &defaults, Preferences &preferences)
    : m_preferences(preferences)
    , m_list(defaults, u"recentFiles/paths"_s, kMost)
{
    Preferences::observe(PreferenceId::KeepsRecentFiles, this, [this] {
        if (!m_preferences.isOn(PreferenceId::KeepsRecentFiles))
            clear();
    });
}

void RecentFiles::follow(DocumentController *documents)
{
    m_documents = documents;
    connect(documents, &DocumentController::documentOpened, this, [this](TextDocument *document) {
        const auto addFile = [this, document] { addFileOf(*document); };
        addFile();
        connect(document, &TextDocument::filePathChanged, this, addFile);
        connect(document, &TextDocument::transferEnded, this, addFile);
        connect(document, &TextDocument::editedChanged, this, [addFile](bool isEdited) {
            if (!isEdited)
                addFile();
        });
    });
}

QList<QByteArray> RecentFiles::paths() const
{
    QList<QByteArray> paths;
    if (!m_preferences.isOn(PreferenceId::KeepsRecentFiles))
        return paths;
    for (const QString &item : m_list.items()) {
        const QByteArray path = QByteArray::fromPercentEncoding(item.toUtf8());
        if (path.startsWith('/') && !path.contains('\0'))
            paths << path;
    }
    return paths;
}

QList<QByteArray> RecentFiles::closedPaths() const
{
    QSet<QByteArray> open; // Compared as texts: a query of the file system could take long.
    for (const auto &controller : m_documents->windowControllers())
        if (const TextDocument *document = controller->document())
            open.insert(QFile::encodeName(document->filePath()));
    QList<QByteArray> closed;
    for (const QByteArray &path : paths())
        if (!open.contains(path))
            closed << path;
    return closed;
}

void RecentFiles::add(const QByteArray &path)
{
    if (!path.startsWith('/') || !m_preferences.isOn(PreferenceId::KeepsRecentFiles))
        return;
    m_list.add(storedForm(path));
    Q_EMIT changed();
}

void RecentFiles::clear()
{
    m_list.clear();
    Q_EMIT changed();
}

/// Adds the document's file if the document has read or written one: a path on the command line may
/// have none. Leaves out the file with the list, which would change while it is edited.
void RecentFiles::addFileOf(const TextDocument &document)
{
    const bool holdsTheList = document.filePath() == ApplicationSupport::usageFilePath();
    if (document.fileVersion() && !holdsTheList)
        add(QFile::encodeName(document.filePath()));
}

} // namespace penwick

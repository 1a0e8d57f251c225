#include "app/DocumentPaths.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace penwick::paths {

using namespace Qt::StringLiterals;

namespace {

QString inCanonicalFolder(const QString &path)
{
    const QFileInfo info(path);
    const QString folder = QFileInfo(info.path()).canonicalFilePath();
    const QString place =
        folder.isEmpty() ? info.absoluteFilePath() : folder + u'/' + info.fileName();
    return QDir::cleanPath(place);
}

} // namespace

QString startFolder()
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

QString identityOf(const QString &path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? inCanonicalFolder(path) : canonical;
}

QString absolutePathOf(const QString &path)
{
    return path.split(u'/').contains(u".."_s) ? inCanonicalFolder(path)
                                              : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

} // namespace penwick::paths

#include "macro/engine/TabNames.h"

#include <QDir>
#include <QHash>

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// The last `count` folders on the way to a file, "/" where there is none.
QString lastFolders(const QString &filePath, qsizetype count)
{
    QStringList folders = filePath.split(u'/', Qt::SkipEmptyParts);
    folders.removeLast();
    const QString last = folders.sliced(std::max<qsizetype>(0, folders.size() - count)).join(u'/');
    return QDir::toNativeSeparators(last.isEmpty() ? u"/"_s : last);
}

/// The shortest end of the folder of the file `path` that none of `others` has too; the whole
/// folder where one of them is in the same.
QString tellingFolders(const QString &path, const QStringList &others)
{
    const qsizetype most = path.count(u'/');
    for (qsizetype count = 1; count < most; ++count) {
        QString folders = lastFolders(path, count);
        if (std::none_of(others.begin(), others.end(), [&](const QString &other) {
                return lastFolders(other, count) == folders;
            }))
            return folders;
    }
    return lastFolders(path, most);
}

} // namespace

QStringList tabNames(const QList<TabLabel> &labels)
{
    QHash<QString, QStringList> paths; // Of the files by each name.
    for (const TabLabel &label : labels)
        paths[label.name] << label.filePath;
    QStringList names;
    for (const TabLabel &label : labels) {
        QStringList others = paths.value(label.name);
        others.removeOne(label.filePath);
        if (others.isEmpty() || label.filePath.isEmpty()) {
            names << label.name;
            continue;
        }
        others.removeAll(QString());
        names << label.name + u" — "_s + tellingFolders(label.filePath, others);
    }
    return names;
}

} // namespace penwick

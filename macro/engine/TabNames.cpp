#include "macro/engine/TabNames.h"

#include <QHash>

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// The names of a file's folders, from the outermost to its own.
QStringList foldersOf(const QString &filePath)
{
    QStringList names = filePath.split(u'/', Qt::SkipEmptyParts);
    names.removeLast();
    return names;
}

QStringList lastOf(const QStringList &folders, qsizetype count)
{
    return folders.last(std::min(count, folders.size()));
}

/// For each file the shortest end of its folders that no other has too; all of them where there is
/// none.
QList<QStringList> tellingFolders(const QList<QStringList> &files)
{
    qsizetype most = 0;
    for (const QStringList &folders : files)
        most = std::max(most, folders.size());
    QList<QStringList> telling = files;
    // From long to short: what tells a file apart does so with more of its folders, too.
    for (qsizetype count = most; count > 0; --count) {
        QHash<QStringList, int> uses;
        for (const QStringList &folders : files)
            ++uses[lastOf(folders, count)];
        for (qsizetype i = 0; i < files.size(); ++i) {
            const QStringList end = lastOf(files.at(i), count);
            telling[i] = uses.value(end) == 1 ? end : telling.at(i);
        }
    }
    return telling;
}

/// In few characters, the first of which say most: a tab has room for some thirty.
QString shortened(const QStringList &folders)
{
    if (folders.isEmpty())
        return u"/"_s;
    return folders.size() == 1 ? folders.first() : folders.first() + u"/…"_s;
}

/// What stands behind the names of files that are alike.
QStringList remarks(const QList<QStringList> &files)
{
    const QList<QStringList> telling = tellingFolders(files);
    QHash<QString, int> uses;
    for (const QStringList &folders : telling)
        ++uses[shortened(folders)];
    QStringList result;
    for (const QStringList &folders : telling) {
        const QString remark = shortened(folders);
        result << (uses.value(remark) == 1 ? remark : u'/' + folders.join(u'/'));
    }
    return result;
}

} // namespace

QStringList tabNames(const QList<TabLabel> &labels)
{
    QStringList names;
    QHash<QString, QList<qsizetype>> alike;
    for (const TabLabel &label : labels) {
        alike[label.name] << names.size();
        names << label.name;
    }
    for (QList<qsizetype> indexes : std::as_const(alike)) {
        if (indexes.size() == 1)
            continue;
        indexes.removeIf([&](qsizetype i) { return labels.at(i).filePath.isEmpty(); });
        QList<QStringList> files;
        for (const qsizetype i : std::as_const(indexes))
            files << foldersOf(labels.at(i).filePath);
        const QStringList remarkOf = remarks(files);
        for (qsizetype k = 0; k < indexes.size(); ++k)
            names[indexes.at(k)] += u" — "_s + remarkOf.at(k);
    }
    return names;
}

} // namespace penwick

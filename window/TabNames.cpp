#include "window/TabNames.h"

#include <QHash>

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// Returns the names of a file's folders, from the outermost to its own.
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

/// Returns for each file the shortest suffix of its folders that no other file shares; all of its
/// folders when there is none.
QList<QStringList> distinguishingFolders(const QList<QStringList> &files)
{
    qsizetype most = 0;
    for (const QStringList &folders : files)
        most = std::max(most, folders.size());
    QList<QStringList> distinguishing = files;
    // From long to short: a suffix that is unique stays unique with more folders.
    for (qsizetype count = most; count > 0; --count) {
        QHash<QStringList, int> uses;
        for (const QStringList &folders : files)
            ++uses[lastOf(folders, count)];
        for (qsizetype i = 0; i < files.size(); ++i) {
            const QStringList end = lastOf(files.at(i), count);
            distinguishing[i] = uses.value(end) == 1 ? end : distinguishing.at(i);
        }
    }
    return distinguishing;
}

/// Returns a short form of the folders, the distinguishing one first: a tab has room for about
/// thirty characters.
QString shortened(const QStringList &folders)
{
    if (folders.isEmpty())
        return u"/"_s;
    return folders.size() == 1 ? folders.first() : folders.first() + u"/…"_s;
}

/// Returns what to append to the names of files with the same name.
QStringList nameSuffixes(const QList<QStringList> &files)
{
    const QList<QStringList> distinguishing = distinguishingFolders(files);
    QHash<QString, int> uses;
    for (const QStringList &folders : distinguishing)
        ++uses[shortened(folders)];
    QStringList result;
    for (const QStringList &folders : distinguishing) {
        const QString suffix = shortened(folders);
        result << (uses.value(suffix) == 1 ? suffix : u'/' + folders.join(u'/'));
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
        const QStringList suffixes = nameSuffixes(files);
        for (qsizetype k = 0; k < indexes.size(); ++k)
            names[indexes.at(k)] += u" — "_s + suffixes.at(k);
    }
    return names;
}

} // namespace penwick

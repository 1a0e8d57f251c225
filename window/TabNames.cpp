#include "window/TabNames.h"

#include "text/Text.h"

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

/// How many UTF-16 code units names share at their starts, and at their ends after that.
struct Shared
{
    qsizetype start;
    qsizetype end;
};

Shared sharedBy(const QStringList &names)
{
    const QString &first = names.first();
    Shared shared{first.size(), first.size()};
    qsizetype shortest = first.size();
    for (const QString &name : names) {
        const auto start = std::mismatch(first.begin(), first.end(), name.begin(), name.end());
        const auto end = std::mismatch(first.rbegin(), first.rend(), name.rbegin(), name.rend());
        shared.start = std::min<qsizetype>(shared.start, start.first - first.begin());
        shared.end = std::min<qsizetype>(shared.end, end.first - first.rbegin());
        shortest = std::min(shortest, name.size());
    }
    shared.end = std::min(shared.end, shortest - shared.start);
    return shared;
}

/// Returns the name with about `kept` code units of its shared parts: whole grapheme clusters of
/// the start's beginning and of the end's last part.
QString withKept(const QString &name, const Shared &shared, qsizetype kept)
{
    const Text text{QStringView(name)};
    const auto atOrAfter = [&text](qsizetype offset) {
        return offset > 0 ? text.nextClusterBoundary(offset - 1) : 0;
    };
    const qsizetype start = std::min(shared.start, kept - std::min(shared.end, kept / 2));
    const qsizetype end = std::min(shared.end, kept - start);
    const qint64 headEnd = text.clusterBoundaryAtOrBefore(start);
    const qint64 differenceStart = text.clusterBoundaryAtOrBefore(shared.start);
    const qint64 differenceEnd = atOrAfter(name.size() - shared.end);
    const qint64 tailStart = atOrAfter(name.size() - end);
    QString result = name.first(headEnd);
    if (headEnd < differenceStart)
        result += u'…';
    result += name.sliced(differenceStart, differenceEnd - differenceStart);
    if (differenceEnd < tailStart && !result.endsWith(u'…'))
        result += u'…';
    return result + name.sliced(tailStart);
}

/// Returns the longest of the results of `withKept` that fits; the shortest if none does.
QString cutBesideDifference(const QString &name,
                            const Shared &shared,
                            const std::function<bool(const QString &)> &fits)
{
    qsizetype fitting = 0;
    qsizetype tooMuch = shared.start + shared.end;
    while (tooMuch - fitting > 1) {
        const qsizetype middle = (fitting + tooMuch) / 2;
        (fits(withKept(name, shared, middle)) ? fitting : tooMuch) = middle;
    }
    return withKept(name, shared, fitting);
}

/// Cuts the names at the indexes beside their difference, unless all of them are the same.
void tellApart(QStringList &shown,
               const QList<qsizetype> &indexes,
               const QStringList &names,
               const std::function<QString(qsizetype, const QString &)> &elided)
{
    QStringList group;
    for (const qsizetype i : indexes)
        group << names.at(i);
    if (group.count(group.first()) == group.size())
        return;
    const Shared shared = sharedBy(group);
    for (const qsizetype i : indexes) {
        const auto fits = [&](const QString &name) { return elided(i, name) == name; };
        shown[i] = elided(i, cutBesideDifference(names.at(i), shared, fits));
    }
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

QStringList
distinctNames(const QStringList &names,
              const std::function<QString(qsizetype index, const QString &name)> &elided)
{
    QStringList shown;
    QHash<QString, QList<qsizetype>> alike;
    for (qsizetype i = 0; i < names.size(); ++i) {
        shown << elided(i, names.at(i));
        if (shown.last() != names.at(i))
            alike[shown.last()] << i;
    }
    for (const QList<qsizetype> &indexes : std::as_const(alike))
        tellApart(shown, indexes, names, elided);
    return shown;
}

} // namespace penwick

#include "platform/settings/SystemTimeZone.h"

#include "platform/files/FileSystem.h"
#include "platform/files/FileVersion.h"

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <ctime>
#include <optional>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

const QString kDatabase = QStringLiteral("/usr/share/zoneinfo/");
constexpr qint64 kDay = 86'400; // In seconds.

/// What the C library takes local times from: a file, which need not exist, or nothing for UTC. A
/// rule looks like the path of a missing file.
QString zoneFile()
{
    if (!qEnvironmentVariableIsSet("TZ"))
        return u"/etc/localtime"_s;
    QString value = QString::fromLocal8Bit(qgetenv("TZ"));
    if (value.startsWith(u':'))
        value.remove(0, 1);
    if (value.isEmpty() || value.startsWith(u'/'))
        return value;
    return kDatabase + value;
}

/// Returns the name of a file of the database, else nothing.
QByteArray nameOf(QString path)
{
    if (!path.startsWith(kDatabase))
        path = QFileInfo(path).canonicalFilePath();
    if (!path.startsWith(kDatabase) || !QFileInfo(path).isFile())
        return {};
    QStringView name = QStringView(path).sliced(kDatabase.size());
    // The same zones once more, in other clocks' terms.
    for (const QStringView folder : {u"posix/", u"right/"})
        if (name.startsWith(folder))
            name = name.sliced(folder.size());
    return name.toLatin1();
}

/// The zones of the database, those of a fixed offset first. Of zones that are the same since 1970
/// there is one.
QByteArrayList databaseNames()
{
    QByteArrayList names{"UTC"};
    for (int hours = -14; hours <= 12; ++hours) // East of Greenwich is negative in these names.
        names << "Etc/GMT" + QByteArray(hours < 0 ? "" : "+") + QByteArray::number(hours);
    const auto table = readFile(kDatabase + u"zone1970.tab"_s);
    for (const QByteArray &line : table.value_or(QByteArray()).split('\n')) {
        constexpr qsizetype kNameColumn = 2;
        const QByteArrayList columns = line.split('\t');
        if (!line.startsWith('#') && columns.size() > kNameColumn)
            names << columns.at(kNameColumn);
    }
    return names;
}

struct LocalTime
{
    qint64 seconds = 0; ///< Since 1970, in UTC.
    int offset = 0;     ///< Seconds east of Greenwich.
    QByteArray abbreviation;
};

/// The C library's local times, every ten days from then until in a year.
QList<LocalTime> localTimesSince(qint64 begin)
{
    constexpr qint64 kStep = 10 * kDay;
    const qint64 end = QDateTime::currentSecsSinceEpoch() + 366 * kDay;
    QList<LocalTime> times;
    for (qint64 seconds = begin; seconds < end; seconds += kStep) {
        const auto time = static_cast<std::time_t>(seconds);
        std::tm local{};
        if (::localtime_r(&time, &local) != nullptr)
            times.append({seconds, static_cast<int>(local.tm_gmtoff), local.tm_zone});
    }
    return times;
}

QDateTime dateTimeOf(const LocalTime &time)
{
    return QDateTime::fromSecsSinceEpoch(time.seconds, QTimeZone::utc());
}

bool follows(const QTimeZone &zone, const QList<LocalTime> &times)
{
    return zone.isValid() &&
           std::all_of(times.cbegin(), times.cend(), [&zone](const LocalTime &time) {
               return zone.offsetFromUtc(dateTimeOf(time)) == time.offset;
           });
}

bool hasAbbreviation(const QTimeZone &zone, const LocalTime &time)
{
    return zone.abbreviation(dateTimeOf(time)).toLatin1() == time.abbreviation;
}

/// Returns the zone that a copied file is of.
std::optional<QTimeZone> zoneOfCopy(const QString &file, const QByteArrayList &names)
{
    const auto content = readFile(file);
    for (const QByteArray &name : names)
        if (content && readFile(kDatabase + QString::fromLatin1(name)) == content)
            return QTimeZone(name);
    return std::nullopt;
}

/// Returns the zone with the C library's local times: the one that has had them since 1970 under
/// the present abbreviation, as Asia/Tokyo for JST-9, otherwise the first that has them now.
QTimeZone zoneLikeLocalTimes(const QByteArrayList &names)
{
    ::tzset();
    const QList<LocalTime> all = localTimesSince(0);
    const QList<LocalTime> coming = localTimesSince(QDateTime::currentSecsSinceEpoch());
    if (coming.isEmpty())
        return QTimeZone::utc();
    std::optional<QTimeZone> similar;
    for (const QByteArray &name : names) {
        QTimeZone zone(name);
        if (!follows(zone, coming))
            continue;
        if (hasAbbreviation(zone, coming.first()) && follows(zone, all))
            return zone;
        if (!similar)
            similar = std::move(zone);
    }
    return similar.value_or(QTimeZone(coming.first().offset));
}

QTimeZone unnamedZone(const QString &file)
{
    const QByteArrayList names = databaseNames();
    const auto zone = zoneOfCopy(file, names);
    return zone ? *zone : zoneLikeLocalTimes(names);
}

} // namespace

QTimeZone systemTimeZone()
{
    const QString file = zoneFile();
    if (file.isEmpty())
        return QTimeZone::utc();
    if (const QByteArray name = nameOf(file); !name.isEmpty()) // An empty one is the system's zone.
        if (const QTimeZone zone(name); zone.isValid())
            return zone;

    struct Found
    {
        QString file;
        std::optional<FileVersion> version;
        QTimeZone zone;
    };

    static std::optional<Found> last;
    const auto version = FileVersion::of(file);
    if (!last || last->file != file || last->version != version)
        last = Found{file, version, unnamedZone(file)};
    return last->zone;
}

} // namespace penwick

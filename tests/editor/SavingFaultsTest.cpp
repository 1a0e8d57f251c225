#include "editor/TextDocument.h"
#include "platform/files/FileSystem.h"
#include "platform/files/SafeCopy.h"
#include "support/InterceptedProcess.h"
#include "support/TemporaryHome.h"

#include <QDirIterator>
#include <QRandomGenerator>
#include <QTest>

#include <chrono>
#include <grp.h>
#include <sys/stat.h>
#include <thread>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

constexpr uid_t kUnprivilegedUser = 65534;

/// How a save writes the file.
enum class Way {
    NewFile,      ///< The file does not exist yet.
    WithoutAName, ///< Through an unnamed file that then replaces the old one.
    WithAName,    ///< Through a named file, because the file system supports no unnamed one.
    LateName,     ///< As above, but the failure occurs only when the unnamed file gets its name.
    ThroughALink, ///< Through a symbolic link.
    HardLinks,    ///< In place: the file has two names.
    MountPoint,   ///< In place: the file cannot be replaced.
    LockedFolder, ///< In place: the folder accepts no new file. The safety copy is elsewhere.
    ForeignOwner, ///< In place: a new file would belong to another user.
};

struct Outcome
{
    static constexpr int kFailed = 1;
    static constexpr int kEdited = 2;
    static constexpr int kDamaged = 4;
};

/// A file to save, and the behavior of the system around it.
class Case final
{
public:
    Case(Way way, const QByteArray &old)
        : m_way(way)
    {
        ::chmod(QFile::encodeName(m_home.path()).constData(), 0777);
        m_home.write(u"folder/file"_s, old);
        const QByteArray file = QFile::encodeName(this->file());
        const QByteArray folder = QFile::encodeName(m_home.file(u"folder"_s));
        switch (way) {
        case Way::NewFile:
            QFile::remove(this->file());
            break;
        case Way::ThroughALink:
            QFile::link(this->file(), m_home.file(u"link"_s));
            break;
        case Way::HardLinks:
            check(::link(file.constData(), (folder + "/other").constData()));
            break;
        case Way::LockedFolder:
            check(::chown(file.constData(), kUnprivilegedUser, kUnprivilegedUser));
            break;
        case Way::ForeignOwner:
            check(::chmod(folder.constData(), 0777));
            check(::chmod(file.constData(), 0666));
            break;
        default:
            break;
        }
    }

    [[nodiscard]] QString file() const { return m_home.file(u"folder/file"_s); }

    [[nodiscard]] QByteArray content() const { return m_home.read(u"folder/file"_s); }

    [[nodiscard]] bool isInPlace() const { return m_way >= Way::HardLinks; }

    [[nodiscard]] static bool needsRoot(Way way) { return way >= Way::LockedFolder; }

    /// Returns a function that opens the file, edits it and saves it. It returns bits of `Outcome`.
    [[nodiscard]] std::function<int()> saving(const QByteArray &content) const
    {
        const QString path =
            m_way == Way::ThroughALink ? m_home.file(u"link"_s) : m_home.file(u"folder/file"_s);
        const bool isUnprivileged = needsRoot(m_way);
        return [path, isUnprivileged, text = *Text::fromUtf8(content)] {
            if (isUnprivileged &&
                (::setgroups(0, nullptr) != 0 || ::setegid(kUnprivilegedUser) != 0 ||
                 ::seteuid(kUnprivilegedUser) != 0))
                return 255;
            return save(path, text);
        };
    }

    /// The result of a call without an injected fault; 0 allows the call.
    [[nodiscard]] int answerTo(const SystemCall &call) const
    {
        const auto flags = call.arguments[2];
        const bool isRename =
#ifdef SYS_rename
            call.number == SYS_rename ||
#endif
            call.number == SYS_renameat || (call.number == SYS_renameat2 && call.arguments[4] == 0);
        switch (m_way) {
        case Way::WithAName:
            return call.number == SYS_openat && (flags & O_TMPFILE) == O_TMPFILE ? EOPNOTSUPP : 0;
        case Way::LateName:
            return call.number == SYS_linkat ? EPERM : 0;
        case Way::MountPoint:
            return isRename ? EBUSY : 0;
        default:
            return 0;
        }
    }

    /// All files in the home folder, without folders.
    [[nodiscard]] QStringList files() const
    {
        QStringList found;
        QDirIterator all(
            m_home.path(), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (all.hasNext())
            found << all.next();
        found.sort();
        return found;
    }

private:
    static void check(int answer)
    {
        if (answer != 0)
            qFatal("A file could not be prepared.");
    }

    static int save(const QString &path, const Text &text)
    {
        TextDocument document;
        if (QFileInfo::exists(path)) {
            if (!document.readFromFile(path))
                return 254;
        } else {
            document.setFilePath(path);
        }
        document.textStorage()->replaceCharacters({0, document.textStorage()->length()}, text);
        const auto saved = document.writeToFile(path);
        const bool isDamaged = !saved && saved.error().fileErrorKind == FileError::Kind::Damaged;
        return (saved ? 0 : Outcome::kFailed) | (document.isEdited() ? Outcome::kEdited : 0) |
               (isDamaged ? Outcome::kDamaged : 0);
    }

    TemporaryHome m_home;
    Way m_way;
};

QByteArray bytes(char letter, int count)
{
    return QByteArray(count, letter);
}

} // namespace

/// A failure or a kill during a save leaves the file with the old or the new text.
class SavingFaultsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void cleanup() { qunsetenv("TMPDIR"); }

    void eachCall_failing_leavesTheOldTextOrTheNew_data() { addWays(); }

    void eachCall_failing_leavesTheOldTextOrTheNew();

    void eachCall_killedBefore_leavesTheOldTextOrTheNew_data() { addWays(); }

    void eachCall_killedBefore_leavesTheOldTextOrTheNew();

    void randomMoment_killed_leavesTheOldTextOrTheNew_data();

    void randomMoment_killed_leavesTheOldTextOrTheNew();

private:
    static void addWays();
    static void checkAfterKill(const Case &saved, const QStringList &files);

    const QByteArray m_old = bytes('o', 300'000);
    const QByteArray m_new = bytes('n', 270'000);
};

void SavingFaultsTest::initTestCase()
{
#ifdef __SANITIZE_ADDRESS__
    QSKIP("The sanitizer makes calls of its own, and ends the process where one of them fails.");
#endif
}

void SavingFaultsTest::init()
{
    // In-memory files suffice for thousands of saves, but not for the kills at random moments.
    const bool isEnumerating = QByteArray(QTest::currentTestFunction()).startsWith("eachCall");
    if (isEnumerating && QFileInfo(u"/dev/shm"_s).isWritable())
        qputenv("TMPDIR", "/dev/shm");
}

void SavingFaultsTest::addWays()
{
    QTest::addColumn<Way>("way");
    QTest::newRow("a new file") << Way::NewFile;
    QTest::newRow("by a file without a name") << Way::WithoutAName;
    QTest::newRow("by a file with a name") << Way::WithAName;
    QTest::newRow("by a file that cannot get a name") << Way::LateName;
    QTest::newRow("through a symbolic link") << Way::ThroughALink;
    QTest::newRow("in place, hard links") << Way::HardLinks;
    QTest::newRow("in place, mount point") << Way::MountPoint;
    if (::geteuid() == 0) {
        QTest::newRow("in place, locked folder") << Way::LockedFolder;
        QTest::newRow("in place, foreign owner") << Way::ForeignOwner;
    }
}

void SavingFaultsTest::eachCall_failing_leavesTheOldTextOrTheNew()
{
    QFETCH(Way, way);
    int calls = 0;
    {
        const Case undisturbed(way, m_old);
        const auto end =
            InterceptedProcess::run(undisturbed.saving(m_new), [&](const SystemCall &call) {
                ++calls;
                return undisturbed.answerTo(call);
            });
        QCOMPARE(end.status, 0);
        QVERIFY(undisturbed.content() == m_new);
    }
    QVERIFY(calls > 10);
    int failures = 0;
    for (const int fault : {ENOSPC, EIO, EACCES, EINTR, EROFS}) {
        for (int failing = 0; failing < calls; ++failing) {
            const Case saved(way, m_old);
            const QStringList before = saved.files();
            int count = 0;
            int number = 0;
            const auto end =
                InterceptedProcess::run(saved.saving(m_new), [&](const SystemCall &call) {
                    if (count++ != failing)
                        return saved.answerTo(call);
                    number = call.number;
                    return fault;
                });
            const auto where = QStringLiteral("call %1 (%2) failing with %3, outcome %4")
                                   .arg(failing)
                                   .arg(number)
                                   .arg(fault)
                                   .arg(end.status)
                                   .toUtf8();
            if (end.status == 254)
                continue; // The file could not even be opened.
            const bool hasFailed = (end.status & Outcome::kFailed) != 0;
            failures += hasFailed ? 1 : 0;
            const QByteArray content = saved.content();
            const QByteArray &former = way == Way::NewFile ? QByteArray() : m_old;
            QVERIFY2(content == (hasFailed ? former : m_new), where);
            QVERIFY2(((end.status & Outcome::kEdited) != 0) == hasFailed, where);
            QVERIFY2((end.status & Outcome::kDamaged) == 0, where);
            // The next save removes what this one could not.
            QCOMPARE(InterceptedProcess::runFreely(saved.saving(m_old)).status, 0);
            QVERIFY2(saved.content() == m_old, where);
            QStringList after = saved.files();
            if (way == Way::NewFile)
                after.removeAll(saved.file());
            QVERIFY2(after == before, where + after.join(u' ').toUtf8());
        }
    }
    QVERIFY(failures > 20);
}

/// \param files the files before the save.
void SavingFaultsTest::checkAfterKill(const Case &saved, const QStringList &files)
{
    QStringList left = saved.files();
    for (const QString &file : files)
        left.removeAll(file);
    left.removeAll(saved.file());
    if (!saved.isInPlace()) {
        QVERIFY2(left.isEmpty(), left.join(u' ').toUtf8());
        return;
    }
    // Only the user removes a safety copy of the old text. No other file is left.
    for (const QString &copy : left)
        QVERIFY2(copy.endsWith(u".bak"_s), copy.toUtf8());
}

void SavingFaultsTest::eachCall_killedBefore_leavesTheOldTextOrTheNew()
{
    QFETCH(Way, way);
    bool isKilled = true;
    for (int fatal = 0; isKilled; ++fatal) {
        const Case saved(way, m_old);
        const QStringList before = saved.files();
        int count = 0;
        const auto end = InterceptedProcess::run(saved.saving(m_new), [&](const SystemCall &call) {
            return count++ == fatal ? InterceptedProcess::kKill : saved.answerTo(call);
        });
        isKilled = end.wasKilled;
        const QByteArray content = saved.content();
        bool isWhole = content == m_old || content == m_new;
        isWhole = isWhole || (way == Way::NewFile && content.isNull());
        if (saved.isInPlace() && !isWhole) {
            const QStringList copies = SafeCopy::left(saved.file());
            QCOMPARE(copies.size(), 1);
            isWhole = readFile(copies.first()) == m_old;
        }
        QVERIFY2(isWhole, QByteArray::number(fatal));
        QCOMPARE(InterceptedProcess::runFreely(saved.saving("next")).status, 0);
        QCOMPARE(saved.content(), QByteArray("next"));
        checkAfterKill(saved, before);
        if (QTest::currentTestFailed())
            QFAIL(QByteArray::number(fatal));
    }
}

void SavingFaultsTest::randomMoment_killed_leavesTheOldTextOrTheNew_data()
{
    // The other ways need intercepted system calls.
    QTest::addColumn<Way>("way");
    QTest::newRow("a new file") << Way::NewFile;
    QTest::newRow("by a file without a name") << Way::WithoutAName;
    QTest::newRow("in place, hard links") << Way::HardLinks;
}

void SavingFaultsTest::randomMoment_killed_leavesTheOldTextOrTheNew()
{
    QFETCH(Way, way);
    const QByteArray old = bytes('o', 2'000'000);
    const QByteArray fresh = bytes('n', 1'500'000);
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("Seed %u", seed);
    QRandomGenerator random(seed);
    // The longest time until a kill. It follows the time that a save takes, so that most kills come
    // during a save, and some of them at its end.
    std::chrono::microseconds span(10'000);
    constexpr std::chrono::microseconds kShortest(100);
    constexpr int kKills = 200;
    int struck = 0;
    const Case saved(way, old);
    for (int kill = 0; kill < kKills; ++kill) {
        if (way == Way::NewFile)
            QFile::remove(saved.file());
        else
            QCOMPARE(InterceptedProcess::runFreely(saved.saving(old)).status, 0);
        const auto moment =
            std::chrono::microseconds(random.bounded(static_cast<qint64>(span.count())));
        const auto end = InterceptedProcess::runFreely(saved.saving(fresh), [&](pid_t child) {
            std::this_thread::sleep_for(moment);
            ::kill(child, SIGKILL);
        });
        struck += end.wasKilled ? 1 : 0;
        span = end.wasKilled ? span + span / 16 : std::max(span - span / 5, kShortest);
        const QByteArray content = saved.content();
        bool isWhole = content == old || content == fresh;
        isWhole = isWhole || (way == Way::NewFile && content.isNull());
        for (const QString &copy : SafeCopy::left(saved.file())) {
            isWhole = isWhole || readFile(copy) == old;
            QFile::remove(copy); // As the user does after looking at it.
        }
        QVERIFY2(isWhole, QByteArray::number(kill));
    }
    QVERIFY2(struck > kKills / 10, QByteArray::number(struck));
    QCOMPARE(InterceptedProcess::runFreely(saved.saving("next")).status, 0);
    QStringList expected{saved.file()};
    if (way == Way::HardLinks)
        expected << saved.file().replace(u"folder/file"_s, u"folder/other"_s);
    QStringList left = saved.files();
    left.removeIf([](const QString &path) { return path.endsWith(u"/link"_s); });
    QCOMPARE(left, expected);
}

QTEST_APPLESS_MAIN(SavingFaultsTest)
#include "SavingFaultsTest.moc"

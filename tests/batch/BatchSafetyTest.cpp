#include "support/MacroCommand.h"
#include "support/UnprivilegedUser.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTest>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int kFiles = 100;

/// A macro that takes at least as many milliseconds and replaces each "old" by "new".
QString slowly(int milliseconds)
{
    return u"const until = Date.now() + %1; while (Date.now() < until);"_s.arg(milliseconds) +
           replacing(u"old"_s, u"new"_s);
}

QStringList namesBelow(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                  QDir::NoDotAndDotDot);
}

/// A folder with many files, and what penwick-macro may make of them.
class ManyFiles final
{
public:
    ManyFiles()
    {
        for (int i = 0; i < kFiles; ++i) {
            const QString name = u"f%1"_s.arg(i, 3, 10, QChar(u'0'));
            command.home.write(u"files/"_s + name, oldText());
            m_names << name;
        }
    }

    [[nodiscard]] QStringList arguments(const QString &code) const
    {
        QStringList arguments{u"-i"_s, u"-j3"_s, u"-e"_s, code};
        for (const QString &name : m_names)
            arguments << u"files/"_s + name;
        return arguments;
    }

    static QByteArray oldText() { return QByteArray("old 日本\n").repeated(3000); }

    static QByteArray newText() { return QByteArray("new 日本\n").repeated(3000); }

    /// The number of new files; -1 if one is neither old nor new.
    [[nodiscard]] int newFiles() const
    {
        int count = 0;
        for (const QString &name : m_names) {
            const QByteArray text = command.home.read(u"files/"_s + name);
            if (text != oldText() && text != newText())
                return -1;
            count += text == newText() ? 1 : 0;
        }
        return count;
    }

    /// True when the folder has no other file.
    [[nodiscard]] bool isClean() const
    {
        return namesBelow(command.home.file(u"files"_s)) == m_names;
    }

    MacroCommand command;

private:
    QStringList m_names;
};

/// True when no process has its current folder below `folder`.
bool isWithoutProcesses(const QString &folder)
{
    const QStringList processes = QDir(u"/proc"_s).entryList(QDir::Dirs);
    for (const QString &process : processes)
        if (QFile::symLinkTarget(u"/proc/"_s + process + u"/cwd"_s).startsWith(folder))
            return false;
    return true;
}

/// Starts the program and sends it a signal after a random time.
int endBySignal(const ManyFiles &files, int signal, QRandomGenerator &random)
{
    constexpr int kLongest = 250; // Milliseconds.
    QProcess process;
    files.command.start(process, files.arguments(slowly(2)));
    QTest::qSleep(random.bounded(kLongest));
    ::kill(static_cast<pid_t>(process.processId()), signal);
    if (!process.waitForFinished(kLongWait))
        qFatal("penwick-macro does not end.");
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

/// Until the program handles signals, it ends by them.
bool catchesInterrupts(const QProcess &process)
{
    QFile file(u"/proc/%1/status"_s.arg(process.processId()));
    static_cast<void>(file.open(QIODevice::ReadOnly));
    const QByteArray all = file.readAll();
    const qsizetype at = all.indexOf("SigCgt:");
    return (all.mid(at + 7, 17).trimmed().toULongLong(nullptr, 16) & (1U << (SIGINT - 1))) != 0;
}

/// Runs a command of bash in which `$0` is the program.
Ran runInShell(const MacroCommand &command, const QString &line)
{
    QProcess shell;
    shell.setWorkingDirectory(command.home.path());
    shell.start(u"bash"_s, {u"-c"_s, line, MacroCommand::path()});
    if (!shell.waitForFinished(kLongWait))
        qFatal("The command does not end.");
    return {shell.exitCode(), shell.readAllStandardOutput(), shell.readAllStandardError()};
}

#ifdef __SANITIZE_ADDRESS__ // A process starts much more slowly.
constexpr int kRounds = 4;
#else
constexpr int kRounds = 12;
#endif

} // namespace

/// Tests of what happens to files when something goes wrong.
class BatchSafetyTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void interrupted_anywhere_leavesOldOrNewFiles();
    void killed_anywhere_leavesOldOrNewFiles();
    void interrupted_whileReadingStandardInput_ends();
    void interrupted_asATerminalDoes_saysNothing();
    void terminated_has143();
    void fileChangedMeanwhile_isLeft();
    void noSpace_leavesTheFile();
    void fullDisk_leavesTheFile();
    void folderWithoutNewFiles_isWrittenInPlace();
    void hostileMacro_isStoppedForEachFile();
    void reader_thatEnds_isNoError();
    void messages_forASlowReader_areAllThere();
    void fewThreadsAndFiles_areEnough();
    void closedStreams_areErrors();
    void inputThatDoesNotBlock_isWaitedFor();
    void progress_isOnlyOnATerminal();
};

void BatchSafetyTest::interrupted_anywhere_leavesOldOrNewFiles()
{
    QRandomGenerator random(1);
    for (int i = 0; i < kRounds; ++i) {
        const ManyFiles files;
        const int status = endBySignal(files, SIGINT, random);
        const int newFiles = files.newFiles();
        QVERIFY(newFiles >= 0);
        // Before it handles signals, the program ends by them.
        QVERIFY2(status == 130 || (status == -1 && newFiles == 0) ||
                     (status == 0 && newFiles == kFiles),
                 qPrintable(u"%1 %2"_s.arg(status).arg(newFiles)));
        QVERIFY(files.isClean());
    }
}

void BatchSafetyTest::killed_anywhere_leavesOldOrNewFiles()
{
    QRandomGenerator random(2);
    for (int i = 0; i < kRounds; ++i) {
        const ManyFiles files;
        endBySignal(files, SIGKILL, random);
        QVERIFY(files.newFiles() >= 0);
        QTRY_VERIFY_WITH_TIMEOUT(isWithoutProcesses(files.command.home.path()), kLongWait);
        // The next run also removes what a killed one may have left.
        QCOMPARE(files.command.run(files.arguments(slowly(0))).status, 0);
        QCOMPARE(files.newFiles(), kFiles);
        QVERIFY(files.isClean());
    }
}

void BatchSafetyTest::interrupted_whileReadingStandardInput_ends()
{
    const MacroCommand command;
    QProcess process;
    command.start(process, {u"-e"_s, u"return {};"_s, u"-o"_s, u"out"_s});
    process.write("text");
    process.waitForBytesWritten();
    QTRY_VERIFY_WITH_TIMEOUT(catchesInterrupts(process), kLongWait);
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    QVERIFY(process.waitForFinished(kLongWait));
    QCOMPARE(process.exitCode(), 130);
    QVERIFY(namesBelow(command.home.path()).isEmpty());
}

void BatchSafetyTest::interrupted_asATerminalDoes_saysNothing()
{
    const ManyFiles files;
    QProcess process;
    process.setChildProcessModifier([] { ::setpgid(0, 0); });
    files.command.start(process,
                        {u"-vj2"_s,
                         u"--check"_s,
                         u"-e"_s,
                         u"while (context.file.name !== 'f000');"_s + slowly(300),
                         u"files/f000"_s,
                         u"files/f001"_s});
    process.setReadChannel(QProcess::StandardError);
    QVERIFY(process.waitForReadyRead(kLongWait));
    QVERIFY(process.readLine().startsWith("files/f000: "));
    // The other macro has most probably begun.
    ::kill(-static_cast<pid_t>(process.processId()), SIGINT);
    QVERIFY(process.waitForFinished(kLongWait));
    QCOMPARE(process.exitCode(), 130);
    QCOMPARE(process.readAllStandardError(), QByteArray());
}

void BatchSafetyTest::terminated_has143()
{
    const ManyFiles files;
    QProcess process;
    files.command.start(process, files.arguments(slowly(50)));
    QTRY_VERIFY_WITH_TIMEOUT(files.newFiles() > 0, kLongWait);
    process.terminate();
    QVERIFY(process.waitForFinished(kLongWait));
    QCOMPARE(process.exitCode(), 143);
    QVERIFY(files.isClean());
}

void BatchSafetyTest::fileChangedMeanwhile_isLeft()
{
    const MacroCommand command;
    const QString path = command.home.write(u"a"_s, "old\n");
    QProcess process;
    command.start(process, {u"-i"_s, u"-e"_s, slowly(500), u"a"_s});
    // It is read once, and later it is always another file.
    int changes = 0;
    while (!process.waitForFinished(10)) {
        command.home.write(u"b"_s, "old " + QByteArray::number(++changes) + '\n');
        QCOMPARE(::rename(QFile::encodeName(command.home.file(u"b"_s)).constData(),
                          QFile::encodeName(path).constData()),
                 0);
    }
    QVERIFY(changes > 5);
    QCOMPARE(process.exitCode(), 2);
    QVERIFY(process.readAllStandardError().startsWith("a: "));
    QCOMPARE(command.home.read(u"a"_s), "old " + QByteArray::number(changes) + '\n');
}

void BatchSafetyTest::noSpace_leavesTheFile()
{
    const MacroCommand command;
    command.home.write(u"a"_s, QByteArray("old\n").repeated(10'000));
    command.home.write(u"b"_s, "old\n");
    QProcess process;
    process.setChildProcessModifier([] {
        const rlimit limit{20'000, 20'000};
        setrlimit(RLIMIT_FSIZE, &limit);
    });
    command.start(process, {u"-i"_s, u"-e"_s, slowly(0), u"a"_s, u"b"_s});
    QVERIFY(process.waitForFinished(kLongWait));
    QCOMPARE(process.exitCode(), 2);
    QCOMPARE(command.home.read(u"a"_s), QByteArray("old\n").repeated(10'000));
    QCOMPARE(command.home.read(u"b"_s), "new\n"_ba);
    QCOMPARE(namesBelow(command.home.path()), (QStringList{u"a"_s, u"b"_s}));
}

void BatchSafetyTest::fullDisk_leavesTheFile()
{
    const MacroCommand command;
    const QString folder = command.home.file(u"disk"_s);
    QVERIFY(QDir().mkpath(folder));
    const QByteArray name = QFile::encodeName(folder);
    if (::mount("none", name.constData(), "tmpfs", 0, "size=256k") != 0)
        QSKIP("Only root can mount a small disk.");
    const auto unmount = qScopeGuard([&name] { ::umount2(name.constData(), MNT_DETACH); });
    const QByteArray text = QByteArray("old\n").repeated(40'000); // 160 kB: no second one fits.
    command.home.write(u"disk/a"_s, text);
    for (const QString &option : {u"-i"_s, u"--backup"_s}) {
        const Ran ran = command.run({option, u"-e"_s, slowly(0), u"disk/a"_s});
        QCOMPARE(ran.status, 2);
        QVERIFY(ran.err.startsWith("disk/a: "));
        QVERIFY(command.home.read(u"disk/a"_s) == text);
        QCOMPARE(namesBelow(folder), QStringList{u"a"_s});
    }
}

void BatchSafetyTest::folderWithoutNewFiles_isWrittenInPlace()
{
    if (::geteuid() != 0)
        QSKIP("Only root can take on another user to be refused as.");
    const MacroCommand command;
    const QByteArray file = QFile::encodeName(command.home.write(u"dir/a"_s, "old\n"));
    QCOMPARE(::chown(file.constData(), kUnprivilegedUser, kUnprivilegedUser), 0);
    QProcess process;
    command.startAsOtherUser(process, {u"-i"_s, u"-e"_s, slowly(0), u"dir/a"_s});
    QVERIFY(process.waitForFinished(kLongWait));
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(command.home.read(u"dir/a"_s), "new\n"_ba);
    QCOMPARE(namesBelow(command.home.file(u"dir"_s)), QStringList{u"a"_s});
}

void BatchSafetyTest::hostileMacro_isStoppedForEachFile()
{
    const MacroCommand command;
    QStringList arguments{u"-i"_s,
                          u"-j5"_s,
                          u"--timeout=1"_s,
                          u"-e"_s,
                          u"Array.prototype.map = null; for (;;) console.log('x'.repeat(1e5));"_s};
    for (int i = 0; i < 10; ++i) {
        command.home.write(u"f%1"_s.arg(i), "old\n");
        arguments << u"f%1"_s.arg(i);
    }
    const Ran ran = command.run(arguments);
    QCOMPARE(ran.status, 2);
    QVERIFY(ran.err.size() < 20'000'000);
    for (int i = 0; i < 10; ++i) {
        const QByteArray name = "f" + QByteArray::number(i);
        QCOMPARE(command.home.read(QString::fromUtf8(name)), "old\n"_ba);
        const QByteArrayList lines = ran.err.split('\n');
        QVERIFY(std::any_of(lines.begin(), lines.end(), [&name](const QByteArray &line) {
            return line.startsWith(name + ": ") && !line.contains("xxx") && !line.contains("…");
        }));
    }
}

void BatchSafetyTest::reader_thatEnds_isNoError()
{
    const ManyFiles files;
    QProcess shell;
    shell.setWorkingDirectory(files.command.home.path());
    shell.start(u"bash"_s,
                {u"-c"_s,
                 u"\"$0\" -l -e \"$1\" files/* | head -n 1; echo ${PIPESTATUS[0]}"_s,
                 MacroCommand::path(),
                 slowly(5)});
    QVERIFY(shell.waitForFinished(kLongWait));
    const QByteArrayList lines = shell.readAllStandardOutput().split('\n');
    QCOMPARE(lines.value(0), "files/f000"_ba);
    QCOMPARE(lines.value(1), QByteArray::number(128 + SIGPIPE));
    QCOMPARE(shell.readAllStandardError(), QByteArray());
}

void BatchSafetyTest::messages_forASlowReader_areAllThere()
{
    const MacroCommand command;
    command.home.write(u"a"_s, "old\n");
    // More than a pipe holds.
    const Ran ran = runInShell(command,
                               u"\"$0\" --check -e 'for (let i = 0; i < 3000; ++i)"
                               " console.log(\"x\".repeat(99)); return {}' a 2>&1 |"
                               " (sleep 0.5; grep -c 'a: xxx')"_s);
    QCOMPARE(ran.out, "3000\n"_ba);
}

void BatchSafetyTest::fewThreadsAndFiles_areEnough()
{
    const ManyFiles files;
    const Ran few = runInShell(
        files.command,
        u"ulimit -n 24; \"$0\" -j64 --diff -e '%1' files/*"_s.arg(slowly(0).replace(u'\'', u'"')));
    QCOMPARE(few.err, QByteArray());
    QCOMPARE(few.status, 0);
    QCOMPARE(few.out.count("\n+++ "), kFiles);

    if (::geteuid() != 0)
        QSKIP("Only root can take on another user, who has no other processes.");
    files.command.copyForOtherUsers();
    const Ran ran = runInShell(
        files.command,
        u"exec setpriv --reuid=%1 --clear-groups bash -c 'ulimit -u 20; "
        "bin/penwick-macro -j64 --check -e \"return {}\" files/*'"_s.arg(kUnprivilegedUser));
    QVERIFY2(ran.status == 0 || ran.status == 2, ran.err); // It may start no process for macros.
    QVERIFY(!ran.err.contains("terminate"));
}

void BatchSafetyTest::closedStreams_areErrors()
{
    const MacroCommand command;
    command.home.write(u"a"_s, "old\n");
    const Ran output = runInShell(command, u"\"$0\" -e 'return {}' a >&-"_s);
    QCOMPARE(output.status, 2);
    QVERIFY(output.err.startsWith("penwick-macro: "));
    QCOMPARE(runInShell(command, u"\"$0\" -e 'return {}' <&-"_s).status, 2);
    QCOMPARE(runInShell(command, u"\"$0\" -e 'return {}' no 2>&-"_s).status, 2);
    const Ran all = runInShell(
        command, u"\"$0\" -i -e '%1' a <&- >&- 2>&-"_s.arg(slowly(0).replace(u'\'', u'"')));
    QCOMPARE(all.status, 0);
    QCOMPARE(command.home.read(u"a"_s), "new\n"_ba);
}

void BatchSafetyTest::inputThatDoesNotBlock_isWaitedFor()
{
    const MacroCommand command;
    int pipe[2];
    QCOMPARE(::pipe2(pipe, O_CLOEXEC | O_NONBLOCK), 0);
    QProcess process;
    process.setChildProcessModifier([&pipe] { ::dup2(pipe[0], STDIN_FILENO); });
    command.start(process, {u"-e"_s, slowly(0)});
    QTRY_VERIFY_WITH_TIMEOUT(catchesInterrupts(process), kLongWait);
    QVERIFY(!process.waitForFinished(200)); // It waits for more.
    QCOMPARE(::write(pipe[1], "old\n", 4), ssize_t{4});
    ::close(pipe[1]);
    QVERIFY(process.waitForFinished(kLongWait));
    ::close(pipe[0]);
    QCOMPARE(process.readAllStandardOutput(), "new\n"_ba);
    QCOMPARE(process.exitCode(), 0);
}

void BatchSafetyTest::progress_isOnlyOnATerminal()
{
    const MacroCommand command;
    for (const char *name : {"a", "b", "c"})
        command.home.write(QString::fromLatin1(name), "old\n");
    const QStringList arguments{u"-l"_s, u"-j1"_s, u"-e"_s, slowly(700), u"a"_s, u"b"_s, u"c"_s};
    QCOMPARE(command.run(arguments).err, QByteArray());

    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    QVERIFY(terminal >= 0 && ::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
    const QByteArray other = ::ptsname(terminal);
    QProcess process;
    process.setChildProcessModifier(
        [&other] { ::dup2(::open(other.constData(), O_RDWR | O_NOCTTY), STDERR_FILENO); });
    command.start(process, arguments);
    QVERIFY(process.waitForFinished(kLongWait));
    QCOMPARE(process.readAllStandardOutput(), "a\nb\nc\n"_ba);
    QByteArray shown(65'536, '\0');
    ::fcntl(terminal, F_SETFL, O_NONBLOCK);
    shown.truncate(std::max<qint64>(
        0, ::read(terminal, shown.data(), static_cast<std::size_t>(shown.size()))));
    ::close(terminal);
    QVERIFY2(shown.contains("\r1/3 "), shown);
    QVERIFY2(shown.contains("  c\x1b[K"), shown); // The name.
    QVERIFY(shown.endsWith("\r\x1b[K"));          // It is removed at the end.
}

QTEST_GUILESS_MAIN(BatchSafetyTest)
#include "BatchSafetyTest.moc"

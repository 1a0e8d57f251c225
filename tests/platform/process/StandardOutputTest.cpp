#include "platform/process/StandardOutput.h"

#include "support/CapturedOutput.h"

#include <QTest>

#include <cstdio>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

/// Redirects standard error into a pipe while this lives.
class Redirection final
{
public:
    Redirection()
    {
        if (::pipe(m_pipe) != 0)
            qFatal("There is no pipe.");
        m_former = ::dup(STDERR_FILENO);
        ::dup2(m_pipe[1], STDERR_FILENO);
    }

    ~Redirection()
    {
        ::dup2(m_former, STDERR_FILENO);
        for (const int descriptor : {m_former, m_pipe[0], m_pipe[1]})
            ::close(descriptor);
    }

    Q_DISABLE_COPY_MOVE(Redirection)

    /// Reads everything that is in the pipe.
    [[nodiscard]] QByteArray read() const
    {
        int size = 0;
        ::ioctl(m_pipe[0], FIONREAD, &size);
        QByteArray bytes(size, Qt::Uninitialized);
        return ::read(m_pipe[0], bytes.data(), static_cast<std::size_t>(size)) == size
                   ? bytes
                   : QByteArray();
    }

private:
    int m_pipe[2] = {-1, -1};
    int m_former = -1;
};

} // namespace

class StandardOutputTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void writeAnswer_longText_isWhole()
    {
        const QByteArray text(300'000, 'x');
        CapturedOutput output;
        const auto written = writeStandardOutput(text);
        const QByteArray taken = output.take();
        QVERIFY(written);
        QVERIFY(taken == text);
    }

    void writeAnswer_fullDisk_fails()
    {
        const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
        if (full < 0)
            QSKIP("This system has no file that is always full.");
        std::fflush(stdout);
        const int former = ::dup(STDOUT_FILENO);
        ::dup2(full, STDOUT_FILENO);
        const auto written = writeStandardOutput("answer\n");
        ::dup2(former, STDOUT_FILENO);
        ::close(former);
        ::close(full);
        QVERIFY(!written);
        QCOMPARE(written.error().kind, FileError::Kind::NoSpace);
    }

    void printLine_anyText_isOneFlushedLine()
    {
        CapturedOutput output;
        printLine(u"one: 日本語"_s);
        printLine(u"two\nof\r\nthem"_s);
        printLine({});
        QCOMPARE(output.take(), "one: 日本語\ntwo of  them\n\n"_ba);
    }

    void writeErrorLine_pipe_takesAnyText()
    {
        const Redirection redirection;
        writeErrorLine(u"日本語\x1b[1m\n"_s);
        QCOMPARE(redirection.read(), "日本語\x1b[1m\n\n"_ba);
    }

    void writeErrorLine_fullPipe_doesNotBlock()
    {
        const Redirection redirection;
        const QString line(1000, u'x');
        for (int i = 0; i < 5000; ++i)
            writeErrorLine(line);
        // The pipe holds 64 KB, the lines together are about eighty times as long.
        QVERIFY(redirection.read().size() >= 4096);
        // Once the pipe has been read, new lines arrive.
        writeErrorLine(u"again"_s);
        QCOMPARE(redirection.read(), "again\n"_ba);
    }
};

QTEST_APPLESS_MAIN(StandardOutputTest)
#include "StandardOutputTest.moc"

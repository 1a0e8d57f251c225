#include "platform/process/StandardOutput.h"

#include "platform/files/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <poll.h>
#include <unistd.h>

namespace penwick {

namespace {

/// A standard stream. `isStuck` is set when the last attempt timed out: later attempts do not wait
/// until the stream takes output again.
struct Stream
{
    int descriptor;
    std::atomic<bool> isStuck = false;
};

constexpr int kWriteTimeoutMs = 100;
constexpr int kNoTimeout = -1;

bool isReady(Stream &stream, int timeoutMs)
{
    ::pollfd waited{stream.descriptor, POLLOUT, 0};
    const int answer =
        uninterrupted([&] { return ::poll(&waited, 1, stream.isStuck ? 0 : timeoutMs); });
    const bool ready = answer == 1 && (waited.revents & POLLOUT) != 0;
    stream.isStuck = !ready;
    return ready;
}

// Writes in portions that a ready pipe takes without blocking.
void write(Stream &stream, QByteArrayView bytes, int timeoutMs = kWriteTimeoutMs)
{
    while (!bytes.isEmpty() && isReady(stream, timeoutMs)) {
        const auto portion = static_cast<std::size_t>(std::min<qsizetype>(bytes.size(), PIPE_BUF));
        const ::ssize_t written =
            uninterrupted([&] { return ::write(stream.descriptor, bytes.data(), portion); });
        if (written < 0)
            return;
        bytes = bytes.sliced(written);
    }
}

/// Writes to standard output and returns the number of bytes taken, or -1 on failure. Returns 0
/// after it waited for a stream that was full.
::ssize_t writeSome(QByteArrayView bytes)
{
    const auto written = uninterrupted([&] {
        return ::write(STDOUT_FILENO, bytes.data(), static_cast<std::size_t>(bytes.size()));
    });
    if (written >= 0 || (errno != EAGAIN && errno != EWOULDBLOCK))
        return written;
    ::pollfd waited{STDOUT_FILENO, POLLOUT, 0};
    static_cast<void>(uninterrupted([&] { return ::poll(&waited, 1, -1); }));
    return 0;
}

QString withVisibleControls(QString text)
{
    constexpr char16_t kControlPictures = 0x2400;
    for (QChar &c : text) {
        if (c == u'\n' || c == u'\t')
            continue;
        if (c < u' ')
            c = QChar(static_cast<char16_t>(kControlPictures + c.unicode()));
        else if (c >= u'\u007F' && c < u'\u00A0')
            c = QChar::ReplacementCharacter;
    }
    return text;
}

QByteArray errorLine(QStringView text)
{
    const bool isTerminal = ::isatty(STDERR_FILENO) == 1;
    return (isTerminal ? withVisibleControls(text.toString()).toUtf8() : text.toUtf8()) + '\n';
}

} // namespace

tl::expected<void, FileError> writeStandardOutput(QByteArrayView bytes)
{
    std::fflush(stdout);
    while (!bytes.isEmpty()) {
        const auto written = writeSome(bytes);
        if (written < 0)
            return systemError();
        bytes = bytes.sliced(written);
    }
    return {};
}

void printLine(QStringView text)
{
    static Stream stream{STDOUT_FILENO};
    std::fflush(stdout);
    QByteArray line = text.toUtf8();
    write(stream, line.replace('\n', ' ').replace('\r', ' ').append('\n'));
}

void writeErrorLine(QStringView text)
{
    static Stream stream{STDERR_FILENO};
    write(stream, errorLine(text));
}

void writeWholeErrorLine(QStringView text)
{
    Stream stream{STDERR_FILENO};
    write(stream, errorLine(text), kNoTimeout);
}

} // namespace penwick

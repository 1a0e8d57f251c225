#include "batch/ProgressLine.h"

#include "platform/files/FileDescriptor.h"
#include "text/TerminalColumns.h"
#include "wording/WordingLookup.h"

#include <QFile>
#include <QLocale>

#include <algorithm>
#include <sys/ioctl.h>
#include <unistd.h>

namespace penwick {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto kDelay = 1s;
constexpr auto kInterval = 100ms;

void writeToTerminal(const QByteArray &bytes)
{
    static_cast<void>(uninterrupted([&] {
        return ::write(STDERR_FILENO, bytes.constData(), static_cast<std::size_t>(bytes.size()));
    }));
}

int terminalWidth()
{
    constexpr int kUsual = 80;
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : kUsual;
}

/// Minutes and seconds.
QString durationText(std::chrono::seconds duration)
{
    const auto minutes = duration / 1min;
    const auto seconds = (duration % 1min) / 1s;
    return u"%1:%2"_s.arg(minutes).arg(seconds, 2, 10, QChar(u'0'));
}

QString withoutControlCharacters(QString text)
{
    for (QChar &character : text)
        if (character.category() == QChar::Other_Control)
            character = u' ';
    return text;
}

} // namespace

ProgressLine::ProgressLine(bool isEnabled, qsizetype total)
    : m_isEnabled(isEnabled && isatty(STDERR_FILENO) == 1)
    , m_total(total)
{
}

QString ProgressLine::text(qsizetype done, const QByteArray &currentName) const
{
    const double elapsed = std::chrono::duration<double>(Clock::now() - m_start).count();
    const double rate = static_cast<double>(done) / elapsed;
    const QLocale locale = QLocale::c();
    const auto rest = static_cast<double>(m_total - done) / std::max(rate, 1e-3);
    constexpr double kLongest = 359'999; // Seconds; more would be a guess.
    const auto duration = std::chrono::seconds(static_cast<qint64>(std::min(rest + 0.5, kLongest)));
    const QString counts = wording::text(u"batch.progress"_s,
                                         {QString::number(done),
                                          QString::number(m_total),
                                          locale.toString(rate, 'f', rate < 10 ? 1 : 0),
                                          durationText(duration)});
    const int room = terminalWidth() - 1 - terminalColumns(counts) - 2;
    constexpr int kLeastRoom = 8;
    if (room < kLeastRoom)
        return endWithinColumns(counts, terminalWidth() - 1);
    const QString name = withoutControlCharacters(QFile::decodeName(currentName));
    return counts + u"  "_s + endWithinColumns(name, room);
}

void ProgressLine::show(qsizetype done, const QByteArray &currentName)
{
    const auto now = Clock::now();
    const bool isDue = m_isVisible ? now - m_lastShown >= kInterval : now - m_start >= kDelay;
    if (!m_isEnabled || !isDue)
        return;
    m_lastShown = now;
    m_isVisible = true;
    writeToTerminal("\r" + text(done, currentName).toUtf8() + "\x1b[K");
}

void ProgressLine::hide()
{
    if (m_isVisible)
        writeToTerminal("\r\x1b[K");
    m_isVisible = false;
}

} // namespace penwick

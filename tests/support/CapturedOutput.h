#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <cstdio>
#include <unistd.h>

namespace penwick::test {

/// Captures what the process writes to standard output or standard error, from construction until
/// `take` or destruction. Keep its lifetime short: it also captures what the test framework reports
/// meanwhile.
class CapturedOutput final
{
public:
    /// \param stream stdout or stderr.
    explicit CapturedOutput(std::FILE *stream = stdout)
        : m_stream(stream)
        , m_file(std::tmpfile())
    {
        std::fflush(m_stream);
        m_former = dup(fileno(m_stream));
        if (m_file == nullptr || m_former < 0 || dup2(fileno(m_file), fileno(m_stream)) < 0)
            qFatal("The output could not be captured.");
    }

    CapturedOutput(const CapturedOutput &) = delete;
    CapturedOutput &operator=(const CapturedOutput &) = delete;

    ~CapturedOutput() { release(); }

    /// Returns what was written so far, and ends the capture. Buffered output that the code under
    /// test has not flushed is missing.
    QByteArray take()
    {
        QByteArray text;
        std::rewind(m_file);
        char part[4096];
        while (const size_t count = std::fread(part, 1, sizeof part, m_file))
            text.append(part, static_cast<qsizetype>(count));
        release();
        return text;
    }

    /// As `take`, split into lines without their line ends.
    QByteArrayList takeLines()
    {
        QByteArrayList lines = take().split('\n');
        if (lines.constLast().isEmpty())
            lines.removeLast();
        return lines;
    }

private:
    void release()
    {
        if (m_former < 0)
            return;
        std::fflush(m_stream);
        dup2(m_former, fileno(m_stream));
        close(m_former);
        std::fclose(m_file);
        m_former = -1;
    }

    std::FILE *m_stream;
    std::FILE *m_file;
    int m_former = -1;
};

} // namespace penwick::test

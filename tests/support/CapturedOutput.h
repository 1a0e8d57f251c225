#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <cstdio>
#include <unistd.h>

namespace penwick::test {

/// Takes what the process writes to standard output or standard error, from its creation until
/// `take` or its end. Keep its life short: what the test itself reports meanwhile is taken as well.
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

    /// What was written to the system so far; nothing is taken any more after this. Only what the
    /// code under test has flushed is there.
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

    /// `take`, by lines without their ends.
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

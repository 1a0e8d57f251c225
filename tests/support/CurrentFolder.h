#pragma once

#include <QByteArray>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace penwick::test {

/// Creates a folder and makes it the current one while this lives. The test may remove the folder
/// earlier; the destructor removes it if it is empty.
class CurrentFolder final
{
public:
    /// \param path absolute; its parent folder exists.
    explicit CurrentFolder(const QByteArray &path)
        : m_path(path)
        , m_former(::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        ::mkdir(path.constData(), S_IRWXU);
        if (m_former < 0 || ::chdir(path.constData()) != 0)
            qFatal("The current folder could not be changed.");
    }

    CurrentFolder(const CurrentFolder &) = delete;
    CurrentFolder &operator=(const CurrentFolder &) = delete;

    ~CurrentFolder()
    {
        if (::fchdir(m_former) != 0)
            qFatal("The former folder is gone.");
        ::close(m_former);
        ::rmdir(m_path.constData());
    }

private:
    QByteArray m_path;
    int m_former;
};

} // namespace penwick::test

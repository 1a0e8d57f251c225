#include "batch/UnifiedDiff.h"

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileWriter.h"
#include "platform/process/SpawnTexts.h"

#include <QByteArrayList>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace penwick {

namespace {

// The descriptors that the program finds open.
constexpr int kBefore = 3;
constexpr int kAfter = 4;
constexpr int kFirstFree = 5;

/// Creates an unnamed file in memory, with a descriptor that the program does not use.
FileDescriptor makeFile()
{
    const FileDescriptor file(memfd_create("penwick-diff", MFD_CLOEXEC));
    return FileDescriptor(file.isOpen() ? fcntl(file.get(), F_DUPFD_CLOEXEC, kFirstFree) : -1);
}

bool writeText(int descriptor, const Text &text)
{
    FileWriter writer(descriptor);
    return text.forEachUtf8Block([&writer](QByteArrayView block) { return writer.write(block); }) &&
           writer.flush() && lseek(descriptor, 0, SEEK_SET) == 0;
}

QByteArray contentOf(int descriptor)
{
    QFile file;
    const bool isOpen = lseek(descriptor, 0, SEEK_SET) == 0 &&
                        file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered);
    return isOpen ? file.readAll() : QByteArray();
}

/// The environment with English messages: tools that read a diff may know no others.
std::vector<std::string> environment()
{
    std::vector<std::string> variables{"LC_ALL=C"};
    for (char **variable = environ; *variable != nullptr; ++variable)
        if (std::strncmp(*variable, "LC_ALL=", 7) != 0)
            variables.emplace_back(*variable);
    return variables;
}

/// Runs `diff` and returns its exit status; 127 when it cannot be started.
int runDiff(int before, int after, int output)
{
    constexpr int kNotStarted = 127;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, before, kBefore);
    posix_spawn_file_actions_adddup2(&actions, after, kAfter);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    // -a: otherwise a control character makes a text a binary file.
    std::vector<std::string> arguments{"diff", "-u", "-a", "/dev/fd/3", "/dev/fd/4"};
    std::vector<std::string> variables = environment();
    pid_t process = -1;
    const int error = posix_spawnp(&process,
                                   "diff",
                                   &actions,
                                   nullptr,
                                   pointersTo(arguments).data(),
                                   pointersTo(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (error != 0 || uninterrupted([&] { return waitpid(process, &status, 0); }) < 0)
        return kNotStarted;
    return WIFEXITED(status) ? WEXITSTATUS(status) : kNotStarted;
}

bool needsQuotes(const QByteArray &name)
{
    return std::any_of(name.begin(), name.end(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' || c == '"' || c == '\\' || c == '\x7f';
    });
}

/// The path in a header line. A blank in it is marked by a final tab, so that it is not taken for
/// the end of the name.
QByteArray headerPath(const QByteArray &path)
{
    if (!needsQuotes(path))
        return path.contains(' ') ? path + '\t' : path;
    QByteArray quoted = "\"";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            quoted += QByteArray("\\") + c;
        else if (byte < ' ' || c == '\x7f')
            quoted += '\\' + QByteArray::number(byte, 8).rightJustified(3, '0');
        else
            quoted += c;
    }
    return quoted + '"';
}

/// Leaves out what makes tools refuse a path: slashes at its start, and folders named ".".
QByteArray headerOf(const QByteArray &path)
{
    QByteArrayList parts = path.split('/');
    parts.removeAll(QByteArray());
    parts.removeAll(".");
    const QByteArray name = parts.join('/');
    return "--- " + headerPath("a/" + name) + "\n+++ " + headerPath("b/" + name) + '\n';
}

} // namespace

tl::expected<QByteArray, FileError>
unifiedDiff(const QByteArray &name, const Text &before, const Text &after)
{
    const FileDescriptor files[] = {makeFile(), makeFile(), makeFile()};
    for (const FileDescriptor &file : files)
        if (!file.isOpen())
            return systemError();
    if (!writeText(files[0].get(), before) || !writeText(files[1].get(), after))
        return systemError();
    constexpr int kTrouble = 2;
    const int status = runDiff(files[0].get(), files[1].get(), files[2].get());
    if (status >= kTrouble)
        return tl::unexpected(FileError::fromErrno(ENOENT));
    const QByteArray output = contentOf(files[2].get());
    const qsizetype first = output.indexOf("\n@@ ");
    return first < 0 ? QByteArray() : headerOf(name) + output.sliced(first + 1);
}

} // namespace penwick

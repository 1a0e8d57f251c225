#pragma once

#include "support/TemporaryHome.h"
#include "support/UnprivilegedUser.h"
#include "support/Waits.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QStringList>

#include <sys/stat.h>
#include <unistd.h>

namespace penwick::test {

/// How a run of penwick-macro ended.
struct Ran
{
    int status = -1; ///< -1 if a signal ended it.
    QByteArray out;
    QByteArray err;
};

/// Runs the real program in a home of its own, which is also its current folder.
class MacroCommand final
{
public:
    Ran run(const QStringList &arguments, const QByteArray &input = {}) const
    {
        QProcess process;
        start(process, arguments);
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished(kLongWait))
            qFatal("penwick-macro does not end.");
        const bool isNormal = process.exitStatus() == QProcess::NormalExit;
        return {isNormal ? process.exitCode() : -1,
                process.readAllStandardOutput(),
                process.readAllStandardError()};
    }

    void start(QProcess &process, const QStringList &arguments) const
    {
        process.setWorkingDirectory(home.path());
        process.start(path(), arguments);
        if (!process.waitForStarted())
            qFatal("penwick-macro cannot be started.");
    }

    /// Copies the program to `bin/penwick-macro` in the home folder, where every user may run it,
    /// and read and write.
    void copyForOtherUsers() const
    {
        const QDir programs = QFileInfo(path()).dir();
        const QString copies = home.path() + QStringLiteral("/bin");
        QDir().mkpath(copies);
        for (const QString &name :
             {QStringLiteral("penwick-macro"), QStringLiteral("penwick-script-host")})
            QFile::copy(programs.filePath(name), copies + u'/' + name);
        ::chmod(QFile::encodeName(home.path()).constData(), 0777);
    }

    /// Starts it as a user who owns none of the files; without root, as the current user.
    void startAsOtherUser(QProcess &process, const QStringList &arguments) const
    {
        copyForOtherUsers();
        process.setChildProcessModifier([] {
            if (::geteuid() == 0 &&
                (::setgid(kUnprivilegedUser) != 0 || ::setuid(kUnprivilegedUser) != 0))
                _exit(99);
        });
        process.setWorkingDirectory(home.path());
        process.start(home.path() + QStringLiteral("/bin/penwick-macro"), arguments);
        if (!process.waitForStarted())
            qFatal("penwick-macro cannot be started as another user.");
    }

    static QString path()
    {
        return QDir(QCoreApplication::applicationDirPath())
            .filePath(QStringLiteral("../bin/penwick-macro"));
    }

    TemporaryHome home;
};

/// The code of a macro that replaces each text by another.
inline QString replacing(const QString &from, const QString &to)
{
    return QStringLiteral("return {textEdits: [{type: 'replaceAll', "
                          "text: context.document.text.replaceAll('%1', '%2')}]};")
        .arg(from, to);
}

} // namespace penwick::test

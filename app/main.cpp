#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/ScriptHostReport.h"
#include "macro/script/ScriptHostPool.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QPixmap>

#include <csignal>
#include <cstdio>
#include <optional>

namespace {

using penwick::CommandLine;
using namespace Qt::StringLiterals;

constexpr int kUsageError = 2;
constexpr int kHostStartTime = 5000; // Milliseconds, far more than it takes.

void writeLine(std::FILE *stream, const QString &line)
{
    const QByteArray bytes = line.toLocal8Bit() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
}

/// Answers what needs no window, so that it works without a display too.
std::optional<int> answerWithoutWindow(const CommandLine &commandLine)
{
    switch (commandLine.request) {
    case CommandLine::Request::ShowHelp:
        writeLine(stdout, CommandLine::helpText());
        return 0;
    case CommandLine::Request::ShowVersion:
        writeLine(stdout, CommandLine::versionText());
        writeLine(stdout,
                  penwick::scriptHostReport(
                      penwick::ScriptHostPool::shared().protection(kHostStartTime)));
        return 0;
    case CommandLine::Request::RejectOption:
        writeLine(stderr,
                  u"penwick: "_s +
                      penwick::wording::text(u"cli.unknownOption"_s, u"不明なオプションです"_s) +
                      u": "_s + commandLine.rejectedOption);
        return kUsageError;
    case CommandLine::Request::Run:
        break;
    }
    return std::nullopt;
}

/// Not from the icon theme: reading that takes longer than all else of an icon, and where penwick
/// is installed, desktops take the icon of its desktop entry anyway.
QIcon windowIcon()
{
    QIcon icon;
    for (const int size : {16, 32, 48, 128}) {
        icon.addPixmap(QPixmap(u":/penwick/icon/%1.png"_s.arg(size)));
    }
    return icon;
}

} // namespace

int main(int argc, char *argv[])
{
    // Whoever reads our output may go before us; no document is to be lost for a line of a log.
    std::signal(SIGPIPE, SIG_IGN);
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments << QFile::decodeName(argv[i]);
    }
    const CommandLine commandLine = CommandLine::parse(arguments);
    if (const auto status = answerWithoutWindow(commandLine)) {
        return *status;
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"penwick"_s);
    QApplication::setApplicationVersion(QStringLiteral(PENWICK_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral(PENWICK_ID));
    QApplication::setWindowIcon(windowIcon());

    penwick::AppDelegate delegate;
    delegate.applicationDidFinishLaunching(commandLine.files);
    return QApplication::exec();
}

#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/ScriptHostReport.h"
#include "app/StartUp.h"
#include "macro/script/ScriptHostPool.h"
#include "macro/script/StoppableWaiter.h"
#include "platform/BackgroundProcess.h"
#include "platform/StandardOutput.h"
#include "platform/SystemFonts.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QIcon>
#include <QPixmap>

#include <cerrno>
#include <csignal>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace {

using penwick::CommandLine;
using namespace Qt::StringLiterals;

constexpr int kFailure = 1;
constexpr int kUsageError = 2;

int answer(const QString &text)
{
    const auto written = penwick::writeAnswer(text.toLocal8Bit() + '\n');
    if (written) {
        return 0;
    }
    // Whoever reads no further has seen enough.
    if (written.error().errnoValue != EPIPE) {
        penwick::writeErrorLine(
            u"penwick: "_s +
            penwick::wording::text(u"cli.outputUnwritable"_s, u"標準出力に書き込めません"_s) +
            u": "_s + written.error().description());
    }
    return kFailure;
}

penwick::EngineTrial triedEngine()
{
    constexpr int kLongest = 30'000; // Milliseconds; somebody waits for the answer.
    penwick::StoppableWaiter waiter{QDeadlineTimer(kLongest)};
    return penwick::ScriptHostPool::shared().startTrial()(&waiter);
}

/// Answers what needs no window, so that it works without a display too.
std::optional<int> answerWithoutWindow(const CommandLine &commandLine)
{
    switch (commandLine.request) {
    case CommandLine::Request::ShowHelp:
        return answer(CommandLine::helpText());
    case CommandLine::Request::ShowVersion:
        return answer(CommandLine::versionText() + u'\n' +
                      penwick::scriptHostReport(triedEngine()));
    case CommandLine::Request::Reject:
        penwick::writeErrorLine(commandLine.faultText());
        return kUsageError;
    case CommandLine::Request::Run:
        break;
    }
    return std::nullopt;
}

/// What of the command line the toolkit sees, in the form in which it takes it. It keeps pointers
/// to this for as long as it is up.
struct ToolkitArguments
{
    ToolkitArguments(char *program, const QByteArrayList &arguments)
        : bytes(arguments)
    {
        pointers.push_back(program);
        for (QByteArray &argument : bytes) {
            pointers.push_back(argument.data());
        }
        count = static_cast<int>(pointers.size());
        pointers.push_back(nullptr);
    }

    QByteArrayList bytes;
    std::vector<char *> pointers;
    int count = 0;
};

/// Not from the icon theme: reading that takes longer than all else of an icon, and where penwick
/// is installed, desktops take the icon of its desktop entry anyway.
QIcon windowIcon()
{
    QIcon icon;
    for (const int size : {16, 32, 64}) {
        icon.addPixmap(QPixmap(u":/penwick/icon/%1.png"_s.arg(size)));
    }
    return icon;
}

} // namespace

int main(int argc, char *argv[])
{
    // Whoever reads our output may go before us; no document is to be lost for a line of a log.
    std::signal(SIGPIPE, SIG_IGN);
    // Nor for a limit on the size of files, which is then an error like that of a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    penwick::fillStandardStreams();
    QByteArrayList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments << QByteArray(argv[i]);
    }
    const CommandLine commandLine = CommandLine::parse(arguments);
    if (const auto status = answerWithoutWindow(commandLine)) {
        return *status;
    }
    // Before the toolkit comes up, so that handing over to a running penwick costs next to nothing.
    auto start = penwick::startUp(commandLine);
    if (const auto *status = std::get_if<int>(&start)) {
        return *status;
    }
    auto &editor = *std::get_if<penwick::EditorStart>(&start);
    std::optional<penwick::FontPreparation> fonts(std::in_place);
    ToolkitArguments toolkit(argv[0], commandLine.toolkitArguments);
    QApplication application(toolkit.count, toolkit.pointers.data());
    QApplication::setApplicationName(u"penwick"_s);
    QApplication::setApplicationVersion(QStringLiteral(PENWICK_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral(PENWICK_ID));
    QApplication::setWindowIcon(windowIcon());
    fonts.reset(); // From here on texts are measured.

    penwick::AppDelegate delegate;
    if (editor.isInBackground) {
        penwick::leaveStandardStreams();
    }
    if (editor.place) {
        delegate.listenAt(*std::move(editor.place));
    }
    delegate.applicationDidFinishLaunching(editor.request);
    return QApplication::exec();
}

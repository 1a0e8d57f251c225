#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/ScriptHostReport.h"
#include "app/StartUp.h"
#include "macro/script/ScriptHostPool.h"
#include "macro/script/StoppableWaiter.h"
#include "platform/desktop/SystemFonts.h"
#include "platform/process/BackgroundProcess.h"
#include "platform/process/StandardOutput.h"
#include "wording/RememberedProfile.h"
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
    const auto written = penwick::writeStandardOutput(text.toLocal8Bit() + '\n');
    if (written)
        return 0;
    // Print no error for a closed pipe: the reader has stopped on purpose.
    if (written.error().errnoValue != EPIPE) {
        penwick::writeErrorLine(u"penwick: "_s + penwick::wording::text(u"cli.outputUnwritable"_s) +
                                u": "_s + written.error().description());
    }
    return kFailure;
}

penwick::EngineTrial runEngineTrial()
{
    constexpr int kTrialTimeout = 30'000; // Milliseconds; the user waits for the answer.
    penwick::StoppableWaiter waiter{QDeadlineTimer(kTrialTimeout)};
    return penwick::ScriptHostPool::shared().startTrial()(&waiter);
}

/// Handles requests that need no window, so that they work without a display too.
std::optional<int> answerWithoutWindow(const CommandLine &commandLine)
{
    if (commandLine.request != CommandLine::Request::Run)
        penwick::useRememberedProfile();
    switch (commandLine.request) {
    case CommandLine::Request::ShowHelp:
        return answer(CommandLine::helpText());
    case CommandLine::Request::ShowVersion:
        return answer(CommandLine::versionText() + u'\n' +
                      penwick::scriptHostReport(runEngineTrial()));
    case CommandLine::Request::Reject:
        penwick::writeErrorLine(commandLine.faultText());
        return kUsageError;
    case CommandLine::Request::Run:
        break;
    }
    return std::nullopt;
}

/// The toolkit's part of the command line as `argc` and `argv`. The toolkit keeps pointers to it,
/// so it must outlive the application object.
struct ToolkitArguments
{
    ToolkitArguments(char *program, const QByteArrayList &arguments)
        : bytes(arguments)
    {
        pointers.push_back(program);
        for (QByteArray &argument : bytes)
            pointers.push_back(argument.data());
        count = static_cast<int>(pointers.size());
        pointers.push_back(nullptr);
    }

    QByteArrayList bytes;
    std::vector<char *> pointers;
    int count = 0;
};

/// Does not use the icon theme, which takes longer to read than the rest of the icon. Where penwick
/// is installed, desktops use the icon of its desktop entry anyway.
QIcon windowIcon()
{
    QIcon icon;
    for (const int size : {16, 32, 64})
        icon.addPixmap(QPixmap(u":/penwick/icon/%1.png"_s.arg(size)));
    return icon;
}

} // namespace

int main(int argc, char *argv[])
{
    // The reader of our output may end before us; a failed log line must not cost a document.
    std::signal(SIGPIPE, SIG_IGN);
    // A limit on file sizes must not either; it then causes an error like that of a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    penwick::openMissingStandardStreams();
    QByteArrayList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QByteArray(argv[i]);
    const CommandLine commandLine = CommandLine::parse(arguments);
    if (const auto status = answerWithoutWindow(commandLine))
        return *status;
    // Before the toolkit starts, so that handing over to a running penwick is cheap.
    auto start = penwick::startUp(commandLine);
    if (const auto *status = std::get_if<int>(&start))
        return *status;
    auto &editor = *std::get_if<penwick::EditorStart>(&start);
    std::optional<penwick::FontPreparation> fonts(std::in_place);
    ToolkitArguments toolkit(argv[0], commandLine.toolkitArguments);
    QApplication application(toolkit.count, toolkit.pointers.data());
    QApplication::setApplicationName(u"penwick"_s);
    QApplication::setApplicationVersion(QStringLiteral(PENWICK_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral(PENWICK_ID));
    QApplication::setWindowIcon(windowIcon());
    fonts.reset(); // From here on text may be measured, which needs the fonts.

    penwick::AppDelegate delegate;
    if (editor.isInBackground)
        penwick::detachStandardStreams();
    if (editor.place)
        delegate.listenAt(*std::move(editor.place));
    delegate.applicationDidFinishLaunching(editor.request);
    const int status = delegate.requestedEnd() ? *delegate.requestedEnd() : QApplication::exec();
    return status != 0 ? status : delegate.exitStatus();
}

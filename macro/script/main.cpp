#include "macro/script/EngineMemory.h"
#include "macro/script/HostChannel.h"
#include "macro/script/HostSandbox.h"
#include "macro/script/ScriptRunner.h"
#include "wording/WordingLookup.h"

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int kNotForPeople = 2;

int showHelp()
{
    const QString text = penwick::wording::text(
        u"cli.scriptHostHelp"_s,
        u"penwick-script-host は、penwick がマクロを実行するときに使う内部プログラムです。\n"
        "直接起動するためのものではなく、単独では何もしません。"_s);
    const QByteArray bytes = text.toLocal8Bit() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    return 0;
}

// What the engine loads and reserves when it is first used, it cannot load and reserve later on.
// The data of languages is linked in and needs no bringing up, which would take as long as all the
// rest.
void bringEngineUp()
{
    const auto outcome =
        penwick::runScript({u"new Date(0).toString() + /\\p{L}/u.test('a')"_s, std::nullopt}, {});
    static_cast<void>(outcome);
}

// Where the C library starts threads with calls that the sandbox answers by ending the process, it
// is to end now, before it was trusted with a script.
void startThread()
{
    pthread_t thread{};
    const auto work = [](void *) -> void * { return nullptr; };
    if (pthread_create(&thread, nullptr, work, nullptr) == 0)
        pthread_join(thread, nullptr);
}

int serve(penwick::HostChannel &channel, std::size_t memory, penwick::RefusedCalls refused)
{
    // A text too long for a limit that the user has set is then sent through the connection.
    std::signal(SIGXFSZ, SIG_IGN);
    penwick::prepareHostProcess(penwick::kHostDeniedCalls);
    std::setlocale(LC_ALL, "");
    if (!penwick::sendEngine(penwick::engineName(), channel.sink()))
        return EXIT_FAILURE;
    bringEngineUp();
    const penwick::HostProtection protection = penwick::confineProcess(memory, refused);
    startThread();
    if (!penwick::sendReady(protection, channel.sink()))
        return EXIT_FAILURE;
    penwick::takeLargePages();
    const auto request = channel.receiveRequest();
    if (!request)
        return EXIT_SUCCESS; // The editor needs no script to be run any more.
    const auto log = [&channel](const QString &line) {
        // Where nobody listens any more, there is nobody to run a script for.
        if (!penwick::sendLog(line, channel.sink()))
            _exit(EXIT_FAILURE);
    };
    penwick::OutcomeSender sender = channel.outcomeSender();
    const auto end = [&sender](const std::optional<penwick::ScriptError> &error) {
        // Without taking the engine apart: memory goes back to the system faster.
        _exit((error ? sender.fail(*error) : sender.finish()) ? EXIT_SUCCESS : EXIT_FAILURE);
    };
    penwick::evaluateScript(*request, log, {}, {sender, end});
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0)
        return showHelp();
    if (argc != 4)
        return kNotForPeople;
    penwick::HostChannel channel(std::atoi(argv[2]));
    if (!channel.isConnected())
        return kNotForPeople;
    const auto refused = std::strcmp(argv[3], "silent") == 0 ? penwick::RefusedCalls::Silent
                                                             : penwick::RefusedCalls::Reported;
    const int status = serve(channel, std::strtoull(argv[1], nullptr, 10), refused);
    // Without the destructors of what libraries hold: memory goes back to the system faster.
    _exit(status);
}

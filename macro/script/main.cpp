#include "macro/script/EngineMemory.h"
#include "macro/script/HostChannel.h"
#include "macro/script/HostContract.h"
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

constexpr int kNotForDirectUse = 2;
constexpr qsizetype kLargeRequest = qsizetype{1} << 20; // UTF-16 code units.

int showHelp()
{
    const QString text = penwick::wording::text(u"cli.scriptHostHelp"_s);
    const QByteArray bytes = text.toLocal8Bit() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    return 0;
}

// What the engine loads and reserves on first use, it cannot load and reserve in the sandbox.
// Locale data is linked in and needs no initialization, which would take as long as all the rest.
void initializeEngine()
{
    const auto outcome =
        penwick::runScript({u"new Date(0).toString() + /\\p{L}/u.test('a')"_s, std::nullopt}, {});
    static_cast<void>(outcome);
}

// If the C library starts threads with calls for which the sandbox ends the process, that must
// happen here, before the host receives a script.
void startThread()
{
    pthread_t thread{};
    const auto work = [](void *) -> void * { return nullptr; };
    if (pthread_create(&thread, nullptr, work, nullptr) == 0)
        pthread_join(thread, nullptr);
}

struct Service
{
    std::size_t memory = 0; // Bytes that a script may allocate.
    penwick::RefusedCalls refused = penwick::RefusedCalls::Reported;
    bool servesMany = false;
};

void serveRequest(penwick::HostChannel &channel,
                  penwick::ScriptEngine &engine,
                  const penwick::ScriptRequest &request,
                  const Service &service)
{
    const auto log = [&channel](const QString &line) {
        // The editor is gone, so the script is no longer needed.
        if (!penwick::sendText(penwick::MessageKind::Log, line, channel.sink()))
            _exit(EXIT_FAILURE);
    };
    penwick::OutcomeSender sender = channel.outcomeSender();
    const auto end = [&](const std::optional<penwick::ScriptError> &error) {
        const bool isSent = error ? sender.fail(*error) : sender.finish();
        if (service.servesMany && isSent)
            return;
        // The editor still reads the value. Releasing the memory meanwhile would delay that.
        if (isSent)
            channel.waitForEnd();
        // Does not destroy the engine: the kernel releases its memory faster.
        _exit(isSent ? EXIT_SUCCESS : EXIT_FAILURE);
    };
    engine.evaluate(request, log, {}, {sender, end});
}

int serve(penwick::HostChannel &channel, const Service &service)
{
    // A write beyond a file size limit of the user's fails instead of ending the process; the text
    // is then sent through the connection.
    std::signal(SIGXFSZ, SIG_IGN);
    penwick::prepareHostProcess(penwick::kHostDeniedCalls);
    std::setlocale(LC_ALL, "");
    if (!penwick::sendText(penwick::MessageKind::Engine, penwick::engineName(), channel.sink()))
        return EXIT_FAILURE;
    initializeEngine();
    const penwick::HostProtection protection =
        penwick::confineProcess(service.memory, service.refused);
    startThread();
    if (!penwick::sendReady(protection, channel.sink()))
        return EXIT_FAILURE;
    penwick::enableHugePages();
    while (true) {
        // Each script gets an engine of its own, made while the editor has no script yet.
        penwick::ScriptEngine engine;
        const auto request = channel.receiveRequest();
        if (!request)
            return EXIT_SUCCESS; // The editor has no script to run.
        if (request->size() >= kLargeRequest)
            penwick::enableHugePagesInEarlierBlocks();
        serveRequest(channel, engine, *request, service);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0)
        return showHelp();
    if (argc != 5)
        return kNotForDirectUse;
    penwick::HostChannel channel(std::atoi(argv[2]));
    if (!channel.isConnected())
        return kNotForDirectUse;
    Service service{std::strtoull(argv[1], nullptr, 10)};
    if (std::strcmp(argv[3], penwick::kHostIsSilent) == 0)
        service.refused = penwick::RefusedCalls::Silent;
    service.servesMany = std::strcmp(argv[4], penwick::kHostServesMany) == 0;
    const int status = serve(channel, service);
    // Does not run the libraries' destructors: the kernel releases their memory faster.
    _exit(status);
}

#include "app/StartUp.h"

#include "app/HandOver.h"
#include "platform/files/FileSystem.h"
#include "platform/process/BackgroundProcess.h"
#include "platform/process/StandardOutput.h"
#include "text/Utf8.h"
#include "wording/RememberedProfile.h"
#include "wording/WordingLookup.h"

#include <QDeadlineTimer>
#include <QFile>

#include <chrono>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int kFailure = 1;

// The whole start, with what comes before and after, fails within five seconds.
constexpr std::chrono::milliseconds kHandOverTimeout = 4s;
// For an editor process that this one has forked and that must start first.
constexpr std::chrono::milliseconds kForkedEditorTimeout = 30s;

/// Prints the text of a wording key and behind it a detail, if there is one.
void say(const QString &key, const QString &detail = {})
{
    useRememberedProfile(); // Only now: a start without a message need not read it.
    const QString text = u"penwick: "_s + wording::text(key);
    writeErrorLine(detail.isEmpty() ? text : text + u": "_s + detail);
}

int fail(const QString &key, const QString &detail = {})
{
    say(key, detail);
    return kFailure;
}

/// Reads standard input as text. On an error, prints it and returns the exit status.
tl::expected<Text, int> textOfStandardInput()
{
    Utf8Reader reader;
    qint64 size = 0;
    bool isTooLarge = false;
    const auto read = readStandardInput([&](QByteArrayView block) {
        size += block.size();
        isTooLarge = size > kMaxTextBytes;
        return !isTooLarge && reader.append(block);
    });
    if (isTooLarge)
        return tl::unexpected(fail(u"cli.inputTooLarge"_s));
    if (!read && read.error().kind != FileError::Kind::Cancelled)
        return tl::unexpected(fail(u"cli.inputUnreadable"_s, read.error().description()));
    auto text = reader.finish();
    if (!text)
        return tl::unexpected(fail(u"cli.inputNotUtf8"_s));
    return *std::move(text);
}

/// Makes a file name absolute and keeps its bytes, which need not be valid text. On an error,
/// prints it and returns the exit status.
tl::expected<QByteArray, int> absolutePath(const QByteArray &name)
{
    if (name.startsWith('/'))
        return name;
    const auto folder = currentFolder();
    if (!folder)
        return tl::unexpected(fail(u"cli.noCurrentFolder"_s, QFile::decodeName(name)));
    return *folder + '/' + name;
}

tl::expected<OpenRequest, int> requestOf(const CommandLine &commandLine)
{
    OpenRequest request;
    request.newWindow = commandLine.newWindow;
    request.wait = commandLine.wait;
    request.activationToken = qgetenv("XDG_ACTIVATION_TOKEN");
    request.startupId = qgetenv("DESKTOP_STARTUP_ID");
    for (const CommandLine::File &file : commandLine.files) {
        OpenRequest::Item item;
        item.place = file.place;
        if (file.isStandardInput) {
            auto text = textOfStandardInput();
            if (!text)
                return tl::unexpected(text.error());
            item.text = *std::move(text);
        } else {
            auto path = absolutePath(file.name);
            if (!path)
                return tl::unexpected(path.error());
            item.path = *std::move(path);
        }
        request.items.append(std::move(item));
    }
    return request;
}

QString keyOf(const HandOverError &error)
{
    switch (error.kind) {
    case HandOverError::Kind::Abandoned:
        return u"cli.abandoned"_s;
    case HandOverError::Kind::NotAllOpened:
        return u"cli.notAllOpened"_s;
    case HandOverError::Kind::Refused:
        if (error.refusal == Refusal::OtherVersion)
            return u"cli.otherVersion"_s;
        return u"cli.refused"_s;
    default:
        return u"cli.noAnswer"_s;
    }
}

int statusOf(const tl::expected<void, HandOverError> &outcome)
{
    return outcome ? 0 : fail(keyOf(outcome.error()));
}

/// Forks the editor into a process of its own for a request that waits. The waiting process ends
/// when the documents of its request are closed, while the editor keeps running for other
/// documents.
std::variant<EditorStart, int> startInBackground(OpenRequest request, InstancePlace place)
{
    const InstanceAddress address = place.address();
    switch (forkIntoBackground()) {
    case Fork::Child:
        return EditorStart{std::nullopt, std::move(place), true};
    case Fork::Failed:
        return EditorStart{std::move(request), std::move(place), false};
    case Fork::Parent:
        break;
    }
    {
        // Only the child holds the place from now on: if the child fails, nothing listens any more.
        const InstancePlace given = std::move(place);
    }
    const auto stream = LocalSocket::connectTo(address.socket);
    if (!stream)
        return fail(keyOf({HandOverError::Kind::NoAnswer}));
    auto outcome = handOver(request, *stream, kForkedEditorTimeout);
    if (!outcome && outcome.error().kind == HandOverError::Kind::NotTaken)
        return kFailure; // The editor process has reported the reason.
    return statusOf(outcome);
}

EditorStart startAlone(OpenRequest request)
{
    say(u"cli.alone"_s);
    return {std::move(request), std::nullopt, false};
}

using Start = std::variant<EditorStart, int>;

/// Takes the place or hands the request over. No value when the running process ended before it
/// took the request and there is time to try another one.
std::optional<Start> meet(OpenRequest &request, Arrival arrival, const QDeadlineTimer &deadline)
{
    if (auto *place = std::get_if<InstancePlace>(&arrival)) {
        if (request.wait)
            return startInBackground(std::move(request), std::move(*place));
        return EditorStart{std::move(request), std::move(*place), false};
    }
    const auto outcome = handOver(request, *std::get_if<LocalSocket>(&arrival), kHandOverTimeout);
    if (!outcome && outcome.error().kind == HandOverError::Kind::NotTaken && !deadline.hasExpired())
        return std::nullopt;
    return statusOf(outcome);
}

} // namespace

std::variant<EditorStart, int> startUp(const CommandLine &commandLine)
{
    auto request = requestOf(commandLine);
    if (!request)
        return request.error();
    const auto address = InstanceAddress::ofThisDisplay(commandLine.platform, commandLine.display);
    if (!address)
        return startAlone(*std::move(request));
    const QDeadlineTimer deadline(kHandOverTimeout);
    while (true) {
        auto arrival = arriveAt(*address, deadline);
        if (!arrival && arrival.error() == ArrivalError::NoAnswer)
            return fail(keyOf({HandOverError::Kind::NoAnswer}));
        if (!arrival)
            return startAlone(*std::move(request));
        if (auto start = meet(*request, *std::move(arrival), deadline))
            return *std::move(start);
    }
}

} // namespace penwick

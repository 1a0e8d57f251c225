#pragma once

#include "app/HandOver.h"
#include "app/InstancePlace.h"
#include "app/InstanceServer.h"
#include "platform/files/FileLock.h"
#include "support/TemporaryHome.h"
#include "support/Waits.h"

#include <QDeadlineTimer>
#include <QTest>

#include <chrono>
#include <future>
#include <optional>
#include <utility>
#include <variant>

namespace penwick::test {

using Outcome = tl::expected<void, HandOverError>;

constexpr std::chrono::milliseconds kHandOverTimeout{kLongWait};

inline InstanceAddress addressIn(const TemporaryHome &home)
{
    return {home.file(QStringLiteral("i.sock")), home.file(QStringLiteral("i.lock"))};
}

inline std::optional<InstancePlace> takePlace(const InstanceAddress &address)
{
    auto arrival = arriveAt(address, QDeadlineTimer(0));
    if (!arrival || !std::holds_alternative<InstancePlace>(*arrival))
        return std::nullopt;
    return std::get<InstancePlace>(*std::move(arrival));
}

/// Hands `request` over from a thread of its own, in the role of another process.
inline std::future<Outcome> handOverTo(const InstanceAddress &address, const OpenRequest &request)
{
    return std::async(std::launch::async, [address, request]() -> Outcome {
        const auto stream = LocalSocket::connectTo(address.socket);
        if (!stream)
            return tl::unexpected(HandOverError{HandOverError::Kind::NoAnswer});
        return handOver(request, *stream, kHandOverTimeout);
    });
}

/// True when another process or descriptor holds the lock.
inline bool isLocked(const InstanceAddress &address)
{
    const auto file = openLockFile(address.lock);
    return file && !lockExclusively(*file);
}

inline bool isOver(const std::future<Outcome> &outcome)
{
    return outcome.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

inline OpenRequest requestOf(const QByteArray &path, bool wait = false)
{
    OpenRequest request;
    request.items = {{path, std::nullopt, std::nullopt}};
    request.wait = wait;
    return request;
}

/// The role of the running instance: accepts every request and records it.
struct Running
{
    explicit Running(const InstanceAddress &address,
                     std::chrono::milliseconds clientTimeout = kHandOverTimeout)
        : server(*takePlace(address), clientTimeout)
    {
        QObject::connect(&server,
                         &InstanceServer::requested,
                         [this](InstanceClient *client, const OpenRequest &request) {
                             requests << request;
                             clients << client;
                             client->taken();
                         });
    }

    /// True when another process that arrives can hand over a request.
    bool acceptsRequestAt(const InstanceAddress &address)
    {
        const auto former = requests.size();
        auto outcome = std::async(std::launch::async, [address]() -> Outcome {
            const auto met = arriveAt(address, QDeadlineTimer(kHandOverTimeout));
            if (!met || !std::holds_alternative<LocalSocket>(*met))
                return tl::unexpected(HandOverError{HandOverError::Kind::NoAnswer});
            return handOver(requestOf("/a"), std::get<LocalSocket>(*met), kHandOverTimeout);
        });
        return QTest::qWaitFor([&outcome] { return isOver(outcome); }, kLongWait) &&
               outcome.get() && requests.size() == former + 1;
    }

    InstanceServer server;
    QList<OpenRequest> requests;
    QList<InstanceClient *> clients;
};

} // namespace penwick::test

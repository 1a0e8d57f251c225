#include "platform/files/RuntimeFolder.h"
#include "support/RunningInstance.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

using namespace penwick;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using namespace penwick::test;

using Kind = HandOverError::Kind;

namespace {

/// Writes raw bytes to the socket and reads until the peer ends the stream.
QByteArray converse(const InstanceAddress &address, const QByteArray &bytes)
{
    const auto stream = LocalSocket::connectTo(address.socket);
    if (!stream)
        return "no stream";
    static_cast<void>(stream->write(bytes));
    QByteArray answer;
    char piece[256];
    while (stream->waitForReading(QDeadlineTimer(kHandOverTimeout))) {
        const auto count = stream->read(piece, sizeof piece);
        if (!count)
            return answer;
        answer.append(piece, *count);
    }
    return "no end";
}

} // namespace

class InstanceTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void arrive_freePlace_isTakenUntilItIsLeft()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        auto place = takePlace(address);
        QVERIFY(place);
        const auto met = arriveAt(address, QDeadlineTimer(0));
        QVERIFY(met && std::holds_alternative<LocalSocket>(*met));
        InstancePlace::leave(*std::exchange(place, std::nullopt));
        QVERIFY(!QFile::exists(address.socket));
        QVERIFY(takePlace(address));
    }

    void arrive_placeOfOneThatWasKilled_isTaken()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        {
            const auto place = takePlace(address); // Destroyed without leaving: the socket file
                                                   // remains.
            QVERIFY(place);
        }
        QVERIFY(QFile::exists(address.socket));
        QVERIFY(takePlace(address));
    }

    void arrive_fileInTheSocketsPlace_isReplaced()
    {
        const TemporaryHome home;
        home.write(u"i.sock"_s, "no socket");
        QVERIFY(takePlace(addressIn(home)));
    }

    void arrive_lockedWithoutServer_failsAtTheDeadline()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        const auto lock = openLockFile(address.lock);
        QVERIFY(lock && lockExclusively(*lock));
        QElapsedTimer timer;
        timer.start();
        const auto met = arriveAt(address, QDeadlineTimer(100));
        QVERIFY(!met && met.error() == ArrivalError::NoAnswer);
        QVERIFY(timer.elapsed() >= 100);
    }

    void arrive_folderThatIsGone_isUnusable()
    {
        const TemporaryHome home;
        const auto met =
            arriveAt({home.file(u"no/i.sock"_s), home.file(u"no/i.lock"_s)}, QDeadlineTimer(0));
        QVERIFY(!met && met.error() == ArrivalError::Unusable);
    }

    void arrive_pathTooLong_isUnusable()
    {
        const TemporaryHome home;
        const QString name = home.file(QString(150, u'x'));
        const auto met = arriveAt({name + u".sock"_s, name + u".lock"_s}, QDeadlineTimer(0));
        QVERIFY(!met && met.error() == ArrivalError::Unusable);
    }

    void arrive_manyAtOnce_giveOneThePlace()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        constexpr int kRounds = 20;
        constexpr int kArriving = 8;
        for (int round = 0; round < kRounds; ++round) {
            std::atomic<int> waiting = kArriving;
            std::vector<std::future<std::optional<Arrival>>> arrivals;
            for (int i = 0; i < kArriving; ++i) {
                arrivals.push_back(std::async(std::launch::async, [&]() -> std::optional<Arrival> {
                    --waiting;
                    while (waiting > 0)
                        std::this_thread::yield();
                    auto met = arriveAt(address, QDeadlineTimer(kHandOverTimeout));
                    return met ? std::optional(*std::move(met)) : std::nullopt;
                }));
            }
            int places = 0;
            int streams = 0;
            std::vector<std::optional<Arrival>> met; // Keeps the place until all have arrived.
            for (auto &arrival : arrivals) {
                met.push_back(arrival.get());
                QVERIFY(met.back());
                (std::holds_alternative<InstancePlace>(*met.back()) ? places : streams) += 1;
            }
            QCOMPARE(places, 1);
            QCOMPARE(streams, kArriving - 1);
        }
    }

    void socket_permissions_areTheUsersOnly()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        const auto place = takePlace(address);
        const auto others =
            QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        QVERIFY(!(QFile::permissions(address.socket) & others));
        QVERIFY(!(QFile::permissions(address.lock) & others));
    }

    void address_otherDisplay_differs()
    {
        const TemporaryHome home;
        QVERIFY(QDir().mkpath(home.file(u"run"_s)));
        QVERIFY(QFile::setPermissions(home.file(u"run"_s),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        const auto former = qEnvironmentVariable("XDG_RUNTIME_DIR");
        const auto display = qgetenv("DISPLAY");
        const auto platform = qgetenv("QT_QPA_PLATFORM");
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(home.file(u"run"_s)));
        qunsetenv("QT_QPA_PLATFORM");
        const auto at = [](const char *name, const QByteArray &asked = {}) {
            qputenv("DISPLAY", name);
            return *InstanceAddress::ofThisDisplay(asked);
        };
        const auto first = at(":0");
        QVERIFY(first.socket.startsWith(home.file(u"run/penwick-"_s)));
        QCOMPARE(at(":0"), first);
        QCOMPARE(at(":0.0"), first);
        QCOMPARE(at(":0", "xcb"), first);
        QVERIFY(at(":1") != first);
        QVERIFY(at(":0", "offscreen") != first);
        qputenv("DISPLAY", ":2");
        QCOMPARE(*InstanceAddress::ofThisDisplay({}, ":0"), first);
        // A runtime folder with access for other users is not used.
        QVERIFY(QFile::setPermissions(home.file(u"run"_s),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                          QFile::ReadOther | QFile::ExeOther));
        QVERIFY(!at(":0").socket.startsWith(home.path()));
        // A missing folder is created, as the toolkit does later.
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(home.file(u"missing"_s)));
        QVERIFY(at(":0").socket.startsWith(home.file(u"missing/penwick-"_s)));
        qputenv("XDG_RUNTIME_DIR", "relative");
        QVERIFY(at(":0").socket.startsWith(u'/'));
        qputenv("XDG_RUNTIME_DIR", former.toUtf8());
        qputenv("DISPLAY", display);
        qputenv("QT_QPA_PLATFORM", platform);
    }

    void handOver_toARunningOne_isTaken()
    {
        const TemporaryHome home;
        Running running(addressIn(home));
        OpenRequest request = requestOf("/a\xff");
        request.items.append({{}, Text(QString(3'000'000, u'あ')), TextPlace{2, 3}});
        auto outcome = handOverTo(addressIn(home), request);
        QTRY_VERIFY_WITH_TIMEOUT(isOver(outcome), kLongWait);
        QVERIFY(outcome.get());
        QCOMPARE(running.requests.size(), 1);
        QVERIFY(running.requests.first() == request);
    }

    void handOver_thatWaits_endsWhenAllIsClosed()
    {
        const TemporaryHome home;
        Running running(addressIn(home));
        auto outcome = handOverTo(addressIn(home), requestOf("/a", true));
        auto failing = handOverTo(addressIn(home), requestOf("/b", true));
        QTRY_COMPARE_WITH_TIMEOUT(running.clients.size(), 2, kLongWait);
        QTest::qWait(50);
        QVERIFY(!isOver(outcome) && !isOver(failing));
        for (InstanceClient *client : running.clients)
            client->closed(
                running.requests.at(running.clients.indexOf(client)).items.first().path == "/a");
        QVERIFY(outcome.get());
        QVERIFY(failing.get().error().kind == Kind::NotAllOpened);
    }

    void handOver_thatWaits_failsWhenTheRunningOneEnds()
    {
        const TemporaryHome home;
        auto running = std::make_unique<Running>(addressIn(home));
        auto outcome = handOverTo(addressIn(home), requestOf("/a", true));
        QTRY_COMPARE_WITH_TIMEOUT(running->clients.size(), 1, kLongWait);
        running->server.leave(); // Clients that wait keep waiting.
        QTest::qWait(50);
        QVERIFY(!isOver(outcome));
        running.reset();
        QVERIFY(outcome.get().error().kind == Kind::Abandoned);
    }

    void handOver_toOneThatHangs_failsInTime()
    {
        const TemporaryHome home;
        const auto place = takePlace(addressIn(home)); // No server reads from the socket.
        const auto stream = LocalSocket::connectTo(addressIn(home).socket);
        QVERIFY(stream);
        OpenRequest large;
        large.items = {{{}, Text(QString(3'000'000, u'x')), std::nullopt}};
        for (const OpenRequest &request : {requestOf("/a"), large}) {
            QElapsedTimer timer;
            timer.start();
            const auto outcome = handOver(request, *stream, 200ms);
            QVERIFY(!outcome && outcome.error().kind == Kind::NoAnswer);
            QVERIFY(timer.elapsed() >= 200);
        }
    }

    void handOver_toOneThatLeaves_mayBeTriedElsewhere()
    {
        const TemporaryHome home;
        auto place = takePlace(addressIn(home));
        const auto stream = LocalSocket::connectTo(addressIn(home).socket);
        QVERIFY(stream);
        auto outcome = std::async(std::launch::async, [&stream] {
            return handOver(requestOf("/a"), *stream, kHandOverTimeout);
        });
        InstancePlace::leave(*std::exchange(place, std::nullopt)); // The request is sent or not.
        QVERIFY(outcome.get().error().kind == Kind::NotTaken);
    }

    void server_clientThatGaveUp_getsNoReply()
    {
        const TemporaryHome home;
        InstanceServer server(*takePlace(addressIn(home)));
        bool isSent = true;
        QSignalSpy spy(&server, &InstanceServer::requested);
        connect(&server, &InstanceServer::requested, [&isSent](InstanceClient *client) {
            isSent = client->taken();
        });
        {
            const auto stream = LocalSocket::connectTo(addressIn(home).socket);
            QVERIFY(stream && !handOver(requestOf("/a"), *stream, 0ms));
        }
        QTRY_COMPARE(spy.size(), 1);
        QVERIFY(!isSent);
    }

    void server_malformedBytes_areRefused()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        Running running(address);
        std::vector<std::future<QByteArray>> answers;
        for (const QByteArray &noise :
             {QByteArray("GET / HTTP/1.1\r\n\r\n"), QByteArray(100'000, '\xff')}) {
            answers.push_back(std::async(std::launch::async,
                                         [address, noise] { return converse(address, noise); }));
        }
        auto outcome = handOverTo(address, requestOf("/a"));
        QTRY_COMPARE_WITH_TIMEOUT(running.requests.size(), 1, kLongWait);
        QTRY_VERIFY_WITH_TIMEOUT(isOver(outcome), kLongWait);
        QVERIFY(outcome.get());
        for (auto &answer : answers) {
            QTRY_VERIFY_WITH_TIMEOUT(answer.wait_for(0s) == std::future_status::ready, kLongWait);
            ReplyReader reader;
            const QByteArray bytes = answer.get();
            reader.append(bytes);
            const auto reply = reader.next();
            QVERIFY2(reply && *reply, bytes.constData());
            QVERIFY((*reply)->kind == Reply::Kind::Refused);
        }
    }

    void server_silentClient_isDropped()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        Running running(address, 100ms);
        auto answer = std::async(std::launch::async, [address] { return converse(address, "\1"); });
        QTRY_VERIFY_WITH_TIMEOUT(answer.wait_for(0s) == std::future_status::ready, kLongWait);
        QCOMPARE(answer.get(), QByteArray());
    }
};

QTEST_GUILESS_MAIN(InstanceTest)
#include "InstanceTest.moc"

#include "platform/files/FileSystem.h"
#include "platform/files/RuntimeFolder.h"
#include "support/DescriptorLimit.h"
#include "support/RunningInstance.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <future>
#include <sys/stat.h>
#include <vector>

using namespace penwick;
using namespace penwick::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

// Time in milliseconds until a new process starts to watch its place.
constexpr int kUntilItWatches = 1200;

/// Counts how often sockets wake the event loop.
class Wakings final : public QObject
{
public:
    Wakings() { QCoreApplication::instance()->installEventFilter(this); }

    [[nodiscard]] int during(std::chrono::milliseconds time)
    {
        m_count = 0;
        QEventLoop loop;
        QTimer::singleShot(time, &loop, &QEventLoop::quit);
        loop.exec();
        return m_count;
    }

private:
    bool eventFilter(QObject *, QEvent *event) override
    {
        m_count += event->type() == QEvent::SockAct ? 1 : 0;
        return false;
    }

    int m_count = 0;
};

} // namespace

/// Tests of how the running instance stays reachable for later processes.
class InstanceUpkeepTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void files_bearTheMarkThatKeepsCleanersOff()
    {
#ifdef Q_OS_LINUX
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        const auto place = takePlace(address);
        QVERIFY(place);
        for (const QString &path : {address.socket, address.lock}) {
            struct ::stat status = {};
            QVERIFY(::lstat(QFile::encodeName(path).constData(), &status) == 0);
            QVERIFY((status.st_mode & S_ISVTX) != 0);
        }
#else
        QSKIP("Only cleaners of Linux know the mark.");
#endif
    }

    void server_socketTakenAway_isMetAgain()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        Running running(address);
        for (int i = 0; i < 3; ++i) {
            QVERIFY(QFile::remove(address.socket));
            QVERIFY(running.acceptsRequestAt(address));
        }
    }

    void server_lockTakenAway_isLockedAgain()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        Running running(address);
        QTest::qWait(kUntilItWatches);
        QVERIFY(QFile::remove(address.lock));
        QVERIFY(running.acceptsRequestAt(address));
        QTRY_VERIFY_WITH_TIMEOUT(isLocked(address), kLongWait);
    }

    void server_folderTakenAway_isMetAgain()
    {
        const TemporaryHome home;
        const QString folder = home.file(u"run"_s);
        QVERIFY(ensurePrivateFolder(folder));
        const InstanceAddress address{folder + u"/i.sock"_s, folder + u"/i.lock"_s};
        Running running(address);
        for (int i = 0; i < 3; ++i) {
            QVERIFY(QDir(folder).removeRecursively());
            QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(address.socket), kLongWait);
            QVERIFY(isLocked(address));
            QVERIFY(running.acceptsRequestAt(address));
        }
        QCOMPARE(QFile::permissions(folder) & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());
    }

    void server_folderOfOthers_isNotUsed()
    {
        const TemporaryHome home;
        const QString folder = home.file(u"run"_s);
        QVERIFY(ensurePrivateFolder(folder));
        const InstanceAddress address{folder + u"/i.sock"_s, folder + u"/i.lock"_s};
        Running running(address);
        QTest::qWait(kUntilItWatches);
        QVERIFY(QDir(folder).removeRecursively() && QDir().mkdir(folder));
        QVERIFY(QFile::setPermissions(folder, QFile::Permissions(0x7777)));
        QTest::qWait(300);
        QVERIFY(!QFile::exists(address.socket) && !QFile::exists(address.lock));
    }

    void server_placeTakenByAnother_givesWayUntilThatOneLeaves()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        Running first(address);
        QTest::qWait(kUntilItWatches);
        QVERIFY(QFile::remove(address.socket) && QFile::remove(address.lock));
        Running second(address); // Arrives before the first one notices.
        QTest::qWait(500);
        QVERIFY(second.acceptsRequestAt(address));
        QCOMPARE(first.requests.size(), 0);
        // Neither keeps the event loop of the other busy.
        Wakings wakings;
        QVERIFY(wakings.during(1s) < 4);
        second.server.leave();
        // A process that arrives before the first one notices takes the free place.
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(address.socket), kLongWait);
        QVERIFY(first.acceptsRequestAt(address));
    }

    void server_placeTakenByAnother_isNotLeftForIt()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        auto first = std::make_unique<Running>(address);
        QVERIFY(QFile::remove(address.socket) && QFile::remove(address.lock));
        Running second(address);
        first.reset();
        QVERIFY(QFile::exists(address.socket));
        QVERIFY(second.acceptsRequestAt(address));
    }

    void place_filesTakenAwayAllTheTime_staysThatOfOne()
    {
        const TemporaryHome home;
        const InstanceAddress address = addressIn(home);
        std::atomic<bool> isCleaning = true;
        auto cleaning = std::async(std::launch::async, [&] {
            while (isCleaning) {
                static_cast<void>(removeFile(address.socket));
                static_cast<void>(removeFile(address.lock));
            }
        });
        std::vector<std::future<std::optional<Arrival>>> arrivals;
        constexpr int kArriving = 100;
        for (int i = 0; i < kArriving; ++i) {
            arrivals.push_back(
                std::async(std::launch::async, [&address]() -> std::optional<Arrival> {
                    auto met = arriveAt(address, QDeadlineTimer(kHandOverTimeout));
                    return met ? std::optional(*std::move(met)) : std::nullopt;
                }));
        }
        std::vector<InstancePlace> places;
        for (auto &arrival : arrivals) {
            auto met = arrival.get();
            if (met && std::holds_alternative<InstancePlace>(*met))
                places.push_back(std::get<InstancePlace>(*std::move(met)));
        }
        isCleaning = false;
        cleaning.wait();
        QVERIFY(!places.empty());
        QCOMPARE(
            std::count_if(places.begin(), places.end(), [](auto &place) { return place.renew(); }),
            1);
        QCOMPARE(
            std::count_if(places.begin(), places.end(), [](auto &place) { return place.stands(); }),
            1);
    }

    void server_withoutDescriptors_restsAndServesLater()
    {
        const TemporaryHome home;
        Running running(addressIn(home));
        const auto stream = LocalSocket::connectTo(addressIn(home).socket);
        QVERIFY(stream);
        Wakings wakings;
        {
            const DescriptorLimit limit;
            const int count = wakings.during(300ms);
            QVERIFY2(count > 0 && count < 10, QByteArray::number(count).constData());
        }
        auto outcome = std::async(std::launch::async, [&stream] {
            return handOver(requestOf("/a"), *stream, kHandOverTimeout);
        });
        QTRY_VERIFY_WITH_TIMEOUT(isOver(outcome), kLongWait);
        QVERIFY(outcome.get());
    }

    void server_withoutDescriptors_canLeave()
    {
        const TemporaryHome home;
        Running running(addressIn(home));
        const auto stream = LocalSocket::connectTo(addressIn(home).socket);
        QVERIFY(stream);
        Wakings wakings;
        const DescriptorLimit limit;
        QVERIFY(wakings.during(50ms) > 0);
        running.server.leave();
        QCOMPARE(wakings.during(300ms), 0);
    }

    void server_moreThanItHears_restsUntilOneGoes()
    {
        const TemporaryHome home;
        Running running(addressIn(home), 60s);
        constexpr std::size_t kMost = 256;
        std::vector<LocalSocket> silent;
        while (silent.size() < kMost + 1) {
            auto stream = LocalSocket::connectTo(addressIn(home).socket);
            if (stream)
                silent.push_back(*std::move(stream));
            else
                QTest::qWait(1); // The queue of pending connections is full.
        }
        Wakings wakings;
        QVERIFY(wakings.during(100ms) < 10);
        QCOMPARE(wakings.during(200ms), 0);
        auto outcome = std::async(std::launch::async, [&silent] {
            return handOver(requestOf("/a"), silent.back(), kHandOverTimeout);
        });
        silent.erase(silent.begin());
        QTRY_VERIFY_WITH_TIMEOUT(isOver(outcome), kLongWait);
        QVERIFY(outcome.get());
    }
};

QTEST_GUILESS_MAIN(InstanceUpkeepTest)
#include "InstanceUpkeepTest.moc"

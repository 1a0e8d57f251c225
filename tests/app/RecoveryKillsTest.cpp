#include "app/Recovery.h"
#include "support/ChildProcess.h"
#include "support/TemporaryHome.h"
#include "view/TextView.h"
#include "window/EditorWindow.h"

#include <QApplication>
#include <QClipboard>
#include <QCryptographicHash>
#include <QRandomGenerator>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstring>
#include <ctime>
#include <sys/resource.h>
#include <thread>

using namespace penwick;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// Kills a process that edits three files at random moments, and compares what it left with all
// states that its texts were in. PENWICK_RECOVERY_KILLS sets the number of kills, and
// PENWICK_RECOVERY_TIMES=real the times that users have instead of short ones.

namespace {

constexpr int kDocuments = 3;
constexpr qint64 kLongestLoss = 10'000'000'000; // Nanoseconds.
constexpr int kStates = 1 << 18;

qint64 nanoseconds()
{
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

quint64 digestOf(const Text &text)
{
    const QByteArray digest = QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5);
    quint64 number = 0;
    std::memcpy(&number, digest.constData(), sizeof number);
    return number;
}

/// The states of all texts, in a file that both processes map. It outlives the kill.
struct StateLog
{
    struct State
    {
        int document = 0;
        qint64 time = 0; // Since when the text is in this state.
        quint64 digest = 0;
    };

    std::atomic<int> count;
    State states[kStates];

    static StateLog *map(QFile &file)
    {
        const bool isOpen = file.open(QIODevice::ReadWrite) && file.resize(sizeof(StateLog));
        return isOpen ? reinterpret_cast<StateLog *>(file.map(0, sizeof(StateLog))) : nullptr;
    }

    void add(int document, const Text &text)
    {
        const int index = count.load();
        if (index == kStates)
            qFatal("The log of states is full.");
        states[index] = {document, nanoseconds(), digestOf(text)};
        count.store(index + 1);
    }
};

/// Does at random what users do to a text.
class Model final
{
public:
    Model(DocumentController &documents, quint32 seed)
        : m_documents(documents)
        , m_random(seed)
    {
    }

    void act()
    {
        const auto controller = m_documents.windowControllers().at(m_random.bounded(kDocuments));
        if (controller->isRunningMacro())
            return;
        TextView *view = controller->textView();
        view->setSelectedRange({m_random.bounded(view->string().size() + 1),
                                m_random.bounded(8) * m_random.bounded(2)});
        switch (m_random.bounded(40)) {
        case 0:
            QGuiApplication::clipboard()->setText(
                u"貼り付けた文😀\r\n"_s.repeated(m_random.bounded(200)));
            QTest::keyClick(view, Qt::Key_V, Qt::ControlModifier);
            break;
        case 1:
        case 2:
            QTest::keyClick(view, Qt::Key_Z, Qt::ControlModifier);
            break;
        case 3:
            controller->runMacro(
                u"return {edits: [{type: 'replaceAll', text: "
                "context.document.text.split('\\n').map(l => l + '.').join('\\n')}]};"_s,
                u"id"_s,
                u"name"_s,
                std::nullopt);
            break;
        case 4:
            QTest::keyClick(view, Qt::Key_Backspace);
            break;
        default:
            QTest::keyClick(view, static_cast<char>('a' + m_random.bounded(26)));
        }
    }

private:
    DocumentController &m_documents;
    QRandomGenerator m_random;
};

/// The killed process: edit FOLDER SEED PAUSE LONGEST LARGEST-COPY.
int editUntilKilled(const QStringList &arguments)
{
    const QString folder = arguments.at(2);
    const RecoveryTimes times{std::chrono::milliseconds(arguments.at(4).toInt()),
                              std::chrono::milliseconds(arguments.at(5).toInt())};
    QFile file(folder + u"/states"_s);
    StateLog *log = StateLog::map(file);
    DocumentController documents;
    Recovery recovery(documents, folder + u"/recovery"_s, true, times);
    for (int i = 0; i < kDocuments; ++i) {
        documents.openFile(folder + u"/%1.txt"_s.arg(i));
        const TextDocument *document =
            documents.documentOf(documents.windowControllers().at(i).get());
        const TextStorage *storage = document->textStorage();
        log->add(i, storage->text());
        QObject::connect(
            storage, &TextStorage::changed, [log, i, storage] { log->add(i, storage->text()); });
    }
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit largest{arguments.at(6).toULong(), RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &largest);
    Model model(documents, arguments.at(3).toUInt());
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&model] { model.act(); });
    timer.start(1);
    std::puts("ready");
    std::fflush(stdout);
    return QApplication::exec();
}

/// What a kill left of one document.
struct Remainder
{
    bool isExact = false;
    qint64 age = 0; // Nanoseconds from the end of this state to the kill; 0 for the last one.
};

Remainder remainderOf(const StateLog &log, int document, const Text &text, qint64 killed)
{
    qint64 end = killed;
    const quint64 digest = digestOf(text);
    for (int i = log.count.load() - 1; i >= 0; --i) {
        const StateLog::State &state = log.states[i];
        if (state.document != document)
            continue;
        if (state.digest == digest)
            return {true, std::max<qint64>(0, killed - end)};
        end = state.time;
    }
    return {};
}

} // namespace

class RecoveryKillsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kill_atAnyMoment_leavesARecentState_data();
    void kill_atAnyMoment_leavesARecentState();

private:
    void killOnce(quint32 seed, qulonglong largestCopy);
    void check(const test::TemporaryHome &home, const StateLog &log, qint64 killed, bool isFull);

    qint64 m_oldest = 0;
    int m_found = 0;
};

void RecoveryKillsTest::kill_atAnyMoment_leavesARecentState_data()
{
    QTest::addColumn<bool>("isFull");
    QTest::newRow("enough space") << false;
    QTest::newRow("space runs out") << true;
}

void RecoveryKillsTest::kill_atAnyMoment_leavesARecentState()
{
    QFETCH(const bool, isFull);
    constexpr int kUsualKills = 10;
    const int wanted = qEnvironmentVariableIntValue("PENWICK_RECOVERY_KILLS");
    const int kills = wanted > 0 ? wanted : kUsualKills;
    m_oldest = 0;
    m_found = 0;
    QRandomGenerator random(20'261'122);
    for (int i = 0; i < kills && !QTest::currentTestFailed(); ++i)
        killOnce(static_cast<quint32>(i + 1),
                 isFull ? 200 + random.bounded(60'000) : RLIM_INFINITY);
    qInfo("%d kills, %d texts found, the oldest %lld ms old",
          kills,
          m_found,
          static_cast<long long>(m_oldest / 1'000'000));
    QVERIFY(m_found > 0);
}

void RecoveryKillsTest::killOnce(quint32 seed, qulonglong largestCopy)
{
    const bool isReal = qgetenv("PENWICK_RECOVERY_TIMES") == "real";
    const test::TemporaryHome home;
    for (int i = 0; i < kDocuments; ++i)
        home.write(u"%1.txt"_s.arg(i), "日本語\r\nfile\n");
    QFile file(home.file(u"states"_s));
    const StateLog *log = StateLog::map(file);
    QVERIFY(log != nullptr);
    const RecoveryTimes times = isReal ? RecoveryTimes{} : RecoveryTimes{20ms, 60ms};
    test::ChildProcess child({u"edit"_s,
                              home.path(),
                              QString::number(seed),
                              QString::number(times.pause.count()),
                              QString::number(times.longest.count()),
                              QString::number(largestCopy)});
    QCOMPARE(child.readLine(), QByteArray("ready"));
    QRandomGenerator random(seed);
    const int longest = isReal ? 30'000 : 600;
    std::this_thread::sleep_for(std::chrono::milliseconds(random.bounded(longest)));
    child.kill();
    check(home, *log, nanoseconds(), largestCopy != RLIM_INFINITY);
}

void RecoveryKillsTest::check(const test::TemporaryHome &home,
                              const StateLog &log,
                              qint64 killed,
                              bool isFull)
{
    std::array<bool, kDocuments> isFound{};
    for (const RecoverySession &session : RecoverySession::takeAbandoned(home.file(u"recovery"_s)))
        for (const QString &path : session.copies()) {
            const std::atomic<bool> isCancelled = false;
            const auto copy = RecoveryCopy::read(path, isCancelled);
            QVERIFY(copy && !copy->isDamaged);
            const int document = copy->summary.origin.name.first(1).toInt();
            const Remainder remainder = remainderOf(log, document, copy->text, killed);
            QVERIFY2(remainder.isExact, qPrintable(path));
            isFound.at(static_cast<std::size_t>(document)) = true;
            ++m_found;
            if (!isFull) {
                m_oldest = std::max(m_oldest, remainder.age);
                QVERIFY(remainder.age <= kLongestLoss);
            }
        }
    for (int i = 0; i < kDocuments; ++i) {
        QCOMPARE(home.read(u"%1.txt"_s.arg(i)), QByteArray("日本語\r\nfile\n"));
        // Without a copy, the first edit must be recent.
        if (isFound.at(static_cast<std::size_t>(i)) || isFull)
            continue;
        const auto *first = std::find_if(log.states + kDocuments,
                                         log.states + log.count.load(),
                                         [i](const auto &state) { return state.document == i; });
        if (first != log.states + log.count.load())
            QVERIFY(killed - first->time <= kLongestLoss);
    }
}

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"edit"_s)
        return editUntilKilled(arguments);
    qputenv("QTEST_FUNCTION_TIMEOUT", "7200000"); // Milliseconds, for many kills.
    RecoveryKillsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "RecoveryKillsTest.moc"

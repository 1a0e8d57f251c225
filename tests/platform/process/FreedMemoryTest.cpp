#include "platform/process/FreedMemory.h"

#include <QFile>
#include <QTest>

#include <memory>
#include <unistd.h>
#include <vector>

using namespace penwick;

namespace {

/// The resident size of the process in bytes.
[[maybe_unused]] qint64 residentSize()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toLongLong() * ::sysconf(_SC_PAGESIZE);
}

} // namespace

class FreedMemoryTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void giveBack_freedBlocksUnderAnotherOne_shrinksTheProcess()
    {
#if !defined(__GLIBC__) || defined(__SANITIZE_ADDRESS__)
        QSKIP("Another allocator decides for itself.");
#else
        constexpr std::size_t kBlock = 8192;
        constexpr int kBlocks = 10'000;
        std::vector<std::unique_ptr<char[]>> blocks;
        for (int i = 0; i < kBlocks; ++i)
            blocks.push_back(std::make_unique<char[]>(kBlock));
        const auto last = std::make_unique<char[]>(kBlock); // Keeps the heap from shrinking.
        const qint64 full = residentSize();
        blocks.clear();
        trimFreedMemory();
        QVERIFY(residentSize() < full - qint64{kBlock} * kBlocks * 3 / 4);
#endif
    }
};

QTEST_APPLESS_MAIN(FreedMemoryTest)
#include "FreedMemoryTest.moc"

#include "batch/UnifiedDiff.h"

#include "support/TemporaryHome.h"

#include <QProcess>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

QByteArray diffOf(const QByteArray &name, const QByteArray &before, const QByteArray &after)
{
    const auto diff = unifiedDiff(name, *Text::fromUtf8(before), *Text::fromUtf8(after));
    return diff ? *diff : "failed"_ba;
}

} // namespace

class UnifiedDiffTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void texts_thatDiffer_areCompared()
    {
        QCOMPARE(diffOf("dir/a", "1\n2\n3\n", "1\n日\n3\n"),
                 "--- a/dir/a\n+++ b/dir/a\n@@ -1,3 +1,3 @@\n 1\n-2\n+日\n 3\n"_ba);
        QCOMPARE(diffOf("a", "1", "2"),
                 "--- a/a\n+++ b/a\n@@ -1 +1 @@\n-1\n\\ No newline at end of file\n+2\n"
                 "\\ No newline at end of file\n"_ba);
        QCOMPARE(diffOf("a", "1\r\n", "2\r\n"), "--- a/a\n+++ b/a\n@@ -1 +1 @@\n-1\r\n+2\r\n"_ba);
        QCOMPARE(diffOf("a", "1\n", "1\n"), QByteArray());
        QCOMPARE(diffOf("a", "", "1\n"), "--- a/a\n+++ b/a\n@@ -0,0 +1 @@\n+1\n"_ba);
        QCOMPARE(diffOf("a", QByteArray("\0\n", 2), "1\n"),
                 "--- a/a\n+++ b/a\n@@ -1 +1 @@\n-\0\n+1\n"_ba);
    }

    void names_withSpecialCharacters_areQuoted()
    {
        QVERIFY(diffOf("/a b", "1\n", "2\n").startsWith("--- a/a b\t\n+++ b/a b\t\n@@"));
        // git refuses these.
        QVERIFY(diffOf("./a//./b.", "1\n", "2\n").startsWith("--- a/a/b.\n+++ b/a/b.\n@@"));
        QVERIFY(diffOf("a\"\n日", "1\n", "2\n")
                    .startsWith("--- \"a/a\\\"\\012日\"\n+++ \"b/a\\\"\\012日\"\n@@"));
    }

    // The two tools that people apply a diff with.
    void diff_isAppliedByGitAndPatch_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("plain") << "a"_ba
                               << "1\n2\n"_ba
                               << "1\n3\n"_ba;
        QTest::newRow("no line end") << "a"_ba
                                     << "1\n2"_ba
                                     << "1\n3"_ba;
        QTest::newRow("line end added") << "a"_ba
                                        << "1"_ba
                                        << "1\n"_ba;
        QTest::newRow("CR LF") << "a"_ba
                               << "1\r\n2\r\n"_ba
                               << "1\r\n3\r\n"_ba;
        QTest::newRow("blank in the name") << "a b c"_ba
                                           << "1\n"_ba
                                           << "2\n"_ba;
        QTest::newRow("quote in the name") << "a\"b"_ba
                                           << "1\n"_ba
                                           << "2\n"_ba;
        QTest::newRow("Japanese") << "日本 語.txt"_ba
                                  << "一\n二\n"_ba
                                  << "一\n三\n"_ba;
        QTest::newRow("NUL") << "a"_ba << QByteArray("1\0\n2\n", 5) << QByteArray("1\0\n3\n", 5);
        QTest::newRow("like a header") << "a"_ba
                                       << "-- a/a\nx\n"_ba
                                       << "++ b/a\nx\n"_ba;
    }

    void diff_isAppliedByGitAndPatch()
    {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        for (const QStringList &command :
             {QStringList{u"git"_s, u"apply"_s, u"--whitespace=nowarn"_s},
              QStringList{u"patch"_s, u"--binary"_s, u"-p1"_s}}) {
            const test::TemporaryHome home;
            home.write(QFile::decodeName(name), before);
            QProcess tool;
            tool.setWorkingDirectory(home.path());
            tool.start(command.first(), command.sliced(1));
            if (!tool.waitForStarted())
                QSKIP("The tool is not installed.");
            tool.write(diffOf(name, before, after));
            tool.closeWriteChannel();
            QVERIFY(tool.waitForFinished());
            QVERIFY2(tool.exitCode() == 0,
                     tool.readAllStandardError() + tool.readAllStandardOutput());
            QCOMPARE(home.read(QFile::decodeName(name)), after);
        }
    }
};

QTEST_GUILESS_MAIN(UnifiedDiffTest)
#include "UnifiedDiffTest.moc"

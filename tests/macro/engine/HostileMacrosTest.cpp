#include "support/MacroEditor.h"
#include "support/TemporaryHome.h"
#include "support/Waits.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

/// Each folder of `hostile` holds macro.js, which would crash or block an editor that runs it in
/// its own process, and status.txt, a regular expression for the complete message after the run. If
/// it matches the message of a stopped run, the test stops the run.
class HostileMacrosTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void macro_anyKind_leavesTheDocumentAlone_data();
    void macro_anyKind_leavesTheDocumentAlone();

private:
    test::TemporaryHome m_home;
};

void HostileMacrosTest::initTestCase()
{
    const auto protection = ScriptHostPool::shared().protection(test::kLongWait);
    QVERIFY(protection.has_value());
    if (!protection->memoryLimit)
        QSKIP("Without a limit on memory these macros take all of the machine's.");
    ScriptHostPool::shared().setMemory(std::uint64_t{512} << 20);
}

void HostileMacrosTest::macro_anyKind_leavesTheDocumentAlone_data()
{
    QTest::addColumn<QString>("folder");

    const QDir hostile(QStringLiteral(PENWICK_TEST_DATA "/hostile"));
    const QStringList names = hostile.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QVERIFY(names.size() >= 20);
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << hostile.filePath(name);
}

void HostileMacrosTest::macro_anyKind_leavesTheDocumentAlone()
{
    QFETCH(QString, folder);
    QFile macro(folder + u"/macro.js"_s);
    QFile status(folder + u"/status.txt"_s);
    QVERIFY(macro.open(QIODevice::ReadOnly) && status.open(QIODevice::ReadOnly));
    const QRegularExpression expected(
        QRegularExpression::anchoredPattern(QString::fromUtf8(status.readAll()).trimmed()),
        QRegularExpression::DotMatchesEverythingOption);

    test::MacroEditor editor(m_home.file(u"hostile.ini"_s));
    std::optional<test::RunStopper> stopper;
    if (expected.match(u"マクロの実行を停止しました"_s).hasMatch())
        stopper.emplace(editor);
    QVERIFY(editor.run(QString::fromUtf8(macro.readAll())));
    const QString message = editor.message();
    qInfo("%s (%d lines logged)", qPrintable(message.left(100)), editor.logged.load());
    QVERIFY2(expected.match(message).hasMatch(), qPrintable(message.left(300)));

    QCOMPARE(editor.bytes(), QByteArray(test::MacroEditor::kAfter));
    QCOMPARE(editor.view()->selectedRange(), test::MacroEditor::kSelection);
    QVERIFY(!editor.document.textStorage()->canRedo());
    editor.view()->undo();
    QCOMPARE(editor.bytes(), QByteArray(test::MacroEditor::kBefore));
    QVERIFY(!editor.document.textStorage()->canUndo());
    QVERIFY(editor.run(u"return {textEdits: [{type: 'replaceAll', text: 'works'}]};"_s));
    QCOMPARE(editor.bytes(), QByteArray("works"));
}

} // namespace penwick

QTEST_MAIN(penwick::HostileMacrosTest)
#include "HostileMacrosTest.moc"

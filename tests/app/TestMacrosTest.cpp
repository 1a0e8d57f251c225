#include "app/TestMacros.h"

#include <QCryptographicHash>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

QByteArray digest(const QString &code)
{
    return QCryptographicHash::hash(code.toUtf8(), QCryptographicHash::Sha256).toHex();
}

} // namespace

class TestMacrosTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replaceAll_idNameAndScript_areFixed();
    void replaceSelection_idNameAndScript_areFixed();
};

// The scripts are an interface: users compare their output. The digests cover every byte.
void TestMacrosTest::replaceAll_idNameAndScript_areFixed()
{
    const Macro macro = replaceAllTestMacro();
    QCOMPARE(macro.id, u"test_replace_all"_s);
    QCOMPARE(macro.name, u"テスト: replaceAll"_s);
    QCOMPARE(macro.code.count(u'\n'), 4);
    QCOMPARE(macro.code.toUtf8().size(), 255);
    QCOMPARE(digest(macro.code),
             QByteArray("2a34d545ed24020123431dee795a1111b82288404c63308cfbd0506932bd5adb"));
}

void TestMacrosTest::replaceSelection_idNameAndScript_areFixed()
{
    const Macro macro = replaceSelectionTestMacro();
    QCOMPARE(macro.id, u"test_replace_selection"_s);
    QCOMPARE(macro.name, u"テスト: replaceSelection"_s);
    QCOMPARE(macro.code.count(u'\n'), 11);
    QCOMPARE(macro.code.toUtf8().size(), 491);
    QCOMPARE(digest(macro.code),
             QByteArray("d98c6aeed19c005a8d7a031c6027cb76c1cb92821afdb0579d50dd2176ea01b4"));
}

QTEST_GUILESS_MAIN(TestMacrosTest)
#include "TestMacrosTest.moc"

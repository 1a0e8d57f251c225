#include "command/MacroKeys.h"

#include "command/Command.h"
#include "command/KeyObstacle.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class MacroKeysTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void key_isStoredReadablyByTheMacrosId();
    void key_cleared_isNoSetting();
    void key_ofAnyId_isKept_data();
    void key_ofAnyId_isKept();
    void storedValue_broken_isNone_data();
    void storedValue_broken_isNone();
    void obstacle_isTold_data();
    void obstacle_isTold();
    void obstacle_everyKeyOfACommand_hasOne();

private:
    test::TemporaryHome m_home;
};

void MacroKeysTest::key_isStoredReadablyByTheMacrosId()
{
    const QString path = m_home.file(u"stored.conf"_s);
    {
        UserDefaults defaults(path);
        MacroKeys keys(defaults);
        const QSignalSpy changed(&keys, &MacroKeys::changed);
        keys.setKey(u"default_extractUrls"_s, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_1));
        QCOMPARE(changed.size(), 1);
    }
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("[macroKeys]\ndefault_extractUrls=Ctrl+Alt+1\n"));
    UserDefaults defaults(path);
    QCOMPARE(MacroKeys(defaults).keyOf(u"default_extractUrls"_s), QKeySequence(u"Ctrl+Alt+1"_s));
    QVERIFY(MacroKeys(defaults).keyOf(u"other"_s).isEmpty());
}

void MacroKeysTest::key_cleared_isNoSetting()
{
    const QString path = m_home.file(u"cleared.conf"_s);
    UserDefaults defaults(path);
    MacroKeys keys(defaults);
    keys.setKey(u"a"_s, QKeySequence(Qt::Key_F8));
    keys.setKey(u"a"_s, {});
    QVERIFY(keys.keyOf(u"a"_s).isEmpty());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(!file.readAll().contains("macroKeys"));
}

void MacroKeysTest::key_ofAnyId_isKept_data()
{
    QTest::addColumn<QString>("id");
    for (const QString &id : {u"a/b"_s, u"/"_s, u"a//b"_s, u"日本語 [x]=1"_s, u"\\"_s, u"%2F"_s})
        QTest::newRow(qPrintable(id)) << id;
}

void MacroKeysTest::key_ofAnyId_isKept()
{
    QFETCH(const QString, id);
    const QString path = m_home.file(u"ids.conf"_s);
    {
        UserDefaults defaults(path);
        MacroKeys(defaults).setKey(id, QKeySequence(Qt::Key_F8));
    }
    UserDefaults defaults(path);
    QCOMPARE(MacroKeys(defaults).keyOf(id), QKeySequence(Qt::Key_F8));
    MacroKeys(defaults).setKey(id, {});
    QVERIFY(MacroKeys(defaults).keyOf(id).isEmpty());
}

void MacroKeysTest::storedValue_broken_isNone_data()
{
    QTest::addColumn<QString>("value");
    for (const char *value : {"", "nonsense", "Ctrl", "Ctrl+Alt+1, F8", "a", "Ctrl+S", "Return"})
        QTest::newRow(value) << QString::fromLatin1(value);
}

void MacroKeysTest::storedValue_broken_isNone()
{
    QFETCH(const QString, value);
    UserDefaults defaults(m_home.file(u"broken.conf"_s));
    defaults.setString(u"macroKeys/good"_s, u"F8"_s);
    defaults.setString(u"macroKeys/broken"_s, value);
    QVERIFY(MacroKeys(defaults).keyOf(u"broken"_s).isEmpty());
    QCOMPARE(MacroKeys(defaults).keyOf(u"good"_s), QKeySequence(Qt::Key_F8));
}

void MacroKeysTest::obstacle_isTold_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("part");
    const QString editing = u"文字の編集"_s;
    const QString unfit = u"組み合わせた"_s;
    QTest::newRow("letter") << u"A"_s << unfit;
    QTest::newRow("capital") << u"Shift+A"_s << unfit;
    QTest::newRow("space") << u"Ctrl+Space"_s << unfit;
    QTest::newRow("switch of input methods") << u"Zenkaku Hankaku"_s << unfit;
    QTest::newRow("arrow") << u"Ctrl+Left"_s << unfit;
    QTest::newRow("end of the line") << u"Ctrl+K"_s << editing;
    QTest::newRow("paste") << u"Ctrl+V"_s << u"「貼り付け」"_s;
    QTest::newRow("context menu") << u"Shift+F10"_s << editing;
    QTest::newRow("save") << u"Ctrl+S"_s << u"「保存」"_s;
    QTest::newRow("find again") << u"Ctrl+Shift+G"_s << u"「前を検索」"_s;
    for (const char *free : {"F2", "Shift+F5", "Ctrl+1", "Ctrl+Alt+T", "Ctrl+Shift+;", "Alt+J"})
        QTest::newRow(free) << QString::fromLatin1(free) << QString();
}

void MacroKeysTest::obstacle_isTold()
{
    QFETCH(const QString, key);
    QFETCH(const QString, part);
    const auto sequence = QKeySequence::fromString(key);
    QCOMPARE(sequence.count(), 1);
    const QString obstacle = keyObstacle(sequence[0]);
    QVERIFY2(part.isEmpty() ? obstacle.isEmpty() : obstacle.contains(part), qPrintable(obstacle));
}

void MacroKeysTest::obstacle_everyKeyOfACommand_hasOne()
{
    for (const Command &row : commands()) {
        if (row.hasKey())
            QVERIFY(!keyObstacle(row.key).isEmpty());
        if (row.hasSecondKey())
            QVERIFY(!keyObstacle(row.second).isEmpty());
    }
}

QTEST_MAIN(MacroKeysTest)
#include "MacroKeysTest.moc"

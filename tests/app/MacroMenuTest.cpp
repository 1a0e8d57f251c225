#include "app/MacroMenu.h"

#include "controls/VerbatimText.h"
#include "support/CutStart.h"
#include "support/Macros.h"
#include "support/PlainToolTip.h"
#include "text/CutText.h"
#include "wording/WordingLookup.h"

#include <QAction>
#include <QMenu>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class MacroMenuTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void enabledMacros_areListedInTheirOrder();
    void everyMacroDisabled_showsNoticeManagerAndTests();
    void unusualName_isOneVerbatimItem_data();
    void unusualName_isOneVerbatimItem();
    void longName_isCutInTheMiddle_andTheToolTip();
    void nameOfThirtyWideCharacters_isShownWhole();
    void hugeName_isCutAndMoreInTheToolTip();
    void macroItem_triggered_givesItsId();
    void fixedItems_triggered_performTheirCommands();
    void rebuild_removesTheOldItems();

private:
    void rebuild(const QList<Macro> &macros)
    {
        rebuildMacroMenu(&m_menu, macros, m_handlers, [this](const QString &id) { m_ids << id; });
    }

    [[nodiscard]] QStringList titles() const;

    static Macro macro(const QString &id, const QString &name, bool isEnabled = true);

    QMenu m_menu;
    QStringList m_ids;
    QList<CommandId> m_performed;
    MenuHandlers m_handlers;
};

void MacroMenuTest::init()
{
    m_menu.setFont({});
    m_ids.clear();
    m_performed.clear();
    m_handlers = {[this](CommandId command) { m_performed << command; },
                  [](CommandId) { return true; }};
}

Macro MacroMenuTest::macro(const QString &id, const QString &name, bool isEnabled)
{
    Macro result = test::sampleMacro(id);
    result.name = name;
    result.isEnabled = isEnabled;
    return result;
}

QStringList MacroMenuTest::titles() const
{
    QStringList result;
    for (const QAction *action : m_menu.actions())
        result << (action->isSeparator() ? u"-"_s : action->text());
    return result;
}

void MacroMenuTest::enabledMacros_areListedInTheirOrder()
{
    rebuild({macro(u"2"_s, u"二"_s), macro(u"x"_s, u"隠れ"_s, false), macro(u"1"_s, u"一"_s)});
    QCOMPARE(titles(),
             (QStringList{u"二"_s,
                          u"一"_s,
                          u"-"_s,
                          u"マクロ管理…"_s,
                          u"-"_s,
                          u"テストマクロを実行（replaceAll）"_s,
                          u"テストマクロを実行（replaceSelection）"_s}));
    for (const QAction *action : m_menu.actions()) {
        QVERIFY(action->shortcut().isEmpty());
        QCOMPARE(action->menuRole(), action->isSeparator() ? action->menuRole() : QAction::NoRole);
    }
}

void MacroMenuTest::everyMacroDisabled_showsNoticeManagerAndTests()
{
    rebuild({macro(u"1"_s, u"一"_s, false)});
    QCOMPARE(titles(),
             (QStringList{u"マクロがありません"_s,
                          u"-"_s,
                          u"マクロ管理…"_s,
                          u"-"_s,
                          u"テストマクロを実行（replaceAll）"_s,
                          u"テストマクロを実行（replaceSelection）"_s}));
    QVERIFY(!m_menu.actions()[0]->isEnabled());
    QVERIFY(m_menu.actions()[2]->isEnabled());
}

void MacroMenuTest::unusualName_isOneVerbatimItem_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("title");
    QTest::newRow("ampersands and markup")
        << u"A & B && <b>C</b> Quit"_s << u"A && B &&&& <b>C</b> Quit"_s;
    QTest::newRow("tab") << u"Trim\tCtrl+Q"_s
                         << u"Trim Ctrl+Q"_s; // Text after a tab is a shortcut.
    QTest::newRow("line break") << u"one\ntwo"_s << u"one\ntwo"_s;
    QTest::newRow("empty") << QString() << QString();
}

void MacroMenuTest::unusualName_isOneVerbatimItem()
{
    QFETCH(QString, name);
    QFETCH(QString, title);
    rebuild({macro(u"plain"_s, u"plain"_s), macro(u"unusual"_s, name)});
    QAction *item = m_menu.actions().at(1);
    QCOMPARE(item->text(), title);
    QVERIFY(!item->isSeparator());
    QVERIFY(item->shortcut().isEmpty());
    m_menu.popup({0, 0});
    QVERIFY(QTest::qWaitForWindowExposed(&m_menu));
    QCOMPARE(m_menu.actionGeometry(item).size(),
             m_menu.actionGeometry(m_menu.actions().at(0)).size());
    // By key: releases of Qt differ in which clicks right after the opening of a menu count.
    m_menu.setActiveAction(item);
    QTest::keyClick(&m_menu, Qt::Key_Return);
    QVERIFY(!m_menu.isVisible());
    QCOMPARE(m_ids, QStringList{u"unusual"_s});
}

void MacroMenuTest::longName_isCutInTheMiddle_andTheToolTip()
{
    const QString name = u"始め"_s + u"とても長い名前"_s.repeated(30) + u"終わり"_s;
    rebuild({macro(u"a"_s, name), macro(u"b"_s, u"短い名前"_s)});
    const QAction *item = m_menu.actions().at(0);
    QVERIFY(item->text().startsWith(u"始め"_s) && item->text().endsWith(u"終わり"_s));
    QVERIFY(m_menu.sizeHint().width() < 600);
    QCOMPARE(item->toolTip(), verbatimToolTip(name));
    QVERIFY(item->toolTip().contains(name));
    QVERIFY(m_menu.toolTipsVisible());
    QCOMPARE(m_menu.actions().at(1)->text(), u"短い名前"_s);
}

void MacroMenuTest::nameOfThirtyWideCharacters_isShownWhole()
{
    const QString name = u"全角文字のとても長い名前"_s.repeated(3).left(30);
    QFont spaced = m_menu.font(); // The width of an average character does not contain the space.
    spaced.setLetterSpacing(QFont::AbsoluteSpacing, 3);
    m_menu.setFont(spaced);
    rebuild({macro(u"a"_s, name)});
    QCOMPARE(m_menu.actions().at(0)->text(), name);
    QVERIFY(m_menu.sizeHint().width() < 600);
}

void MacroMenuTest::hugeName_isCutAndMoreInTheToolTip()
{
    const QString name = test::hugeText();
    rebuild({macro(u"a"_s, name)});
    const QAction *item = m_menu.actions().at(0);
    QVERIFY(item->text().startsWith(u"名名"_s) && item->text().size() < kLongestName);
    QVERIFY(test::isCutStart(test::plainToolTip(item->toolTip()), name, kLongestToolTip));
}

void MacroMenuTest::macroItem_triggered_givesItsId()
{
    rebuild({macro(u"one"_s, u"同じ名前"_s), macro(u"two"_s, u"同じ名前"_s)});
    QCOMPARE(m_menu.actions()[1]->data().toString(), u"two"_s);
    m_menu.actions()[1]->trigger();
    QCOMPARE(m_ids, QStringList{u"two"_s});
}

void MacroMenuTest::fixedItems_triggered_performTheirCommands()
{
    rebuild({});
    for (QAction *action : m_menu.actions())
        action->trigger();
    QCOMPARE(m_performed,
             (QList<CommandId>{CommandId::ShowMacroManager,
                               CommandId::RunTestMacro,
                               CommandId::RunTestMacroSelection}));
}

void MacroMenuTest::rebuild_removesTheOldItems()
{
    rebuild({macro(u"1"_s, u"一"_s)});
    rebuild({macro(u"2"_s, u"二"_s)});
    QCOMPARE(titles().size(), 6);
    QCOMPARE(titles().first(), u"二"_s);
}

QTEST_MAIN(MacroMenuTest)
#include "MacroMenuTest.moc"

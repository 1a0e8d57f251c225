#include "controls/ElidedLabel.h"
#include "support/Macros.h"
#include "support/ShownMacroManager.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <optional>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

/// Gives macros keys in the manager's window.
class MacroKeyRowTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_manager.emplace(QList<Macro>{sampleMacro(u"A"_s, 1), sampleMacro(u"B"_s, 2)});
        QVERIFY(QTest::qWaitForWindowActive(m_manager->window()));
        m_manager->page().clickRow(0);
        field()->setFocus();
    }

    void cleanup() { m_manager.reset(); }

    void pressedKey_isStoredForTheMacro();
    void keyOfAnotherMacro_isRefusedByName();
    void keyOfACommand_isRefusedAndNotCarriedOut();
    void plainLetter_isRefused();
    void backspaceAndButton_clearTheKey();
    void tab_leavesTheField();
    void deletedMacro_losesItsKey();

private:
    [[nodiscard]] QLineEdit *field() const
    {
        return m_manager->window()->findChild<QLineEdit *>(u"macroKey"_s);
    }

    [[nodiscard]] QString message() const
    {
        return m_manager->window()->findChild<ElidedLabel *>(u"macroKeyMessage"_s)->text();
    }

    [[nodiscard]] QString idOf(int row) const { return m_manager->manager->macros().at(row).id; }

    [[nodiscard]] QString keyOf(int row) const
    {
        return m_manager->keys.keyOf(idOf(row)).toString();
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::keyClick(field(), key, modifiers);
    }

    std::optional<ShownMacroManager> m_manager;
};

void MacroKeyRowTest::pressedKey_isStoredForTheMacro()
{
    press(Qt::Key_Control, Qt::ControlModifier); // On the way to the key.
    press(Qt::Key_T, Qt::ControlModifier | Qt::AltModifier);
    QCOMPARE(field()->text(), u"Ctrl+Alt+T"_s);
    QCOMPARE(keyOf(0), u"Ctrl+Alt+T"_s);
    QCOMPARE(keyOf(1), QString());
    QCOMPARE(message(), QString());
    m_manager->page().clickRow(1);
    QCOMPARE(field()->text(), QString());
    m_manager->page().clickRow(0);
    QCOMPARE(field()->text(), u"Ctrl+Alt+T"_s);
}

void MacroKeyRowTest::keyOfAnotherMacro_isRefusedByName()
{
    m_manager->keys.setKey(idOf(1), QKeySequence(Qt::Key_F8));
    press(Qt::Key_F8);
    QCOMPARE(keyOf(0), QString());
    QCOMPARE(field()->text(), QString());
    QCOMPARE(message(), u"F8: 「%1」が使うキーです"_s.arg(m_manager->page().names().at(1)));
    press(Qt::Key_F9);
    QCOMPARE(keyOf(0), u"F9"_s);
    QCOMPARE(message(), QString());
}

void MacroKeyRowTest::keyOfACommand_isRefusedAndNotCarriedOut()
{
    press(Qt::Key_F9);
    press(Qt::Key_W, Qt::ControlModifier); // Would close the window.
    QVERIFY(m_manager->window()->isVisible());
    QCOMPARE(message(), u"Ctrl+W: 「閉じる」が使うキーです"_s);
    QCOMPARE(keyOf(0), u"F9"_s);
}

void MacroKeyRowTest::plainLetter_isRefused()
{
    press(Qt::Key_A);
    QVERIFY(message().startsWith(u"A: "_s));
    QCOMPARE(keyOf(0), QString());
}

void MacroKeyRowTest::backspaceAndButton_clearTheKey()
{
    auto *button = m_manager->window()->findChild<QPushButton *>(u"macroKeyClear"_s);
    QVERIFY(!button->isEnabled());
    press(Qt::Key_F9);
    QVERIFY(button->isEnabled());
    press(Qt::Key_Backspace);
    QCOMPARE(keyOf(0), QString());
    press(Qt::Key_F9);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(keyOf(0), QString());
    QVERIFY(field()->hasFocus());
}

void MacroKeyRowTest::tab_leavesTheField()
{
    press(Qt::Key_F9);
    press(Qt::Key_Tab);
    QVERIFY(m_manager->window()->findChild<QPushButton *>(u"macroKeyClear"_s)->hasFocus());
    QCOMPARE(keyOf(0), u"F9"_s);
}

void MacroKeyRowTest::deletedMacro_losesItsKey()
{
    press(Qt::Key_F9);
    const QString id = idOf(0);
    clickInModal(u"削除"_s);
    m_manager->page().click(u"削除"_s);
    QCoreApplication::processEvents();
    QCOMPARE(m_manager->manager->macros().size(), 1);
    QVERIFY(m_manager->keys.keyOf(id).isEmpty());
}

QTEST_MAIN(MacroKeyRowTest)
#include "MacroKeyRowTest.moc"

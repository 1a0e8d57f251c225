#include "app/AppDelegateTestBase.h"
#include "command/MacroKeys.h"
#include "command/Palette.h"
#include "macro/library/MacroManager.h"
#include "support/Macros.h"
#include "support/Waits.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of the palette in the whole application.
class CommandPaletteTest final : public QObject, private test::AppDelegateTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        begin();
        launch();
        activate(0);
        controller()->textView()->setFocus();
    }

    void cleanup() { end(); }

    void key_opensAndCloses_data();
    void key_opensAndCloses();
    void escape_leavesTextSelectionAndScroll();
    void typedCommand_isRun();
    void typedCommand_forTheFocus_reachesTheText();
    void switchCommand_showsItsState();
    void impossibleCommand_isDisabled();
    void typedMacro_runs();
    void macroWithAKey_isRunByIt();
    void macroKey_isRecordedInThePalette();
    void macroKey_taken_isRefused();
    void macroKeys_equal_runTheFirstMacro();
    void disabledMacro_isNotListed();
    void typedTab_comesForward();
    void chosenRow_isListedFirstNextTime();
    void usedRows_afterAnotherStart_areListedFirst();
    void goToLine_byKey_movesTheCaret();
    void goToLine_pastTheEnd_saysSo();
    void palette_whileATabIsSwitched_closes();

private:
    /// Presses a key in the text, and returns the palette's field; null when it is closed.
    QLineEdit *press(Qt::Key key, Qt::KeyboardModifiers modifiers) const;
    /// Opens the palette, types the text and presses Enter.
    void choose(const QString &typed) const;

    [[nodiscard]] EditorWindow *window() const { return controller()->window(); }

    [[nodiscard]] QModelIndex row(const QString &title) const;
};

QLineEdit *CommandPaletteTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers) const
{
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    const Palette *palette = Palette::openIn(window());
    return palette != nullptr ? palette->findChild<QLineEdit *>() : nullptr;
}

void CommandPaletteTest::choose(const QString &typed) const
{
    QLineEdit *field = press(Qt::Key_F1, Qt::NoModifier);
    QVERIFY(field != nullptr);
    field->setText(typed);
    QTest::keyClick(field, Qt::Key_Return);
    QCoreApplication::processEvents();
}

QModelIndex CommandPaletteTest::row(const QString &title) const
{
    const auto *list = Palette::openIn(window())->findChild<QListView *>();
    for (int i = 0; i < list->model()->rowCount(); ++i)
        if (list->model()->index(i, 0).data().toString() == title)
            return list->model()->index(i, 0);
    return {};
}

void CommandPaletteTest::key_opensAndCloses_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("F1") << Qt::Key_F1 << Qt::KeyboardModifiers();
    QTest::newRow("Ctrl+Shift+P") << Qt::Key_P
                                  << Qt::KeyboardModifiers(Qt::ControlModifier | Qt::ShiftModifier);
}

void CommandPaletteTest::key_opensAndCloses()
{
    QFETCH(const Qt::Key, key);
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    QVERIFY(press(key, modifiers) != nullptr);
    QVERIFY(press(key, modifiers) == nullptr);
    QVERIFY(controller()->textView()->hasFocus());
    QLineEdit *field = press(key, modifiers);
    QVERIFY(field != nullptr);
    QVERIFY(press(Qt::Key_L, Qt::ControlModifier) == field); // Stays open, in another mode.
    QCOMPARE(field->text(), u":"_s);
}

void CommandPaletteTest::escape_leavesTextSelectionAndScroll()
{
    setText(u"line\n"_s.repeated(500));
    TextView *view = controller()->textView();
    view->setSelectedRange({700, 20});
    view->setSelectionInPlace(5, 12);
    const TextRange visible{view->offsetAt({0, 0}), 0};
    QVERIFY(visible.location > 100);
    QLineEdit *field = press(Qt::Key_F1, Qt::NoModifier);
    field->setText(u":400"_s);
    QTest::keyClick(field, Qt::Key_Escape);
    QVERIFY(view->hasFocus());
    QCOMPARE(view->selectedRange(), (TextRange{5, 7}));
    QCOMPARE(view->offsetAt({0, 0}), visible.location);
    QCOMPARE(text(), u"line\n"_s.repeated(500));
}

void CommandPaletteTest::typedCommand_isRun()
{
    choose(u"tab new"_s); // Found by no name: nothing happens.
    QCOMPARE(m_app->documentController().windowControllers().size(), 1);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    choose(u"file.new"_s);
    QCOMPARE(m_app->documentController().windowControllers().size(), 2);
}

void CommandPaletteTest::typedCommand_forTheFocus_reachesTheText()
{
    setText(u"abc"_s);
    choose(u"元に戻す"_s);
    QCOMPARE(text(), QString());
    choose(u"redo"_s);
    QCOMPARE(text(), u"abc"_s);
    choose(u"すべてを選択"_s);
    QCOMPARE(controller()->textView()->selectedRange(), (TextRange{0, 3}));
}

void CommandPaletteTest::switchCommand_showsItsState()
{
    const QString title = u"タブ・全角空白・行末の空白を表示"_s;
    press(Qt::Key_F1, Qt::NoModifier);
    QVERIFY(row(title).data(Qt::AccessibleTextRole).toString().contains(u"オフ"_s));
    QVERIFY(row(title).data(Qt::AccessibleTextRole).toString().contains(u"Ctrl+Shift+B"_s));
    press(Qt::Key_F1, Qt::NoModifier);
    choose(u"blanks"_s);
    press(Qt::Key_F1, Qt::NoModifier);
    QVERIFY(row(title).data(Qt::AccessibleTextRole).toString().contains(u"オン"_s));
    press(Qt::Key_F1, Qt::NoModifier);
    choose(u"blanks"_s);
}

void CommandPaletteTest::impossibleCommand_isDisabled()
{
    press(Qt::Key_F1, Qt::NoModifier);
    QVERIFY(!(row(u"元に戻す"_s).flags() & Qt::ItemIsEnabled));
    QVERIFY(!(row(u"次のタブ"_s).flags() & Qt::ItemIsEnabled));
    QVERIFY(row(u"保存"_s).flags() & Qt::ItemIsEnabled);
}

void CommandPaletteTest::typedMacro_runs()
{
    setText(u"a  \nb\t"_s);
    press(Qt::Key_F1, Qt::NoModifier);
    const QString spoken = row(u"行末スペースを削除"_s).data(Qt::AccessibleTextRole).toString();
    QVERIFY2(spoken.contains(u"組み込み"_s), qPrintable(spoken));
    QVERIFY2(spoken.contains(u"行末の不要な空白"_s), qPrintable(spoken));
    press(Qt::Key_F1, Qt::NoModifier);
    choose(u"不要な 行末"_s);
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"a\nb"_s, test::kLongWait);
}

void CommandPaletteTest::macroWithAKey_isRunByIt()
{
    const QString id = u"default_trimTrailingSpaces"_s;
    MacroKeys &keys = MacroKeys::shared();
    keys.setKey(id, QKeySequence(Qt::CTRL | Qt::Key_F7));
    setText(u"a  "_s);
    press(Qt::Key_F7, Qt::ControlModifier);
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"a"_s, test::kLongWait);
    press(Qt::Key_F1, Qt::NoModifier);
    QVERIFY(row(u"行末スペースを削除"_s)
                .data(Qt::AccessibleTextRole)
                .toString()
                .endsWith(u"Ctrl+F7"_s));
    press(Qt::Key_F1, Qt::NoModifier);
    QCOMPARE(macroItem(id)->shortcut(), QKeySequence()); // The menu shows no key.
    keys.setKey(id, {});
    setText(u"b  "_s);
    press(Qt::Key_F7, Qt::ControlModifier);
    QCOMPARE(text(), u"b  "_s);
    QVERIFY(!controller()->isRunningMacro());
}

void CommandPaletteTest::macroKey_isRecordedInThePalette()
{
    const QString id = u"default_trimTrailingSpaces"_s;
    const QString name = u"行末スペースを削除"_s;
    QLineEdit *field = press(Qt::Key_F1, Qt::NoModifier);
    field->setText(u"保存"_s);
    QTest::keyClick(field, Qt::Key_K, Qt::ControlModifier); // No macro.
    QVERIFY(field->hasFocus());
    field->setText(u"行末スペース"_s);
    QTest::keyClick(field, Qt::Key_K, Qt::ControlModifier);
    QWidget *recorder = QApplication::focusWidget();
    QCOMPARE(recorder->accessibleName(), u"「行末スペースを削除」のキー"_s);
    QTest::keyClick(recorder, Qt::Key_F6, Qt::ControlModifier);
    QVERIFY(field->hasFocus());
    QVERIFY(!recorder->isVisible());
    QCOMPARE(MacroKeys::shared().keyOf(id), QKeySequence(Qt::CTRL | Qt::Key_F6));
    QVERIFY(row(name).data(Qt::AccessibleTextRole).toString().endsWith(u", Ctrl+F6"_s));
    QTest::keyClick(field, Qt::Key_K, Qt::ControlModifier);
    QTest::keyClick(recorder, Qt::Key_Escape); // Ends the recording only.
    QVERIFY(field->hasFocus());
    QVERIFY(Palette::openIn(window()) != nullptr);
    QTest::keyClick(field, Qt::Key_K, Qt::ControlModifier);
    QTest::keyClick(recorder, Qt::Key_Backspace);
    QCOMPARE(MacroKeys::shared().keyOf(id), QKeySequence());
    field->clear(); // The row is found again without its key.
    QVERIFY(!row(name).data(Qt::AccessibleTextRole).toString().contains(u"Ctrl"_s));
}

void CommandPaletteTest::macroKey_taken_isRefused()
{
    MacroKeys::shared().setKey(u"default_removeEmptyLines"_s, QKeySequence(Qt::Key_F8));
    QLineEdit *field = press(Qt::Key_F1, Qt::NoModifier);
    field->setText(u"行末スペース"_s);
    const auto *palette = Palette::openIn(window());
    auto *offer = palette->findChild<QAbstractButton *>(u"paletteKeyOffer"_s);
    QVERIFY(offer->isVisible());
    offer->click();
    QWidget *recorder = QApplication::focusWidget();
    const auto *message = palette->findChild<QLabel *>(u"paletteKeyMessage"_s);
    QTest::keyClick(recorder, Qt::Key_S, Qt::ControlModifier);
    QCOMPARE(message->text(), u"Ctrl+S: 「保存」が使うキーです"_s);
    QTest::keyClick(recorder, Qt::Key_F8);
    QCOMPARE(message->text(), u"F8: 「空行を削除」が使うキーです"_s);
    QVERIFY(recorder->hasFocus());
    QCOMPARE(MacroKeys::shared().keyOf(u"default_trimTrailingSpaces"_s), QKeySequence());
    MacroKeys::shared().setKey(u"default_removeEmptyLines"_s, {});
}

void CommandPaletteTest::macroKeys_equal_runTheFirstMacro()
{
    MacroKeys &keys = MacroKeys::shared(); // As after an edit of the settings by hand.
    keys.setKey(u"default_trimTrailingSpaces"_s, QKeySequence(Qt::Key_F8));
    keys.setKey(u"default_removeEmptyLines"_s, QKeySequence(Qt::Key_F8));
    setText(u"a  \n\nb"_s);
    press(Qt::Key_F8, Qt::NoModifier);
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"a\n\nb"_s, test::kLongWait);
    keys.setKey(u"default_trimTrailingSpaces"_s, {});
    keys.setKey(u"default_removeEmptyLines"_s, {});
}

void CommandPaletteTest::disabledMacro_isNotListed()
{
    Macro macro = *MacroManager::shared().macroWithId(u"default_removeEmptyLines"_s);
    macro.isEnabled = false;
    MacroManager::shared().updateMacro(macro);
    press(Qt::Key_F1, Qt::NoModifier);
    QVERIFY(!row(macro.name).isValid());
    macro.isEnabled = true;
    MacroManager::shared().updateMacro(macro);
}

void CommandPaletteTest::typedTab_comesForward()
{
    const QString path = m_home.write(u"手紙.txt"_s, "x");
    m_app->documentController().newDocument();
    m_app->documentController().openFile(path);
    activate(0);
    choose(u"手紙"_s);
    QVERIFY(controller(2)->isInFront());
}

void CommandPaletteTest::chosenRow_isListedFirstNextTime()
{
    setText(u"x"_s);
    choose(u"edit.selectAll"_s);
    choose(u"find.find"_s);
    controller()->textView()->setFocus();
    controller()->textView()->setSelectedRange({0, 0});
    press(Qt::Key_F1, Qt::NoModifier);
    QCOMPARE(row(u"検索"_s).row(), 0);
    QCOMPARE(row(u"すべてを選択"_s).row(), 1);
}

void CommandPaletteTest::usedRows_afterAnotherStart_areListedFirst()
{
    setText(u"a \n"_s);
    choose(u"edit.selectAll"_s);
    macroItem(u"default_trimTrailingSpaces"_s)->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"a\n"_s, test::kLongWait);
    for (int start = 0; start < 2; ++start) {
        controller()->textView()->setSelectedRange({0, 0});
        press(Qt::Key_F1, Qt::NoModifier);
        QCOMPARE(row(u"行末スペースを削除"_s).row(), 0);
        QCOMPARE(row(u"すべてを選択"_s).row(), 1);
        end();
        begin();
        launch();
        activate(0);
        setText(u"a"_s); // There is something to select.
    }
}

void CommandPaletteTest::goToLine_byKey_movesTheCaret()
{
    setText(u"一行\n二行目\n三行"_s);
    QLineEdit *field = press(Qt::Key_L, Qt::ControlModifier);
    QVERIFY(field != nullptr);
    QCOMPARE(field->text(), u":"_s);
    QTest::keyClicks(field, u"2:3"_s);
    QTest::keyClick(field, Qt::Key_Return);
    QTRY_COMPARE(controller()->textView()->selectedRange(), (TextRange{5, 0}));
    QVERIFY(controller()->textView()->hasFocus());
    QCOMPARE(message(), QString());
}

void CommandPaletteTest::goToLine_pastTheEnd_saysSo()
{
    setText(u"一行\n二行目"_s);
    QLineEdit *field = press(Qt::Key_L, Qt::ControlModifier);
    QTest::keyClicks(field, u"12"_s);
    QTest::keyClick(field, Qt::Key_Return);
    QTRY_COMPARE(message(), u"12 行目はありません。テキストの末尾へ移動しました"_s);
    QCOMPARE(controller()->textView()->selectedRange(), (TextRange{6, 0}));
}

void CommandPaletteTest::palette_whileATabIsSwitched_closes()
{
    m_app->documentController().newDocument();
    activate(0);
    QVERIFY(press(Qt::Key_F1, Qt::NoModifier) != nullptr);
    QVERIFY(press(Qt::Key_Tab, Qt::ControlModifier) == nullptr);
    QVERIFY(controller(1)->isInFront());
    QVERIFY(controller(1)->textView()->hasFocus());
}

QTEST_MAIN(CommandPaletteTest)
#include "CommandPaletteTest.moc"

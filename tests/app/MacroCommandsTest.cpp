#include "app/AppDelegateTestBase.h"
#include "code/CodeEditor.h"
#include "controls/ElidedLabel.h"
#include "controls/VerbatimText.h"
#include "support/Macros.h"
#include "support/ManagerPage.h"
#include "support/Waits.h"

#include <QAccessible>
#include <QComboBox>
#include <QFileDialog>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QToolTip>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of macros started from the menus and the manager, in the whole application.
class MacroCommandsTest final : public QObject, private test::AppDelegateTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup() { end(); }

    void macroManagersTestRun_editsTheLastActiveEditor();
    void macroManagersTestRun_behindTwoEditors_editsTheOneActiveLast();
    void macroManagersTestRun_failing_marksTheLine_data();
    void macroManagersTestRun_failing_marksTheLine();
    void macroManagersTestRun_failing_saysWhy();
    void macroManagersTestRun_withoutEditor_isDisabledAndSaysSo();
    void macroManagersTestRun_lastActiveEditorClosed_runsInAnOpenOne();
    void managers_keys_quitAndOpen_data();
    void managers_keys_quitAndOpen();
    void dynamicMacro_fromTheMenu_editsTheDocument();
    void dynamicMacro_vanished_doesNothing();
    void prefixMacro_prompted_usesTheAnswer_data();
    void prefixMacro_prompted_usesTheAnswer();
    void suffixMacro_promptedAndAccepted_appendsAComma();
    void prompt_ofAMacro_namesItsInput_data();
    void prompt_ofAMacro_namesItsInput();
    void repeatKey_runsTheLastMacroOnThePresentSelection();
    void repeatKey_offersTheLastInput();
    void repeatKey_offersTheLastDatePattern();
    void repeatKey_withoutAMacro_saysSo();
    void datePrompt_cancelled_isNoticed();
    void datePrompt_answered_insertsTheDate();
    void prompt_windowActivatedMeanwhile_receivesTheRun();
    void testMacro_withoutEditor_doesNothing();
    void testMacros_run_reportTheirSuccess();
    void managersRun_withoutEditor_warns();

private:
    void pressRepeatKey() const
    {
        QTest::keyClick(
            controller()->textView(), Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier);
    }

    /// The labels and the answer that the macro's prompt shows. Cancels the prompt.
    QStringList promptOf(const QString &id);
};

QStringList MacroCommandsTest::promptOf(const QString &id)
{
    QStringList shown;
    test::answerModal([&shown](QWidget *window) {
        for (const QLabel *label : window->findChildren<QLabel *>())
            shown << label->text();
        for (const QLineEdit *field : window->findChildren<QLineEdit *>())
            shown << field->text();
        for (const QComboBox *list : window->findChildren<QComboBox *>())
            shown << list->currentText();
        window->close();
    });
    macroItem(id)->trigger();
    return shown;
}

void MacroCommandsTest::macroManagersTestRun_editsTheLastActiveEditor()
{
    launch();
    setText(u"old"_s);
    m_app->showMacroManager();
    const test::ManagerPage page(m_app->macroManagerWindowController()->window());
    QTest::mouseClick(page.tool(u"macroAdd"_s), Qt::LeftButton);
    auto *code = m_app->macroManagerWindowController()->window()->findChild<CodeEditor *>();
    code->textView()->selectAll();
    QTest::keyClicks(code->textView(),
                     u"return { textEdits: [{ type: 'replaceAll', text: 'new' }] };"_s);
    page.click(u"テスト実行"_s);
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"new"_s, test::kLongWait);
    test::clickInModal(u"保存しない"_s); // The question about the draft.
    QVERIFY(m_app->macroManagerWindowController()->window()->close());
}

void MacroCommandsTest::macroManagersTestRun_behindTwoEditors_editsTheOneActiveLast()
{
    launch({m_home.write(u"a.txt"_s, "A"), m_home.write(u"b.txt"_s, "B")});
    m_app->documentController().moveToNewWindow(controller(1), {0, 0});
    m_app->showMacroManager();
    QMainWindow *manager = m_app->macroManagerWindowController()->window();
    const test::ManagerPage page(manager);
    QTest::mouseClick(page.tool(u"macroAdd"_s), Qt::LeftButton);
    manager->findChild<CodeEditor *>()->setText(
        u"return { textEdits: [{ type: 'replaceAll', text: context.document.text + '!' }] };"_s);
    for (const int active : {0, 1, 0}) {
        QStringList expected{text(0), text(1)};
        expected[active] += u'!';
        activate(active);
        m_app->showMacroManager();
        QVERIFY(QTest::qWaitForWindowActive(manager));
        page.click(u"テスト実行"_s);
        QTRY_COMPARE_WITH_TIMEOUT((QStringList{text(0), text(1)}), expected, test::kLongWait);
    }
    QCOMPARE(text(0), u"A!!"_s);
    QCOMPARE(text(1), u"B!"_s);
    test::clickInModal(u"保存しない"_s);
    QVERIFY(manager->close());
}

void MacroCommandsTest::repeatKey_runsTheLastMacroOnThePresentSelection()
{
    launch();
    activate(0);
    setText(u"a \nb "_s);
    macroItem(u"default_trimTrailingSpaces"_s)->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"a\nb"_s, test::kLongWait);
    setText(u"c \nd "_s);
    pressRepeatKey();
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"c\nd"_s, test::kLongWait);
}

void MacroCommandsTest::repeatKey_offersTheLastInput()
{
    launch();
    setText(u"a"_s);
    const auto answer = [](const QString &input, QString *offered = nullptr) {
        test::answerModal([input, offered](QWidget *window) {
            auto *field = window->findChild<QLineEdit *>();
            if (offered != nullptr)
                *offered = field->text();
            field->setText(input);
            QTest::keyClick(field, Qt::Key_Return);
        });
    };
    answer(u"* "_s);
    macroItem(u"default_addLinePrefix"_s)->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"* a"_s, test::kLongWait);
    QString offered;
    activate(0); // The prompt was in front.
    answer(u"> "_s, &offered);
    pressRepeatKey();
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"> * a"_s, test::kLongWait);
    QCOMPARE(offered, u"* "_s);
    QVERIFY(promptOf(u"default_addLinePrefix"_s).contains(u"- "_s)); // The menu offers the default.
}

void MacroCommandsTest::repeatKey_offersTheLastDatePattern()
{
    launch();
    const auto answer = [](int row, int *offered) {
        test::answerModal([row, offered](QWidget *window) {
            auto *list = window->findChild<QComboBox *>();
            *offered = list->currentIndex();
            list->setCurrentIndex(row);
            QTest::keyClick(window, Qt::Key_Return);
        });
    };
    int offered = -1;
    answer(2, &offered);
    macroItem(u"default_insertDateTime"_s)->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"2025/03/05"_s, test::kLongWait);
    QCOMPARE(offered, 0);
    activate(0); // The prompt was in front.
    answer(1, &offered);
    pressRepeatKey();
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"2025/03/052025-03-05"_s, test::kLongWait);
    QCOMPARE(offered, 2);
}

void MacroCommandsTest::repeatKey_withoutAMacro_saysSo()
{
    launch();
    activate(0);
    pressRepeatKey();
    QTRY_COMPARE(message(), u"もう一度実行できるマクロはまだありません"_s);
}

void MacroCommandsTest::dynamicMacro_fromTheMenu_editsTheDocument()
{
    launch();
    setText(u"one  \ntwo\t"_s);
    macroItem(u"default_trimTrailingSpaces"_s)->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"one\ntwo"_s, test::kLongWait);
    controller()->textView()->undo();
    QCOMPARE(text(), u"one  \ntwo\t"_s);
}

void MacroCommandsTest::dynamicMacro_vanished_doesNothing()
{
    launch();
    setText(u"x"_s);
    m_app->runDynamicMacro(u"no such macro"_s);
    QCOMPARE(text(), u"x"_s);
    QCOMPARE(message(), QString());
}

void MacroCommandsTest::prefixMacro_prompted_usesTheAnswer_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("message");
    QTest::newRow("two spaces") << u"  "_s << u"  a\n  b"_s << u""_s;
    QTest::newRow("ordinary") << u"> "_s << u"> a\n> b"_s << u""_s;
    QTest::newRow("empty") << u""_s << u"a\nb"_s
                           << u"文字列が指定されなかったため、実行を中止しました"_s;
}

void MacroCommandsTest::prefixMacro_prompted_usesTheAnswer()
{
    QFETCH(QString, answer);
    QFETCH(QString, text);
    QFETCH(QString, message);
    launch();
    setText(u"a\nb"_s);
    test::answerModal([answer](QWidget *window) {
        auto *field = window->findChild<QLineEdit *>();
        QCOMPARE(field->text(), u"- "_s);
        field->setText(answer);
        test::buttonNamed(window, u"OK"_s)->click();
    });
    macroItem(u"default_addLinePrefix"_s)->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(this->text(), text, test::kLongWait);
    if (!message.isEmpty())
        QCOMPARE(this->message(), message);
}

void MacroCommandsTest::suffixMacro_promptedAndAccepted_appendsAComma()
{
    launch();
    setText(u"a\nb"_s);
    test::clickInModal(u"OK"_s);
    macroItem(u"default_addLineSuffix"_s)->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"a,\nb,"_s, test::kLongWait);
}

void MacroCommandsTest::prompt_ofAMacro_namesItsInput_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("question");
    QTest::addColumn<QString>("initial");
    QTest::newRow("prefix") << u"default_addLinePrefix"_s << u"dialog.prefixMessage"_s
                            << u"行頭に追加する文字列を入力してください："_s << u"- "_s;
    QTest::newRow("suffix") << u"default_addLineSuffix"_s << u"dialog.suffixMessage"_s
                            << u"行末に追加する文字列を入力してください："_s << u","_s;
    QTest::newRow("date") << u"default_insertDateTime"_s << u"dialog.dateTimeMessage"_s
                          << u"挿入する日付の形式を選択してください："_s << u"yyyy-MM-dd HH:mm"_s;
}

void MacroCommandsTest::prompt_ofAMacro_namesItsInput()
{
    QFETCH(QString, id);
    QFETCH(QString, key);
    QFETCH(QString, question);
    QFETCH(QString, initial);
    launch();
    QCOMPARE(promptOf(id), (QStringList{u"入力"_s, question, initial}));
    UIWordingProfile profile;
    profile.id = u"own"_s;
    profile.values = {{u"dialog.inputTitle"_s, u"Input"_s}, {key, u"Own question"_s}};
    UIWordingProfileManager::shared().applyProfile(profile);
    QCOMPARE(promptOf(id), (QStringList{u"Input"_s, u"Own question"_s, initial}));
}

void MacroCommandsTest::datePrompt_cancelled_isNoticed()
{
    launch();
    test::clickInModal(u"キャンセル"_s);
    macroItem(u"default_insertDateTime"_s)->trigger();
    QCOMPARE(message(), u"キャンセルしました"_s);
    QCOMPARE(text(), QString());
}

void MacroCommandsTest::datePrompt_answered_insertsTheDate()
{
    launch();
    test::answerModal([](QWidget *window) {
        window->findChild<QComboBox *>()->setCurrentIndex(4);
        test::buttonNamed(window, u"OK"_s)->click();
    });
    macroItem(u"default_insertDateTime"_s)->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"2025年3月5日"_s, test::kLongWait);
}

void MacroCommandsTest::prompt_windowActivatedMeanwhile_receivesTheRun()
{
    launch({m_home.write(u"a.txt"_s, "A"), m_home.write(u"b.txt"_s, "B")});
    activate(0);
    test::answerModal([this](QWidget *window) {
        activate(1);
        test::buttonNamed(window, u"OK"_s)->click();
    });
    macroItem(u"default_addLinePrefix"_s)->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(text(1), u"- B"_s, test::kLongWait);
    QCOMPARE(text(0), u"A"_s);
}

void MacroCommandsTest::testMacro_withoutEditor_doesNothing()
{
    m_app->runTestMacro();
    m_app->runTestMacroSelection();
    m_app->runDynamicMacro(u"default_trimTrailingSpaces"_s);
    QCoreApplication::processEvents();
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(m_app->lastActiveEditorWindowController() == nullptr);
}

void MacroCommandsTest::testMacros_run_reportTheirSuccess()
{
    launch();
    QList<QAction *> items = macroMenu(controller()->window())->actions();
    items.last()->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(message(),
                              u"選択範囲がありません。テキストを選択してから実行してください。"_s,
                              test::kLongWait);
    setText(u"abc"_s);
    controller()->textView()->setSelectedRange({1, 1});
    items.last()->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(message(), u"replaceSelection テスト成功"_s, test::kLongWait);
    QCOMPARE(text(), u"a[選択テスト: b]c"_s);
    items.at(items.size() - 2)->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(message(), u"replaceAll テスト成功"_s, test::kLongWait);
    QVERIFY(text().startsWith(u"テストマクロが実行されました！\n現在時刻: "_s));
}

void MacroCommandsTest::managersRun_withoutEditor_warns()
{
    QString warning;
    test::clickInModal(u"OK"_s, &warning);
    m_app->runMacroInActiveEditor(test::sampleMacro());
    QCOMPARE(warning, u"実行対象のエディタが見つかりません"_s);
}

void MacroCommandsTest::macroManagersTestRun_failing_marksTheLine_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<int>("line");
    QTest::newRow("first line") << u"missing();"_s << 1;
    QTest::newRow("third line") << u"let a;\n\nthrow new Error('x');\n"_s << 3;
    QTest::newRow("in a function") << u"function f() {\n  null.x;\n}\nf();"_s << 2;
    QTest::newRow("no program") << u"let a = 1;\nlet = = 2;"_s << 2;
    QTest::newRow("no error thrown") << u"\n\nthrow 'text';"_s << 0;
    QTest::newRow("wrong type") << u"let a;\nreturn { textEdits: [{ type: 'x' }] };\n"_s << 2;
    QTest::newRow("no text") << u"\n\nreturn {\n textEdits: [{ type: 'replaceAll' }] };\n"_s << 3;
    QTest::newRow("no such lines")
        << u"return { textEdits: [{ type: 'replaceLines', startLine: 8, endLine: 9, lines: [] }] };"_s
        << 1;
    QTest::newRow("no object") << u"if (!context) return {};\nreturn 1;\n"_s << 2;
    QTest::newRow("no result") << u"let a;\n"_s << 0;
}

void MacroCommandsTest::macroManagersTestRun_failing_marksTheLine()
{
    QFETCH(QString, code);
    QFETCH(int, line);
    launch();
    setText(u"a\u2028b\nc"_s);
    m_app->showMacroManager();
    const test::ManagerPage page(m_app->macroManagerWindowController()->window());
    QTest::mouseClick(page.tool(u"macroAdd"_s), Qt::LeftButton);
    auto *editor = m_app->macroManagerWindowController()->window()->findChild<CodeEditor *>();
    editor->setText(code);
    page.click(u"テスト実行"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!message().isEmpty(), test::kLongWait);
    QTRY_COMPARE(editor->errorLine(), line);
    const auto *error = editor->window()->findChild<ElidedLabel *>(u"macroRunError"_s);
    QVERIFY(error->isVisible());
    QVERIFY(error->text().endsWith(message()));
    test::clickInModal(u"保存しない"_s);
    QVERIFY(m_app->macroManagerWindowController()->window()->close());
}

void MacroCommandsTest::macroManagersTestRun_failing_saysWhy()
{
    launch();
    m_app->showMacroManager();
    QMainWindow *manager = m_app->macroManagerWindowController()->window();
    const test::ManagerPage page(manager);
    QTest::mouseClick(page.tool(u"macroAdd"_s), Qt::LeftButton);
    auto *editor = manager->findChild<CodeEditor *>();
    editor->setText(u"let a;\nthrow new Error('<b> & x');"_s);
    page.click(u"テスト実行"_s);
    QTRY_COMPARE(editor->errorLine(), 2);
    const QString reason = u"2 行目: "_s + message();
    QVERIFY(reason.contains(u"<b> & x"_s));
    const auto *error = manager->findChild<ElidedLabel *>(u"macroRunError"_s);
    QCOMPARE(error->text(), reason);
    QVERIFY(error->isVisible());
    const auto *told = QAccessible::queryAccessibleInterface(editor->textView());
    QVERIFY(told->text(QAccessible::Description).startsWith(reason));

    const auto tipAt = [editor](qint64 offset) {
        QWidget *viewport = editor->textView()->viewport();
        const QPoint place = editor->textView()->caretRectAt(offset).center().toPoint();
        QHelpEvent event(QEvent::ToolTip, place, viewport->mapToGlobal(place));
        QCoreApplication::sendEvent(viewport, &event);
        return QToolTip::text();
    };
    QCOMPARE(tipAt(0), QString());
    QCOMPARE(tipAt(8), verbatimToolTip(reason));

    // The mark, the message and the description go with the next edit.
    QTest::keyClicks(editor->textView(), u"x"_s);
    QVERIFY(!error->isVisible());
    QCOMPARE(editor->errorLine(), 0);
    QVERIFY(!told->text(QAccessible::Description).contains(u"<b>"_s));
    test::clickInModal(u"保存しない"_s);
    QVERIFY(manager->close());
}

void MacroCommandsTest::macroManagersTestRun_withoutEditor_isDisabledAndSaysSo()
{
    launch();
    m_app->showMacroManager();
    QMainWindow *manager = m_app->macroManagerWindowController()->window();
    const test::ManagerPage page(manager);
    page.clickRow(0);
    auto *button = manager->findChild<QPushButton *>(u"macroTestRun"_s);
    QVERIFY(button->isEnabled());
    const std::shared_ptr<EditorWindowController> closed =
        m_app->documentController().windowControllers().first();
    QVERIFY(m_app->documentController().closeDocument(closed.get()));
    QVERIFY(!button->isEnabled());
    QCOMPARE(button->toolTip(), u"実行対象のエディタが見つかりません"_s);
    QCOMPARE(button->accessibleDescription(), u"実行対象のエディタが見つかりません"_s);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(closed->textView()->string().toString(), QString());

    m_app->documentController().newDocument();
    QCoreApplication::processEvents();
    QVERIFY(button->isEnabled());
    QCOMPARE(button->toolTip(), QString());
    QVERIFY(manager->close());
}

void MacroCommandsTest::macroManagersTestRun_lastActiveEditorClosed_runsInAnOpenOne()
{
    launch({m_home.write(u"a.txt"_s, "A"), m_home.write(u"b.txt"_s, "B")});
    m_app->documentController().moveToNewWindow(controller(1), {0, 0});
    activate(1);
    m_app->showMacroManager();
    QMainWindow *manager = m_app->macroManagerWindowController()->window();
    QVERIFY(QTest::qWaitForWindowActive(manager));
    const std::shared_ptr<EditorWindowController> closed =
        m_app->documentController().windowControllers().at(1);
    QVERIFY(m_app->documentController().closeDocument(closed.get()));
    manager->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(manager));
    Macro macro = test::sampleMacro();
    macro.code = u"return { textEdits: [{ type: 'replaceAll', text: 'new' }] };"_s;
    m_app->runMacroInActiveEditor(macro);
    QTRY_COMPARE(text(0), u"new"_s);
    QCOMPARE(closed->textView()->string().toString(), u"B"_s);
    QVERIFY(manager->close());
}

void MacroCommandsTest::managers_keys_quitAndOpen_data()
{
    QTest::addColumn<bool>("isMacroManager");
    QTest::newRow("macro manager") << true;
    QTest::newRow("profile manager") << false;
}

void MacroCommandsTest::managers_keys_quitAndOpen()
{
    QFETCH(const bool, isMacroManager);
    launch();
    setText(u"unsaved"_s);
    isMacroManager ? m_app->showMacroManager() : m_app->showProfileManager();
    QMainWindow *manager = isMacroManager ? m_app->macroManagerWindowController()->window()
                                          : m_app->profileManagerWindowController()->window();
    QVERIFY(QTest::qWaitForWindowActive(manager));
    QTest::keyClick(manager, Qt::Key_N, Qt::ControlModifier);
    QCOMPARE(m_app->documentController().windowControllers().size(), 2);

    manager->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(manager));
    bool isPanel = false;
    test::answerModal([&isPanel](QWidget *window) {
        isPanel = qobject_cast<QFileDialog *>(window) != nullptr;
        window->close();
    });
    QTest::keyClick(manager, Qt::Key_O, Qt::ControlModifier);
    QVERIFY(isPanel);

    manager->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(manager));
    QString question;
    test::clickInModal(u"キャンセル"_s, &question);
    QTest::keyClick(manager, Qt::Key_Q, Qt::ControlModifier);
    QVERIFY(!question.isEmpty());
    QVERIFY(m_app->documentController().hasDocuments());
    QVERIFY(manager->close());
}

QTEST_MAIN(MacroCommandsTest)
#include "MacroCommandsTest.moc"

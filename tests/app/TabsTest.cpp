#include "app/DocumentsTestBase.h"
#include "support/CutToScreen.h"
#include "support/ModalAnswer.h"
#include "window/EditorTabBar.h"
#include "window/MainEditorView.h"
#include "window/StatusMessageLabel.h"

#include <QDialog>
#include <QScrollBar>
#include <QTest>

#include <chrono>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of documents in tabs: where they open, how they close, where they move.
class TabsTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup() { end(); }

    void open_severalFiles_becomeTabsInOrder();
    void open_inANewWindow_leavesTheOthers();
    void open_afterwards_goesToTheWindowActiveLast();
    void open_besideAnUntouchedTab_leavesThatAlone();
    void open_withAnUntouchedWindowElsewhere_leavesThatAlone();
    void open_fileOfATabBehind_bringsThatForward();
    void new_document_isATabInFront();
    void statusBar_ofEachTab_showsItsOwn();
    void closeTab_unedited_leavesTheOthers();
    void closeTab_edited_asksAboutItAlone_data();
    void closeTab_edited_asksAboutItAlone();
    void closeTab_namedToMislead_asksOnOneLine();
    void closeTab_last_closesTheWindowOnly();
    void closeTab_byTheMiddleButton_asksToo();
    void closeTab_heldElsewhere_keepsItsText();
    void closeTab_whileItIsRead_closesItOnly();
    void closeOthers_agreed_leavesOne();
    void closeOthers_cancelled_leavesAll();
    void closeWindow_asksAboutEachInFront();
    void closeWindow_cancelAtTheSecond_leavesAll();
    void closeWindow_savesWhatWasAskedFor();
    void closeWindow_whileATabIsRead_closes();
    void closeWindow_fileOpenedDuringTheQuestion_isAskedAboutToo();
    void closeWindow_one_leavesTheOtherWindow();
    void quit_withTabsInTwoWindows_asksForAllFirst();
    void quit_withAQuestionOnAnotherWindow_showsIt();
    void moveToNewWindow_keepsTextUndoAndPlace();
    void moveToNewWindow_alone_movesTheWindow();
    void moveToNewWindow_ofAMaximisedWindow_hasItsOrdinarySize();
    void moveBack_closesTheEmptyWindowSilently();
    void failure_ofATabThatIsRead_leavesTheOthers();

private:
    void open(const QString &name, DocumentController::Placement placement = {}) const
    {
        QVERIFY(m_documents->openFile(m_home->write(name, name.toUtf8()), placement));
    }

    void open(const QStringList &names) const
    {
        for (const QString &name : names)
            open(name);
    }

    void middleClick(int index) const
    {
        EditorTabBar *bar = window(index)->tabBar();
        const int tab = window(index)->indexOf(controller(index));
        QTest::mouseClick(bar, Qt::MiddleButton, {}, bar->tabRect(tab).center());
    }

    static constexpr auto kNewWindow = DocumentController::Placement::NewWindow;
};

void TabsTest::open_severalFiles_becomeTabsInOrder()
{
    open({u"a.txt"_s, u"b.txt"_s, u"c.txt"_s});
    QCOMPARE(m_documents->windows().size(), 1);
    const EditorTabBar *bar = window(0)->tabBar();
    QVERIFY(bar->isVisible());
    QCOMPARE(bar->count(), 3);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(bar->tabText(i), (QStringList{u"a.txt"_s, u"b.txt"_s, u"c.txt"_s}.at(i)));
    QCOMPARE(bar->tabToolTip(1), m_home->file(u"b.txt"_s));
    QVERIFY(controller(2)->isInFront());
    QCOMPARE(window(0)->windowTitle(), u"c.txt[*] — penwick"_s);
    QTRY_VERIFY(view(2)->hasFocus());
}

void TabsTest::open_inANewWindow_leavesTheOthers()
{
    open({u"a.txt"_s, u"b.txt"_s});
    open(u"c.txt"_s, kNewWindow);
    m_documents->newDocument(kNewWindow);
    QCOMPARE(m_documents->windows().size(), 3);
    QVERIFY(window(2) != window(0) && window(3) != window(2));
    QVERIFY(!window(2)->tabBar()->isVisible());
    QVERIFY(QTest::qWaitForWindowExposed(window(2)));
    QCOMPARE(window(2)->size(), test::cutToScreen(window(2), QSize(900, 650)));
}

void TabsTest::open_afterwards_goesToTheWindowActiveLast()
{
    open(u"a.txt"_s);
    open(u"b.txt"_s, kNewWindow);
    window(0)->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window(0)));
    QWidget other; // For example a manager.
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    open(u"c.txt"_s);
    QCOMPARE(window(2), window(0));
}

void TabsTest::open_besideAnUntouchedTab_leavesThatAlone()
{
    open(u"a.txt"_s);
    m_documents->newDocument();
    open(u"b.txt"_s);
    QCOMPARE(m_documents->windowControllers().size(), 3);
    QCOMPARE(window(0)->count(), 3);
}

void TabsTest::open_withAnUntouchedWindowElsewhere_leavesThatAlone()
{
    m_documents->newDocument();
    open(u"a.txt"_s, kNewWindow);
    QTRY_COMPARE(QApplication::activeWindow(), window(1));
    open(u"b.txt"_s);
    QCOMPARE(m_documents->windowControllers().size(), 3);
    QCOMPARE(window(2), window(1));
    window(0)->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window(0)));
    open(u"c.txt"_s);
    QCOMPARE(m_documents->windowControllers().size(), 3);
    QCOMPARE(text(0), u"c.txt"_s);
}

void TabsTest::open_fileOfATabBehind_bringsThatForward()
{
    open({u"a.txt"_s, u"b.txt"_s});
    QVERIFY(m_documents->openFile(m_home->file(u"a.txt"_s)));
    QVERIFY(controller(0)->isInFront());
    QCOMPARE(window(0)->count(), 2);
    QTRY_COMPARE(QApplication::focusWidget(), view(0));
}

void TabsTest::new_document_isATabInFront()
{
    open(u"a.txt"_s);
    m_documents->newDocument();
    QCOMPARE(window(1), window(0));
    QVERIFY(controller(1)->isInFront());
    QCOMPARE(window(0)->windowTitle(), u"名称未設定[*] — penwick"_s);
    QCOMPARE(window(0)->tabBar()->tabToolTip(1), u"名称未設定"_s);
}

void TabsTest::statusBar_ofEachTab_showsItsOwn()
{
    open({u"a.txt"_s, u"b.txt"_s});
    controller(0)->documentState()->setMacroNotificationMessage(u"about a"_s);
    const auto shown = [this](int index) {
        const auto *label = controller(index)->content()->findChild<StatusMessageLabel *>();
        return label->isVisible() ? label->text() : QString();
    };
    QTRY_COMPARE(shown(1), QString());
    window(0)->setCurrentController(controller(0));
    QTRY_COMPARE(shown(0), u"about a"_s);
    type(u"xy"_s);
    QTRY_COMPARE(controller(0)->documentState()->characterCount(), 7);
    QCOMPARE(controller(1)->documentState()->characterCount(), 5);
}

void TabsTest::closeTab_unedited_leavesTheOthers()
{
    open({u"a.txt"_s, u"b.txt"_s, u"c.txt"_s});
    EditorWindow *window = this->window(0);
    QVERIFY(m_documents->closeDocument(controller(1)));
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QCOMPARE(window->count(), 2);
    QVERIFY(window->isVisible());
    QVERIFY(controller(1)->isInFront());
    QVERIFY(m_documents->closeDocument(controller(1)));
    QVERIFY(controller(0)->isInFront());
    QCOMPARE(window->windowTitle(), u"a.txt[*] — penwick"_s);
    QVERIFY(!window->tabBar()->isVisible());
    QTRY_COMPARE(QApplication::focusWidget(), view(0));
}

void TabsTest::closeTab_edited_asksAboutItAlone_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("closes");
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("save") << u"保存"_s << true << QByteArray("xa.txt");
    QTest::newRow("discard") << u"保存しない"_s << true << QByteArray("a.txt");
    QTest::newRow("cancel") << u"キャンセル"_s << false << QByteArray("a.txt");
}

void TabsTest::closeTab_edited_asksAboutItAlone()
{
    QFETCH(QString, answer);
    QFETCH(bool, closes);
    open({u"a.txt"_s, u"b.txt"_s});
    type(u"x"_s);
    type(u"y"_s, 1); // Closing the first tab does not ask about this one.
    EditorWindow *window = this->window(0);
    QString message;
    test::clickInModal(answer, &message);
    QCOMPARE(m_documents->closeDocument(controller(0)), closes);
    QCOMPARE(message, u"「a.txt」への変更を保存しますか？"_s);
    QCOMPARE(window->count(), closes ? 1 : 2);
    QCOMPARE(window->currentController()->document()->isEdited(), true);
    QCOMPARE(window->windowTitle(), closes ? u"b.txt[*] — penwick"_s : u"a.txt[*] — penwick"_s);
    QTEST(m_home->read(u"a.txt"_s), "file");
}

void TabsTest::closeTab_namedToMislead_asksOnOneLine()
{
    open({u"a\u202Etxt\n.exe"_s, u"b.txt"_s});
    type(u"x"_s);
    QString message;
    test::clickInModal(u"キャンセル"_s, &message);
    QVERIFY(!m_documents->closeDocument(controller(0)));
    QCOMPARE(message, u"「a\uFFFDtxt\uFFFD.exe」への変更を保存しますか？"_s);
}

void TabsTest::closeTab_last_closesTheWindowOnly()
{
    open(u"a.txt"_s);
    open(u"b.txt"_s, kNewWindow);
    const EditorWindow *first = window(0);
    const auto kept = m_documents->windowControllers().at(0);
    QVERIFY(m_documents->closeDocument(controller(0)));
    QVERIFY(!first->isVisible());
    QCOMPARE(m_documents->windows().size(), 1);
    QVERIFY(window(0)->isVisible());
    QVERIFY(m_documents->controllerOf(first) == nullptr);
}

void TabsTest::closeTab_byTheMiddleButton_asksToo()
{
    open({u"a.txt"_s, u"b.txt"_s, u"c.txt"_s});
    type(u"x"_s);
    middleClick(1);
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QVERIFY(controller(1)->isInFront());
    test::clickInModal(u"キャンセル"_s);
    middleClick(0);
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QVERIFY(controller(0)->isInFront()); // The question's tab comes to the front.
    test::clickInModal(u"保存しない"_s);
    middleClick(0);
    QCOMPARE(m_documents->windowControllers().size(), 1);
}

// The last active editor stays alive after its tab closes, and may still be the target of a macro.
void TabsTest::closeTab_heldElsewhere_keepsItsText()
{
    open({u"a.txt"_s, u"b.txt"_s});
    const EditorWindow *window = this->window(0);
    const auto kept = m_documents->windowControllers().at(1);
    QVERIFY(m_documents->closeDocument(kept.get()));
    QCoreApplication::processEvents();
    QVERIFY(kept->window() != nullptr && kept->window() != window);
    QVERIFY(!kept->window()->isVisible());
    QCOMPARE(kept->textView()->string().toString(), u"b.txt"_s);
    QVERIFY(m_documents->documentOf(kept.get()) == nullptr);
    QCOMPARE(window->count(), 1);
}

void TabsTest::closeTab_whileItIsRead_closesItOnly()
{
    using namespace std::chrono_literals;
    open(u"a.txt"_s);
    m_documents->setTransferLimits({.directBytes = 1, .reading = 0ms, .saving = 0ms});
    QVERIFY(m_documents->openFile(m_home->write(u"b.txt"_s, QByteArray(20'000'000, 'x'))));
    QVERIFY(document(1)->isReading());
    QCOMPARE(window(1), window(0));
    middleClick(1);
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCOMPARE(text(0), u"a.txt"_s);
}

void TabsTest::closeOthers_agreed_leavesOne()
{
    open({u"a.txt"_s, u"b.txt"_s, u"c.txt"_s});
    type(u"x"_s, 2);
    const auto kept = m_documents->windowControllers().at(1);
    test::clickInModal(u"保存しない"_s);
    QVERIFY(m_documents->closeOtherDocuments(kept.get()));
    QCOMPARE(m_documents->windowControllers(), QList{kept});
    QVERIFY(kept->isInFront() && kept->window()->isVisible());
}

void TabsTest::closeOthers_cancelled_leavesAll()
{
    open({u"a.txt"_s, u"b.txt"_s, u"c.txt"_s});
    type(u"x"_s, 2);
    test::clickInModal(u"キャンセル"_s);
    QVERIFY(!m_documents->closeOtherDocuments(controller(1)));
    QCOMPARE(window(0)->count(), 3);
}

void TabsTest::closeWindow_asksAboutEachInFront()
{
    open({u"a.txt"_s, u"b.txt"_s, u"c.txt"_s});
    type(u"x"_s);
    type(u"y"_s, 2);
    QStringList titles;
    EditorWindow *window = this->window(0);
    const auto answer = [&titles, window](QWidget *modal) {
        titles << window->windowTitle();
        test::buttonNamed(modal, u"保存しない"_s)->click();
    };
    test::answerModal([answer](QWidget *modal) {
        test::answerModal(answer);
        answer(modal);
    });
    QVERIFY(window->close());
    QCOMPARE(titles, (QStringList{u"a.txt[*] — penwick"_s, u"c.txt[*] — penwick"_s}));
    QVERIFY(!m_documents->hasDocuments());
}

void TabsTest::closeWindow_cancelAtTheSecond_leavesAll()
{
    open({u"a.txt"_s, u"b.txt"_s, u"c.txt"_s});
    type(u"x"_s);
    type(u"y"_s, 2);
    test::answerModal([](QWidget *modal) {
        test::clickInModal(u"キャンセル"_s);
        test::buttonNamed(modal, u"保存しない"_s)->click();
    });
    QVERIFY(!window(0)->close());
    QCOMPARE(window(0)->count(), 3);
    QCOMPARE(text(0), u"xa.txt"_s);
    QVERIFY(document(0)->isEdited());
    QVERIFY(window(0)->isVisible() && controller(2)->isInFront());
}

void TabsTest::closeWindow_savesWhatWasAskedFor()
{
    open({u"a.txt"_s, u"b.txt"_s});
    type(u"x"_s);
    type(u"y"_s, 1);
    test::answerModal([](QWidget *modal) {
        test::clickInModal(u"保存しない"_s);
        test::buttonNamed(modal, u"保存"_s)->click();
    });
    QVERIFY(window(0)->close());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xa.txt"));
    QCOMPARE(m_home->read(u"b.txt"_s), QByteArray("b.txt"));
}

void TabsTest::closeWindow_whileATabIsRead_closes()
{
    using namespace std::chrono_literals;
    open(u"a.txt"_s);
    m_documents->setTransferLimits({.directBytes = 1, .reading = 0ms, .saving = 0ms});
    QVERIFY(m_documents->openFile(m_home->write(u"b.txt"_s, QByteArray(20'000'000, 'x'))));
    type(u"x"_s);
    test::clickInModal(u"保存しない"_s);
    QVERIFY(window(0)->close());
    QVERIFY(!m_documents->hasDocuments());
}

// Another program can request this at any time.
void TabsTest::closeWindow_fileOpenedDuringTheQuestion_isAskedAboutToo()
{
    open(u"a.txt"_s);
    type(u"x"_s);
    test::answerModal([this](QWidget *modal) {
        open(u"b.txt"_s);
        QCOMPARE(window(1), window(0));
        type(u"y"_s, 1);
        test::clickInModal(u"キャンセル"_s);
        test::buttonNamed(modal, u"保存しない"_s)->click();
    });
    QVERIFY(!window(0)->close());
    QCOMPARE(window(0)->count(), 2);
    QCOMPARE(text(1), u"yb.txt"_s);
}

void TabsTest::closeWindow_one_leavesTheOtherWindow()
{
    open({u"a.txt"_s, u"b.txt"_s});
    open(u"c.txt"_s, kNewWindow);
    type(u"x"_s, 2);
    QVERIFY(window(0)->close());
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCOMPARE(text(0), u"xc.txt"_s);
}

void TabsTest::quit_withTabsInTwoWindows_asksForAllFirst()
{
    open({u"a.txt"_s, u"b.txt"_s});
    open(u"c.txt"_s, kNewWindow);
    type(u"x"_s);
    type(u"y"_s, 2);
    test::answerModal([](QWidget *modal) {
        test::clickInModal(u"キャンセル"_s);
        test::buttonNamed(modal, u"保存しない"_s)->click();
    });
    QVERIFY(!m_documents->closeAll());
    QCOMPARE(m_documents->windowControllers().size(), 3);
    test::answerModal([](QWidget *modal) {
        test::clickInModal(u"保存しない"_s);
        test::buttonNamed(modal, u"保存しない"_s)->click();
    });
    QVERIFY(m_documents->closeAll());
    QVERIFY(!m_documents->hasDocuments());
}

void TabsTest::quit_withAQuestionOnAnotherWindow_showsIt()
{
    open(u"a.txt"_s);
    open(u"b.txt"_s, kNewWindow);
    QDialog question(window(0));
    question.setWindowModality(Qt::WindowModal);
    question.open();
    window(1)->activateWindow();
    QTRY_COMPARE(QApplication::activeWindow(), window(1));
    QVERIFY(!m_documents->closeAll());
    QTRY_COMPARE(QApplication::activeWindow(), &question);
    QCOMPARE(m_documents->windowControllers().size(), 2);
}

void TabsTest::moveToNewWindow_keepsTextUndoAndPlace()
{
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, QByteArray("line\n").repeated(1000))));
    open(u"b.txt"_s);
    type(u"x"_s);
    EditorWindow *former = window(0);
    former->setCurrentController(controller(0));
    view(0)->setSelectedRange({500, 10});
    view(0)->verticalScrollBar()->setValue(200);
    QList<EditorWindow *> made;
    connect(m_documents.get(),
            &DocumentController::windowMade,
            this,
            [&made](EditorWindow *window) { made << window; });
    m_documents->moveToNewWindow(controller(0), {100, 50});
    QCOMPARE(made, QList{window(0)});
    QVERIFY(window(0) != former && window(0)->isVisible());
    QCOMPARE(window(0)->size(), former->size());
    QVERIFY(window(0)->tabBar()->isVisible()); // So that the tab can be dragged back.
    QVERIFY(!former->tabBar()->isVisible());
    QCOMPARE(window(0)->windowTitle(), u"a.txt[*] — penwick"_s);
    QVERIFY(window(0)->isWindowModified() && !former->isWindowModified());
    QCOMPARE(view(0)->selectedRange(), (TextRange{500, 10}));
    QCOMPARE(view(0)->verticalScrollBar()->value(), 200);
    QTRY_COMPARE(QApplication::activeWindow(), window(0));
    QTRY_VERIFY(view(0)->hasFocus());
    view(0)->undo();
    QVERIFY(!window(0)->isWindowModified());
    // Questions about the document now appear over its new window.
    type(u"y"_s);
    test::answerModal([this](QWidget *modal) {
        QCOMPARE(modal->parentWidget(), window(0));
        modal->close();
    });
    QVERIFY(!window(0)->close());
    QVERIFY(former->close());
}

void TabsTest::moveToNewWindow_alone_movesTheWindow()
{
    open(u"a.txt"_s);
    const EditorWindow *former = window(0);
    m_documents->moveToNewWindow(controller(0), {30, 40});
    QCOMPARE(window(0), former);
    QCOMPARE(former->pos(), QPoint(30, 40));
}

void TabsTest::moveToNewWindow_ofAMaximisedWindow_hasItsOrdinarySize()
{
    open({u"a.txt"_s, u"b.txt"_s});
    window(0)->resize(640, 480);
    QCoreApplication::processEvents();
    window(0)->showMaximized();
    m_documents->moveToNewWindow(controller(1), {5000, 5000});
    QCOMPARE(window(1)->size(), QSize(640, 480));
    QVERIFY(!window(1)->isMaximized());
    QVERIFY(window(1)->screen()->availableGeometry().contains(window(1)->pos()));
}

void TabsTest::moveBack_closesTheEmptyWindowSilently()
{
    open({u"a.txt"_s, u"b.txt"_s});
    type(u"x"_s, 1);
    m_documents->moveToNewWindow(controller(1), {0, 0});
    const std::weak_ptr<EditorWindow> torn = window(1)->shared_from_this();
    controller(1)->moveTo(window(0)->shared_from_this(), 0);
    QCoreApplication::processEvents();
    QVERIFY(torn.expired());
    QCOMPARE(window(0)->count(), 2);
    QCOMPARE(window(0)->indexOf(controller(1)), 0);
    QCOMPARE(m_documents->windows().size(), 1);
    open(u"c.txt"_s); // The last active window is gone; the remaining one is used.
    QCOMPARE(window(0)->count(), 3);
}

void TabsTest::failure_ofATabThatIsRead_leavesTheOthers()
{
    using namespace std::chrono_literals;
    open(u"a.txt"_s);
    m_documents->setTransferLimits({.directBytes = 1, .reading = 0ms, .saving = 0ms});
    // The start of a file is checked before its tab opens.
    QVERIFY(
        m_documents->openFile(m_home->write(u"bad.txt"_s, QByteArray(1'000'000, 'a') + '\xFF')));
    window(0)->setCurrentController(controller(0));
    const test::ModalAnswerer answer([](QWidget *modal) { return modal->close(); });
    QTRY_COMPARE(m_documents->windowControllers().size(), 1);
    QVERIFY(answer.hasAnswered());
    QCOMPARE(window(0)->count(), 1);
    QVERIFY(window(0)->isVisible());
    QCOMPARE(text(0), u"a.txt"_s);
}

QTEST_MAIN(TabsTest)
#include "TabsTest.moc"

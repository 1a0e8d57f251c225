#include "window/MainEditorView.h"

#include "view/TextView.h"
#include "window/StatusBarView.h"
#include "window/TextViewRepresentable.h"

#include <QApplication>
#include <QFontInfo>
#include <QHelpEvent>
#include <QLabel>
#include <QTest>
#include <QToolTip>
#include <QVBoxLayout>

using namespace penwick;
using namespace Qt::StringLiterals;

class MainEditorViewTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layout_topToBottom_isTextDividerStatusBar();
    void layout_taller_givesTheTextAllOfIt();
    void textView_made_hasStateTextFontAndFocus();
    void counters_toolTip_countsTheSelection();
    void openedText_isCountedInALaterTurn();
    void documentGone_beforeTheView_isHarmless();
    void windowClosed_whileUpdatesAreQueued_writesNothing();
    void escape_leftOverByTheText_dismissesTheMessage();
};

void MainEditorViewTest::layout_topToBottom_isTextDividerStatusBar()
{
    DocumentState state;
    TextDocument document;
    const MainEditorView view(&state, &document);
    QCOMPARE(view.layout()->count(), 3);
    QCOMPARE(view.layout()->itemAt(0)->widget(), view.textViewRepresentable());
    const auto *divider = qobject_cast<QFrame *>(view.layout()->itemAt(1)->widget());
    QVERIFY(divider != nullptr);
    QCOMPARE(divider->frameShape(), QFrame::HLine);
    QVERIFY(qobject_cast<StatusBarView *>(view.layout()->itemAt(2)->widget()) != nullptr);
    QCOMPARE(view.layout()->spacing(), 0);
    QCOMPARE(view.layout()->contentsMargins(), QMargins());
}

void MainEditorViewTest::layout_taller_givesTheTextAllOfIt()
{
    DocumentState state;
    TextDocument document;
    MainEditorView view(&state, &document);
    view.resize(600, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const int textHeight = view.textView()->height();
    const QWidget *bar = view.findChild<StatusBarView *>();
    const int barHeight = bar->height();
    view.resize(600, 700);
    QTRY_COMPARE(view.textView()->height(), textHeight + 300);
    QCOMPARE(bar->height(), barHeight);
    QCOMPARE(bar->geometry().bottom(), view.rect().bottom());
}

void MainEditorViewTest::textView_made_hasStateTextFontAndFocus()
{
    DocumentState state;
    state.setText(Text(u"hello"));
    TextDocument document;
    MainEditorView view(&state, &document);
    view.resize(600, 400);
    view.show();
    view.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&view));
    QCOMPARE(view.textView()->string().toString(), u"hello"_s);
    QCOMPARE(view.textView()->textStorage(), document.textStorage());
    const QFont font = view.textView()->font();
    QCOMPARE(font.pixelSize(), 14);
    QCOMPARE(font.weight(), QFont::Normal);
    QVERIFY(QFontInfo(font).fixedPitch());
    QVERIFY(!document.isEdited());
    QVERIFY(!document.textStorage()->canUndo());
    QTRY_VERIFY(view.textView()->hasFocus());
    QCOMPARE(view.textView()->width(), 600);
}

void MainEditorViewTest::counters_toolTip_countsTheSelection()
{
    DocumentState state;
    state.setText(Text(u"ab\r\ne\u0301\U0001F468\u200D\U0001F469x\nz"));
    TextDocument document;
    MainEditorView view(&state, nullptr);
    view.resize(600, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QTRY_COMPARE(state.characterCount(), 8);
    auto *label = view.findChild<QLabel *>(u"statusCharacterCount"_s);
    const auto askForToolTip = [&] {
        QHelpEvent event(QEvent::ToolTip, QPoint(1, 1), label->mapToGlobal(QPoint(1, 1)));
        QApplication::sendEvent(label, &event);
        return QToolTip::text();
    };
    QCOMPARE(askForToolTip(), u"行: 1 列: 0\n4 行\n8 文字"_s);
    view.textView()->setSelectedRange({2, 10}); // CR LF, é, a family and x.
    QTRY_COMPARE(state.cursorColumn(), 2);
    QCOMPARE(askForToolTip(), u"行: 1 列: 2\n4 行\n8 文字\n選択: 4 文字"_s);
    state.setMacroNotificationMessage(u"完了"_s);
    QVERIFY(!view.findChild<QWidget *>(u"statusMessage"_s)->toolTip().contains(u"選択"));
}

void MainEditorViewTest::openedText_isCountedInALaterTurn()
{
    DocumentState state;
    state.setText(Text(u"日本\r\n語"));
    TextDocument document;
    const MainEditorView view(&state, &document);
    QCOMPARE(state.characterCount(), 0);
    QCOMPARE(state.cursorColumn(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(state.characterCount(), 4);
    QCOMPARE(state.lineCount(), 3);
    QCOMPARE(state.cursorLine(), 1);
    QCOMPARE(state.cursorColumn(), 0);
    QVERIFY(!document.isEdited());
}

void MainEditorViewTest::documentGone_beforeTheView_isHarmless()
{
    DocumentState state;
    auto document = std::make_unique<TextDocument>();
    MainEditorView view(&state, document.get());
    document.reset();
    QTest::keyClicks(view.textView(), u"x"_s);
    QCoreApplication::processEvents();
    QCOMPARE(state.text().toString(), u"x"_s);
}

void MainEditorViewTest::windowClosed_whileUpdatesAreQueued_writesNothing()
{
    DocumentState state;
    TextDocument document;
    auto view = std::make_unique<MainEditorView>(&state, &document);
    QTest::keyClicks(view->textView(), u"x"_s);
    view.reset();
    QCoreApplication::processEvents();
    QVERIFY(state.text().isEmpty());
    QVERIFY(document.contentString().isEmpty());
}

void MainEditorViewTest::escape_leftOverByTheText_dismissesTheMessage()
{
    DocumentState state;
    TextDocument document;
    MainEditorView view(&state, &document);
    state.setMacroNotificationMessage(u"完了"_s);
    QTest::keyClick(view.textView(), Qt::Key_Escape);
    QVERIFY(!state.macroNotificationMessage().has_value());
}

QTEST_MAIN(MainEditorViewTest)
#include "MainEditorViewTest.moc"

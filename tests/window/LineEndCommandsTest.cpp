#include "window/LineEndCommands.h"

#include "editor/TextDocument.h"
#include "support/ShownTextView.h"
#include "support/TemporaryHome.h"
#include "support/Waits.h"
#include "window/LineEndMark.h"
#include "window/MainEditorView.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class LineEndCommandsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void convert_wholeText_isOneUndoStepAndKeepsTheCaret_data();
    void convert_wholeText_isOneUndoStepAndKeepsTheCaret();
    void convert_selection_leavesTheRest();
    void convert_rectangle_takesItsLines();
    void convert_selectionBesideALoneCr_keepsTheNumberOfLines();
    void convert_uniformText_registersNoUndoStep();
    void convert_whileComposing_discardsNoText();
    void convert_scrolledText_staysInPlace();
    void convert_largeTextEditedMeanwhile_convertsTheEditToo();
    void contextMenu_keysConvert();
    void contextMenu_offersWhatWouldChange();
    void setting_makesPastedTextUniform_data();
    void setting_makesPastedTextUniform();
    void mark_followsEditsAndUndo();
    void mark_pressed_makesTheTextUniform_data();
    void mark_pressed_makesTheTextUniform();
};

namespace {

/// A view with the commands.
struct Commanded
{
    explicit Commanded(QStringView text, const QString &settings = {}, int wait = 5000)
        : defaults(home.write(u"penwick.conf"_s, settings.toUtf8()))
        , shown(text)
    {
        commands = std::make_unique<LineEndCommands>(&shown.view, &shown.view, preferences, wait);
    }

    test::TemporaryHome home;
    UserDefaults defaults;
    Preferences preferences{defaults};
    test::ShownTextView shown;
    std::unique_ptr<LineEndCommands> commands;
};

/// A shown editor with its document and status bar.
struct Editor
{
    explicit Editor(QStringView text)
    {
        state.setText(Text(text));
        document.textStorage()->setText(Text(text));
        view.resize(600, 400);
        view.show();
        view.activateWindow();
        const bool isActive = QTest::qWaitForWindowActive(&view);
        Q_ASSERT(isActive);
        Q_UNUSED(isActive)
    }

    [[nodiscard]] LineEndMark *mark() const { return view.findChild<LineEndMark *>(); }

    [[nodiscard]] QString text() const { return view.textView()->string().toString(); }

    DocumentState state;
    TextDocument document;
    MainEditorView view{&state, &document};
};

} // namespace

void LineEndCommandsTest::convert_wholeText_isOneUndoStepAndKeepsTheCaret_data()
{
    QTest::addColumn<LineEnd>("lineEnd");
    QTest::addColumn<QString>("expected");
    QTest::newRow("LF") << LineEnd::LineFeed << u"one\ntwo\n\nthree\u2028f\u0085五"_s;
    QTest::newRow("CR LF") << LineEnd::CrLf << u"one\r\ntwo\r\n\r\nthree\u2028f\u0085五"_s;
    QTest::newRow("CR") << LineEnd::CarriageReturn << u"one\rtwo\r\rthree\u2028f\u0085五"_s;
}

void LineEndCommandsTest::convert_wholeText_isOneUndoStepAndKeepsTheCaret()
{
    QFETCH(const LineEnd, lineEnd);
    QFETCH(const QString, expected);
    const QString text = u"one\r\ntwo\n\rthree\u2028f\u0085五"_s;
    Commanded f(text);
    const qint64 caret = text.indexOf(u"ree");
    f.shown.caret(caret);
    f.commands->convert(lineEnd);
    QTRY_COMPARE(f.shown.text(), expected);
    QCOMPARE(f.shown.view.selectedRange(), (TextRange{expected.indexOf(u"ree"), 0}));
    f.shown.view.undo();
    QCOMPARE(f.shown.text(), text);
    QCOMPARE(f.shown.view.selectedRange(), (TextRange{caret, 0}));
    QVERIFY(!f.shown.storage.canUndo());
    f.shown.view.redo();
    QCOMPARE(f.shown.text(), expected);
    QCOMPARE(f.shown.view.selectedRange(), (TextRange{expected.indexOf(u"ree"), 0}));
}

void LineEndCommandsTest::convert_selection_leavesTheRest()
{
    Commanded f(u"one\ntwo\nthree\nfour\n");
    f.shown.view.setSelectedRange({5, 4}); // From "wo" to "t".
    f.commands->convert(LineEnd::CrLf);
    QTRY_COMPARE(f.shown.text(), u"one\ntwo\r\nthree\nfour\n"_s);
    QCOMPARE(f.shown.view.selectedRange(), (TextRange{5, 5}));
    f.shown.view.undo();
    QCOMPARE(f.shown.text(), u"one\ntwo\nthree\nfour\n"_s);
    QCOMPARE(f.shown.view.selectedRange(), (TextRange{5, 4}));
}

void LineEndCommandsTest::convert_rectangle_takesItsLines()
{
    Commanded f(u"one\ntwo\nthree\nfour\n");
    f.shown.view.selectRectangle({{1, 1}, {2, 2}});
    f.commands->convert(LineEnd::CrLf);
    QTRY_COMPARE(f.shown.text(), u"one\ntwo\r\nthree\r\nfour\n"_s);
}

void LineEndCommandsTest::convert_selectionBesideALoneCr_keepsTheNumberOfLines()
{
    Commanded f(u"one\r\r\ntwo\n");
    f.shown.view.setSelectedRange({4, 5}); // The empty line and "two".
    f.commands->convert(LineEnd::LineFeed);
    QTRY_COMPARE(f.shown.text(), u"one\n\ntwo\n"_s);
    QCOMPARE(f.shown.view.selectedRange(), (TextRange{4, 4}));
}

void LineEndCommandsTest::convert_uniformText_registersNoUndoStep()
{
    Commanded f(u"one\r\ntwo\r\n\u2028");
    f.commands->convert(LineEnd::CrLf);
    f.commands->convertWhole(LineEnd::CrLf);
    QVERIFY(!f.shown.storage.canUndo());
}

void LineEndCommandsTest::convert_whileComposing_discardsNoText()
{
    Commanded f(u"one\r\ntwo\n");
    f.shown.compose(u"に"_s);
    f.commands->convertWhole(LineEnd::CrLf);
    QVERIFY(!f.shown.view.hasMarkedText());
    QTRY_COMPARE(f.shown.text(), u"one\r\ntwo\r\n"_s);
}

void LineEndCommandsTest::convert_scrolledText_staysInPlace()
{
    QString lines;
    for (int i = 0; i < 2000; ++i)
        lines += QString::number(i) + u"\r\n"_s;
    Commanded f(lines);
    const qint64 line = f.shown.view.string().offsetAfterLineBreak(1000);
    f.shown.caret(line);
    const QRectF before = f.shown.view.caretRectAt(line);
    QVERIFY(!before.isEmpty());
    f.commands->convert(LineEnd::LineFeed);
    QTRY_VERIFY(f.shown.view.string().metrics().hasOnly(LineEnd::LineFeed));
    QCOMPARE(f.shown.view.caretOffset(), line - 1000);
    QCOMPARE(f.shown.view.caretRectAt(line - 1000), before);
}

void LineEndCommandsTest::convert_largeTextEditedMeanwhile_convertsTheEditToo()
{
    Text text(QString(u"a line with some words\r\n"_s.repeated(4096)));
    for (int i = 0; i < 8; ++i)
        text = text.appended(text); // 25 MB.
    Commanded f(u"", {}, 0);
    f.shown.view.setString(text);
    f.commands->convert(LineEnd::LineFeed);
    QVERIFY(!f.shown.storage.canUndo());
    f.shown.view.replaceText({0, 0}, Text(u"\n\r\r\n"));
    QTRY_COMPARE_WITH_TIMEOUT(f.shown.view.string().slice(0, 5), u"\n\n\na "_s, test::kLongWait);
    QVERIFY(f.shown.view.string().metrics().hasOnly(LineEnd::LineFeed));
    f.shown.view.undo();
    f.shown.view.undo();
    QCOMPARE(f.shown.view.string(), text);
}

void LineEndCommandsTest::contextMenu_keysConvert()
{
    Commanded f(u"one\ntwo\n");
    f.shown.key(Qt::Key_F10, Qt::ShiftModifier);
    QWidget *menu = QApplication::activePopupWidget();
    QVERIFY(menu != nullptr);
    QTest::keyClick(menu, Qt::Key_N);
    QWidget *conversions = QApplication::activePopupWidget();
    QVERIFY(conversions != nullptr && conversions != menu);
    QTest::keyClick(conversions, Qt::Key_W);
    QTRY_COMPARE(f.shown.text(), u"one\r\ntwo\r\n"_s);
}

void LineEndCommandsTest::contextMenu_offersWhatWouldChange()
{
    Commanded f(u"one\ntwo\r\nthree");
    const auto offered = [&f] {
        QMenu menu;
        Q_EMIT f.shown.view.contextMenuWillOpen(&menu);
        QStringList titles;
        for (const QAction *action : menu.actions().last()->menu()->actions())
            titles << action->text() + (action->isEnabled() ? u" *"_s : QString());
        return titles;
    };
    QCOMPARE(offered(), (QStringList{u"LF(&L) *"_s, u"CR LF(&W) *"_s, u"CR(&C) *"_s}));
    f.shown.view.setSelectedRange({0, 5});
    QCOMPARE(offered(), (QStringList{u"LF(&L)"_s, u"CR LF(&W) *"_s, u"CR(&C) *"_s}));
    f.shown.view.setSelectedRange({0, 2});
    QCOMPARE(offered(), (QStringList{u"LF(&L)"_s, u"CR LF(&W)"_s, u"CR(&C)"_s}));
}

void LineEndCommandsTest::setting_makesPastedTextUniform_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none") << QString() << u"one\r\ntwo\nthree"_s;
    QTest::newRow("on") << u"[General]\nconvertPastedLineEnds=true\n"_s << u"one\r\ntwo\r\nthree"_s;
    QTest::newRow("off") << u"[General]\nconvertPastedLineEnds=false\n"_s << u"one\r\ntwo\nthree"_s;
}

void LineEndCommandsTest::setting_makesPastedTextUniform()
{
    QFETCH(const QString, settings);
    QFETCH(const QString, expected);
    Commanded f(u"one\r\n", settings);
    QGuiApplication::clipboard()->setText(u"two\nthree"_s);
    f.shown.caret(5);
    f.shown.view.paste();
    QCOMPARE(f.shown.text(), expected);
}

void LineEndCommandsTest::mark_followsEditsAndUndo()
{
    Editor editor(u"one\r\ntwo\u2028three\f\r\n");
    QCoreApplication::processEvents();
    QVERIFY(!editor.mark()->isVisible());
    TextView *view = editor.view.textView();
    view->replaceText({3, 0}, Text(u"\n")); // As a macro edits.
    QTRY_VERIFY(editor.mark()->isVisible());
    QCOMPARE(editor.mark()->accessibleName(),
             u"改行が混在しています  LF: 1  CR LF: 2  その他の改行文字: 2"_s);
    for (const QString &count : {u"LF: 1"_s, u"CR LF: 2"_s, u"その他の改行文字: 2"_s})
        QVERIFY2(editor.mark()->toolTip().contains(count), qPrintable(editor.mark()->toolTip()));
    QVERIFY(editor.mark()->toolTip().contains(u"CR LF に統一"));
    view->replaceText({0, 0}, Text(u"\r"));
    QTRY_VERIFY(editor.mark()->accessibleName().contains(u"  CR: 1  "));
    view->undo();
    view->undo();
    QTRY_VERIFY(!editor.mark()->isVisible());
    view->redo();
    QTRY_VERIFY(editor.mark()->isVisible());
    QCOMPARE(editor.state.newlineDisplay(), u"LF"_s);
}

void LineEndCommandsTest::mark_pressed_makesTheTextUniform_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("click") << Qt::Key_unknown;
    QTest::newRow("Return") << Qt::Key_Return;
    QTest::newRow("Enter") << Qt::Key_Enter;
    QTest::newRow("Space") << Qt::Key_Space;
}

void LineEndCommandsTest::mark_pressed_makesTheTextUniform()
{
    QFETCH(const Qt::Key, key);
    const QString text = u"one\r\r\ntwo\r,\nthree\r\nfour"_s;
    Editor editor(text);
    TextView *view = editor.view.textView();
    view->setSelectedRange({2, 15}); // From "e" to "hree".
    QTRY_VERIFY(editor.mark()->isVisible());
    if (key == Qt::Key_unknown) {
        QTest::mouseClick(editor.mark(), Qt::LeftButton);
    } else {
        editor.mark()->setFocus(Qt::TabFocusReason);
        QTest::keyClick(editor.mark(), key);
    }
    QTRY_COMPARE(editor.text(), u"one\r\rtwo\r,\rthree\rfour"_s);
    QTRY_VERIFY(!editor.mark()->isVisible());
    QVERIFY(view->hasFocus());
    QCOMPARE(view->selectedRange(), (TextRange{2, 14}));
    view->undo();
    QCOMPARE(editor.text(), text);
    QVERIFY(!view->textStorage()->canUndo());
    QCOMPARE(view->selectedRange(), (TextRange{2, 15}));
    QTRY_VERIFY(editor.mark()->isVisible());
}

QTEST_MAIN(LineEndCommandsTest)
#include "LineEndCommandsTest.moc"

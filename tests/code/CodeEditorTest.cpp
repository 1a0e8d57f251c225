#include "macro/library/CodeForm.h"
#include "preferences/Preferences.h"

#include <QAccessible>
#include <QInputMethodEvent>
#include <QShortcut>
#include <QSignalSpy>

using namespace penwick;
using namespace Qt::StringLiterals;
using Form = test::CodeForm;

namespace {

/// True when a pixel of the row at `offset` has nearly the color `color`.
bool showsColor(Form &f, qint64 offset, const QColor &color)
{
    const QImage image = f.view()->viewport()->grab().toImage();
    const QRect row = f.view()->caretRectAt(offset).toAlignedRect();
    for (int y = row.top(); y <= row.bottom(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (std::abs(c.red() - color.red()) + std::abs(c.green() - color.green()) +
                    std::abs(c.blue() - color.blue()) <
                24)
                return true;
        }
    }
    return false;
}

QPalette darkPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Base, QColor(35, 38, 41));
    palette.setColor(QPalette::Text, QColor(239, 240, 241));
    palette.setColor(QPalette::Window, QColor(49, 54, 59));
    palette.setColor(QPalette::WindowText, QColor(239, 240, 241));
    return palette;
}

} // namespace

class CodeEditorTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void text_comesBackExactly();
    void setText_clearsUndoAndEmitsNothing();
    void typing_anyText_isReportedAndUndone();
    void code_isShownInColours();
    void zoom_changed_changesTheTextAndItsNumbers();
    void openedComment_coloursTheLinesBelow();
    void palette_changed_changesTheColours();
    void enter_keepsTheIndentation();
    void enter_amidBraces_isOneUndoStep();
    void enter_amidBracesOfAString_isNotDeeper();
    void enter_withComposition_isLeftToTheView();
    void composition_committed_isNotTouched();
    void brace_onABlankLine_goesBackALevel();
    void tab_indents();
    void keysInARectangle_changeEachRow();
    void levelKeys_moveTheSelectedLines();
    void tabKeys_leadOutBothWays();
    void tabKeys_areTakenFromShortcuts();
    void tabFromOutside_leadsIn();
    void ctrlF_findsAndEscapeReturns();
    void ctrlF_inAnotherField_isNotTaken();
    void label_namesTheText();
    void errorLine_isMarkedUntilTheNextEdit();
    void errorLine_isScrolledIntoView();
    void errorLine_beyondTheText_isTheLast();
    void errorLine_belowOne_isNone();
    void errorLine_byUndo_isGone();
    void frame_showsTheFocus();
};

void CodeEditorTest::text_comesBackExactly()
{
    const QString text = u"a\r\nb\rc\u2028\u0085\u00A0\t\0\uFEFF\U0001F600\n"_s;
    Form f(text);
    QCOMPARE(f.editor.text(), text);
    f.caret(1);
    f.type(u"xy"_s);
    QCOMPARE(f.editor.text(), u"axy"_s + text.mid(1));
}

void CodeEditorTest::setText_clearsUndoAndEmitsNothing()
{
    Form f(u"one"_s);
    f.type(u"a"_s);
    QSignalSpy spy(&f.editor, &CodeEditor::textChanged);
    f.editor.setText(u"two"_s);
    f.editor.undo();
    QCOMPARE(f.state(), u"|two"_s);
    QVERIFY(spy.isEmpty());
}

void CodeEditorTest::typing_anyText_isReportedAndUndone()
{
    Form f(u"one"_s);
    QSignalSpy spy(&f.editor, &CodeEditor::textChanged);
    f.type(u"a"_s);
    QCOMPARE(spy.size(), 1);
    f.type(u"\n"_s);
    QCOMPARE(spy.size(), 2);
    f.editor.undo();
    f.editor.undo();
    QCOMPARE(f.state(), u"|one"_s);
    f.editor.redo();
    QCOMPARE(f.state(), u"a|one"_s);
    QCOMPARE(spy.size(), 5);
}

void CodeEditorTest::code_isShownInColours()
{
    Form f(u"plain\n// comment\n'string'\n42\nreturn\nx = /MMMM/\n"_s);
    f.caret(f.editor.text().size());
    const CodeColors colors(f.view()->palette());
    QVERIFY(showsColor(f, 6, colors.comment));
    QVERIFY(showsColor(f, 17, colors.string));
    QVERIFY(showsColor(f, 26, colors.number));
    QVERIFY(showsColor(f, 29, colors.keyword));
    QVERIFY(showsColor(f, 36, colors.regularExpression));
    for (const QColor &color : {colors.string, colors.number, colors.keyword})
        QVERIFY(!showsColor(f, 0, color));
}

void CodeEditorTest::zoom_changed_changesTheTextAndItsNumbers()
{
    Form f(u"a\nb"_s);
    const qreal height = f.view()->rowHeight();
    const QWidget *gutter = f.gutter();
    const int width = gutter->width();
    Preferences::standard().setNumber(PreferenceId::Zoom, 200);
    QVERIFY(f.view()->rowHeight() > 1.8 * height);
    QTRY_VERIFY(gutter->width() > width);
    Form later(u"a"_s);
    QCOMPARE(later.view()->rowHeight(), f.view()->rowHeight());
    Preferences::standard().reset(PreferenceId::Zoom);
    QCOMPARE(f.view()->rowHeight(), height);
}

void CodeEditorTest::openedComment_coloursTheLinesBelow()
{
    Form f(u"\nreturn HHH\n"_s);
    const CodeColors colors(f.view()->palette());
    QVERIFY(showsColor(f, 3, colors.keyword));
    f.type(u"/*"_s);
    QVERIFY(!showsColor(f, 5, colors.keyword));
    QVERIFY(showsColor(f, 5, colors.comment));
    f.editor.undo();
    QVERIFY(showsColor(f, 3, colors.keyword));
}

void CodeEditorTest::palette_changed_changesTheColours()
{
    Form f(u"return HHH"_s);
    QVERIFY(showsColor(f, 0, CodeColors(f.view()->palette()).keyword));
    f.editor.setPalette(darkPalette());
    QCOMPARE(f.view()->palette().color(QPalette::Base), QColor(35, 38, 41));
    QVERIFY(showsColor(f, 0, CodeColors(darkPalette()).keyword));
    QCOMPARE(f.gutterPicture().pixelColor(1, f.gutter()->height() - 2), QColor(35, 38, 41));
}

void CodeEditorTest::enter_keepsTheIndentation()
{
    Form f;
    f.type(u"if (a) {\nb();\nc();\n}"_s);
    QCOMPARE(f.editor.text(), u"if (a) {\n    b();\n    c();\n}"_s);
    f.key(Qt::Key_Enter, Qt::KeypadModifier);
    f.key(Qt::Key_Return, Qt::ShiftModifier);
    QVERIFY(f.editor.text().endsWith(u"}\n\n"_s));
}

void CodeEditorTest::enter_amidBraces_isOneUndoStep()
{
    Form f(u"  {}"_s);
    f.caret(3);
    f.key(Qt::Key_Return);
    QCOMPARE(f.state(), u"  {\n      |\n  }"_s);
    f.editor.undo();
    QCOMPARE(f.state(), u"  {|}"_s);
    f.editor.redo();
    QCOMPARE(f.state(), u"  {\n      |\n  }"_s);
    // Further typing is an undo step of its own.
    f.type(u"a"_s);
    f.editor.undo();
    QCOMPARE(f.state(), u"  {\n      |\n  }"_s);
}

void CodeEditorTest::enter_amidBracesOfAString_isNotDeeper()
{
    Form f(u"a = '{}'"_s);
    f.caret(6);
    f.key(Qt::Key_Return);
    QCOMPARE(f.state(), u"a = '{\n|}'"_s);
}

void CodeEditorTest::enter_withComposition_isLeftToTheView()
{
    Form f(u"    {"_s);
    f.caret(5);
    QInputMethodEvent event(u"か"_s, {});
    QCoreApplication::sendEvent(f.view(), &event);
    QVERIFY(f.view()->hasMarkedText());
    f.key(Qt::Key_Return);
    QVERIFY(!f.view()->hasMarkedText());
    QVERIFY(f.editor.text().endsWith(u'\n'));
}

void CodeEditorTest::composition_committed_isNotTouched()
{
    Form f(u"    "_s);
    f.caret(4);
    for (const QString &committed : {u"}"_s, u"\n"_s, u"\t"_s, u"漢字"_s}) {
        QInputMethodEvent event({}, {});
        event.setCommitString(committed);
        QCoreApplication::sendEvent(f.view(), &event);
    }
    QCOMPARE(f.state(), u"    }\n\t漢字|"_s);
}

void CodeEditorTest::brace_onABlankLine_goesBackALevel()
{
    Form f(u"{\n        "_s);
    f.caret(10);
    f.type(u"}"_s);
    QCOMPARE(f.state(), u"{\n    }|"_s);
    f.editor.undo();
    QCOMPARE(f.state(), u"{\n        |"_s);
    f.type(u"a}"_s);
    QCOMPARE(f.state(), u"{\n        a}|"_s);
}

void CodeEditorTest::tab_indents()
{
    Form f(u"ab"_s);
    f.caret(1);
    f.key(Qt::Key_Tab);
    QCOMPARE(f.state(), u"a    |b"_s);
    f.editor.setText(u"a\nb\n"_s);
    f.view()->setSelectedRange({0, 3});
    f.key(Qt::Key_Tab);
    QCOMPARE(f.editor.text(), u"    a\n    b\n"_s);
    QCOMPARE(f.view()->selectedRange(), (TextRange{0, 11}));
    f.editor.undo();
    QCOMPARE(f.editor.text(), u"a\nb\n"_s);
    QCOMPARE(f.view()->selectedRange(), (TextRange{0, 3}));
}

void CodeEditorTest::keysInARectangle_changeEachRow()
{
    Form f(u"    \n    "_s);
    f.caret(4);
    f.key(Qt::Key_Down, Qt::AltModifier | Qt::ShiftModifier);
    f.type(u"}"_s);
    QCOMPARE(f.editor.text(), u"    }\n    }"_s);
    f.key(Qt::Key_Return);
    QCOMPARE(f.editor.text(), u"    }\n\n    }\n"_s);
}

void CodeEditorTest::levelKeys_moveTheSelectedLines()
{
    Form f(u"a\n  b"_s);
    f.caret(1);
    f.key(Qt::Key_BracketRight, Qt::ControlModifier);
    QCOMPARE(f.state(), u"    a|\n  b"_s);
    f.view()->selectAll();
    f.key(Qt::Key_BracketLeft, Qt::ControlModifier);
    QCOMPARE(f.editor.text(), u"a\nb"_s);
    f.key(Qt::Key_BracketLeft, Qt::ControlModifier);
    QCOMPARE(f.editor.text(), u"a\nb"_s);
}

void CodeEditorTest::tabKeys_leadOutBothWays()
{
    Form f(u"a"_s);
    f.key(Qt::Key_Tab, Qt::ControlModifier);
    QVERIFY(f.after.hasFocus());
    f.editor.setFocus();
    QVERIFY(f.view()->hasFocus());
    f.key(Qt::Key_Backtab, Qt::ShiftModifier);
    QVERIFY(f.before.hasFocus());
    f.editor.setFocus();
    f.key(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(f.before.hasFocus());
    QCOMPARE(f.editor.text(), u"a"_s);
}

void CodeEditorTest::tabKeys_areTakenFromShortcuts()
{
    Form f(u"a"_s);
    QShortcut shortcut(QKeySequence(Qt::CTRL | Qt::Key_Tab), &f.window);
    QSignalSpy spy(&shortcut, &QShortcut::activated);
    f.key(Qt::Key_Tab, Qt::ControlModifier);
    QVERIFY(f.after.hasFocus());
    QVERIFY(spy.isEmpty());
    QTest::keyClick(&f.after, Qt::Key_Tab, Qt::ControlModifier);
    QCOMPARE(spy.size(), 1);
}

void CodeEditorTest::tabFromOutside_leadsIn()
{
    Form f(u"a"_s);
    f.before.setFocus();
    QTest::keyClick(&f.before, Qt::Key_Tab);
    QVERIFY(f.view()->hasFocus());
    f.after.setFocus();
    QTest::keyClick(&f.after, Qt::Key_Backtab);
    QVERIFY(f.view()->hasFocus());
    f.before.setFocus();
    QTest::keyClick(&f.before, Qt::Key_C, Qt::AltModifier); // The mnemonic of the label.
    QVERIFY(f.view()->hasFocus());
}

void CodeEditorTest::ctrlF_findsAndEscapeReturns()
{
    Form f(u"one two one"_s);
    f.caret(4);
    f.key(Qt::Key_F, Qt::ControlModifier);
    auto *field = f.editor.findBar()->findChild<QLineEdit *>(u"findField"_s);
    QVERIFY(field->hasFocus());
    QTest::keyClicks(field, u"one"_s);
    QTRY_COMPARE(f.view()->selectedRange(), (TextRange{8, 3}));
    QTest::keyClick(field, Qt::Key_Escape);
    QVERIFY(f.editor.findBar()->isHidden());
    QVERIFY(f.view()->hasFocus());
    f.key(Qt::Key_H, Qt::ControlModifier);
    QVERIFY(f.editor.findBar()->findChild<QLineEdit *>(u"replaceField"_s)->isVisible());
    f.view()->setFocus();
    f.key(Qt::Key_Escape);
    QVERIFY(f.editor.findBar()->isHidden());
}

void CodeEditorTest::ctrlF_inAnotherField_isNotTaken()
{
    Form f(u"one"_s);
    f.before.setFocus();
    QTest::keyClick(&f.before, Qt::Key_F, Qt::ControlModifier);
    QVERIFY(f.editor.findBar()->isHidden());
}

void CodeEditorTest::label_namesTheText()
{
    Form f(u"one"_s);
    QAccessibleInterface *text = QAccessible::queryAccessibleInterface(f.view());
    QCOMPARE(text->text(QAccessible::Name), u"Code"_s);
    QVERIFY(text->text(QAccessible::Description).contains(u"Ctrl+Tab"_s));
    QCOMPARE(text->relations(QAccessible::Label).size(), 1);
}

void CodeEditorTest::errorLine_isMarkedUntilTheNextEdit()
{
    Form f(u"a\nb\nc"_s);
    const CodeColors colors(f.view()->palette());
    const auto backgroundAt = [&f](qint64 offset) {
        const QImage image = f.view()->viewport()->grab().toImage();
        return image.pixelColor(image.width() - 3,
                                qRound(f.view()->caretRectAt(offset).center().y()));
    };
    const QImage gutterBefore = f.gutterPicture();
    f.editor.markErrorLine(2);
    QCOMPARE(f.editor.errorLine(), 2);
    QCOMPARE(backgroundAt(2), colors.errorLine);
    QVERIFY(backgroundAt(0) != colors.errorLine);
    QVERIFY(backgroundAt(4) != colors.errorLine);
    QVERIFY(f.gutterPicture() != gutterBefore);
    f.type(u"x"_s);
    QCOMPARE(f.editor.errorLine(), 0);
    QVERIFY(backgroundAt(3) != colors.errorLine);
    QCOMPARE(f.gutterPicture(), gutterBefore);
    f.editor.markErrorLine(1);
    f.editor.clearErrorMark();
    QCOMPARE(f.gutterPicture(), gutterBefore);
}

void CodeEditorTest::errorLine_isScrolledIntoView()
{
    Form f(u"line\n"_s.repeated(300));
    f.editor.markErrorLine(200);
    const QRectF row = f.view()->caretRectAt(199 * 5);
    QVERIFY(!row.isEmpty());
    QVERIFY(row.top() >= 0 && row.bottom() <= f.view()->viewport()->height());
    QCOMPARE(f.view()->caretOffset(), 0); // The caret does not move.
}

void CodeEditorTest::errorLine_beyondTheText_isTheLast()
{
    Form f(u"a\nb\n"_s);
    f.editor.markErrorLine(99);
    QCOMPARE(f.editor.errorLine(), 3);
}

void CodeEditorTest::errorLine_belowOne_isNone()
{
    Form f(u"a\nb"_s);
    f.editor.markErrorLine(1);
    f.editor.markErrorLine(0);
    QCOMPARE(f.editor.errorLine(), 0);
    f.editor.markErrorLine(-5);
    QCOMPARE(f.editor.errorLine(), 0);
}

void CodeEditorTest::errorLine_byUndo_isGone()
{
    Form f(u"a\nb"_s);
    f.type(u"x"_s);
    f.editor.markErrorLine(2);
    f.editor.undo();
    QCOMPARE(f.editor.errorLine(), 0);
    f.editor.markErrorLine(2);
    f.editor.setText(u"c"_s);
    QCOMPARE(f.editor.errorLine(), 0);
}

void CodeEditorTest::frame_showsTheFocus()
{
    Form f(u"a"_s);
    const auto edge = [&f] {
        QCoreApplication::processEvents();
        const QImage image = f.editor.grab().toImage();
        return image.pixelColor(0, image.height() / 2);
    };
    const QColor with = edge();
    f.before.setFocus();
    const QColor without = edge();
    QVERIFY(with != without);
    QCOMPARE(with, f.editor.palette().color(QPalette::Active, QPalette::Highlight));
}

QTEST_MAIN(CodeEditorTest)

#include "CodeEditorTest.moc"

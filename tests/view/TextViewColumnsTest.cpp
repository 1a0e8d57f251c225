#include "support/ShownTextView.h"
#include "view/TextMimeData.h"
#include "view/TextViewAccessible.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kAltShift = Qt::AltModifier | Qt::ShiftModifier;

struct Fixture : test::ShownTextView
{
    using ShownTextView::ShownTextView;

    /// Selects a rectangle with keys.
    void select(qint64 offset, int right, int down)
    {
        caret(offset);
        for (int i = 0; i < down; ++i)
            key(Qt::Key_Down, kAltShift);
        for (int i = 0; i < std::abs(right); ++i)
            key(right > 0 ? Qt::Key_Right : Qt::Key_Left, kAltShift);
        if (right == 0 && down == 0)
            view.startColumns();
    }

    void type(const QString &units)
    {
        for (const QChar unit : units)
            QTest::keyClick(&view, Qt::Key(unit.toUpper().unicode()));
    }

    /// Moves the mouse with the left button and Alt pressed.
    void drag(QPoint point)
    {
        QWidget *target = view.viewport();
        QMouseEvent event(QEvent::MouseMove,
                          point,
                          target->mapToGlobal(point),
                          Qt::NoButton,
                          Qt::LeftButton,
                          Qt::AltModifier);
        QCoreApplication::sendEvent(target, &event);
    }

    /// The selected parts of the rows, with their numbers of columns past the line's end.
    QStringList rows()
    {
        QStringList result;
        if (view.columns() == nullptr)
            return result;
        const LineSpan lines = view.columns()->lines();
        for (qint64 line = lines.first; line < lines.first + lines.count; ++line) {
            const RectangleRow row = view.columns()->rowAt(view.string(), line);
            result << view.string().slice(row.range.location, row.range.length) +
                          QString(row.blanksToRight, u'~');
        }
        return result;
    }
};

void copy(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

} // namespace

/// Tests of rectangular selections with keys, mouse, clipboard and input methods.
class TextViewColumnsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keys_selectARectangle();
    void keys_homeEndAndPages_moveTheCorner();
    void keys_shiftAlone_extendsARectangle();
    void mouse_withAlt_selectsARectangle();
    void mouse_withAltPastTheLine_countsColumns();
    void typing_inRows_isOneStep();
    void typing_overARectangle_isOneStep();
    void typing_afterAMove_isAStepOfItsOwn();
    void deleting_inRows_isOneStep();
    void deleteKey_onARectangle_deletesItOnly();
    void enter_endsTheRectangle();
    void tab_withSpaces_reachesTheStop();
    void cutAndPaste_rectangleIsPastedAsOne();
    void pasteOfARectangle_atACaret_addsLines();
    void pasteOfARectangle_overASelection_isOneStep();
    void paste_withAsManyLines_goesLineByLine();
    void paste_otherText_goesIntoEachRow();
    void clipboard_isMarkedAsARectangle();
    void endsWith_data();
    void endsWith();
    void escape_endsItAndKeepsTheFirstRow();
    void inputMethod_commitsIntoEachRow();
    void undo_selectsWithoutARectangle();
    void edit_fromOutside_endsTheRectangle();
    void accessibility_reportsTheFirstRow();
    void painting_marksTheRows();
    void wrappedLine_countsAlongTheWholeLine();
    void hugeLine_isNotSelected();
};

void TextViewColumnsTest::keys_selectARectangle()
{
    Fixture f(u"abcdef\n漢字かな\n\tx\n\nlong line");
    f.select(1, 2, 4);
    QCOMPARE(f.rows(), (QStringList{u"bc"_s, u"漢"_s, u""_s, u"~~~"_s, u"on"_s}));
    QCOMPARE(f.view.selectedRange(), (TextRange{1, 2}));
    f.key(Qt::Key_Up, kAltShift);
    f.key(Qt::Key_Up, kAltShift);
    f.key(Qt::Key_Left, kAltShift);
    f.key(Qt::Key_Left, kAltShift);
    f.key(Qt::Key_Left, kAltShift);
    QCOMPARE(f.rows(), (QStringList{u"a"_s, u""_s, u""_s}));
    QCOMPARE(f.view.caretOffset(), 0);
    QCOMPARE(f.view.anchorOffset(), 1);
}

void TextViewColumnsTest::keys_homeEndAndPages_moveTheCorner()
{
    Fixture f(u"abcdef\n"_s.repeated(200));
    f.caret(3);
    f.key(Qt::Key_End, kAltShift);
    f.key(Qt::Key_PageDown, kAltShift);
    QVERIFY(f.rows().size() > 10);
    QCOMPARE(f.rows().last(), u"def"_s);
    QVERIFY(!f.view.caretRectAt(7 * (f.rows().size() - 1)).isEmpty());
    f.key(Qt::Key_PageUp, kAltShift);
    f.key(Qt::Key_Home, kAltShift);
    QCOMPARE(f.rows(), (QStringList{u"abc"_s}));
}

void TextViewColumnsTest::keys_shiftAlone_extendsARectangle()
{
    Fixture f(u"abc\nabc"_s);
    f.caret(1);
    f.view.startColumns();
    f.key(Qt::Key_Down, Qt::ShiftModifier);
    f.key(Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(f.rows(), (QStringList{u"b"_s, u"b"_s}));
}

void TextViewColumnsTest::mouse_withAlt_selectsARectangle()
{
    Fixture f(u"abcdef\nabcdef\nabcdef"_s);
    const QPoint from = f.pointOf(2);
    const QPoint to = f.pointOf(14 + 4);
    const QPoint inside = f.pointOf(10);
    QTest::mousePress(f.view.viewport(), Qt::LeftButton, Qt::AltModifier, from);
    f.drag(to);
    QTest::mouseRelease(f.view.viewport(), Qt::LeftButton, Qt::AltModifier, to);
    QCOMPARE(f.rows(), (QStringList{u"cd"_s, u"cd"_s, u"cd"_s}));
    // On the rectangle, a press starts a new selection, not a drag.
    QTest::mousePress(f.view.viewport(), Qt::LeftButton, {}, inside);
    QVERIFY(f.view.columns() == nullptr);
    QCOMPARE(f.view.selectedRange(), (TextRange{10, 0}));
    QTest::mouseRelease(f.view.viewport(), Qt::LeftButton, {}, inside);
}

void TextViewColumnsTest::mouse_withAltPastTheLine_countsColumns()
{
    Fixture f(u"abcdef\nab\nabcdef"_s);
    const QPoint from = f.pointOf(2);
    const QPoint to(f.pointOf(4).x(), f.pointOf(8).y());
    const QPoint further = f.pointOf(10 + 5);
    QTest::mousePress(f.view.viewport(), Qt::LeftButton, Qt::AltModifier, from);
    f.drag(to);
    QTest::mouseRelease(f.view.viewport(), Qt::LeftButton, Qt::AltModifier, to);
    QCOMPARE(f.rows(), (QStringList{u"cd"_s, u"~~"_s}));
    // With Shift, a click moves the corner, with Alt or without.
    QTest::mouseClick(f.view.viewport(), Qt::LeftButton, kAltShift, further);
    QCOMPARE(f.rows(), (QStringList{u"cde"_s, u"~~~"_s, u"cde"_s}));
    QTest::mouseClick(f.view.viewport(), Qt::LeftButton, Qt::ShiftModifier, to);
    QCOMPARE(f.rows(), (QStringList{u"cd"_s, u"~~"_s}));
}

void TextViewColumnsTest::typing_inRows_isOneStep()
{
    Fixture f(u"abcd\n\n漢字\n\tx"_s);
    f.select(3, 0, 3);
    const QSignalSpy edited(&f.view, &TextView::textDidChange);
    f.type(u"xyz"_s);
    QCOMPARE(f.text(), u"abcxyzd\n   xyz\n漢xyz字\nxyz\tx"_s);
    QCOMPARE(edited.size(), 3);
    QCOMPARE(f.rows().size(), 4);
    f.view.undo();
    QCOMPARE(f.text(), u"abcd\n\n漢字\n\tx"_s);
    QVERIFY(!f.storage.canUndo());
    f.view.redo();
    QCOMPARE(f.text(), u"abcxyzd\n   xyz\n漢xyz字\nxyz\tx"_s);
}

void TextViewColumnsTest::typing_overARectangle_isOneStep()
{
    Fixture f(u"abcd\nabcd"_s);
    f.select(1, 2, 1);
    f.type(u"xy"_s);
    QCOMPARE(f.text(), u"axyd\naxyd"_s);
    f.view.undo();
    QCOMPARE(f.text(), u"abcd\nabcd"_s);
}

void TextViewColumnsTest::typing_afterAMove_isAStepOfItsOwn()
{
    Fixture f(u"ab\nab"_s);
    f.select(1, 0, 1);
    f.type(u"x"_s);
    f.key(Qt::Key_Left, kAltShift);
    f.type(u"y"_s);
    QCOMPARE(f.text(), u"ayb\nayb"_s);
    f.view.undo();
    QCOMPARE(f.text(), u"axb\naxb"_s);
    f.view.undo();
    QCOMPARE(f.text(), u"ab\nab"_s);
}

void TextViewColumnsTest::deleting_inRows_isOneStep()
{
    Fixture f(u"abcd\r\n漢字\r\nabcd"_s);
    f.select(3, 0, 2);
    f.key(Qt::Key_Backspace);
    f.key(Qt::Key_Backspace);
    QCOMPARE(f.text(), u"ad\r\n字\r\nad"_s);
    f.key(Qt::Key_Delete);
    QCOMPARE(f.text(), u"a\r\n\r\na"_s);
    f.view.undo();
    QCOMPARE(f.text(), u"abcd\r\n漢字\r\nabcd"_s);
    QVERIFY(!f.storage.canUndo());
}

void TextViewColumnsTest::deleteKey_onARectangle_deletesItOnly()
{
    for (const Qt::Key key : {Qt::Key_Backspace, Qt::Key_Delete}) {
        Fixture f(u"abcd\nab\nabcd"_s);
        f.select(1, 2, 2);
        f.key(key);
        QCOMPARE(f.text(), u"ad\na\nad"_s);
        QCOMPARE(f.rows(), (QStringList{u""_s, u""_s, u""_s}));
        f.view.undo();
        QCOMPARE(f.text(), u"abcd\nab\nabcd"_s);
    }
}

void TextViewColumnsTest::enter_endsTheRectangle()
{
    Fixture f(u"ab\r\n\r\nab"_s);
    f.select(1, 0, 2);
    f.key(Qt::Key_Return);
    QCOMPARE(f.text(), u"a\r\nb\r\n\r\n\r\na\r\nb"_s);
    QVERIFY(f.view.columns() == nullptr);
    QCOMPARE(f.view.selectedRange(), (TextRange{f.text().size() - 1, 0}));
    f.view.undo();
    QCOMPARE(f.text(), u"ab\r\n\r\nab"_s);
}

void TextViewColumnsTest::tab_withSpaces_reachesTheStop()
{
    Fixture f(u"abc\nabc"_s);
    f.view.setIndentation({4, true, false});
    f.select(1, 0, 1);
    f.key(Qt::Key_Tab);
    f.type(u"x"_s);
    f.key(Qt::Key_Tab);
    QCOMPARE(f.text(), u"a   x   bc\na   x   bc"_s);
    f.view.undo();
    QCOMPARE(f.text(), u"abc\nabc"_s);
}

void TextViewColumnsTest::cutAndPaste_rectangleIsPastedAsOne()
{
    Fixture f(u"1ab2\n1\n1漢2"_s);
    f.select(1, 1, 2); // Across the wide character.
    f.view.cut();
    QCOMPARE(f.text(), u"12\n1\n12"_s);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"ab\n\n漢"_s);
    f.view.paste();
    QCOMPARE(f.text(), u"1ab2\n1\n1漢2"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{9, 0}));
    f.view.undo();
    QCOMPARE(f.text(), u"12\n1\n12"_s);
    // A rectangle of more rows is replaced as a whole.
    f.select(0, 1, 2);
    f.view.copy();
    f.view.setString(Text(u"abc\nabc\nabc\nabc"_s));
    f.select(1, 1, 3);
    f.view.paste();
    QCOMPARE(f.text(), u"a1c\na1c\na1c\nac"_s);
}

void TextViewColumnsTest::pasteOfARectangle_atACaret_addsLines()
{
    Fixture f(u"ab\r\ncd\r\nx"_s);
    f.select(0, 2, 1);
    f.view.copy();
    f.caret(9);
    f.view.paste();
    QCOMPARE(f.text(), u"ab\r\ncd\r\nxab\r\n cd"_s);
    QVERIFY(f.view.columns() == nullptr);
}

void TextViewColumnsTest::pasteOfARectangle_overASelection_isOneStep()
{
    Fixture f(u"ab\ncd\nxyz\nxyz"_s);
    f.select(0, 1, 1);
    f.view.copy();
    f.view.setSelectedRange({7, 1});
    f.view.paste();
    QCOMPARE(f.text(), u"ab\ncd\nxaz\nxcyz"_s);
    f.view.undo();
    QCOMPARE(f.text(), u"ab\ncd\nxyz\nxyz"_s);
}

void TextViewColumnsTest::paste_withAsManyLines_goesLineByLine()
{
    for (const QString &text : {u"1\r\n22"_s, u"1\n22\n"_s}) {
        copy(text);
        Fixture f(u"abc\nabc"_s);
        f.select(1, 1, 1);
        f.view.paste();
        QCOMPARE(f.text(), u"a1c\na22c"_s);
    }
}

void TextViewColumnsTest::paste_otherText_goesIntoEachRow()
{
    copy(u"12"_s);
    Fixture f(u"abc\nabc\nabc"_s);
    f.select(1, 1, 2);
    f.view.paste();
    QCOMPARE(f.text(), u"a12c\na12c\na12c"_s);
    f.type(u"x"_s);
    QCOMPARE(f.text(), u"a12xc\na12xc\na12xc"_s);
    copy(u"1\n2"_s);
    f.view.paste();
    QCOMPARE(f.text(), u"a12x1\n2c\na12x1\n2c\na12x1\n2c"_s);
    f.view.undo();
    QCOMPARE(f.text(), u"a12xc\na12xc\na12xc"_s);
}

void TextViewColumnsTest::clipboard_isMarkedAsARectangle()
{
    Fixture f(u"abc\nabc"_s);
    f.select(0, 1, 1);
    f.view.copy();
    const QMimeData *mime = QGuiApplication::clipboard()->mimeData();
    QVERIFY(offersRectangle(mime));
    QCOMPARE(mime->text(), u"a\na"_s);
    // As another process gets it.
    auto *copied = new QMimeData;
    for (const QString &format : mime->formats())
        copied->setData(format, mime->data(format));
    QGuiApplication::clipboard()->setMimeData(copied);
    f.caret(3);
    f.view.paste();
    QCOMPARE(f.text(), u"abca\nabca"_s);
    f.view.setSelectedRange({0, 6});
    f.view.copy();
    QVERIFY(!offersRectangle(QGuiApplication::clipboard()->mimeData()));
}

void TextViewColumnsTest::endsWith_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("arrow") << Qt::Key_Down << Qt::KeyboardModifiers();
    QTest::newRow("word") << Qt::Key_Right
                          << Qt::KeyboardModifiers(Qt::ControlModifier | Qt::ShiftModifier);
    QTest::newRow("select all") << Qt::Key_A << Qt::KeyboardModifiers(Qt::ControlModifier);
    QTest::newRow("escape") << Qt::Key_Escape << Qt::KeyboardModifiers();
}

void TextViewColumnsTest::endsWith()
{
    QFETCH(Qt::Key, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    Fixture f(u"abc abc\nabc abc"_s);
    f.select(1, 1, 1);
    QVERIFY(f.view.columns() != nullptr);
    f.key(key, modifiers);
    QVERIFY(f.view.columns() == nullptr);
}

void TextViewColumnsTest::escape_endsItAndKeepsTheFirstRow()
{
    Fixture f(u"abc\nabc"_s);
    f.select(1, 1, 1);
    f.view.endColumns();
    QVERIFY(f.view.columns() == nullptr);
    QCOMPARE(f.view.selectedRange(), (TextRange{1, 1}));
    f.key(Qt::Key_Escape); // Left to the parents.
    QCOMPARE(f.view.selectedRange(), (TextRange{1, 1}));
}

void TextViewColumnsTest::inputMethod_commitsIntoEachRow()
{
    Fixture f(u"abc\nabc"_s);
    f.select(1, 1, 1);
    f.compose(u"かな"_s);
    QVERIFY(f.view.hasMarkedText());
    QCOMPARE(f.rows(), (QStringList{u"b"_s, u"b"_s}));
    f.compose({}, u"仮名"_s);
    QCOMPARE(f.text(), u"a仮名c\na仮名c"_s);
    f.compose(u"x"_s);
    f.compose({}, u"Ｘ"_s);
    QCOMPARE(f.text(), u"a仮名Ｘc\na仮名Ｘc"_s);
    f.view.undo();
    f.view.undo();
    QCOMPARE(f.text(), u"abc\nabc"_s);
    // A commit in place of text around the caret concerns no rectangle.
    f.select(2, 0, 1);
    f.compose({}, u"X"_s, -1, 1);
    QCOMPARE(f.text(), u"aXc\nabc"_s);
    QVERIFY(f.view.columns() == nullptr);
}

void TextViewColumnsTest::undo_selectsWithoutARectangle()
{
    Fixture f(u"abc\nabc"_s);
    f.select(1, 1, 1);
    f.type(u"x"_s);
    f.view.undo();
    QVERIFY(f.view.columns() == nullptr);
    QCOMPARE(f.view.selectedRange(), (TextRange{1, 1}));
}

void TextViewColumnsTest::edit_fromOutside_endsTheRectangle()
{
    Fixture f(u"abc\nabc"_s);
    f.select(1, 1, 1);
    f.storage.replaceCharacters({0, 1}, Text(u"xyz"));
    QVERIFY(f.view.columns() == nullptr);
    f.select(1, 1, 1);
    f.view.replaceText({0, 3}, Text(u"a"));
    QVERIFY(f.view.columns() == nullptr);
}

void TextViewColumnsTest::accessibility_reportsTheFirstRow()
{
    Fixture f(u"abc\nabc"_s);
    f.select(1, 1, 1);
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&f.view);
    int start = 0;
    int end = 0;
    interface->textInterface()->selection(0, &start, &end);
    QCOMPARE(interface->textInterface()->selectionCount(), 1);
    QCOMPARE(std::pair(start, end), std::pair(1, 2));
    interface->textInterface()->setSelection(0, 0, 3);
    QVERIFY(f.view.columns() == nullptr);
}

void TextViewColumnsTest::painting_marksTheRows()
{
    Fixture f(u"abcdef\nab\nabcdef\nabcdef"_s);
    const QColor highlight = f.view.palette().color(QPalette::Active, QPalette::Highlight);
    const QPoint inFirst = f.pointOf(3) + QPoint(2, -6);
    const int distance = f.pointOf(7).y() - f.pointOf(0).y();
    f.select(2, 3, 2);
    const QImage image = f.view.viewport()->grab().toImage();
    for (int row = 0; row < 4; ++row) {
        const QPoint point = inFirst + QPoint(0, row * distance);
        QCOMPARE(image.pixelColor(point) == highlight, row < 3);
        QVERIFY(image.pixelColor(point.x() + 300, point.y()) != highlight);
        QVERIFY(image.pixelColor(f.pointOf(0).x() + 2, point.y()) != highlight);
    }
}

void TextViewColumnsTest::wrappedLine_countsAlongTheWholeLine()
{
    const QString line(200, u'x');
    Fixture f(QString(line + u'\n' + line + u"\nab"_s));
    QVERIFY(f.pointOf(150).y() > f.pointOf(0).y()); // The line is wrapped.
    const QPoint from = f.pointOf(150);
    const QPoint to = f.pointOf(201 + 152);
    QTest::mousePress(f.view.viewport(), Qt::LeftButton, Qt::AltModifier, from);
    f.drag(to);
    QTest::mouseRelease(f.view.viewport(), Qt::LeftButton, Qt::AltModifier, to);
    QCOMPARE(f.view.columns()->rectangle(f.view.string()), (TextRectangle{{0, 150}, {1, 152}}));
    f.key(Qt::Key_Down, kAltShift); // A line, not a row.
    QCOMPARE(f.rows(), (QStringList{u"xx"_s, u"xx"_s, u"~"_s.repeated(150)}));
    f.key(Qt::Key_Up, kAltShift);
    f.key(Qt::Key_Delete);
    QCOMPARE(f.view.string().size(), 404 - 4);
}

void TextViewColumnsTest::hugeLine_isNotSelected()
{
    Fixture f(u"x"_s.repeated(100'000));
    f.caret(50'000);
    f.key(Qt::Key_Right, kAltShift);
    QVERIFY(f.view.columns() == nullptr);
    QCOMPARE(f.view.selectedRange(), (TextRange{50'000, 0}));
    f.caret(16'000);
    f.key(Qt::Key_Right, kAltShift);
    QCOMPARE(f.rows(), (QStringList{u"x"_s}));
}

QTEST_MAIN(TextViewColumnsTest)
#include "TextViewColumnsTest.moc"

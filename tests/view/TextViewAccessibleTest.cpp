#include "support/ShownTextView.h"

#include <QAccessible>
#include <QLabel>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;
using Fixture = test::ShownTextView;

namespace {

QAccessibleTextInterface *textInterfaceOf(TextView &view)
{
    return QAccessible::queryAccessibleInterface(&view)->textInterface();
}

/// All pieces into which `boundary` divides the text, in order.
QStringList piecesOf(TextView &view, QAccessible::TextBoundaryType boundary)
{
    QAccessibleTextInterface *text = textInterfaceOf(view);
    QStringList pieces;
    int start = 0;
    int end = 0;
    while (end < text->characterCount()) {
        const int offset = end;
        pieces.append(text->textAtOffset(offset, boundary, &start, &end));
        if (start != offset || end <= offset)
            return {u"a gap at %1"_s.arg(offset)};
    }
    return pieces;
}

} // namespace

class TextViewAccessibleTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void assistiveTechnology_readsAndEditsTheText();
    void assistiveTechnology_mayAskBeyondTheText();
    void lines_areTheRowsOnTheScreen();
    void paragraphs_goFromLineBreakToLineBreak();
    void sentences_endWithTheirFullStop();
    void words_divideJapaneseByTheDictionary();
    void characters_areClusters();
    void characterRects_followEachOtherInBothDirections();
    void characterOffTheScreen_hasNoPlace();
    void scrollToSubstring_showsIt();
    void label_ofTheWidgetAroundIt_namesTheText();
    void attributes_giveTheFontSizeInPoints();
    void ownName_comesBeforeTheLabelAround();
};

void TextViewAccessibleTest::assistiveTechnology_readsAndEditsTheText()
{
    Fixture f(u"one 二つ\nthree");
    f.view.setAccessibleName(u"notes.txt"_s);
    f.view.setSelectedRange({4, 2});
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&f.view);
    QVERIFY(accessible != nullptr);
    QCOMPARE(accessible->role(), QAccessible::EditableText);
    QCOMPARE(accessible->text(QAccessible::Name), u"notes.txt"_s);
    QVERIFY(accessible->state().multiLine);
    QAccessibleTextInterface *text = accessible->textInterface();
    QVERIFY(text != nullptr);
    QCOMPARE(text->characterCount(), 12);
    QCOMPARE(text->text(4, 6), u"二つ"_s);
    QCOMPARE(text->cursorPosition(), 6);
    int start = 0;
    int end = 0;
    text->selection(0, &start, &end);
    QCOMPARE(std::pair(start, end), std::pair(4, 6));
    QCOMPARE(text->textAtOffset(8, QAccessible::LineBoundary, &start, &end), u"three"_s);
    QCOMPARE(text->textBeforeOffset(8, QAccessible::LineBoundary, &start, &end), u"one 二つ\n"_s);
    QCOMPARE(text->textAfterOffset(0, QAccessible::CharBoundary, &start, &end), u"n"_s);
    const QRect rect = text->characterRect(8);
    QVERIFY(!rect.isEmpty());
    QCOMPARE(text->offsetAtPoint(rect.center() - QPoint(rect.width() / 4, 0)), 8);
    accessible->editableTextInterface()->replaceText(0, 3, u"1"_s);
    QCOMPARE(f.text(), u"1 二つ\nthree"_s);
    f.view.undo();
    QCOMPARE(f.text(), u"one 二つ\nthree"_s);
}

void TextViewAccessibleTest::assistiveTechnology_mayAskBeyondTheText()
{
    Fixture f(u"one two");
    QAccessibleTextInterface *text =
        QAccessible::queryAccessibleInterface(&f.view)->textInterface();
    int start = 0;
    int end = 0;
    for (const auto boundary :
         {QAccessible::CharBoundary, QAccessible::WordBoundary, QAccessible::LineBoundary}) {
        for (const int offset : {-2, -1, 7, 8, 99}) {
            const QString at = text->textAtOffset(offset, boundary, &start, &end);
            QCOMPARE(at, f.text().mid(start, end - start));
            QVERIFY(start >= 0 && end <= 7);
        }
    }
}

void TextViewAccessibleTest::lines_areTheRowsOnTheScreen()
{
    const QString line = u"漢字かな交じり文が続いて折り返す。"_s.repeated(8);
    Fixture f(line + u"\r\nnext\n\nlast"_s);
    const QStringList rows = piecesOf(f.view, QAccessible::LineBoundary);
    QCOMPARE(rows.join(QString()), f.text());
    QVERIFY(rows.size() > 5);
    QCOMPARE(rows.mid(rows.size() - 3), (QStringList{u"next\n"_s, u"\n"_s, u"last"_s}));
    QVERIFY(rows[rows.size() - 4].endsWith(u"\r\n"));
    // The characters of a row are side by side, the next row is below.
    QAccessibleTextInterface *text = textInterfaceOf(f.view);
    const int length = static_cast<int>(rows[0].size());
    QCOMPARE(text->characterRect(0).top(), text->characterRect(length - 1).top());
    QVERIFY(text->characterRect(length).top() > text->characterRect(0).top());
}

void TextViewAccessibleTest::paragraphs_goFromLineBreakToLineBreak()
{
    const QString line = u"word "_s.repeated(100);
    Fixture f(line + u"\nb\u2029c"_s);
    QCOMPARE(piecesOf(f.view, QAccessible::ParagraphBoundary),
             (QStringList{line + u"\n"_s, u"b\u2029"_s, u"c"_s}));
}

void TextViewAccessibleTest::sentences_endWithTheirFullStop()
{
    Fixture f(u"これは文です。次の文。\nOne. Two two. ");
    QCOMPARE(piecesOf(f.view, QAccessible::SentenceBoundary),
             (QStringList{u"これは文です。"_s, u"次の文。\n"_s, u"One. "_s, u"Two two. "_s}));
}

void TextViewAccessibleTest::words_divideJapaneseByTheDictionary()
{
    Fixture f(u"東京は晴れ word\r\n\nx");
    QCOMPARE(piecesOf(f.view, QAccessible::WordBoundary),
             (QStringList{
                 u"東京"_s, u"は"_s, u"晴れ"_s, u" "_s, u"word"_s, u"\r\n"_s, u"\n"_s, u"x"_s}));
}

void TextViewAccessibleTest::characters_areClusters()
{
    Fixture f(u"か\u3099👨‍👩‍👧e\u0301\r\n");
    QCOMPARE(piecesOf(f.view, QAccessible::CharBoundary),
             (QStringList{u"か\u3099"_s, u"👨‍👩‍👧"_s, u"e\u0301"_s, u"\r\n"_s}));
}

void TextViewAccessibleTest::characterRects_followEachOtherInBothDirections()
{
    Fixture f(u"abc مرحبا");
    QAccessibleTextInterface *text = textInterfaceOf(f.view);
    const QRect b = text->characterRect(1);
    const QRect c = text->characterRect(2);
    QVERIFY(b.width() > 3 && c.width() > 3);
    QVERIFY(b.left() < c.left());
    // The Arabic characters run to the left.
    const QRect first = text->characterRect(4);
    const QRect second = text->characterRect(5);
    QVERIFY(first.width() > 1 && second.width() > 1);
    QVERIFY(second.left() < first.left());
    QVERIFY(second.left() > c.left());
}

void TextViewAccessibleTest::characterOffTheScreen_hasNoPlace()
{
    Fixture f(u"line\n"_s.repeated(500));
    QAccessibleTextInterface *text = textInterfaceOf(f.view);
    QVERIFY(!text->characterRect(0).isEmpty());
    QVERIFY(text->characterRect(2400).isEmpty());
}

void TextViewAccessibleTest::scrollToSubstring_showsIt()
{
    Fixture f(u"line\n"_s.repeated(500));
    QAccessibleTextInterface *text = textInterfaceOf(f.view);
    text->scrollToSubstring(2400, 2404);
    const QRect place = text->characterRect(2400);
    QVERIFY(!place.isEmpty());
    const QRect seen(f.view.viewport()->mapToGlobal(QPoint(0, 0)), f.view.viewport()->size());
    QVERIFY(seen.contains(place));
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 0}));
}

namespace {

/// A view inside a widget that represents it, with a label for that widget.
struct LabelledView
{
    LabelledView()
    {
        label.setBuddy(&around);
        around.setFocusProxy(&inner);
        inner.setFocusProxy(&view);
    }

    TextStorage storage;
    QWidget window;
    QLabel label{u"Code"_s, &window};
    QWidget around{&window};
    QWidget inner{&around};
    TextView view{&storage, &inner};
};

} // namespace

void TextViewAccessibleTest::label_ofTheWidgetAroundIt_namesTheText()
{
    LabelledView f;
    f.around.setAccessibleDescription(u"of the macro"_s);
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&f.view);
    QCOMPARE(accessible->text(QAccessible::Name), u"Code"_s);
    QCOMPARE(accessible->text(QAccessible::Description), u"of the macro"_s);
    const auto relations = accessible->relations(QAccessible::Label);
    QCOMPARE(relations.size(), 1);
    QCOMPARE(relations.first().first->object(), &f.label);
    f.label.setText(u"コード"_s);
    QCOMPARE(accessible->text(QAccessible::Name), u"コード"_s);
}

void TextViewAccessibleTest::attributes_giveTheFontSizeInPoints()
{
    Fixture f(u"text");
    QFont font = f.view.font();
    font.setPixelSize(14);
    f.view.setFont(font);
    int start = 0;
    int end = 0;
    const QString attributes = textInterfaceOf(f.view)->attributes(0, &start, &end);
    QVERIFY2(attributes.contains(u"font-size:10.5pt;"_s), qPrintable(attributes));
}

void TextViewAccessibleTest::ownName_comesBeforeTheLabelAround()
{
    LabelledView f;
    f.view.setAccessibleName(u"own"_s);
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&f.view);
    QCOMPARE(accessible->text(QAccessible::Name), u"own"_s);
    f.view.setAccessibleName({});
    f.inner.setFocusProxy(nullptr);
    QCOMPARE(accessible->text(QAccessible::Name), QString());
}

QTEST_MAIN(TextViewAccessibleTest)
#include "TextViewAccessibleTest.moc"

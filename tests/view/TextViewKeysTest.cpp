#include "support/ShownTextView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;
using Fixture = test::ShownTextView;

/// Tests of the usual keys of a text view. The journey `keys` covers the platform-specific ones.
class TextViewKeysTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void insertAlone_doesNothing();
    void insertWithModifiers_copiesAndPastes();
    void shiftDelete_cuts();
    void paragraphMoves_data();
    void paragraphMoves();
    void paragraphMoveWithShift_extends();
    void pageMove_keepsRowAndColumnOnTheScreen();
    void leftAndRight_followTheScreenInMixedText();
    void rightAcrossRowsOfMixedText_reachesTheEnd();
    void arrowWithSelectionInMixedText_goesToTheSideOnTheScreen();
    void backTab_changesNothing();
};

void TextViewKeysTest::insertAlone_doesNothing()
{
    Fixture f(u"abc");
    f.view.setSelectedRange({1, 1});
    f.key(Qt::Key_Insert);
    QCOMPARE(f.text(), u"abc"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{1, 1}));
    // Typing still inserts afterwards.
    f.caret(0);
    f.key(Qt::Key_X);
    QCOMPARE(f.text(), u"xabc"_s);
}

void TextViewKeysTest::insertWithModifiers_copiesAndPastes()
{
    Fixture f(u"abc");
    f.view.setSelectedRange({0, 2});
    f.key(Qt::Key_Insert, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"ab"_s);
    f.caret(3);
    f.key(Qt::Key_Insert, Qt::ShiftModifier);
    QCOMPARE(f.text(), u"abcab"_s);
}

void TextViewKeysTest::shiftDelete_cuts()
{
    Fixture f(u"abc");
    f.view.setSelectedRange({0, 2});
    f.key(Qt::Key_Delete, Qt::ShiftModifier);
    QCOMPARE(f.text(), u"c"_s);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"ab"_s);
}

void TextViewKeysTest::paragraphMoves_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<qint64>("from");
    QTest::addColumn<qint64>("to");
    // "one\r\ntwo\n\nthree": paragraphs at 0, 5, 9 and 10.
    QTest::newRow("up inside") << Qt::Key_Up << qint64(7) << qint64(5);
    QTest::newRow("up at the start") << Qt::Key_Up << qint64(5) << qint64(0);
    QTest::newRow("up at the top") << Qt::Key_Up << qint64(0) << qint64(0);
    QTest::newRow("up to an empty one") << Qt::Key_Up << qint64(10) << qint64(9);
    QTest::newRow("down inside") << Qt::Key_Down << qint64(1) << qint64(3);
    QTest::newRow("down at the end") << Qt::Key_Down << qint64(3) << qint64(8);
    QTest::newRow("down to an empty one") << Qt::Key_Down << qint64(8) << qint64(9);
    QTest::newRow("down at the bottom") << Qt::Key_Down << qint64(15) << qint64(15);
}

void TextViewKeysTest::paragraphMoves()
{
    QFETCH(Qt::Key, key);
    QFETCH(qint64, from);
    QFETCH(qint64, to);
    Fixture f(u"one\r\ntwo\n\nthree");
    f.caret(from);
    f.key(key, Qt::ControlModifier);
    QCOMPARE(f.view.selectedRange(), (TextRange{to, 0}));
}

void TextViewKeysTest::paragraphMoveWithShift_extends()
{
    Fixture f(u"one two\nthree");
    f.caret(4);
    f.key(Qt::Key_Down, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(f.view.selectedRange(), (TextRange{4, 3}));
}

void TextViewKeysTest::pageMove_keepsRowAndColumnOnTheScreen()
{
    Fixture f(u"a line of text\n"_s.repeated(300));
    f.caret(15 * 5 + 7); // In the sixth line.
    const QRectF before = f.view.caretRectAt(f.view.caretOffset());
    f.key(Qt::Key_PageDown);
    QCOMPARE(f.view.caretRectAt(f.view.caretOffset()), before);
    QCOMPARE(f.view.caretOffset() % 15, 7);
    QVERIFY(f.view.caretOffset() > 15 * 10);
    f.key(Qt::Key_PageUp);
    QCOMPARE(f.view.caretOffset(), 15 * 5 + 7);
    QCOMPARE(f.view.caretRectAt(f.view.caretOffset()), before);
}

void TextViewKeysTest::leftAndRight_followTheScreenInMixedText()
{
    Fixture f(u"ab \u05D0\u05D1\u05D2 cd");
    f.caret(0);
    qreal x = f.view.caretRectAt(0).x();
    QSet<qint64> visited{0};
    for (int i = 0; i < 9; ++i) {
        f.key(Qt::Key_Right);
        const qint64 offset = f.view.caretOffset();
        QVERIFY2(f.view.caretRectAt(offset).x() > x, qPrintable(QString::number(offset)));
        x = f.view.caretRectAt(offset).x();
        visited.insert(offset);
    }
    QCOMPARE(visited.size(), 10); // Every offset was visited.
    QCOMPARE(f.view.caretOffset(), 9);
    for (int i = 0; i < 9; ++i) {
        f.key(Qt::Key_Left);
        QVERIFY(f.view.caretRectAt(f.view.caretOffset()).x() < x);
        x = f.view.caretRectAt(f.view.caretOffset()).x();
    }
    QCOMPARE(f.view.caretOffset(), 0);
}

void TextViewKeysTest::rightAcrossRowsOfMixedText_reachesTheEnd()
{
    const QString line = u"Latin \u05D0\u05D1\u05D2 words \u05D3\u05D4 "_s.repeated(20);
    Fixture f(QString(line + u'\n' + line));
    f.caret(0);
    for (qsizetype i = 0; i < 2 * line.size() + 1; ++i)
        f.key(Qt::Key_Right);
    QCOMPARE(f.view.caretOffset(), f.view.string().size());
    for (qsizetype i = 0; i < 2 * line.size() + 1; ++i)
        f.key(Qt::Key_Left);
    QCOMPARE(f.view.caretOffset(), 0);
}

void TextViewKeysTest::arrowWithSelectionInMixedText_goesToTheSideOnTheScreen()
{
    Fixture f(u"ab \u05D0\u05D1\u05D2\u05D3 cd");
    f.view.setSelectedRange({4, 2}); // Runs from right to left.
    const bool startIsOnRight = f.view.caretRectAt(4).x() > f.view.caretRectAt(6).x();
    QVERIFY(startIsOnRight);
    f.key(Qt::Key_Right);
    QCOMPARE(f.view.selectedRange(), (TextRange{4, 0}));
    f.view.setSelectedRange({4, 2});
    f.key(Qt::Key_Left);
    QCOMPARE(f.view.selectedRange(), (TextRange{6, 0}));
}

void TextViewKeysTest::backTab_changesNothing()
{
    Fixture f(u"\tabc");
    f.caret(1);
    f.key(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(f.text(), u"\tabc"_s);
    QVERIFY(f.view.hasFocus());
}

QTEST_MAIN(TextViewKeysTest)
#include "TextViewKeysTest.moc"

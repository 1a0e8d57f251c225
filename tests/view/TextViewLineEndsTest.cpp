#include "support/ShownTextView.h"

#include <QClipboard>
#include <QDropEvent>
#include <QGuiApplication>
#include <QMimeData>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;
using Fixture = test::ShownTextView;

/// Tests of the line ends that typing, pasting and dropping leave in the text.
class TextViewLineEndsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init() { QGuiApplication::clipboard()->clear(); }

    void enter_insertsTheLineEndOfTheText_data();
    void enter_insertsTheLineEndOfTheText();
    void enter_overASelection_replacesItByTheLineEnd();
    void enter_besideALoneCrOrLf_makesALine();
    void enter_inALongLine_findsTheFarLineEnd();
    void crLfText_staysPureThroughTypingJoiningAndUndo();
    void pastedText_keepsItsLineEndsUnlessConverted_data();
    void pastedText_keepsItsLineEndsUnlessConverted();
};

void TextViewLineEndsTest::enter_insertsTheLineEndOfTheText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("lineEnd");
    QTest::newRow("none") << u"ab"_s << u"\n"_s;
    QTest::newRow("LF") << u"ab\nc\r\n"_s << u"\n"_s;
    QTest::newRow("CR LF") << u"ab\r\nc\n"_s << u"\r\n"_s;
    QTest::newRow("CR") << u"ab\rc\n"_s << u"\r"_s;
    QTest::newRow("U+2028, CR LF") << u"ab\u2028c\r\n"_s << u"\r\n"_s;
    QTest::newRow("NEL") << u"ab\u0085c"_s << u"\n"_s;
}

void TextViewLineEndsTest::enter_insertsTheLineEndOfTheText()
{
    QFETCH(const QString, text);
    QFETCH(const QString, lineEnd);
    Fixture f(text);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        f.caret(1);
        f.key(key);
        QCOMPARE(f.text(), QString(text).insert(1, lineEnd));
        QCOMPARE(f.view.selectedRange(), (TextRange{1 + lineEnd.size(), 0}));
        f.view.undo();
        QCOMPARE(f.text(), text);
    }
}

void TextViewLineEndsTest::enter_overASelection_replacesItByTheLineEnd()
{
    Fixture f(u"one\r\ntwo");
    f.view.selectAll();
    f.key(Qt::Key_Return);
    QCOMPARE(f.text(), u"\r\n"_s);
}

void TextViewLineEndsTest::enter_besideALoneCrOrLf_makesALine()
{
    // Inserting the first line end here would join to CR LF, and no line would begin.
    Fixture f(u"a\nb\rc");
    f.caret(4);
    f.key(Qt::Key_Return);
    QCOMPARE(f.text(), u"a\nb\r\rc"_s);
    Fixture other(u"a\rb\nc");
    other.caret(3);
    other.key(Qt::Key_Return);
    QCOMPARE(other.text(), u"a\rb\n\nc"_s);
}

void TextViewLineEndsTest::enter_inALongLine_findsTheFarLineEnd()
{
    const QString line(10'000'000, u'x');
    Fixture f(QString(line + u"\r\nend"_s));
    f.caret(3);
    f.key(Qt::Key_Return);
    QCOMPARE(f.view.string().slice(0, 7), u"xxx\r\nxx"_s);
}

void TextViewLineEndsTest::crLfText_staysPureThroughTypingJoiningAndUndo()
{
    const QString text = u"one\r\ntwo\r\n日本\r\n"_s;
    Fixture f(text);
    const auto isPure = [&f] { return f.view.string().metrics().hasOnly(LineEnd::CrLf); };
    f.caret(1);
    f.key(Qt::Key_Return); // Splits a line.
    QTest::keyClicks(&f.view, u"x"_s);
    QCOMPARE(f.text(), u"o\r\nxne\r\ntwo\r\n日本\r\n"_s);
    f.key(Qt::Key_Left);
    f.key(Qt::Key_Backspace); // Joins it.
    QCOMPARE(f.text(), u"oxne\r\ntwo\r\n日本\r\n"_s);
    f.key(Qt::Key_End);
    f.key(Qt::Key_Delete);
    QCOMPARE(f.text(), u"oxnetwo\r\n日本\r\n"_s);
    f.view.setSelectedRange({2, 7});
    f.view.copy();
    f.view.paste();
    f.view.paste();
    QCOMPARE(f.text(), u"oxnetwo\r\nnetwo\r\n日本\r\n"_s);
    QVERIFY(isPure());
    while (f.storage.canUndo()) {
        f.view.undo();
        QVERIFY(isPure());
    }
    QCOMPARE(f.text(), text);
    while (f.storage.canRedo()) {
        f.view.redo();
        QVERIFY(isPure());
    }
}

void TextViewLineEndsTest::pastedText_keepsItsLineEndsUnlessConverted_data()
{
    QTest::addColumn<bool>("converts");
    QTest::addColumn<QString>("inserted");
    QTest::newRow("as it is") << false << u"x\ny\rz\u2028\r\n"_s;
    QTest::newRow("converted") << true << u"x\r\ny\r\nz\u2028\r\n"_s;
}

void TextViewLineEndsTest::pastedText_keepsItsLineEndsUnlessConverted()
{
    QFETCH(const bool, converts);
    QFETCH(const QString, inserted);
    Fixture f(u"a\r\nb");
    f.view.setConvertsPastedLineEnds(converts);
    QMimeData mime;
    mime.setText(u"x\ny\rz\u2028\r\n"_s);
    QGuiApplication::clipboard()->setText(mime.text());
    f.caret(4);
    f.view.paste();
    QCOMPARE(f.text(), u"a\r\nb"_s + inserted);
    QCOMPARE(f.view.caretOffset(), f.view.string().size());
    f.view.undo();
    QCOMPARE(f.text(), u"a\r\nb"_s);

    const QPoint start = f.pointOf(0);
    QDragEnterEvent enter(start, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(f.view.viewport(), &enter);
    QDropEvent drop(start, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(f.view.viewport(), &drop);
    QCOMPARE(f.text(), inserted + u"a\r\nb"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{0, inserted.size()}));
}

QTEST_MAIN(TextViewLineEndsTest)
#include "TextViewLineEndsTest.moc"

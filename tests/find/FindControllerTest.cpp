#include "find/FindController.h"

#include "find/FindTestBase.h"

#include <QInputMethodEvent>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of editing during a search, and of the marks in the text.
class FindControllerTest final : public QObject, private test::FindTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup() { end(); }

    void search_clickedMeanwhile_leavesTheCaret();
    void search_caretMovedMeanwhile_leavesTheCaret();
    void search_composedMeanwhile_leavesTheCaret();
    void search_barClosedMeanwhile_leavesTheCaret();
    void replaceAll_caretMovedMeanwhile_keepsIt();
    void replaceAll_overLongValues_destroysNothing();
    void replaceAll_undoneAndRedone_keepsTheCaret();
    void replace_behindMovedStart_replacesWhatWasFound();
    void marks_inBothDirections_coverTheirCharactersOnly();
    void marks_onThousandsOfCombiningMarks_coverTheirCharacter();
    void placeholder_darkPalette_isLegible();

private:
    void searchFor(const QString &pattern, bool isExpression = false);
    void startLongSearch();
    void replaceAllBy(const QString &replacement);

    [[nodiscard]] bool isSearching() const { return controller()->session()->isSearching(); }
};

void FindControllerTest::searchFor(const QString &pattern, bool isExpression)
{
    controller()->showReplace();
    field()->clear();
    button("findRegularExpression")->setChecked(isExpression);
    field()->setText(pattern);
}

/// Starts a search that finds nothing and takes seconds.
void FindControllerTest::startLongSearch()
{
    setText(u"The quick brown fox jumps over the lazy dog\n"_s.repeated(20'000));
    searchFor(u"(?s)[a-z].*?zzz"_s, true);
    QVERIFY(isSearching());
}

void FindControllerTest::replaceAllBy(const QString &replacement)
{
    field("replaceField")->setText(replacement);
    button("replaceAll")->click();
}

void FindControllerTest::search_clickedMeanwhile_leavesTheCaret()
{
    startLongSearch();
    const QPoint start = view()->caretRectAt(0).center().toPoint();
    QTest::mouseClick(view()->viewport(), Qt::LeftButton, {}, start);
    QVERIFY(!isSearching());
    QCOMPARE(view()->selectedRange(), (TextRange{0, 0}));
}

void FindControllerTest::search_caretMovedMeanwhile_leavesTheCaret()
{
    startLongSearch();
    view()->setFocus();
    QTest::keyClick(view(), Qt::Key_Right);
    QVERIFY(!isSearching());
    QCOMPARE(view()->selectedRange(), (TextRange{1, 0}));
    startLongSearch();
    view()->setFocus();
    QTest::keyClicks(view(), u"x"_s);
    QVERIFY(!isSearching());
}

void FindControllerTest::search_composedMeanwhile_leavesTheCaret()
{
    startLongSearch();
    view()->setFocus();
    QInputMethodEvent composing(u"ねこ"_s, {});
    QCoreApplication::sendEvent(view(), &composing);
    QVERIFY(!isSearching());
    QVERIFY(view()->hasMarkedText());
}

void FindControllerTest::search_barClosedMeanwhile_leavesTheCaret()
{
    startLongSearch();
    controller()->close();
    QVERIFY(!isSearching());
}

void FindControllerTest::replaceAll_caretMovedMeanwhile_keepsIt()
{
    setText(u"ab "_s.repeated(1'000'000) + u"end"_s);
    searchFor(u"b"_s);
    replaceAllBy(u"cde"_s);
    QVERIFY(isSearching());
    view()->setSelectedRange({2'999'997 + 3, 3});
    QTRY_COMPARE_WITH_TIMEOUT(view()->string().size(), 5'000'003, test::kLongWait);
    QCOMPARE(view()->selectedRange(), (TextRange{5'000'003, 0}));
}

void FindControllerTest::replaceAll_overLongValues_destroysNothing()
{
    const QString value(20'000, u'A');
    setText(u"{\"image\": \""_s + value + u"\",\n \"b\": \"c\"}\n"_s);
    searchFor(u"\"[^\"]*\""_s, true);
    replaceAllBy(u"S"_s);
    QTRY_COMPARE(text(), u"{S: S,\n S: S}\n"_s);
}

void FindControllerTest::replaceAll_undoneAndRedone_keepsTheCaret()
{
    setText(u"aa bb aa cc aa"_s);
    searchFor(u"aa"_s);
    view()->setSelectedRange({4, 0}); // Inside "bb".
    replaceAllBy(u"xyz"_s);
    QTRY_COMPARE(text(), u"xyz bb xyz cc xyz"_s);
    QCOMPARE(view()->selectedRange(), (TextRange{5, 0}));
    view()->undo();
    QCOMPARE(view()->selectedRange(), (TextRange{4, 0}));
    view()->redo();
    QCOMPARE(text(), u"xyz bb xyz cc xyz"_s);
    QCOMPARE(view()->selectedRange(), (TextRange{5, 0}));
}

void FindControllerTest::replace_behindMovedStart_replacesWhatWasFound()
{
    setText(u"foobar foobar x"_s);
    searchFor(u"(f)oo\\Kbar"_s, true);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{3, 3}));
    field("replaceField")->setText(u"<$1>"_s);
    button("replaceOne")->click();
    QTRY_COMPARE(text(), u"foo<f> foobar x"_s);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{10, 3}));
    button("replaceOne")->click();
    QTRY_COMPARE(text(), u"foo<f> foo<f> x"_s);
    field()->setText(u"(?<=> )x"_s);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{14, 1}));
    button("replaceOne")->click();
    QTRY_COMPARE(text(), u"foo<f> foo<f> <$1>"_s);
}

void FindControllerTest::marks_inBothDirections_coverTheirCharactersOnly()
{
    setText(u"שלום עולם abc שלום\nx"_s);
    searchFor(u"a"_s);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{10, 1}));
    view()->setSelectedRange({19, 0});
    const auto colorUnder = [this](qint64 offset) {
        const QRectF rect = view()->characterRectAt(offset);
        const QImage image = view()->viewport()->grab().toImage();
        return image.pixelColor(QPoint(qRound(rect.center().x()), qRound(rect.top()) + 2));
    };
    const QColor base = colorUnder(19);
    QTRY_VERIFY(colorUnder(10) != base);
    for (const qint64 offset : {0, 3, 5, 8, 11, 12, 14, 17})
        QCOMPARE(colorUnder(offset), base);
}

/// `bench/run` measures how fast they are painted.
void FindControllerTest::marks_onThousandsOfCombiningMarks_coverTheirCharacter()
{
    setText(u'e' + QString(100'000, QChar(0x0301)));
    const auto corner = [this] {
        const QPoint point = view()->caretRectAt(0).topLeft().toPoint() + QPoint(2, 2);
        return view()->viewport()->grab().toImage().pixelColor(point);
    };
    const QColor base = corner();
    searchFor(u"."_s, true);
    controller()->session()->setCounting(true);
    QTRY_COMPARE_WITH_TIMEOUT(controller()->session()->count().total, 100'001, test::kLongWait);
    (void)view()->viewport()->grab(); // Requests the marks and lays the text out.
    QTRY_VERIFY_WITH_TIMEOUT(!controller()->session()->marksIn({0, 100'001}).empty(),
                             test::kLongWait);
    QTRY_VERIFY_WITH_TIMEOUT(corner() != base, test::kLongWait);
}

void FindControllerTest::placeholder_darkPalette_isLegible()
{
    // A dark theme that sets no placeholder color.
    QPalette dark;
    for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button})
        dark.setColor(role, QColor(27, 30, 32));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(role, QColor(239, 240, 241));
    dark.setColor(QPalette::PlaceholderText, QColor(0, 0, 0, 128));
    m_view->setPalette(dark);
    searchFor({});
    view()->setFocus();
    const QImage image = field()->grab().toImage();
    const QRect inside = image.rect().adjusted(5, 5, -30, -5);
    int lightest = 0;
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            lightest = std::max(lightest, image.pixelColor(x, y).lightness());
    QVERIFY2(lightest > 120, qPrintable(QString::number(lightest)));
}

QTEST_MAIN(FindControllerTest)
#include "FindControllerTest.moc"

#include "support/ShownTextView.h"
#include "support/Waits.h"
#include "view/TextMimeData.h"

#include <QDrag>
#include <QDropEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

using namespace penwick;
using namespace Qt::StringLiterals;
using Fixture = test::ShownTextView;

namespace {

constexpr Qt::DropActions kBoth = Qt::CopyAction | Qt::MoveAction;

/// Moves the mouse over the view with the left button pressed.
void moveMouse(Fixture &f, QPoint point)
{
    QWidget *target = f.view.viewport();
    QMouseEvent event(
        QEvent::MouseMove, point, target->mapToGlobal(point), Qt::NoButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(target, &event);
}

/// Drags into the view. The toolkit delivers further drag events only after this one.
bool enter(Fixture &f, const QMimeData *mime, QPoint point)
{
    QDragEnterEvent event(point, kBoth, mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(f.view.viewport(), &event);
    return event.isAccepted();
}

/// Drags over the view to `point`. True when a drop there would be accepted.
bool hover(Fixture &f, const QMimeData *mime, QPoint point)
{
    if (!enter(f, mime, point))
        return false;

    QDragMoveEvent event(point, kBoth, mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(f.view.viewport(), &event);
    return event.isAccepted();
}

/// Drops at `point` and returns the action that the view performed.
Qt::DropAction drop(Fixture &f, const QMimeData *mime, QPoint point, Qt::DropAction action)
{
    if (!enter(f, mime, point))
        return Qt::IgnoreAction;
    // The modifier that requests the action.
    const auto key = action == Qt::MoveAction ? Qt::ShiftModifier : Qt::ControlModifier;
    QDropEvent event(point, kBoth, mime, Qt::LeftButton, key);
    QCoreApplication::sendEvent(f.view.viewport(), &event);
    return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
}

/// Presses on the selection and moves until a drag begins. `runner` performs the drag.
void pull(Fixture &f, qint64 offset, const TextView::DragRunner &runner)
{
    f.view.setDragRunner([runner](QDrag *drag) {
        const Qt::DropAction action = runner(drag);
        drag->deleteLater();
        return action;
    });
    const QPoint start = f.pointOf(offset) + QPoint(2, 0);
    QTest::mousePress(f.view.viewport(), Qt::LeftButton, {}, start);
    moveMouse(f, start + QPoint(30, 0));
}

} // namespace

/// Tests of dragging text out of views and dropping it into views.
class TextViewDragTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void moveWithinTheView_isOneStepAndStaysSelected_data();
    void moveWithinTheView_isOneStepAndStaysSelected();
    void dropOnItself_changesNothing();
    void copyWithinTheView_keepsTheOriginal();
    void moveToAnotherView_isOneStepInEach();
    void copyToAnotherView_leavesTheFirstAlone();
    void cancelledDrag_changesNothing();
    void textChangedMeanwhile_isNotDeleted();
    void clickOnTheSelection_placesTheCaret();
    void pressOutsideTheSelection_selects();
    void thirdPressOfATripleClick_dragsNothing();
    void dragOver_showsTheDropCaret();
    void dragNearTheEdge_scrolls();
    void drop_duringAComposition_commitsIt();
    void dropOfFiles_isLeftToTheWindow();
    void dropOfNothing_isRefused();
    void draggedText_isHandedOverExactly();
    void foreignText_keepsItsFirstMark();
};

void TextViewDragTest::moveWithinTheView_isOneStepAndStaysSelected_data()
{
    QTest::addColumn<qint64>("place");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<TextRange>("selection");
    QTest::newRow("forward") << qint64(8) << u"one three two "_s << TextRange{10, 4};
    QTest::newRow("backward") << qint64(0) << u"two one three "_s << TextRange{0, 4};
}

void TextViewDragTest::moveWithinTheView_isOneStepAndStaysSelected()
{
    Fixture f(u"one two three ");
    f.view.setSelectedRange({4, 4});
    QFETCH(qint64, place);
    const QPoint point = f.pointOf(place == 8 ? 14 : place);
    pull(f, 5, [&](QDrag *drag) { return drop(f, drag->mimeData(), point, Qt::MoveAction); });
    QTEST(f.text(), "expected");
    QTEST(f.view.selectedRange(), "selection");
    f.view.undo();
    QCOMPARE(f.text(), u"one two three "_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{4, 4}));
    QVERIFY(!f.storage.canUndo());
    f.view.redo();
    QTEST(f.text(), "expected");
    QTEST(f.view.selectedRange(), "selection");
}

void TextViewDragTest::dropOnItself_changesNothing()
{
    Fixture f(u"one two three");
    f.view.setSelectedRange({4, 3});
    QSignalSpy changes(&f.view, &TextView::textDidChange);
    for (const qint64 place : {4, 5, 7}) {
        const QPoint point = f.pointOf(place);
        pull(f, 5, [&](QDrag *drag) { return drop(f, drag->mimeData(), point, Qt::MoveAction); });
    }
    QCOMPARE(f.text(), u"one two three"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{4, 3}));
    QVERIFY(!f.storage.canUndo());
    QCOMPARE(changes.count(), 0);
}

void TextViewDragTest::copyWithinTheView_keepsTheOriginal()
{
    Fixture f(u"one two");
    f.view.setSelectedRange({0, 3});
    const QPoint point = f.pointOf(7);
    pull(f, 1, [&](QDrag *drag) { return drop(f, drag->mimeData(), point, Qt::CopyAction); });
    QCOMPARE(f.text(), u"one twoone"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{7, 3}));
    f.view.undo();
    QCOMPARE(f.text(), u"one two"_s);
}

void TextViewDragTest::moveToAnotherView_isOneStepInEach()
{
    Fixture to(u"xy");
    Fixture from(u"one two");
    from.view.setSelectedRange({0, 4});
    const QPoint point = to.pointOf(1);
    pull(from, 1, [&](QDrag *drag) { return drop(to, drag->mimeData(), point, Qt::MoveAction); });
    QCOMPARE(to.text(), u"xone y"_s);
    QCOMPARE(to.view.selectedRange(), (TextRange{1, 4}));
    QCOMPARE(from.text(), u"two"_s);
    from.view.undo();
    QCOMPARE(from.text(), u"one two"_s);
    QCOMPARE(from.view.selectedRange(), (TextRange{0, 4}));
    QVERIFY(!from.storage.canUndo());
    QCOMPARE(to.text(), u"xone y"_s);
    to.view.undo();
    QCOMPARE(to.text(), u"xy"_s);
    QVERIFY(!to.storage.canUndo());
}

void TextViewDragTest::copyToAnotherView_leavesTheFirstAlone()
{
    Fixture to(u"xy");
    Fixture from(u"one two");
    from.view.setSelectedRange({0, 4});
    const QPoint point = to.pointOf(1);
    pull(from, 1, [&](QDrag *drag) { return drop(to, drag->mimeData(), point, Qt::CopyAction); });
    QCOMPARE(to.text(), u"xone y"_s);
    QCOMPARE(from.text(), u"one two"_s);
    QVERIFY(!from.storage.canUndo());
}

void TextViewDragTest::cancelledDrag_changesNothing()
{
    Fixture f(u"one two");
    f.view.setSelectedRange({0, 3});
    const QPoint point = f.pointOf(7);
    pull(f, 1, [&](QDrag *drag) {
        hover(f, drag->mimeData(), point);
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(f.view.viewport(), &leave);
        return Qt::IgnoreAction;
    });
    QCOMPARE(f.text(), u"one two"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 3}));
    QVERIFY(!f.storage.canUndo());
}

void TextViewDragTest::textChangedMeanwhile_isNotDeleted()
{
    Fixture f(u"one two");
    f.view.setSelectedRange({0, 3});
    pull(f, 1, [&](QDrag *) {
        f.storage.replaceCharacters({0, 0}, Text(u"new "));
        return Qt::MoveAction;
    });
    QCOMPARE(f.text(), u"new one two"_s);
}

void TextViewDragTest::clickOnTheSelection_placesTheCaret()
{
    Fixture f(u"one two three");
    f.view.setSelectedRange({0, 13});
    const QPoint point = f.pointOf(5);
    QTest::mousePress(f.view.viewport(), Qt::LeftButton, {}, point);
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 13}));
    QTest::mouseRelease(f.view.viewport(), Qt::LeftButton, {}, point);
    QCOMPARE(f.view.selectedRange(), (TextRange{5, 0}));
    // The next press and move select again.
    QTest::mousePress(f.view.viewport(), Qt::LeftButton, {}, point);
    moveMouse(f, f.pointOf(8));
    QCOMPARE(f.view.selectedRange(), (TextRange{5, 3}));
    QTest::mouseRelease(f.view.viewport(), Qt::LeftButton, {}, point);
}

void TextViewDragTest::pressOutsideTheSelection_selects()
{
    Fixture f(u"one two three");
    f.view.setSelectedRange({0, 3});
    bool dragged = false;
    f.view.setDragRunner([&](QDrag *) {
        dragged = true;
        return Qt::IgnoreAction;
    });
    QTest::mousePress(f.view.viewport(), Qt::LeftButton, {}, f.pointOf(8));
    moveMouse(f, f.pointOf(13));
    QVERIFY(!dragged);
    QCOMPARE(f.view.selectedRange(), (TextRange{8, 5}));
}

void TextViewDragTest::thirdPressOfATripleClick_dragsNothing()
{
    Fixture f(u"one two\nthree");
    const QPoint point = f.pointOf(5);
    QTest::mouseDClick(f.view.viewport(), Qt::LeftButton, {}, point);
    QTest::mousePress(f.view.viewport(), Qt::LeftButton, {}, point);
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 8}));
}

void TextViewDragTest::dragOver_showsTheDropCaret()
{
    Fixture f(u"one two three");
    f.caret(0);
    f.view.clearFocus(); // Hides the view's own caret.
    const TextMimeData mime(Text(u"x"));
    const QRect place = f.view.caretRectAt(7).toRect();
    const auto lineIsDrawn = [&] {
        const QImage image = f.view.viewport()->grab().toImage();
        for (int y = place.top() + 2; y < place.bottom() - 2; ++y)
            if (image.pixelColor(place.left(), y) != f.view.palette().color(QPalette::Text))
                return false;
        return true;
    };
    QVERIFY(!lineIsDrawn());
    QVERIFY(hover(f, &mime, place.center()));
    QVERIFY(lineIsDrawn());
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 0}));
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(f.view.viewport(), &leave);
    QVERIFY(!lineIsDrawn());
}

void TextViewDragTest::dragNearTheEdge_scrolls()
{
    Fixture f(u"line\n"_s.repeated(300));
    f.caret(0);
    const TextMimeData mime(Text(u"x"));
    QScrollBar *bar = f.view.verticalScrollBar();
    QVERIFY(hover(f, &mime, QPoint(20, f.view.viewport()->height() - 3)));
    QTRY_VERIFY_WITH_TIMEOUT(bar->value() > 200, test::kLongWait);
    QVERIFY(hover(f, &mime, QPoint(20, 3)));
    QTRY_COMPARE_WITH_TIMEOUT(bar->value(), 0, test::kLongWait);
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(f.view.viewport(), &leave);
}

void TextViewDragTest::drop_duringAComposition_commitsIt()
{
    Fixture f(u"ab");
    f.caret(2);
    f.compose(u"に"_s);
    const TextMimeData mime(Text(u"x"));
    drop(f, &mime, QPoint(0, 10), Qt::CopyAction);
    QVERIFY(!f.view.hasMarkedText());
    QCOMPARE(f.text(), u"xab"_s);
}

void TextViewDragTest::dropOfFiles_isLeftToTheWindow()
{
    Fixture f(u"ab");
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(u"/tmp/a.txt"_s)});
    mime.setText(u"/tmp/a.txt"_s);
    QVERIFY(!hover(f, &mime, QPoint(20, 10)));
    QCOMPARE(drop(f, &mime, QPoint(20, 10), Qt::CopyAction), Qt::IgnoreAction);
    QCOMPARE(f.text(), u"ab"_s);
}

void TextViewDragTest::dropOfNothing_isRefused()
{
    Fixture f(u"ab");
    QMimeData mime;
    mime.setData(u"image/png"_s, "x");
    QVERIFY(!hover(f, &mime, QPoint(20, 10)));
}

void TextViewDragTest::draggedText_isHandedOverExactly()
{
    const QString all = u"\uFEFFa\u00A0b\rc\r\nd\u2028e\u2029f\u0085"_s + u'\0' + u"\uFDD0\uFFFF"_s;
    Fixture to;
    Fixture from(all);
    from.view.selectAll();
    QString seenByOthers;
    pull(from, 2, [&](QDrag *drag) {
        seenByOthers = drag->mimeData()->text();
        return drop(to, drag->mimeData(), QPoint(10, 10), Qt::MoveAction);
    });
    QCOMPARE(to.text(), all);
    QCOMPARE(seenByOthers, all);
    QCOMPARE(from.text(), QString());
}

void TextViewDragTest::foreignText_keepsItsFirstMark()
{
    QMimeData mime;
    mime.setData(u"text/plain;charset=utf-8"_s, "\xEF\xBB\xBFtext");
    mime.setText(u"text"_s);
    Fixture f;
    drop(f, &mime, QPoint(10, 10), Qt::CopyAction);
    QCOMPARE(f.text(), u"\uFEFFtext"_s);
}

QTEST_MAIN(TextViewDragTest)
#include "TextViewDragTest.moc"

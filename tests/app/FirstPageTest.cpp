#include "app/DocumentsTestBase.h"
#include "find/FindBar.h"
#include "support/HeldReading.h"
#include "support/ModalAnswer.h"
#include "support/Waits.h"
#include "window/LineEndMark.h"
#include "window/LoadingView.h"
#include "wording/WordingLookup.h"

#include <QAccessible>
#include <QClipboard>
#include <QInputMethodQueryEvent>
#include <QLabel>
#include <QMenu>
#include <QScrollBar>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kHeldAt = 1'500'000; // Bytes: more than the first piece.

/// About 6 MB of lines that wrap, some with CR LF and some with LF, and clusters of many
/// characters.
QByteArray largeText()
{
    QByteArray text;
    for (int line = 0; text.size() < 6'000'000; ++line) {
        text += QByteArray::number(line) +
                QByteArray("行 e\u0301👩‍👩‍👧").repeated(1 + line % 9);
        text += line % 2 == 0 ? "\r\n" : "\n";
    }
    return text;
}

} // namespace

/// Tests of a file that is being read and shows its first page. Every file counts as large here.
/// Reading stops after `kHeldAt` bytes until a test lets it go on.
class FirstPageTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void page_heldFile_isTheStartOfTheText();
    void page_typedAndPasted_staysAsItIs();
    void page_contextMenu_offersOnlyToCopyAndSelect();
    void page_toAssistiveTechnology_isNotEditable();
    void page_moreIsRead_growsAndStaysInPlace();
    void page_scrollBarHeld_growsLater();
    void page_find_waits();
    void wholeText_afterThePage_looksTheSame();
    void wholeText_afterThePage_keepsPlaceAndSelection();
    void invalidByte_afterThePage_leavesNothingOnTheScreen();
    void escape_afterThePage_cancels();
    void tabClosed_afterThePage_isCancelled();
    void quickFile_isShownWhole();

private:
    void open(const QByteArray &content);

    [[nodiscard]] LoadingView *loading() const { return window()->findChild<LoadingView *>(); }

    /// The view of the first page.
    [[nodiscard]] TextView *page() const
    {
        return loading() != nullptr ? loading()->textView() : nullptr;
    }

    [[nodiscard]] QString label(const QString &name) const
    {
        return window()->findChild<QLabel *>(name)->text();
    }

    QByteArray m_large;
    std::optional<test::HeldReading> m_held;
};

void FirstPageTest::initTestCase()
{
    QApplication::setCursorFlashTime(0); // A caret that blinks would change pictures.
    m_large = largeText();
}

void FirstPageTest::init()
{
    using namespace std::chrono_literals;
    begin();
    m_documents->setTransferLimits({.directBytes = 1,
                                    .firstText = std::chrono::milliseconds(test::kLongWait),
                                    .reading = 0ms});
    m_held.emplace(kHeldAt);
}

void FirstPageTest::cleanup()
{
    m_held.reset();
    end();
}

void FirstPageTest::open(const QByteArray &content)
{
    QVERIFY(m_documents->openFile(m_home->write(u"大きい.txt"_s, content)));
    QVERIFY(page() != nullptr);
}

void FirstPageTest::page_heldFile_isTheStartOfTheText()
{
    open(m_large);
    QCOMPARE(window()->windowTitle(), u"大きい.txt[*] — penwick"_s);
    const Text shown = page()->string();
    QVERIFY(shown.size() > 100'000);
    const auto whole = Text::fromUtf8(m_large);
    QVERIFY(shown == whole->mid(0, shown.size()));
    // It is not yet the text of the tab.
    QVERIFY(view() == nullptr);
    QVERIFY(controller()->content() == nullptr);
    QVERIFY(document()->isReading());
    QCOMPARE(document()->textStorage()->length(), 0);
    QVERIFY(!m_documents->saveDocument(controller()));
    QCoreApplication::processEvents();
    QVERIFY(page()->isVisible() && page()->hasFocus());
    const TextMetrics metrics = shown.metrics();
    QCOMPARE(controller()->documentState()->characterCount(), metrics.clusters);
    QVERIFY(label(u"statusLineCount"_s).startsWith(QString::number(metrics.separators + 1)));
    QVERIFY(window()->findChild<QLabel *>(u"statusCharacterCount"_s)->isVisible());
    QVERIFY(!window()->findChild<LineEndMark *>()->isEnabled());
}

void FirstPageTest::page_typedAndPasted_staysAsItIs()
{
    open(m_large);
    const Text before = page()->string();
    page()->setSelectedRange({10, 5});
    QTest::keyClicks(page(), u"abc"_s);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Backspace, Qt::Key_Delete, Qt::Key_Tab})
        QTest::keyClick(page(), key);
    QKeyEvent typed(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, u"a"_s);
    QCoreApplication::sendEvent(page(), &typed);
    QVERIFY(!typed.isAccepted());
    QGuiApplication::clipboard()->setText(u"pasted"_s);
    for (const Qt::Key key : {Qt::Key_V, Qt::Key_X, Qt::Key_Z, Qt::Key_Y})
        QTest::keyClick(page(), key, Qt::ControlModifier);
    page()->paste();
    page()->cut();
    page()->deleteSelection();
    page()->undo();
    page()->replaceText({0, 5}, Text(u"replaced"_s));
    QTest::mouseClick(page()->viewport(), Qt::MiddleButton);
    QVERIFY(page()->string() == before);
    QVERIFY(!page()->viewport()->acceptDrops());
    QVERIFY(!page()->inputMethodQuery(Qt::ImEnabled).toBool());
    QCOMPARE(QGuiApplication::clipboard()->text(), u"pasted"_s);
    page()->setSelectedRange({0, 2});
    QTest::keyClick(page(), Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"0行"_s);
}

void FirstPageTest::page_contextMenu_offersOnlyToCopyAndSelect()
{
    open(m_large);
    page()->setSelectedRange({0, 2});
    QGuiApplication::clipboard()->setText(u"pasted"_s);
    QStringList enabled;
    connect(page(), &TextView::contextMenuWillOpen, this, [&enabled](QMenu *menu) {
        for (const QAction *action : menu->actions())
            if (action->isEnabled() && !action->isSeparator())
                enabled << action->text().section(u'\t', 0, 0);
        QTimer::singleShot(0, menu, &QMenu::close);
    });
    QTest::keyClick(page(), Qt::Key_F10, Qt::ShiftModifier);
    QCOMPARE(
        enabled.mid(0, 2),
        QStringList({wording::text(u"menu.edit.copy"_s), wording::text(u"dialog.selectAll"_s)}));
    QVERIFY(!enabled.contains(wording::text(u"menu.edit.paste"_s)));
    QVERIFY(!enabled.join(u' ').contains(wording::text(u"editor.lineEnds.convert"_s)));
}

void FirstPageTest::page_toAssistiveTechnology_isNotEditable()
{
    open(m_large);
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(page());
    QVERIFY(interface != nullptr);
    QVERIFY(!interface->state().editable);
    QVERIFY(interface->state().readOnly);
    QVERIFY(interface->editableTextInterface() == nullptr);
    QVERIFY(interface->textInterface() != nullptr);
    QCOMPARE(interface->text(QAccessible::Name), u"大きい.txt"_s);
    QCOMPARE(interface->text(QAccessible::Description), wording::text(u"status.loading"_s));
    test::HeldReading::release();
    QTRY_VERIFY_WITH_TIMEOUT(view() != nullptr, test::kLongWait);
    interface = QAccessible::queryAccessibleInterface(view());
    QVERIFY(interface->state().editable && !interface->state().readOnly);
    QVERIFY(interface->editableTextInterface() != nullptr);
}

void FirstPageTest::page_moreIsRead_growsAndStaysInPlace()
{
    open(m_large);
    QCoreApplication::processEvents();
    page()->setSelectedRange({5'000, 20});
    const TextRange selected = page()->selectedRange();
    const qint64 before = page()->string().size();
    const qint64 top = page()->place().top.offset;
    QVERIFY(top > 0);
    const int maximum = page()->verticalScrollBar()->maximum();
    test::HeldReading::allow(3'000'000);
    QTRY_VERIFY_WITH_TIMEOUT(page()->string().size() > before, test::kLongWait);
    QVERIFY(page()->string() == Text::fromUtf8(m_large)->mid(0, page()->string().size()));
    QCOMPARE(page()->place().top.offset, top);
    QVERIFY(page()->selectedRange() == selected);
    QVERIFY(page()->verticalScrollBar()->maximum() > maximum);
    QVERIFY(!page()->textStorage()->canUndo());
    QTRY_COMPARE(controller()->documentState()->characterCount(),
                 page()->string().metrics().clusters);
    QVERIFY(view() == nullptr);
}

void FirstPageTest::page_scrollBarHeld_growsLater()
{
    open(m_large);
    const qint64 before = page()->string().size();
    page()->verticalScrollBar()->setSliderDown(true);
    test::HeldReading::allow(3'000'000);
    QTRY_VERIFY_WITH_TIMEOUT(document()->readSoFar().size() > before, test::kLongWait);
    loading()->refresh();
    QCOMPARE(page()->string().size(), before);
    page()->verticalScrollBar()->setSliderDown(false);
    loading()->refresh();
    QVERIFY(page()->string().size() > before);
}

void FirstPageTest::page_find_waits()
{
    open(m_large);
    QCoreApplication::processEvents();
    QTest::keyClick(page(), Qt::Key_F, Qt::ControlModifier);
    QTest::keyClick(page(), Qt::Key_F3);
    const auto *bar = window()->findChild<FindBar *>();
    QVERIFY(bar == nullptr || bar->isHidden());
}

void FirstPageTest::wholeText_afterThePage_looksTheSame()
{
    open(m_large);
    QCoreApplication::processEvents();
    const QPoint place = page()->viewport()->mapTo(window(), QPoint());
    const QImage before = page()->viewport()->grab().toImage();
    test::HeldReading::release();
    QTRY_VERIFY_WITH_TIMEOUT(view() != nullptr && view()->hasFocus(), test::kLongWait);
    QCOMPARE(view()->viewport()->mapTo(window(), QPoint()), place);
    QCOMPARE(view()->viewport()->grab().toImage(), before);
}

void FirstPageTest::wholeText_afterThePage_keepsPlaceAndSelection()
{
    open(m_large);
    QCoreApplication::processEvents();
    page()->setSelectedRange({20'000, 300});
    const TextRange selected = page()->selectedRange();
    QWheelEvent wheel({5, 5},
                      page()->viewport()->mapToGlobal(QPointF(5, 5)),
                      {0, -50},
                      {},
                      Qt::NoButton,
                      Qt::NoModifier,
                      Qt::NoScrollPhase,
                      false);
    QCoreApplication::sendEvent(page()->viewport(), &wheel);
    const TextView::Place place = page()->place();
    QVERIFY(place.top.offset > 0 && place.top.hidden > 0);
    const QImage before = page()->viewport()->grab().toImage();
    test::HeldReading::release();
    QTRY_VERIFY_WITH_TIMEOUT(view() != nullptr && view()->hasFocus(), test::kLongWait);
    QCOMPARE(view()->string().metrics().utf8Bytes, m_large.size());
    QCOMPARE(view()->place().top.offset, place.top.offset);
    QCOMPARE(view()->place().top.hidden, place.top.hidden);
    QVERIFY(view()->selectedRange() == selected);
    QCOMPARE(view()->viewport()->grab().toImage(), before);
    type(u"x"_s);
    QVERIFY(window()->isWindowModified());
    view()->undo();
    QVERIFY(!window()->isWindowModified());
}

void FirstPageTest::invalidByte_afterThePage_leavesNothingOnTheScreen()
{
    open(m_large + '\xFF');
    QCoreApplication::processEvents();
    QString message;
    bool isEmpty = false;
    const test::ModalAnswerer answer([&](QWidget *modal) {
        message = qobject_cast<QMessageBox *>(modal)->text();
        isEmpty = window()->findChild<TextView *>() == nullptr &&
                  controller()->documentState()->text().isEmpty();
        return modal->close();
    });
    test::HeldReading::release();
    QTRY_COMPARE_WITH_TIMEOUT(
        window()->windowTitle(), u"名称未設定[*] — penwick"_s, test::kLongWait);
    QCOMPARE(message, u"ファイルを開けませんでした"_s);
    QVERIFY(isEmpty);
    QCOMPARE(text(), QString());
    QTRY_COMPARE(controller()->documentState()->characterCount(), 0);
}

void FirstPageTest::escape_afterThePage_cancels()
{
    open(m_large);
    QCoreApplication::processEvents();
    QTest::keyClick(page(), Qt::Key_Escape);
    test::HeldReading::release();
    QTRY_COMPARE_WITH_TIMEOUT(
        window()->windowTitle(), u"名称未設定[*] — penwick"_s, test::kLongWait);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QCOMPARE(text(), QString());
}

void FirstPageTest::tabClosed_afterThePage_isCancelled()
{
    m_documents->newDocument();
    type(u"x"_s);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, m_large)));
    test::HeldReading::release(); // The tab waits for the thread that reads.
    QVERIFY(m_documents->closeDocument(controller(1)));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(text(), u"x"_s);
}

void FirstPageTest::quickFile_isShownWhole()
{
    m_documents->setTransferLimits({.directBytes = 1,
                                    .reading = std::chrono::milliseconds(test::kLongWait),
                                    .pausedBytes = m_large.size() + 1});
    test::HeldReading::release();
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, m_large)));
    QVERIFY(loading() == nullptr);
    QCOMPARE(view()->string().toUtf8(), m_large);
}

QTEST_MAIN(FirstPageTest)
#include "FirstPageTest.moc"

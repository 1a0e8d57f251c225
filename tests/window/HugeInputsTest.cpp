#include "editor/DocumentState.h"
#include "editor/TextDocument.h"
#include "view/TextLayoutStyle.h"
#include "view/TextView.h"
#include "view/TextViewport.h"
#include "window/MainEditorView.h"

#include <QFile>
#include <QFontDatabase>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Opens files that are hard for editors from disk into a complete editor. Costs that must not
/// depend on the file size are measured as the amount of text involved, never as time.
class HugeInputsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data();
    void init();
    void cleanup();
    void opened_counters_areRight();
    void opened_screen_laysOutAFewSegments();
    void typed_atBothEnds_isInserted();
    void paged_downAndUp_comesBack();
    void erasedBackward_atTheEnd_takesOneCharacter();
    void saved_unedited_isTheSameFile();

private:
    [[nodiscard]] TextView *view() const { return m_view->textView(); }

    [[nodiscard]] bool showsCaret() const
    {
        const QRectF caret = view()->inputMethodQuery(Qt::ImCursorRectangle).toRectF();
        return !caret.isNull() && view()->viewport()->rect().contains(caret.center().toPoint());
    }

    QTemporaryDir m_folder;
    QByteArray m_bytes;
    DocumentState m_state;
    std::unique_ptr<TextDocument> m_document;
    std::unique_ptr<MainEditorView> m_view;
};

void HugeInputsTest::initTestCase_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qint64>("lines");
    QTest::addColumn<qint64>("characters");
    QTest::addColumn<qint64>("lastCharacter"); // Its length in code units.
    QTest::addColumn<qint64>("laidOut");       // Maximum number of code units laid out for one
                                               // screen.
    QTest::newRow("100,000 combining marks on one base")
        << 'e' + QByteArray("\u0301").repeated(100'000) << qint64{1} << qint64{1} << qint64{100'001}
        << qint64{100'001};
    QTest::newRow("a million empty lines") << QByteArray(1'000'000, '\n') << qint64{1'000'001}
                                           << qint64{1'000'000} << qint64{1} << qint64{0};
    QTest::newRow("one line of 5 MB") << QByteArray("0123456789").repeated(500'000) << qint64{1}
                                      << qint64{5'000'000} << qint64{1} << qint64{10'000};
}

void HugeInputsTest::init()
{
    QFETCH_GLOBAL(QByteArray, bytes);
    m_bytes = bytes;
    QFile file(m_folder.filePath(u"huge.txt"_s));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();
    m_document = std::make_unique<TextDocument>();
    QVERIFY(m_document->readFromFile(file.fileName()).has_value());
    m_state.setText(m_document->contentString());
    m_view = std::make_unique<MainEditorView>(&m_state, m_document.get());
    m_view->resize(900, 650);
    m_view->show();
    QCoreApplication::processEvents();
}

void HugeInputsTest::cleanup()
{
    m_view.reset();
    m_document.reset();
}

void HugeInputsTest::opened_counters_areRight()
{
    QFETCH_GLOBAL(qint64, lines);
    QFETCH_GLOBAL(qint64, characters);
    QTRY_COMPARE(m_state.lineCount(), lines);
    QCOMPARE(m_state.characterCount(), characters);
    view()->setSelectedRange({view()->string().size(), 0});
    QTRY_COMPARE(m_state.cursorLine(), lines);
}

void HugeInputsTest::opened_screen_laysOutAFewSegments()
{
    QFETCH_GLOBAL(qint64, laidOut);
    constexpr int kRowsOnScreen = 60; // More than fit.
    TextViewport viewport;
    viewport.setText(m_document->contentString());
    const QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    viewport.setGeometry(makeTextLayoutStyle(font, 888, 4), QSizeF(900, 600));
    for (const int place : {0, 500, 1000}) { // Thousandths of the scroll range.
        const auto range = viewport.scrollRange();
        viewport.scrollToValue(range.maximum / 1000 * place, range.maximum);
        int segments = 0;
        qint64 units = 0;
        viewport.forEachVisible([&](const SegmentLayout &layout, qreal /*y*/) {
            ++segments;
            units += layout.segment().length();
        });
        QVERIFY2(segments > 0 && segments <= kRowsOnScreen, qPrintable(QString::number(segments)));
        QVERIFY2(units <= laidOut, qPrintable(QString::number(units)));
    }
}

void HugeInputsTest::typed_atBothEnds_isInserted()
{
    QTest::keyClick(view(), Qt::Key_End, Qt::ControlModifier);
    QCOMPARE(view()->selectedRange().location, view()->string().size());
    QVERIFY(showsCaret());
    QTest::keyClicks(view(), u"xyz"_s);
    QCOMPARE(view()->string().slice(view()->string().size() - 3, 3), u"xyz"_s);
    QVERIFY(showsCaret());
    QTest::keyClick(view(), Qt::Key_Home, Qt::ControlModifier);
    QTest::keyClicks(view(), u"abc"_s);
    QCOMPARE(view()->string().slice(0, 3), u"abc"_s);
    QVERIFY(showsCaret());
    view()->undo();
    view()->undo();
    QVERIFY(!m_document->isEdited());
    QVERIFY(view()->string() == Text::fromUtf8(m_bytes).value());
}

void HugeInputsTest::paged_downAndUp_comesBack()
{
    view()->setSelectedRange({0, 0});
    const bool hasRows = view()->verticalScrollBar()->maximum() > 0;
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(view(), Qt::Key_PageDown);
    QCOMPARE(view()->selectedRange().location > 0, hasRows);
    QVERIFY(showsCaret());
    for (int i = 0; i < 6; ++i)
        QTest::keyClick(view(), Qt::Key_PageUp);
    QCOMPARE(view()->selectedRange().location, 0);
    QVERIFY(showsCaret());
}

void HugeInputsTest::erasedBackward_atTheEnd_takesOneCharacter()
{
    QFETCH_GLOBAL(qint64, lastCharacter);
    const qint64 size = view()->string().size();
    view()->setSelectedRange({size, 0});
    QTest::keyClick(view(), Qt::Key_Backspace);
    QCOMPARE(view()->string().size(), size - lastCharacter);
}

void HugeInputsTest::saved_unedited_isTheSameFile()
{
    const QString path = m_folder.filePath(u"copy.txt"_s);
    QVERIFY(m_document->writeToFile(path).has_value());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll() == m_bytes);
}

QTEST_MAIN(HugeInputsTest)
#include "HugeInputsTest.moc"

#include "app/AppDelegateTestBase.h"
#include "command/Palette.h"
#include "window/HintLine.h"

#include <QAccessible>
#include <QInputMethodEvent>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of the line that says how to begin, in the whole application.
class StartHintsTest final : public QObject, private test::AppDelegateTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        UserDefaults::usage().remove(u"recentFiles/paths"_s);
        Preferences::standard().reset(PreferenceId::ShowsHint);
        begin();
        launch();
        activate(0);
    }

    void cleanup() { end(); }

    void emptyText_showsTheHintAsItsDescription();
    void firstKey_removesIt_data();
    void firstKey_removesIt();
    void composition_removesIt();
    void modifier_leavesIt();
    void change_ofTheText_removesIt();
    void openedFile_hasNone();
    void savedText_hasNone();
    void recentFile_isOfferedAndOpened();
    void click_opensThePalette();
    void setting_off_hidesIt();
    void smallWindow_holdsIt();

private:
    [[nodiscard]] HintLine *hint() const
    {
        auto *line = view()->findChild<HintLine *>();
        return line != nullptr && line->isVisible() ? line : nullptr;
    }

    [[nodiscard]] TextView *view() const { return controller()->textView(); }

    [[nodiscard]] QString description() const
    {
        return QAccessible::queryAccessibleInterface(view())->text(QAccessible::Description);
    }
};

void StartHintsTest::emptyText_showsTheHintAsItsDescription()
{
    QVERIFY(hint() != nullptr);
    QCOMPARE(description(), u"Ctrl+Shift+P: コマンド, Ctrl+O: ファイルを開く"_s);
    QCOMPARE(text(), QString());
    QVERIFY(view()->viewport()->rect().contains(hint()->geometry()));
    QVERIFY(hint()->geometry().bottom() > view()->viewport()->height() - 30);
    QCOMPARE(hint()->focusPolicy(), Qt::NoFocus);
}

void StartHintsTest::firstKey_removesIt_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("letter") << Qt::Key_A;
    QTest::newRow("arrow") << Qt::Key_Down;
    QTest::newRow("backspace") << Qt::Key_Backspace;
}

void StartHintsTest::firstKey_removesIt()
{
    QFETCH(const Qt::Key, key);
    QTest::keyClick(view(), key);
    QVERIFY(hint() == nullptr);
    QCOMPARE(description(), QString());
    setText(QString());
    QVERIFY(hint() == nullptr); // It does not come back.
}

void StartHintsTest::composition_removesIt()
{
    QInputMethodEvent none;
    QCoreApplication::sendEvent(view(), &none);
    QVERIFY(hint() != nullptr);
    QInputMethodEvent composing(u"に"_s, {});
    QCoreApplication::sendEvent(view(), &composing);
    QVERIFY(hint() == nullptr);
}

void StartHintsTest::modifier_leavesIt()
{
    QTest::keyClick(view(), Qt::Key_Control, Qt::ControlModifier);
    QVERIFY(hint() != nullptr);
    QTest::keyClick(view(), Qt::Key_F1); // The palette opens.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QVERIFY(hint() != nullptr);
}

void StartHintsTest::change_ofTheText_removesIt()
{
    setText(u"x"_s);
    QVERIFY(hint() == nullptr);
    QCOMPARE(description(), QString());
}

void StartHintsTest::openedFile_hasNone()
{
    m_app->documentController().openFile(m_home.write(u"empty.txt"_s, ""));
    QVERIFY(hint() == nullptr);
    QCOMPARE(description(), QString());
}

void StartHintsTest::savedText_hasNone()
{
    controller()->document()->setFilePath(m_home.file(u"new.txt"_s));
    QVERIFY(hint() == nullptr);
}

void StartHintsTest::recentFile_isOfferedAndOpened()
{
    const QString path = m_home.write(u"手紙 & <b>.txt"_s, "x");
    m_app->recentFiles().add(QFile::encodeName(path));
    QVERIFY(description().endsWith(u", 前のファイル: 手紙 & <b>.txt"_s));
    QTest::mouseClick(hint(), Qt::LeftButton, {}, {hint()->width() - 5, 5});
    QTRY_COMPARE(controller()->document()->filePath(), path);
    QVERIFY(hint() == nullptr);
}

void StartHintsTest::click_opensThePalette()
{
    QTest::mouseClick(hint(), Qt::RightButton, {}, {5, 5});
    QCoreApplication::processEvents();
    QVERIFY(Palette::openIn(controller()->window()) == nullptr);
    QTest::mouseClick(hint(), Qt::LeftButton, {}, {5, 5});
    QTRY_VERIFY(Palette::openIn(controller()->window()) != nullptr);
}

void StartHintsTest::setting_off_hidesIt()
{
    Preferences::standard().setOn(PreferenceId::ShowsHint, false);
    QVERIFY(hint() == nullptr);
    QCOMPARE(description(), QString());
    m_app->documentController().newDocument();
    QVERIFY(controller(1)->textView()->accessibleDescription().isEmpty());
    Preferences::standard().setOn(PreferenceId::ShowsHint, true);
    QVERIFY(hint() != nullptr || !controller()->isInFront());
    QVERIFY(!description().isEmpty());
}

void StartHintsTest::smallWindow_holdsIt()
{
    m_app->recentFiles().add("/" + QByteArray(250, 'x') + ".txt");
    for (const int width : {1200, 700, 520}) {
        controller()->window()->resize(width, 360);
        QTRY_VERIFY(view()->viewport()->width() <= width);
        QVERIFY2(view()->viewport()->rect().contains(hint()->geometry()),
                 qPrintable(QString::number(width)));
    }
}

QTEST_MAIN(StartHintsTest)
#include "StartHintsTest.moc"

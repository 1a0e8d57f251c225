#include "command/Palette.h"

#include "support/Waits.h"

#include <QAccessible>
#include <QApplication>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QTest>

#include <memory>

using namespace penwick;
using namespace Qt::StringLiterals;

class PaletteTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void open_listsAllRowsInTheirOrder();
    void enter_runsTheCurrentRowOnce();
    void arrows_goRoundTheEnabledRows();
    void click_runsTheRow();
    void click_onADisabledRow_doesNothing();
    void escape_returnsTheFocusAndRunsNothing();
    void focus_elsewhere_closesWithoutTakingItBack();
    void otherWindow_activated_closesWithTheFocusBack();
    void line_typed_isOffered_data();
    void line_typed_isOffered();
    void headings_areListedAndFound();
    void headings_ofAHugeText_areFoundInTurns();
    void greaterThan_findsOnlyCommands();
    void wideMark_isAMode();
    void withoutText_linesAndHeadingsAreNone();
    void currentRow_isFocusedForAssistiveTechnology();
    void smallWindow_holdsThePalette();

private:
    Palette *open(const QString &typed = {});
    [[nodiscard]] QLineEdit *field() const;
    [[nodiscard]] QListView *list() const;
    [[nodiscard]] QStringList titles() const;

    void type(const QString &text) const { field()->insert(text); }

    void press(Qt::Key key) const { QTest::keyClick(field(), key); }

    std::unique_ptr<QMainWindow> m_window;
    QLineEdit *m_content = nullptr; // Owned by the window.
    PaletteSource m_source;
    QStringList m_run;
    QList<PaletteRow> m_runRows;
};

void PaletteTest::init()
{
    m_run.clear();
    m_runRows.clear();
    m_source = {};
    using Kind = PaletteRow::Kind;
    const auto add = [this](Kind kind, const QString &title, bool isEnabled = true) {
        PaletteRow row;
        row.kind = kind;
        row.id = title;
        row.title = title;
        row.isEnabled = isEnabled;
        m_source.rows << row;
    };
    add(Kind::Command, u"保存"_s);
    add(Kind::Macro, u"整形"_s);
    add(Kind::Tab, u"保存先.txt"_s);
    add(Kind::Command, u"やり直す"_s, false);
    m_source.text = Text(u"■一\nab\n■二\n"_s);
    m_source.run = [this](const PaletteRow &row) {
        m_run << row.title;
        m_runRows << row;
    };
    m_window = std::make_unique<QMainWindow>();
    m_content = new QLineEdit(u"content"_s);
    m_window->setCentralWidget(m_content);
    m_window->resize(700, 500);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_content->setFocus();
    m_content->setSelection(2, 3);
}

void PaletteTest::cleanup()
{
    m_window.reset();
}

Palette *PaletteTest::open(const QString &typed)
{
    return new Palette(m_window.get(), m_source, typed);
}

QLineEdit *PaletteTest::field() const
{
    return m_window->findChild<QLineEdit *>(u"paletteField"_s);
}

QListView *PaletteTest::list() const
{
    return m_window->findChild<QListView *>(u"paletteList"_s);
}

QStringList PaletteTest::titles() const
{
    QStringList titles;
    for (int row = 0; row < list()->model()->rowCount(); ++row)
        titles << list()->model()->index(row, 0).data().toString();
    return titles;
}

void PaletteTest::open_listsAllRowsInTheirOrder()
{
    open();
    QVERIFY(field()->hasFocus());
    QCOMPARE(titles(), (QStringList{u"保存"_s, u"整形"_s, u"保存先.txt"_s, u"やり直す"_s}));
    QCOMPARE(list()->currentIndex().row(), 0);
    type(u"保存"_s);
    QCOMPARE(titles(), (QStringList{u"保存"_s, u"保存先.txt"_s}));
    type(u"zzz"_s);
    QCOMPARE(titles(), QStringList{u"見つかりません"_s});
    press(Qt::Key_Return); // Nothing to run.
    QCoreApplication::processEvents();
    QVERIFY(field()->hasFocus());
    QCOMPARE(m_run, QStringList());
}

void PaletteTest::enter_runsTheCurrentRowOnce()
{
    open();
    type(u"整"_s);
    press(Qt::Key_Return);
    QVERIFY(m_content->hasFocus());
    QTRY_COMPARE(m_run, QStringList{u"整形"_s});
    QTRY_VERIFY(field() == nullptr);
    QCOMPARE(m_run.size(), 1);
}

void PaletteTest::arrows_goRoundTheEnabledRows()
{
    open();
    QList<int> rows;
    for (const Qt::Key key :
         {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_PageUp, Qt::Key_PageDown}) {
        press(key);
        rows << list()->currentIndex().row();
    }
    QCOMPARE(rows, (QList<int>{1, 2, 0, 2, 0, 2}));
    press(Qt::Key_Enter);
    QTRY_COMPARE(m_run, QStringList{u"保存先.txt"_s});
}

void PaletteTest::click_runsTheRow()
{
    open();
    const QRect row = list()->visualRect(list()->model()->index(1, 0));
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, row.center());
    QTRY_COMPARE(m_run, QStringList{u"整形"_s});
    QVERIFY(m_content->hasFocus());
}

void PaletteTest::click_onADisabledRow_doesNothing()
{
    open();
    const QRect row = list()->visualRect(list()->model()->index(3, 0));
    QVERIFY(!row.isEmpty());
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, row.center());
    QCoreApplication::processEvents();
    QCOMPARE(m_run, QStringList());
    QVERIFY(field()->hasFocus());
}

void PaletteTest::escape_returnsTheFocusAndRunsNothing()
{
    open();
    type(u"保存"_s);
    press(Qt::Key_Escape);
    QVERIFY(m_content->hasFocus());
    QCOMPARE(m_content->selectedText(), u"nte"_s);
    QVERIFY(Palette::openIn(m_window.get()) == nullptr);
    QTRY_VERIFY(field() == nullptr);
    QCOMPARE(m_run, QStringList());
}

void PaletteTest::focus_elsewhere_closesWithoutTakingItBack()
{
    auto *other = new QLineEdit(m_window->centralWidget()->parentWidget());
    other->show();
    open();
    other->setFocus();
    QTRY_VERIFY(field() == nullptr);
    QVERIFY(other->hasFocus());
}

void PaletteTest::otherWindow_activated_closesWithTheFocusBack()
{
    open();
    QLineEdit other;
    other.show();
    other.activateWindow();
    other.setFocus();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QTRY_VERIFY(field() == nullptr);
    QCOMPARE(m_window->focusWidget(), m_content);
}

void PaletteTest::line_typed_isOffered_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("title");
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<QString>("message");
    QTest::newRow("line") << u":2"_s << u"2 行へ移動"_s << qint64(3) << QString();
    QTest::newRow("column") << u":2:2"_s << u"2 行 2 文字目へ移動"_s << qint64(4) << QString();
    QTest::newRow("past the line") << u":2:9"_s << u"2 行の末尾へ移動"_s << qint64(5)
                                   << u"2 行に 9 文字目はありません。行末へ移動しました"_s;
    QTest::newRow("past the text") << u":9"_s << u"テキストの末尾（4 行）へ移動"_s << qint64(9)
                                   << u"9 行目はありません。テキストの末尾へ移動しました"_s;
}

void PaletteTest::line_typed_isOffered()
{
    QFETCH(const QString, typed);
    open(u":"_s);
    QVERIFY(!list()->currentIndex().isValid()); // Only a hint.
    field()->setText(typed);
    QTEST(titles().value(0), "title");
    press(Qt::Key_Return);
    QTRY_COMPARE(m_runRows.size(), 1);
    QCOMPARE(m_runRows.at(0).kind, PaletteRow::Kind::Place);
    QTEST(m_runRows.at(0).offset, "offset");
    QTEST(m_runRows.at(0).message, "message");
}

void PaletteTest::headings_areListedAndFound()
{
    open();
    type(u"@"_s);
    QCOMPARE(titles(), (QStringList{u"■一"_s, u"■二"_s}));
    type(u"二"_s);
    QCOMPARE(titles(), QStringList{u"■二"_s});
    press(Qt::Key_Return);
    QTRY_COMPARE(m_runRows.size(), 1);
    QCOMPARE(m_runRows.at(0).offset, 6);
}

void PaletteTest::headings_ofAHugeText_areFoundInTurns()
{
    const QString filler = QString(50, u'x') + u'\n';
    m_source.text = Text(u"■始め\n"_s + filler.repeated(600'000) + u"■終わり\n"_s);
    open(u"@"_s);
    QCOMPARE(titles(), QStringList{u"■始め"_s}); // The rest is not looked through yet.
    QTRY_COMPARE_WITH_TIMEOUT(titles(), (QStringList{u"■始め"_s, u"■終わり"_s}), test::kLongWait);
}

void PaletteTest::greaterThan_findsOnlyCommands()
{
    open(u">"_s);
    QCOMPARE(titles(), (QStringList{u"保存"_s, u"やり直す"_s}));
    type(u"保"_s);
    QCOMPARE(titles(), QStringList{u"保存"_s});
}

void PaletteTest::wideMark_isAMode()
{
    open(u"：３"_s);
    QCOMPARE(titles(), QStringList{u"3 行へ移動"_s});
    field()->setText(u"＠"_s);
    QCOMPARE(titles(), (QStringList{u"■一"_s, u"■二"_s}));
    field()->setText(u"＞保"_s);
    QCOMPARE(titles(), QStringList{u"保存"_s});
}

void PaletteTest::withoutText_linesAndHeadingsAreNone()
{
    m_source.text.reset();
    open();
    for (const QString &typed : {u":1"_s, u"@"_s}) {
        field()->setText(typed);
        QCOMPARE(titles(), QStringList{u"見つかりません"_s});
    }
}

void PaletteTest::currentRow_isFocusedForAssistiveTechnology()
{
    open();
    press(Qt::Key_Down);
    QAccessibleInterface *rows = QAccessible::queryAccessibleInterface(list());
    QCOMPARE(rows->childCount(), 4);
    QCOMPARE(rows->child(1)->text(QAccessible::Name), u"整形"_s);
    QVERIFY(rows->child(1)->state().focused);
    QVERIFY(rows->child(1)->state().selected);
    QVERIFY(!rows->child(0)->state().focused);
    QCOMPARE(rows->child(3)->text(QAccessible::Name), u"やり直す, 使用できません"_s);
    QCOMPARE(field()->accessibleName(), u"コマンドパレット"_s);
    QVERIFY(!list()->accessibleName().isEmpty());
}

void PaletteTest::smallWindow_holdsThePalette()
{
    Palette *palette = open();
    m_window->resize(300, 120);
    QVERIFY(m_window->rect().contains(palette->geometry()));
    m_window->resize(900, 700);
    QCOMPARE(palette->width(), 640);
    const int sideways = palette->geometry().center().x() - m_window->rect().center().x();
    QVERIFY(qAbs(sideways) <= 1);
}

QTEST_MAIN(PaletteTest)
#include "PaletteTest.moc"

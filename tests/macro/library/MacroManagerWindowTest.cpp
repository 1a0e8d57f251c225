#include "controls/ElidedLabel.h"
#include "macro/library/MacroDetailView.h"
#include "macro/library/MacroManagerScene.h"
#include "platform/desktop/WindowFrame.h"
#include "support/CutStart.h"
#include "support/CutToScreen.h"
#include "support/LiteralLabel.h"
#include "support/PlainToolTip.h"
#include "text/CutText.h"
#include "view/TextView.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QMimeData>
#include <QScreen>
#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

const QString kNow = u"2025-03-01T09:15:00Z"_s; // The fake clock's time.
const QString kTemplate = u"return {\n    textEdits: []\n};"_s;

} // namespace

/// Drives the manager through its window: clicks rows, fills fields, presses buttons.
class MacroManagerWindowTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void window_made_hasTitleSizesAndEmptySelection()
    {
        const MacroManagerScene world;
        QCOMPARE(world.window()->windowTitle(), u"マクロ管理"_s);
        QCOMPARE(world.window()->size(), QSize(800, 600));
        QCOMPARE(world.window()->minimumSize(), QSize(600, 400));
        QVERIFY(!world.controller->view()->selectedMacroId());
        QVERIFY(!world.showsDetail());
        QVERIFY(world.page().labels().contains(u"マクロを選択してください"_s));
        QCOMPARE(world.page().tool(u"macroAdd"_s)->text(), u"追加"_s);
        QCOMPARE(world.page().tool(u"macroImport"_s)->text(), u"インポート…"_s);
    }

    void window_first_isAtTheScreensTopLeft()
    {
        const MacroManagerScene world;
        QCOMPARE(world.window()->pos(), world.window()->screen()->availableGeometry().topLeft());
    }

    void window_closed_storesItsFrameUnderItsName()
    {
        MacroManagerScene world;
        const QRect place(40, 50, 700, 500);
        world.window()->setGeometry(place);
        QVERIFY(world.window()->close());
        QWidget other;
        QVERIFY(other.restoreGeometry(
            world.defaults.bytes(u"windowFrame.penwickMacroManagerWindow"_s)));
        QCOMPARE(other.geometry(), place);
        world.makeWindow();
        QCOMPARE(world.window()->geometry(), place);
    }

    void window_nameInUse_isCentered()
    {
        MacroManagerScene world;
        world.window()->setGeometry(40, 50, 700, 500);
        QVERIFY(world.window()->close());
        QWidget other;
        QVERIFY(setFrameAutosaveName(&other, u"penwickMacroManagerWindow"_s, world.defaults));
        world.makeWindow();
        QCOMPARE(world.window()->size(), QSize(800, 600));
        const QPoint distance = world.window()->frameGeometry().center() -
                                world.window()->screen()->availableGeometry().center();
        QVERIFY(distance.manhattanLength() <= 2);
    }

    void list_opened_showsNamesSwitchesAndBadges()
    {
        Macro off = namedMacro(u"B"_s, u"Beta"_s, 2);
        off.isEnabled = false;
        off.source = u"builtin"_s;
        Macro foreign = namedMacro(u"C"_s, u"Gamma"_s, 3);
        foreign.source = u"elsewhere"_s;
        Macro own = namedMacro(u"D"_s, u"Delta"_s, 4);
        own.source = u"user"_s;
        const MacroManagerScene world({namedMacro(u"A"_s, u"Alpha"_s, 1), off, foreign, own});
        QCOMPARE(world.page().names(),
                 (QStringList{u"Alpha"_s, u"Beta"_s, u"Gamma"_s, u"Delta"_s}));
        QCOMPARE(world.page().badge(0), u"インポート"_s);
        QCOMPARE(world.page().badge(1), u"組み込み"_s);
        QCOMPARE(world.page().badge(2), QString());
        QCOMPARE(world.page().badge(3), u"ユーザー"_s);
        QCOMPARE(world.page().row(0).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
        QCOMPARE(world.page().row(1).data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
    }

    void badge_profileHasAnotherText_showsIt()
    {
        MacroManagerScene world;
        wording::setActiveValues(QHash<QString, QString>{{u"macro.sourceImported"_s, u"geholt"_s},
                                                         {u"macro.manageWindowTitle"_s, u"T"_s},
                                                         {u"macro.manage.name"_s, u"N"_s}});
        world.center.post(UIWordingProfileDidChange);
        QCOMPARE(world.window()->windowTitle(), u"T"_s);
        QCOMPARE(world.page().badge(0), u"geholt"_s);
        world.page().clickRow(0);
        QVERIFY(world.page().labels().contains(u"N"_s));
    }

    void detail_selected_showsTheMacro()
    {
        const MacroManagerScene world;
        world.page().clickRow(1);
        QCOMPARE(world.controller->view()->selectedMacroId(), u"B"_s);
        QVERIFY(world.showsDetail());
        QCOMPARE(world.field(u"macroName"_s)->text(), u"Beta"_s);
        QCOMPARE(world.field(u"macroDescription"_s)->text(), u"説明 😀"_s);
        QCOMPARE(world.field(u"macroCategory"_s)->text(), u"text"_s);
        QCOMPARE(world.field(u"macroHelpURL"_s)->text(), u"https://example.com/help"_s);
        QCOMPARE(world.code()->text(), sampleMacro().code);
        for (const auto &label : {u"Beta"_s,
                                  u"基本情報"_s,
                                  u"マクロ名"_s,
                                  u"説明"_s,
                                  u"カテゴリ"_s,
                                  u"ヘルプURL"_s,
                                  u"JavaScript コード"_s})
            QVERIFY2(world.page().labels().contains(label), qPrintable(label));
        QPushButton *save = world.page().button(u"保存"_s);
        int x = -1;
        for (const auto &text :
             {u"削除"_s, u"テスト実行"_s, u"エクスポート…"_s, u"複製"_s, u"保存"_s}) {
            QPushButton *button = world.page().button(text);
            QVERIFY2(button != nullptr, qPrintable(text));
            QCOMPARE(button->y(), save->y());
            QVERIFY(button->x() > x);
            x = button->x();
        }
    }

    void title_nameTyped_followsIt()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.fill(u"macroName"_s, u"Omega"_s);
        QVERIFY(world.page().labels().contains(u"Omega"_s));
        world.field(u"macroName"_s)->clear();
        QVERIFY(world.page().labels().contains(u"新規マクロ"_s));
    }

    void edits_notSaved_leaveTheFileUntouched()
    {
        const MacroManagerScene world;
        const QByteArray before = world.file();
        world.page().clickRow(0);
        world.fill(u"macroName"_s, u"Omega"_s);
        QTest::keyClicks(world.code()->textView(), u"let x;"_s);
        QCOMPARE(world.file(), before);
        QCOMPARE(world.page().names().constFirst(), u"Alpha"_s);
    }

    void save_pressed_storesTheDraft()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.fill(u"macroName"_s, u"Omega"_s);
        world.fill(u"macroDescription"_s, u"d"_s);
        world.fill(u"macroCategory"_s, u"c"_s);
        world.fill(u"macroHelpURL"_s, u"h"_s);
        QTest::keyClicks(world.code()->textView(), u"x"_s);
        world.page().click(u"保存"_s);
        Macro expected = namedMacro(u"A"_s, u"Omega"_s, 1);
        expected.description = u"d"_s;
        expected.category = u"c"_s;
        expected.helpURL = u"h"_s;
        expected.code = u"x"_s + sampleMacro().code;
        expected.updatedAt = kNow;
        QCOMPARE(world.stored(u"A"_s), expected);
        QCOMPARE(MacroJson::read(world.file()).value().constFirst(), expected);
        QCOMPARE(world.page().names().constFirst(), u"Omega"_s);
        QCOMPARE(world.page().selectedName(), u"Omega"_s);
        QVERIFY(!world.controller->view()->detailView()->hasUnsavedEdits());
        // The shortcut saves too.
        world.fill(u"macroName"_s, u"Key"_s);
        QTest::keySequence(world.field(u"macroName"_s), QKeySequence::Save);
        QCOMPARE(world.stored(u"A"_s).name, u"Key"_s);
    }

    void add_pressed_makesAndSelectsANewMacro()
    {
        const MacroManagerScene world;
        world.clickTool(u"macroAdd"_s);
        Macro expected;
        expected.id = FakeIds::id(1);
        expected.name = u"新規マクロ"_s;
        expected.code = kTemplate;
        expected.source = u"user"_s;
        expected.version = u"1.0.0"_s;
        expected.createdAt = kNow;
        expected.updatedAt = kNow;
        expected.sortOrder = 3;
        expected.category = u"general"_s;
        QCOMPARE(expected.code.toUtf8().size(), 29);
        QCOMPARE(world.stored(expected.id), expected);
        QCOMPARE(world.page().selectedName(), u"新規マクロ"_s);
        QCOMPARE(world.code()->text(), kTemplate);
    }

    void add_pressed_selectsTheNameForTyping()
    {
        const MacroManagerScene world;
        QVERIFY(QTest::qWaitForWindowActive(world.window()));
        world.clickTool(u"macroAdd"_s);
        QCOMPARE(QApplication::focusWidget(), world.field(u"macroName"_s));
        QCOMPARE(world.field(u"macroName"_s)->selectedText(), u"新規マクロ"_s);
    }

    void row_movedByKeys_changesTheOrderInTheFile()
    {
        const MacroManagerScene world({namedMacro(u"A"_s, u"Alpha"_s, -3),
                                       namedMacro(u"B"_s, u"Beta"_s, 7),
                                       namedMacro(u"C"_s, u"Gamma"_s, 7)});
        const QString hint = u"ドラッグするか、Alt+↑、Alt+↓ で並べ替えます"_s;
        QCOMPARE(world.page().row(0).data(Qt::ToolTipRole).toString(), u"Alpha\n"_s + hint);
        QCOMPARE(world.page().list()->accessibleDescription(), hint);
        world.page().clickRow(2);
        const auto press = [&world](Qt::Key key) {
            QTest::keyClick(world.page().list(), key, Qt::AltModifier);
        };
        press(Qt::Key_Down); // It is the last one.
        QCOMPARE(world.page().names(), (QStringList{u"Alpha"_s, u"Beta"_s, u"Gamma"_s}));
        press(Qt::Key_Up);
        press(Qt::Key_Up);
        press(Qt::Key_Up); // It is the first one.
        QCOMPARE(world.page().names(), (QStringList{u"Gamma"_s, u"Alpha"_s, u"Beta"_s}));
        QCOMPARE(world.page().selectedName(), u"Gamma"_s);
        press(Qt::Key_Down);
        QCOMPARE(world.page().names(), (QStringList{u"Alpha"_s, u"Gamma"_s, u"Beta"_s}));
        const QList<Macro> stored = MacroJson::read(world.file()).value();
        QCOMPARE(stored,
                 (QList{namedMacro(u"A"_s, u"Alpha"_s, -3),
                        namedMacro(u"C"_s, u"Gamma"_s, 7),
                        namedMacro(u"B"_s, u"Beta"_s, 7)}));
    }

    void row_dropped_changesTheOrder_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("before");
        QTest::addColumn<QString>("order");
        QTest::newRow("to the end") << 0 << 3 << u"BCA"_s;
        QTest::newRow("below the list") << 0 << -1 << u"BCA"_s;
        QTest::newRow("to the start") << 2 << 0 << u"CAB"_s;
        QTest::newRow("one down") << 0 << 2 << u"BAC"_s;
        QTest::newRow("before itself") << 1 << 1 << u"ABC"_s;
        QTest::newRow("behind itself") << 1 << 2 << u"ABC"_s;
    }

    void row_dropped_changesTheOrder()
    {
        QFETCH(const int, row);
        QFETCH(const int, before);
        QFETCH(const QString, order);
        const MacroManagerScene world({namedMacro(u"A"_s, u"A"_s, 1),
                                       namedMacro(u"B"_s, u"B"_s, 2),
                                       namedMacro(u"C"_s, u"C"_s, 3)});
        world.page().clickRow(row);
        const QString dragged = world.page().selectedName();
        QVERIFY(world.page().list()->dragDropMode() == QAbstractItemView::InternalMove);
        QAbstractItemModel *model = world.page().list()->model();
        const std::unique_ptr<QMimeData> data(model->mimeData({world.page().row(row)}));
        QVERIFY(!model->dropMimeData(data.get(), Qt::MoveAction, before, 0, {}));
        QCoreApplication::processEvents();
        QCOMPARE(world.page().names().join(QString()), order);
        QCOMPARE(world.page().selectedName(), dragged);
        const QList<Macro> stored = MacroJson::read(world.file()).value();
        for (qsizetype i = 0; i < 3; ++i) {
            QCOMPARE(stored[i].id, order.mid(i, 1));
            QCOMPARE(stored[i].sortOrder, i + 1);
        }
    }

    void row_movedWithUnsavedEdits_keepsBoth()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.fill(u"macroName"_s, u"Omega"_s);
        QTest::keyClick(world.page().list(), Qt::Key_Down, Qt::AltModifier);
        QCOMPARE(world.page().names(), (QStringList{u"Beta"_s, u"Alpha"_s}));
        world.page().click(u"保存"_s);
        QCOMPARE(world.page().names(), (QStringList{u"Beta"_s, u"Omega"_s}));
        QCOMPARE(world.stored(u"A"_s).sortOrder, 2);
        QCOMPARE(world.stored(u"B"_s).sortOrder, 1);
    }

    void add_returnKey_pressesItOnce()
    {
        const MacroManagerScene world;
        QVERIFY(QTest::qWaitForWindowActive(world.window()));
        world.page().tool(u"macroAdd"_s)->setFocus();
        QTest::keyClick(world.page().tool(u"macroAdd"_s), Qt::Key_Return);
        QCOMPARE(world.page().names().size(), 3);
    }

    void duplicate_withUnsavedEdits_copiesWhatIsStored()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.fill(u"macroName"_s, u"Omega"_s);
        world.page().click(u"複製"_s);
        QCOMPARE(world.page().names(), (QStringList{u"Alpha"_s, u"Beta"_s, u"Alpha のコピー"_s}));
        QCOMPARE(world.manager->macros().constLast().source, u"user"_s);
        QCOMPARE(world.field(u"macroName"_s)->text(), u"Omega"_s); // The edit continues.
    }

    void switch_turned_savesOnlyThatAtOnce()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.fill(u"macroName"_s, u"Omega"_s);
        world.page().clickSwitch(0);
        Macro expected = namedMacro(u"A"_s, u"Alpha"_s, 1);
        expected.isEnabled = false;
        expected.updatedAt = kNow;
        QCOMPARE(world.stored(u"A"_s), expected);
        QCOMPARE(MacroJson::read(world.file()).value().constFirst(), expected);
        QCOMPARE(world.field(u"macroName"_s)->text(), u"Omega"_s);
        // A later save of the edit keeps the switch.
        world.page().click(u"保存"_s);
        QCOMPARE(world.stored(u"A"_s).name, u"Omega"_s);
        QVERIFY(!world.stored(u"A"_s).isEnabled);
    }

    void changedElsewhere_notEdited_isShownAndAsksNothing()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.fill(u"macroCategory"_s, u"typed"_s);
        world.writeElsewhere(u"A"_s, u"from elsewhere"_s);
        world.manager->reloadIfChanged();
        QCOMPARE(world.code()->text(), u"from elsewhere"_s);
        QCOMPARE(world.field(u"macroCategory"_s)->text(), u"typed"_s);
        QVERIFY(world.controller->view()->detailView()->hasUnsavedEdits());
        world.fill(u"macroCategory"_s, u"text"_s);
        QVERIFY(!world.controller->view()->detailView()->hasUnsavedEdits());
    }

    void changedElsewhere_switchAndDuplicate_keepTheChange()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.writeElsewhere(u"A"_s, u"first"_s);
        world.page().clickSwitch(0);
        QCOMPARE(world.stored(u"A"_s).code, u"first"_s);
        QVERIFY(!world.stored(u"A"_s).isEnabled);
        world.writeElsewhere(u"A"_s, u"second"_s);
        world.page().click(u"複製"_s);
        QCOMPARE(world.manager->macros().constLast().code, u"second"_s);
    }

    void list_nothingSelected_keysKeepTheirPlace()
    {
        const MacroManagerScene world;
        world.page().clickRow(1);
        world.manager->deleteMacro(u"B"_s);
        world.manager->addMacro(namedMacro(u"C"_s, u"Gamma"_s));
        QTest::keyClick(world.page().list(), Qt::Key_Home);
        QCOMPARE(world.page().selectedName(), u"Alpha"_s);
        QTest::keyClick(world.page().list(), Qt::Key_Space);
        QTest::keyClick(world.page().list(), Qt::Key_Space);
        QVERIFY(world.stored(u"A"_s).isEnabled);
    }

    void switch_spaceKey_turnsIt()
    {
        const MacroManagerScene world;
        world.page().clickRow(1);
        QTest::keyClick(world.page().list(), Qt::Key_Space);
        QVERIFY(!world.stored(u"B"_s).isEnabled);
        QTest::keyClick(world.page().list(), Qt::Key_Space);
        QVERIFY(world.stored(u"B"_s).isEnabled);
        QCOMPARE(world.page().selectedName(), u"Beta"_s);
    }

    void delete_confirmed_leavesNothingSelected()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.page().click(u"削除"_s);
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(box != nullptr);
        QCOMPARE(box->text(), u"マクロの削除"_s);
        QCOMPARE(box->informativeText(),
                 u"本当に削除してもよろしいですか？この操作は元に戻せません。"_s);
        buttonNamed(box, u"削除"_s)->click();
        QCOMPARE(world.page().names(), QStringList{u"Beta"_s});
        QVERIFY(!world.controller->view()->selectedMacroId());
        QVERIFY(!world.showsDetail());
        QVERIFY(world.page().labels().contains(u"マクロを選択してください"_s));
    }

    void delete_cancelled_keepsIt()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        QTest::keyClick(world.page().list(), Qt::Key_Delete);
        clickInModal(u"キャンセル"_s);
        QCoreApplication::processEvents();
        QCOMPARE(world.page().names().size(), 2);
        QVERIFY(world.showsDetail());
    }

    void delete_elsewhere_emptiesTheDetails()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.manager->deleteMacro(u"A"_s);
        QVERIFY(!world.showsDetail());
    }

    void testRun_unsavedEdits_runsTheDraft()
    {
        const MacroManagerScene world;
        const QByteArray before = world.file();
        world.page().clickRow(0);
        QTest::keyClicks(world.code()->textView(), u"x"_s);
        world.page().click(u"テスト実行"_s);
        QCOMPARE(world.testRuns.size(), 1);
        QCOMPARE(world.testRuns.constFirst().id, u"A"_s);
        QCOMPARE(world.testRuns.constFirst().code, u"x"_s + sampleMacro().code);
        QCOMPARE(world.file(), before);
    }

    void otherRow_unsavedEdits_asks_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("storedName");
        QTest::addColumn<QString>("selected");
        QTest::newRow("save") << u"保存"_s << u"Omega"_s << u"B"_s;
        QTest::newRow("discard") << u"保存しない"_s << u"Alpha"_s << u"B"_s;
        QTest::newRow("cancel") << u"キャンセル"_s << u"Alpha"_s << u"A"_s;
    }

    void otherRow_unsavedEdits_asks()
    {
        QFETCH(QString, answer);
        QFETCH(QString, storedName);
        QFETCH(QString, selected);
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.fill(u"macroName"_s, u"Omega"_s);
        QString question;
        ModalAnswerer later([&](QWidget *window) {
            question = qobject_cast<QMessageBox *>(window)->text();
            buttonNamed(window, answer)->click();
            return true;
        });
        world.page().clickRow(1);
        QTRY_VERIFY(later.hasAnswered());
        QCOMPARE(question, u"「Omega」への変更を保存しますか？"_s);
        QTRY_COMPARE(world.controller->view()->selectedMacroId(), selected);
        QCOMPARE(world.page().selectedName(), selected == u"B"_s ? u"Beta"_s : storedName);
        QCOMPARE(world.stored(u"A"_s).name, storedName);
        if (selected == u"A"_s)
            QCOMPARE(world.field(u"macroName"_s)->text(), u"Omega"_s);
    }

    void fields_longTexts_areWhole()
    {
        constexpr qsizetype kLong = 40'000; // More than the toolkit's fields hold by default.
        Macro macro = namedMacro(u"A"_s, QString(kLong, u'名'), 1);
        macro.description = QString(kLong, u'd');
        macro.category = QString(kLong, u'c');
        macro.helpURL = QString(kLong, u'u');
        const MacroManagerScene world({macro});
        world.page().clickRow(0);
        QVERIFY(!world.controller->view()->detailView()->hasUnsavedEdits());
        QTest::keyClicks(world.code()->textView(), u"x"_s);
        world.page().click(u"保存"_s);
        Macro expected = macro;
        expected.code.prepend(u'x');
        expected.updatedAt = kNow;
        QCOMPARE(world.stored(u"A"_s), expected);
    }

    void macro_huge_isCutWhereItIsShown()
    {
        const QString text = hugeText();
        const MacroManagerScene world({namedMacro(u"A"_s, text, 1)});
        world.page().clickRow(0);
        MacroDetailView *detail = world.controller->view()->detailView();
        detail->showRunError(text, 1);
        for (const QString &label : world.page().labels())
            QVERIFY2(label.size() <= kLongestShown + 1, qPrintable(QString::number(label.size())));
        QVERIFY(isCutStart(world.page().names().at(0), text, kLongestShown));
        const auto *error = world.window()->findChild<ElidedLabel *>(u"macroRunError"_s);
        QVERIFY(error->text().startsWith(u"1 行目: 名名"_s));
        QVERIFY(plainToolTip(error->toolTip()).size() > error->text().size());
        QVERIFY(plainToolTip(error->toolTip()).size() <= kLongestToolTip + 1);
        const auto *code = QAccessible::queryAccessibleInterface(world.code()->textView());
        QVERIFY(code->text(QAccessible::Description).startsWith(u"1 行目: 名名"_s));
        QVERIFY(code->text(QAccessible::Description).size() < kLongestToolTip);
        QCOMPARE(detail->draftMacro().name, text);
    }

    void field_hugeName_isWholeWithTheFocus()
    {
        const QString text = hugeText();
        const MacroManagerScene world({namedMacro(u"A"_s, text, 1)});
        world.page().clickRow(0);
        QLineEdit *field = world.field(u"macroName"_s);
        QVERIFY(isCutStart(field->text(), text, kLongestShown));
        QTest::keyClicks(field, u"y"_s); // As from a program that types without the focus.
        QVERIFY(!world.controller->view()->detailView()->hasUnsavedEdits());
        field->setFocus();
        QVERIFY(field->text() == text);
        QTest::keyClick(field, Qt::Key_End);
        QTest::keyClicks(field, u"x"_s);
        world.page().click(u"保存"_s);
        QVERIFY(world.stored(u"A"_s).name == text + u'x');
    }

    void title_longName_takesOneLine()
    {
        const MacroManagerScene world({namedMacro(u"A"_s, u"Alpha"_s, 1),
                                       namedMacro(u"B"_s, u"とても長い名前 "_s.repeated(200), 2)});
        const auto title = [&world] {
            const QString name = world.field(u"macroName"_s)->text();
            for (QLabel *label : world.window()->findChildren<QLabel *>())
                if (label->text() == name)
                    return label;
            return static_cast<QLabel *>(nullptr);
        };
        world.page().clickRow(0);
        QVERIFY(title() != nullptr);
        const int height = title()->height();
        const int listWidth = world.page().list()->width();
        QCOMPARE(title()->toolTip(), u"Alpha"_s);
        world.page().clickRow(1);
        QVERIFY(title() != nullptr);
        QCOMPARE(title()->height(), height);
        QCOMPARE(world.page().list()->width(), listWidth);
        QVERIFY(title()->toolTip().contains(world.field(u"macroName"_s)->text()));
        QCOMPARE(world.window()->size(), test::cutToScreen(world.window(), QSize(800, 600)));
    }

    void labels_ampersands_areShown()
    {
        MacroManagerScene world;
        world.page().clickRow(0);
        const QString text = u"A & B"_s;
        QHash<QString, QString> values;
        for (const auto &key : {u"macro.manage.basicInfo"_s,
                                u"macro.manage.name"_s,
                                u"macro.manage.description"_s,
                                u"macro.manage.category"_s,
                                u"macro.manage.helpURL"_s,
                                u"macro.manage.code"_s})
            values.insert(key, text);
        wording::setActiveValues(values);
        world.center.post(UIWordingProfileDidChange);
        int count = 0;
        for (QLabel *label : world.window()->findChildren<QLabel *>()) {
            if (!label->isVisible() || !label->text().contains(u'&'))
                continue;
            ++count;
            QVERIFY(showsLiterally(label, text));
        }
        QCOMPARE(count, 6);
        QCOMPARE(world.field(u"macroName"_s)->accessibleName(), text);
    }

    void close_unsavedEdits_asks()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.fill(u"macroName"_s, u"Omega"_s);
        clickInModal(u"キャンセル"_s);
        world.window()->close();
        QVERIFY(world.window()->isVisible());
        clickInModal(u"保存しない"_s);
        world.window()->close();
        QVERIFY(!world.window()->isVisible());
        world.controller->showWindow();
        QCOMPARE(world.field(u"macroName"_s)->text(), u"Alpha"_s);
    }

    void tabKey_walksFromListThroughFieldsToSave()
    {
        const MacroManagerScene world;
        QVERIFY(QTest::qWaitForWindowActive(world.window()));
        world.page().clickRow(0);
        world.field(u"macroName"_s)->setFocus();
        for (const auto &name :
             {u"macroDescription"_s, u"macroCategory"_s, u"macroHelpURL"_s, u"macroKey"_s}) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget()->objectName(), name);
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), world.code()->textView());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
        for (const auto &name : {u"macroDelete"_s,
                                 u"macroTestRun"_s,
                                 u"macroExport"_s,
                                 u"macroDuplicate"_s,
                                 u"macroSave"_s}) {
            QCOMPARE(QApplication::focusWidget()->objectName(), name);
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
    }
};

QTEST_MAIN(MacroManagerWindowTest)
#include "MacroManagerWindowTest.moc"

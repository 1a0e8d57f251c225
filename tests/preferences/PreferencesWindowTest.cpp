#include "controls/ElidedLabel.h"
#include "preferences/PreferenceRow.h"
#include "preferences/PreferencesWindowController.h"
#include "support/CutStart.h"
#include "support/HugeText.h"
#include "support/ManagerPage.h"
#include "support/ModalAnswer.h"
#include "support/ShownSettings.h"
#include "text/CutText.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QLineEdit>
#include <QScrollArea>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>

#include <memory>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

struct World : ShownSettings
{
    using ShownSettings::ShownSettings;

    ~World() { wording::setActiveValues(std::nullopt); }

    Q_DISABLE_COPY_MOVE(World)

    [[nodiscard]] PreferenceRow *row(const char *key) const
    {
        return window()->findChild<PreferenceRow *>(QString::fromLatin1(key));
    }

    template <typename Control> [[nodiscard]] Control *control(const char *key) const
    {
        return qobject_cast<Control *>(row(key)->control());
    }

    [[nodiscard]] QToolButton *resetButton(const char *key) const
    {
        return row(key)->findChild<QToolButton *>();
    }

    [[nodiscard]] ElidedLabel *note(const char *key) const
    {
        return row(key)->findChild<ElidedLabel *>(QString::fromLatin1(key) + u".note"_s);
    }

    /// The keys of the visible rows.
    [[nodiscard]] QStringList shownKeys() const
    {
        QStringList keys;
        for (const PreferenceRow *each : window()->findChildren<PreferenceRow *>())
            if (each->isVisible())
                keys.append(each->objectName());
        return keys;
    }

    void search(const QString &words) const { controller->view()->searchField()->setText(words); }

    [[nodiscard]] QByteArray file() const { return home.read(u"config.conf"_s); }
};

QStringList tableKeys()
{
    QStringList keys;
    for (const Preference &row : allPreferences())
        keys.append(row.key.toString());
    return keys;
}

} // namespace

/// Drives the settings through their window, by keys and clicks.
class PreferencesWindowTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void groups_haveEachRowOfTheTableOnce();
    void rows_areThoseOfTheTable_withNamesAndDefaults();
    void switch_clicked_isStoredAndMarked();
    void title_clicked_isAClickOnTheCheckBox();
    void reset_clicked_removesTheSettingAndKeepsTheFocus();
    void number_typed_isStoredWhenComplete();
    void number_typedAndClosed_isStored();
    void number_automatic_hasItsNameBelowTheSmallest();
    void choice_byKey_isStored();
    void change_elsewhere_isShown();
    void file_changedByAnotherProgram_isShown();
    void value_broken_isTheDefaultWithANote();
    void wheel_withoutFocus_changesNothing();
    void search_wordsInAnyOrder_showsTheirRows();
    void search_return_goesToTheFirstRow();
    void escape_closes();
    void resetAll_confirmed_removesAllOfTheTable();
    void resetAll_cancelled_changesNothing();
    void openFile_clicked_opensIt();
    void tab_goesFromTopToBottom();
    void profile_applied_changesAllTexts();
    void texts_huge_areCutAndKeepTheWindowNarrow();
    void frame_isKeptUnderItsName();
    void text_edited_isChosenAtItsEnd();
    void fontFamily_chosen_isItsName();
};

void PreferencesWindowTest::groups_haveEachRowOfTheTableOnce()
{
    QStringList keys;
    for (const PreferenceGroup &group : preferenceGroups()) {
        QVERIFY(!group.titleKey.isEmpty());
        for (const Preference &row : group.rows)
            keys.append(row.key.toString());
    }
    QCOMPARE(keys, tableKeys());
}

void PreferencesWindowTest::rows_areThoseOfTheTable_withNamesAndDefaults()
{
    const World world;
    QCOMPARE(world.window()->windowTitle(), u"設定"_s);
    QCOMPARE(world.shownKeys(), tableKeys());
    for (const Preference &each : allPreferences()) {
        const PreferenceRow *row = world.window()->findChild<PreferenceRow *>(each.key.toString());
        QCOMPARE(row->control()->accessibleName(), wording::text(each.titleKey.toString()));
        QVERIFY(row->control()->accessibleDescription().startsWith(u"既定値: "_s));
        const auto related = QAccessible::queryAccessibleInterface(row->control())->relations();
        QVERIFY(!related.isEmpty());
        QCOMPARE(related.first().first->text(QAccessible::Name), row->control()->accessibleName());
        QVERIFY(!row->findChild<QToolButton *>()->isVisible());
    }
    QCOMPARE(world.row("zoom")->control()->accessibleDescription(), u"既定値: 100 %"_s);
    QCOMPARE(world.row("recovery")->control()->accessibleDescription(), u"既定値: オン"_s);
    QCOMPARE(world.row("tabKeyInserts")->control()->accessibleDescription(), u"既定値: タブ"_s);
    QVERIFY(world.controller->view()->searchField()->hasFocus());
    QVERIFY(!world.home.read(u"config.conf"_s).contains("zoom"));
}

void PreferencesWindowTest::switch_clicked_isStoredAndMarked()
{
    const World world;
    auto *box = world.control<QCheckBox>("keepIndentation");
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
    QVERIFY(box->isChecked());
    QVERIFY(world.file().contains("keepIndentation=true"));
    QVERIFY(world.resetButton("keepIndentation")->isVisible());
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Space);
    QVERIFY(!box->isChecked());
    QVERIFY(world.file().contains("keepIndentation=false"));
    QVERIFY(!world.resetButton("keepIndentation")->isVisible());
}

void PreferencesWindowTest::title_clicked_isAClickOnTheCheckBox()
{
    const World world;
    auto *title = world.row("recovery")->findChild<ElidedLabel *>();
    QTest::mouseClick(title, Qt::LeftButton);
    QVERIFY(!world.control<QCheckBox>("recovery")->isChecked());
    QVERIFY(world.file().contains("recovery=false"));
}

void PreferencesWindowTest::reset_clicked_removesTheSettingAndKeepsTheFocus()
{
    const World world("tabWidth=8\nzoom=120\n");
    QToolButton *button = world.resetButton("tabWidth");
    QVERIFY(button->isVisible());
    QCOMPARE(button->toolTip(), u"既定値に戻す\n既定値: 4 桁"_s);
    QCOMPARE(button->accessibleName(), u"「タブの幅」を既定値に戻す"_s);
    button->setFocus();
    QTest::keyClick(button, Qt::Key_Space);
    QCOMPARE(world.control<QSpinBox>("tabWidth")->value(), 4);
    QVERIFY(world.control<QSpinBox>("tabWidth")->hasFocus());
    QVERIFY(!button->isVisible());
    QVERIFY(!world.file().contains("tabWidth"));
    QVERIFY(world.file().contains("zoom=120"));
}

void PreferencesWindowTest::number_typed_isStoredWhenComplete()
{
    const World world;
    auto *box = world.control<QSpinBox>("tabWidth");
    QStringList values;
    QObject context;
    Preferences::observe(PreferenceId::TabWidth, &context, [&] {
        values << world.preferences->text(PreferenceId::TabWidth);
    });
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, u"12"_s);
    QTest::keyClick(box, Qt::Key_Return);
    QCOMPARE(values, QStringList{u"12"_s});
    QVERIFY(world.file().contains("tabWidth=12"));
    QTest::keyClick(box, Qt::Key_Up);
    QCOMPARE(values, (QStringList{u"12"_s, u"13"_s}));
    QVERIFY(world.window()->isVisible());
}

void PreferencesWindowTest::number_typedAndClosed_isStored()
{
    const World world;
    auto *box = world.control<QSpinBox>("zoom");
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, u"250"_s);
    QTest::keyClick(box, Qt::Key_Escape);
    QVERIFY(!world.window()->isVisible());
    QVERIFY(world.file().contains("zoom=250"));
}

void PreferencesWindowTest::number_automatic_hasItsNameBelowTheSmallest()
{
    const World world;
    auto *box = world.control<QSpinBox>("macroMemoryLimitMegabytes");
    QCOMPARE(box->text(), u"自動"_s);
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Up);
    QCOMPARE(box->text(), u"64 MB"_s);
    QVERIFY(world.file().contains("macroMemoryLimitMegabytes=64\n"));
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(box->text(), u"自動"_s);
    QVERIFY(!world.preferences->isChanged(PreferenceId::MacroMemory));
}

void PreferencesWindowTest::choice_byKey_isStored()
{
    const World world;
    auto *box = world.control<QComboBox>("tabKeyInserts");
    QCOMPARE(box->currentText(), u"タブ"_s);
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(box->currentText(), u"空白"_s);
    QVERIFY(world.file().contains("tabKeyInserts=spaces"));
}

void PreferencesWindowTest::change_elsewhere_isShown()
{
    const World world;
    world.preferences->setNumber(PreferenceId::Zoom, 150);
    QCOMPARE(world.control<QSpinBox>("zoom")->value(), 150);
    world.preferences->setOn(PreferenceId::ShowsBlanks, true);
    QVERIFY(world.control<QCheckBox>("showsBlanks")->isChecked());
    QVERIFY(world.resetButton("showsBlanks")->isVisible());
}

void PreferencesWindowTest::file_changedByAnotherProgram_isShown()
{
    World world("zoom=120\n");
    QObject context;
    int count = 0;
    Preferences::observe(PreferenceId::TabWidth, &context, [&] { ++count; });
    UserDefaults other(world.home.file(u"config.conf"_s));
    QVERIFY(other.setString(u"tabWidth"_s, u"2"_s));
    QVERIFY(other.remove(u"zoom"_s));
    QVERIFY(world.defaults.setString(u"another"_s, u"1"_s)); // Reads the file, too.
    QCOMPARE(count, 0);
    world.preferences->reload();
    QCOMPARE(count, 1);
    QCOMPARE(world.control<QSpinBox>("tabWidth")->value(), 2);
    QCOMPARE(world.control<QSpinBox>("zoom")->value(), 100);
    world.preferences->reload();
    QCOMPARE(count, 1);
}

void PreferencesWindowTest::value_broken_isTheDefaultWithANote()
{
    const World world("tabWidth=four\nkeepIndentation=true\n");
    QCOMPARE(world.control<QSpinBox>("tabWidth")->value(), 4);
    QVERIFY(world.control<QCheckBox>("keepIndentation")->isChecked());
    QVERIFY(world.note("tabWidth")->isVisible());
    QVERIFY(world.note("tabWidth")->text().contains(u"tabWidth"_s));
    QVERIFY(!world.note("keepIndentation")->isVisible());
    QVERIFY(world.file().contains("tabWidth=four"));
    QTest::mouseClick(world.resetButton("tabWidth"), Qt::LeftButton);
    QVERIFY(!world.file().contains("tabWidth"));
    QVERIFY(!world.note("tabWidth")->isVisible());
}

void PreferencesWindowTest::wheel_withoutFocus_changesNothing()
{
    const World world;
    auto *box = world.control<QSpinBox>("tabWidth");
    const auto turn = [box] {
        QWheelEvent event(QPointF(5, 5),
                          box->mapToGlobal(QPointF(5, 5)),
                          {},
                          {0, 120},
                          Qt::NoButton,
                          Qt::NoModifier,
                          Qt::NoScrollPhase,
                          false);
        QCoreApplication::sendEvent(box, &event);
    };
    turn();
    QCOMPARE(box->value(), 4);
    box->setFocus();
    turn();
    QCOMPARE(box->value(), 5);
}

void PreferencesWindowTest::search_wordsInAnyOrder_showsTheirRows()
{
    const World world;
    world.search(u"幅 タブ"_s);
    QCOMPARE(world.shownKeys(), QStringList{u"tabWidth"_s});
    world.search(u"TABWIDTH"_s); // The key.
    QCOMPARE(world.shownKeys(), QStringList{u"tabWidth"_s});
    world.search(u"空白 挿入"_s); // A choice.
    QCOMPARE(world.shownKeys(), QStringList{u"tabKeyInserts"_s});
    world.search(u"ファイル"_s); // A group.
    QVERIFY(world.shownKeys().contains(u"recovery"_s));
    QVERIFY(!world.shownKeys().contains(u"zoom"_s));
    const auto *nothing = world.window()->findChild<QLabel *>(u"preferencesNothing"_s);
    QVERIFY(!nothing->isVisible());
    world.search(u"ない設定"_s);
    QVERIFY(world.shownKeys().isEmpty());
    QVERIFY(nothing->isVisible());
    world.search({});
    QCOMPARE(world.shownKeys(), tableKeys());
}

void PreferencesWindowTest::search_return_goesToTheFirstRow()
{
    const World world;
    world.search(u"zoom"_s);
    QTest::keyClick(world.controller->view()->searchField(), Qt::Key_Return);
    QVERIFY(world.control<QSpinBox>("zoom")->hasFocus());
}

void PreferencesWindowTest::escape_closes()
{
    const World world;
    world.search(u"zoom"_s);
    QTest::keyClick(world.window()->focusWidget(), Qt::Key_Escape);
    QVERIFY(!world.window()->isVisible());
    world.controller->showWindow();
    QCOMPARE(world.shownKeys(), tableKeys());
}

void PreferencesWindowTest::resetAll_confirmed_removesAllOfTheTable()
{
    const World world("tabWidth=8\nzoom=huge\nshowsBlanks=true\nother=1\n");
    QTest::mouseClick(ManagerPage(world.window()).button(u"すべて既定値に戻す…"_s), Qt::LeftButton);
    auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    QVERIFY(box != nullptr);
    QCOMPARE(box->text(), u"すべての設定を既定値に戻しますか？"_s);
    buttonNamed(box, u"既定値に戻す"_s)->click();
    QCOMPARE(world.control<QSpinBox>("tabWidth")->value(), 4);
    QVERIFY(!world.control<QCheckBox>("showsBlanks")->isChecked());
    for (const QString &key : tableKeys())
        QVERIFY2(!world.file().contains(key.toUtf8() + '='), qPrintable(key));
    QVERIFY(world.file().contains("other=1"));
}

void PreferencesWindowTest::resetAll_cancelled_changesNothing()
{
    const World world("tabWidth=8\n");
    QTest::mouseClick(ManagerPage(world.window()).button(u"すべて既定値に戻す…"_s), Qt::LeftButton);
    auto *box = QApplication::activeModalWidget();
    QVERIFY(box != nullptr);
    QTest::keyClick(box, Qt::Key_Return); // The default button.
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(world.file().contains("tabWidth=8"));
    QVERIFY(world.window()->isVisible());
}

void PreferencesWindowTest::openFile_clicked_opensIt()
{
    const World world;
    const auto labels = ManagerPage(world.window()).labels();
    QVERIFY(labels.contains(u"設定ファイル: /home/user/penwick.conf"_s));
    ManagerPage(world.window()).click(u"設定ファイルを開く"_s);
    QCOMPARE(world.openings, 1);
}

void PreferencesWindowTest::tab_goesFromTopToBottom()
{
    const World world("tabWidth=8\n");
    QStringList stops;
    for (int i = 0; i < 100; ++i) {
        QTest::keyClick(world.window()->focusWidget(), Qt::Key_Tab);
        const QString name = world.window()->focusWidget()->objectName();
        if (name == u"preferencesSearch"_s)
            break;
        stops.append(name);
    }
    QStringList expected;
    for (const QString &key : tableKeys()) {
        expected << key + u".control"_s;
        if (key == u"tabWidth"_s)
            expected << key + u".reset"_s;
    }
    expected << u"preferencesOpenFile"_s << u"preferencesResetAll"_s;
    QCOMPARE(stops, expected);
}

void PreferencesWindowTest::profile_applied_changesAllTexts()
{
    World world;
    wording::setActiveValues(QHash<QString, QString>{{u"preference.tabWidth"_s, u"Width & more"_s},
                                                     {u"menu.settings"_s, u"Settings"_s},
                                                     {u"preference.columns"_s, u"%1 wide"_s},
                                                     {u"preference.tabKeyInserts.tab"_s, u"T"_s},
                                                     {u"preference.group.view"_s, u"Look"_s}});
    world.center.post(UIWordingProfileDidChange);
    QCOMPARE(world.window()->windowTitle(), u"Settings"_s);
    QCOMPARE(world.row("tabWidth")->findChild<ElidedLabel *>()->displayedText(), u"Width & more"_s);
    QCOMPARE(world.control<QSpinBox>("tabWidth")->text(), u"4 wide"_s);
    QCOMPARE(world.control<QSpinBox>("tabWidth")->accessibleName(), u"Width & more"_s);
    QCOMPARE(world.control<QComboBox>("tabKeyInserts")->currentText(), u"T"_s);
    QVERIFY(ManagerPage(world.window()).labels().contains(u"Look"_s));
    world.search(u"more"_s);
    QCOMPARE(world.shownKeys(), QStringList{u"tabWidth"_s});
}

void PreferencesWindowTest::texts_huge_areCutAndKeepTheWindowNarrow()
{
    World world;
    QHash<QString, QString> values;
    const QString text = hugeText();
    for (auto key : wording::defaultTexts(u"ja"_s).keys())
        values.insert(key, text);
    wording::setActiveValues(values);
    world.center.post(UIWordingProfileDidChange);
    const auto *title = world.row("tabWidth")->findChild<ElidedLabel *>();
    QVERIFY(isCutStart(title->text(), text, kLongestShown));
    world.window()->resize(400, 300);
    const auto *area = world.window()->findChild<QScrollArea *>();
    QVERIFY2(area->widget()->minimumSizeHint().width() <= area->viewport()->width(),
             qPrintable(QString::number(area->widget()->minimumSizeHint().width())));
}

void PreferencesWindowTest::frame_isKeptUnderItsName()
{
    World world;
    world.window()->resize(500, 400);
    QVERIFY(world.window()->close());
    QVERIFY(!world.defaults.bytes(u"windowFrame.PreferencesWindow"_s).isEmpty());
    world.controller->showWindow();
    QCOMPARE(world.window()->size(), QSize(500, 400));
}

void PreferencesWindowTest::text_edited_isChosenAtItsEnd()
{
    const Preference row{PreferenceId::Zoom, u"key", Preference::Kind::Text, u"menu.settings", u""};
    QStringList chosen;
    const PreferenceControl control =
        makePreferenceControl(row, [&](const QString &value) { chosen << value; });
    const std::unique_ptr<QWidget> owner(control.widget);
    control.show(u"a"_s);
    auto *field = qobject_cast<QLineEdit *>(control.widget);
    QCOMPARE(field->text(), u"a"_s);
    QTest::keyClick(field, Qt::Key_End);
    QTest::keyClicks(field, u"bc"_s);
    QVERIFY(chosen.isEmpty());
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(chosen, QStringList{u"abc"_s});
}

void PreferencesWindowTest::fontFamily_chosen_isItsName()
{
    const Preference row{
        PreferenceId::Zoom, u"key", Preference::Kind::FontFamily, u"menu.settings", u""};
    QStringList chosen;
    const PreferenceControl control =
        makePreferenceControl(row, [&](const QString &value) { chosen << value; });
    const std::unique_ptr<QWidget> owner(control.widget);
    control.relabel();
    auto *box = qobject_cast<QComboBox *>(control.widget);
    control.show({});
    QCOMPARE(box->currentText(), u"自動"_s);
    control.show(u"No Such Font"_s);
    QCOMPARE(box->currentText(), u"No Such Font"_s);
    control.show({});
    QVERIFY(!QFontDatabase::families().isEmpty());
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(chosen, QStringList{box->itemData(1).toString()});
    QVERIFY(QFontDatabase::families().contains(chosen.first()));
    QCOMPARE(readableValue(row, chosen.first()), chosen.first());
}

QTEST_MAIN(PreferencesWindowTest)
#include "PreferencesWindowTest.moc"

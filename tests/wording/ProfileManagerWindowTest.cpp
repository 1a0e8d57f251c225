#include "controls/ElidedLabel.h"
#include "platform/desktop/WindowFrame.h"
#include "support/CutStart.h"
#include "support/CutToScreen.h"
#include "support/FileSizeLimit.h"
#include "support/LiteralLabel.h"
#include "support/ShownProfileManager.h"
#include "text/CutText.h"
#include "wording/OwnTexts.h"
#include "wording/WordingLookup.h"
#include "wording/WordingTables.h"

#include <QAccessible>
#include <QFileInfo>
#include <QScreen>
#include <QTest>
#include <QTimeZone>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

const QString kNow = u"2025-03-01T09:15:00Z"_s; // The fake clock's time.
const QString kFrameKey = u"windowFrame.ProfileManagerWindow"_s;
const QString kApplied = u"プロファイルを適用しました。一部の表示は再起動後に反映されます。"_s;

UIWordingProfile userProfile(const QString &id, const QString &name)
{
    UIWordingProfile profile;
    profile.id = id;
    profile.name = name;
    profile.description = u"説明"_s;
    profile.locale = u"ja"_s;
    profile.createdAt = u"2024-05-01T09:30:00Z"_s;
    profile.updatedAt = u"2024-05-02T09:30:00Z"_s;
    profile.values = {{u"common.ok"_s, u"よし"_s}, {u"profile.manageWindowTitle"_s, u"文言"_s}};
    return profile;
}

/// True for a window in the middle of its screen. Call it before the window is shown: then the
/// window system adds a frame around it, which moves its middle.
bool isCentered(const QWidget *window)
{
    const QPoint distance =
        window->frameGeometry().center() - window->screen()->availableGeometry().center();
    return distance.manhattanLength() <= 2;
}

} // namespace

/// Drives the manager through its window: clicks rows, presses buttons, reads messages.
class ProfileManagerWindowTest final : public QObject
{
    Q_OBJECT

private:
    struct World : ShownProfileManager
    {
        using ShownProfileManager::ShownProfileManager;

        [[nodiscard]] bool isMarkedActive(int row) const
        {
            return !page().row(row).data(SidebarDelegate::SymbolRole).value<QIcon>().isNull();
        }

        void clickImport(const std::optional<QString> &path) const
        {
            panels.state->answer = path;
            QTest::mouseClick(page().tool(u"profileImport"_s), Qt::LeftButton);
        }

        [[nodiscard]] QString fileOf(const QString &id) const
        {
            return home.file(u"profiles/"_s + id + u".json"_s);
        }

        ~World() { wording::setActiveValues(std::nullopt); }

        Q_DISABLE_COPY_MOVE(World)
    };

private Q_SLOTS:

    void window_made_hasItsTitleAndSizes()
    {
        const World world;
        QCOMPARE(world.window()->windowTitle(), u"UI文言プロファイル管理"_s);
        QCOMPARE(world.window()->size(), test::cutToScreen(world.window(), QSize(900, 650)));
        QCOMPARE(world.window()->minimumSize(), QSize(650, 420));
        QWidget *column = world.page().list()->parentWidget();
        QCOMPARE(column->minimumWidth(), 240);
        QCOMPARE(column->maximumWidth(), 320);
        QCOMPARE(column->width(), 260);
    }

    void window_closedAndShownAgain_keepsFrameAndSelection()
    {
        World world({userProfile(u"A"_s, u"Mine"_s)});
        world.page().clickRow(2);
        world.window()->resize(700, 500);
        world.window()->close();
        QVERIFY(!world.window()->isVisible());
        world.controller->showWindow();
        QVERIFY(world.window()->isVisible());
        QCOMPARE(world.page().selectedName(), u"Mine"_s);
        QCOMPARE(world.window()->size(), QSize(700, 500));
        world.window()->close();
        world.makeWindow();
        QCOMPARE(world.window()->size(), QSize(700, 500));
    }

    void window_first_isCentered()
    {
        World world;
        QVERIFY(world.window()->close());
        QVERIFY(world.defaults.setBytes(kFrameKey, {}));
        world.makeWindow();
        QVERIFY(isCentered(world.window()));
    }

    void window_closed_storesItsFrameUnderItsName()
    {
        World world;
        const QRect place(40, 50, 700, 500);
        world.window()->setGeometry(place);
        QVERIFY(world.window()->close());
        QWidget other;
        QVERIFY(other.restoreGeometry(world.defaults.bytes(kFrameKey)));
        QCOMPARE(other.geometry(), place);
        world.makeWindow();
        QCOMPARE(world.window()->geometry(), place);
    }

    void window_nameInUse_isCentered()
    {
        World world;
        world.window()->setGeometry(40, 50, 700, 500);
        QVERIFY(world.window()->close());
        QWidget other;
        QVERIFY(setFrameAutosaveName(&other, u"ProfileManagerWindow"_s, world.defaults));
        world.makeWindow();
        QCOMPARE(world.window()->size(), test::cutToScreen(world.window(), QSize(900, 650)));
        QVERIFY(isCentered(world.window()));
    }

    void window_closeKey_closes()
    {
        const World world;
        QVERIFY(QTest::qWaitForWindowActive(world.window()));
        QTest::keySequence(world.window(), QKeySequence::Close);
        QVERIFY(!world.window()->isVisible());
    }

    void list_opened_showsBuiltInsFirstWithBadgesAndNoSelection()
    {
        const World world({userProfile(u"A"_s, u"Mine"_s)});
        QCOMPARE(world.page().names(),
                 (QStringList{u"標準日本語"_s, u"English (Built-in)"_s, u"Mine"_s}));
        QCOMPARE(world.page().badge(0), u"組み込み"_s);
        QCOMPARE(world.page().badge(1), u"組み込み"_s);
        QCOMPARE(world.page().badge(2), QString());
        QVERIFY(world.isMarkedActive(0));
        QVERIFY(!world.isMarkedActive(1));
        QVERIFY(!world.isMarkedActive(2));
        QCOMPARE(world.page().selectedName(), QString());
        QVERIFY(!world.controller->view()->selectedProfileId());
        QVERIFY(world.page().labels().contains(u"プロファイルを選択してください"_s));
    }

    void list_readByAssistiveTechnology_namesBadgeAndMark()
    {
        const World world;
        QCOMPARE(world.page().row(0).data(Qt::AccessibleTextRole).toString(),
                 u"標準日本語, 組み込み, 適用中"_s);
        QAccessibleInterface *list = QAccessible::queryAccessibleInterface(world.page().list());
        QCOMPARE(list->child(1)->text(QAccessible::Name), u"English (Built-in), 組み込み"_s);
    }

    void detail_userProfile_showsEveryFieldAndDelete()
    {
        const World world({userProfile(u"A"_s, u"Mine"_s)});
        world.page().clickRow(2);
        QCOMPARE(world.controller->view()->selectedProfileId(), u"A"_s);
        const QStringList expected{u"プロファイル名"_s,
                                   u"Mine"_s,
                                   u"ID"_s,
                                   u"A"_s,
                                   u"説明"_s,
                                   u"説明"_s,
                                   u"言語"_s,
                                   u"ja"_s,
                                   u"設定キー数"_s,
                                   u"2"_s,
                                   u"作成日時"_s,
                                   u"2024-05-01T09:30:00Z"_s,
                                   u"更新日時"_s,
                                   u"2024-05-02T09:30:00Z"_s};
        const QStringList labels = world.page().labels();
        const auto start = labels.indexOf(u"プロファイル名"_s);
        QCOMPARE(labels.mid(start, expected.size()), expected);
        QVERIFY(labels.contains(u"基本情報"_s));
        QVERIFY(world.page().button(u"削除"_s) != nullptr);
        QVERIFY(world.page().button(u"エクスポート"_s) != nullptr);
        QVERIFY(world.page().button(u"複製"_s) != nullptr);
        QVERIFY(world.page().button(u"このプロファイルを適用"_s) != nullptr);
        // All buttons are in one row, the prominent one last.
        QPushButton *last = world.page().button(u"このプロファイルを適用"_s);
        for (const auto &text : {u"削除"_s, u"エクスポート"_s, u"複製"_s}) {
            QCOMPARE(world.page().button(text)->y(), last->y());
            QVERIFY(world.page().button(text)->x() < last->x());
        }
    }

    void detail_times_haveTheirLocalFormAsToolTip()
    {
        UIWordingProfile profile = userProfile(u"P"_s, u"P"_s);
        profile.updatedAt = u"gestern"_s;
        const World world({profile});
        world.page().clickRow(2);
        const auto toolTipOf = [&world](const QString &text) {
            for (const QLabel *label : world.window()->findChildren<QLabel *>())
                if (label->isVisible() && label->text() == text)
                    return label->toolTip();
            return u"no such label"_s;
        };
        const QDateTime created(QDate(2024, 5, 1), QTime(9, 30), QTimeZone::utc());
        QCOMPARE(toolTipOf(profile.createdAt),
                 QLocale().toString(created.toLocalTime(), QLocale::LongFormat));
        QCOMPARE(toolTipOf(profile.updatedAt), QString());
    }

    void detail_ampersands_areShown()
    {
        UIWordingProfile profile = userProfile(u"P"_s, u"A & B"_s);
        profile.description = u"C & D"_s;
        World world({profile});
        QHash<QString, QString> values;
        for (const auto &key : {u"profile.manage.name"_s,
                                u"profile.manage.description"_s,
                                u"profile.manage.locale"_s,
                                u"profile.manage.valuesCount"_s,
                                u"profile.manage.createdAt"_s,
                                u"profile.manage.updatedAt"_s})
            values.insert(key, u"A & B"_s);
        wording::setActiveValues(values);
        world.center.post(UIWordingProfileDidChange);
        world.page().clickRow(2);
        int count = 0;
        for (QLabel *label : world.window()->findChildren<QLabel *>()) {
            const QString text = label->text();
            if (!label->isVisible() || !text.contains(u'&'))
                continue;
            ++count;
            if (qobject_cast<ElidedLabel *>(label) == nullptr)
                QVERIFY(showsLiterally(label, text.startsWith(u'A') ? u"A & B"_s : u"C & D"_s));
        }
        QCOMPARE(count, 9);
    }

    void profile_huge_isCutWhereItIsShown()
    {
        const QString text = hugeText();
        UIWordingProfile profile = userProfile(u"P"_s, text);
        for (QString *field : {&profile.description, &profile.locale, &profile.createdAt})
            *field = text;
        const World world({profile});
        world.page().clickRow(2);
        QVERIFY(isCutStart(world.page().names().at(2), text, kLongestShown));
        int cut = 0;
        for (QLabel *label : world.window()->findChildren<QLabel *>()) {
            const auto *told = QAccessible::queryAccessibleInterface(label);
            QVERIFY(told->text(QAccessible::Name).size() < 2 * kLongestShown);
            cut += isCutStart(label->text(), text, kLongestShown) ? 1 : 0;
        }
        QCOMPARE(cut, 5); // The title and four fields.
        QCOMPARE(world.manager->profileWithId(u"P"_s), profile);
    }

    void detail_longName_takesOneLine()
    {
        const World world({userProfile(u"P"_s, u"とても長い名前 "_s.repeated(200))});
        const auto title = [&world] {
            QLabel *found = nullptr;
            for (QLabel *label : world.window()->findChildren<QLabel *>())
                if (label->isVisible() && found == nullptr &&
                    label->text() == world.page().selectedName())
                    found = label;
            return found;
        };
        world.page().clickRow(0);
        const int height = title()->height();
        world.page().clickRow(2);
        QCOMPARE(title()->height(), height);
        QVERIFY(title()->toolTip().contains(u"とても長い名前"_s));
    }

    void detail_smallestWindow_keepsButtonsApart()
    {
        const World world({userProfile(u"A"_s, u"Mine"_s)});
        world.page().clickRow(2);
        world.window()->resize(world.window()->minimumSize());
        QCOMPARE(world.window()->width(), 650);
        QCoreApplication::processEvents(); // Lays the window out.
        const QPushButton *before = nullptr;
        for (const auto &name :
             {u"profileDelete"_s, u"profileExport"_s, u"profileDuplicate"_s, u"profileApply"_s}) {
            const auto *button = world.window()->findChild<QPushButton *>(name);
            QVERIFY(button->width() >=
                    (button->text().isEmpty() ? 32 : button->sizeHint().width()));
            QVERIFY(!button->accessibleName().isEmpty());
            QVERIFY(button->text() == button->accessibleName() ||
                    button->toolTip() == button->accessibleName());
            QVERIFY(before == nullptr || before->geometry().right() < button->geometry().left());
            before = button;
        }
        world.window()->resize(900, 650);
        QTRY_VERIFY(world.page().button(u"エクスポート"_s) != nullptr);
    }

    void detail_builtIn_showsNeitherTimesNorDelete()
    {
        const World world;
        for (const int row : {0, 1}) {
            world.page().clickRow(row);
            QVERIFY(world.page().button(u"削除"_s) == nullptr);
            QVERIFY(!world.page().labels().contains(u"作成日時"_s));
            QVERIFY(!world.page().labels().contains(u"更新日時"_s));
        }
        QVERIFY(world.page().labels().contains(u"9"_s)); // A text of the English profile.
    }

    void list_keys_selectAndAskToDelete()
    {
        const World world({userProfile(u"A"_s, u"Mine"_s)});
        QTest::keyClick(world.page().list(), Qt::Key_Down);
        QCOMPARE(world.page().selectedName(), u"標準日本語"_s);
        QTest::keyClick(world.page().list(), Qt::Key_End);
        QCOMPARE(world.page().selectedName(), u"Mine"_s);
        QTest::keyClick(world.page().list(), Qt::Key_Delete);
        QWidget *question = QApplication::activeModalWidget();
        QVERIFY(question != nullptr);
        QTest::keyClick(question, Qt::Key_Escape);
        QVERIFY(world.manager->profileWithId(u"A"_s));
        QTest::keyClick(world.page().list(), Qt::Key_Home);
        QTest::keyClick(world.page().list(), Qt::Key_Delete);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    }

    void apply_profile_relabelsMarksAndShowsMessage()
    {
        const World world({userProfile(u"A"_s, u"Mine"_s)});
        world.page().clickRow(2);
        world.page().click(u"このプロファイルを適用"_s);
        QCOMPARE(world.manager->activeProfileId(), u"A"_s);
        QCOMPARE(world.page().takeAlert(u"よし"_s), kApplied);
        QCOMPARE(world.window()->windowTitle(), u"文言"_s);
        QVERIFY(world.page().labels().contains(u"文言"_s)); // The title above the list.
        QVERIFY(!world.isMarkedActive(0));
        QVERIFY(world.isMarkedActive(2));
        QCOMPARE(world.page().selectedName(), u"Mine"_s);
        // Applying the profile again is harmless.
        world.page().click(u"このプロファイルを適用"_s);
        QCOMPARE(world.page().takeAlert(u"よし"_s), kApplied);
    }

    void apply_elsewhere_relabelsEverything()
    {
        const World world;
        world.manager->applyProfile(builtInEnglishProfile());
        QCOMPARE(world.window()->windowTitle(), u"UI Wording Profile Manager"_s);
        QVERIFY(world.page().labels().contains(u"UI Wording Profile Manager"_s));
        QVERIFY(world.isMarkedActive(1));
        QVERIFY(!world.isMarkedActive(0));
    }

    void duplicate_builtIn_selectsTheUsersCopy()
    {
        const World world;
        world.page().clickRow(0);
        world.page().click(u"複製"_s);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        QCOMPARE(world.page().selectedName(), u"標準日本語 のコピー"_s);
        const auto copy = world.manager->profileWithId(FakeIds::id(1));
        QVERIFY(copy.has_value());
        QVERIFY(!copy->isBuiltIn);
        QVERIFY(copy->values.isEmpty());
        QCOMPARE(copy->createdAt, kNow);
        QVERIFY(QFileInfo::exists(world.fileOf(FakeIds::id(1))));
        QVERIFY(world.page().button(u"削除"_s) != nullptr);
        QCOMPARE(world.manager->activeProfileId(), kBuiltInProfileId);
    }

    void duplicate_cannotBeSaved_isSilent()
    {
        const World world;
        world.page().clickRow(0);
        {
            const FileSizeLimit full(16);
            world.page().click(u"複製"_s);
        }
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        QCOMPARE(world.page().names().size(), 2);
        QCOMPARE(world.page().selectedName(), u"標準日本語"_s);
    }

    void import_newProfile_isListedSelectedAndNotApplied()
    {
        const World world;
        UIWordingProfile profile = userProfile(u"N"_s, u"New"_s);
        profile.isBuiltIn = true;
        world.home.write(u"in.json"_s, profile.toJson());
        world.clickImport(world.home.file(u"in.json"_s));
        QCOMPARE(world.page().takeAlert(), u"プロファイルをインポートしました"_s);
        QCOMPARE(world.panels.state->title, u"インポート"_s);
        QCOMPARE(world.page().selectedName(), u"New"_s);
        const auto kept = world.manager->profileWithId(u"N"_s);
        QVERIFY(kept.has_value());
        QVERIFY(!kept->isBuiltIn);
        QCOMPARE(kept->createdAt, kNow);
        QCOMPARE(kept->updatedAt, kNow);
        QCOMPARE(kept->values, profile.values);
        QCOMPARE(world.manager->activeProfileId(), kBuiltInProfileId);
    }

    void import_idAndNameTaken_getNewOnes()
    {
        const World world({userProfile(u"A"_s, u"Mine"_s)});
        world.home.write(u"in.json"_s, userProfile(u"A"_s, u"Mine"_s).toJson());
        world.clickImport(world.home.file(u"in.json"_s));
        QCOMPARE(world.page().takeAlert(), u"プロファイルをインポートしました"_s);
        QCOMPARE(world.page().selectedName(), u"Mine のコピー"_s);
        QCOMPARE(world.controller->view()->selectedProfileId(), FakeIds::id(1));
    }

    void import_withoutId_getsOneAndStays()
    {
        const World world;
        world.home.write(u"in.json"_s, userProfile(QString(), u"New"_s).toJson());
        world.clickImport(world.home.file(u"in.json"_s));
        QCOMPARE(world.page().takeAlert(), u"プロファイルをインポートしました"_s);
        QCOMPARE(world.controller->view()->selectedProfileId(), FakeIds::id(1));
        world.manager->loadProfiles();
        QCOMPARE(world.page().names().size(), 3);
        QCOMPARE(QDir(world.home.file(u"profiles"_s)).entryList(QDir::Files | QDir::Hidden),
                 QStringList{FakeIds::id(1) + u".json"_s});
    }

    void import_idOfAnotherProfilesFile_leavesThatFile()
    {
        const World world;
        const QByteArray other = userProfile(u"other"_s, u"Other"_s).toJson();
        world.home.write(u"profiles/N.json"_s, other);
        world.home.write(u"profiles/broken.json"_s, "{");
        world.manager->reloadIfChanged();
        for (const QString &id : {u"N"_s, u"broken"_s}) {
            world.home.write(u"in.json"_s, userProfile(id, u"New "_s + id).toJson());
            world.clickImport(world.home.file(u"in.json"_s));
            QCOMPARE(world.page().takeAlert(), u"プロファイルをインポートしました"_s);
            QCOMPARE(world.page().selectedName(), u"New "_s + id);
        }
        QCOMPARE(world.home.read(u"profiles/N.json"_s), other);
        QCOMPARE(world.home.read(u"profiles/broken.json"_s), "{");
        QVERIFY(world.manager->profileWithId(u"other"_s).has_value());
    }

    void import_cancelled_doesNothing()
    {
        const World world;
        world.clickImport(std::nullopt);
        QCOMPARE(world.panels.state->questions, 1);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        QCOMPARE(world.page().names().size(), 2);
    }

    void import_badFile_showsReasonAndAddsNothing_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("message");
        const QString invalid = u"プロファイルJSONの形式が正しくありません"_s;
        const QByteArray good = userProfile(u"N"_s, u"New"_s).toJson();
        QTest::newRow("no JSON") << QByteArray("hello") << invalid;
        QTest::newRow("empty") << QByteArray("") << invalid;
        QTest::newRow("not UTF-8") << QByteArray("\"\xFF\"") << invalid;
        QTest::newRow("without values")
            << QByteArray(good).replace("\"values\"", "\"other\"") << invalid;
        QTest::newRow("number for a name") << QByteArray(good).replace("\"New\"", "7") << invalid;
        QTest::newRow("null for a name") << QByteArray(good).replace("\"New\"", "null") << invalid;
        QTest::newRow("more behind") << good + ",1" << invalid;
        QTest::newRow("list") << "[" + good + "]" << invalid;
        QTest::newRow("missing") << QByteArray() << u"ファイルを開けませんでした"_s;
        QTest::newRow("id leads elsewhere")
            << userProfile(u"../N"_s, u"New"_s).toJson() << u"ファイルを開けませんでした"_s;
    }

    void import_badFile_showsReasonAndAddsNothing()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, message);
        const World world;
        world.page().clickRow(1);
        if (!content.isNull())
            world.home.write(u"in.json"_s, content);
        world.clickImport(world.home.file(u"in.json"_s));
        QCOMPARE(world.page().takeAlert(), message);
        QCOMPARE(world.page().names().size(), 2);
        QCOMPARE(world.page().selectedName(), u"English (Built-in)"_s);
    }

    void import_folder_showsMessage()
    {
        const World world;
        world.clickImport(world.home.file(u"profiles"_s));
        QCOMPARE(world.page().takeAlert(), u"ファイルを開けませんでした"_s);
    }

    void export_profile_writesItAsStored()
    {
        const World world({userProfile(u"A"_s, u"Mine"_s)});
        world.page().clickRow(2);
        world.panels.state->answer = world.home.file(u"out.json"_s);
        world.page().click(u"エクスポート"_s);
        QCOMPARE(world.page().takeAlert(), u"エクスポートしました"_s);
        QCOMPARE(world.panels.state->title, u"エクスポート"_s);
        QCOMPARE(world.panels.state->name, u"Mine"_s);
        QCOMPARE(world.home.read(u"out.json"_s), userProfile(u"A"_s, u"Mine"_s).toJson());
        world.page().clickRow(0);
        world.page().click(u"エクスポート"_s);
        QCOMPARE(world.page().takeAlert(), u"エクスポートしました"_s);
        QCOMPARE(world.home.read(u"out.json"_s), builtInJapaneseProfile().toJson());
    }

    void exportAll_profile_isATemplateWithEveryKey()
    {
        const World world({userProfile(u"A"_s, u"Mine"_s)});
        world.page().clickRow(2);
        const QString path = world.home.file(u"out.json"_s);
        world.panels.state->answer = path;
        world.page().click(u"すべての文言をエクスポート…"_s);
        QCOMPARE(world.page().takeAlert(), u"エクスポートしました"_s);
        QCOMPARE(world.panels.state->name, u"Mine のコピー"_s);
        const auto written = UIWordingProfile::fromJson(world.home.read(u"out.json"_s));
        QVERIFY(written.has_value());
        QHash<QString, QString> expected = wording::fallbackTable();
        expected.insert(wording::ownTexts());
        expected.insert(userProfile(u"A"_s, u"Mine"_s).values);
        QCOMPARE(written->values, expected);
        QVERIFY(!written->isBuiltIn);
        // The file can be imported as it is, and its texts are those of the profile.
        world.clickImport(path);
        QCOMPARE(world.page().takeAlert(), u"プロファイルをインポートしました"_s);
        QCOMPARE(world.page().selectedName(), u"Mine のコピー"_s);
        const auto imported = world.manager->profileWithId(FakeIds::id(1));
        QVERIFY(imported.has_value());
        QCOMPARE(imported->values, expected);
    }

    void exportAll_builtIn_isATemplate()
    {
        const World world;
        world.page().clickRow(1);
        world.panels.state->answer = world.home.file(u"out.json"_s);
        world.page().click(u"すべての文言をエクスポート…"_s);
        QCOMPARE(world.page().takeAlert(), u"エクスポートしました"_s);
        const auto written = UIWordingProfile::fromJson(world.home.read(u"out.json"_s));
        QVERIFY(written.has_value());
        QCOMPARE(written->id, FakeIds::id(1));
        QCOMPARE(written->values.value(u"menu.window"_s), u"Window"_s);
        QCOMPARE(written->values.value(u"menu.file"_s), u"File"_s);
        QCOMPARE(written->values.value(u"menu.file.new"_s), u"新規作成"_s);
        QCOMPARE(written->values.value(u"dialog.no"_s), u"No"_s); // As it is shown.
    }

    void export_emptyName_suggestsProfile()
    {
        const World world({userProfile(u"A"_s, QString())});
        world.page().clickRow(2);
        world.page().click(u"エクスポート"_s);
        QCOMPARE(world.panels.state->name, u"profile"_s);
        QVERIFY(QApplication::activeModalWidget() == nullptr); // The user cancelled the panel.
    }

    void export_cannotBeWritten_showsMessageAndLeavesTheOldFile()
    {
        const World world;
        world.page().clickRow(1);
        world.home.write(u"out.json"_s, "old");
        world.panels.state->answer = world.home.file(u"out.json"_s);
        {
            const FileSizeLimit full(16);
            world.page().click(u"エクスポート"_s);
        }
        QCOMPARE(world.page().takeAlert(), u"エクスポートに失敗しました"_s);
        QCOMPARE(world.home.read(u"out.json"_s), "old");
        world.panels.state->answer = world.home.file(u"gone/out.json"_s);
        world.page().click(u"エクスポート"_s);
        QCOMPARE(world.page().takeAlert(), u"エクスポートに失敗しました"_s);
    }

    void delete_confirmed_removesFileAndSelectsTheActive()
    {
        const World world({userProfile(u"A"_s, u"Mine"_s)});
        world.page().clickRow(2);
        world.page().click(u"このプロファイルを適用"_s);
        QCOMPARE(world.page().takeAlert(u"よし"_s), kApplied);
        QString message;
        clickInModal(u"削除"_s, &message);
        world.page().click(u"削除"_s);
        QTRY_COMPARE(world.page().names().size(), 2);
        QCOMPARE(message, u"プロファイルの削除"_s);
        QVERIFY(!QFileInfo::exists(world.fileOf(u"A"_s)));
        QCOMPARE(world.controller->view()->selectedProfileId(), kBuiltInProfileId);
        QCOMPARE(world.page().selectedName(), u"標準日本語"_s);
        QVERIFY(world.isMarkedActive(0));
        QCOMPARE(world.window()->windowTitle(), u"UI文言プロファイル管理"_s);
    }

    void delete_asked_explainsAndCanBeCancelled()
    {
        const World world({userProfile(u"A"_s, u"Mine"_s)});
        world.page().clickRow(2);
        world.page().click(u"削除"_s);
        const auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(box != nullptr);
        QCOMPARE(box->informativeText(),
                 u"本当に削除してもよろしいですか？この操作は元に戻せません。"_s);
        buttonNamed(box, u"キャンセル"_s)->click();
        QVERIFY(world.manager->profileWithId(u"A"_s));
        QCOMPARE(world.page().selectedName(), u"Mine"_s);
    }

    void delete_cannotBeRemoved_keepsItSilently()
    {
        const World world({userProfile(u"A"_s, u"Mine"_s)});
        world.page().clickRow(2);
        QVERIFY(QFile::remove(world.fileOf(u"A"_s)));
        QVERIFY(QDir().mkpath(world.fileOf(u"A"_s) + u"/in"_s));
        clickInModal(u"削除"_s);
        world.page().click(u"削除"_s);
        QCoreApplication::processEvents();
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        QCOMPARE(world.page().selectedName(), u"Mine"_s);
    }
};

QTEST_MAIN(ProfileManagerWindowTest)
#include "ProfileManagerWindowTest.moc"

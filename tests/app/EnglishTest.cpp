#include "app/AppDelegateTestBase.h"
#include "command/Palette.h"
#include "support/FakePanels.h"
#include "support/FileSizeLimit.h"
#include "support/ManagerPage.h"
#include "wording/EnglishProfile.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QFileInfo>
#include <QLineEdit>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of how a user comes to an English interface.
class EnglishTest final : public QObject, private test::AppDelegateTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        begin();
        m_app.reset(); // Only one may exist at a time.
        m_app = std::make_unique<AppDelegate>(systemClock(), m_panels.panels());
        launch();
        activate(0);
        controller()->textView()->setFocus();
    }

    void cleanup()
    {
        end();
        QVERIFY(UIWordingProfileManager::shared().deleteProfile(kEnglishProfileId));
    }

    void command_fromThePalette_makesTheWindowEnglish();
    void command_notSaved_saysSo();
    void suppliedProfile_isWhereTheFirstImportStarts();

private:
    static void choose(const QString &typed);
    [[nodiscard]] QStringList menuTexts() const;

    test::FakePanels m_panels;
};

void EnglishTest::choose(const QString &typed)
{
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_F1);
    auto *field = qobject_cast<QLineEdit *>(QApplication::focusWidget());
    QVERIFY(field != nullptr);
    QTest::keyClicks(field, typed);
    QTest::keyClick(field, Qt::Key_Return);
    QCoreApplication::processEvents();
}

QStringList EnglishTest::menuTexts() const
{
    QStringList texts;
    for (const int bar : {0, 1, 2, 4, 5}) {
        texts << menu(bar)->title();
        for (const QAction *item : menu(bar)->actions())
            if (!item->isSeparator())
                texts << item->text();
    }
    texts.replaceInStrings(QRegularExpression(u"&|\t.*|\\(.\\)"_s), QString());
    return texts;
}

void EnglishTest::command_fromThePalette_makesTheWindowEnglish()
{
    choose(u"use english"_s);
    QCOMPARE(UIWordingProfileManager::shared().activeProfileId(), kEnglishProfileId);
    QVERIFY(
        m_home.read(u"config/penwick/penwick.conf"_s).contains("activeUIWordingProfileId=english"));
    QCOMPARE(controller()->window()->windowTitle(), u"Untitled[*] — penwick"_s);
    QCOMPARE(menuTexts(),
             (QStringList{u"penwick"_s,
                          u"About penwick"_s,
                          u"Quit penwick"_s,
                          u"File"_s,
                          u"New"_s,
                          u"Open…"_s,
                          u"Close"_s,
                          u"Save"_s,
                          u"Save As…"_s,
                          u"Edit"_s,
                          u"Undo"_s,
                          u"Redo"_s,
                          u"Cut"_s,
                          u"Copy"_s,
                          u"Paste"_s,
                          u"Profile"_s,
                          u"Manage UI Wording Profiles…"_s,
                          u"Help"_s,
                          u"Check for Updates…"_s}));
    choose(u"use english"_s); // It is there already.
    QCOMPARE(UIWordingProfileManager::shared().profiles().size(), 3);
}

void EnglishTest::command_notSaved_saysSo()
{
    {
        const test::FileSizeLimit full(64);
        choose(u"use english"_s);
    }
    QCOMPARE(test::ManagerPage::takeAlert(), u"ファイルを保存できませんでした"_s);
    QCOMPARE(UIWordingProfileManager::shared().activeProfileId(), kBuiltInProfileId);
    QCOMPARE(controller()->window()->windowTitle(), u"名称未設定[*] — penwick"_s);
}

void EnglishTest::suppliedProfile_isWhereTheFirstImportStarts()
{
    m_app->showProfileManager();
    const test::ManagerPage page(m_app->profileManagerWindowController()->window());
    const auto clickImport = [&] {
        QTest::mouseClick(page.tool(u"profileImport"_s), Qt::LeftButton);
    };
    clickImport(); // The user cancels the panel.
    const QString folder = m_panels.state->folder;
    const QString path = folder + u"/english.json"_s;
    QVERIFY2(!folder.isEmpty() && QFileInfo::exists(path), qPrintable(folder));
    m_panels.state->answer = path;
    clickImport();
    QCOMPARE(m_panels.state->folder, QString());
    QCOMPARE(test::ManagerPage::takeAlert(), u"プロファイルをインポートしました"_s);
    QCOMPARE(page.selectedName(), u"English"_s);
    const auto imported = UIWordingProfileManager::shared().profileWithId(kEnglishProfileId);
    QVERIFY(imported.has_value());
    QCOMPARE(imported->values, englishProfile().values);
}

QTEST_MAIN(EnglishTest)
#include "EnglishTest.moc"

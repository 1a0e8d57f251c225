#include "app/AppDelegateTestBase.h"
#include "macro/script/ScriptHostPool.h"
#include "preferences/PreferenceRow.h"
#include "preferences/Preferences.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QSpinBox>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Changes settings in their window and in their file, and looks at the open editor.
class SettingsTest final : public QObject, private test::AppDelegateTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup()
    {
        for (const Preference &row : allPreferences())
            Preferences::standard().reset(row.id);
        end();
    }

    void key_pressed_opensTheWindow();
    void controls_used_changeTheOpenText();
    void recovery_switched_removesAndWritesCopies();
    void memory_changed_limitsTheNextHost();
    void file_savedInATab_actsAtOnce();
    void file_changedOutside_actsAtOnce();

private:
    [[nodiscard]] QMainWindow *settings() const
    {
        return m_app->preferencesWindowController()->window();
    }

    template <typename Control> [[nodiscard]] Control *control(const char *key) const
    {
        return qobject_cast<Control *>(
            settings()->findChild<PreferenceRow *>(QString::fromLatin1(key))->control());
    }

    void openSettings() const
    {
        m_app->showSettings();
        QVERIFY(QTest::qWaitForWindowActive(settings()));
    }

    [[nodiscard]] QString settingsFile() const
    {
        return m_home.file(u"config/penwick/penwick.conf"_s);
    }

    [[nodiscard]] QStringList copies() const
    {
        const QDir root(m_home.file(u"state/penwick/recovery"_s));
        QStringList found;
        for (const QString &session : root.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            for (const QString &copy : QDir(root.filePath(session)).entryList(QDir::Files))
                if (copy != u"lock"_s)
                    found.append(copy);
        return found;
    }
};

void SettingsTest::key_pressed_opensTheWindow()
{
    launch();
    activate(0);
    QTest::keyClick(controller()->textView(), Qt::Key_Comma, Qt::ControlModifier);
    QVERIFY(m_app->preferencesWindowController() != nullptr);
    QVERIFY(settings()->isVisible());
    QVERIFY(QTest::qWaitForWindowActive(settings()));
    settings()->close();
    QVERIFY(!settings()->isVisible());
    AppCommands(m_app.get()).performCommand(CommandId::ShowSettings);
    QVERIFY(settings()->isVisible());
}

void SettingsTest::controls_used_changeTheOpenText()
{
    launch();
    openSettings();
    const TextView *view = controller()->textView();
    const int size = view->font().pixelSize();
    control<QSpinBox>("zoom")->setValue(200);
    QCOMPARE(view->font().pixelSize(), 2 * size);
    control<QSpinBox>("tabWidth")->setValue(8);
    QCOMPARE(view->indentation().tabWidth, 8);
    control<QCheckBox>("keepIndentation")->click();
    QVERIFY(view->indentation().isKept);
    auto *inserts = control<QComboBox>("tabKeyInserts");
    inserts->setFocus();
    QTest::keyClick(inserts, Qt::Key_Down);
    QVERIFY(view->indentation().insertsBlanks);
    control<QCheckBox>("showsBlanks")->click();
    QCOMPARE(AppCommands(m_app.get()).commandState(CommandId::ShowBlanks).isOn,
             std::optional(true));
    setText(u"a\r\n"_s);
    control<QCheckBox>("convertPastedLineEnds")->click();
    QGuiApplication::clipboard()->setText(u"x\ny"_s);
    controller()->textView()->selectAll();
    controller()->textView()->deselect();
    controller()->textView()->setSelectedRange({0, 0});
    controller()->textView()->paste();
    QCOMPARE(text(), u"x\r\nya\r\n"_s);
    // The commands change the controls.
    AppCommands(m_app.get()).performCommand(CommandId::ZoomReset);
    QCOMPARE(control<QSpinBox>("zoom")->value(), 100);
    AppCommands(m_app.get()).performCommand(CommandId::ShowBlanks);
    QVERIFY(!control<QCheckBox>("showsBlanks")->isChecked());
}

void SettingsTest::recovery_switched_removesAndWritesCopies()
{
    launch();
    setText(u"unsaved"_s);
    QTRY_COMPARE_WITH_TIMEOUT(copies().size(), 1, 30'000);
    openSettings();
    control<QCheckBox>("recovery")->click();
    QTRY_COMPARE(copies().size(), 0);
    setText(u"more"_s);
    control<QCheckBox>("recovery")->click();
    QTRY_COMPARE_WITH_TIMEOUT(copies().size(), 1, 30'000);
}

void SettingsTest::memory_changed_limitsTheNextHost()
{
    constexpr std::uint64_t kMegabyte = 1024 * 1024;
    launch();
    openSettings();
    ScriptHostPool &pool = ScriptHostPool::shared();
    const auto usual = pool.nextSettings().memory;
    // Once the pool is in use.
    QTRY_VERIFY_WITH_TIMEOUT(pool.spareProcessId() > 0, 30'000);
    const qint64 first = pool.spareProcessId();
    control<QSpinBox>("macroMemoryLimitMegabytes")->setValue(512);
    QCOMPARE(pool.nextSettings().memory, 512 * kMegabyte);
    QVERIFY(pool.spareProcessId() != first);
    Preferences::standard().reset(PreferenceId::MacroMemory);
    QCOMPARE(pool.nextSettings().memory, usual);
}

void SettingsTest::file_savedInATab_actsAtOnce()
{
    launch();
    openSettings();
    const TextView *view = controller()->textView();
    QTRY_VERIFY_WITH_TIMEOUT(ScriptHostPool::shared().spareProcessId() > 0, 30'000);
    Preferences::standard().setNumber(PreferenceId::Zoom, 110);
    AppCommands app(m_app.get());
    setText(u"x"_s); // An untouched text would be replaced by the file.
    app.performCommand(CommandId::OpenSettingsFile);
    QCOMPARE(controller(1)->document()->filePath(), settingsFile());
    setText(text(1).replace(u"zoom=110"_s, u"tabWidth=7\nzoom=huge"_s), 1);
    QVERIFY(m_app->documentController().saveDocument(controller(1)));
    QTRY_COMPARE(view->indentation().tabWidth, 7);
    QCOMPARE(control<QSpinBox>("tabWidth")->value(), 7);
    QTRY_COMPARE(Preferences::standard().number(PreferenceId::Zoom), 100);
    QVERIFY(Preferences::standard().isBroken(PreferenceId::Zoom));
}

void SettingsTest::file_changedOutside_actsAtOnce()
{
    launch();
    const TextView *view = controller()->textView();
    QTRY_VERIFY_WITH_TIMEOUT(ScriptHostPool::shared().spareProcessId() > 0, 30'000);
    UserDefaults other(settingsFile()); // As another process has it.
    for (const int width : {2, 3, 5}) {
        QVERIFY(other.setString(u"tabWidth"_s, QString::number(width)));
        QTRY_COMPARE(view->indentation().tabWidth, width);
    }
}

QTEST_MAIN(SettingsTest)
#include "SettingsTest.moc"

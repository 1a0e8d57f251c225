#include "app/RecentFiles.h"

#include "app/AppDelegateTestBase.h"
#include "command/Palette.h"
#include "command/PaletteModel.h"
#include "platform/files/ApplicationSupport.h"
#include "platform/files/GoneFiles.h"
#include "support/Waits.h"
#include "window/EditorTabBar.h"

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QListView>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of the recent files, in the whole application.
class RecentFilesTest final : public QObject, private test::AppDelegateTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        Preferences::standard().reset(PreferenceId::KeepsRecentFiles);
        UserDefaults::standard().remove(u"zoom"_s);
        UserDefaults::usage().remove(u"recentFiles/paths"_s);
        UserDefaults::usage().remove(u"recentCommands/inPalette"_s);
        begin();
    }

    void cleanup() { end(); }

    void paths_stored_comeBackByteForByte();
    void paths_broken_areLeftOut();
    void paths_beyondTheLimit_areForgotten();
    void files_openedAndSaved_areListedTheLastOneFirst();
    void file_missing_isListedOnceItIsSaved();
    void use_leavesTheSettingsAsTheyAre();
    void file_readInTheBackground_isListed();
    void file_chosenInThePalette_isOpened();
    void files_areListedBeforeTheCommands();
    void setting_off_forgetsAndListsNothing();
    void command_clears();
    void file_gone_isMarkedInThePalette();
    void folder_withoutAnAnswer_holdsUpNothing();

private:
    QString open(const QString &name) const;
    /// Opens the palette, and returns its model.
    const QAbstractItemModel *rows() const;
    [[nodiscard]] QStringList listed(const QString &badge) const;

    void closePalette() const { Palette::openIn(window())->dismiss(); }

    [[nodiscard]] EditorWindow *window() const { return m_app->targetEditor()->window(); }
};

QString RecentFilesTest::open(const QString &name) const
{
    const QString path = m_home.write(name, "x");
    m_app->documentController().openFile(path);
    return path;
}

const QAbstractItemModel *RecentFilesTest::rows() const
{
    if (Palette::openIn(window()) == nullptr)
        m_app->openPalette();
    return Palette::openIn(window())->findChild<QListView *>()->model();
}

QStringList RecentFilesTest::listed(const QString &badge) const
{
    QStringList titles;
    const QAbstractItemModel *model = rows();
    for (int i = 0; i < model->rowCount(); ++i)
        if (model->index(i, 0).data(PaletteModel::BadgeRole) == badge)
            titles << model->index(i, 0).data().toString();
    return titles;
}

void RecentFilesTest::paths_stored_comeBackByteForByte()
{
    const QList<QByteArray> paths{
        "/tmp/\xff\xfe 100%/\xe6", "/日本/50%25,\"a\"; b\\n.txt", "/a\nb\t@x=y", "/ "};
    const QString file = m_home.file(u"paths.conf"_s);
    {
        UserDefaults defaults(file);
        RecentFiles files(defaults, Preferences::standard());
        for (auto path = paths.crbegin(); path != paths.crend(); ++path)
            files.add(*path);
        files.add("relative");
        QCOMPARE(files.paths(), paths);
    }
    QVERIFY(m_home.read(u"paths.conf"_s).contains("[recentFiles]\npaths="));
    UserDefaults defaults(file);
    QCOMPARE(RecentFiles(defaults, Preferences::standard()).paths(), paths);
}

void RecentFilesTest::paths_broken_areLeftOut()
{
    const QString file =
        m_home.write(u"broken.conf"_s, "[recentFiles]\npaths=/a, b, , /c%00d, %zz, /e\n");
    UserDefaults defaults(file);
    QCOMPARE(RecentFiles(defaults, Preferences::standard()).paths(),
             (QList<QByteArray>{"/a", "/e"}));
}

void RecentFilesTest::paths_beyondTheLimit_areForgotten()
{
    UserDefaults defaults(m_home.file(u"many.conf"_s));
    RecentFiles files(defaults, Preferences::standard());
    for (int i = 0; i <= RecentFiles::kMost; ++i)
        files.add("/" + QByteArray::number(i));
    QCOMPARE(files.paths().size(), RecentFiles::kMost);
    QVERIFY(!files.paths().contains("/0"));
}

void RecentFilesTest::files_openedAndSaved_areListedTheLastOneFirst()
{
    launch();
    const QString one = open(u"one.txt"_s);
    const QString two = open(u"two.txt"_s);
    const QList<QByteArray> expected{QFile::encodeName(two), QFile::encodeName(one)};
    QCOMPARE(m_app->recentFiles().paths(), expected);
    QCOMPARE(listed(u"最近のファイル"_s), QStringList()); // They have tabs.
    closePalette();
    setText(u"edited"_s, 0);
    QVERIFY(m_app->documentController().saveDocument(controller(0)));
    QCOMPARE(m_app->recentFiles().paths().constFirst(), expected.at(1));
    for (int i = 0; i < 2; ++i)
        QVERIFY(m_app->documentController().closeDocument(controller(i == 0 ? 1 : 0)));
    m_app->documentController().newDocument();
    QCOMPARE(listed(u"最近のファイル"_s), (QStringList{u"one.txt"_s, u"two.txt"_s}));
}

void RecentFilesTest::file_missing_isListedOnceItIsSaved()
{
    const QString path = m_home.file(u"missing.txt"_s);
    launch({path});
    QCOMPARE(m_app->recentFiles().paths(), QList<QByteArray>());
    setText(u"x"_s);
    QVERIFY(m_app->documentController().saveDocument(controller()));
    QCOMPARE(m_app->recentFiles().paths(), QList<QByteArray>{QFile::encodeName(path)});
}

void RecentFilesTest::use_leavesTheSettingsAsTheyAre()
{
    UserDefaults::standard().setString(u"zoom"_s, u"120"_s);
    launch();
    const QString path = ApplicationSupport::configurationFilePath();
    const auto read = [](const QString &name) {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const QByteArray settings = read(path);
    QVERIFY(settings.contains("zoom=120"));
    QVERIFY(m_app->documentController().openFile(path));
    open(u"other.txt"_s);
    m_app->openPalette();
    auto *input = Palette::openIn(window())->findChild<QLineEdit *>();
    input->setText(u"新規"_s);
    QTest::keyClick(input, Qt::Key_Return);
    window()->resize(window()->size() + QSize(7, 7));
    const auto isWritten = [read] {
        const QByteArray usage = read(ApplicationSupport::usageFilePath());
        return usage.contains("other.txt") && usage.contains("inPalette=") &&
               usage.contains("windowFrame.penwickEditorWindow=");
    };
    QTRY_VERIFY_WITH_TIMEOUT(isWritten(), test::kLongWait);
    QCOMPARE(read(path), settings);
    const qsizetype count = m_app->recentFiles().paths().size();
    QVERIFY(m_app->documentController().openFile(ApplicationSupport::usageFilePath()));
    QCOMPARE(m_app->recentFiles().paths().size(), count);
}

void RecentFilesTest::file_readInTheBackground_isListed()
{
    launch();
    m_app->documentController().setTransferLimits({.directBytes = 0, .reading = {}});
    const QString path = open(u"large.txt"_s);
    QTRY_COMPARE_WITH_TIMEOUT(
        m_app->recentFiles().paths(), QList<QByteArray>{QFile::encodeName(path)}, test::kLongWait);
}

void RecentFilesTest::file_chosenInThePalette_isOpened()
{
    const QString path = m_home.write(u"folder/手紙.txt"_s, "dear");
    launch();
    m_app->recentFiles().add(QFile::encodeName(path));
    const QAbstractItemModel *model = rows();
    auto *field = Palette::openIn(window())->findChild<QLineEdit *>();
    field->setText(u"手紙 folder"_s);
    QCOMPARE(model->index(0, 0).data(Qt::AccessibleTextRole).toString(),
             u"手紙.txt, 最近のファイル, "_s + m_home.file(u"folder"_s));
    QTest::keyClick(field, Qt::Key_Return);
    QTRY_COMPARE(m_app->targetEditor()->document()->filePath(), path);
}

void RecentFilesTest::files_areListedBeforeTheCommands()
{
    launch();
    for (int i = 0; i < 7; ++i)
        m_app->recentFiles().add("/folder/" + QByteArray::number(i));
    const QAbstractItemModel *model = rows();
    QCOMPARE(model->index(0, 0).data().toString(), u"6"_s);
    QCOMPARE(model->index(4, 0).data().toString(), u"2"_s);
    QCOMPARE(model->index(5, 0).data().toString(), u"新規作成"_s);
    QCOMPARE(listed(u"最近のファイル"_s).size(), 7);
}

void RecentFilesTest::setting_off_forgetsAndListsNothing()
{
    launch();
    open(u"one.txt"_s);
    QCOMPARE(m_app->recentFiles().paths().size(), 1);
    Preferences::standard().setOn(PreferenceId::KeepsRecentFiles, false);
    open(u"two.txt"_s);
    QCOMPARE(m_app->recentFiles().paths().size(), 0);
    Preferences::standard().setOn(PreferenceId::KeepsRecentFiles, true);
    QCOMPARE(m_app->recentFiles().paths().size(), 0);
}

void RecentFilesTest::command_clears()
{
    launch();
    AppCommands commands(m_app.get());
    QVERIFY(!commands.commandState(CommandId::ClearRecentFiles).isAvailable);
    open(u"one.txt"_s);
    QVERIFY(commands.commandState(CommandId::ClearRecentFiles).isAvailable);
    rows();
    auto *field = Palette::openIn(window())->findChild<QLineEdit *>();
    field->setText(u"履歴 消去"_s);
    QTest::keyClick(field, Qt::Key_Return);
    QTRY_COMPARE(m_app->recentFiles().paths().size(), 0);
}

void RecentFilesTest::file_gone_isMarkedInThePalette()
{
    launch();
    m_app->recentFiles().add(QFile::encodeName(m_home.write(u"here.txt"_s, "")));
    m_app->recentFiles().add(QFile::encodeName(m_home.file(u"gone.txt"_s)));
    m_app->recentFiles().add(QFile::encodeName(m_home.file(u"no folder/gone too.txt"_s)));
    const QStringList expected{u"gone too.txt"_s, u"gone.txt"_s};
    QTRY_COMPARE_WITH_TIMEOUT(listed(u"見つかりません"_s), expected, test::kLongWait);
    QCOMPARE(listed(u"最近のファイル"_s), QStringList(u"here.txt"_s));
    Palette::openIn(window())->setTyped(u"gone"_s);
    QCOMPARE(listed(u"見つかりません"_s).size(), 2); // Also after a search.
}

void RecentFilesTest::folder_withoutAnAnswer_holdsUpNothing()
{
    const auto answer = std::make_shared<QSemaphore>(); // The thread may outlive this function.
    const auto asked = std::make_shared<QSemaphore>();
    GoneFiles files([answer, asked](const QByteArray &path) {
        if (path.startsWith("/dead")) {
            asked->release();
            answer->acquire();
        }
        return true;
    });
    const QSignalSpy found(&files, &GoneFiles::found);
    files.look({"/dead/a", "/live/b"});
    QTRY_COMPARE_WITH_TIMEOUT(found.size(), 1, test::kLongWait);
    QCOMPARE(found.at(0).at(0).toByteArray(), "/live/b");
    QVERIFY(asked->tryAcquire(1, test::kLongWait));
    files.look({"/dead/a", "/live/b"}); // Starts no second thread for the first folder.
    QTRY_COMPARE_WITH_TIMEOUT(found.size(), 2, test::kLongWait);
    QCOMPARE(found.at(1).at(0).toByteArray(), "/live/b");
    answer->release();
    QTRY_COMPARE_WITH_TIMEOUT(found.size(), 3, test::kLongWait);
    QCOMPARE(found.at(2).at(0).toByteArray(), "/dead/a");
    QCOMPARE(asked->available(), 0);
}

QTEST_MAIN(RecentFilesTest)
#include "RecentFilesTest.moc"

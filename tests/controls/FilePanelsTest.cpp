#include "controls/FilePanels.h"

#include "support/ModalAnswer.h"
#include "support/TemporaryHome.h"
#include "support/Waits.h"
#include "wording/WordingLookup.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QTest>

#include <algorithm>
#include <memory>
#include <optional>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// The state of a panel when it opened.
struct Seen
{
    QString title;
    QString folder;
    QString name;
    QStringList filters;
    QStringList buttons;
    bool isModal = false;
};

Seen stateOf(const QFileDialog &dialog)
{
    QStringList buttons;
    for (const QPushButton *button : dialog.findChildren<QPushButton *>())
        buttons << button->text().remove(u'&');
    return {dialog.windowTitle(),
            dialog.directory().absolutePath(),
            dialog.findChild<QLineEdit *>(u"fileNameEdit"_s)->text(),
            dialog.nameFilters(),
            buttons,
            dialog.isModal()};
}

/// Accepts the next panel after going to the path's folder and typing its name; cancels the panel
/// without a path. Returns the state that the panel had.
std::shared_ptr<Seen> answer(const std::optional<QString> &path)
{
    auto seen = std::make_shared<Seen>();
    test::answerModal([seen, path](QWidget *window) {
        auto *dialog = qobject_cast<QFileDialog *>(window);
        if (dialog == nullptr) {
            window->close();
            QFAIL("The modal window is no file panel.");
        }
        *seen = stateOf(*dialog);
        if (!path)
            return dialog->reject();
        dialog->setDirectory(QFileInfo(*path).path());
        test::acceptFileName(dialog, QFileInfo(*path).fileName());
    });
    return seen;
}

} // namespace

class FilePanelsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_home = std::make_unique<test::TemporaryHome>();
        m_panels = FilePanels::onScreen();
    }

    void cleanup()
    {
        wording::setActiveValues(std::nullopt);
        m_home.reset();
    }

    void open_shown_asksForOneJsonFile();
    void open_fileNamed_givesItsPath();
    void open_folderWithOtherFiles_listsOnlyJson();
    void save_shown_suggestsTheName();
    void panels_profileTexts_areUsed();
    void save_suggestedName_fitsAFile_data();
    void save_suggestedName_fitsAFile();
    void save_nameTyped_endsInASuffix_data();
    void save_nameTyped_endsInASuffix();
    void panels_cancelled_giveNothing();
    void panels_next_startInTheFolderOfTheLastOne();
    void openIn_folder_startsThereOnce();
    void panels_secondOverTheFirst_isNotOpened();

private:
    std::unique_ptr<test::TemporaryHome> m_home;
    FilePanels m_panels;
};

void FilePanelsTest::open_shown_asksForOneJsonFile()
{
    const auto seen = answer(std::nullopt);
    QVERIFY(!m_panels.open(nullptr, u"読み込む"_s).has_value());
    QCOMPARE(seen->title, u"読み込む"_s);
    QCOMPARE(seen->name, QString());
    QCOMPARE(seen->filters, QStringList{u"JSON ファイル (*.json)"_s});
    QVERIFY(seen->buttons.contains(u"開く"_s));
    QVERIFY(seen->buttons.contains(u"キャンセル"_s));
    QVERIFY(seen->isModal);
}

void FilePanelsTest::open_fileNamed_givesItsPath()
{
    const QString path = m_home->write(u"a.json"_s, "{}");
    answer(path);
    QCOMPARE(m_panels.open(nullptr, u"t"_s), path);
}

void FilePanelsTest::open_folderWithOtherFiles_listsOnlyJson()
{
    for (const auto &name : {u"folder/a.json"_s, u"folder/b.txt"_s, u"folder/c.json"_s})
        m_home->write(name, "{}");
    QStringList names;
    test::answerModal([&names, folder = m_home->file(u"folder"_s)](QWidget *window) {
        qobject_cast<QFileDialog *>(window)->setDirectory(folder);
        const auto *list = window->findChild<QListView *>(u"listView"_s);
        // The folder is read on a thread of its own.
        const auto hasRows = [list] { return list->model()->rowCount(list->rootIndex()) >= 2; };
        const bool isRead = QTest::qWaitFor(hasRows, test::kLongWait);
        for (int i = 0; isRead && i < list->model()->rowCount(list->rootIndex()); ++i)
            names << list->model()->index(i, 0, list->rootIndex()).data().toString();
        window->close();
    });
    QVERIFY(!m_panels.open(nullptr, u"t"_s).has_value());
    QCOMPARE(names, (QStringList{u"a.json"_s, u"c.json"_s}));
}

void FilePanelsTest::save_shown_suggestsTheName()
{
    const auto seen = answer(std::nullopt);
    QVERIFY(!m_panels.save(nullptr, u"書き出す"_s, u"行末スペースを削除"_s).has_value());
    QCOMPARE(seen->title, u"書き出す"_s);
    QCOMPARE(seen->name, u"行末スペースを削除.json"_s);
    QCOMPARE(seen->filters, QStringList{u"JSON ファイル (*.json)"_s});
    QVERIFY(seen->buttons.contains(u"保存"_s));
    QVERIFY(seen->buttons.contains(u"キャンセル"_s));
    QVERIFY(seen->isModal);
}

void FilePanelsTest::panels_profileTexts_areUsed()
{
    wording::setActiveValues(QHash<QString, QString>{{u"dialog.jsonFiles"_s, u"JSON only"_s},
                                                     {u"dialog.open"_s, u"Fetch"_s},
                                                     {u"common.save"_s, u"Keep"_s},
                                                     {u"common.cancel"_s, u"Leave"_s}});
    const auto opened = answer(std::nullopt);
    m_panels.open(nullptr, u"t"_s);
    QCOMPARE(opened->filters, QStringList{u"JSON only (*.json)"_s});
    QVERIFY(opened->buttons.contains(u"Fetch"_s));
    QVERIFY(opened->buttons.contains(u"Leave"_s));
    const auto saved = answer(std::nullopt);
    m_panels.save(nullptr, u"t"_s, u"n"_s);
    QCOMPARE(saved->filters, QStringList{u"JSON only (*.json)"_s});
    QVERIFY(saved->buttons.contains(u"Keep"_s));
    QVERIFY(saved->buttons.contains(u"Leave"_s));
}

void FilePanelsTest::save_suggestedName_fitsAFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("suggested");
    QTest::newRow("ordinary") << u"My macro 2"_s << u"My macro 2.json"_s;
    QTest::newRow("slashes") << u"/a/b/"_s << u"-a-b-.json"_s;
    QTest::newRow("control characters") << u"a\tb\nc\x7f"_s << u"a-b-c-.json"_s;
    QTest::newRow("leading dot") << u".hidden"_s << u"-hidden.json"_s;
    QTest::newRow("parent folder") << u"../../a"_s << u"-.-..-a.json"_s;
    QTest::newRow("dot inside") << u"version 1.5"_s << u"version 1.5.json"_s;
    QTest::newRow("with the extension") << u"x.json"_s << u"x.json"_s;
    QTest::newRow("extension in capitals") << u"x.JSON"_s << u"x.json"_s;
    QTest::newRow("extension twice") << u"x.json.json"_s << u"x.json.json"_s;
    QTest::newRow("only the extension") << u".json"_s << u"-json.json"_s;
    QTest::newRow("long, with the extension")
        << QString(60, u'a') + u".json"_s << QString(60, u'a') + u".json"_s;
    QTest::newRow("60 characters") << QString(60, u'あ') << QString(60, u'あ') + u".json"_s;
    QTest::newRow("61 characters") << QString(61, u'あ') << QString(60, u'あ') + u".json"_s;
    QTest::newRow("emoji over the limit")
        << QString(59, u'a') + u"😀"_s << QString(59, u'a') + u".json"_s;
}

void FilePanelsTest::save_suggestedName_fitsAFile()
{
    QFETCH(QString, name);
    QFETCH(QString, suggested);
    const auto seen = answer(std::nullopt);
    m_panels.save(nullptr, u"t"_s, name);
    QCOMPARE(seen->name, suggested);
}

void FilePanelsTest::save_nameTyped_endsInASuffix_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("saved");
    QTest::newRow("none") << u"a"_s << u"a.json"_s;
    QTest::newRow("json") << u"a.json"_s << u"a.json"_s;
    QTest::newRow("another") << u"a.txt"_s << u"a.txt"_s;
}

void FilePanelsTest::save_nameTyped_endsInASuffix()
{
    QFETCH(QString, typed);
    QFETCH(QString, saved);
    answer(m_home->file(typed));
    QCOMPARE(m_panels.save(nullptr, u"t"_s, u"n"_s), m_home->file(saved));
}

void FilePanelsTest::panels_cancelled_giveNothing()
{
    test::clickInModal(u"キャンセル"_s);
    QVERIFY(!m_panels.open(nullptr, u"t"_s).has_value());
    test::clickInModal(u"キャンセル"_s);
    QVERIFY(!m_panels.save(nullptr, u"t"_s, u"n"_s).has_value());
}

void FilePanelsTest::panels_next_startInTheFolderOfTheLastOne()
{
    const QString path = m_home->write(u"first/a.json"_s, "{}");
    answer(path);
    QCOMPARE(m_panels.open(nullptr, u"t"_s), path);
    auto seen = answer(m_home->file(u"b.json"_s));
    QVERIFY(m_panels.save(nullptr, u"t"_s, u"n"_s).has_value());
    QCOMPARE(seen->folder, m_home->file(u"first"_s));
    // A cancelled panel does not count.
    test::answerModal([folder = m_home->file(u"first"_s)](QWidget *window) {
        qobject_cast<QFileDialog *>(window)->setDirectory(folder);
        window->close();
    });
    QVERIFY(!m_panels.open(nullptr, u"t"_s).has_value());
    seen = answer(std::nullopt);
    m_panels.open(nullptr, u"t"_s);
    QCOMPARE(seen->folder, m_home->path());
    // A folder that is gone is replaced by the home folder.
    answer(m_home->write(u"second/a.json"_s, "{}"));
    QVERIFY(m_panels.open(nullptr, u"t"_s).has_value());
    QVERIFY(QDir(m_home->file(u"second"_s)).removeRecursively());
    seen = answer(std::nullopt);
    m_panels.open(nullptr, u"t"_s);
    QCOMPARE(seen->folder, m_home->path());
}

void FilePanelsTest::openIn_folder_startsThereOnce()
{
    answer(m_home->write(u"own/a.json"_s, "{}"));
    QVERIFY(m_panels.open(nullptr, u"t"_s).has_value());
    const QString supplied = m_home->write(u"supplied/english.json"_s, "{}");
    auto seen = answer(supplied);
    QCOMPARE(m_panels.openIn(nullptr, u"t"_s, m_home->file(u"supplied"_s)), supplied);
    QCOMPARE(seen->folder, m_home->file(u"supplied"_s));
    for (const QString &folder : {QString(), m_home->file(u"gone"_s)}) {
        seen = answer(std::nullopt);
        QVERIFY(!m_panels.openIn(nullptr, u"t"_s, folder).has_value());
        QCOMPARE(seen->folder, m_home->file(u"own"_s));
    }
}

// Assistive technology presses buttons of a window although a modal panel is over it.
void FilePanelsTest::panels_secondOverTheFirst_isNotOpened()
{
    QWidget window;
    window.show();
    const auto panelsOver = [] {
        qsizetype count = 0;
        for (const QWidget *other : QApplication::topLevelWidgets())
            count += other->isVisible() && qobject_cast<const QFileDialog *>(other) != nullptr;
        return count;
    };
    qsizetype most = 0;
    bool isAnswered = false;
    test::answerModal([&](QWidget *first) {
        QTimer closing; // Closes panels that should not have opened.
        connect(&closing, &QTimer::timeout, first, [&, first] {
            most = std::max(most, panelsOver());
            for (QWidget *panel : QApplication::topLevelWidgets())
                if (panel != first && qobject_cast<QFileDialog *>(panel) != nullptr)
                    panel->close();
        });
        closing.start(0);
        isAnswered = m_panels.open(&window, u"second"_s).has_value() ||
                     m_panels.save(&window, u"third"_s, u"n"_s).has_value();
        QVERIFY(first->isVisible());
        most = std::max(most, panelsOver());
        first->close();
    });
    QVERIFY(!m_panels.open(&window, u"first"_s).has_value());
    QVERIFY(!isAnswered);
    QCOMPARE(most, 1);
}

QTEST_MAIN(FilePanelsTest)
#include "FilePanelsTest.moc"

#include "app/FileDrop.h"

#include "view/TextView.h"

#include <QDialog>
#include <QDropEvent>
#include <QLineEdit>
#include <QMainWindow>
#include <QMimeData>
#include <QStatusBar>
#include <QTest>
#include <QUrl>
#include <QVBoxLayout>

#include <memory>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of dropping files on a window with all parts of an editor window.
class FileDropTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void files_droppedAnywhere_areOpenedLater_data();
    void files_droppedAnywhere_areOpenedLater();
    void files_offeredToBeMoved_areCopied();
    void filesWithText_areFiles();
    void text_droppedOnTheView_isInserted();
    void link_droppedOnTheView_isText();
    void files_onAnotherWindow_areLeftAlone();
    void files_behindAQuestion_areLeftAlone();
    void files_besideAnothersQuestion_areOpened();

private:
    /// Sends the events of a drag that ends over `target`. True when the drop was accepted;
    /// `m_action` is then its action.
    bool drop(QWidget *target, const QMimeData &mime, Qt::DropActions possible = Qt::CopyAction);

    TextStorage m_storage;
    std::unique_ptr<QMainWindow> m_window;
    std::unique_ptr<FileDrop> m_drop;
    QStringList m_opened;
    Qt::DropAction m_action = Qt::IgnoreAction;
};

namespace {

std::unique_ptr<QMimeData> files(const QStringList &paths)
{
    auto mime = std::make_unique<QMimeData>();
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(path);
    mime->setUrls(urls);
    return mime;
}

} // namespace

void FileDropTest::init()
{
    m_opened.clear();
    m_storage.setText(Text());
    m_window = std::make_unique<QMainWindow>();
    auto *content = new QWidget;
    auto *layout = new QVBoxLayout(content);
    auto *view = new TextView(&m_storage);
    view->setObjectName(u"view"_s);
    layout->addWidget(view);
    auto *field = new QLineEdit;
    field->setObjectName(u"field"_s);
    layout->addWidget(field);
    m_window->setCentralWidget(content);
    m_window->statusBar()->setObjectName(u"status"_s);
    m_window->setAcceptDrops(true);
    m_window->show();
    m_drop = std::make_unique<FileDrop>(
        [this](const QWidget *window) { return window == m_window.get(); },
        [this](const QStringList &paths) { m_opened << paths; });
}

void FileDropTest::cleanup()
{
    m_drop.reset();
    m_window.reset();
}

bool FileDropTest::drop(QWidget *target, const QMimeData &mime, Qt::DropActions possible)
{
    // The toolkit delivers a drop to the nearest ancestor that accepts drops.
    while (!target->acceptDrops() && !target->isWindow())
        target = target->parentWidget();
    const QPoint point = target->rect().center();
    QDragEnterEvent enter(point, possible, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(target, &enter);
    if (!enter.isAccepted())
        return false;
    QDragMoveEvent move(point, possible, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(target, &move);
    if (!move.isAccepted())
        return false;
    QDropEvent drop(point, possible, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(target, &drop);
    m_action = drop.dropAction();
    return drop.isAccepted();
}

void FileDropTest::files_droppedAnywhere_areOpenedLater_data()
{
    QTest::addColumn<QString>("place");
    QTest::newRow("the text") << u"view"_s;
    QTest::newRow("a field") << u"field"_s;
    QTest::newRow("the status bar") << u"status"_s;
    QTest::newRow("the window") << QString();
}

void FileDropTest::files_droppedAnywhere_areOpenedLater()
{
    QFETCH(QString, place);
    QWidget *target = place.isEmpty() ? m_window.get() : m_window->findChild<QWidget *>(place);
    if (auto *view = qobject_cast<TextView *>(target))
        target = view->viewport();
    QVERIFY(drop(target, *files({u"/tmp/a b.txt"_s, u"/tmp/日本.txt"_s})));
    QVERIFY(m_opened.isEmpty());
    QTRY_COMPARE(m_opened, (QStringList{u"/tmp/a b.txt"_s, u"/tmp/日本.txt"_s}));
    QCOMPARE(m_storage.length(), 0);
    QVERIFY(m_window->findChild<QLineEdit *>(u"field"_s)->text().isEmpty());
}

void FileDropTest::files_offeredToBeMoved_areCopied()
{
    QVERIFY(drop(m_window.get(), *files({u"/tmp/a"_s}), Qt::MoveAction | Qt::CopyAction));
    QCOMPARE(m_action, Qt::CopyAction);
}

void FileDropTest::filesWithText_areFiles()
{
    const auto mime = files({u"/tmp/a"_s});
    mime->setText(u"/tmp/a"_s);
    QVERIFY(drop(m_window->findChild<TextView *>()->viewport(), *mime));
    QTRY_COMPARE(m_opened, QStringList{u"/tmp/a"_s});
    QCOMPARE(m_storage.length(), 0);
}

void FileDropTest::text_droppedOnTheView_isInserted()
{
    QMimeData mime;
    mime.setText(u"a\u00A0b\rc\u2029d"_s);
    QVERIFY(drop(m_window->findChild<TextView *>()->viewport(), mime));
    QCOMPARE(m_storage.text().toString(), u"a\u00A0b\rc\u2029d"_s);
    QVERIFY(m_opened.isEmpty());
}

void FileDropTest::link_droppedOnTheView_isText()
{
    QMimeData mime;
    mime.setUrls({QUrl(u"https://example.org/"_s)});
    mime.setText(u"https://example.org/"_s);
    QVERIFY(drop(m_window->findChild<TextView *>()->viewport(), mime));
    QCOMPARE(m_storage.text().toString(), u"https://example.org/"_s);
}

void FileDropTest::files_behindAQuestion_areLeftAlone()
{
    for (const Qt::WindowModality modality : {Qt::WindowModal, Qt::ApplicationModal}) {
        QDialog question(m_window.get());
        question.setWindowModality(modality);
        question.show();
        QVERIFY(!drop(m_window.get(), *files({u"/tmp/a.txt"_s})));
    }
    QCoreApplication::processEvents();
    QVERIFY(m_opened.isEmpty());
}

void FileDropTest::files_besideAnothersQuestion_areOpened()
{
    QWidget other;
    other.show();
    QDialog question(&other);
    question.setWindowModality(Qt::WindowModal);
    question.show();
    QVERIFY(drop(m_window.get(), *files({u"/tmp/a.txt"_s})));
    QTRY_COMPARE(m_opened, QStringList{u"/tmp/a.txt"_s});
}

void FileDropTest::files_onAnotherWindow_areLeftAlone()
{
    QWidget other;
    other.setAcceptDrops(true);
    QVERIFY(!drop(&other, *files({u"/tmp/a"_s})));
    QCoreApplication::processEvents();
    QVERIFY(m_opened.isEmpty());
}

QTEST_MAIN(FileDropTest)
#include "FileDropTest.moc"

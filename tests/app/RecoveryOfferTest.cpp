#include "app/DocumentsTestBase.h"
#include "app/Recovery.h"
#include "app/RecoveryWindow.h"
#include "app/TextComparison.h"
#include "support/FailingAllocation.h"
#include "support/ModalAnswer.h"
#include "support/Waits.h"

#include <QDir>
#include <QMessageBox>
#include <QTreeWidget>

#include <optional>

using namespace penwick;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const std::atomic<bool> isNotCancelled = false;

} // namespace

/// What a user does with the texts that a dead process left.
class RecoveryOfferTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void open_oneOfTwo_keepsTheFocusInTheList();
    void save_damagedCopy_saysSo();
    void open_withoutMemory_saysSo();
    void open_thenEnd_leavesNoFolder();
    void compare_binaryText_showsTheDifference();

private:
    /// The path of a copy that a dead process left.
    QString leave(const QString &name, const Text &text);
    void offer();

    [[nodiscard]] RecoveryWindow *offered() const { return m_recovery->offer()->window(); }

    [[nodiscard]] QTreeWidget *list() const { return offered()->findChild<QTreeWidget *>(); }

    [[nodiscard]] QString root() const { return m_home->file(u"state/penwick/recovery"_s); }

    std::optional<Recovery> m_recovery;
};

void RecoveryOfferTest::init()
{
    begin();
    m_recovery.emplace(*m_documents, root(), true, RecoveryTimes{1ms, 1h});
    m_documents->newDocument();
}

void RecoveryOfferTest::cleanup()
{
    m_recovery.reset();
    end();
}

QString RecoveryOfferTest::leave(const QString &name, const Text &text)
{
    const auto session = RecoverySession::create(root());
    RecoveryCopy copy(session->copyPath(1));
    if (!copy.write({{QString(), name, std::nullopt}, text, std::nullopt, 0, 0}, isNotCancelled))
        qFatal("A copy could not be written.");
    return copy.path();
}

void RecoveryOfferTest::offer()
{
    m_recovery->offerAbandoned();
    QTRY_VERIFY_WITH_TIMEOUT(m_recovery->offer() != nullptr, test::kLongWait);
    QVERIFY(offered() != nullptr);
    offered()->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(offered()));
}

void RecoveryOfferTest::open_oneOfTwo_keepsTheFocusInTheList()
{
    leave(u"a"_s, Text(u"one"));
    leave(u"b"_s, Text(u"two"));
    offer();
    list()->setFocus();
    QTest::keyClick(list(), Qt::Key_Return);
    QTRY_COMPARE_WITH_TIMEOUT(list()->topLevelItemCount(), 1, test::kLongWait);
    QCOMPARE(offered()->focusWidget(), list());
    QTest::keyClick(list(), Qt::Key_Return);
    QTRY_COMPARE_WITH_TIMEOUT(m_documents->windowControllers().size(), 2, test::kLongWait);
}

void RecoveryOfferTest::save_damagedCopy_saysSo()
{
    const QString path = leave(u"a"_s, Text(u"text"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QByteArray content = file.readAll();
    content[content.indexOf("text")] = 'T';
    QVERIFY(file.seek(0) && file.write(content) == content.size());
    file.close();
    offer();
    const QString target = m_home->file(u"saved.txt"_s);
    test::answerModal([target](QWidget *dialog) { test::acceptFileName(dialog, target); });
    test::buttonNamed(offered(), u"別の場所に保存…"_s)->click();
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(path), test::kLongWait);
    QCOMPARE(m_home->read(u"saved.txt"_s), QByteArray("����"));
    const auto *box = window()->findChild<QMessageBox *>();
    QVERIFY(box != nullptr && box->text().contains(u"壊れて"_s));
}

void RecoveryOfferTest::open_withoutMemory_saysSo()
{
    const QString path = leave(u"a"_s, Text(u"text"));
    offer();
    const test::ModalAnswerer message([](QWidget *box) { return box->close(); });
    test::failsNextAllocation = true;
    test::buttonNamed(offered(), u"開く"_s)->click();
    QTRY_VERIFY_WITH_TIMEOUT(list()->isEnabled(), test::kLongWait);
    QVERIFY(!test::failsNextAllocation);
    QTRY_VERIFY_WITH_TIMEOUT(message.hasAnswered(), test::kLongWait);
    QVERIFY(QFile::exists(path));
}

void RecoveryOfferTest::open_thenEnd_leavesNoFolder()
{
    leave(u"a"_s, Text(u"left"));
    offer();
    replaceText(Text(u"x"_s.repeated(64'000'000))); // Its write keeps the worker busy.
    test::buttonNamed(offered(), u"開く"_s)->click();
    QTRY_VERIFY_WITH_TIMEOUT(m_documents->windowControllers().size() == 2, test::kLongWait);
    m_recovery.reset(); // With edits: the process ends after a second signal.
    QCOMPARE(QDir(root()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 1);
}

void RecoveryOfferTest::compare_binaryText_showsTheDifference()
{
    const QString path = leave(u"a"_s, Text(QString::fromLatin1("new\0text\n", 9)));
    const QString file = m_home->write(u"a.txt"_s, QByteArray("old\0text\n", 9));
    const auto comparison = compareWithFile(file, path);
    QVERIFY(comparison);
    QVERIFY(comparison->contains(u"\n-old"_s) && comparison->contains(u"\n+new"_s));
}

QTEST_MAIN(RecoveryOfferTest)
#include "RecoveryOfferTest.moc"

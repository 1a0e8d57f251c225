#include "app/DocumentsTestBase.h"
#include "support/ModalAnswer.h"
#include "support/UnprivilegedUser.h"

#include <QFileDialog>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// Answers message boxes with the first of the labels that they have as a button, and the file
/// dialog with `path`.
std::function<bool(QWidget *)>
answering(const QStringList &labels, const QString &path, QStringList &messages)
{
    return [labels, path, &messages](QWidget *modal) {
        if (const auto *box = qobject_cast<QMessageBox *>(modal)) {
            for (const QString &label : labels) {
                if (QPushButton *button = test::buttonNamed(modal, label)) {
                    messages << box->text();
                    button->click();
                    return false; // Another window follows.
                }
            }
        }
        if (auto *dialog = qobject_cast<QFileDialog *>(modal)) {
            // The dialog checks access as the real user. If that is root, it must be effective too.
            if (::getuid() == 0 && ::seteuid(0) != 0)
                return true;
            dialog->selectFile(path);
            QMetaObject::invokeMethod(dialog, "accept");
            return true;
        }
        return false;
    };
}

} // namespace

/// Tests of saving texts whose files the user may only read, with real files and windows.
class ReadOnlyFilesTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup() { end(); }

    void readOnlyFile_save_offersAnotherPlace();
    void readOnlyFile_closeAndSaveElsewhere_closes();

private:
    /// Opens a file that holds "old", types an "x" in front, and removes the write permission.
    void editReadOnlyFile()
    {
        const QString path = m_home->write(u"a.txt"_s, "old");
        QVERIFY(m_documents->openFile(path));
        QTRY_VERIFY(view() != nullptr);
        type(u"x"_s);
        QCOMPARE(::chmod(qPrintable(path), 0444), 0);
        QCOMPARE(::chmod(qPrintable(m_home->path()), 0777), 0);
    }
};

void ReadOnlyFilesTest::readOnlyFile_save_offersAnotherPlace()
{
    editReadOnlyFile();
    const QString other = m_home->file(u"other.txt"_s);
    QStringList shown;
    const test::ModalAnswerer answer(answering({u"別名で保存…"_s}, other, shown));
    QVERIFY(test::asUnprivilegedUser([&] { return m_documents->saveDocument(controller()); }));
    QCOMPARE(shown, QStringList{u"このファイルには書き込めません"_s});
    QCOMPARE(m_home->read(u"other.txt"_s), QByteArray("xold"));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("old"));
    QCOMPARE(document()->filePath(), other);
    QVERIFY(!document()->isEdited());
}

void ReadOnlyFilesTest::readOnlyFile_closeAndSaveElsewhere_closes()
{
    editReadOnlyFile();
    const QString other = m_home->file(u"other.txt"_s);
    QStringList shown;
    const test::ModalAnswerer answer(answering({u"別名で保存…"_s, u"保存"_s}, other, shown));
    QVERIFY(test::asUnprivilegedUser([&] { return m_documents->closeDocument(controller()); }));
    QCOMPARE(shown.size(), 2);
    QCOMPARE(m_home->read(u"other.txt"_s), QByteArray("xold"));
}

QTEST_MAIN(ReadOnlyFilesTest)
#include "ReadOnlyFilesTest.moc"

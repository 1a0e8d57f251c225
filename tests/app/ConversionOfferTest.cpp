#include "app/ConversionOffer.h"

#include "app/DocumentsTestBase.h"
#include "app/EncodingDialog.h"
#include "app/WordingTranslator.h"
#include "support/EncodedTexts.h"
#include "support/ModalAnswer.h"
#include "support/Waits.h"

#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

const QByteArray kShiftJis("\xFB\xFC\x87\x40\x81\x60\xB6\xC5\r\n\x93\xFA\x96\x7B\x8C\xEA\r\n");
const auto kText = u"髙①～ｶﾅ\r\n日本語\r\n"_s;

/// The texts of all labels of a dialog.
QString labelsOf(const QWidget *dialog)
{
    QStringList texts;
    for (const QLabel *label : dialog->findChildren<QLabel *>())
        texts += label->text();
    return texts.join(u'\n');
}

QListWidget *listOf(const QWidget *dialog)
{
    return dialog->findChild<QListWidget *>();
}

} // namespace

/// Tests of the message about a file that is not UTF-8, and of the converted copy that it offers.
class ConversionOfferTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QCoreApplication::installTranslator(&m_translator); }

    void init() { begin(); }

    void cleanup() { end(); }

    void message_saysWhereAndWhat();
    void message_binary_offersNothing();
    void message_truncated_saysWhere();
    void message_escape_opensNothing();
    void copy_isUntitledAndEdited();

    void copy_ofEveryEncoding_data() { test::addEncodedTexts(); }

    void copy_ofEveryEncoding();
    void copy_ofAMarkOnly_isEdited();
    void copy_saved_isProposedBesideTheFile();
    void copy_savedOverTheFile_asksAndIsUtf8();
    void copy_closed_asks();
    void copy_intoThePristineWindow_takesItsPlace();
    void list_arrowKeys_chooseAnother();
    void list_escape_opensNothing();
    void list_onlyOne_isShown();
    void fileChanged_beforeTheList_isTold();
    void fileChanged_beforeTheChoice_isTold();
    void fileVanished_beforeTheChoice_isTold();
    void fileVanished_beforeTheMessage_isTold();
    void large_invalidAtTheEnd_isConverted();
    void huge_isConvertedWhileTheWindowResponds();
    void large_closedWhileItIsChecked_opensNothing();
    void iso2022_isValidUtf8_opensAsIs();
    void pathForCopyOf_names_data();
    void pathForCopyOf_names();

private:
    /// Presses the second button of the message, then calls `answer` with the list, once it is
    /// filled or shows a failure.
    test::ModalAnswerer answerer(std::function<void(EncodingDialog *)> answer) const
    {
        return test::ModalAnswerer([answer = std::move(answer)](QWidget *modal) {
            if (auto *dialog = qobject_cast<EncodingDialog *>(modal)) {
                if (!listOf(dialog)->isEnabled())
                    return false;
                answer(dialog);
                return true;
            }
            if (QPushButton *convert = test::buttonNamed(modal, u"変換した写しを開く…"_s)) {
                QTest::keyClick(modal, Qt::Key_Tab);
                QTest::keyClick(convert, Qt::Key_Space);
            }
            return false;
        });
    }

    /// Opens the file, and the copy in the encoding that is listed first.
    void openCopy(const QString &path)
    {
        const auto answer =
            answerer([](EncodingDialog *dialog) { QTest::keyClick(dialog, Qt::Key_Return); });
        QVERIFY(!m_documents->openFile(path));
        QVERIFY(answer.hasAnswered());
    }

    /// The information of the message, complete; closes it with a key.
    QString messageAbout(const QString &path, QStringList *buttons = nullptr)
    {
        QString information;
        const test::ModalAnswerer answer([&](QWidget *modal) {
            auto *box = qobject_cast<QMessageBox *>(modal);
            information = box->informativeText();
            if (information.endsWith(u"調べています…"_s))
                return false;
            if (buttons != nullptr)
                for (const QAbstractButton *button : box->buttons())
                    *buttons += button->text();
            QTest::keyClick(modal, Qt::Key_Escape);
            return true;
        });
        const bool isOpened = m_documents->openFile(path);
        return isOpened ? QString() : information;
    }

    WordingTranslator m_translator;
};

void ConversionOfferTest::message_saysWhereAndWhat()
{
    QStringList buttons;
    const QString path = m_home->write(u"memo.txt"_s, "abc\r\n" + kShiftJis);
    QCOMPARE(messageAbout(path, &buttons),
             path +
                 u"\nUTF-8 のテキストではありません。\n6 バイト目から、UTF-8 として読めません。\n"
                 u"文字コードは Shift_JIS (CP932) のようです。"_s);
    QCOMPARE(buttons, QStringList({u"OK"_s, u"変換した写しを開く…"_s}));
}

void ConversionOfferTest::message_binary_offersNothing()
{
    QStringList buttons;
    const QString information = messageAbout(
        m_home->write(u"a.bin"_s, QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16)), &buttons);
    QVERIFY2(information.endsWith(u"\n1 バイト目から、UTF-8 として読めません。\n"
                                  u"テキストではなく、バイナリファイルのようです。"_s),
             qPrintable(information));
    QCOMPARE(buttons, QStringList(u"OK"_s));
}

void ConversionOfferTest::message_truncated_saysWhere()
{
    const auto lastLine = u"\nShift_JIS (CP932) に近いですが、9 バイト目から読めません。"_s;
    QStringList buttons;
    const QString information =
        messageAbout(m_home->write(u"a.txt"_s, "\x83\x65\x83\x58\x81\x5B\x83\x67\x83"), &buttons);
    QVERIFY2(information.endsWith(lastLine), qPrintable(information));
    QCOMPARE(buttons, QStringList(u"OK"_s));
    // These bytes are valid in Windows-1252, which is less probable.
    buttons.clear();
    const QString other =
        messageAbout(m_home->write(u"b.txt"_s, "\x82\xB1\x82\xEA\x82\xCD\x82\xB1\x82"), &buttons);
    QVERIFY2(other.endsWith(lastLine), qPrintable(other));
    QCOMPARE(buttons.size(), 2);
}

void ConversionOfferTest::message_escape_opensNothing()
{
    const QString path = m_home->write(u"a.txt"_s, kShiftJis);
    QVERIFY(!messageAbout(path).isEmpty());
    QVERIFY(!m_documents->hasDocuments());
    QCOMPARE(m_home->read(u"a.txt"_s), kShiftJis);
}

void ConversionOfferTest::copy_isUntitledAndEdited()
{
    openCopy(m_home->write(u"memo.txt"_s, kShiftJis));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCOMPARE(text(), kText);
    QVERIFY(document()->filePath().isEmpty());
    QVERIFY(document()->isEdited());
    QVERIFY(window()->isWindowModified());
    QVERIFY(window()->windowTitle().startsWith(u"名称未設定"_s));
    QCOMPARE(m_home->read(u"memo.txt"_s), kShiftJis);
}

void ConversionOfferTest::copy_ofEveryEncoding()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    openCopy(m_home->write(u"memo.txt"_s, bytes));
    QCOMPARE(this->text(), text);
    QCOMPARE(document()->dataOfType().value(), text.toUtf8());
}

void ConversionOfferTest::copy_ofAMarkOnly_isEdited()
{
    openCopy(m_home->write(u"memo.txt"_s, "\xFF\xFE"));
    QCOMPARE(text(), QString());
    QVERIFY(document()->isEdited());
}

void ConversionOfferTest::copy_saved_isProposedBesideTheFile()
{
    openCopy(m_home->write(u"folder/memo.txt"_s, kShiftJis));
    const test::ModalAnswerer answer([](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        if (dialog == nullptr)
            return false;
        QMetaObject::invokeMethod(dialog, "accept");
        return true;
    });
    QVERIFY(m_documents->saveDocument(controller()));
    QCOMPARE(m_home->read(u"folder/memo.utf8.txt"_s), kText.toUtf8());
    QCOMPARE(m_home->read(u"folder/memo.txt"_s), kShiftJis);
    QCOMPARE(document()->filePath(), m_home->file(u"folder/memo.utf8.txt"_s));
    QVERIFY(!document()->isEdited());
}

void ConversionOfferTest::copy_savedOverTheFile_asksAndIsUtf8()
{
    const QString path = m_home->write(u"memo.txt"_s, kShiftJis);
    openCopy(path);
    QString question;
    test::answerModal([&](QWidget *modal) {
        test::clickInModal(u"はい"_s, &question);
        test::acceptFileName(modal, path);
    });
    QVERIFY(m_documents->saveDocument(controller()));
    QVERIFY2(question.contains(u"memo.txt"_s), qPrintable(question));
    QCOMPARE(m_home->read(u"memo.txt"_s), kText.toUtf8());
}

void ConversionOfferTest::copy_closed_asks()
{
    openCopy(m_home->write(u"memo.txt"_s, kShiftJis));
    test::clickInModal(u"キャンセル"_s);
    QVERIFY(!m_documents->closeDocument(controller()));
    QCOMPARE(text(), kText);
}

void ConversionOfferTest::copy_intoThePristineWindow_takesItsPlace()
{
    m_documents->newDocument();
    const QMainWindow *before = window();
    openCopy(m_home->write(u"memo.txt"_s, kShiftJis));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCOMPARE(window(), before);
    QCOMPARE(text(), kText);
}

void ConversionOfferTest::list_arrowKeys_chooseAnother()
{
    QStringList rows;
    const auto answer = answerer([&rows](EncodingDialog *dialog) {
        QListWidget *list = listOf(dialog);
        QCOMPARE(dialog->focusWidget(), list);
        for (int i = 0; i < list->count(); ++i)
            rows += list->item(i)->text();
        QCOMPARE(list->currentRow(), 0);
        QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Return);
    });
    QVERIFY(!m_documents->openFile(m_home->write(u"memo.txt"_s, "\xA4\xC6\xA4\xB9\xA4\xC8\n")));
    QVERIFY(rows.size() > 1);
    QCOMPARE(rows.at(0), u"EUC-JP\n\u3000てすと"_s);
    QCOMPARE(rows.at(1), u"Big5 (CP950)\n\u3000化允午"_s);
    QCOMPARE(text(), u"化允午\n"_s);
}

void ConversionOfferTest::list_escape_opensNothing()
{
    m_documents->newDocument();
    type(u"x"_s);
    const auto answer =
        answerer([](EncodingDialog *dialog) { QTest::keyClick(listOf(dialog), Qt::Key_Escape); });
    QVERIFY(!m_documents->openFile(m_home->write(u"memo.txt"_s, kShiftJis)));
    QVERIFY(answer.hasAnswered());
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCOMPARE(text(), u"x"_s);
    QCOMPARE(m_home->read(u"memo.txt"_s), kShiftJis);
}

void ConversionOfferTest::list_onlyOne_isShown()
{
    int count = 0;
    const auto answer = answerer([&count](EncodingDialog *dialog) {
        count = listOf(dialog)->count();
        QTest::keyClick(listOf(dialog), Qt::Key_Return);
    });
    // A character of four bytes; no other encoding has all of them.
    QVERIFY(!m_documents->openFile(m_home->write(u"memo.txt"_s, "\x95\x30\x81\x30\n")));
    QCOMPARE(count, 1);
    QCOMPARE(text(), u"😘\n"_s);
}

void ConversionOfferTest::fileChanged_beforeTheList_isTold()
{
    const QString path = m_home->write(u"memo.txt"_s, kShiftJis);
    QString labels;
    const test::ModalAnswerer answer([&](QWidget *modal) {
        if (QPushButton *convert = test::buttonNamed(modal, u"変換した写しを開く…"_s)) {
            m_home->write(u"memo.txt"_s, "short");
            convert->click();
            return false;
        }
        labels = labelsOf(modal);
        if (!labels.contains(u"ほかのプログラムによって変更されています。"_s))
            return false;
        QTest::keyClick(modal, Qt::Key_Return);
        QTest::keyClick(modal, Qt::Key_Escape);
        return true;
    });
    QVERIFY(!m_documents->openFile(path));
    QVERIFY(!m_documents->hasDocuments());
}

void ConversionOfferTest::fileChanged_beforeTheChoice_isTold()
{
    const QString path = m_home->write(u"memo.txt"_s, kShiftJis);
    QString labels;
    const auto answer = answerer([&](EncodingDialog *dialog) {
        m_home->write(u"memo.txt"_s, kShiftJis + kShiftJis);
        QTest::keyClick(listOf(dialog), Qt::Key_Return);
        QTRY_VERIFY(listOf(dialog)->isEnabled());
        labels = labelsOf(dialog);
        QTest::keyClick(listOf(dialog), Qt::Key_Escape);
    });
    QVERIFY(!m_documents->openFile(path));
    QVERIFY2(labels.contains(u"ほかのプログラムによって変更されています。"_s), qPrintable(labels));
    QVERIFY(!m_documents->hasDocuments());
}

void ConversionOfferTest::fileVanished_beforeTheChoice_isTold()
{
    const QString path = m_home->write(u"memo.txt"_s, kShiftJis);
    QString labels;
    const auto answer = answerer([&](EncodingDialog *dialog) {
        QVERIFY(QFile::remove(path));
        QTest::keyClick(listOf(dialog), Qt::Key_Return);
        QTRY_VERIFY(listOf(dialog)->isEnabled());
        labels = labelsOf(dialog);
        QTest::keyClick(listOf(dialog), Qt::Key_Escape);
    });
    QVERIFY(!m_documents->openFile(path));
    QVERIFY2(labels.contains(u"ファイルまたはフォルダが見つかりません。"_s), qPrintable(labels));
    QVERIFY(!m_documents->hasDocuments());
}

void ConversionOfferTest::fileVanished_beforeTheMessage_isTold()
{
    QString information;
    const test::ModalAnswerer answer([&](QWidget *modal) {
        information = qobject_cast<QMessageBox *>(modal)->informativeText();
        if (information.endsWith(u"調べています…"_s))
            return false;
        QTest::keyClick(modal, Qt::Key_Return);
        return true;
    });
    QVERIFY(!dialogs::offerConversion(nullptr, m_home->file(u"gone.txt"_s)));
    QVERIFY2(information.endsWith(u"ファイルまたはフォルダが見つかりません。"_s),
             qPrintable(information));
}

void ConversionOfferTest::large_invalidAtTheEnd_isConverted()
{
    using namespace std::chrono_literals;
    m_documents->setTransferLimits({.directBytes = 1, .reading = 0ms, .saving = 0ms});
    const QByteArray lead = QByteArray("ASCII only.\n").repeated(400'000);
    QVERIFY(m_documents->openFile(m_home->write(u"memo.txt"_s, lead + kShiftJis)));
    const auto answer =
        answerer([](EncodingDialog *dialog) { QTest::keyClick(listOf(dialog), Qt::Key_Return); });
    QTRY_VERIFY_WITH_TIMEOUT(answer.hasAnswered() && view() != nullptr, test::kLongWait);
    QTRY_VERIFY_WITH_TIMEOUT(view() != nullptr && text().endsWith(kText), test::kLongWait);
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QVERIFY(document()->isEdited());
    QVERIFY(document()->filePath().isEmpty());
}

void ConversionOfferTest::huge_isConvertedWhileTheWindowResponds()
{
    const QByteArray line("\x93\xFA\x96\x7B\x8C\xEA\x82\xCC\x95\xB6\x8F\x91\x82\xC5\x82\xB7\n");
    constexpr qint64 kLines = 6'000'000; // Of 17 bytes and 9 characters.
    const QString path = m_home->write(u"memo.txt"_s, line.repeated(kLines));
    // Counts turns of the event loop while the dialog works on the file.
    int turnsBeforeTheList = 0;
    const test::ModalAnswerer counter([&turnsBeforeTheList](QWidget *modal) {
        const auto *dialog = qobject_cast<EncodingDialog *>(modal);
        if (dialog != nullptr && !listOf(dialog)->isEnabled())
            ++turnsBeforeTheList;
        return false;
    });
    openCopy(path);
    QVERIFY(turnsBeforeTheList > 0);
    const Text &copy = document()->textStorage()->text();
    QCOMPARE(copy.size(), kLines * 9);
    QCOMPARE(copy.slice(kLines * 9 - 9, 9), u"日本語の文書です\n"_s);
}

void ConversionOfferTest::large_closedWhileItIsChecked_opensNothing()
{
    const QString path =
        m_home->write(u"memo.txt"_s, QByteArray("\x93\xFA\x96\x7B\n").repeated(4'000'000));
    const test::ModalAnswerer answer([](QWidget *modal) {
        if (QPushButton *convert = test::buttonNamed(modal, u"変換した写しを開く…"_s)) {
            convert->click();
            return false;
        }
        if (qobject_cast<EncodingDialog *>(modal) == nullptr)
            return false;
        QTest::keyClick(modal, Qt::Key_Escape);
        return true;
    });
    QVERIFY(!m_documents->openFile(path));
    QVERIFY(answer.hasAnswered());
    QVERIFY(!m_documents->hasDocuments());
}

// A file whose bytes are all ASCII is valid UTF-8, so there is no message.
void ConversionOfferTest::iso2022_isValidUtf8_opensAsIs()
{
    QVERIFY(m_documents->openFile(m_home->write(u"mail.txt"_s, "\x1B$B$\"\x1B(B\n")));
    QCOMPARE(text(), u"\u001B$B$\"\u001B(B\n"_s);
}

void ConversionOfferTest::pathForCopyOf_names_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("copy");
    QTest::newRow("suffix") << u"/a/memo.txt"_s << u"/a/memo.utf8.txt"_s;
    QTest::newRow("two suffixes") << u"/a/memo.x.txt"_s << u"/a/memo.x.utf8.txt"_s;
    QTest::newRow("none") << u"/a.b/memo"_s << u"/a.b/memo.utf8"_s;
    QTest::newRow("hidden") << u"/a/.memo"_s << u"/a/.memo.utf8"_s;
    QTest::newRow("like a copy") << u"/a/memo.utf8.txt"_s << u"/a/memo.utf8.utf8.txt"_s;
}

void ConversionOfferTest::pathForCopyOf_names()
{
    QFETCH(QString, path);
    QTEST(dialogs::pathForCopyOf(path), "copy");
}

QTEST_MAIN(ConversionOfferTest)
#include "ConversionOfferTest.moc"

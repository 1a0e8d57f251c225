#include "app/OutsideChanges.h"

#include "app/DocumentsTestBase.h"
#include "platform/files/TemporaryFile.h"
#include "support/FileSizeLimit.h"
#include "support/HugeText.h"
#include "support/ModalAnswer.h"
#include "support/Waits.h"
#include "wording/WordingLookup.h"

#include <QDialog>
#include <QInputMethodEvent>
#include <QMenu>
#include <QTest>
#include <QThread>

#include <cstdio>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of changes by other programs to open files, with real files and windows.
class OutsideChangesTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup() { end(); }

    void change_uneditedText_followsTheFileAsOneStep();
    void change_largeFile_isReadWhileTheWindowGoesOn();
    void change_manyLines_keepsCaretAndScrolling();
    void change_duringACheck_isNoticed();
    void change_whileAResultWaits_isNoticed();
    void change_fileReplaced_isNoticedWhenTheWindowComesForward();
    void change_editedText_keepMine_asksOncePerChange();
    void change_editedText_loadTheirs_isOneStepBack();
    void change_editedText_later_asksWhenSaving();
    void change_duringTheQuestion_asksAgain();
    void change_agreedSaveFails_undoToTheOldText_staysUnsaved();
    void change_touchedOnly_asksNothing();
    void change_sameEditElsewhere_countsAsSaved();
    void change_duringAComposition_waitsForItsEnd();
    void change_behindADialogOrMenu_waitsForItsEnd_data();
    void change_behindADialogOrMenu_waitsForItsEnd();
    void change_windowClosedMeanwhile_isForgotten();
    void change_betweenCheckAndSave_asks();
    void deleted_text_staysAndIsUnsaved();
    void deleted_andRestored_isSavedAgain();
    void deleted_save_writesItAgain();
    void unreadable_text_staysAndIsUnsaved();
    void keepMine_undoToTheOldText_staysUnsaved();
    void interruptedSave_open_showsWhereTheTextIs();

private:
    [[nodiscard]] std::optional<QString> message() const
    {
        return controller()->documentState()->macroNotificationMessage();
    }

    void open(const QByteArray &content)
    {
        m_path = m_home->write(u"a.txt"_s, content);
        QVERIFY(m_documents->openFile(m_path));
        QTRY_VERIFY(view() != nullptr);
    }

    void check() const { m_documents->checkFileOnDisk(controller()); }

    /// Writes the file as another program does.
    void change(const QByteArray &content) const { m_home->write(u"a.txt"_s, content); }

    QString m_path;
};

void OutsideChangesTest::change_uneditedText_followsTheFileAsOneStep()
{
    open("one\r\ntwo\nthree");
    change("one\r\nTWO and more\nthree");
    check();
    QTRY_COMPARE(text(), u"one\r\nTWO and more\nthree"_s);
    QVERIFY(!document()->isEdited());
    QTRY_COMPARE(message(), u"ほかのプログラムによる変更を読み込みました"_s);
    QTRY_COMPARE(document()->contentString().toString(), text());
    view()->undo();
    QCOMPARE(text(), u"one\r\ntwo\nthree"_s);
    QVERIFY(document()->isEdited());
    QVERIFY(!document()->textStorage()->canUndo());
    view()->redo();
    QVERIFY(!document()->isEdited());
    // The user went back to the older text on purpose, so saving it asks nothing.
    view()->undo();
    QVERIFY(m_documents->saveDocument(controller()));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("one\r\ntwo\nthree"));
}

void OutsideChangesTest::change_largeFile_isReadWhileTheWindowGoesOn()
{
    open("small");
    QByteArray large(30'000'000, 'x');
    large[20'000'000] = '\n';
    change(large);
    check();
    QCOMPARE(text(), u"small"_s); // Reading does not block.
    QTRY_COMPARE_WITH_TIMEOUT(view()->string().size(), qint64{30'000'000}, test::kLongWait);
    QVERIFY(!document()->isEdited());
}

void OutsideChangesTest::change_manyLines_keepsCaretAndScrolling()
{
    QByteArray lines;
    for (int i = 0; i < 1000; ++i)
        lines += "line " + QByteArray::number(i) + '\n';
    open(lines);
    const qint64 caret = view()->string().offsetAfterLineBreak(500) + 3;
    view()->setSelectedRange({caret, 2});
    view()->scrollTo(view()->string().offsetAfterLineBreak(490));
    QVERIFY(!view()->visibleLines().empty());
    const qint64 top = view()->visibleLines().front().number;
    QVERIFY(top > 400);
    // The first and the last line differ, so the whole text is replaced.
    change("First" + lines.mid(4).chopped(4) + "end\n");
    check();
    QTRY_VERIFY(text().startsWith(u"First"_s));
    QCOMPARE(view()->visibleLines().front().number, top);
    const qint64 start = view()->string().offsetAfterLineBreak(500);
    QCOMPARE(view()->selectedRange(), (TextRange{start + 3, 2}));
}

void OutsideChangesTest::change_duringACheck_isNoticed()
{
    open("old");
    for (int i = 0; i < 50; ++i) {
        check();
        const QByteArray content = "new " + QByteArray::number(i);
        change(content);
        check();
        QTRY_COMPARE(text(), QString::fromLatin1(content));
    }
}

void OutsideChangesTest::change_whileAResultWaits_isNoticed()
{
    open("old");
    QMenu menu;
    menu.addAction(u"item"_s);
    menu.popup({});
    QVERIFY(QTest::qWaitForWindowExposed(&menu));
    constexpr int kChanges = 200;
    for (int i = 1; i <= kChanges; ++i) {
        change("new " + QByteArray::number(i));
        check();
        QCoreApplication::processEvents();
    }
    QCOMPARE(text(), u"old"_s); // The menu is open.
    menu.hide();
    QTRY_COMPARE(text(), u"new "_s + QString::number(kChanges));
}

void OutsideChangesTest::change_fileReplaced_isNoticedWhenTheWindowComesForward()
{
    open("mine");
    m_home->write(u"b.txt"_s, "theirs");
    QCOMPARE(std::rename(qPrintable(m_home->file(u"b.txt"_s)), qPrintable(m_path)), 0);
    QEvent activation(QEvent::WindowActivate);
    QCoreApplication::sendEvent(window(), &activation);
    QTRY_COMPARE(text(), u"theirs"_s);
}

void OutsideChangesTest::change_editedText_keepMine_asksOncePerChange()
{
    open("old");
    type(u"x"_s);
    change("theirs");
    wording::setActiveValues(QHash<QString, QString>{{u"menu.edit.undo"_s, u"Undo"_s}});
    QString question;
    QString information;
    {
        const test::ModalAnswerer answer([&](QWidget *modal) {
            question = qobject_cast<QMessageBox *>(modal)->text();
            information = qobject_cast<QMessageBox *>(modal)->informativeText();
            test::buttonNamed(modal, u"自分の編集を残す"_s)->click();
            return true;
        });
        check();
        QTRY_VERIFY(answer.hasAnswered());
    }
    wording::setActiveValues(std::nullopt);
    QCOMPARE(question, u"「a.txt」は、ほかのプログラムによって変更されています。"_s);
    // The word of the menu.
    QVERIFY2(information.contains(u"「Undo」で戻せます"_s), qPrintable(information));
    QCOMPARE(text(), u"xold"_s);
    QVERIFY(document()->isEdited());
    check();
    QTest::qWait(300);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    // A confirmed change is not asked about again.
    QVERIFY(m_documents->saveDocument(controller()));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xold"));
    // A further change causes a new question.
    type(u"y"_s);
    change("theirs again");
    test::clickInModal(u"キャンセル"_s);
    QVERIFY(!m_documents->saveDocument(controller()));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("theirs again"));
}

void OutsideChangesTest::change_editedText_loadTheirs_isOneStepBack()
{
    open("old");
    type(u"x"_s);
    change("theirs");
    const test::ModalAnswerer answer(test::clicking(u"ファイルの内容を読み込む"_s));
    check();
    QTRY_COMPARE(text(), u"theirs"_s);
    QVERIFY(!document()->isEdited());
    view()->undo();
    QCOMPARE(text(), u"xold"_s);
    QVERIFY(document()->isEdited());
}

void OutsideChangesTest::change_editedText_later_asksWhenSaving()
{
    open("old");
    type(u"x"_s);
    change("theirs");
    {
        const test::ModalAnswerer answer([&](QWidget *modal) {
            QTest::keyClick(modal, Qt::Key_Escape);
            return true;
        });
        check();
        QTRY_VERIFY(answer.hasAnswered());
    }
    check();
    QTest::qWait(300);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    test::clickInModal(u"キャンセル"_s);
    QVERIFY(!m_documents->saveDocument(controller()));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("theirs"));
    test::clickInModal(u"上書き保存"_s);
    QVERIFY(m_documents->saveDocument(controller()));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xold"));
}

void OutsideChangesTest::change_duringTheQuestion_asksAgain()
{
    open("old");
    type(u"x"_s);
    change("theirs");
    test::answerModal([&](QWidget *modal) {
        change("theirs, and more of it");
        test::clickInModal(u"キャンセル"_s);
        test::buttonNamed(modal, u"上書き保存"_s)->click();
    });
    QVERIFY(!m_documents->saveDocument(controller()));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("theirs, and more of it"));
}

void OutsideChangesTest::change_agreedSaveFails_undoToTheOldText_staysUnsaved()
{
    open("old");
    type(u"x"_s);
    change("theirs");
    test::answerModal([](QWidget *modal) {
        test::answerModal([](QWidget *failure) { failure->close(); });
        test::buttonNamed(modal, u"上書き保存"_s)->click();
    });
    {
        const test::FileSizeLimit limit(1);
        QVERIFY(!m_documents->saveDocument(controller()));
    }
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("theirs"));
    view()->undo();
    QCOMPARE(text(), u"old"_s);
    QVERIFY(document()->isEdited());
}

void OutsideChangesTest::change_touchedOnly_asksNothing()
{
    open("old");
    type(u"x"_s);
    change("old");
    QVERIFY(document()->fileVersion() != FileVersion::of(m_path));
    check();
    QTRY_VERIFY(document()->fileVersion() == FileVersion::of(m_path));
    QVERIFY(document()->isEdited());
    change("old"); // The change is first noticed by the save.
    QVERIFY(m_documents->saveDocument(controller()));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xold"));
    QVERIFY(!message());
}

void OutsideChangesTest::change_sameEditElsewhere_countsAsSaved()
{
    open("old");
    type(u"x"_s);
    change("xold");
    check();
    QTRY_VERIFY(!document()->isEdited());
    QCOMPARE(text(), u"xold"_s);
}

void OutsideChangesTest::change_duringAComposition_waitsForItsEnd()
{
    open("old");
    QInputMethodEvent composing(u"にほん"_s, {});
    QCoreApplication::sendEvent(view(), &composing);
    QVERIFY(view()->hasMarkedText());
    change("theirs");
    check();
    QTest::qWait(500);
    QVERIFY(view()->hasMarkedText());
    QCOMPARE(text(), u"old"_s);
    QInputMethodEvent over;
    QCoreApplication::sendEvent(view(), &over);
    QTRY_COMPARE(text(), u"theirs"_s);
}

void OutsideChangesTest::change_behindADialogOrMenu_waitsForItsEnd_data()
{
    QTest::addColumn<bool>("isMenu");
    QTest::newRow("dialog") << false;
    QTest::newRow("menu") << true;
}

void OutsideChangesTest::change_behindADialogOrMenu_waitsForItsEnd()
{
    QFETCH(bool, isMenu);
    open("old");
    QDialog dialog(window());
    QMenu menu(window());
    menu.addAction(u"a"_s);
    if (isMenu)
        menu.popup(QPoint());
    else
        dialog.open();
    change("theirs");
    check();
    QTest::qWait(300);
    QCOMPARE(text(), u"old"_s);
    if (isMenu)
        menu.close();
    else
        dialog.close();
    QTRY_COMPARE(text(), u"theirs"_s);
}

void OutsideChangesTest::change_windowClosedMeanwhile_isForgotten()
{
    open("old");
    change(QByteArray(5'000'000, 'x'));
    check();
    QVERIFY(window()->close());
    QVERIFY(!m_documents->hasDocuments());
    QTest::qWait(100);
}

void OutsideChangesTest::change_betweenCheckAndSave_asks()
{
    // Large enough for a transfer: the file changes while the new one is being written.
    m_documents->setTransferLimits({.directBytes = 1,
                                    .reading = std::chrono::milliseconds(0),
                                    .saving = std::chrono::milliseconds(0)});
    open("old");
    replaceText(test::hugeText(300));
    QVERIFY(m_documents->saveDocument(controller()));
    // No event loop: even when the write has ended meanwhile, its end is not handled yet.
    while (document()->transferPercent() == 0)
        QThread::yieldCurrentThread();
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("old")); // It takes long to write the text.
    change("theirs");
    const test::ModalAnswerer answer(test::clicking(u"キャンセル"_s));
    QTRY_VERIFY_WITH_TIMEOUT(answer.hasAnswered(), test::kLongWait);
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("theirs"));
    QVERIFY(document()->isEdited());
}

void OutsideChangesTest::deleted_text_staysAndIsUnsaved()
{
    open("old");
    QVERIFY(QFile::remove(m_path));
    check();
    QTRY_COMPARE(message(), u"ファイルが削除または移動されました。保存すると再び作られます"_s);
    QVERIFY(document()->isEdited());
    QVERIFY(window()->isWindowModified());
    QCOMPARE(text(), u"old"_s);
    // The message comes only once.
    controller()->documentState()->setMacroNotificationMessage(std::nullopt);
    check();
    QTest::qWait(300);
    QVERIFY(!message());
}

void OutsideChangesTest::deleted_andRestored_isSavedAgain()
{
    open("old");
    const QString away = m_home->file(u"away.txt"_s);
    QVERIFY(QFile::rename(m_path, away));
    check();
    QTRY_VERIFY(document()->isEdited());
    QVERIFY(QFile::rename(away, m_path));
    check();
    QTRY_VERIFY(!document()->isEdited());
}

void OutsideChangesTest::deleted_save_writesItAgain()
{
    open("old");
    QVERIFY(QFile::remove(m_path));
    check();
    QTRY_VERIFY(document()->isEdited());
    QVERIFY(m_documents->saveDocument(controller()));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("old"));
    QVERIFY(!document()->isEdited());
}

void OutsideChangesTest::unreadable_text_staysAndIsUnsaved()
{
    open("old");
    change("\xFF\xFE no text");
    check();
    QTRY_COMPARE(message(), u"ファイルが読めなくなりました。文書はそのまま残しています"_s);
    QVERIFY(document()->isEdited());
    QCOMPARE(text(), u"old"_s);
    // The message comes only once, but saving still asks before it overwrites the file.
    controller()->documentState()->setMacroNotificationMessage(std::nullopt);
    check();
    QTest::qWait(300);
    QVERIFY(!message());
    test::clickInModal(u"キャンセル"_s);
    QVERIFY(!m_documents->saveDocument(controller()));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("\xFF\xFE no text"));
}

void OutsideChangesTest::keepMine_undoToTheOldText_staysUnsaved()
{
    open("old");
    type(u"x"_s);
    change("theirs");
    const test::ModalAnswerer answer(test::clicking(u"自分の編集を残す"_s));
    check();
    QTRY_VERIFY(answer.hasAnswered());
    view()->undo();
    QCOMPARE(text(), u"old"_s);
    QVERIFY(document()->isEdited());
}

void OutsideChangesTest::interruptedSave_open_showsWhereTheTextIs()
{
    m_path = m_home->write(u"a.txt"_s, "half wri");
    // The name of a safety copy of this file.
    const QByteArray path = QFile::encodeName(QFileInfo(m_path).canonicalFilePath());
    const QString copy =
        m_home->write(QFile::decodeName("a.txt.penwick-" + digestOf(path, 4) + "-0.bak"), "whole");
    QString message;
    QString information;
    const test::ModalAnswerer answer([&](QWidget *modal) {
        const auto *box = qobject_cast<QMessageBox *>(modal);
        message = box->text();
        information = box->informativeText();
        test::buttonNamed(modal, u"OK"_s)->click();
        return true;
    });
    QVERIFY(m_documents->openFile(m_path));
    check();
    QTRY_VERIFY(answer.hasAnswered());
    QCOMPARE(message, u"「a.txt」の前回の保存は、途中で中断されました。"_s);
    QVERIFY2(information.contains(copy), qPrintable(information));
    QCOMPARE(text(), u"half wri"_s);
}

QTEST_MAIN(OutsideChangesTest)
#include "OutsideChangesTest.moc"

#include "window/Coordinator.h"

#include "view/TextView.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

using Field = DocumentState::Field;

class CoordinatorTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void metrics_ofTextAndCaret_followTheCountingRules_data();
    void metrics_ofTextAndCaret_followTheCountingRules();
    void metrics_written_inOrder();
    void edit_isWrittenInALaterTurn_stateThenDocument();
    void edit_followedByRerender_keepsSelection();
    void edit_pending_isNotOverwrittenByRerender();
    void outsideChange_reachesTheView_once();
    void outsideChange_equalText_leavesTheView();
    void composition_withOutsideChange_staysIntact();
    void undoAndRedo_reachStateDocumentAndCounters();
    void pastedStyledText_arrivesAsPlainText();
    void save_rightAfterAnEdit_writesTheEdit();
    void coordinatorGone_whileWritesAreQueued_writesNothing();
    void documentGone_stateIsStillWritten();

private:
    void typeText(const QString &text) { QTest::keyClicks(m_view.get(), text); }

    void edit(TextRange range, const QString &replacement)
    {
        const Text text(replacement);
        m_view->shouldChangeText(range, text);
        m_view->replaceCharacters(range, text);
        m_view->didChangeText();
    }

    std::unique_ptr<TextDocument> m_document;
    std::shared_ptr<TextStorage> m_storage;
    std::unique_ptr<DocumentState> m_state;
    std::unique_ptr<TextView> m_view;
    std::unique_ptr<Coordinator> m_coordinator;
};

void CoordinatorTest::init()
{
    m_document = std::make_unique<TextDocument>();
    m_storage = m_document->sharedTextStorage();
    m_state = std::make_unique<DocumentState>();
    m_view = std::make_unique<TextView>(m_storage.get());
    m_view->resize(400, 300);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    m_view->setFocus();
    m_coordinator = std::make_unique<Coordinator>(m_view.get(), m_state.get(), m_document.get());
    QVERIFY(m_coordinator->hasPendingWrites()); // The caret of the new view.
    QCoreApplication::processEvents();
    QCOMPARE(m_state->cursorColumn(), 0);
}

void CoordinatorTest::cleanup()
{
    m_coordinator.reset();
    m_view.reset();
    m_state.reset();
    m_document.reset();
    m_storage.reset();
}

void CoordinatorTest::metrics_ofTextAndCaret_followTheCountingRules_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("location");
    QTest::addColumn<qint64>("length");
    QTest::addColumn<qint64>("lineCount");
    QTest::addColumn<qint64>("characterCount");
    QTest::addColumn<qint64>("cursorLine");
    QTest::addColumn<qint64>("cursorColumn");
    const auto row = [](const char *name,
                        const QString &text,
                        qint64 at,
                        qint64 length,
                        std::array<qint64, 4> expected) {
        QTest::newRow(name) << text << at << length << expected[0] << expected[1] << expected[2]
                            << expected[3];
    };
    row("line feed at the end", u"abc\n"_s, 4, 0, {2, 4, 2, 0});
    row("CR LF is two breaks, one character", u"a\r\nb"_s, 4, 0, {3, 3, 3, 1});
    row("combining accent", u"e\u0301"_s, 2, 0, {1, 1, 1, 1});
    row("selection counts from its start", u"abcdefg"_s, 2, 3, {1, 7, 1, 2});
    row("line separator", u"ab\u2028cd"_s, 4, 0, {2, 5, 2, 1});
    row("every separator", u"\n\v\f\r\u0085\u2028\u2029x"_s, 8, 0, {8, 8, 8, 1});
    row("family emoji", u"x👨‍👩‍👧y"_s, 9, 0, {1, 3, 1, 2});
    row("caret at the start of line 2", u"ab\ncd"_s, 3, 0, {2, 5, 2, 0});
}

void CoordinatorTest::metrics_ofTextAndCaret_followTheCountingRules()
{
    QFETCH(QString, text);
    QFETCH(qint64, location);
    QFETCH(qint64, length);
    edit({0, 0}, text);
    m_view->setSelectedRange({location, length});
    QCoreApplication::processEvents();
    QTEST(m_state->lineCount(), "lineCount");
    QTEST(m_state->characterCount(), "characterCount");
    QTEST(m_state->cursorLine(), "cursorLine");
    QTEST(m_state->cursorColumn(), "cursorColumn");
}

void CoordinatorTest::metrics_written_inOrder()
{
    QList<Field> fields;
    connect(m_state.get(), &DocumentState::willChange, this, [&](Field field) { fields << field; });
    // The view reports an empty text once, without a text change or caret move before.
    m_view->didChangeText();
    QVERIFY(fields.isEmpty());
    QCoreApplication::processEvents();
    const QList<Field> expected{Field::Text,
                                Field::CharacterCount,
                                Field::LineCount,
                                Field::CursorLine,
                                Field::CursorColumn};
    QCOMPARE(fields, expected);
    QCOMPARE(m_state->lineCount(), 1);
    QCOMPARE(m_state->characterCount(), 0);
    QCOMPARE(m_state->cursorLine(), 1);
    QCOMPARE(m_state->cursorColumn(), 0);
}

void CoordinatorTest::edit_isWrittenInALaterTurn_stateThenDocument()
{
    QStringList order;
    connect(m_state.get(), &DocumentState::didChange, this, [&](Field field) {
        if (field == Field::Text)
            order << u"state"_s;
    });
    connect(m_document.get(), &TextDocument::contentStringChanged, this, [&] {
        order << u"document"_s;
    });
    typeText(u"a"_s);
    QVERIFY(m_state->text().isEmpty());
    QVERIFY(m_document->contentString().isEmpty());
    QVERIFY(m_coordinator->hasPendingWrites());
    QCoreApplication::processEvents();
    QCOMPARE(m_state->text().toString(), u"a"_s);
    QCOMPARE(m_document->contentString().toString(), u"a"_s);
    QCOMPARE(order, (QStringList{u"state"_s, u"document"_s}));
}

void CoordinatorTest::edit_followedByRerender_keepsSelection()
{
    typeText(u"hello"_s);
    m_view->setSelectedRange({1, 2});
    QCoreApplication::processEvents();
    m_state->setText(m_state->text());
    m_state->setMacroNotificationMessage(u"any change renders"_s);
    QCoreApplication::processEvents();
    QCOMPARE(m_view->selectedRange(), (TextRange{1, 2}));
    m_coordinator->updateView();
    QCOMPARE(m_view->selectedRange(), (TextRange{1, 2}));
}

void CoordinatorTest::edit_pending_isNotOverwrittenByRerender()
{
    m_state->setText(Text(u"from outside")); // The view has not taken this over yet...
    typeText(u"typed"_s);                    // ...when the user types.
    QCoreApplication::processEvents();
    QCOMPARE(m_view->string().toString(), u"typed"_s);
    QCOMPARE(m_state->text().toString(), u"typed"_s);
    QCOMPARE(m_document->contentString().toString(), u"typed"_s);
}

void CoordinatorTest::outsideChange_reachesTheView_once()
{
    m_state->setText(Text(u"first"));
    m_state->setText(Text(u"second\nline"));
    QVERIFY(m_view->string().isEmpty());
    QCoreApplication::processEvents();
    QCOMPARE(m_view->string().toString(), u"second\nline"_s);
    QVERIFY(!m_storage->canUndo());
    QCOMPARE(m_state->text().toString(), u"second\nline"_s);
}

void CoordinatorTest::outsideChange_equalText_leavesTheView()
{
    typeText(u"hello"_s);
    QCoreApplication::processEvents();
    m_view->setSelectedRange({2, 1});
    m_state->setText(Text(u"hello")); // Equal, but not a copy of the same value.
    QCoreApplication::processEvents();
    QCOMPARE(m_view->selectedRange(), (TextRange{2, 1}));
    QVERIFY(m_storage->canUndo());
}

void CoordinatorTest::composition_withOutsideChange_staysIntact()
{
    typeText(u"ab"_s);
    QCoreApplication::processEvents();
    QInputMethodEvent composing(u"にほん"_s, {});
    QCoreApplication::sendEvent(m_view.get(), &composing);
    QVERIFY(m_view->hasMarkedText());

    m_state->setText(Text(u"outside"));
    QCoreApplication::processEvents();
    QVERIFY(m_view->hasMarkedText());
    QCOMPARE(m_view->string().toString(), u"ab"_s);

    QInputMethodEvent commit;
    commit.setCommitString(u"日本"_s);
    QCoreApplication::sendEvent(m_view.get(), &commit);
    QCoreApplication::processEvents();
    QCOMPARE(m_view->string().toString(), u"ab日本"_s);
    QCOMPARE(m_document->contentString().toString(), u"ab日本"_s);
}

void CoordinatorTest::undoAndRedo_reachStateDocumentAndCounters()
{
    edit({0, 0}, u"one\ntwo"_s);
    QCoreApplication::processEvents();
    QCOMPARE(m_state->lineCount(), 2);
    m_view->undo();
    QCoreApplication::processEvents();
    QCOMPARE(m_state->text().toString(), QString());
    QCOMPARE(m_document->contentString().toString(), QString());
    QCOMPARE(m_state->lineCount(), 1);
    m_view->redo();
    QCoreApplication::processEvents();
    QCOMPARE(m_document->contentString().toString(), u"one\ntwo"_s);
    QCOMPARE(m_state->characterCount(), 7);
}

void CoordinatorTest::pastedStyledText_arrivesAsPlainText()
{
    auto *data = new QMimeData;
    data->setHtml(u"<b>styled</b>"_s);
    data->setText(u"<i>plain</i>"_s); // Text that looks like markup stays text.
    QApplication::clipboard()->setMimeData(data);
    m_view->paste();
    QCoreApplication::processEvents();
    QCOMPARE(m_document->contentString().toString(), u"<i>plain</i>"_s);
}

void CoordinatorTest::save_rightAfterAnEdit_writesTheEdit()
{
    const QTemporaryDir folder;
    typeText(u"last words"_s);
    QVERIFY(m_document->writeToFile(folder.filePath(u"a.txt"_s)).has_value());
    QFile file(folder.filePath(u"a.txt"_s));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("last words"));
    QVERIFY(!m_document->isEdited());
}

void CoordinatorTest::coordinatorGone_whileWritesAreQueued_writesNothing()
{
    typeText(u"a"_s);
    m_coordinator.reset();
    QCoreApplication::processEvents();
    QVERIFY(m_state->text().isEmpty());
    QVERIFY(m_document->contentString().isEmpty());
    QCOMPARE(m_state->characterCount(), 0);
}

void CoordinatorTest::documentGone_stateIsStillWritten()
{
    typeText(u"a"_s);
    m_document.reset();
    QCoreApplication::processEvents();
    QCOMPARE(m_state->text().toString(), u"a"_s);
}

QTEST_MAIN(CoordinatorTest)
#include "CoordinatorTest.moc"

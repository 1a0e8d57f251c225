#include "editor/DocumentState.h"

#include <QSignalSpy>
#include <QTest>

using namespace penwick;

class DocumentStateTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void newState_holdsInitialValues();
    void assignment_announcesBeforeAndAfter();
    void assignment_equalValue_announcesOnce();
};

void DocumentStateTest::newState_holdsInitialValues()
{
    const DocumentState state;
    QVERIFY(state.text().isEmpty());
    QCOMPARE(state.lineCount(), 1);
    QCOMPARE(state.characterCount(), 0);
    QCOMPARE(state.cursorLine(), 1);
    QCOMPARE(state.cursorColumn(), 1);
    QCOMPARE(state.encodingDisplay(), QStringLiteral("UTF-8"));
    QCOMPARE(state.newlineDisplay(), QStringLiteral("LF"));
    QVERIFY(!state.macroNotificationMessage().has_value());
}

void DocumentStateTest::assignment_announcesBeforeAndAfter()
{
    DocumentState state;
    qint64 seenBefore = -1;
    qint64 seenAfter = -1;
    connect(&state, &DocumentState::willChange, this, [&](DocumentState::Field field) {
        QCOMPARE(field, DocumentState::Field::LineCount);
        seenBefore = state.lineCount();
    });
    connect(&state, &DocumentState::didChange, this, [&](DocumentState::Field field) {
        QCOMPARE(field, DocumentState::Field::LineCount);
        seenAfter = state.lineCount();
    });
    state.setLineCount(12);
    QCOMPARE(seenBefore, 1);
    QCOMPARE(seenAfter, 12);
}

void DocumentStateTest::assignment_equalValue_announcesOnce()
{
    DocumentState state;
    const QSignalSpy spy(&state, &DocumentState::willChange);
    state.setMacroNotificationMessage(std::nullopt);
    QCOMPARE(spy.count(), 1);
    state.setText(state.text());
    QCOMPARE(spy.count(), 2);
}

QTEST_GUILESS_MAIN(DocumentStateTest)
#include "DocumentStateTest.moc"

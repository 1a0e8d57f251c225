#include "app/AppDelegateTestBase.h"
#include "app/MenuTable.h"
#include "command/CommandShortcut.h"
#include "view/CaretMover.h"
#include "view/ColumnMoves.h"
#include "view/EditKeys.h"
#include "window/MacroRunNotice.h"

#include <QHash>
#include <QKeyEvent>
#include <QSet>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

// Editing keys that the toolkit has on desktops, but not on the platform of the tests.
const QList<QKeyCombination> kDesktopKeys{
    Qt::CTRL | Qt::Key_K, Qt::CTRL | Qt::Key_U, Qt::CTRL | Qt::SHIFT | Qt::Key_A};

QList<QKeyCombination> keysOf(const Command &row)
{
    QList<QKeyCombination> keys;
    if (row.hasKey())
        keys << row.key;
    if (row.hasSecondKey())
        keys << row.second;
    return keys;
}

} // namespace

/// Tests of the table of all commands, and of the commands in the whole application.
class CommandsTest final : public QObject, private test::AppDelegateTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup() { end(); }

    void table_ids_eachHasOneRow();
    void table_names_differ();
    void table_keys_differ();
    void table_keys_areNotThoseOfTheTextView();
    void table_keys_areNotThoseOfTheToolkitsFields();
    void table_keys_enterNoCharacter();
    void menuItems_areRowsOfTheTable();
    void documentCommands_performed_reachTheFrontTab();
    void textCommands_performed_changeTheFrontTab();
    void textCommands_whileAMacroRuns_areNotAvailable();
    void startColumns_untilAMacro_selectsARectangle();
    void windowCommands_performed_switchTabs();
    void settingsFile_opened_isInATab();
};

void CommandsTest::table_ids_eachHasOneRow()
{
    QSet<int> ids;
    for (const Command &row : commands())
        ids.insert(static_cast<int>(row.id));
    QCOMPARE(ids.size(), qsizetype(commands().size()));
    for (int id = 0; id <= static_cast<int>(CommandId::ShowPalette); ++id)
        QVERIFY2(ids.contains(id), qPrintable(QString::number(id)));
}

void CommandsTest::table_names_differ()
{
    QSet<QString> names;
    QSet<QString> titles;
    for (const Command &row : commands()) {
        names.insert(row.name.toString());
        titles.insert(commandTitle(row.id));
    }
    QCOMPARE(names.size(), qsizetype(commands().size()));
    QCOMPARE(titles.size(), qsizetype(commands().size()));
}

void CommandsTest::table_keys_differ()
{
    QHash<int, QString> owners;
    for (const Command &row : commands())
        for (const QKeyCombination key : keysOf(row)) {
            QVERIFY2(!owners.contains(key.toCombined()), qPrintable(row.name.toString()));
            owners.insert(key.toCombined(), row.name.toString());
        }
}

void CommandsTest::table_keys_areNotThoseOfTheTextView()
{
    for (const Command &row : commands())
        for (const QKeyCombination key : keysOf(row)) {
            const QKeyEvent press(QEvent::KeyPress, key.key(), key.keyboardModifiers());
            const bool isTaken = editCommandFor(press) || caretMoveFor(press) ||
                                 columnMoveFor(press) || kDesktopKeys.contains(key);
            QVERIFY2(isTaken == (row.place == CommandPlace::Focus),
                     qPrintable(row.name.toString()));
        }
}

void CommandsTest::table_keys_areNotThoseOfTheToolkitsFields()
{
    using Standard = QKeySequence::StandardKey;
    // From the toolkit's list of editing keys; the others name commands such as Open.
    QSet<QString> fields;
    const QSet<Standard> commandKeys{
        Standard::SaveAs, Standard::Preferences, Standard::Quit, Standard::FullScreen};
    for (int key = Standard::MoveToNextChar; key <= Standard::DeleteCompleteLine; ++key)
        for (const QKeySequence &keys : QKeySequence::keyBindings(static_cast<Standard>(key)))
            if (!commandKeys.contains(static_cast<Standard>(key)))
                fields.insert(keys.toString());
    for (const auto key : {Standard::Cut,
                           Standard::Copy,
                           Standard::Paste,
                           Standard::Undo,
                           Standard::Redo,
                           Standard::Delete,
                           Standard::SelectAll,
                           Standard::Backspace})
        for (const QKeySequence &keys : QKeySequence::keyBindings(key))
            fields.insert(keys.toString());
    fields.remove(u"F11"_s); // Full screen, which stands among the editing keys.
    for (const QKeyCombination key : kDesktopKeys)
        fields.insert(QKeySequence(key).toString());
    for (const Command &row : commands())
        for (const QKeyCombination key : keysOf(row))
            QVERIFY2(fields.contains(QKeySequence(key).toString()) ==
                         (row.place == CommandPlace::Focus),
                     qPrintable(row.name.toString()));
}

void CommandsTest::table_keys_enterNoCharacter()
{
    for (const Command &row : commands())
        for (const QKeyCombination key : keysOf(row)) {
            const bool isFunctionKey = key.key() >= Qt::Key_F1 && key.key() <= Qt::Key_F12;
            const bool isCommand = key.keyboardModifiers().testFlag(Qt::ControlModifier) ||
                                   key == (Qt::ALT | Qt::Key_Up) || key == (Qt::ALT | Qt::Key_Down);
            QVERIFY2(isFunctionKey || isCommand, qPrintable(row.name.toString()));
            // Input methods use them.
            QVERIFY(key.key() != Qt::Key_Space);
        }
}

void CommandsTest::menuItems_areRowsOfTheTable()
{
    QHash<CommandId, QString> keys;
    launch();
    for (const QAction *item : menu(1)->actions())
        if (!item->isSeparator())
            keys.insert(static_cast<CommandId>(item->data().toInt()), item->shortcut().toString());
    QCOMPARE(keys.value(CommandId::SaveDocumentAs), u"Ctrl+Shift+S"_s);
    QCOMPARE(keys.size(), 5);
    for (auto key = keys.cbegin(); key != keys.cend(); ++key)
        QCOMPARE(*key, shownKey(key.key()).toString());
}

void CommandsTest::documentCommands_performed_reachTheFrontTab()
{
    launch();
    setText(u"a\nb"_s);
    AppCommands app(m_app.get());
    QVERIFY(!app.commandState(CommandId::ConvertToLf).isAvailable);
    QVERIFY(app.commandState(CommandId::ConvertToCrLf).isAvailable);
    app.performCommand(CommandId::ConvertToCrLf);
    QTRY_COMPARE(text(), u"a\r\nb"_s);
    QCOMPARE(app.commandState(CommandId::ShowBlanks).isOn, std::optional(false));
    app.performCommand(CommandId::ShowBlanks);
    QCOMPARE(app.commandState(CommandId::ShowBlanks).isOn, std::optional(true));
    app.performCommand(CommandId::ShowBlanks);
    for (const CommandId id :
         {CommandId::ShowLineNumbers, CommandId::MarkCurrentLine, CommandId::ShowAllMarks}) {
        QCOMPARE(app.commandState(id).isOn, std::optional(false));
        app.performCommand(id);
        QCOMPARE(app.commandState(id).isOn, std::optional(true));
        app.performCommand(id);
        QCOMPARE(app.commandState(id).isOn, std::optional(false));
    }
    app.performCommand(CommandId::Find);
    const auto *field = controller()->window()->findChild<QWidget *>(u"findField"_s);
    QVERIFY(field != nullptr && field->isVisible());
}

void CommandsTest::textCommands_performed_changeTheFrontTab()
{
    launch();
    AppCommands app(m_app.get());
    setText(u"b\na"_s);
    TextView *view = controller()->textView();
    view->setSelectedRange({2, 0});
    QVERIFY(!app.commandState(CommandId::SortLines).isAvailable);
    QVERIFY(!app.commandState(CommandId::UpperCase).isAvailable);
    QVERIFY(!app.commandState(CommandId::MoveLinesDown).isAvailable);
    QVERIFY(app.commandState(CommandId::MoveLinesUp).isAvailable);
    view->selectAll();
    QVERIFY(app.commandState(CommandId::SortLines).isAvailable);
    const QList<std::pair<CommandId, QString>> steps{
        {CommandId::SortLines, u"a\nb"_s},
        {CommandId::UpperCase, u"A\nB"_s},
        {CommandId::FullWidth, u"Ａ\nＢ"_s},
        {CommandId::LowerCase, u"ａ\nｂ"_s},
        {CommandId::HalfWidth, u"a\nb"_s},
        {CommandId::Indent, u"\ta\n\tb"_s},
        {CommandId::TabsToBlanks, u"    a\n    b"_s},
        {CommandId::BlanksToTabs, u"\ta\n\tb"_s},
        {CommandId::Outdent, u"a\nb"_s},
        {CommandId::JoinLines, u"a b"_s},
    };
    for (const auto &[id, expected] : steps) {
        app.performCommand(id);
        QTRY_COMPARE(text(), expected);
    }
}

void CommandsTest::textCommands_whileAMacroRuns_areNotAvailable()
{
    launch();
    AppCommands app(m_app.get());
    setText(u"b"_s);
    QVERIFY(app.commandState(CommandId::DuplicateLines).isAvailable);
    controller()->runMacro(u"while (true) ;"_s, u"id"_s, u"name"_s, std::nullopt);
    QVERIFY(controller()->isRunningMacro());
    QVERIFY(!app.commandState(CommandId::DuplicateLines).isAvailable);
    app.performCommand(CommandId::DuplicateLines);
    controller()->window()->findChild<MacroRunNotice *>()->reject();
    QTRY_VERIFY(!controller()->isRunningMacro());
    QCOMPARE(text(), u"b"_s);
    QVERIFY(app.commandState(CommandId::DuplicateLines).isAvailable);
}

void CommandsTest::startColumns_untilAMacro_selectsARectangle()
{
    launch();
    AppCommands app(m_app.get());
    setText(u"\nabc\nabc"_s);
    TextView *view = controller()->textView();
    view->setSelectedRange({0, 0});
    app.performCommand(CommandId::StartColumns);
    QVERIFY(view->columns() != nullptr && !view->hasSelection());
    QVERIFY(!app.commandState(CommandId::Copy).isAvailable);
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Right})
        QTest::keyClick(view, key, Qt::ShiftModifier);
    // The first row has no character.
    QVERIFY(view->hasSelection() && view->selectedRange().isEmpty());
    QVERIFY(app.commandState(CommandId::Copy).isAvailable);
    QTest::keyClick(view, Qt::Key_Home, Qt::ControlModifier);
    view->setSelectedRange({1, 0});
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Right})
        QTest::keyClick(view, key, Qt::AltModifier | Qt::ShiftModifier);
    controller()->runMacro(
        u"return { notifications: [{ type: 'info', message: context.selection.text }] };"_s,
        u"id"_s,
        u"name"_s,
        std::nullopt);
    QTRY_VERIFY(!controller()->isRunningMacro());
    QVERIFY(view->columns() == nullptr);
    QCOMPARE(view->selectedRange(), (TextRange{1, 1}));
}

void CommandsTest::windowCommands_performed_switchTabs()
{
    launch();
    AppCommands app(m_app.get());
    QVERIFY(!app.commandState(CommandId::NextTab).isAvailable);
    app.performCommand(CommandId::NewDocument);
    QVERIFY(app.commandState(CommandId::NextTab).isAvailable);
    QVERIFY(controller(1)->isInFront());
    activate(1);
    app.performCommand(CommandId::NextTab);
    QVERIFY(controller(0)->isInFront());
    app.performCommand(CommandId::PreviousTab);
    QVERIFY(controller(1)->isInFront());
    setText(u"abc"_s, 1);
    app.performCommand(CommandId::SelectAll);
    app.performCommand(CommandId::FullScreen);
    QVERIFY(controller(1)->window()->isFullScreen());
    QCOMPARE(app.commandState(CommandId::FullScreen).isOn, std::optional(true));
    activate(1);
    QTest::keyClick(controller(1)->textView(), Qt::Key_F11);
    QVERIFY(!controller(1)->window()->isFullScreen());
    QCOMPARE(controller(1)->textView()->selectedRange(), (TextRange{0, 3}));
    QVERIFY(app.commandState(CommandId::Deselect).isAvailable);
    app.performCommand(CommandId::Deselect);
    QVERIFY(!app.commandState(CommandId::Deselect).isAvailable);
}

void CommandsTest::settingsFile_opened_isInATab()
{
    launch();
    UserDefaults &settings = UserDefaults::standard();
    QVERIFY(settings.setString(u"zoom"_s, u"110"_s));
    AppCommands app(m_app.get());
    app.performCommand(CommandId::OpenSettingsFile);
    QCOMPARE(controller()->document()->filePath(), m_home.file(u"config/penwick/penwick.conf"_s));
    QVERIFY(text().contains(u"zoom=110"_s));
    QVERIFY(settings.remove(u"zoom"_s));
}

QTEST_MAIN(CommandsTest)
#include "CommandsTest.moc"

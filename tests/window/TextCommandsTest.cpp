#include "window/TextCommands.h"

#include "support/ShownTextView.h"
#include "support/TemporaryHome.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class TextCommandsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keys_changeTheSelectedLines_data();
    void keys_changeTheSelectedLines();
    void perform_isOneUndoStepWithTheSelection();
    void perform_withAComposition_keepsItsText();
    void perform_nothingToChange_registersNoUndoStep();
    void perform_largeTextEditedMeanwhile_isDropped();
    void perform_beyondTheScreen_showsTheCaret();
    void rectangle_lineCommandsTakeItsLines();
    void rectangle_charactersOfEachRowChange_data();
    void rectangle_charactersOfEachRowChange();
    void rectangle_withoutWidth_hasNoCharacters();
    void settings_data();
    void settings();
    void settings_changeWhatTheKeysInsert();
    void settings_changed_actAtOnce();
    void settings_tabWidth_movesTheTabStops();
    void settings_none_leaveTheKeysAsTheyWere();
};

namespace {

/// A view with the commands.
struct Commanded
{
    explicit Commanded(QStringView text, const QByteArray &settings = {}, int wait = 5000)
        : defaults(home.write(u"penwick.conf"_s, "[General]\n" + settings))
        , shown(text)
    {
        commands = std::make_unique<TextCommands>(&shown.view, &shown.view, preferences, wait);
    }

    void select(qint64 anchor, qint64 caret) { shown.view.setSelectionInPlace(anchor, caret); }

    test::TemporaryHome home;
    UserDefaults defaults;
    Preferences preferences{defaults};
    test::ShownTextView shown;
    std::unique_ptr<TextCommands> commands;
};

} // namespace

void TextCommandsTest::keys_changeTheSelectedLines_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<TextRange>("selection");
    QTest::addColumn<QString>("expected");
    const Qt::KeyboardModifiers none = Qt::NoModifier;
    const Qt::KeyboardModifiers shift = Qt::ShiftModifier;
    const Qt::KeyboardModifiers alt = Qt::AltModifier;
    const auto row = [](const char *name,
                        int key,
                        Qt::KeyboardModifiers modifiers,
                        TextRange selection,
                        const QString &expected) {
        QTest::newRow(name) << key << modifiers << selection << expected;
    };
    // The text is "\tone\r\ntwo\r\n  three".
    row("Tab", Qt::Key_Tab, none, {2, 6}, u"\t\tone\r\n\ttwo\r\n  three"_s);
    row("Tab in a line", Qt::Key_Tab, none, {2, 1}, u"\to\te\r\ntwo\r\n  three"_s);
    row("Tab, one whole line", Qt::Key_Tab, none, {0, 6}, u"\ttwo\r\n  three"_s);
    row("Tab, caret", Qt::Key_Tab, none, {6, 0}, u"\tone\r\n\ttwo\r\n  three"_s);
    row("Shift+Tab", Qt::Key_Backtab, shift, {0, 14}, u"one\r\ntwo\r\nthree"_s);
    row("Shift+Tab in a line", Qt::Key_Backtab, shift, {0, 3}, u"\tone\r\ntwo\r\n  three"_s);
    row("duplicate",
        Qt::Key_D,
        Qt::ControlModifier | shift,
        {7, 0},
        u"\tone\r\ntwo\r\ntwo\r\n  three"_s);
    row("up", Qt::Key_Up, alt, {12, 0}, u"\tone\r\n  three\r\ntwo"_s);
    row("down", Qt::Key_Down, alt, {0, 8}, u"  three\r\n\tone\r\ntwo"_s);
}

void TextCommandsTest::keys_changeTheSelectedLines()
{
    QFETCH(const int, key);
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    QFETCH(const TextRange, selection);
    QFETCH(const QString, expected);
    Commanded f(u"\tone\r\ntwo\r\n  three");
    f.shown.view.setSelectedRange(selection);
    f.shown.key(static_cast<Qt::Key>(key), modifiers);
    QTRY_COMPARE(f.shown.text(), expected);
}

void TextCommandsTest::perform_isOneUndoStepWithTheSelection()
{
    const QString text = u"b \r\n\r\n\u3000a\t\u2028c "_s;
    Commanded f(text);
    f.select(text.size(), 0);
    f.commands->perform(TextChangeKind::TrimEnds);
    QTRY_COMPARE(f.shown.text(), u"b\r\n\r\n\u3000a\u2028c"_s);
    QCOMPARE(f.shown.view.anchorOffset(), f.shown.view.string().size());
    QCOMPARE(f.shown.view.caretOffset(), 0);
    f.shown.view.undo();
    QCOMPARE(f.shown.text(), text);
    QCOMPARE(f.shown.view.selectedRange(), (TextRange{0, text.size()}));
    QVERIFY(!f.shown.storage.canUndo());
    f.shown.view.redo();
    QCOMPARE(f.shown.text(), u"b\r\n\r\n\u3000a\u2028c"_s);
}

void TextCommandsTest::perform_withAComposition_keepsItsText()
{
    Commanded f(u"a\nb");
    f.shown.caret(3);
    f.shown.compose(u"か"_s);
    f.commands->perform(TextChangeKind::MoveUp);
    f.shown.view.commitMarkedText();
    QTRY_VERIFY(f.shown.text().startsWith(u'b'));
    QVERIFY(!f.shown.view.hasMarkedText());
}

void TextCommandsTest::perform_nothingToChange_registersNoUndoStep()
{
    Commanded f(u"a\nb");
    f.select(0, 3);
    QVERIFY(f.commands->canPerform(TextChangeKind::Sort));
    f.commands->perform(TextChangeKind::Sort);
    f.commands->perform(TextChangeKind::TrimEnds);
    QVERIFY(!f.commands->canPerform(TextChangeKind::MoveUp));
    f.commands->perform(TextChangeKind::MoveUp);
    QCOMPARE(f.shown.text(), u"a\nb"_s);
    QVERIFY(!f.shown.storage.canUndo());
}

void TextCommandsTest::perform_largeTextEditedMeanwhile_isDropped()
{
    Commanded f(u"b \na \n"_s.repeated(400'000), {}, 0);
    f.shown.view.selectAll();
    f.commands->perform(TextChangeKind::Sort);
    // The work has not been applied, whether or not it has ended.
    f.shown.view.replaceText({0, 0}, Text(u"!"));
    const Text edited = f.shown.view.string();
    f.select(0, edited.size());
    f.commands->perform(TextChangeKind::TrimEnds);
    QTRY_VERIFY(!f.shown.view.string().isSameValue(edited));
    QVERIFY(f.shown.text().startsWith(u"!b\na\nb\n"));
}

void TextCommandsTest::perform_beyondTheScreen_showsTheCaret()
{
    Commanded f(u"line\n"_s.repeated(300));
    f.shown.caret(0);
    for (int i = 0; i < 200; ++i)
        f.shown.key(Qt::Key_Down, Qt::AltModifier);
    QCOMPARE(f.shown.view.caretOffset(), 1000);
    QVERIFY(!f.shown.storage.canUndo()); // The lines are equal.
    f.shown.view.replaceText({0, 0}, Text(u"first "));
    f.shown.caret(0);
    for (int i = 0; i < 200; ++i)
        f.shown.key(Qt::Key_Down, Qt::AltModifier);
    QCOMPARE(f.shown.view.caretOffset(), 1000);
    const QRectF caret = f.shown.view.caretRectAt(1000);
    QVERIFY(QRectF(f.shown.view.viewport()->rect()).contains(caret));
}

void TextCommandsTest::rectangle_lineCommandsTakeItsLines()
{
    Commanded f(u"c1\nb2\na3\nx");
    f.shown.view.selectRectangle({{0, 0}, {2, 1}});
    f.commands->perform(TextChangeKind::Sort);
    QTRY_COMPARE(f.shown.text(), u"a3\nb2\nc1\nx"_s);
    f.shown.view.undo();
    QCOMPARE(f.shown.text(), u"c1\nb2\na3\nx"_s);
}

void TextCommandsTest::rectangle_charactersOfEachRowChange_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<TextChangeKind>("kind");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("selected");
    QTest::newRow("upper case") << u"abcd\r\nefgh\nij"_s << TextChangeKind::UpperCase
                                << u"aBCd\r\neFGh\niJ"_s << u"BC\nFG\nJ"_s;
    QTest::newRow("a short line stays")
        << u"abcd\n\nijkl"_s << TextChangeKind::UpperCase << u"aBCd\n\niJKl"_s << u"BC\n\nJK"_s;
    QTest::newRow("wider") << u"abcd\nefgh\nijkl"_s << TextChangeKind::FullWidth
                           << u"aｂｃd\neｆｇh\niｊｋl"_s << u"ｂｃ\nｆｇ\nｊｋ"_s;
    QTest::newRow("a tab in a row") << u"a\tcd\nabcdef\nabcdef"_s << TextChangeKind::UpperCase
                                    << u"a\tcd\naBCdef\naBCdef"_s << u"\nBC\nBC"_s;
    QTest::newRow("a wide character across the left edge")
        << u"漢字\nabcd\nabcd"_s << TextChangeKind::UpperCase << u"漢字\naBCd\naBCd"_s
        << u"漢\nBC\nBC"_s;
    QTest::newRow("narrower") << u"aｂd\neｆh\niｊl"_s << TextChangeKind::HalfWidth
                              << u"abd\nefh\nijl"_s << u"b\nf\nj"_s;
}

void TextCommandsTest::rectangle_charactersOfEachRowChange()
{
    QFETCH(QString, text);
    QFETCH(TextChangeKind, kind);
    QFETCH(QString, expected);
    QFETCH(QString, selected);
    Commanded f(text);
    TextView &view = f.shown.view;
    view.selectRectangle({{0, 1}, {2, 3}});
    QVERIFY(f.commands->canPerform(kind));
    f.commands->perform(kind);
    QTRY_COMPARE(f.shown.text(), expected);
    QVERIFY(view.columns() != nullptr);
    const TextRectangle rectangle = view.columns()->rectangle(view.string());
    QCOMPARE(textOf(view.string(), rectangle, 4)->toString(), selected);
    view.undo();
    QCOMPARE(f.shown.text(), text);
}

void TextCommandsTest::rectangle_withoutWidth_hasNoCharacters()
{
    Commanded f(u"abc\ndef"_s);
    f.shown.view.selectRectangle({{0, 1}, {1, 1}});
    QVERIFY(!f.commands->canPerform(TextChangeKind::UpperCase));
    QVERIFY(f.commands->canPerform(TextChangeKind::Sort));
}

void TextCommandsTest::settings_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<int>("width");
    QTest::addColumn<bool>("insertsBlanks");
    QTest::addColumn<bool>("isKept");
    QTest::newRow("none") << QByteArray() << 4 << false << false;
    QTest::newRow("all") << QByteArray("tabWidth=8\ntabKeyInserts=spaces\nkeepIndentation=true\n")
                         << 8 << true << true;
    QTest::newRow("bounds") << QByteArray("tabWidth=16\n") << 16 << false << false;
    QTest::newRow("one") << QByteArray("tabWidth=1\n") << 1 << false << false;
    QTest::newRow("too wide") << QByteArray("tabWidth=17\ntabKeyInserts=spaces\n") << 4 << true
                              << false;
    QTest::newRow("no width") << QByteArray("tabWidth=0\nkeepIndentation=true\n") << 4 << false
                              << true;
    QTest::newRow("broken") << QByteArray("tabWidth=wide\ntabKeyInserts=2\nkeepIndentation=yes\n")
                            << 4 << false << false;
}

void TextCommandsTest::settings()
{
    QFETCH(const QByteArray, settings);
    QFETCH(const int, width);
    QFETCH(const bool, insertsBlanks);
    QFETCH(const bool, isKept);
    const Commanded f(u"", settings);
    QCOMPARE(f.shown.view.indentation(), (Indentation{width, insertsBlanks, isKept}));
}

void TextCommandsTest::settings_changeWhatTheKeysInsert()
{
    Commanded f(u"\u3000\ta", "tabKeyInserts=spaces\nkeepIndentation=true\n");
    f.shown.caret(3);
    f.shown.key(Qt::Key_Return);
    f.shown.key(Qt::Key_X);
    f.shown.key(Qt::Key_Tab);
    QCOMPARE(f.shown.text(), u"\u3000\ta\n\u3000\tx   "_s);
    f.shown.view.undo();
    f.shown.view.undo();
    QCOMPARE(f.shown.text(), u"\u3000\ta"_s);
}

void TextCommandsTest::settings_changed_actAtOnce()
{
    Commanded f(u"");
    f.preferences.setNumber(PreferenceId::TabWidth, 2);
    f.preferences.setText(PreferenceId::TabKeyInserts, u"spaces"_s);
    f.shown.key(Qt::Key_Tab);
    QCOMPARE(f.shown.text(), u"  "_s);
    f.preferences.setOn(PreferenceId::KeepsIndentation, true);
    f.shown.key(Qt::Key_Return);
    QCOMPARE(f.shown.text(), u"  \n  "_s);
    f.preferences.reset(PreferenceId::TabKeyInserts);
    f.shown.key(Qt::Key_Tab);
    QCOMPARE(f.shown.text(), u"  \n  \t"_s);
}

void TextCommandsTest::settings_tabWidth_movesTheTabStops()
{
    const Commanded narrow(u"\ta\n12345678", "tabWidth=2\n");
    const Commanded wide(u"\ta\n12345678", "tabWidth=8\n");
    const auto x = [](const Commanded &f, qint64 offset) {
        return f.shown.view.caretRectAt(offset).x();
    };
    QVERIFY(qAbs(x(narrow, 1) - x(narrow, 5)) <= 1);
    QVERIFY(qAbs(x(wide, 1) - x(wide, 11)) <= 1);
}

void TextCommandsTest::settings_none_leaveTheKeysAsTheyWere()
{
    Commanded f(u"  a");
    f.shown.caret(3);
    f.shown.key(Qt::Key_Return);
    f.shown.key(Qt::Key_Tab);
    QCOMPARE(f.shown.text(), u"  a\n\t"_s);
}

QTEST_MAIN(TextCommandsTest)
#include "TextCommandsTest.moc"

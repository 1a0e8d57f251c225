#include "macro/engine/MacroContext.h"

#include "macro/engine/ContextJson.h"
#include "wording/WordingLookup.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

EditorSnapshot snapshotOf(const QString &text, qint64 location = 0, qint64 length = 0)
{
    EditorSnapshot snapshot;
    snapshot.text = Text(text);
    snapshot.selectionLocation = location;
    snapshot.selectionLength = length;
    snapshot.now = QDateTime::fromString(u"2024-02-29T03:04:05.999Z"_s, Qt::ISODateWithMs);
    snapshot.timeZone = QTimeZone("Asia/Tokyo");
    return snapshot;
}

MacroContext contextOf(const EditorSnapshot &snapshot)
{
    return buildMacroContext(snapshot, u"the id"_s, u"the name"_s);
}

MacroContext contextOf(const QString &text, qint64 location = 0, qint64 length = 0)
{
    return contextOf(snapshotOf(text, location, length));
}

} // namespace

class MacroContextTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void document_empty_hasOneLineAndZeros();
    void document_counts_areOfLineFeedsAndClusters_data();
    void document_counts_areOfLineFeedsAndClusters();
    void document_crLfText_stillClaimsLf();
    void document_isModified_isPassedOn();
    void cursor_atTheEndOfTheSecondLine_isThere();
    void cursor_afterAnEmoji_mixesUnits_data();
    void cursor_afterAnEmoji_mixesUnits();
    void selection_ofLengthZero_isNone();
    void selection_overTwoLines_hasBothPlaces();
    void file_unsaved_isEmptyAndUntitled();
    void file_untitled_followsTheWording();
    void file_saved_showsItsNameOnly();
    void file_extension_isWhatFollowsTheLastDot_data();
    void file_extension_isWhatFollowsTheLastDot();
    void dateTime_nowIso_isInTheZone_data();
    void dateTime_nowIso_isInTheZone();
    void fixedValues_areAsScriptsKnowThem();
    void lineAndColumn_ofOffset_countsLineFeedsAndClusters_data();
    void lineAndColumn_ofOffset_countsLineFeedsAndClusters();
    void toDictionary_ofAContext_hasExactlyTheKeys();
};

void MacroContextTest::cleanup()
{
    wording::setActiveValues(std::nullopt);
}

void MacroContextTest::document_empty_hasOneLineAndZeros()
{
    const MacroContext context = contextOf(QString());
    QCOMPARE(context.document.lineCount, 1);
    QCOMPARE(context.document.characterCount, 0);
    QVERIFY(context.selection == MacroContext::Selection());
    QVERIFY(!context.selection.hasSelection);
    QVERIFY(context.selection.text.isEmpty());
    QVERIFY(context.cursor == MacroContext::Cursor());
}

void MacroContextTest::document_counts_areOfLineFeedsAndClusters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("lines");
    QTest::addColumn<qint64>("characters");

    QTest::newRow("one letter") << u"a"_s << qint64{1} << qint64{1};
    QTest::newRow("final line feed") << u"a\n"_s << qint64{2} << qint64{2};
    QTest::newRow("cr lf") << u"a\r\nb"_s << qint64{2} << qint64{3};
    QTest::newRow("lone cr") << u"a\rb"_s << qint64{1} << qint64{3};
    QTest::newRow("line separator") << u"a\u2028b"_s << qint64{1} << qint64{3};
    QTest::newRow("family") << u"👨‍👩‍👧"_s << qint64{1} << qint64{1};
}

void MacroContextTest::document_counts_areOfLineFeedsAndClusters()
{
    QFETCH(QString, text);
    QFETCH(qint64, lines);
    QFETCH(qint64, characters);
    const MacroContext context = contextOf(text);
    QCOMPARE(context.document.text.toString(), text);
    QCOMPARE(context.document.lineCount, lines);
    QCOMPARE(context.document.characterCount, characters);
}

// Files in other encodings are never opened, so only the line ends can differ.
void MacroContextTest::document_crLfText_stillClaimsLf()
{
    const MacroContext context = contextOf(u"a\r\nb\r\n"_s);
    QCOMPARE(context.document.newline, u"LF"_s);
    QCOMPARE(context.document.encoding, u"UTF-8"_s);
}

void MacroContextTest::document_isModified_isPassedOn()
{
    EditorSnapshot snapshot = snapshotOf(u"a"_s);
    QVERIFY(!contextOf(snapshot).document.isModified);
    snapshot.isModified = true;
    QVERIFY(contextOf(snapshot).document.isModified);
}

void MacroContextTest::cursor_atTheEndOfTheSecondLine_isThere()
{
    const MacroContext context = contextOf(u"a\nb"_s, 3);
    QCOMPARE(context.cursor.offset, 3);
    QCOMPARE(context.cursor.line, 1);
    QCOMPARE(context.cursor.column, 1);
}

void MacroContextTest::cursor_afterAnEmoji_mixesUnits_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("units");

    QTest::newRow("one astral code point") << u"😀"_s << qint64{2};
    QTest::newRow("family") << u"👨‍👩‍👧"_s << qint64{8};
    QTest::newRow("flag") << u"🇯🇵"_s << qint64{4};
}

void MacroContextTest::cursor_afterAnEmoji_mixesUnits()
{
    QFETCH(QString, text);
    QFETCH(qint64, units);
    const MacroContext context = contextOf(text, text.size());
    QCOMPARE(context.cursor.offset, units);
    QCOMPARE(context.cursor.line, 0);
    QCOMPARE(context.cursor.column, 1);
}

void MacroContextTest::selection_ofLengthZero_isNone()
{
    const MacroContext context = contextOf(u"abc"_s, 2);
    QVERIFY(!context.selection.hasSelection);
    QVERIFY(context.selection.text.isEmpty());
    QCOMPARE(context.selection.startOffset, 2);
    QCOMPARE(context.selection.endOffset, 2);
}

void MacroContextTest::selection_overTwoLines_hasBothPlaces()
{
    const MacroContext context = contextOf(u"one\n日本😀x\nthree"_s, 1, 7);
    QVERIFY(context.selection.hasSelection);
    QCOMPARE(context.selection.text.toString(), u"ne\n日本😀"_s);
    QCOMPARE(context.selection.startOffset, 1);
    QCOMPARE(context.selection.endOffset, 8);
    QCOMPARE(context.selection.startLine, 0);
    QCOMPARE(context.selection.startColumn, 1);
    QCOMPARE(context.selection.endLine, 1);
    QCOMPARE(context.selection.endColumn, 3);
    QVERIFY(context.cursor == (MacroContext::Cursor{8, 1, 3}));
}

void MacroContextTest::file_unsaved_isEmptyAndUntitled()
{
    const MacroContext context = contextOf(u"a"_s);
    QVERIFY(context.file == MacroContext::File());
    QVERIFY(!context.file.existsOnDisk);
    QCOMPARE(context.editor.tabTitle, u"名称未設定"_s);
}

void MacroContextTest::file_untitled_followsTheWording()
{
    wording::setActiveValues(QHash<QString, QString>{{u"editor.untitled"_s, u"Untitled"_s}});
    QCOMPARE(contextOf(u"a"_s).editor.tabTitle, u"Untitled"_s);
}

void MacroContextTest::file_saved_showsItsNameOnly()
{
    EditorSnapshot snapshot = snapshotOf(u"a"_s);
    snapshot.filePath = u"/no such folder/notes.txt"_s;
    const MacroContext context = contextOf(snapshot);
    QCOMPARE(context.file.name, u"notes.txt"_s);
    QCOMPARE(context.file.extension, u"txt"_s);
    QCOMPARE(context.file.path, QString());
    QCOMPARE(context.file.directoryPath, QString());
    QVERIFY(context.file.existsOnDisk);
    QCOMPARE(context.editor.tabTitle, u"notes.txt"_s);
}

void MacroContextTest::file_extension_isWhatFollowsTheLastDot_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("extension");

    QTest::newRow("two dots") << u"a.tar.gz"_s << u"gz"_s;
    QTest::newRow("none") << u"README"_s << QString();
    QTest::newRow("hidden") << u".profile"_s << QString();
    QTest::newRow("hidden with extension") << u".notes.md"_s << u"md"_s;
    QTest::newRow("dot at the end") << u"a."_s << QString();
    QTest::newRow("dot in the folder only") << u"x.d/a"_s << QString();
    QTest::newRow("Japanese") << u"日記.テキスト"_s << u"テキスト"_s;
}

void MacroContextTest::file_extension_isWhatFollowsTheLastDot()
{
    QFETCH(QString, name);
    QFETCH(QString, extension);
    EditorSnapshot snapshot = snapshotOf(u"a"_s);
    snapshot.filePath = u"/tmp/"_s + name;
    QCOMPARE(contextOf(snapshot).file.extension, extension);
}

void MacroContextTest::dateTime_nowIso_isInTheZone_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QString>("text");

    QTest::newRow("east") << QByteArray("Asia/Tokyo") << u"2024-02-29T12:04:05+09:00"_s;
    QTest::newRow("no offset") << QByteArray("UTC") << u"2024-02-29T03:04:05Z"_s;
    QTest::newRow("west, the day before")
        << QByteArray("America/New_York") << u"2024-02-28T22:04:05-05:00"_s;
    QTest::newRow("half an hour, west")
        << QByteArray("America/St_Johns") << u"2024-02-28T23:34:05-03:30"_s;
    QTest::newRow("three quarters")
        << QByteArray("Asia/Kathmandu") << u"2024-02-29T08:49:05+05:45"_s;
    QTest::newRow("winter in London") << QByteArray("Europe/London") << u"2024-02-29T03:04:05Z"_s;
}

void MacroContextTest::dateTime_nowIso_isInTheZone()
{
    QFETCH(QByteArray, zone);
    QFETCH(QString, text);
    EditorSnapshot snapshot = snapshotOf(u"a"_s);
    snapshot.timeZone = QTimeZone(zone);
    const MacroContext context = contextOf(snapshot);
    QCOMPARE(context.dateTime.nowIso, text);
    QCOMPARE(context.dateTime.timezone, QString::fromLatin1(zone));
}

void MacroContextTest::fixedValues_areAsScriptsKnowThem()
{
    const MacroContext context = contextOf(u"a"_s);
    QCOMPARE(context.schemaVersion, u"1.0"_s);
    QCOMPARE(context.app.name, u"penwick"_s);
    QCOMPARE(context.app.version, u"1.0.0"_s);
    QCOMPARE(context.editor.tabId, u"tab_main"_s);
    QCOMPARE(context.macro.id, u"the id"_s);
    QCOMPARE(context.macro.name, u"the name"_s);
    const MacroContext::Capabilities &can = context.capabilities;
    QVERIFY(can.textEdit && can.selection && can.cursor && can.notifications);
    QVERIFY(!can.settingsPatch && !can.fileAccess && !can.clipboard && !can.network);
}

void MacroContextTest::lineAndColumn_ofOffset_countsLineFeedsAndClusters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<qint64>("line");
    QTest::addColumn<qint64>("column");

    const QString text = u"ab\ne\u0301x\n"_s;
    QTest::newRow("start") << text << qint64{0} << qint64{0} << qint64{0};
    QTest::newRow("before the line feed") << text << qint64{2} << qint64{0} << qint64{2};
    QTest::newRow("after the line feed") << text << qint64{3} << qint64{1} << qint64{0};
    QTest::newRow("inside a cluster") << text << qint64{4} << qint64{1} << qint64{1};
    QTest::newRow("after a cluster") << text << qint64{5} << qint64{1} << qint64{1};
    QTest::newRow("end") << text << qint64{7} << qint64{2} << qint64{0};
    QTest::newRow("past the end") << text << qint64{99} << qint64{2} << qint64{0};
    QTest::newRow("empty text") << QString() << qint64{5} << qint64{0} << qint64{0};
    QTest::newRow("between cr and lf") << u"a\r\nb"_s << qint64{2} << qint64{0} << qint64{2};
    QTest::newRow("after cr lf") << u"a\r\nb"_s << qint64{3} << qint64{1} << qint64{0};
}

void MacroContextTest::lineAndColumn_ofOffset_countsLineFeedsAndClusters()
{
    QFETCH(QString, text);
    QFETCH(qint64, offset);
    QFETCH(qint64, line);
    QFETCH(qint64, column);
    const LineAndColumn place = lineAndColumn(offset, Text(text));
    QCOMPARE(place.line, line);
    QCOMPARE(place.column, column);
}

void MacroContextTest::toDictionary_ofAContext_hasExactlyTheKeys()
{
    EditorSnapshot snapshot = snapshotOf(u"日本\n語"_s, 1, 2);
    snapshot.filePath = u"/tmp/notes.txt"_s;
    snapshot.isModified = true;
    const QString json = contextJson(contextOf(snapshot).toDictionary());
    const QByteArray expected = R"({
        "schemaVersion": "1.0",
        "app": {"name": "penwick", "version": "1.0.0"},
        "capabilities": {"textEdit": true, "selection": true, "cursor": true,
            "notifications": true, "settingsPatch": false, "fileAccess": false,
            "clipboard": false, "network": false},
        "document": {"text": "日本\n語", "lineCount": 2, "characterCount": 4, "newline": "LF",
            "encoding": "UTF-8", "isModified": true},
        "file": {"name": "notes.txt", "path": "", "directoryPath": "", "extension": "txt",
            "existsOnDisk": true},
        "selection": {"hasSelection": true, "text": "本\n", "startOffset": 1, "endOffset": 3,
            "startLine": 0, "startColumn": 1, "endLine": 1, "endColumn": 0},
        "cursor": {"offset": 3, "line": 1, "column": 0},
        "editor": {"tabId": "tab_main", "tabTitle": "notes.txt"},
        "dateTime": {"nowIso": "2024-02-29T12:04:05+09:00", "timezone": "Asia/Tokyo"},
        "macro": {"id": "the id", "name": "the name"}
    })";
    const QJsonDocument expectedDocument = QJsonDocument::fromJson(expected);
    QVERIFY(expectedDocument.isObject());
    QCOMPARE(QJsonDocument::fromJson(json.toUtf8()).object(), expectedDocument.object());
}

} // namespace penwick

QTEST_GUILESS_MAIN(penwick::MacroContextTest)
#include "MacroContextTest.moc"

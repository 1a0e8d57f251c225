#include "macro/library/BuiltInMacroProvider.h"
#include "support/TemporaryHome.h"
#include "support/Waits.h"
#include "view/TextView.h"
#include "window/EditorWindowController.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

/// Runs one macro on one text per folder of `cases`. Each folder holds
///  - before.txt and after.txt: the exact text; one undo must restore the former;
///  - selection.json: the selection before the run, and optionally selection-after.json;
///  - macro.js, or builtin.txt with the name of a built-in macro;
///  - input.txt: the user's input, if any;
///  - status.txt: the message after the run, followed by a line feed.
class MacroCasesTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void run_onBefore_givesAfter_data();
    void run_onBefore_givesAfter();
    void cases_coverEveryBuiltInMacro();

private:
    [[nodiscard]] static QDir casesFolder()
    {
        return QDir(QStringLiteral(PENWICK_TEST_DATA "/cases"));
    }

    [[nodiscard]] static std::optional<QString> read(const QString &name, const QString &file);
    [[nodiscard]] static QString readLine(const QString &name, const QString &file);
    [[nodiscard]] static std::optional<TextRange> readRange(const QString &name,
                                                            const QString &file);
    [[nodiscard]] static QString readCode(const QString &name);

    test::TemporaryHome m_home;
};

std::optional<QString> MacroCasesTest::read(const QString &name, const QString &file)
{
    QFile in(casesFolder().filePath(name + u'/' + file));
    if (!in.open(QIODevice::ReadOnly))
        return std::nullopt;
    return QString::fromUtf8(in.readAll());
}

QString MacroCasesTest::readLine(const QString &name, const QString &file)
{
    const QString line = read(name, file).value_or(QString());
    if (!line.endsWith(u'\n'))
        qFatal("%s of %s is missing or lacks its line feed.", qPrintable(file), qPrintable(name));
    return line.chopped(1);
}

std::optional<TextRange> MacroCasesTest::readRange(const QString &name, const QString &file)
{
    const std::optional<QString> json = read(name, file);
    if (!json)
        return std::nullopt;
    const QJsonObject range = QJsonDocument::fromJson(json->toUtf8()).object();
    if (!range.value(u"location").isDouble() || !range.value(u"length").isDouble())
        qFatal("%s of %s holds no range.", qPrintable(file), qPrintable(name));
    return TextRange{range.value(u"location").toInteger(), range.value(u"length").toInteger()};
}

QString MacroCasesTest::readCode(const QString &name)
{
    if (const std::optional<QString> code = read(name, u"macro.js"_s))
        return *code;
    const std::optional<BuiltInMacro> macro = builtInMacro(readLine(name, u"builtin.txt"_s));
    if (!macro)
        qFatal("%s names no built-in macro.", qPrintable(name));
    return BuiltInMacroProvider::script(*macro);
}

void MacroCasesTest::run_onBefore_givesAfter_data()
{
    QTest::addColumn<QString>("name");

    const QStringList names = casesFolder().entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QVERIFY(!names.isEmpty());
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << name;
}

void MacroCasesTest::run_onBefore_givesAfter()
{
    QFETCH(QString, name);
    const std::optional<QString> before = read(name, u"before.txt"_s);
    const std::optional<QString> after = read(name, u"after.txt"_s);
    const std::optional<TextRange> selection = readRange(name, u"selection.json"_s);
    QVERIFY(before && after && selection);

    UserDefaults defaults(m_home.file(name + u".ini"_s));
    TextDocument document;
    document.setContentString(Text(*before));
    EditorWindowController controller(defaults);
    controller.setDocument(&document);
    TextView *view = controller.textView();
    view->setSelectedRange(*selection);
    QCOMPARE(view->selectedRange(), *selection);

    controller.runMacro(readCode(name), u"id"_s, u"name"_s, read(name, u"input.txt"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!controller.isRunningMacro(), test::kLongWait);
    QCoreApplication::processEvents();
    QCOMPARE(view->string().toString(), *after);
    QCOMPARE(document.contentString().toString(), *after);
    QCOMPARE(controller.documentState()->macroNotificationMessage(),
             std::optional(readLine(name, u"status.txt"_s)));
    if (const auto selectionAfter = readRange(name, u"selection-after.json"_s))
        QCOMPARE(view->selectedRange(), *selectionAfter);

    QCOMPARE(document.textStorage()->canUndo(), *before != *after);
    view->undo();
    QCOMPARE(view->string().toString(), *before);
    QCOMPARE(view->selectedRange(), *selection);
}

void MacroCasesTest::cases_coverEveryBuiltInMacro()
{
    QMap<QString, QList<bool>> selections; // For each macro: whether there was a selection.
    const QStringList names = casesFolder().entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &name : names) {
        const std::optional<QString> macro = read(name, u"builtin.txt"_s);
        const TextRange selection = readRange(name, u"selection.json"_s).value_or(TextRange());
        if (macro)
            selections[macro->trimmed()].append(selection.length > 0);
    }
    for (const BuiltInMacro macro : allBuiltInMacros()) {
        QVERIFY(selections.value(rawValue(macro)).contains(true));
        QVERIFY(selections.value(rawValue(macro)).contains(false));
    }
}

} // namespace penwick

QTEST_MAIN(penwick::MacroCasesTest)
#include "MacroCasesTest.moc"

#include "macro/library/MacroMetaParser.h"
#include "support/FakeClock.h"
#include "support/TemporaryHome.h"
#include "support/Waits.h"
#include "view/TextView.h"
#include "window/EditorWindowController.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

/// Runs the macros of the author's guide. Before each block of JavaScript is a comment that the
/// rendered guide hides, `<!-- run: {...} -->`, with these members:
///  - name: the example's name, the same in each language;
///  - status: the message after the run;
///  - before, after: the texts; defaults to the text blocks after the code, in this order;
///  - selection, selectionAfter: start and end in UTF-16 code units; `selection` defaults to a
///    caret at the start, and without `selectionAfter` any selection passes;
///  - input: the user's input, if any;
///  - file: the name of the text's file, if it has one;
///  - header: the fields of the header in the code, if it has one;
///  - compiles: false when a compiler must reject the code; not used here.
class GuideExamplesTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void example_run_doesWhatTheGuideDescribes_data();
    void example_run_doesWhatTheGuideDescribes();
    void examples_headers_areReadAsTheGuideDescribes();
    void guides_giveTheSameExamplesAndChapters();
    void guides_nameEveryFieldOfTheContext();

private:
    struct Example
    {
        QString language;
        QJsonObject settings;
        QString code;
        QStringList texts; // The text blocks up to the next example.

        [[nodiscard]] QString name() const { return settings.value(u"name").toString(); }

        [[nodiscard]] QString text(const QString &key, qsizetype block) const
        {
            return settings.contains(key) ? settings.value(key).toString() : texts.value(block);
        }

        [[nodiscard]] TextRange range(const QString &key) const
        {
            const QJsonArray ends = settings.value(key).toArray();
            return {ends.at(0).toInteger(), ends.at(1).toInteger() - ends.at(0).toInteger()};
        }
    };

    [[nodiscard]] static QStringList languages() { return {u"macros.md"_s, u"macros.ja.md"_s}; }

    [[nodiscard]] static QString readGuide(const QString &language);
    [[nodiscard]] static QList<Example> readExamples(const QString &language);

    QList<Example> m_examples;
    test::TemporaryHome m_home;
};

QString GuideExamplesTest::readGuide(const QString &language)
{
    QFile in(QStringLiteral(PENWICK_DOCS "/") + language);
    if (!in.open(QIODevice::ReadOnly))
        qFatal("The guide %s cannot be read.", qPrintable(language));
    return QString::fromUtf8(in.readAll());
}

QList<GuideExamplesTest::Example> GuideExamplesTest::readExamples(const QString &language)
{
    static const QRegularExpression fence(
        uR"(^<!-- run: (?<settings>.*) -->\n|^```(?<kind>\w+)\n(?<block>(?:(?!```).*\n)*)```$)"_s,
        QRegularExpression::MultilineOption);
    QList<Example> examples;
    bool isCodeNext = false;
    auto found = fence.globalMatch(readGuide(language));
    while (found.hasNext()) {
        const QRegularExpressionMatch match = found.next();
        if (match.hasCaptured(u"settings"_s)) {
            const auto settings =
                QJsonDocument::fromJson(match.captured(u"settings"_s).toUtf8()).object();
            examples.append({language, settings, {}, {}});
            isCodeNext = true;
        } else if (match.captured(u"kind"_s) == "js"_L1) {
            if (!isCodeNext)
                qFatal("%s: code that no test runs: %s",
                       qPrintable(language),
                       qPrintable(match.captured(u"block"_s)));
            examples.last().code = match.captured(u"block"_s).chopped(1);
            isCodeNext = false;
        } else if (match.captured(u"kind"_s) == "text"_L1 && !examples.isEmpty()) {
            examples.last().texts.append(match.captured(u"block"_s).chopped(1));
        }
    }
    return examples;
}

void GuideExamplesTest::initTestCase()
{
    qputenv("TZ", "Asia/Tokyo");
    for (const QString &language : languages())
        m_examples += readExamples(language);
}

void GuideExamplesTest::example_run_doesWhatTheGuideDescribes_data()
{
    QTest::addColumn<qsizetype>("index");
    for (qsizetype i = 0; i < m_examples.size(); ++i)
        QTest::addRow(
            "%s %s", qPrintable(m_examples.at(i).language), qPrintable(m_examples.at(i).name()))
            << i;
}

void GuideExamplesTest::example_run_doesWhatTheGuideDescribes()
{
    QFETCH(qsizetype, index);
    const Example &example = m_examples.at(index);
    const QString before = example.text(u"before"_s, 0);
    const QString after = example.text(u"after"_s, 1);
    QVERIFY(!example.name().isEmpty() && !example.code.isEmpty());
    QVERIFY(example.settings.contains(u"before"_s) || !example.texts.isEmpty());
    QVERIFY(example.settings.contains(u"after"_s) || example.texts.size() > 1);

    UserDefaults defaults(m_home.file(QString::number(index) + u".ini"_s));
    TextDocument document;
    if (example.settings.contains(u"file"_s))
        document.setFilePath(m_home.file(example.settings.value(u"file"_s).toString()));
    document.setContentString(Text(before));
    EditorWindowController controller(defaults, test::FakeClock().clock());
    controller.setDocument(&document);
    TextView *view = controller.textView();
    QVERIFY(view != nullptr);
    view->setSelectedRange(example.range(u"selection"_s));
    QCOMPARE(view->selectedRange(), example.range(u"selection"_s));

    std::optional<QString> input;
    if (example.settings.contains(u"input"_s))
        input = example.settings.value(u"input"_s).toString();
    controller.runMacro(example.code, u"id"_s, u"name"_s, input);
    QTRY_VERIFY_WITH_TIMEOUT(controller.documentState()->macroNotificationMessage(),
                             test::kLongWait);
    QCOMPARE(*controller.documentState()->macroNotificationMessage(),
             example.settings.value(u"status"_s).toString());
    QCOMPARE(view->string().toString(), after);
    if (example.settings.contains(u"selectionAfter"_s))
        QCOMPARE(view->selectedRange(), example.range(u"selectionAfter"_s));

    view->undo();
    QCOMPARE(view->string().toString(), before);
}

void GuideExamplesTest::examples_headers_areReadAsTheGuideDescribes()
{
    int headers = 0;
    for (const Example &example : m_examples) {
        const ParsedMeta meta = MacroMetaParser::parse(example.code);
        if (!example.settings.contains(u"header"_s)) {
            QCOMPARE(meta.strippedCode, example.code);
            continue;
        }
        const QJsonObject header = example.settings.value(u"header"_s).toObject();
        QCOMPARE(meta.name.value_or(QString()), header.value(u"name"_s).toString());
        QCOMPARE(meta.description.value_or(QString()), header.value(u"description"_s).toString());
        QCOMPARE(meta.category.value_or(QString()), header.value(u"category"_s).toString());
        QCOMPARE(meta.version.value_or(QString()), header.value(u"version"_s).toString());
        QCOMPARE(meta.helpURL.value_or(QString()), header.value(u"helpURL"_s).toString());
        QVERIFY(meta.strippedCode.startsWith(header.value(u"codeStarts"_s).toString()));
        ++headers;
    }
    QCOMPARE(headers, languages().size());
}

void GuideExamplesTest::guides_giveTheSameExamplesAndChapters()
{
    QList<QStringList> names;
    QList<qsizetype> chapters;
    for (const QString &language : languages()) {
        names.append(QStringList());
        for (const Example &example : m_examples)
            if (example.language == language)
                names.last().append(example.name());
        static const QRegularExpression heading(u"^#+ "_s, QRegularExpression::MultilineOption);
        chapters.append(readGuide(language).count(heading));
    }
    QCOMPARE(readGuide(languages().first()).count(u"```js\n"_s), names.first().size());
    QVERIFY(names.first().size() >= 6);
    QCOMPARE(QSet<QString>(names.first().begin(), names.first().end()).size(),
             names.first().size());
    for (qsizetype i = 1; i < names.size(); ++i) {
        QCOMPARE(names.at(i), names.first());
        QCOMPARE(chapters.at(i), chapters.first());
    }
}

void GuideExamplesTest::guides_nameEveryFieldOfTheContext()
{
    const ContextDictionary context = buildMacroContext({}, {}, {}).toDictionary();
    for (const QString &language : languages()) {
        const QString guide = readGuide(language);
        for (const ContextEntry &part : context) {
            const auto *fields = std::get_if<ContextDictionary>(&part.value);
            if (fields == nullptr)
                QVERIFY2(guide.contains(u'`' + part.key + u'`'), qPrintable(language));
            for (const ContextEntry &field : fields != nullptr ? *fields : ContextDictionary()) {
                const QString path = part.key + u'.' + field.key;
                QVERIFY2(guide.contains(u'`' + path + u'`'), qPrintable(language + u' ' + path));
            }
        }
    }
}

} // namespace penwick

QTEST_MAIN(penwick::GuideExamplesTest)
#include "GuideExamplesTest.moc"

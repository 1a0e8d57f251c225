#include "lines/ColumnSelection.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <memory>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// A line as the model has it: its clusters and its line break.
struct ModelLine
{
    QStringList clusters;
    QString end;
};

QStringList modelClusters(const QString &units)
{
    UErrorCode status = U_ZERO_ERROR;
    static const std::unique_ptr<icu::BreakIterator> iterator(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    const icu::UnicodeString text(reinterpret_cast<const char16_t *>(units.utf16()),
                                  static_cast<int32_t>(units.size()));
    iterator->setText(text);
    QStringList clusters;
    qsizetype start = 0;
    for (int end = iterator->next(); end != icu::BreakIterator::DONE; end = iterator->next()) {
        clusters << units.mid(start, end - start);
        start = end;
    }
    return clusters;
}

std::vector<ModelLine> modelLines(const QString &text)
{
    static const QRegularExpression lineBreak(u"\r\n|[\n\u000B\u000C\r\u0085\u2028\u2029]"_s);
    std::vector<ModelLine> lines;
    qsizetype start = 0;
    for (auto matches = lineBreak.globalMatch(text); matches.hasNext();) {
        const auto match = matches.next();
        lines.push_back(
            {modelClusters(text.mid(start, match.capturedStart() - start)), match.captured()});
        start = match.capturedEnd();
    }
    lines.push_back({modelClusters(text.mid(start)), QString()});
    return lines;
}

int modelWidth(const QString &cluster, int column, int tabWidth)
{
    if (cluster == u"\t")
        return tabWidth - column % tabWidth;
    int width = 0;
    for (const uint point : cluster.toUcs4()) {
        const int eastAsian =
            u_getIntPropertyValue(static_cast<UChar32>(point), UCHAR_EAST_ASIAN_WIDTH);
        const bool isWide = eastAsian == U_EA_WIDE || eastAsian == U_EA_FULLWIDTH;
        const bool hasNone = (U_GET_GC_MASK(static_cast<UChar32>(point)) &
                              (U_GC_M_MASK | U_GC_CC_MASK | U_GC_CF_MASK)) != 0;
        width += isWide ? 2 : (hasNone ? 0 : 1);
    }
    return std::clamp(width, 1, 2);
}

/// A line divided at the edges of a rectangle.
struct ModelRow
{
    QString before;
    QString inside;
    QString after;
    int blanks = 0; ///< From the line's end to the left edge.
};

ModelRow modelRow(const ModelLine &line, const TextRectangle &rectangle, int tabWidth)
{
    ModelRow row;
    int column = 0;
    for (const QString &cluster : line.clusters) {
        column += modelWidth(cluster, column, tabWidth);
        (column <= rectangle.left()    ? row.before
         : column <= rectangle.right() ? row.inside
                                       : row.after) += cluster;
    }
    row.blanks = std::max(0, static_cast<int>(rectangle.left()) - column);
    return row;
}

/// The text with the rows of `rectangle` replaced.
QString modelReplaced(const QString &text,
                      const TextRectangle &rectangle,
                      const QString &inserted,
                      int tabWidth)
{
    const auto lines = modelLines(text);
    const LineSpan span = rectangle.lines();
    QString result;
    for (qint64 i = 0; i < static_cast<qint64>(lines.size()); ++i) {
        const ModelLine &line = lines.at(static_cast<std::size_t>(i));
        if (i < span.first || i >= span.first + span.count) {
            result += line.clusters.join(QString()) + line.end;
            continue;
        }
        const ModelRow row = modelRow(line, rectangle, tabWidth);
        const QString blanks = inserted.isEmpty() ? QString() : QString(row.blanks, u' ');
        result += row.before + blanks + inserted + row.after;
        result += line.end == u"\n" && result.endsWith(u'\r') ? u"\n\n"_s : line.end;
    }
    return result;
}

QString randomPiece(QRandomGenerator &random)
{
    static const QStringList kPieces{u"a"_s,
                                     u"b c"_s,
                                     u"xyz"_s,
                                     u"漢"_s,
                                     u"かな"_s,
                                     u"ｶﾞ"_s,
                                     u"\t"_s,
                                     u"\t"_s,
                                     u" "_s,
                                     u"😀"_s,
                                     u"👨‍👩‍👧"_s,
                                     u"🇯🇵"_s,
                                     u"e\u0301"_s,
                                     u"\u3000"_s,
                                     u"Ａ"_s,
                                     u"。"_s,
                                     u"한"_s,
                                     u"\uFEFF"_s,
                                     u"𠮷"_s,
                                     u"か\u3099"_s};
    return kPieces.at(random.bounded(kPieces.size()));
}

QString randomText(QRandomGenerator &random)
{
    static const QStringList kEnds{u"\n"_s,
                                   u"\n"_s,
                                   u"\n"_s,
                                   u"\r\n"_s,
                                   u"\r\n"_s,
                                   u"\r"_s,
                                   u"\r"_s,
                                   u"\u2028"_s,
                                   u"\u0085"_s};
    QString text;
    for (int line = random.bounded(7); line >= 0; --line) {
        for (int i = random.bounded(8); i > 0; --i)
            text += randomPiece(random);
        if (line > 0 || random.bounded(3) == 0)
            text += kEnds.at(random.bounded(kEnds.size()));
    }
    return text;
}

TextRectangle randomRectangle(QRandomGenerator &random, const Text &text)
{
    const auto line = [&] { return random.bounded(text.metrics().lineBreaks() + 1); };
    TextRectangle rectangle{{line(), random.bounded(12)}, {line(), random.bounded(12)}};
    if (random.bounded(3) == 0)
        rectangle.caret.column = rectangle.anchor.column;
    return rectangle;
}

void perform(Text &text, const std::optional<RowsChange> &change)
{
    if (change)
        text = text.replaced(change->range.location, change->range.length, change->replacement);
}

QString inserted(const QString &text, const TextRectangle &rectangle, const QString &units)
{
    Text result(text);
    perform(result, ColumnSelection(result, rectangle, 4).insert(result, units));
    return result.toString();
}

/// A run of edits in a rectangle, in penwick and in the model.
class Run final
{
public:
    explicit Run(quint32 seed)
        : m_random(seed)
        , m_before(randomText(m_random))
        , m_text(m_before)
        , m_tabWidth(1 + m_random.bounded(8))
        , m_rectangle(randomRectangle(m_random, m_text))
        , m_columns(m_text, m_rectangle, m_tabWidth)
    {
    }

    void act();
    [[nodiscard]] QString failure() const;

private:
    void remove(bool isBackward);
    [[nodiscard]] QString expectedAt(qint64 line) const;

    QRandomGenerator m_random;
    QString m_before;
    Text m_text;
    int m_tabWidth;
    TextRectangle m_rectangle;
    ColumnSelection m_columns;
    QString m_inserted;
    bool m_isEdited = false;
};

void Run::act()
{
    const int action = m_random.bounded(4);
    if (action >= 2) {
        const QString units = randomPiece(m_random);
        perform(m_text, m_columns.insert(m_text, units));
        m_inserted += units;
    } else {
        remove(action == 0);
    }
    m_isEdited = true;
}

void Run::remove(bool isBackward)
{
    perform(m_text,
            isBackward ? m_columns.deleteBackward(m_text) : m_columns.deleteForward(m_text));
    if (!m_isEdited && !m_rectangle.isEmpty())
        return;
    QStringList clusters = modelClusters(m_inserted);
    if (isBackward && !clusters.isEmpty()) {
        clusters.removeLast();
        m_inserted = clusters.join(QString());
        return;
    }
    // The boundaries of the line of the moving corner, those past its end included.
    const auto lines = modelLines(m_before);
    std::vector<qint64> columns{0};
    for (const QString &cluster :
         lines.at(static_cast<std::size_t>(m_rectangle.caret.line)).clusters)
        columns.push_back(columns.back() +
                          modelWidth(cluster, static_cast<int>(columns.back()), m_tabWidth));
    while (columns.back() < 200)
        columns.push_back(columns.back() + 1);
    qint64 left = m_rectangle.left();
    qint64 right = m_rectangle.right();
    if (isBackward && left > 0)
        left = *(std::lower_bound(columns.begin(), columns.end(), left) - 1);
    else if (!isBackward)
        right = *std::upper_bound(columns.begin(), columns.end(), right);
    const bool isForward = m_rectangle.anchor.column <= m_rectangle.caret.column;
    m_rectangle.anchor.column = isForward ? left : right;
    m_rectangle.caret.column = isForward ? right : left;
}

/// The line of the present text up to the end of the rectangle's row in it.
QString Run::expectedAt(qint64 line) const
{
    const ModelRow row =
        modelRow(modelLines(m_before).at(static_cast<std::size_t>(line)), m_rectangle, m_tabWidth);
    if (!m_isEdited)
        return row.before + row.inside;
    return row.before + (m_inserted.isEmpty() ? QString() : QString(row.blanks, u' ')) + m_inserted;
}

QString Run::failure() const
{
    const QString expected =
        m_isEdited ? modelReplaced(m_before, m_rectangle, m_inserted, m_tabWidth) : m_before;
    if (m_text.toString() != expected)
        return u"%1 instead of %2"_s.arg(m_text.toString(), expected);
    const LineSpan span = m_columns.lines();
    QStringList parts;
    for (qint64 line = span.first; line < span.first + span.count; ++line) {
        const RectangleRow row = m_columns.rowAt(m_text, line);
        const qint64 start = contentOfLine(m_text, line).location;
        if (m_text.slice(start, row.range.end() - start) != expectedAt(line))
            return u"line %1 has a row up to %2"_s.arg(line).arg(row.range.end() - start);
        parts << m_text.slice(row.range.location, row.range.length);
    }
    if (!m_isEdited && textOf(m_text, m_rectangle, m_tabWidth)->toString() != parts.join(u'\n'))
        return u"the text of the rectangle"_s;
    return {};
}

} // namespace

/// Tests of rectangular selections and of the edits in them.
class ColumnSelectionTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_neverCutAWideCharacterOrATab();
    void insert_padsOnlyShortLinesThatGetText();
    void insert_repeated_staysBehindWhatWasInserted();
    void deleteBackward_deletesWhatWasInsertedFirst();
    void deletion_stopsAtTheStartOfTheLine();
    void emptyLineBetweenCrAndLf_staysALine();
    void replaceRows_pastTheEnd_addsLines();
    void replaceRows_withWidth_fillsOnlyBeforeText();
    void hugeLine_isReadOnlyAtItsStart();
    void tooManyUnits_changeNothing();
    void randomEdits_equalTheModel();
};

void ColumnSelectionTest::rows_neverCutAWideCharacterOrATab()
{
    const Text text(u"漢字x\n\tab\nab"_s);
    const TextRectangle rectangle{{0, 1}, {2, 3}};
    QCOMPARE(textOf(text, rectangle, 4)->toString(), u"漢\n\nb"_s);
    QCOMPARE(rowOf(text, rectangle, 0, 4).range, (TextRange{0, 1}));
    QCOMPARE(rowOf(text, rectangle, 1, 4).range, (TextRange{4, 0}));
    QCOMPARE(rowOf(text, rectangle, 2, 4).blanksToRight, 1);
    QCOMPARE(textOf(text, {{0, 3}, {1, 5}}, 4)->toString(), u"字x\n\ta"_s);
    QCOMPARE(placeOf(text, 2, 4), (ColumnPlace{0, 4}));
    QCOMPARE(placeOf(text, 5, 4), (ColumnPlace{1, 4}));
}

void ColumnSelectionTest::insert_padsOnlyShortLinesThatGetText()
{
    QCOMPARE(inserted(u"abc\n\nx"_s, {{0, 2}, {2, 2}}, u"-"_s), u"ab-c\n  -\nx -"_s);
    QCOMPARE(inserted(u"abc\n\nx"_s, {{0, 2}, {2, 3}}, u""_s), u"ab\n\nx"_s);
}

void ColumnSelectionTest::insert_repeated_staysBehindWhatWasInserted()
{
    Text text(u"abcdef\n\tx\n漢字"_s);
    ColumnSelection columns(text, {{0, 3}, {2, 3}}, 4);
    for (const QString &units : {u"1"_s, u"2"_s, u"3"_s, u"4"_s})
        perform(text, columns.insert(text, units));
    QCOMPARE(text.toString(), u"abc1234def\n1234\tx\n漢1234字"_s);
    QCOMPARE(columns.rowAt(text, 1).range, (TextRange{15, 0}));
    QCOMPARE(columns.rectangle(text), (TextRectangle{{0, 6}, {2, 6}}));
}

void ColumnSelectionTest::deleteBackward_deletesWhatWasInsertedFirst()
{
    Text text(u"abc\nabc"_s);
    ColumnSelection columns(text, {{0, 1}, {1, 2}}, 4);
    perform(text, columns.insert(text, u"xか\u3099"));
    QCOMPARE(text.toString(), u"axか\u3099c\naxか\u3099c"_s);
    perform(text, columns.deleteBackward(text));
    QCOMPARE(text.toString(), u"axc\naxc"_s);
    perform(text, columns.deleteBackward(text));
    perform(text, columns.deleteBackward(text));
    QCOMPARE(text.toString(), u"c\nc"_s);
    perform(text, columns.deleteForward(text));
    QCOMPARE(text.toString(), u"\n"_s);
}

void ColumnSelectionTest::deletion_stopsAtTheStartOfTheLine()
{
    const Text text(u"abc\nabc"_s);
    ColumnSelection columns(text, {{0, 0}, {1, 0}}, 4);
    QVERIFY(!columns.deleteBackward(text));
    ColumnSelection atEnd(text, {{0, 3}, {1, 3}}, 4);
    QVERIFY(!atEnd.deleteForward(text));
}

void ColumnSelectionTest::emptyLineBetweenCrAndLf_staysALine()
{
    Text text(u"a\rb\nc\n"_s);
    ColumnSelection columns(text, {{1, 0}, {2, 1}}, 4);
    perform(text, columns.insert(text, u""));
    QCOMPARE(text.toString(), u"a\r\n\n\n"_s);
    perform(text, columns.insert(text, u"z"));
    QCOMPARE(text.toString(), u"a\rz\nz\n"_s);
}

void ColumnSelectionTest::replaceRows_pastTheEnd_addsLines()
{
    const QStringList rows{u"1"_s, u"22"_s, u"3"_s, u"4"_s};
    const RowContents contents{4, [&](qint64 row) { return QStringView(rows.at(row)); }};
    Text text(u"abc\r\nabc\r\nx"_s);
    const auto change = replaceRows(text, {{0, 1}, {0, 2}}, contents, 4);
    perform(text, change);
    QCOMPARE(text.toString(), u"a1c\r\na22bc\r\nx3\r\n 4"_s);
    QCOMPARE(change->caret, text.size());
}

void ColumnSelectionTest::replaceRows_withWidth_fillsOnlyBeforeText()
{
    const QStringList rows{u"1"_s, u"漢漢"_s, u"3"_s};
    const RowContents contents{3, [&](qint64 row) { return QStringView(rows.at(row)); }, 4};
    Text text(u"ab\nab\na"_s);
    perform(text, replaceRows(text, {{0, 1}, {2, 1}}, contents, 4));
    QCOMPARE(text.toString(), u"a1   b\na漢漢b\na3"_s);
}

void ColumnSelectionTest::hugeLine_isReadOnlyAtItsStart()
{
    const QString half = u"漢 "_s.repeated(1'000'000);
    Text text(u"ab\n"_s + half + half + u"\nab"_s);
    ColumnSelection columns(text, {{0, 1}, {2, 1}}, 4);
    perform(text, columns.insert(text, u"x"));
    QCOMPARE(text.toString(), u"axb\nx"_s + half + half + u"\naxb"_s);
    QVERIFY(!placeOf(text, kColumnReach + 10, 4));
    // Past the reach there is no end of the line to reckon from.
    QCOMPARE(rowOf(text, {{1, 1'000'000}, {1, 1'000'000}}, 1, 4).blanksToLeft, 0);
}

void ColumnSelectionTest::tooManyUnits_changeNothing()
{
    const Text text(u"\n"_s.repeated(1 << 15));
    ColumnSelection columns(text, {{0, 10'000}, {1 << 15, 10'000}}, 4);
    QVERIFY(!columns.insert(text, u"x"));
    QVERIFY(columns.isEmpty());
    QCOMPARE(columns.rowAt(text, 1).blanksToLeft, 10'000);
}

void ColumnSelectionTest::randomEdits_equalTheModel()
{
    constexpr int kUsual = 4'000;
    const int wanted = qEnvironmentVariableIntValue("PENWICK_COLUMN_EDITS");
    const int edits = wanted > 0 ? wanted : kUsual;
    quint32 seed = 0;
    for (int done = 0; done < edits; ++seed) {
        Run run(seed);
        QVERIFY2(run.failure().isEmpty(), qPrintable(u"%1: %2"_s.arg(seed).arg(run.failure())));
        for (int i = 0; i < 6; ++i, ++done) {
            run.act();
            QVERIFY2(run.failure().isEmpty(),
                     qPrintable(u"%1, %2: %3"_s.arg(seed).arg(i).arg(run.failure())));
        }
    }
}

QTEST_APPLESS_MAIN(ColumnSelectionTest)
#include "ColumnSelectionTest.moc"

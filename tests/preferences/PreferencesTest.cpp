#include "preferences/Preferences.h"

#include "support/TemporaryHome.h"

#include <QFile>
#include <QSet>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// The values of a setting as README lists them.
QString documentedValues(const Preference &row)
{
    if (row.kind == Preference::Kind::Switch)
        return u"`true`, `false`"_s;
    if (row.kind == Preference::Kind::Text)
        return u"any text"_s;
    if (row.kind == Preference::Kind::FontFamily)
        return u"a font family"_s;
    QStringList values;
    if (row.kind == Preference::Kind::Number)
        values << u"%1 to %2"_s.arg(row.smallest).arg(row.largest);
    for (const Preference::Choice &choice : row.choices)
        values << u'`' + choice.value.toString() + u'`';
    return values.join(u", "_s);
}

} // namespace

class PreferencesTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void table_hasOneValidRowPerSetting();
    void value_isStoredReadablyUnderItsKey();
    void value_broken_isTheStandardOne_data();
    void value_broken_isTheStandardOne();
    void value_notValid_isNotSet();
    void observer_hearsOfNewValuesOnly();
    void reset_removesTheSetting();
    void readme_listsEverySettingAndNoOther();

private:
    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static void write(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }

    test::TemporaryHome m_home;
};

void PreferencesTest::table_hasOneValidRowPerSetting()
{
    QSet<QString> keys;
    for (const Preference &row : allPreferences()) {
        QCOMPARE(&preference(row.id), &row);
        QVERIFY(!keys.contains(row.key.toString()));
        keys.insert(row.key.toString());
        QVERIFY2(row.isValid(row.standard), qPrintable(row.key.toString()));
        const bool hasChoices =
            row.kind == Preference::Kind::Choice || row.kind == Preference::Kind::Number;
        QVERIFY(hasChoices || row.choices.empty());
        QVERIFY(row.kind != Preference::Kind::Choice || !row.choices.empty());
    }
}

void PreferencesTest::value_isStoredReadablyUnderItsKey()
{
    const QString path = m_home.file(u"stored.conf"_s);
    {
        UserDefaults defaults(path);
        Preferences preferences(defaults);
        preferences.setNumber(PreferenceId::TabWidth, 8);
        preferences.setOn(PreferenceId::KeepsIndentation, true);
        preferences.setText(PreferenceId::TabKeyInserts, u"spaces"_s);
    }
    QCOMPARE(contentOf(path),
             "[General]\nkeepIndentation=true\ntabKeyInserts=spaces\ntabWidth=8\n");
    UserDefaults defaults(path);
    const Preferences preferences(defaults);
    QCOMPARE(preferences.number(PreferenceId::TabWidth), 8);
    QVERIFY(preferences.isOn(PreferenceId::KeepsIndentation));
    QCOMPARE(preferences.text(PreferenceId::TabKeyInserts), u"spaces");
    QVERIFY(preferences.isChanged(PreferenceId::TabWidth));
    QVERIFY(!preferences.isChanged(PreferenceId::Zoom));
}

void PreferencesTest::value_broken_isTheStandardOne_data()
{
    QTest::addColumn<PreferenceId>("id");
    QTest::addColumn<QByteArray>("stored");
    QTest::addRow("number-too-small") << PreferenceId::TabWidth << QByteArray("0");
    QTest::addRow("number-too-large") << PreferenceId::TabWidth << QByteArray("17");
    QTest::addRow("no-number") << PreferenceId::TabWidth << QByteArray("four");
    QTest::addRow("number-of-66-bits") << PreferenceId::Zoom << QByteArray("36893488147419103332");
    QTest::addRow("no-switch") << PreferenceId::KeepsIndentation << QByteArray("yes");
    QTest::addRow("no-choice") << PreferenceId::TabKeyInserts << QByteArray("Spaces");
    QTest::addRow("list") << PreferenceId::TabKeyInserts << QByteArray("spaces, tab");
    QTest::addRow("empty") << PreferenceId::ShowsBlanks << QByteArray();
}

void PreferencesTest::value_broken_isTheStandardOne()
{
    QFETCH(PreferenceId, id);
    QFETCH(QByteArray, stored);
    const QString path =
        m_home.file(u"broken-%1.conf"_s.arg(QString::fromLatin1(QTest::currentDataTag())));
    const QByteArray content =
        "[General]\n" + preference(id).key.toUtf8() + '=' + stored + "\nother=1\n";
    write(path, content);
    UserDefaults defaults(path);
    const Preferences preferences(defaults);
    QCOMPARE(preferences.text(id), preference(id).standard);
    QVERIFY(preferences.isBroken(id));
    QVERIFY(!preferences.isChanged(id));
    // One broken value changes no other.
    QVERIFY(!preferences.isBroken(PreferenceId::ConvertsPastedLineEnds));
    QCOMPARE(contentOf(path), content);
}

void PreferencesTest::value_notValid_isNotSet()
{
    const QString path = m_home.file(u"not-valid.conf"_s);
    UserDefaults defaults(path);
    Preferences preferences(defaults);
    preferences.setNumber(PreferenceId::Zoom, 49);
    preferences.setText(PreferenceId::ShowsBlanks, u"maybe"_s);
    QCOMPARE(preferences.number(PreferenceId::Zoom), 100);
    QVERIFY(!QFile::exists(path));
}

void PreferencesTest::observer_hearsOfNewValuesOnly()
{
    UserDefaults defaults(m_home.file(u"observed.conf"_s));
    Preferences preferences(defaults);
    QObject context;
    int count = 0;
    Preferences::observe(PreferenceId::TabWidth, &context, [&] { ++count; });
    preferences.setNumber(PreferenceId::TabWidth, 8);
    QCOMPARE(count, 1);
    preferences.setNumber(PreferenceId::TabWidth, 8);
    preferences.setNumber(PreferenceId::Zoom, 110);
    QCOMPARE(count, 1);
    preferences.reset(PreferenceId::TabWidth);
    QCOMPARE(count, 2);
    preferences.reset(PreferenceId::TabWidth);
    QCOMPARE(count, 2);
}

void PreferencesTest::reset_removesTheSetting()
{
    const QString path = m_home.file(u"reset.conf"_s);
    UserDefaults defaults(path);
    Preferences preferences(defaults);
    preferences.setNumber(PreferenceId::TabWidth, 8);
    preferences.reset(PreferenceId::TabWidth);
    QCOMPARE(preferences.number(PreferenceId::TabWidth), 4);
    QVERIFY(!contentOf(path).contains("tabWidth"));
}

void PreferencesTest::readme_listsEverySettingAndNoOther()
{
    QStringList expected;
    for (const Preference &row : allPreferences()) {
        const QString standard =
            row.standard.isEmpty() ? u"-"_s : u'`' + row.standard.toString() + u'`';
        expected << u"| `%1` | %2 | %3 |"_s.arg(
            row.key.toString(), documentedValues(row), standard);
    }
    const QString readme =
        QString::fromUtf8(contentOf(QStringLiteral(PENWICK_TEST_DATA "/../../README.md")));
    const QString section = readme.section(u"\n## Settings\n"_s, 1).section(u"\n## "_s, 0, 0);
    QStringList listed;
    for (const QString &line : section.split(u'\n'))
        if (line.startsWith(u"| `"))
            listed << line.section(u'|', 0, 3) + u'|';
    QCOMPARE(listed, expected);
}

QTEST_GUILESS_MAIN(PreferencesTest)
#include "PreferencesTest.moc"

#include "window/TabNames.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

TabLabel file(const QString &path)
{
    return {path.section(u'/', -1), path, false};
}

} // namespace

class TabNamesTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_ofDifferentDocuments_areTheirOwn();
    void names_thatAreAlike_getTheFolder_data();
    void names_thatAreAlike_getTheFolder();
    void document_withoutAFile_keepsItsName();
    void file_thatIsThereTwice_keepsOneName();
    void distinctNames_keepWhatDiffers_data();
    void distinctNames_keepWhatDiffers();
};

void TabNamesTest::names_ofDifferentDocuments_areTheirOwn()
{
    QCOMPARE(tabNames({file(u"/a/one.txt"_s), {u"名称未設定"_s, {}, true}, file(u"/a/two.txt"_s)}),
             (QStringList{u"one.txt"_s, u"名称未設定"_s, u"two.txt"_s}));
    QCOMPARE(tabNames({}), QStringList());
}

void TabNamesTest::names_thatAreAlike_getTheFolder_data()
{
    QTest::addColumn<QStringList>("paths");
    QTest::addColumn<QStringList>("names");
    const auto row = [](const char *name, const QStringList &paths, const QStringList &names) {
        QTest::newRow(name) << paths << names;
    };
    row("another folder",
        {u"/home/k/今日/a.txt"_s, u"/home/k/b.txt"_s, u"/home/k/昨日/a.txt"_s},
        {u"a.txt — 今日"_s, u"b.txt"_s, u"a.txt — 昨日"_s});
    row("folders of the same name",
        {u"/p/one/src/a.c"_s, u"/p/two/src/a.c"_s, u"/p/lib/a.c"_s},
        {u"a.c — one/…"_s, u"a.c — two/…"_s, u"a.c — lib"_s});
    row("one folder is the end of the other",
        {u"/src/a.c"_s, u"/p/src/a.c"_s},
        {u"a.c — src"_s, u"a.c — p/…"_s});
    row("the same folder further out",
        {u"/one/src/a.c"_s, u"/one/two/src/a.c"_s, u"/z/two/src/a.c"_s},
        {u"a.c — /one/src"_s, u"a.c — /one/two/src"_s, u"a.c — z/…"_s});
    row("in no folder", {u"/a.c"_s, u"/p/a.c"_s}, {u"a.c — /"_s, u"a.c — p"_s});
}

void TabNamesTest::names_thatAreAlike_getTheFolder()
{
    QFETCH(const QStringList, paths);
    QList<TabLabel> labels;
    for (const QString &path : paths)
        labels << file(path);
    QTEST(tabNames(labels), "names");
}

void TabNamesTest::document_withoutAFile_keepsItsName()
{
    QCOMPARE(tabNames({file(u"/a/名称未設定"_s), {u"名称未設定"_s, {}, false}}),
             (QStringList{u"名称未設定 — a"_s, u"名称未設定"_s}));
}

void TabNamesTest::file_thatIsThereTwice_keepsOneName()
{
    QCOMPARE(tabNames({file(u"/p/q/a.c"_s), file(u"/p/q/a.c"_s)}),
             (QStringList{u"a.c — /p/q"_s, u"a.c — /p/q"_s}));
}

void TabNamesTest::distinctNames_keepWhatDiffers_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("shown"); // In at most 9 code units.
    QTest::newRow("all fit") << QStringList{u"short.txt"_s, u"a.txt"_s}
                             << QStringList{u"short.txt"_s, u"a.txt"_s};
    QTest::newRow("cut in the middle") << QStringList{u"0123456789"_s, u"abcdefghij"_s}
                                       << QStringList{u"0123…6789"_s, u"abcd…ghij"_s};
    QTest::newRow("difference in the middle")
        << QStringList{u"2026年度報告書-東京.txt"_s, u"2026年度報告書-大阪.txt"_s}
        << QStringList{u"202…東京…xt"_s, u"202…大阪…xt"_s};
    QTest::newRow("difference at the cut, more at the end")
        << QStringList{u"abcdefgX.text"_s, u"abcdefgY.text"_s, u"other"_s}
        << QStringList{u"abc…X…ext"_s, u"abc…Y…ext"_s, u"other"_s};
    QTest::newRow("one has more") << QStringList{u"abcdefghijkl"_s,
                                                 u"abcdefg12hijkl"_s,
                                                 u"abcdefg34hijkl"_s}
                                  << QStringList{u"abcd…ijkl"_s, u"abc…12…kl"_s, u"abc…34…kl"_s};
    QTest::newRow("too long a difference")
        << QStringList{u"aaaa0123456789zzzz"_s, u"aaaa9876543210zzzz"_s}
        << QStringList{u"…012…789…"_s, u"…987…210…"_s};
    QTest::newRow("the same name twice") << QStringList{u"0123456789"_s, u"0123456789"_s}
                                         << QStringList{u"0123…6789"_s, u"0123…6789"_s};
    const QString face = u"\U0001F600"_s;
    QTest::newRow("pairs") << QStringList{face.repeated(4) + u"X"_s + face.repeated(4),
                                          face.repeated(4) + u"Y"_s + face.repeated(4)}
                           << QStringList{face + face + u"…X…"_s + face,
                                          face + face + u"…Y…"_s + face};
}

void TabNamesTest::distinctNames_keepWhatDiffers()
{
    QFETCH(const QStringList, names);
    const auto elided = [](qsizetype /*index*/, const QString &name) {
        return name.size() <= 9 ? name : name.first(4) + u'…' + name.last(4);
    };
    QTEST(distinctNames(names, elided), "shown");
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::TabNamesTest)
#include "TabNamesTest.moc"

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

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::TabNamesTest)
#include "TabNamesTest.moc"

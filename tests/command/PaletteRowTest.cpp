#include "command/PaletteRow.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

PaletteRow row(PaletteRow::Kind kind,
               const QString &title,
               const QString &words = {},
               const QString &detail = {})
{
    PaletteRow made;
    made.kind = kind;
    made.title = title;
    made.words = words;
    made.detail = detail;
    return made;
}

} // namespace

class PaletteRowTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void find_words_data();
    void find_words();
    void find_notEnabled_comesLast();
    void find_onlyCommands_leavesTheRestOut();

private:
    const PaletteSearch m_search{QList<PaletteRow>{
        row(PaletteRow::Kind::Command, u"別名で保存…"_s, u"file.saveAs"_s),
        row(PaletteRow::Kind::Command, u"保存"_s, u"file.save"_s),
        row(PaletteRow::Kind::Macro, u"URLを抽出"_s, u"default_url"_s, u"リンクを行ごとに保存"_s),
        row(PaletteRow::Kind::Macro, u"ｶﾀｶﾅ to Hiragana"_s),
    }};
};

void PaletteRowTest::find_words_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("titles");
    QTest::newRow("nothing") << QString()
                             << QStringList{u"別名で保存…"_s,
                                            u"保存"_s,
                                            u"URLを抽出"_s,
                                            u"ｶﾀｶﾅ to Hiragana"_s};
    QTest::newRow("best first") << u"保存"_s
                                << QStringList{u"保存"_s, u"別名で保存…"_s, u"URLを抽出"_s};
    QTest::newRow("any order") << u"名 保存　別"_s << QStringList{u"別名で保存…"_s};
    QTest::newRow("id") << u"SAVE file"_s << QStringList{u"別名で保存…"_s, u"保存"_s};
    QTest::newRow("description") << u"リンク"_s << QStringList{u"URLを抽出"_s};
    QTest::newRow("case") << u"url"_s << QStringList{u"URLを抽出"_s};
    QTest::newRow("width of letters") << u"ＵＲＬ"_s << QStringList{u"URLを抽出"_s};
    QTest::newRow("width of kana") << u"カナ hira"_s << QStringList{u"ｶﾀｶﾅ to Hiragana"_s};
    QTest::newRow("not all words") << u"保存 xyz"_s << QStringList{};
}

void PaletteRowTest::find_words()
{
    QFETCH(const QString, typed);
    QFETCH(const QStringList, titles);
    QStringList found;
    for (const PaletteRow &each : m_search.find(typed))
        found << each.title;
    QCOMPARE(found, titles);
}

void PaletteRowTest::find_notEnabled_comesLast()
{
    PaletteRow disabled = row(PaletteRow::Kind::Command, u"検索"_s);
    disabled.isEnabled = false;
    const PaletteSearch search({disabled, row(PaletteRow::Kind::Command, u"次を検索"_s)});
    QCOMPARE(search.find(u"検索"_s).at(0).title, u"次を検索"_s);
    QCOMPARE(search.find(u"検索"_s).at(1).title, u"検索"_s);
}

void PaletteRowTest::find_onlyCommands_leavesTheRestOut()
{
    QCOMPARE(m_search.find(QString(), true).size(), 2);
    QCOMPARE(m_search.find(u"url"_s, true).size(), 0);
}

QTEST_APPLESS_MAIN(PaletteRowTest)
#include "PaletteRowTest.moc"

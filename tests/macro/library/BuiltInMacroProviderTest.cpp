#include "macro/library/BuiltInMacroProvider.h"

#include "wording/WordingTables.h"

#include <QCryptographicHash>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class BuiltInMacroProviderTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void script_everyMacro_isTheReleasedOne_data()
    {
        // Users keep the scripts that they have, so a changed script must be a deliberate decision.
        QTest::addColumn<QByteArray>("sha256");
        QTest::newRow("trimTrailingSpaces")
            << "aa9d04ec5a1b6fe45562cf3fb041550d97df32aa21667df58c0e87b9bb802efb"_ba;
        QTest::newRow("removeEmptyLines")
            << "60f46e8deb874ce001734992c6044d3940cf7403885b237fb42ab1c94d146b1f"_ba;
        QTest::newRow("addLinePrefix")
            << "0a864c4aca2d38fc81e228019b24d001130d451d9441ed96ad564b0260a94b67"_ba;
        QTest::newRow("addLineSuffix")
            << "f61cd40e1f151e3e2186fa6843f39ac48cb30bf3b8e6dac70b3641049b58a02b"_ba;
        QTest::newRow("insertDateTime")
            << "1c851bbfb102c27bfbd1514defca901bb13c92520250830cb3e8325a01ee7845"_ba;
        QTest::newRow("extractUrls")
            << "ca3268db1165aacd37062b8dc65b61ef40fbb29501e7d8e1c43b6e4c11ee31a7"_ba;
        QTest::newRow("stripHtmlTags")
            << "f93e9674635c3aa980ff860696d8fd904e0f0fe866783f6b24039faa3f386a0c"_ba;
    }

    void script_everyMacro_isTheReleasedOne()
    {
        QFETCH(QByteArray, sha256);
        const auto macro = builtInMacro(QString::fromLatin1(QTest::currentDataTag()));
        QVERIFY(macro.has_value());
        const QByteArray script = BuiltInMacroProvider::script(*macro).toUtf8();
        QCOMPARE(QCryptographicHash::hash(script, QCryptographicHash::Sha256).toHex(), sha256);
        QVERIFY(!script.endsWith('\n'));
    }

    void script_patterns_holdTheIdeographicSpace()
    {
        QVERIFY(BuiltInMacroProvider::script(BuiltInMacro::TrimTrailingSpaces)
                    .contains(u"/[ \\t\u3000]+$/"_s));
        QVERIFY(BuiltInMacroProvider::script(BuiltInMacro::RemoveEmptyLines)
                    .contains(u"/^[ \\t\u3000]*$/"_s));
    }

    void definitions_areInOrderWithTheirTexts()
    {
        struct Row
        {
            QString id;
            QString description;
            std::optional<QString> defaultInput;
        };

        const QList<Row> rows{
            {u"default_trimTrailingSpaces"_s,
             u"行末の不要な空白（半角、全角、タブ）を削除します。"_s,
             std::nullopt},
            {u"default_removeEmptyLines"_s, u"テキスト内から空行を取り除きます。"_s, std::nullopt},
            {u"default_addLinePrefix"_s,
             u"指定した文字列を各行の先頭に一括挿入します。"_s,
             u"- "_s},
            {u"default_addLineSuffix"_s, u"指定した文字列を各行の末尾に一括挿入します。"_s, u","_s},
            {u"default_insertDateTime"_s,
             u"現在の日時を挿入、または選択範囲を置換します。"_s,
             u"yyyy-MM-dd HH:mm"_s},
            {u"default_extractUrls"_s,
             u"テキストからURLを抜き出し、URL一覧に書き換えます。"_s,
             std::nullopt},
            {u"default_stripHtmlTags"_s,
             u"HTMLタグを取り除き、テキストのみにします。"_s,
             std::nullopt},
        };
        const auto &definitions = BuiltInMacroProvider::definitions();
        QCOMPARE(definitions.size(), rows.size());
        for (qsizetype i = 0; i < rows.size(); ++i) {
            QVERIFY(definitions[i].macro == allBuiltInMacros()[i]);
            QCOMPARE(definitions[i].id, rows[i].id);
            QCOMPARE(definitions[i].description, rows[i].description);
            QVERIFY(definitions[i].defaultInput == rows[i].defaultInput);
        }
    }

    void nameKey_everyMacro_hasAJapaneseText()
    {
        QStringList names;
        for (const BuiltInMacro macro : allBuiltInMacros())
            names.append(wording::fallbackTable().value(BuiltInMacroProvider::nameKey(macro)));
        QCOMPARE(names,
                 (QStringList{u"行末スペースを削除"_s,
                              u"空行を削除"_s,
                              u"行頭に文字を追加"_s,
                              u"行末に文字を追加"_s,
                              u"日付・時刻を挿入"_s,
                              u"URLを抽出"_s,
                              u"HTMLタグを除去"_s}));
    }
};

QTEST_APPLESS_MAIN(BuiltInMacroProviderTest)
#include "BuiltInMacroProviderTest.moc"

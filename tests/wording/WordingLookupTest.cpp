#include "wording/WordingLookup.h"

#include "wording/OwnTexts.h"
#include "wording/WordingTables.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class WordingLookupTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void cleanup() { wording::setActiveValues(std::nullopt); }

    void text_noActiveValues_isTheJapaneseOneOrTheKey()
    {
        QCOMPARE(wording::text(u"menu.file"_s), u"ファイル"_s);
        QCOMPARE(wording::text(u"menu.window"_s), u"menu.window"_s);
        QCOMPARE(wording::text(QString()), QString());
    }

    void text_ownKey_isItsText()
    {
        QCOMPARE(wording::text(u"dialog.inputTitle"_s), u"入力"_s);
        QCOMPARE(wording::text(u"dialog.file.replace"_s),
                 u"「%1」はすでにあります。\n置き換えますか？"_s);
        wording::setActiveValues(QHash<QString, QString>{{u"dialog.inputTitle"_s, u"Input"_s}});
        QCOMPARE(wording::text(u"dialog.inputTitle"_s), u"Input"_s);
    }

    void ownTexts_keys_areNotInTheBuiltInTable()
    {
        const QHash<QString, QString> &own = wording::ownTexts();
        QVERIFY(!own.isEmpty());
        for (auto i = own.cbegin(); i != own.cend(); ++i) {
            QVERIFY2(!wording::fallbackTable().contains(i.key()), qPrintable(i.key()));
            QVERIFY2(!i.value().isEmpty(), qPrintable(i.key()));
        }
    }

    void text_withDefault_unknownKey_isTheDefault()
    {
        QCOMPARE(wording::text(u"status.line"_s, u"another"_s), u"another"_s);
        QCOMPARE(wording::text(u"dialog.inputTitle"_s, u"入力"_s), u"入力"_s);
        QCOMPARE(wording::text(u"menu.window"_s, QString()), QString());
        QCOMPARE(wording::text(u"menu.file"_s, u"another"_s), u"ファイル"_s);
    }

    void text_tableAndCallSiteDiffer_theTableWins()
    {
        QCOMPARE(wording::text(u"error.invalidProfileJson"_s, u"JSON の形式が正しくありません"_s),
                 u"プロファイルJSONの形式が正しくありません"_s);
        QCOMPARE(wording::text(u"error.fileOpenFailed"_s, u"ファイルの読み込みに失敗しました"_s),
                 u"ファイルを開けませんでした"_s);
    }

    void text_activeValues_comeFirst()
    {
        wording::setActiveValues(wording::englishValues());
        QCOMPARE(wording::text(u"menu.file"_s), u"File"_s);
        QCOMPARE(wording::text(u"menu.file.new"_s), u"新規作成"_s);
        QCOMPARE(wording::text(u"menu.window"_s), u"Window"_s);
        QCOMPARE(wording::text(u"menu.window"_s, u"ウインドウ"_s), u"Window"_s);
        QCOMPARE(wording::text(u"macro.manageWindowTitle"_s, u"マクロ管理"_s), u"Macro Manager"_s);
    }

    void text_emptyActiveValues_changeNothing()
    {
        wording::setActiveValues(QHash<QString, QString>());
        QCOMPARE(wording::text(u"menu.file"_s), u"ファイル"_s);
        QCOMPARE(wording::text(u"menu.window"_s), u"menu.window"_s);
    }

    void text_emptyActiveText_isShownAsEmpty()
    {
        wording::setActiveValues(QHash<QString, QString>{{u"menu.file"_s, u""_s}});
        QCOMPARE(wording::text(u"menu.file"_s), QString());
        QCOMPARE(wording::text(u"menu.file"_s, u"default"_s), QString());
    }

    void text_keyOfAnotherSpelling_isUnknown()
    {
        QCOMPARE(wording::text(u"Menu.File"_s), u"Menu.File"_s);
        QCOMPARE(wording::text(u" menu.file"_s), u" menu.file"_s);
    }

    void setActiveValues_again_replacesThemAsAWhole()
    {
        wording::setActiveValues(QHash<QString, QString>{{u"a"_s, u"1"_s}});
        wording::setActiveValues(QHash<QString, QString>{{u"b"_s, u"2"_s}});
        QCOMPARE(wording::text(u"a"_s), u"a"_s);
        wording::setActiveValues(std::nullopt);
        QCOMPARE(wording::text(u"b"_s), u"b"_s);
    }
};

QTEST_APPLESS_MAIN(WordingLookupTest)
#include "WordingLookupTest.moc"

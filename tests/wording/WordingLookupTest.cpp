#include "wording/WordingLookup.h"

#include "support/CutStart.h"
#include "text/CutText.h"
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

    void text_withArguments_fillsThePlacesOfTheirNumbers_data()
    {
        QTest::addColumn<QString>("profileText");
        QTest::addColumn<QString>("filled");

        QTest::newRow("in order") << u"%1: %2"_s << u"A: B"_s;
        QTest::newRow("in another order") << u"%2 (%1)"_s << u"B (A)"_s;
        QTest::newRow("repeated") << u"%1%1 %2%1"_s << u"AA BA"_s;
        QTest::newRow("the first is missing") << u"only %2"_s << u"only B"_s;
        QTest::newRow("all are missing") << u"none"_s << u"none"_s;
        QTest::newRow("without an argument") << u"%1 %3 %9"_s << u"A %3 %9"_s;
        QTest::newRow("one digit") << u"%10 %12"_s << u"A0 A2"_s;
        QTest::newRow("no place") << u"100% %0 %% %L1 %x %"_s << u"100% %0 %% %L1 %x %"_s;
        QTest::newRow("after a percent sign") << u"%%1"_s << u"%A"_s;
        QTest::newRow("other digits") << u"%\u0661 %\uFF11"_s << u"%\u0661 %\uFF11"_s;
        QTest::newRow("empty") << QString() << QString();
    }

    void text_withArguments_fillsThePlacesOfTheirNumbers()
    {
        QFETCH(const QString, profileText);
        QFETCH(const QString, filled);
        wording::setActiveValues(QHash<QString, QString>{{u"a"_s, profileText}});
        QCOMPARE(wording::text(u"a"_s, {u"A"_s, u"B"_s}), filled);
    }

    void text_argumentsWithPlaces_areInsertedAsTheyAre()
    {
        wording::setActiveValues(QHash<QString, QString>{{u"a"_s, u"%1, %2, %1"_s}});
        QCOMPARE(wording::text(u"a"_s, {u"100%1.txt"_s, u"%2"_s}), u"100%1.txt, %2, 100%1.txt"_s);
        QCOMPARE(wording::text(u"a"_s, {u"%2"_s, u"%1"_s}), u"%2, %1, %2"_s);
        QCOMPARE(wording::text(u"a"_s, {u"%"_s, u"1"_s}), u"%, 1, %"_s);
    }

    void text_oneArgument_isNotADefault()
    {
        QCOMPARE(wording::text(u"dialog.savingMessage"_s, {u"100%1.txt"_s}),
                 u"「100%1.txt」を保存しています。"_s);
        QCOMPARE(wording::text(u"menu.window"_s, {u"A"_s}), u"menu.window"_s);
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

    void text_ownKey_followsTheLocale_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<bool>("isEnglish");

        QTest::newRow("none") << QString() << false;
        QTest::newRow("ja") << u"ja"_s << false;
        QTest::newRow("en") << u"en"_s << true;
        QTest::newRow("en-GB") << u"en-GB"_s << true;
        QTest::newRow("eng") << u"eng"_s << false;
        QTest::newRow("EN") << u"EN"_s << false;
        QTest::newRow("en_US") << u"en_US"_s << false;
    }

    void text_ownKey_followsTheLocale()
    {
        QFETCH(const QString, locale);
        QFETCH(const bool, isEnglish);
        wording::setActiveValues(QHash<QString, QString>{{u"dialog.yes"_s, u"Yup"_s}}, locale);
        QCOMPARE(wording::text(u"dialog.yes"_s), u"Yup"_s);
        QCOMPARE(wording::text(u"dialog.no"_s), isEnglish ? u"No"_s : u"いいえ"_s);
        QCOMPARE(wording::text(u"palette.line"_s, {u"3"_s}), isEnglish ? u"Line 3"_s : u"3 行"_s);
        QCOMPARE(wording::defaultTexts(locale).value(u"dialog.no"_s),
                 isEnglish ? u"No"_s : u"いいえ"_s);
        // Never the English of the built-in table, nor of keys that it only has in English.
        QCOMPARE(wording::text(u"menu.file"_s), u"ファイル"_s);
        QCOMPARE(wording::text(u"menu.window"_s), u"menu.window"_s);
        wording::setActiveValues(std::nullopt);
        QCOMPARE(wording::text(u"dialog.no"_s), u"いいえ"_s);
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

    void text_hugeActiveText_isCut()
    {
        const QString text = test::hugeText(u"%1名"_s);
        wording::setActiveValues(QHash<QString, QString>{{u"menu.file"_s, text}});
        QVERIFY(test::isCutStart(wording::text(u"menu.file"_s), text, kLongestShown));
        QVERIFY(test::isCutStart(wording::text(u"menu.file"_s, u"x"_s), text, kLongestShown));
        QVERIFY(wording::text(u"menu.file"_s, {u"12"_s}).size() <= kLongestShown + 1);
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

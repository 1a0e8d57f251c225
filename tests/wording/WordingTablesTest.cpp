#include "wording/WordingTables.h"

#include "wording/WordingLookup.h"

#include <QCryptographicHash>
#include <QTest>

#include <algorithm>

using namespace penwick;
using namespace Qt::StringLiterals;

class WordingTablesTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void cleanup() { wording::setActiveValues(std::nullopt); }

    void fallbackTable_always_holdsExactlyItsHundredTexts()
    {
        const QHash<QString, QString> &table = wording::fallbackTable();
        QCOMPARE(table.size(), 100);
        QStringList keys = table.keys();
        std::sort(keys.begin(), keys.end());
        QByteArray listing;
        for (const QString &key : std::as_const(keys))
            listing += key.toUtf8() + '\t' + table.value(key).toUtf8() + '\n';
        // The digest of the agreed wording, one "key TAB text LF" after another in the order of the
        // keys. An intended change of a text changes the digest too.
        QCOMPARE(QCryptographicHash::hash(listing, QCryptographicHash::Sha256).toHex(),
                 "90985f2edd3b8e2d384bf4d4bb4f1f380931a12f1171037c6d775df53ef53b8c"_ba);
    }

    void fallbackTable_punctuation_isKeptAsItIs()
    {
        const QHash<QString, QString> &table = wording::fallbackTable();
        QCOMPARE(table.value(u"menu.file.open"_s), u"開く\u2026"_s);
        QCOMPARE(table.value(u"profile.manage.deleteConfirmMessage"_s),
                 u"本当に削除してもよろしいですか\uFF1Fこの操作は元に戻せません\u3002"_s);
        QCOMPARE(table.value(u"app.description"_s),
                 u"シンプルに書けて\u3001必要に応じて育てられるテキストエディタ"_s);
    }

    void englishValues_always_areTheNine()
    {
        const QHash<QString, QString> expected{
            {u"menu.file"_s, u"File"_s},
            {u"menu.edit"_s, u"Edit"_s},
            {u"menu.macro"_s, u"Macro"_s},
            {u"menu.profile"_s, u"Profile"_s},
            {u"menu.window"_s, u"Window"_s},
            {u"menu.help"_s, u"Help"_s},
            {u"profile.manage"_s, u"Manage UI Wording Profiles..."_s},
            {u"profile.manageWindowTitle"_s, u"UI Wording Profile Manager"_s},
            {u"macro.manageWindowTitle"_s, u"Macro Manager"_s},
        };
        QCOMPARE(wording::englishValues(), expected);
    }

    void english_coversOnlyItsNineKeys()
    {
        wording::setActiveValues(wording::englishValues());
        QCOMPARE(wording::text(u"menu.file"_s), u"File"_s);
        QCOMPARE(wording::text(u"menu.file.new"_s), u"新規作成"_s);
    }

    void english_textsOfTheAgreedDefaults_stayJapanese()
    {
        const QList<std::pair<QString, QString>> texts{
            {u"dialog.inputTitle"_s, u"入力"_s},
            {u"dialog.prefixMessage"_s, u"行頭に追加する文字列を入力してください："_s},
            {u"dialog.suffixMessage"_s, u"行末に追加する文字列を入力してください："_s},
            {u"dialog.dateTimeMessage"_s, u"挿入する日付の形式を選択してください："_s},
            {u"macro.notification.canceled"_s, u"キャンセルしました"_s},
            {u"macro.notification.canceledEmpty"_s,
             u"文字列が指定されなかったため、実行を中止しました"_s},
            {u"macro.warning.imeActive"_s,
             u"日本語入力の変換を確定してからマクロを実行してください"_s},
            {u"macro.error.noTextView"_s, u"テキストエリアが見つかりません"_s},
            {u"macro.testRunReplaceAll"_s, u"テストマクロを実行（replaceAll）"_s},
            {u"macro.testRunReplaceSelection"_s, u"テストマクロを実行（replaceSelection）"_s},
            {u"macro.manageTestRunNoEditor"_s, u"実行対象のエディタが見つかりません"_s},
            {u"macro.manageAdd"_s, u"追加"_s},
            {u"macro.manageImportSuccess"_s, u"マクロをインポートしました"_s},
            {u"macro.manageExportSuccess"_s, u"エクスポートしました"_s},
            {u"macro.manageExportFailed"_s, u"エクスポートに失敗しました"_s},
            {u"macro.manageExportDefaultFilename"_s, u"macro"_s},
            {u"macro.manageDeleteConfirmTitle"_s, u"マクロの削除"_s},
            {u"macro.manageDeleteConfirmMessage"_s,
             u"本当に削除してもよろしいですか？この操作は元に戻せません。"_s},
            {u"macro.sourceBuiltin"_s, u"組み込み"_s},
            {u"macro.sourceUser"_s, u"ユーザー"_s},
            {u"macro.sourceImported"_s, u"インポート"_s},
            {u"status.line"_s, u"行"_s},
            {u"status.column"_s, u"列"_s},
            {u"status.charCount"_s, u"文字"_s},
        };
        wording::setActiveValues(wording::englishValues(), u"en"_s);
        for (const auto &[key, text] : texts)
            QCOMPARE(wording::text(key), text);
        QCOMPARE(wording::text(u"macro.manageWindowTitle"_s), u"Macro Manager"_s);
        QCOMPARE(wording::text(u"command.quit"_s, {u"penwick"_s}), u"penwick を終了"_s);
        QCOMPARE(wording::text(u"command.about"_s, {u"penwick"_s}), u"penwick について"_s);
    }

    void japanese_menuWindow_hasNoText()
    {
        QVERIFY(!wording::fallbackTable().contains(u"menu.window"_s));
        QVERIFY(!wording::fallbackTable().contains(u"macro.manageWindowTitle"_s));
        QCOMPARE(wording::text(u"menu.window"_s), u"menu.window"_s);
    }

    void anyProfile_nameAndFileName_areTheSame()
    {
        for (const auto &values : {QHash<QString, QString>(), wording::englishValues()}) {
            wording::setActiveValues(values);
            QCOMPARE(wording::text(u"profile.manage.exportDefaultFilename"_s), u"profile"_s);
            QCOMPARE(wording::text(u"app.name"_s), u"penwick"_s);
        }
    }

    void userProfile_keyOutsideTheTables_overridesTheDefault()
    {
        wording::setActiveValues(QHash<QString, QString>{{u"dialog.inputTitle"_s, u"Input"_s}});
        QCOMPARE(wording::text(u"dialog.inputTitle"_s, u"入力"_s), u"Input"_s);
    }
};

QTEST_APPLESS_MAIN(WordingTablesTest)
#include "WordingTablesTest.moc"

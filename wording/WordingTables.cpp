#include "wording/WordingTables.h"

#include "wording/TextTable.h"

namespace penwick::wording {

namespace {

// One row per line, also beyond the column limit; clang-format would break the long ones.
// clang-format off
constexpr TextRow kJapanese[] = {
    {u"app.name", u"penwick"},
    {u"app.description", u"シンプルに書けて、必要に応じて育てられるテキストエディタ"},
    {u"common.ok", u"OK"},
    {u"common.cancel", u"キャンセル"},
    {u"common.close", u"閉じる"},
    {u"common.save", u"保存"},
    {u"common.delete", u"削除"},
    {u"common.duplicate", u"複製"},
    {u"common.reset", u"リセット"},
    {u"common.import", u"インポート"},
    {u"common.export", u"エクスポート"},
    {u"menu.file", u"ファイル"},
    {u"menu.edit", u"編集"},
    {u"menu.view", u"表示"},
    {u"menu.macro", u"マクロ"},
    {u"menu.profile", u"プロファイル"},
    {u"menu.settings", u"設定"},
    {u"menu.help", u"ヘルプ"},
    {u"menu.help.checkForUpdates", u"アップデートを確認…"},
    {u"menu.file.new", u"新規作成"},
    {u"menu.file.open", u"開く…"},
    {u"menu.file.save", u"保存"},
    {u"menu.file.saveAs", u"別名で保存…"},
    {u"menu.file.close", u"閉じる"},
    {u"menu.edit.undo", u"元に戻す"},
    {u"menu.edit.redo", u"やり直す"},
    {u"menu.edit.cut", u"切り取り"},
    {u"menu.edit.copy", u"コピー"},
    {u"menu.edit.paste", u"貼り付け"},
    {u"menu.edit.find", u"検索"},
    {u"menu.edit.replace", u"置換"},
    {u"editor.placeholder", u"ここにテキストを入力"},
    {u"editor.untitled", u"名称未設定"},
    {u"editor.modified", u"未保存"},
    {u"editor.saved", u"保存済み"},
    {u"status.ready", u"準備完了"},
    {u"status.saved", u"保存しました"},
    {u"status.saveFailed", u"保存に失敗しました"},
    {u"status.macroCompleted", u"マクロを実行しました"},
    {u"status.macroFailed", u"マクロの実行に失敗しました"},
    {u"status.profileApplied", u"プロファイルを適用しました"},
    {u"macro.menuTitle", u"マクロ"},
    {u"macro.manage", u"マクロ管理…"},
    {u"macro.run", u"実行"},
    {u"macro.duplicate", u"複製して編集"},
    {u"macro.resetDefaults", u"初期マクロを復元"},
    {u"macro.import", u"インポート…"},
    {u"macro.export", u"エクスポート…"},
    {u"macro.notification.noMacro", u"マクロがありません"},
    {u"macro.manage.emptySelection", u"マクロを選択してください"},
    {u"macro.manage.newMacro", u"新規マクロ"},
    {u"macro.manage.basicInfo", u"基本情報"},
    {u"macro.manage.name", u"マクロ名"},
    {u"macro.manage.description", u"説明"},
    {u"macro.manage.category", u"カテゴリ"},
    {u"macro.manage.helpURL", u"ヘルプURL"},
    {u"macro.manage.code", u"JavaScript コード"},
    {u"macro.manage.testRun", u"テスト実行"},
    {u"macro.default.trimTrailingSpaces.name", u"行末スペースを削除"},
    {u"macro.default.removeEmptyLines.name", u"空行を削除"},
    {u"macro.default.addLinePrefix.name", u"行頭に文字を追加"},
    {u"macro.default.addLineSuffix.name", u"行末に文字を追加"},
    {u"macro.default.insertDateTime.name", u"日付・時刻を挿入"},
    {u"macro.default.extractUrls.name", u"URLを抽出"},
    {u"macro.default.stripHtmlTags.name", u"HTMLタグを除去"},
    {u"profile.menuTitle", u"プロファイル"},
    {u"profile.manage", u"UI文言プロファイル管理…"},
    {u"profile.manageWindowTitle", u"UI文言プロファイル管理"},
    {u"profile.manage.emptySelection", u"プロファイルを選択してください"},
    {u"profile.manage.basicInfo", u"基本情報"},
    {u"profile.manage.name", u"プロファイル名"},
    {u"profile.manage.description", u"説明"},
    {u"profile.manage.locale", u"言語"},
    {u"profile.manage.valuesCount", u"設定キー数"},
    {u"profile.manage.createdAt", u"作成日時"},
    {u"profile.manage.updatedAt", u"更新日時"},
    {u"profile.manage.apply", u"このプロファイルを適用"},
    {u"profile.manage.active", u"適用中"},
    {u"profile.manage.deleteConfirmTitle", u"プロファイルの削除"},
    {u"profile.manage.deleteConfirmMessage", u"本当に削除してもよろしいですか？この操作は元に戻せません。"},
    {u"profile.manage.importSuccess", u"プロファイルをインポートしました"},
    {u"profile.manage.exportSuccess", u"エクスポートしました"},
    {u"profile.manage.exportFailed", u"エクスポートに失敗しました"},
    {u"profile.manage.exportDefaultFilename", u"profile"},
    {u"profile.manage.copySuffix", u"のコピー"},
    {u"profile.manage.applySuccessMessage", u"プロファイルを適用しました。一部の表示は再起動後に反映されます。"},
    {u"error.generic", u"エラーが発生しました"},
    {u"error.fileOpenFailed", u"ファイルを開けませんでした"},
    {u"error.fileSaveFailed", u"ファイルを保存できませんでした"},
    {u"error.invalidProfileJson", u"プロファイルJSONの形式が正しくありません"},
    {u"error.macroExecutionFailed", u"マクロの実行中にエラーが発生しました"},
    {u"macro.error.timeout", u"マクロの実行がタイムアウトしました"},
    {u"macro.error.invalidType", u"未知の textEdits.type です"},
    {u"macro.error.noText", u"textEdits に text フィールドがありません"},
    {u"macro.error.invalidReplaceLines", u"replaceLines の startLine / endLine / lines が不正です"},
    {u"macro.error.outOfBounds", u"cursor または selection の offset が範囲外です"},
    {u"macro.error.noSelection", u"選択範囲がないため replaceSelection を実行できません"},
    {u"macro.error.notObject", u"マクロの戻り値がオブジェクトではありません"},
    {u"macro.error.contextConversion", u"context の JSON 変換に失敗しました"},
    {u"macro.error.jsContextCreation", u"JSContext の生成に失敗しました"},
};

constexpr TextRow kEnglish[] = {
    {u"menu.file", u"File"},
    {u"menu.edit", u"Edit"},
    {u"menu.macro", u"Macro"},
    {u"menu.profile", u"Profile"},
    {u"menu.help", u"Help"},
    {u"profile.manage", u"Manage UI Wording Profiles..."},
    {u"profile.manageWindowTitle", u"UI Wording Profile Manager"},
    {u"menu.window", u"Window"},
    {u"macro.manageWindowTitle", u"Macro Manager"},
};

// clang-format on

} // namespace

const QHash<QString, QString> &fallbackTable()
{
    static const QHash<QString, QString> table = textsByKey(kJapanese);
    return table;
}

QHash<QString, QString> englishValues()
{
    return textsByKey(kEnglish);
}

} // namespace penwick::wording

#include "app/TestMacros.h"

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

Macro testMacro(const QString &id, const QString &name, const QString &code)
{
    Macro macro;
    macro.id = id;
    macro.name = name;
    macro.code = code;
    return macro;
}

} // namespace

// clang-format off
Macro replaceAllTestMacro()
{
    return testMacro(u"test_replace_all"_s, u"テスト: replaceAll"_s, uR"js(return {
    schemaVersion: "1.0",
    textEdits: [{ type: "replaceAll", text: "テストマクロが実行されました！\n現在時刻: " + context.dateTime.nowIso }],
    notifications: [{ type: "success", message: "replaceAll テスト成功" }]
};)js"_s);
}

Macro replaceSelectionTestMacro()
{
    return testMacro(u"test_replace_selection"_s, u"テスト: replaceSelection"_s, uR"js(if (!context.selection.hasSelection) {
    return {
        schemaVersion: "1.0",
        textEdits: [],
        notifications: [{ type: "info", message: "選択範囲がありません。テキストを選択してから実行してください。" }]
    };
}
return {
    schemaVersion: "1.0",
    textEdits: [{ type: "replaceSelection", text: "[選択テスト: " + context.selection.text + "]" }],
    notifications: [{ type: "success", message: "replaceSelection テスト成功" }]
};)js"_s);
}

// clang-format on

} // namespace penwick

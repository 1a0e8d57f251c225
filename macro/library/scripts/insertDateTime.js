// 実行時に ホスト 側からグローバル変数 userInput が注入されます
if (context.selection.hasSelection) {
    return {
        textEdits: [{ type: "replaceSelection", text: userInput }],
        cursor: { offset: context.selection.startOffset + userInput.length },
        notifications: [{ type: "success", message: "日付・時刻を挿入しました" }]
    };
} else {
    return {
        textEdits: [{ type: "insertAtCursor", text: userInput }],
        cursor: { offset: context.cursor.offset + userInput.length },
        notifications: [{ type: "success", message: "日付・時刻を挿入しました" }]
    };
}
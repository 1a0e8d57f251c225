// 実行時に ホスト 側からグローバル変数 userInput が注入されます
const targetText = context.selection.hasSelection 
    ? context.document.text.split('\n').slice(context.selection.startLine, context.selection.endLine)
    : context.document.text.split('\n');

const newLines = targetText.map(line => line + userInput);

if (context.selection.hasSelection) {
    return {
        textEdits: [{ type: "replaceLines", startLine: context.selection.startLine, endLine: context.selection.endLine, lines: newLines }],
        notifications: [{ type: "success", message: newLines.length + "行の行末に文字を追加しました" }]
    };
} else {
    return {
        textEdits: [{ type: "replaceLines", startLine: 0, endLine: context.document.lineCount, lines: newLines }],
        notifications: [{ type: "success", message: newLines.length + "行の行末に文字を追加しました" }]
    };
}
const lines = context.selection.hasSelection 
    ? context.document.text.split('\n').slice(context.selection.startLine, context.selection.endLine)
    : context.document.text.split('\n');

const newLines = lines.filter(line => !/^[ \t　]*$/.test(line));
const deletedCount = lines.length - newLines.length;

if (deletedCount === 0) {
    return {
        textEdits: [],
        notifications: [{ type: "info", message: "削除する空行はありませんでした" }]
    };
}

if (context.selection.hasSelection) {
    return {
        textEdits: [{ type: "replaceLines", startLine: context.selection.startLine, endLine: context.selection.endLine, lines: newLines }],
        notifications: [{ type: "success", message: deletedCount + "行の空行を削除しました" }]
    };
} else {
    return {
        textEdits: [{ type: "replaceLines", startLine: 0, endLine: context.document.lineCount, lines: newLines }],
        notifications: [{ type: "success", message: deletedCount + "行の空行を削除しました" }]
    };
}
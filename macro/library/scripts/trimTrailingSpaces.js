const lines = context.selection.hasSelection 
    ? context.document.text.split('\n').slice(context.selection.startLine, context.selection.endLine)
    : context.document.text.split('\n');

const newLines = lines.map(line => line.replace(/[ \t　]+$/, ''));
let changedCount = 0;
for (let i = 0; i < lines.length; i++) {
    if (lines[i] !== newLines[i]) changedCount++;
}

if (changedCount === 0) {
    return {
        textEdits: [],
        notifications: [{ type: "info", message: "削除する行末スペースはありませんでした" }]
    };
}

if (context.selection.hasSelection) {
    return {
        textEdits: [{ type: "replaceLines", startLine: context.selection.startLine, endLine: context.selection.endLine, lines: newLines }],
        notifications: [{ type: "success", message: changedCount + "件の行末スペースを削除しました" }]
    };
} else {
    return {
        textEdits: [{ type: "replaceLines", startLine: 0, endLine: context.document.lineCount, lines: newLines }],
        notifications: [{ type: "success", message: changedCount + "件の行末スペースを削除しました" }]
    };
}
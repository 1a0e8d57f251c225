const sourceText = context.selection.hasSelection ? context.selection.text : context.document.text;
let urls = sourceText.match(/https?:\/\/[^\s"'<>]+/g) ?? [];

// 末尾の不要な記号（句読点、閉じ括弧など）を除去
urls = urls.map(url => url.replace(/[.,。、)）\]】}]+$/, ""));

if (urls.length === 0) {
    return {
        textEdits: [],
        notifications: [{ type: "info", message: "URLが見つかりませんでした" }]
    };
}

const resultText = urls.join('\n');
return {
    textEdits: [{ type: context.selection.hasSelection ? "replaceSelection" : "replaceAll", text: resultText }],
    notifications: [{ type: "success", message: urls.length + "件のURLを抽出しました" }]
};
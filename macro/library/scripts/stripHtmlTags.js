const sourceText = context.selection.hasSelection ? context.selection.text : context.document.text;
// <br> <br/> <br /> を context.document.newline に合わせた改行へ変換する
// ここではJavaScript側では一律 \n にし、ホスト側で document.newline に合わせる方針
let newText = sourceText.replace(/<br\s*\/?>/gi, '\n');
// その他の開始山括弧 < から終了山括弧 > までのHTMLタグ表現を削除
newText = newText.replace(/<[^>]+>/g, '');

if (sourceText === newText) {
    return {
        textEdits: [],
        notifications: [{ type: "info", message: "除去するHTMLタグはありませんでした" }]
    };
}

return {
    textEdits: [{ type: context.selection.hasSelection ? "replaceSelection" : "replaceAll", text: newText }],
    notifications: [{ type: "success", message: "HTMLタグを除去しました" }]
};
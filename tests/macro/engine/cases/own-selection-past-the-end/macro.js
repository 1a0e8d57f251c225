return {
    textEdits: [{ type: 'replaceAll', text: '<' + context.document.text + '>' }],
    selection: { startOffset: 1, endOffset: 999 },
};

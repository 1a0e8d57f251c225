return {
    textEdits: [{ type: 'replaceAll', text: context.document.text.toUpperCase() }],
    cursor: { line: 1, column: 1 },
};

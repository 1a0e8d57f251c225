return {
    textEdits: [
        { type: 'replaceAll', text: 'x\ny' },
        { type: 'replaceLines', startLine: 1, endLine: 2, lines: ['z'] },
        { type: 'insertAtCursor', text: '!' },
    ],
};

return {
    textEdits: [
        { type: 'replaceSelection', text: '' },
        { type: 'replaceSelection', text: 'never' },
    ],
    cursor: { offset: 0 },
};

return {
    get textEdits() { throw new Error('no'); },
    notifications: [{message: 'got here'}],
};

const no = () => { throw new Error('no'); };
return {
    textEdits: new Proxy([], {get: no, ownKeys: no, has: no, getOwnPropertyDescriptor: no}),
    notifications: [{message: 'got here'}],
};

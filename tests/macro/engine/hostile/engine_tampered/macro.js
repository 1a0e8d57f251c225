Object.prototype.toString = Array.prototype.push = () => { throw 1; };
Object.defineProperty(Object.prototype, 'textEdits', {get() { return [{type: 'replaceAll', text: ''}]; }});
throw {toString() { for (;;) ; }};

const a = [];
for (let i = 0; ; i++) a.push(('x'.repeat(1000) + i).split('').join(''));

const line = 'a'.repeat(80) + 'b\n';
return {a: line.repeat(1000).split('\n').filter((text) => /^((a|aa)+)+$/u.test(text)).length};

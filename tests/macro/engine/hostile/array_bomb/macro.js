const a = [];
for (;;) a.push({});

const a = [];
for (;;) a.push(new Uint8Array(1 << 24).fill(1));

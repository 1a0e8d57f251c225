let s = 'x';
for (;;) s += s;

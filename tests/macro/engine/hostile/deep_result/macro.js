let o = {};
for (let i = 0; i < 100000; i++) o = {o};
return o;

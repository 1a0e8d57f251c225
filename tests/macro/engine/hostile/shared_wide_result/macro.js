let o = [1, 2, 3, 4];
for (let i = 0; i < 40; i++) o = [o, o];
return {o};

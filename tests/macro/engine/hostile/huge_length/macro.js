const a = [];
a.length = 4294967295;
return {textEdits: a};

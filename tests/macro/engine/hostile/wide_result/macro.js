return {a: new Array(40000000).fill(0)};

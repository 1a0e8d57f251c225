function f() { return f() + 1; }
return {a: f()};

const memory = new WebAssembly.Memory({initial: 1, maximum: 1, shared: true});
Atomics.wait(new Int32Array(memory.buffer), 0, 0);

// Exercises the parts of the engine that macros can reach, inside the sandbox. This reveals what the
// sandbox denies the engine before a user's macro fails on it.
//
// userInput: minutes that local time is behind UTC on 2010-01-15 and 2010-07-15 at 12:00 UTC, as
// "january,july"; missing when the caller cannot predict them. The global onlyStep, if set, is the name
// of the only step to run.
//
// Logs the name of each step when it begins. The completion value lists the steps that did not return
// true or that threw: "name: what happened".

(function () {
    'use strict';
    const failures = [];

    function step(name, work) {
        if (typeof onlyStep === 'string' && name !== onlyStep)
            return;
        console.log(name);
        try {
            const result = work();
            if (result !== true)
                failures.push(name + ': ' + String(result));
        } catch (error) {
            failures.push(name + ': ' + String(error));
        }
    }

    step('regular expressions', function () {
        const text = 'name=日本語; other=42;\n'.repeat(2000);
        let found = 0;
        for (let i = 0; i < 50; ++i)
            found += text.match(/(\p{Script=Han}+|\d+);/gu).length;
        return found === 200000 && 'a-b-c'.replace(/-/g, '+') === 'a+b+c';
    });

    // The engine runs look-behind and long back references in its interpreter.
    step('regular expressions, interpreted', function () {
        return 'price: 300'.match(/(?<=price: )\d+/)[0] === '300' &&
            /(?<word>[a-zé]+) \k<word>/iu.test('Été été') && /^(a|ab)(c|bcd)(d*)\1?$/i.test('abcd');
    });

    step('collection of garbage', function () {
        let kept = [];
        for (let i = 0; i < 400000; ++i) {
            kept.push({ index: i, text: 'x' + i, list: [i, i + 1] });
            if (kept.length > 60000)
                kept = kept.slice(30000);
        }
        const weak = typeof WeakRef === 'function' ? new WeakRef({}) : null;
        return kept.length > 0 && (weak === null || 'deref' in weak);
    });

    step('dates', function () {
        const january = new Date(Date.UTC(2010, 0, 15, 12));
        const july = new Date(Date.UTC(2010, 6, 15, 12));
        const offsets = january.getTimezoneOffset() + ',' + july.getTimezoneOffset();
        if (typeof userInput === 'string' && offsets !== userInput)
            return 'time zone: ' + offsets + ' instead of ' + userInput;
        return january.toString().length > 0 && Date.parse('2024-02-29T00:00:00Z') === 1709164800000 &&
            january.toLocaleString('ja-JP').includes('2010');
    });

    const samples = {
        Collator: (service) => service.compare('い', 'あ') > 0,
        DateTimeFormat: (service) => service.format(new Date(0)).length > 0,
        DisplayNames: (service) => service.of('JP') === '日本',
        DurationFormat: (service) => service.format({ hours: 1 }).length > 0,
        ListFormat: (service) => service.format(['a', 'b']).includes('a'),
        Locale: (service) => service.maximize().toString().startsWith('ja'),
        NumberFormat: (service) => service.format(1234.5) === '1,234.5',
        PluralRules: (service) => service.select(2) === 'other',
        RelativeTimeFormat: (service) => service.format(-1, 'day').length > 0,
        Segmenter: (service) => Array.from(service.segment('今日は')).length > 0,
    };
    // Every service that this engine has, including those of later versions.
    for (const name of Object.getOwnPropertyNames(Intl)) {
        if (typeof Intl[name] === 'function' && Intl[name].prototype !== undefined)
            step('Intl.' + name, function () {
                const options = name === 'DisplayNames' ? { type: 'region' } : {};
                const service = new Intl[name]('ja', options);
                return samples[name] === undefined || samples[name](service);
            });
    }

    step('text', function () {
        return 'か\u3099'.normalize('NFC') === 'が' && 'İ'.toLocaleLowerCase('tr') === 'i' &&
            '①'.normalize('NFKC') === '1';
    });

    // Promises settle after the script's last line; the caller reads the completion value after that.
    step('promises', function () {
        const unsettled = 'promises: did not settle';
        failures.push(unsettled);
        (async function () {
            for (let i = 0; i < 100; ++i)
                await null;
            return Promise.allSettled([Promise.reject(1), 2]);
        })().then((results) => {
            if (results.length === 2 && results[0].status === 'rejected')
                failures.splice(failures.indexOf(unsettled), 1);
        });
        return true;
    });

    step('typed arrays', function () {
        const numbers = new Float64Array(1 << 18);
        for (let i = 0; i < numbers.length; ++i)
            numbers[i] = (i * 7919) % 10007;
        numbers.sort();
        const big = new BigUint64Array([1n, 2n]);
        return numbers[0] === 0 && numbers[numbers.length - 1] === 10006 && big[1] === 2n &&
            new DataView(big.buffer).getUint8(0) === 1;
    });

    if (typeof WebAssembly === 'object')
        step('WebAssembly', function () {
            // sum(n) = n + (n - 1) + ... + 1, as a loop.
            const code = new Uint8Array([
                0, 97, 115, 109, 1, 0, 0, 0, 1, 6, 1, 96, 1, 127, 1, 127, 3, 2, 1, 0, 7, 7, 1, 3, 115,
                117, 109, 0, 0, 10, 32, 1, 30, 1, 1, 127, 3, 64, 32, 0, 32, 1, 106, 33, 1, 32, 0, 65, 1,
                107, 33, 0, 32, 0, 65, 0, 75, 13, 0, 11, 32, 1, 11]);
            const sum = new WebAssembly.Instance(new WebAssembly.Module(code)).exports.sum;
            let total = 0;
            for (let i = 0; i < 300; ++i)
                total = sum(10000);
            return total === 50005000;
        });

    step('compiled code', function () {
        function mix(seed, count) {
            let value = seed;
            for (let i = 0; i < count; ++i)
                value = (Math.imul(value, 1664525) + 1013904223 + (i & 3)) | 0;
            return value;
        }
        const first = mix(1, 200000);
        for (let i = 0; i < 60; ++i) {
            if (mix(1, 200000) !== first)
                return 'a loop gave another result once it was compiled';
        }
        return true;
    });

    // Waits with a timeout, and starts the engine's own timers if it has any.
    step('timers', function () {
        const buffer = typeof SharedArrayBuffer === 'function'
            ? new SharedArrayBuffer(8)
            : new WebAssembly.Memory({ initial: 1, maximum: 1, shared: true }).buffer;
        const cells = new Int32Array(buffer);
        if (typeof Atomics.waitAsync === 'function')
            Atomics.waitAsync(cells, 1, 0, 1);
        return Atomics.wait(cells, 0, 0, 5) === 'timed-out';
    });

    return { failures: failures };
})();

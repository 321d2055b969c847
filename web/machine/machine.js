// korvane.wasm and what it imports: the machine, for whoever runs it (a worker in a page, a test under Node).
//
// The module runs on a stack of its own that stands still whenever it waits (JavaScript Promise Integration). No memory
// is shared, so the page needs no special headers.

// A program that runs lets the event loop have a turn so often, in milliseconds: less often where there is nothing to draw.
const turnInterval = 8;
const quietTurnInterval = 25;

// A program that only looks for keys or at the clock, with few statements between two looks, does so at least so many times
// in a millisecond. When it has drawn nothing for a while either, it is waiting: it is given rests then, with shorter turns
// between them. A game looks for keys as often, but draws, and gets all the time there is.
const looksOfAWait = 250;
const drawsNothing = 1000;
const turnOfAWait = 2;
const restOfAWait = 10;

// To ask for the time takes as long as some ten statements: where looks follow one another shortly, in milliseconds, it is asked
// for at every second, then at every fourth, at every sixteenth at most.
const shortly = 0.25;
const longestStride = 16;

// Why this JavaScript engine cannot run the machine: "jspi"; null when it can.
export function whatIsMissing() {
    return typeof WebAssembly.Suspending === "function" && typeof WebAssembly.promising === "function" ? null : "jspi";
}

const encoder = new TextEncoder();
const decoder = new TextDecoder();

export class Machine {
    #exports;
    #memory;
    #channel = new MessageChannel();
    #pressed = null;  // ends the wait for a key
    #keyCount = 0;    // pressed and not yet waited for
    #turnLength = turnInterval;
    #nextTurn = 0;
    #lastTime = 0;    // that has been asked for in this turn
    #stride = 1;      // looks from one to the next that asks for the time
    #toPass = 1;
    #looks = 0;       // for keys in this turn, with few statements between two
    #clockLooks = 0;
    #lastDrawn = 0;
    #skipped = 0;  // nanoseconds that stalls have taken from nobody
    #started = false;

    // What becomes of the machine is told to these functions, all of which may be left out:
    //   waits(waiting)     it begins or ends to wait for a key
    //   turn()             the event loop is about to have a turn, or the machine to wait; true when nothing has been drawn
    //                      for a while
    //   changed(change)    {path, bytes, modified}, {path, folder: true, modified} or {path, gone: true}
    //   fail(message)
    constructor(module, told = {}, pages = {initial: 6144, maximum: 24576}) {
        this.told = told;
        this.#memory = new WebAssembly.Memory(pages);
        const suspending = (work) => new WebAssembly.Suspending(work);
        const machine = {
            ticks: () => {
                ++this.#clockLooks;
                return performance.now() * 1e6 + this.#skipped;
            },
            now: () => Date.now(),
            minutes_ahead: (milliseconds) => -new Date(milliseconds).getTimezoneOffset(),
            stall: suspending((microseconds) => this.#stall(microseconds)),
            wait_for_key: suspending(() => this.#waitForKey()),
            is_turn_due: (soon, clock) => this.#isTurnDue(soon, clock),
            turn: suspending(() => this.#turn()),
            halt: suspending(() => this.#halt()),
            tell_file: (path, length, bytes, size, modified) =>
                this.#tell(path, length, {bytes: this.#bytes(bytes, size).slice(), modified}),
            tell_folder: (path, length, modified) => this.#tell(path, length, {folder: true, modified}),
            tell_gone: (path, length) => this.#tell(path, length, {gone: true}),
            fail: (reason, length) => {
                throw new Error(this.#text(reason, length));
            },
        };
        const instance = new WebAssembly.Instance(module, {env: {memory: this.#memory}, machine});
        this.#exports = instance.exports;
        this.#exports.__wasm_call_ctors();
    }

    get exports() {
        return this.#exports;
    }
    get memory() {
        return this.#memory;
    }

    // Runs the machine to its end; the status with which the interpreter has returned.
    async run(width, height) {
        this.#beginTurn(turnInterval);
        return Number(await WebAssembly.promising(this.#exports.run)(width, height));
    }

    press(scan, character) {
        this.#exports.press(scan, character);
        ++this.#keyCount;
        this.#pressed?.();
    }

    // The machine's code of a character (a code point), or null when it has none.
    codeOf(character) {
        const code = this.#exports.code_of(character);
        return code < 0 ? null : code;
    }

    // Files of the volume, by paths that begin with a slash. False for a path that FAT cannot hold.
    putFile(path, bytes, modified) {
        const name = encoder.encode(path);
        this.#hand(name, bytes);
        return this.#exports.put_file(BigInt(name.length), modified) !== 0;
    }
    putFolder(path) {
        const name = encoder.encode(path);
        this.#hand(name);
        return this.#exports.put_folder(BigInt(name.length)) !== 0;
    }
    remove(path) {
        const name = encoder.encode(path);
        this.#hand(name);
        this.#exports.remove(BigInt(name.length));
    }
    lendImage(bytes) {
        this.#hand(bytes);
        this.#exports.lend_image();
    }

    // What has changed on the screen since the last call, or null before there is one: {width, height, left, top,
    // columns, rows} in pixels; `columns` is 0 when nothing has. `pixels` are all of the screen's, as a canvas has them;
    // they are good until the machine goes on.
    updatePicture() {
        const place = this.#exports.update_picture();
        if (place === 0n) return null;
        const words = new DataView(this.#memory.buffer, Number(place), 32);
        const [width, height, left, top, columns, rows] = [0, 4, 8, 12, 16, 20].map((at) => words.getUint32(at, true));
        if (columns !== 0) this.#lastDrawn = performance.now();
        const pixels = new Uint8ClampedArray(this.#memory.buffer, Number(words.getBigUint64(24, true)), width * height * 4);
        return {width, height, left, top, columns, rows, pixels};
    }

    // The text of the screen as updatePicture() has last seen it: {rows, columns, cursor}; null when it is as before and
    // that is not asked for, too.
    updateText(isAsked = false) {
        const words = new DataView(this.#memory.buffer, Number(this.#exports.update_text()), 32);
        if (words.getUint32(28, true) === 0 && !isAsked) return null;
        const text = decoder.decode(this.#bytes(words.getBigUint64(0, true), words.getBigUint64(8, true)));
        return {
            rows: text.split("\n").slice(0, -1),
            columns: words.getUint32(16, true),
            cursor: {row: words.getUint32(20, true), column: words.getUint32(24, true)},
        };
    }

    // ---- What the module imports ----

    // The stall at the start measures how fast the ticks are. They are what they say: the time is skipped.
    #stall(microseconds) {
        if (!this.#started) {
            this.#skipped += microseconds * 1000;
            return undefined;
        }
        return new Promise((done) => setTimeout(done, microseconds / 1000));
    }

    async #waitForKey() {
        this.#started = true;
        this.told.turn?.();
        if (this.#keyCount === 0) {
            this.told.waits?.(true);
            // Whoever has been told may have pressed one.
            if (this.#keyCount === 0) {
                await new Promise((done) => {
                    this.#pressed = done;
                });
                this.#pressed = null;
            }
            this.told.waits?.(false);
        }
        this.#beginTurn(turnInterval);
    }

    #beginTurn(length) {
        this.#keyCount = 0;
        this.#looks = 0;
        this.#clockLooks = 0;
        this.#turnLength = length;
        this.#lastTime = performance.now();
        this.#nextTurn = this.#lastTime + this.#turnLength;
        this.#stride = 1;
        this.#toPass = 1;
    }

    // Whoever says `clock` has looked at the ticks for the program alone since the last time.
    #isTurnDue(soon, clock) {
        this.#looks += soon;
        if (clock === 0) this.#clockLooks = 0;
        if (--this.#toPass > 0) return 0;
        const now = performance.now();
        this.#stride = now - this.#lastTime < shortly ? Math.min(this.#stride * 2, longestStride) : 1;
        this.#toPass = this.#stride;
        this.#lastTime = now;
        return now >= this.#nextTurn ? 1 : 0;
    }

    async #turn() {
        const looks = this.#looks + this.#clockLooks;
        const isQuiet = this.told.turn?.() === true;
        const isWaiting = looks >= looksOfAWait * this.#turnLength && performance.now() - this.#lastDrawn >= drawsNothing;
        await new Promise((done) => {
            if (isWaiting) {
                this.#pressed = done;
                setTimeout(done, restOfAWait);
                return;
            }
            this.#channel.port1.onmessage = () => done();
            this.#channel.port2.postMessage(null);
        });
        this.#pressed = null;
        this.#beginTurn(isWaiting ? turnOfAWait : isQuiet ? quietTurnInterval : turnInterval);
    }

    // The interpreter could not start, and keeps the processor.
    #halt() {
        this.told.fail?.("The machine has stopped.");
        return new Promise(() => {});
    }

    #tell(path, length, change) {
        const volume = "/volume";
        const name = this.#text(path, length);
        if (name.startsWith(volume + "/")) this.told.changed?.({path: name.slice(volume.length), ...change});
    }

    // ---- Memory ----

    #bytes(place, size) {
        return new Uint8Array(this.#memory.buffer, Number(place), Number(size));
    }
    #text(place, length) {
        return decoder.decode(this.#bytes(place, length));
    }
    #hand(...parts) {
        const size = parts.reduce((sum, part) => sum + part.length, 0);
        const place = Number(this.#exports.parcel(BigInt(size)));
        const room = new Uint8Array(this.#memory.buffer, place, size);
        let at = 0;
        for (const part of parts) {
            room.set(part, at);
            at += part.length;
        }
    }
}

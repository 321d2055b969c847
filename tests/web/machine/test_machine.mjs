// korvane-test.wasm for the player of transcripts: follows its orders and answers them, as parcel.h has both. Behind an answer
// lie the files that have changed.

const ORDER_START = 1n;
const ORDER_DOUBLE = 12n;
const ORDER_DROP = 13n;
const FAULT = 4n;
const PAGES = {initial: 29184, maximum: 49152};

const encoder = new TextEncoder();
const decoder = new TextDecoder();

function number(value) {
    const bytes = new Uint8Array(8);
    new DataView(bytes.buffer).setBigUint64(0, BigInt(value), true);
    return bytes;
}

const firstNumber = (bytes) => new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength).getBigUint64(0, true);

function joined(parts) {
    const bytes = new Uint8Array(parts.reduce((sum, part) => sum + part.length, 0));
    let at = 0;
    for (const part of parts) {
        bytes.set(part, at);
        at += part.length;
    }
    return bytes;
}

// A text, or bytes, behind their length.
const counted = (bytes) => joined([number(bytes.length), bytes]);

export class TestMachine {
    #exports;
    #memory = new WebAssembly.Memory(PAGES);
    #changes = [];  // of the volume, since the answer before
    #skipped = 0;   // nanoseconds of stalls, which take no time
    #resume = () => this.#begin();
    #told = null;   // takes the answer

    constructor(module) {
        const changed = (kind, path, length, place = 0, size = 0) =>
            this.#changes.push(number(kind), counted(this.#bytes(path, length)), counted(this.#bytes(place, size)));
        const stops = (halted) => new WebAssembly.Suspending(() => new Promise((resume) => {
            this.#resume = resume;
            this.#told(this.answer(halted));
        }));
        const machine = {
            ticks: () => performance.now() * 1e6 + this.#skipped,
            now: () => Date.now(),
            minutes_ahead: (milliseconds) => -new Date(milliseconds).getTimezoneOffset(),
            stall: (microseconds) => {
                this.#skipped += microseconds * 1000;
            },
            wait_for_key: () => {},
            stopped: stops(0),
            is_turn_due: () => 0,
            turn: () => {},
            halt: stops(1),
            tell_file: (path, length, content, size) => changed(0, path, length, content, size),
            tell_folder: (path, length) => changed(1, path, length),
            tell_gone: (path, length) => changed(2, path, length),
            fail: (reason, length) => {
                throw new Error(decoder.decode(this.#bytes(reason, length)));
            },
        };
        this.#exports = new WebAssembly.Instance(module, {env: {memory: this.#memory}, machine}).exports;
        this.#exports.__wasm_call_ctors();
    }

    #bytes(place, size) {
        return new Uint8Array(this.#memory.buffer, Number(place), Number(size));
    }

    // Follows orders and lets the machine go on; what it answers when it stops.
    go(orders) {
        return new Promise((told) => {
            this.#told = told;
            try {
                const room = this.#exports.test_room(BigInt(orders.length));
                this.#bytes(room, orders.length).set(orders);
                this.#exports.test_follow();
                this.#resume();
            } catch (error) {
                told(this.#fault(error));
            }
        });
    }

    async #begin() {
        try {
            await WebAssembly.promising(this.#exports.test_run)();
            this.#told(this.answer(0));
        } catch (error) {
            this.#told(this.#fault(error));
        }
    }

    answer(halted) {
        const place = this.#exports.test_answer(halted);
        const changes = this.#changes;
        this.#changes = [];
        return joined([this.#bytes(place, this.#exports.test_answer_size()), ...changes]);
    }

    #fault(error) {
        return joined([number(FAULT), counted(encoder.encode(`machine fault: ${error.message}`))]);
    }
}

// The machine of the moment and those that have lent it their place. `make()` gives a machine that has go() and end().
export class TestMachines {
    #make;
    #machine = null;
    #orders = [];  // all that the machine has had
    #doubled = [];

    constructor(make) {
        this.#make = make;
    }

    async follow(orders) {
        const order = firstNumber(orders);
        if (order === ORDER_DOUBLE) return this.#double();
        if (order === ORDER_DROP) return this.#drop();
        // The first number says whether a machine begins.
        if (order === ORDER_START) {
            this.#machine?.end();
            this.#machine = this.#make();
            this.#orders = [];
        }
        const all = orders.subarray(8);
        this.#orders.push(all);
        return this.#machine.go(all);
    }

    // The stack of a machine that waits cannot be copied: its double does everything that it has done. The player has seen
    // what the machine has shown so far.
    async #double() {
        this.#doubled.push([this.#machine, this.#orders]);
        if (this.#machine !== null) {
            this.#machine = this.#make();
            this.#orders = [...this.#orders];
            for (const orders of this.#orders) await this.#machine.go(orders);
        }
        return number(0);
    }

    #drop() {
        this.#machine?.end();
        [this.#machine, this.#orders] = this.#doubled.pop() ?? [null, []];
        return number(0);
    }
}

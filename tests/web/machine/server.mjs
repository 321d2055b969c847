// Runs korvane-test.wasm under Node for the player of transcripts, which talks with it through standard input and output:
// a length of eight bytes, then orders or an answer as parcel.h has them. Behind an answer lie the files that have changed.
//
// node server.mjs korvane-test.wasm

import {readFileSync, readSync, writeSync} from "node:fs";

const module = new WebAssembly.Module(readFileSync(process.argv[2]));
const ORDER_START = 1n;
const ORDER_DOUBLE = 12n;
const ORDER_DROP = 13n;
const FAULT = 4n;
const PAGES = {initial: 29184n, maximum: 49152n};
const decoder = new TextDecoder();

function readFully(size) {
    const bytes = Buffer.alloc(size);
    let at = 0;
    while (at < size) {
        const count = readSync(0, bytes, at, size - at, null);
        if (count === 0) process.exit(0);
        at += count;
    }
    return bytes;
}

const readOrders = () => readFully(Number(readFully(8).readBigUInt64LE()));

function writeFully(...parts) {
    const size = Buffer.alloc(8);
    size.writeBigUInt64LE(BigInt(parts.reduce((sum, part) => sum + part.length, 0)));
    for (const part of [size, ...parts])
        for (let at = 0; at < part.length;) {
            try {
                at += writeSync(1, part, at);
            } catch (error) {
                if (error.code !== "EAGAIN") throw error;
            }
        }
}

function number(value) {
    const bytes = Buffer.alloc(8);
    bytes.writeBigUInt64LE(BigInt(value));
    return bytes;
}

const text = (bytes) => Buffer.concat([number(bytes.length), bytes]);

class TestMachine {
    constructor() {
        this.memory = new WebAssembly.Memory({address: "i64", ...PAGES});
        this.changes = [];
        this.skipped = 0;
        this.followed = [];     // all orders so far
        this.replayed = null;   // called instead of an answer while a double is made
        const bytes = (place, size) => Buffer.from(new Uint8Array(this.memory.buffer, Number(place), Number(size)));
        const changed = (kind, path, length, content = Buffer.alloc(0)) =>
            this.changes.push(number(kind), text(bytes(path, length)), text(content));
        const machine = {
            ticks: () => performance.now() * 1e6 + this.skipped,
            now: () => Date.now(),
            minutes_ahead: (milliseconds) => -new Date(milliseconds).getTimezoneOffset(),
            stall: (microseconds) => {
                this.skipped += microseconds * 1000;
            },
            wait_for_key: () => {},
            stopped: new WebAssembly.Suspending(() => new Promise((resume) => {
                this.resume = resume;
                this.answer(0);
            })),
            is_turn_due: () => 0,
            turn: () => {},
            halt: new WebAssembly.Suspending(() => new Promise((resume) => {
                this.resume = resume;
                this.answer(1);
            })),
            tell_file: (path, length, content, size) => changed(0, path, length, bytes(content, size)),
            tell_folder: (path, length) => changed(1, path, length),
            tell_gone: (path, length) => changed(2, path, length),
            fail: (reason, length) => {
                throw new Error(decoder.decode(bytes(reason, length)));
            },
        };
        this.exports = new WebAssembly.Instance(module, {env: {memory: this.memory}, machine}).exports;
        this.exports.__wasm_call_ctors();
        this.resume = () => this.run();
    }

    follow(orders) {
        this.followed.push(orders);
        const room = Number(this.exports.test_room(BigInt(orders.length)));
        new Uint8Array(this.memory.buffer, room, orders.length).set(orders);
        this.exports.test_follow();
    }

    async run() {
        try {
            await WebAssembly.promising(this.exports.test_run)();
            this.answer(0);
        } catch (error) {
            this.fail(error);
        }
    }

    answer(halted) {
        if (this.replayed !== null) {
            this.changes = [];
            this.replayed();
            return;
        }
        const place = Number(this.exports.test_answer(halted));
        const size = Number(this.exports.test_answer_size());
        writeFully(new Uint8Array(this.memory.buffer, place, size), ...this.changes);
        this.changes = [];
        setImmediate(serve);
    }

    fail(error) {
        if (this.replayed !== null) {
            this.replayed();
            return;
        }
        writeFully(number(FAULT), text(Buffer.from(`machine fault: ${error.message}`)));
        setImmediate(serve);
    }
}

// The stack of a machine that waits cannot be copied: its double does everything that it has done.
async function double(machine) {
    const twin = new TestMachine();
    for (const orders of machine.followed) {
        await new Promise((stopped) => {
            twin.replayed = stopped;
            twin.follow(orders);
            twin.resume();
        });
    }
    twin.replayed = null;
    // The player has seen what the machine has shown so far.
    if (machine.followed.length !== 0) twin.exports.test_answer(0);
    twin.changes = [];
    return twin;
}

let machine = null;
const doubled = [];

async function serve() {
    const orders = readOrders();
    const order = orders.readBigUInt64LE();
    if (order === ORDER_DOUBLE || order === ORDER_DROP) {
        if (order === ORDER_DOUBLE) {
            doubled.push(machine);
            machine = machine === null ? null : await double(machine);
        } else {
            machine = doubled.pop() ?? null;
        }
        writeFully(number(0));
        setImmediate(serve);
        return;
    }
    if (starts(orders)) machine = new TestMachine();
    try {
        machine.follow(orders.subarray(8));
    } catch (error) {
        machine.fail(error);
        return;
    }
    machine.resume();
}

// The first number says whether a machine begins.
const starts = (orders) => orders.readBigUInt64LE() === ORDER_START;

serve();

// tools/narrow_memory.py: a module that is compiled for addresses of 64 bits does the same with a memory of 32, in an engine that
// knows no others.
//
// node --test tests/web/narrow_memory.test.mjs

import assert from "node:assert";
import { execFileSync, spawnSync } from "node:child_process";
import fs from "node:fs";
import os from "node:os";
import path from "node:path";
import test from "node:test";
import { fileURLToPath } from "node:url";

const TOOL = fileURLToPath(new URL("../../tools/narrow_memory.py", import.meta.url));
const FOLDER = fs.mkdtempSync(path.join(os.tmpdir(), "korvane-narrow-"));
test.after(() => fs.rmSync(FOLDER, { recursive: true, force: true }));

const SOURCE = `
using U8 = unsigned char; using U16 = unsigned short; using U32 = unsigned; using U64 = unsigned long long;
typedef U8 Vector __attribute__((vector_size(16)));
#define EXPORT(name) extern "C" __attribute__((export_name(#name)))
static U8 room[512];
static const char text[] = "a constant";
static U64 add(U64 x) { return x + 1; }
static U64 twice(U64 x) { return 2 * x; }
static U64 (*volatile table[])(U64) = {add, twice};
EXPORT(stores) U8* stores(U64 value) {
    *(volatile U64*)room = value;
    *(volatile U32*)(room + 8) = (U32)value;
    *(volatile U16*)(room + 12) = (U16)value;
    *(volatile U8*)(room + 14) = (U8)value;
    *(volatile double*)(room + 16) = (double)value;
    *(volatile float*)(room + 24) = (float)value;
    return room;
}
EXPORT(loads) U64 loads() {
    return *(volatile U64*)room + *(volatile U32*)(room + 8) + *(volatile U16*)(room + 12) + *(volatile U8*)(room + 14) +
           (U64)*(volatile double*)(room + 16) + (U64)*(volatile float*)(room + 24);
}
EXPORT(words) U32 words(U64 at, U32 value) {
    *(volatile U32*)(room + at) = value;
    *(volatile U16*)(room + at + 4) = (U16)value;
    *(volatile U8*)(room + at + 6) = (U8)value;
    return *(volatile U32*)(room + at) + *(volatile U16*)(room + at + 4) + *(volatile U8*)(room + at + 6) +
           (U32)*(volatile short*)(room + at + 4) + (U32)*(volatile signed char*)(room + at + 6);
}
EXPORT(fill) void fill(U64 at, U32 value, U64 size) { __builtin_memset(room + at, (int)value, size); }
EXPORT(copy) void copy(U64 to, U64 from, U64 size) { __builtin_memmove(room + to, room + from, size); }
EXPORT(vector) void vector(U64 to, U64 from) { *(volatile Vector*)(room + to) = *(volatile Vector*)(room + from) + 1; }
EXPORT(lanes) void lanes(U64 to, U64 from) {
    Vector vector = *(Vector*)(room + from);
    vector[3] = room[from + 20];
    room[to + 16] = vector[5];
    *(Vector*)(room + to) = vector;
}
EXPORT(choose) void choose(U64 which) {
    volatile U8* const made = room;
    switch (which) {
        case 0: made[300] = 1; break;
        case 1: made[302] = 2; break;
        case 2: made[303] = 3; break;
        case 3: made[301] = 4; break;
        default: made[304] = 5;
    }
}
EXPORT(call) U64 call(U64 which, U64 x) { return table[which](x); }
EXPORT(letter) U32 letter(U64 index) { return (U8)((const volatile char*)text)[index]; }
EXPORT(size) U64 size() { return __builtin_wasm_memory_size(0); }
EXPORT(overgrow) U64 overgrow() {
    return __builtin_wasm_memory_grow(0, 0x80000000) & __builtin_wasm_memory_grow(0, ~0ULL);
}
EXPORT(grow) U64 grow(U64 pages) { return __builtin_wasm_memory_grow(0, pages); }
`;

function compile(source, ...options) {
  const [code, module] = ["source.cpp", "module.wasm"].map((name) => path.join(FOLDER, name));
  fs.writeFileSync(code, source);
  execFileSync("clang++-19", ["--target=wasm64-unknown-unknown", "-O1", "-ffreestanding", "-nostdlib", "-mbulk-memory", "-msimd128",
    "-mnontrapping-fptoint", "-Wl,--no-entry", "-Wl,-m,wasm64", "-Wl,--max-memory=1048576", ...options, code, "-o", module]);
  return module;
}

const narrowed = (module) => spawnSync("python3", [TOOL, module, module], { encoding: "utf8" });

test("loads, stores, copies, calls and growth are as before", () => {
  const module = compile(SOURCE);
  assert.equal(narrowed(module).status, 0);
  const { memory, ...made } = new WebAssembly.Instance(new WebAssembly.Module(fs.readFileSync(module))).exports;
  assert.equal(memory.buffer.byteLength % 65536, 0);
  const room = Number(made.stores(0x0102030405060708n));
  const bytes = (at, size) => [...new Uint8Array(memory.buffer, room + at, size)];
  assert.deepEqual(bytes(0, 15), [8, 7, 6, 5, 4, 3, 2, 1, 8, 7, 6, 5, 8, 7, 8]);
  assert.equal(new DataView(memory.buffer).getFloat64(room + 16, true), Number(0x0102030405060708n));
  made.stores(200n);
  assert.equal(made.loads(), 1200n);
  assert.equal(made.words(32n, 0x81828384) >>> 0, (0x81828384 + 0x8384 + 0x84 + 0x8384 - 0x10000 + 0x84 - 0x100) >>> 0);
  assert.deepEqual(bytes(32, 8), [0x84, 0x83, 0x82, 0x81, 0x84, 0x83, 0x84, 0]);
  made.fill(64n, 0xAB, 10n);
  assert.deepEqual(bytes(63, 12), [0, ...Array(10).fill(0xAB), 0]);
  made.copy(100n, 60n, 8n);
  assert.deepEqual(bytes(100, 9), [0, 0, 0, 0, 0xAB, 0xAB, 0xAB, 0xAB, 0]);
  made.vector(128n, 64n);
  assert.deepEqual(bytes(128, 16), [...Array(10).fill(0xAC), ...Array(6).fill(1)]);
  for (let i = 0; i < 21; i += 1) new Uint8Array(memory.buffer)[room + 160 + i] = 10 + i;
  made.lanes(200n, 160n);
  assert.deepEqual(bytes(200, 17), [10, 11, 12, 30, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 15]);
  for (const which of [0n, 1n, 2n, 3n, 99n]) made.choose(which);
  assert.deepEqual(bytes(300, 6), [1, 4, 2, 3, 5, 0]);
  assert.deepEqual([made.call(0n, 20n), made.call(1n, 20n)], [21n, 40n]);
  assert.equal(String.fromCharCode(made.letter(0n), made.letter(2n)), "ac");
  const pages = made.size();
  assert.equal(made.grow(1n), pages);
  assert.equal(made.size(), pages + 1n);
  assert.equal(made.grow(1000n), -1n, "there is no room");
  assert.equal(made.overgrow(), -1n, "nor for what the upper half of the numbers tells");
});

test("what the tool does not know stops it", () => {
  const module = compile('extern "C" __attribute__((export_name("add"))) int add(int* x) { return __atomic_fetch_add(x, 1, 5); }',
    "-matomics", "-Wl,--shared-memory", "-Wl,--import-memory");
  const { status, stderr } = narrowed(module);
  assert.equal(status, 1);
  assert.match(stderr, /has what nobody expects there: the opcode 0xfe/);
});

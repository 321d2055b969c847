// The parts of the page that need neither a browser nor packages: KORVANE_WEB names the folder of its modules, web/ or build/web/.
//
// KORVANE_WEB=web node --test tests/web/page_units.test.mjs

import "./node_streams.mjs";
import assert from "node:assert";
import path from "node:path";
import test from "node:test";
import { pathToFileURL } from "node:url";

const page = (name) => import(pathToFileURL(path.resolve(process.env.KORVANE_WEB, "page", name)));
const { isBreak, strokeOf, strokesOfText } = await page("keys.js");
const { codeOf, programOfText, readFile, textOfProgram, writeFile } = await page("program_text.js");
const { foldersAbove, freePath, isHostile, pathOnVolume, readableSize } = await page("names.js");
const { BrokenLink, fragmentOf, LARGEST_PROGRAM, programOfFragment } = await page("link.js");
const { LARGEST_FILE, LARGEST_VOLUME, Volume } = await page("volume.js");
const { shownScale } = await page("screen.js");
const { fittingSize } = await page("console.js");
const { Pace } = await page("../machine/pace.js");

const bytes = (text) => new TextEncoder().encode(text);
const text = (codes) => String.fromCharCode(...codes);

function key(name, { ctrl = false, alt = false, meta = false, shift = false, graph = false, composing = false } = {}) {
  return {
    key: name, ctrlKey: ctrl, altKey: alt, metaKey: meta, shiftKey: shift, isComposing: composing,
    getModifierState: (state) => state === "AltGraph" && graph,
  };
}

// ---- Keys --------------------------------------------------------------------------------------------------------

test("the keys that are no characters have the firmware's scan codes", () => {
  const codes = {
    ArrowUp: 1, ArrowDown: 2, ArrowRight: 3, ArrowLeft: 4, Home: 5, End: 6, Insert: 7, Delete: 8, PageUp: 9, PageDown: 10,
    F1: 11, F2: 12, F3: 13, F4: 14, F6: 16, F7: 17, F8: 18, F9: 19, F10: 20, Escape: 23,
  };
  for (const [name, scan] of Object.entries(codes)) assert.deepEqual(strokeOf(key(name)), { scan, character: 0 }, name);
});

test("characters are what the layout makes of a key", () => {
  for (const character of ["a", "A", "1", "\"", "$", "~", " ", "ä", "ß", "€"]) {
    assert.deepEqual(strokeOf(key(character)), { scan: 0, character: character.codePointAt(0) }, character);
  }
  assert.deepEqual(strokeOf(key("Enter")), { scan: 0, character: 13 });
  assert.deepEqual(strokeOf(key("Backspace")), { scan: 0, character: 8 });
  // AltGr is Ctrl and Alt on some systems, and Alt alone writes on others.
  assert.equal(strokeOf(key("@", { ctrl: true, alt: true })).character, 64);
  assert.equal(strokeOf(key("[", { alt: true, graph: true })).character, 91);
  assert.equal(strokeOf(key("@", { alt: true })).character, 64);
});

test("letters with Ctrl are control characters, except those that the browser needs", () => {
  for (const letter of "abdeghijkmoqsuyz") assert.equal(strokeOf(key(letter, { ctrl: true })).character, letter.charCodeAt(0) - 96);
  assert.equal(strokeOf(key("A", { ctrl: true, shift: true })).character, 1);
  for (const letter of "cfnlprtvwx") assert.equal(strokeOf(key(letter, { ctrl: true })), null, letter);
});

test("what is not for the machine is left to the browser", () => {
  for (const name of ["Tab", "F5", "F11", "F12", "Dead", "Process", "Unidentified", "Shift", "Control", "AltGraph"]) {
    assert.equal(strokeOf(key(name)), null, name);
  }
  assert.equal(strokeOf(key("d", { alt: true })), null);
  assert.equal(strokeOf(key("ArrowLeft", { alt: true })), null);
  assert.equal(strokeOf(key("a", { meta: true })), null);
  assert.equal(strokeOf(key("a", { composing: true })), null);
  assert.equal(strokeOf(key("Insert", { shift: true })), null);
});

test("Ctrl-C stops the program when nothing is selected", () => {
  assert.ok(isBreak(key("c", { ctrl: true }), false));
  assert.ok(!isBreak(key("c", { ctrl: true }), true));
  assert.ok(!isBreak(key("c"), false));
  assert.ok(!isBreak(key("c", { meta: true }), false));
});

test("line ends of all systems are one Enter", () => {
  assert.deepEqual(strokesOfText("a\r\nb\nc\rd").map(({ character }) => character), [97, 13, 98, 13, 99, 13, 100]);
});

// ---- Programs as text --------------------------------------------------------------------------------------------

test("every code but the blanks' comes back from its character", () => {
  const codes = Uint8Array.from({ length: 256 }, (_, code) => code).filter((code) => code !== 255);
  assert.deepEqual(programOfText(textOfProgram(codes)).bytes, codes);
  assert.equal(textOfProgram(Uint8Array.of(128, 225, 219, 1, 127)), "Çß█☺⌂");
  assert.equal(codeOf("\u00a0"), 32);
});

test("programs are UTF-8 outside, with or without a mark", () => {
  assert.equal(text(readFile("a.bas", bytes('10 PRINT "é"')).bytes), '10 PRINT "\x82"');
  assert.equal(text(readFile("a.BAS", bytes('\ufeff10 END')).bytes), "10 END");
  assert.equal(text(writeFile("A.BAS", Uint8Array.of(130))), "\xc3\xa9");
  assert.deepEqual(textOfProgram(Uint8Array.of(65, 26, 26)), "A");
});

test("what is no UTF-8 is taken as it is, and so is what is no program", () => {
  assert.deepEqual(readFile("A.BAS", Uint8Array.of(0x82, 0x41)).bytes, Uint8Array.of(0x82, 0x41));
  assert.deepEqual(readFile("A.TXT", bytes("é")).bytes, bytes("é"));
  assert.deepEqual(writeFile("A.TXT", Uint8Array.of(130)), Uint8Array.of(130));
});

test("what the code page lacks becomes a question mark and is told", () => {
  const { bytes: codes, lost } = readFile("A.BAS", bytes("10 ' 5 € and ₿"));
  assert.equal(text(codes), "10 ' 5 ? and ?");
  assert.equal(lost, "€");
});

test("UTF-16 is refused", () => {
  for (const start of [[0xff, 0xfe], [0xfe, 0xff], [0x31, 0], [0, 0x31]]) {
    assert.match(readFile("A.BAS", Uint8Array.from([...start, 0x30, 0])).fault, /UTF-16/);
  }
});

// ---- Names -------------------------------------------------------------------------------------------------------

test("names are written as BASIC can write them", () => {
  assert.equal(pathOnVolume("maze.bas"), "/MAZE.BAS");
  assert.equal(pathOnVolume("Übung 1.bas"), "/UBUNG 1.BAS");
  assert.equal(pathOnVolume('a"b?.txt'), "/A_B_.TXT");
  assert.equal(pathOnVolume("games\\nim.bas"), "/GAMES/NIM.BAS");
  assert.equal(pathOnVolume("x".repeat(126)), "/" + "X".repeat(126));
  assert.equal(pathOnVolume("x".repeat(127)), null);
  assert.equal(pathOnVolume(". ."), null);
});

test("names that lead out of the volume are hostile", () => {
  for (const name of ["../a", "a/../b", "/etc/passwd", "\\a", "..\\a", "C:\\a", "c:a", "a/./b", "a//b", "..", ".", "a\0b", "a\nb", ""]) {
    assert.ok(isHostile(name), JSON.stringify(name));
  }
  for (const name of ["a", "a.b", "..a", "a..b", "games/", "games/nim.bas", ".hidden"]) assert.ok(!isHostile(name), name);
});

test("a free path has a number where the name is taken", () => {
  const taken = new Set(["/A.BAS", "/A2.BAS", "/D.X/B"]);
  assert.equal(freePath("/A.BAS", (path) => taken.has(path)), "/A3.BAS");
  assert.equal(freePath("/B.BAS", (path) => taken.has(path)), "/B.BAS");
  assert.equal(freePath("/D.X/B", (path) => taken.has(path)), "/D.X/B2");
});

test("folders above a path come from the outside in, sizes in units", () => {
  assert.deepEqual(foldersAbove("/A/B/C"), ["/A", "/A/B"]);
  assert.deepEqual(foldersAbove("/A"), []);
  assert.equal(readableSize(1023), "1023 bytes");
  assert.equal(readableSize(1024 ** 3), "1 GiB");
  assert.equal(readableSize(1536), "1.5 KiB");
});

// ---- Links -------------------------------------------------------------------------------------------------------

test("a link gives back the program that it was made of", async () => {
  const program = Uint8Array.from([...bytes('10 PRINT "'), 0x82, 0xdb, 34, 13, 10]);
  assert.deepEqual(await programOfFragment("#" + (await fragmentOf("A & B=#.BAS", program))), { name: "A & B=#.BAS", bytes: program });
  const long = Uint8Array.from({ length: LARGEST_PROGRAM }, (_, at) => 32 + ((at * at) % 90));
  assert.deepEqual((await programOfFragment(await fragmentOf("L.BAS", long))).bytes, long);
});

test("a fragment about something else is none of ours", async () => {
  for (const fragment of ["", "#", "#keys", "#name=A.BAS"]) assert.equal(await programOfFragment(fragment), null, fragment);
});

test("broken links are told apart from everything else", async () => {
  const good = await fragmentOf("A.BAS", bytes('10 PRINT "HELLO"\r\n'.repeat(20)));
  const whole = good.split("program=")[1];
  const tooLong = await fragmentOf("A.BAS", new Uint8Array(LARGEST_PROGRAM + 1).fill(48));
  const pack = async (content) => {
    const stream = new Blob([content]).stream().pipeThrough(new CompressionStream("deflate-raw"));
    return Buffer.from(await new Response(stream).arrayBuffer()).toString("base64url");
  };
  const broken = [
    "program=", "program=%%%", "program=A", "program=!!!!", "program=" + whole.slice(0, -6), "program=" + whole.slice(4),
    tooLong, "program=" + (await pack(Uint8Array.of(0xff, 0xfe, 0x41))), "program=" + (await pack("")),
  ];
  for (const fragment of broken) await assert.rejects(programOfFragment(fragment), BrokenLink, fragment.slice(0, 60));
});

// ---- The volume --------------------------------------------------------------------------------------------------

function makeVolume() {
  const said = [];
  return { said, volume: new Volume({ say: (sentence) => said.push(sentence), changed: () => {} }) };
}

class FakeStore {
  constructor() {
    this.writable = true;
    this.entries = new Map();
  }
  async read() {
    return { entries: [...this.entries.values()], used: this.entries.size > 0 };
  }
  async write(entries, gone, everything = false) {
    if (this.error) throw this.error;
    if (everything) this.entries.clear();
    gone.forEach((key) => this.entries.delete(key));
    entries.forEach((entry) => this.entries.set(entry.key, entry));
  }
}

test("the volume keeps what the machine tells, whatever the capitals", async () => {
  const store = new FakeStore();
  const { volume } = makeVolume();
  assert.equal(await volume.open({ store }), true);
  await volume.apply([{ path: "/A.TXT", bytes: bytes("1"), modified: 1 }, { path: "/D", folder: true }]);
  await volume.apply([{ path: "/a.txt", bytes: bytes("2"), modified: 2 }]);
  await volume.apply([{ path: "/B.TXT", bytes: bytes("3"), modified: 3 }, { path: "/B.TXT", gone: true }]);
  const later = makeVolume().volume;
  assert.equal(await later.open({ store }), false);
  assert.deepEqual(later.list().map(({ path }) => path), ["/D", "/a.txt"]);
  assert.equal(text(later.get("/A.Txt").bytes), "2");
});

test("files that are put bring their folders, and keep the spelling that is there", async () => {
  const { volume } = makeVolume();
  await volume.open({ store: new FakeStore() });
  volume.apply([{ path: "/Old.Txt", bytes: bytes("1"), modified: 1 }]);
  const changes = volume.put([{ path: "/A/B/C.BAS", bytes: bytes("1"), modified: 1 }, { path: "/OLD.TXT", bytes: bytes("2"), modified: 1 }]);
  assert.deepEqual(changes.map(({ path }) => path), ["/A", "/A/B", "/A/B/C.BAS", "/Old.Txt"]);
});

test("a storage that is full or forbidden gives a sentence, and everything goes on in memory", async () => {
  const store = new FakeStore();
  const { volume, said } = makeVolume();
  await volume.open({ store });
  store.error = new DOMException("", "QuotaExceededError");
  await volume.apply([{ path: "/A", bytes: bytes("1"), modified: 1 }]);
  await volume.apply([{ path: "/B", bytes: bytes("1"), modified: 1 }]);
  assert.equal(said.length, 1);
  assert.match(said[0], /no more room.*gone when the page is closed/);
  assert.equal(volume.files().length, 2);
  const other = makeVolume();
  assert.equal(await other.volume.open({ store: null, reason: "This browser does not let the page keep anything" }), true);
  assert.match(other.said[0], /does not let the page keep anything: /);
  assert.ok(!other.volume.isKept());
});

test("a page that may only read the store does not write it", async () => {
  const store = new FakeStore();
  store.writable = false;
  store.entries.set("/A", { key: "/A", path: "/A", bytes: bytes("1"), modified: 1 });
  const { volume, said } = makeVolume();
  await volume.open({ store, reason: "The volume is open in another tab, and this one works on a copy" });
  await volume.apply([{ path: "/A", gone: true }]);
  assert.equal(store.entries.size, 1);
  assert.equal(volume.files().length, 0);
  assert.match(said[0], /another tab/);
});

test("what the volume has no room for is told before anything changes", () => {
  const { volume } = makeVolume();
  volume.entries.set("/F", { path: "/F", bytes: bytes("1") });
  volume.entries.set("/D", { path: "/D", folder: true });
  assert.equal(volume.obstacle([{ path: "/A", size: LARGEST_FILE }]), null);
  assert.match(volume.obstacle([{ path: "/A", size: LARGEST_FILE + 1 }]), /a file may have 64 MiB/);
  const four = ["/1", "/2", "/3", "/4"].map((path) => ({ path, size: LARGEST_VOLUME / 4 }));
  assert.match(volume.obstacle(four), /in all/);
  assert.equal(volume.obstacle([...four.slice(1), { path: "/F", size: LARGEST_VOLUME / 4 }]), null);
  assert.match(volume.obstacle([{ path: "/f/X", size: 1 }]), /is a file/);
  assert.match(volume.obstacle([{ path: "/d", size: 1 }]), /there is a folder named \/D/);
});

// ---- The screen --------------------------------------------------------------------------------------------------

test("pixels are shown in whole multiples where that wastes little room", () => {
  assert.equal(shownScale(640, 480, { width: 1280, height: 960 }, 1), 2);
  assert.equal(shownScale(640, 480, { width: 1400, height: 1100 }, 1), 2);
  assert.equal(shownScale(640, 480, { width: 1270, height: 950 }, 1), 950 / 480); // 1 would leave half of it empty
  assert.equal(shownScale(640, 480, { width: 320, height: 480 }, 1), 0.5);
  assert.equal(shownScale(640, 480, { width: 390, height: 600 }, 3), 390 / 640); // 1.8 of the display's pixels
  assert.equal(shownScale(640, 480, { width: 800, height: 600 }, 1.5), 800 / 640);
});

test("the screen is the largest that fits", () => {
  assert.deepEqual(fittingSize({ width: 1920, height: 1000 }), [1024, 768]);
  assert.deepEqual(fittingSize({ width: 1024, height: 768 }), [1024, 768]);
  assert.deepEqual(fittingSize({ width: 1366, height: 640 }), [800, 600]);
  assert.deepEqual(fittingSize({ width: 390, height: 600 }), [640, 480]);
});

// ---- Pictures ----------------------------------------------------------------------------------------------------

// The moments of pictures where somebody looks every so often whether one is due.
function picturesWithin(pace, start, end, step) {
  const drawn = [];
  for (let now = start; now < end; now += step) {
    if (!pace.isDue(now)) continue;
    pace.drawn(now);
    drawn.push(now);
  }
  return drawn;
}

test("sixty pictures a second are drawn, however often there is a look, and no more after a rest", () => {
  for (const step of [0.5, 1, 5, 8.06, 11, 16.6]) {
    const count = picturesWithin(new Pace(), 5000, 15000, step).length;
    assert.ok(count >= 598 && count <= 602, `${count} in ten seconds, with a look each ${step} ms`);
  }
  assert.equal(picturesWithin(new Pace(), 5000, 15000, 40).length, 250, "where looks are rare, each draws");
  const pace = new Pace();
  picturesWithin(pace, 1000, 2000, 8);
  const later = picturesWithin(pace, 60000, 61000, 1).length;
  assert.ok(later >= 60 && later <= 62, `${later} in the second after a rest`);
});

test("a picture that is for at once does not wait for its turn", () => {
  const pace = new Pace();
  picturesWithin(pace, 5000, 5990, 1);
  assert.ok(!pace.isDue(5991));
  pace.hurry();
  assert.ok(pace.isDue(5991));
});

// The looks within a time in which nothing changes.
function looksWithin(pace, start, end, step) {
  let looks = 0;
  for (let now = start; now < end; now += step) {
    if (!pace.isDue(now)) continue;
    ++looks;
    pace.unchanged(now);
  }
  return looks;
}

test("where nothing has changed for a quarter of a second, there are twenty looks a second, until something happens", () => {
  const pace = new Pace();
  pace.drawn(5000);
  assert.equal(looksWithin(pace, 5010, 5250, 8), 30, "all that come");
  const quiet = looksWithin(pace, 5250, 15250, 8);
  assert.ok(quiet >= 178 && quiet <= 202, `${quiet} looks in ten seconds`);
  assert.ok(!pace.isDue(15251));
  pace.wake();
  assert.ok(pace.isDue(15252), "a key, for instance");
  const later = picturesWithin(pace, 15252, 16252, 1);
  assert.ok(later.length >= 60 && later.length <= 62, `${later.length} in the second after that`);
  pace.wake();
  assert.ok(!pace.isDue(later.at(-1) + 1), "not more because something happens");
});

// The machine in its worker, in Debian's Chromium, without the page around it: the messages of web/machine/worker.js.
//
// KORVANE_WEB=build/web KORVANE_WEB_PACKAGES=build/web-tests node --test tests/web/machine.test.mjs

import assert from "node:assert";
import fs from "node:fs";
import path from "node:path";
import { after, before, test } from "node:test";
import { fileURLToPath, pathToFileURL } from "node:url";
import { openBrowser, processorTime, serve, WEB } from "./page_browser.mjs";

const ROOT = fileURLToPath(new URL("../..", import.meta.url));
const LONG_MS = 60_000;

let server, browser, page;

before(async () => {
  server = await serve();
  browser = await openBrowser();
});

after(async () => {
  await browser.close();
  await server.close();
});

// A machine of its own for each test: its messages are kept, by their types.
// `code` runs in the worker before its own.
async function start({ width = 640, height = 480, files = [], image = false, code = "", tab = null } = {}) {
  page = tab ?? await browser.newPage();
  page.setDefaultTimeout(LONG_MS);
  await page.goto(`${server.address}examples.json`);
  await page.evaluate(async (options) => {
    const { width, height, files, image, code } = options;
    globalThis.heard = [];
    const address = new URL("machine/worker.js", location.href).href;
    const beginning = new Blob([`${code} await import("${address}"); postMessage({ type: "loaded" });`], { type: "text/javascript" });
    globalThis.worker = new Worker(URL.createObjectURL(beginning), { type: "module" });
    await new Promise((loaded) => (worker.onmessage = loaded));
    worker.onmessage = ({ data }) => heard.push(data);
    const canvas = document.createElement("canvas");
    document.body.append(canvas);
    const surface = canvas.transferControlToOffscreen();
    globalThis.canvas = canvas;
    globalThis.rows = () => heard.findLast(({ type }) => type === "rows")?.rows ?? [];
    globalThis.type = (text) => {
      for (const character of text) worker.postMessage({ type: "key", scan: 0, character: character.charCodeAt(0) });
      worker.postMessage({ type: "key", scan: 0, character: 13 });
    };
    worker.postMessage({
      type: "start", module: "../korvane.wasm", width, height, canvas: surface,
      files: files.map((file) => ({ modified: Date.now(), ...file, bytes: file.text !== undefined ? new TextEncoder().encode(file.text) : undefined })),
      image: image ? await (await fetch("korvane.efi")).arrayBuffer() : null,
    }, [surface]);
  }, { width, height, files, image, code });
  return page;
}

const heard = (type) => page.waitForFunction((type) => heard.some((message) => message.type === type), { polling: 20 }, type);
const rowsShow = (pattern) => page.waitForFunction((source) => new RegExp(source, "m").test(rows().join("\n")), { polling: 20 }, pattern.source);
const type = (text) => page.evaluate((text) => globalThis.type(text), text);
const tell = (message) => page.evaluate((message) => worker.postMessage(message), message);
const messages = (type) => page.evaluate((type) => heard.filter((message) => message.type === type), type);

// What the browser takes of a processor while the machine waits, the least of some tries: beside other work what was begun
// before may take seconds to end.
async function processorShare(milliseconds, enough) {
  let least = Infinity;
  for (let tries = 0; tries < 5 && least >= enough; ++tries) {
    const before = processorTime(browser);
    await new Promise((done) => setTimeout(done, milliseconds));
    least = Math.min(least, (processorTime(browser) - before) * 1000 / milliseconds);
  }
  return least;
}

test("it tells its size, its text and that it is ready, and answers what is typed", async () => {
  await start();
  await heard("ready");
  assert.deepEqual((await messages("resized")).map(({ width, height }) => [width, height]), [[640, 480]]);
  await rowsShow(/^Ready\.$/);
  await type("PRINT 6*7");
  await rowsShow(/^ 42$/);
  const [last] = (await messages("rows")).slice(-1);
  assert.equal(last.columns, 80);
  assert.equal(last.rows.length, 30);
  const row = last.rows.findLastIndex((text) => text !== "") + 1;
  assert.deepEqual(last.cursor, { row, column: 0 });
  assert.deepEqual(await messages("failed"), []);
});

test("programs have as much memory as in the terminal", async () => {
  await start();
  await heard("ready");
  await type("PRINT FRE(0)");
  await rowsShow(/^ \d{9}$/);
  const free = Number((await page.evaluate(() => rows())).find((row) => /^ \d{9}$/.test(row)));
  assert.ok(free > 240_000_000, `${free} bytes`);
});

test("Escape ends an endless loop, and pictures come while it runs", async () => {
  await start();
  await heard("ready");
  await type("10 X=X+1:GOTO 10");
  await type("RUN");
  await page.waitForFunction(() => heard.findLast(({ type }) => type === "waiting")?.waiting === false, { polling: 20 });
  await new Promise((done) => setTimeout(done, 500));
  await tell({ type: "picture" });
  await heard("picture");
  await tell({ type: "key", scan: 23, character: 0 });
  await rowsShow(/Break/);
  await page.waitForFunction(() => heard.findLast(({ type }) => type === "waiting")?.waiting === true, { polling: 20 });
});

test("Escape comes through soon, whatever a program does, also where long statements follow short ones", async (context) => {
  await start();
  await heard("ready");
  const programs = [
    ["10 X=X+1:GOTO 10"],
    ["10 PAINT (1,1),I MOD 16,16:I=I+1:GOTO 10"],
    ["10 FOR I=1 TO 20000:NEXT:PAINT (1,1),J MOD 16,16:J=J+1:GOTO 10"],
    ["10 FOR I=1 TO 300:A$=INKEY$:NEXT:FOR I=1 TO 100:PAINT (1,1),I MOD 16,16:NEXT:GOTO 10"],
  ];
  for (const lines of programs) {
    for (const line of ["NEW", ...lines, "RUN"]) await type(line);
    await page.waitForFunction(() => heard.findLast(({ type }) => type === "waiting")?.waiting === false, { polling: 20 });
    await new Promise((done) => setTimeout(done, 700));
    const took = await page.evaluate(async () => {
      const begin = performance.now();
      worker.postMessage({ type: "key", scan: 23, character: 0 });
      while (heard.findLast(({ type }) => type === "waiting")?.waiting === false) await new Promise((done) => setTimeout(done, 5));
      return performance.now() - begin;
    });
    context.diagnostic(`${Math.round(took)} ms: ${lines[0]}`);
    assert.ok(took < 1500, `${took} ms: ${lines[0]}`);
    await rowsShow(/^Break in 10/);
    await type("CLS");
  }
});

test("waiting takes no processor time, at the prompt, in INPUT and in a loop that looks for a key", async (context) => {
  await start();
  await heard("ready");
  await new Promise((done) => setTimeout(done, 1000));
  const most = 0.15;
  const share = await processorShare(2000, most);
  assert.ok(share < most, `at the prompt ${share}`);
  await type("10 INPUT A");
  await type("20 A$=INKEY$:IF A$=\"\" THEN 20");
  await type("30 PRINT \"KEY \";A$");
  await type("RUN");
  await rowsShow(/^\?/);
  const inInput = await processorShare(2000, most);
  assert.ok(inInput < most, `in INPUT ${inInput}`);
  await type("1");
  await new Promise((done) => setTimeout(done, 2000));
  const mostInLoop = 0.4;
  const inLoop = await processorShare(2000, mostInLoop);
  context.diagnostic(`a processor's share: ${share.toFixed(3)} at the prompt, ${inInput.toFixed(3)} in INPUT, ${inLoop.toFixed(3)} in a loop with INKEY$`);
  assert.ok(inLoop < mostInLoop, `in a loop with INKEY$ ${inLoop}`);
  await tell({ type: "key", scan: 0, character: 113 });
  await rowsShow(/^KEY q$/);
});

test("what becomes of the volume is told, and what is put there is there", async () => {
  await start({ files: [{ path: "/GAMES", folder: true }, { path: "/GAMES/NIM.BAS", text: "10 PRINT \"nim é\"\n" }] });
  await heard("ready");
  assert.deepEqual(await messages("volume"), []);
  await type("LOAD \"GAMES/NIM.BAS\"");
  await type("LIST");
  await rowsShow(/^10 PRINT "nim é"$/);
  await type("SAVE \"COPY.BAS\"");
  await type("MKDIR \"NEW\"");
  await type("NAME \"COPY.BAS\" AS \"OTHER.BAS\"");
  await type("KILL \"GAMES/NIM.BAS\"");
  await rowsShow(/^KILL .*\nReady\.$/);
  const changes = await page.evaluate(() => heard.filter(({ type }) => type === "volume").flatMap(({ changes }) => changes)
    .map(({ path, bytes, folder, gone }) => [path, gone ? "gone" : folder ? "folder" : new TextDecoder().decode(bytes)]));
  const state = new Map();
  for (const [name, what] of changes) state.set(name, what);
  assert.deepEqual([...state].sort(), [
    ["/COPY.BAS", "gone"], ["/GAMES/NIM.BAS", "gone"], ["/NEW", "folder"], ["/OTHER.BAS", "10 PRINT \"nim é\"\r\n"],
  ]);
  await page.evaluate(() => worker.postMessage({ type: "put", path: "/LATE.TXT", bytes: new Uint8Array([72, 73]), modified: 0 }));
  await tell({ type: "remove", path: "/OTHER.BAS" });
  await type("CLS");
  await type("FILES");
  await rowsShow(/LATE\.TXT[^]*^Ready\.$/);
  assert.ok(!(await page.evaluate(() => rows().join("\n"))).includes("OTHER"));
  for (const name of ["/A:B", "/..", "/" + "A".repeat(256)]) {
    await page.evaluate((path) => worker.postMessage({ type: "put", path, bytes: new Uint8Array(1), modified: 0 }), name);
  }
  await page.waitForFunction(() => heard.filter(({ type }) => type === "rejected").length === 3, { polling: 20 });
});

test("the volume is as large as the page's, and what lies on it is not free", async () => {
  const { LARGEST_VOLUME } = await import(pathToFileURL(path.join(WEB, "page/volume.js")));
  await start({ files: [{ path: "/SUB", folder: true }, { path: "/SUB/A.TXT", text: "A".repeat(1000) }] });
  await heard("ready");
  const free = async (bytes) => {
    await type("CLS");
    await type("KORVANE");
    await type("VOLUMES");
    await type("X");
    await rowsShow(new RegExp(`^Volume 0 +256 MiB +\\d+ MiB free  read/write  "BROWSER"\\n +bytes=${LARGEST_VOLUME}  free=${LARGEST_VOLUME - bytes}  `));
  };
  await free(1000);
  const put = (file, size) => page.evaluate((file, size) =>
    worker.postMessage({ type: "put", path: file, bytes: new Uint8Array(size), modified: 0 }), file, size);
  await put("/B.BIN", 5000);
  await put("/SUB/A.TXT", 10);
  await free(5010);
  await tell({ type: "remove", path: "/SUB" });
  await free(5000);
  await type('BSAVE "C.BIN",131072,100'); // with 15 bytes around them
  await free(5115);
  await type('KILL "B.BIN"');
  await free(115);
});

test("pasted text is typed line by line, and what the machine does not have is told", async () => {
  await start();
  await heard("ready");
  await tell({ type: "text", text: "10 FOR I=1 TO 300000:NEXT\n20 INPUT A$\n30 PRINT \"[\";A$;\"]\"\nRUN\nß漢x\n" });
  await rowsShow(/^\[ßx\]$/);
  assert.deepEqual((await messages("unknown")).map(({ characters }) => characters), ["漢"]);
});

test("CREATEEFI packs the image that the page has handed over", async () => {
  await start({ image: true });
  await heard("ready");
  await type("10 PRINT \"PACKED\"");
  await type("CREATEEFI \"ALONE.EFI\"");
  await page.waitForFunction(() => heard.some(({ type, changes }) => type === "volume" && changes.some(({ path, bytes }) => path === "/ALONE.EFI" && bytes?.length > 0)), { polling: 20 });
  const { same, size } = await page.evaluate(async () => {
    const image = new Uint8Array(await (await fetch("korvane.efi")).arrayBuffer());
    const packed = heard.filter(({ type }) => type === "volume").flatMap(({ changes }) => changes).findLast(({ path, bytes }) => path === "/ALONE.EFI" && bytes).bytes;
    // Only the header's fields of sizes and its checksum may differ.
    let same = 0;
    for (let i = 0; i < image.length; ++i) same += image[i] === packed[i];
    return { same: image.length - same, size: packed.length - image.length };
  });
  assert.ok(size > 0, "nothing is packed");
  assert.ok(same < 64, `${same} bytes of the image differ`);
});

// The same program on the hosted firmware leaves the stored picture.
for (const name of ["mandelbrot", "maze", "plotter", "sprite", "dashboard"]) {
  test(`${name} draws the same picture as on the hosted firmware, pixel by pixel`, async () => {
    const program = fs.readFileSync(path.join(ROOT, `examples/${name}.bas`), "utf8");
    const stored = fs.readFileSync(path.join(ROOT, `docs/pictures/${name}.png`)).toString("base64");
    await start({ files: [{ path: "/STARTUP.BAS", text: program }] });
    const difference = await page.evaluate(async (stored) => {
      const pixels = async (blob) => {
        const bitmap = await createImageBitmap(blob, { colorSpaceConversion: "none" });
        const context = new OffscreenCanvas(bitmap.width, bitmap.height).getContext("2d");
        context.drawImage(bitmap, 0, 0);
        return context.getImageData(0, 0, bitmap.width, bitmap.height);
      };
      const expected = await pixels(await (await fetch(`data:image/png;base64,${stored}`)).blob());
      let differing = -1;
      for (let tries = 0; tries < 100 && differing !== 0; ++tries) {
        await new Promise((done) => setTimeout(done, 300));
        const count = heard.filter(({ type }) => type === "picture").length;
        worker.postMessage({ type: "picture" });
        for (let waited = 0; waited < 100; ++waited) {
          if (heard.filter(({ type }) => type === "picture").length > count) break;
          await new Promise((done) => setTimeout(done, 20));
        }
        const blob = heard.findLast(({ type }) => type === "picture")?.blob;
        if (!blob) continue;
        const seen = await pixels(blob);
        if (seen.width !== expected.width || seen.height !== expected.height) return `${seen.width}x${seen.height}`;
        differing = 0;
        for (let i = 0; i < seen.data.length; ++i) differing += seen.data[i] !== expected.data[i];
      }
      return differing;
    }, stored);
    assert.equal(difference, 0);
  });
}

test("the text that is asked for is that of the moment", async () => {
  await start();
  await heard("ready");
  const seen = await page.evaluate(async () => {
    const answer = (type, test = () => true) => new Promise((done) => {
      const listener = ({ data }) => {
        if (data.type !== type || !test(data)) return;
        worker.removeEventListener("message", listener);
        done(data);
      };
      worker.addEventListener("message", listener);
    });
    const seen = [];
    for (let i = 100; i < 120; ++i) {
      const waits = answer("waiting", ({ waiting }) => waiting);
      worker.postMessage({ type: "text", text: `PRINT ${i}+1000\n` });
      await waits;
      heard.length = 0;
      worker.postMessage({ type: "text-of-screen" });
      const { rows } = await answer("rows", ({ rows }) => rows.length > 0);
      seen.push(rows.includes(` ${i + 1000}`));
    }
    return seen;
  });
  assert.deepEqual(seen, Array(20).fill(true));
});

test("nothing is drawn or told while nothing changes", async () => {
  await start();
  await heard("ready");
  await new Promise((done) => setTimeout(done, 1000));
  const before = await page.evaluate(() => heard.length);
  await new Promise((done) => setTimeout(done, 1000));
  assert.equal(await page.evaluate(() => heard.length), before);
});

// Tells when each picture is put onto the canvas.
const TELL_PICTURES = `
  const put = OffscreenCanvasRenderingContext2D.prototype.putImageData;
  OffscreenCanvasRenderingContext2D.prototype.putImageData = function (...picture) {
    postMessage({ type: "put", at: performance.now() });
    return put.apply(this, picture);
  };
`;

test("sixty pictures a second are drawn while something changes, and the first comes soon after a silence", async (context) => {
  await start({ code: TELL_PICTURES });
  await heard("ready");
  for (const line of ["10 T=TIMER:WHILE TIMER<T+2:WEND", "20 PSET (500,300),15:T=TIMER:WHILE TIMER<T+2:WEND", "30 A=TIMER",
    "40 PSET (RND*600,RND*400),RND*15:IF TIMER<A+3 THEN 40", "50 CLS:PRINT \"END OF IT\"", "RUN"]) await type(line);
  await rowsShow(/^END OF IT$/);
  const times = (await messages("put")).map(({ at }) => at);
  // Behind the silences of two seconds come the single point, and the three seconds of points.
  const silences = times.map((at, index) => index).filter((index) => index > 0 && times[index] - times[index - 1] > 1000);
  assert.equal(silences.length, 2, `${silences.length} silences`);
  const between = times[silences[1] - 1] - times[silences[0]];
  assert.ok(between < 500, `the point is one picture: ${between} ms`);
  const late = times[silences[1]] - times[silences[0]] - 2000;
  const points = times.slice(silences[1]).filter((at) => at < times[silences[1]] + 2800).length;
  context.diagnostic(`${points} pictures in 2.8 seconds; ${Math.round(late)} ms between the delays of the two first ones`);
  assert.ok(points > 20 && points <= 170, `${points} pictures in 2.8 seconds, on a machine that may have much else to do`);
  assert.ok(Math.abs(late) < 300, `${late} ms`);
});

test("the text is told ten times a second at most while a program prints", async () => {
  await start();
  await heard("ready");
  await type("10 PRINT RND:GOTO 10");
  await type("RUN");
  await new Promise((done) => setTimeout(done, 500));
  const before = (await messages("rows")).length;
  await new Promise((done) => setTimeout(done, 2000));
  const count = (await messages("rows")).length - before;
  assert.ok(count >= 2 && count <= 22, `${count} times in two seconds`);
});

// ---- Rests, which are for programs that wait ---------------------------------------------------------------------

// Counts the rests that the worker gives a program, and tells them when it is asked.
const COUNT_RESTS = `
  let rests = 0;
  const plain = globalThis.setTimeout;
  globalThis.setTimeout = (work, milliseconds) => {
    if (milliseconds === 10) ++rests;
    return plain(work, milliseconds);
  };
  addEventListener("message", ({ data }) => data.type === "rests" && postMessage({ type: "rests", rests }));
`;

async function restsSoFar() {
  const before = (await messages("rests")).length;
  await tell({ type: "rests" });
  await page.waitForFunction((count) => heard.filter(({ type }) => type === "rests").length > count, { polling: 20 }, before);
  return (await messages("rests")).at(-1).rests;
}

// The rests in a second of a program that has run for `before` milliseconds.
async function restsOf(before, ...lines) {
  for (const line of ["NEW", ...lines, "RUN"]) await type(line);
  await page.waitForFunction(() => heard.findLast(({ type }) => type === "waiting")?.waiting === false, { polling: 20 });
  await new Promise((done) => setTimeout(done, before));
  const soFar = await restsSoFar();
  await new Promise((done) => setTimeout(done, 1000));
  const rests = await restsSoFar() - soFar;
  await tell({ type: "key", scan: 23, character: 0 });
  await page.waitForFunction(() => heard.findLast(({ type }) => type === "waiting")?.waiting === true, { polling: 20 });
  return rests;
}

test("a program that is busy is given no rest, whatever it does, and one that waits for a key or the clock is", async () => {
  await start({ code: COUNT_RESTS });
  await heard("ready");
  const busy = [
    ["10 X=X+1:GOTO 10"],
    ["10 FOR I=1 TO 100:X=X+SIN(I):NEXT:GOTO 10"],
    ["10 CIRCLE (320,240),200,I MOD 16:PAINT (320,240),I MOD 16,I MOD 16:I=I+1:GOTO 10"],
    ["10 A$=STRING$(30000,65):B$=A$+A$:CLS:GOTO 10"],
    ["10 PRINT RND:GOTO 10"],
    ["10 FOR I=1 TO 500:NEXT:IF INKEY$=\"q\" THEN END", "20 GOTO 10"],
    // Games: they look for keys as often as those that wait, but draw.
    ["10 A$=INKEY$:X=X+1:PSET (X MOD 640,X MOD 479),RND*15:GOTO 10"],
    ["10 T=TIMER", "20 IF INKEY$=\"q\" THEN END", "30 IF TIMER<T THEN 20", "40 T=T+1/60:X=X+1:PSET (X MOD 640,X MOD 479),7:GOTO 20"],
    // An event timer looks at the clock between statements, whatever these do.
    ["10 TIMER(0)=1000:ON TIMER(0) GOSUB 30:TIMER(0) ON", "20 X=X+1:GOTO 20", "30 RETURN"],
  ];
  for (const lines of busy) assert.equal(await restsOf(1500, ...lines), 0, lines[0]);
  const waiting = [
    ["10 IF INKEY$=\"\" THEN 10"],
    ["10 A$=INKEY$:X=X+1:IF A$=\"\" THEN 10"],
    ["10 T=TIMER", "20 IF TIMER<T+60 THEN 20"],
    ["10 T=TIMER", "20 WHILE TIMER<T+60:IF INKEY$=\"q\" THEN END", "30 WEND"],
  ];
  for (const lines of waiting) assert.ok(await restsOf(1500, ...lines) > 3, lines[0]);
});

test("a program that waits a moment for a key or the clock is given no rest yet", async () => {
  await start({ code: COUNT_RESTS });
  await heard("ready");
  await type("CLS");
  const before = await restsSoFar();
  await type("10 T=TIMER");
  await type("20 IF TIMER<T+.5 THEN 20");
  await type("30 PRINT \"END OF IT\"");
  await type("RUN");
  await rowsShow(/^END OF IT$/);
  assert.equal(await restsSoFar(), before);
});

test("a game that looks for keys and draws sixty pictures a second comes to all of them", async (context) => {
  await start();
  await heard("ready");
  const lines = ["10 N=0:T0=TIMER:T=T0", "20 IF INKEY$=\"q\" THEN 50", "30 IF TIMER<T THEN 20",
    "40 T=T+1/60:N=N+1:PSET (N,100),15:IF N<180 THEN 20", "50 PRINT \"TOOK\";CINT((TIMER-T0)*1000)"];
  for (const line of [...lines, "RUN"]) await type(line);
  await rowsShow(/^TOOK/);
  const took = Number(/^TOOK (\d+)/m.exec((await page.evaluate(() => rows().join("\n"))))[1]);
  context.diagnostic(`180 pictures in ${took} ms`);
  assert.ok(took >= 2983 && took < 3300, `180 pictures took ${took} ms`);
});

// ---- Tabs that nobody sees ---------------------------------------------------------------------------------------

test("behind another tab a program goes on as fast, nothing is drawn, and all of it is there when the tab is seen again", async () => {
  // A browser as people have it: the library's own flags keep pages behind others awake.
  const plain = await openBrowser([], ["--disable-background-timer-throttling", "--disable-backgrounding-occluded-windows",
    "--disable-renderer-backgrounding"]);
  try {
    await start({ tab: await plain.newPage() });
    await page.evaluate(() => document.addEventListener("visibilitychange", () =>
      worker.postMessage({ type: "visible", visible: !document.hidden })));
    await heard("ready");
    await type("CLS");
    await type("10 X=X+1:IF X MOD 1000=0 THEN LOCATE 1,1:PRINT X;SPACE$(70)");
    await type("20 IF INKEY$=\"\" THEN 10");
    await type("30 CLS:PRINT \"END OF IT\"");
    const other = await plain.newPage();
    await other.bringToFront();
    await page.waitForFunction(() => document.hidden, { polling: 50 });
    await new Promise((done) => setTimeout(done, 500)); // what was on its way comes
    await type("RUN");
    const before = await page.evaluate(() => heard.filter(({ type }) => type === "rows").length);
    await new Promise((done) => setTimeout(done, 3000));
    assert.equal(await page.evaluate(() => heard.filter(({ type }) => type === "rows").length), before, "nothing is told");
    await tell({ type: "text-of-screen" });
    await page.waitForFunction((count) => heard.filter(({ type }) => type === "rows").length > count, { polling: 50 }, before);
    const counted = Number((await page.evaluate(() => rows()[0])));
    assert.ok(counted >= 10_000, `it has counted to ${counted} in three seconds, rests included`);
    await tell({ type: "key", scan: 0, character: 113 });
    await page.waitForFunction(() => heard.findLast(({ type }) => type === "waiting")?.waiting === true, { polling: 50 });
    await page.bringToFront();
    await rowsShow(/^END OF IT$/);
  } finally {
    await plain.close();
  }
});

// What a browser lacks is taken away before the worker's own code begins.
test("it is refused where the browser cannot wait in WebAssembly", async () => {
  page = await browser.newPage();
  await page.goto(`${server.address}examples.json`);
  await page.evaluate(() => new Promise((loaded) => {
    globalThis.heard = [];
    const address = new URL("machine/worker.js", location.href).href;
    const code = new Blob([`delete WebAssembly.Suspending; await import("${address}"); postMessage("loaded");`], { type: "text/javascript" });
    globalThis.worker = new Worker(URL.createObjectURL(code), { type: "module" });
    worker.onmessage = ({ data }) => (data === "loaded" ? loaded() : heard.push(data));
  }));
  await tell({ type: "start", module: "../korvane.wasm", width: 640, height: 480, files: [], image: null, canvas: null });
  await page.waitForFunction(() => heard.length > 0, { polling: 20 });
  assert.deepEqual(await messages("refused"), [{ type: "refused", reason: "jspi" }]);
});

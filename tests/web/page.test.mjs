// The machine's page, used as people use it: by keys, clicks and files in a real browser. page_browser.mjs tells what is needed.
//
// KORVANE_WEB=build/web KORVANE_WEB_PACKAGES=build/web-tests node --test tests/web/page.test.mjs

import "./node_streams.mjs";
import assert from "node:assert";
import { execFileSync } from "node:child_process";
import fs from "node:fs";
import { createRequire } from "node:module";
import os from "node:os";
import path from "node:path";
import test from "node:test";
import { pathToFileURL } from "node:url";
import {
  command, downloaded, expectAccessible, expectReady, expectScreen, expectSentence, openBrowser, openPage, screenText, serve,
  takePicture, typeLine, WEB,
} from "./page_browser.mjs";

const { fragmentOf } = await import(pathToFileURL(path.join(WEB, "page/link.js")));
const { unzipSync, zipSync } = await import(pathToFileURL(path.join(WEB, "page/fflate.js")));

const bytes = (text) => new TextEncoder().encode(text);
const ROOT = path.resolve(path.dirname(new URL(import.meta.url).pathname), "../..");
const FOLDER = fs.mkdtempSync(path.join(os.tmpdir(), "korvane-page-"));

let server, browser;
test.before(async () => {
  server = await serve();
  browser = await openBrowser();
});
test.after(async () => {
  await browser.close();
  await server.close();
  fs.rmSync(FOLDER, { recursive: true, force: true });
});

function file(name, content) {
  const place = path.join(FOLDER, name);
  fs.mkdirSync(path.dirname(place), { recursive: true });
  fs.writeFileSync(place, content);
  return place;
}

// A test with a visitor of its own, who has never been here: visit(options) opens the page.
function visitorTest(name, body, { fragment = "", expected = [], ...options } = {}) {
  test(name, async () => {
    const context = await browser.createBrowserContext({ downloadBehavior: { policy: "allow", downloadPath: FOLDER } });
    const opened = [];
    const visit = async (more = {}) => {
      const page = await openPage(context, server.address + (more.fragment ?? fragment), { ...options, ...more });
      opened.push(page);
      return page;
    };
    try {
      await body(await visit(), visit, context);
      for (const page of opened) assert.deepEqual(page.troubles.filter((trouble) => !expected.some((known) => known.test(trouble))), []);
    } catch (error) {
      for (const page of opened) await takePicture(page, `failed ${name}`.replace(/\W+/g, "-")).catch(() => {});
      throw error;
    } finally {
      await context.close();
    }
  });
}

// Clicks on a button by what it says.
async function press(page, label) {
  const button = await page.waitForSelector(`::-p-xpath(//button[normalize-space()="${label}" or @aria-label="${label}"])`, { visible: true });
  await button.click();
}

async function openFiles(page) {
  if (await page.$eval("#files-panel", (panel) => panel.hidden)) await press(page, "Files");
}

async function addFiles(page, ...places) {
  await openFiles(page);
  await (await page.$("#files-panel input[type=file]")).uploadFile(...places);
}

async function listedFiles(page) {
  await openFiles(page);
  await page.evaluate(() => new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve))));
  return page.$$eval(".files .name", (names) => names.map((name) => name.textContent));
}

async function expectListed(page, pattern) {
  await openFiles(page);
  await page.waitForFunction((source, flags) => new RegExp(source, flags).test(
    [...document.querySelectorAll(".files .name")].map((name) => name.textContent).join("\n")), { polling: 50 }, pattern.source, pattern.flags);
}

async function dropFiles(page, ...places) {
  const session = await page.createCDPSession();
  const data = { items: [], files: places, dragOperationsMask: 1 };
  for (const type of ["dragEnter", "dragOver", "drop"]) await session.send("Input.dispatchDragEvent", { type, x: 300, y: 300, data });
}

async function allowClipboard(page, context) {
  await context.overridePermissions(new URL(server.address).origin, ["clipboard-read", "clipboard-write", "clipboard-sanitized-write"]);
  await page.bringToFront();
}

async function focusScreen(page) {
  await page.click(".screen-text");
  await page.waitForFunction(() => document.activeElement.classList.contains("keyboard"));
}

// ---- Typing, running, breaking -----------------------------------------------------------------------------------

test("the prompt is there soon", async (context) => {
  const visitor = await browser.createBrowserContext();
  const page = await openPage(visitor, "about:blank");
  const times = [];
  for (let count = 0; count < 3; ++count) {
    const begin = performance.now();
    await page.goto(server.address);
    await expectReady(page);
    times.push(Math.round(performance.now() - begin));
  }
  await visitor.close();
  context.diagnostic(`"Ready." after ${times.join(", ")} ms; the first time without anything kept`);
  assert.ok(Math.min(...times) < 5000, "on a machine that has much else to do");
});

visitorTest("what is typed at the prompt is answered", async (page) => {
  await expectReady(page);
  await takePicture(page, "prompt");
  await command(page, "PRINT 2^10", " 1024\\n");
});

visitorTest("a program is typed, listed and run", async (page) => {
  await expectReady(page);
  await typeLine(page, '10 PRINT "HELLO"');
  await typeLine(page, '20 PRINT "WORLD"');
  await command(page, "RUN", "HELLO\\nWORLD\\n");
  await command(page, "LIST", '10 PRINT "HELLO"\\n20 PRINT "WORLD"\\n');
  await takePicture(page, "program");
});

visitorTest("Escape, Ctrl-C and the bar's Esc stop a program that would run for ever, and the page stays responsive", async (page) => {
  await expectReady(page);
  await typeLine(page, "10 GOTO 10");
  const stops = [() => page.keyboard.press("Escape"), async () => {
    await page.keyboard.down("Control");
    await page.keyboard.press("c");
    await page.keyboard.up("Control");
  }, () => page.$eval("#keys button", (button) => button.click())];
  for (const [index, stop] of stops.entries()) {
    await typeLine(page, "RUN");
    await new Promise((resolve) => setTimeout(resolve, 400));
    const begin = performance.now();
    await openFiles(page);
    assert.ok(performance.now() - begin < 5000, "the page answers while the program runs");
    await press(page, "Files");
    await focusScreen(page);
    await stop();
    await page.waitForFunction((count) => document.querySelector(".screen-text").textContent.split("Break in 10").length === count + 2,
      { polling: 50 }, index);
  }
  await typeLine(page, "RUN");
  await page.close({ runBeforeUnload: true }); // without an end the test would have none either
});

visitorTest("the line editor gets its keys", async (page) => {
  await expectReady(page);
  await page.keyboard.type('PRINT "AC"');
  for (const key of ["ArrowLeft", "ArrowLeft", "Insert"]) await page.keyboard.press(key);
  await page.keyboard.type("B");
  await page.keyboard.press("Insert");
  await page.keyboard.press("End");
  await page.keyboard.press("Enter");
  await expectScreen(page, /^PRINT "ABC"\nABC$/m);
  await page.keyboard.type("PRINX 5");
  for (const key of ["ArrowLeft", "ArrowLeft", "Backspace"]) await page.keyboard.press(key);
  await page.keyboard.press("Home");
  await page.keyboard.press("Delete");
  await page.keyboard.press("End"); // away from the letters: the cursor hides what it stands on
  await expectScreen(page, /^RIN 5$/m);
});

// ---- Text that comes otherwise -----------------------------------------------------------------------------------

visitorTest("pasted text is typed, and what the machine does not have is told", async (page, visit, context) => {
  await allowClipboard(page, context);
  await expectReady(page);
  await page.evaluate(() => navigator.clipboard.writeText('10 PRINT "ONE"\r\n20 PRINT "TWO"\n'));
  await page.keyboard.down("Control");
  await page.keyboard.press("v");
  await page.keyboard.up("Control");
  await command(page, "RUN", "ONE\\nTWO\\n");
  await page.evaluate(() => navigator.clipboard.writeText('PRINT "5\u20bf"\n'));
  await press(page, "Paste");
  await expectScreen(page, /^PRINT "5"\n5$/m);
  await expectSentence(page, /\u20bf/);
});

visitorTest("the text on the screen is copied, by the button and by selecting it", async (page, visit, context) => {
  await allowClipboard(page, context);
  await expectReady(page);
  await command(page, 'PRINT "TO BE COPIED"', "TO BE COPIED\\n");
  await press(page, "Copy text");
  await expectSentence(page, /copied/);
  assert.match(await page.evaluate(() => navigator.clipboard.readText()), /^TO BE COPIED\nReady\.$/m);
  // A row is dragged over with the mouse.
  const row = await page.waitForSelector('::-p-xpath(//*[@class="screen-text"]/div[.="TO BE COPIED"])');
  const { x, y, height } = await row.boundingBox();
  const cell = await page.$eval("canvas", (canvas) => (canvas.getBoundingClientRect().width * 8) / canvas.width || 8);
  await page.mouse.move(x + 1, y + height / 2);
  await page.mouse.down();
  await page.mouse.move(x + cell * 5, y + height / 2, { steps: 5 });
  await page.mouse.up();
  assert.equal(await page.evaluate(() => String(getSelection())), "TO BE", "the letters lie over their cells");
  await page.keyboard.down("Control");
  await page.keyboard.press("c");
  await page.keyboard.up("Control");
  assert.equal(await page.evaluate(() => navigator.clipboard.readText()), "TO BE");
  await page.keyboard.type("X"); // goes on at the prompt
  await expectScreen(page, /^X$/m);
});

visitorTest("dead keys and input methods give the character that comes out", async (page) => {
  await expectReady(page);
  const session = await page.createCDPSession();
  await page.keyboard.type('PRINT "');
  await session.send("Input.dispatchKeyEvent", { type: "keyDown", key: "Dead", code: "Equal" });
  await session.send("Input.imeSetComposition", { text: "\u00b4", selectionStart: 1, selectionEnd: 1 });
  await session.send("Input.dispatchKeyEvent", { type: "keyUp", key: "Dead", code: "Equal" });
  await session.send("Input.insertText", { text: "\u00e9" });
  await page.keyboard.type('"');
  await page.keyboard.press("Enter");
  await expectScreen(page, /^PRINT "\u00e9"\n\u00e9$/m);
});

visitorTest("the keyboard of a touch screen types letter by letter, and its Backspace takes letters away", async (page) => {
  await expectReady(page);
  const session = await page.createCDPSession();
  const compose = async (text) => {
    await session.send("Input.dispatchKeyEvent", { type: "rawKeyDown", key: "Unidentified", windowsVirtualKeyCode: 229 });
    await session.send("Input.imeSetComposition", { text, selectionStart: text.length, selectionEnd: text.length });
  };
  for (const text of ["P", "PR", "PRI", "PRINK"]) await compose(text);
  await expectScreen(page, /^PRINK$/m);
  await compose("PRIN");
  await compose("PRINT");
  await session.send("Input.insertText", { text: "PRINT 7" });
  await expectScreen(page, /^PRINT 7$/m);
  // Without a word under way, Backspace takes away what is left in the field.
  await page.evaluate(() => {
    document.execCommand("delete");
    document.execCommand("insertText", false, "8");
  });
  await expectScreen(page, /^PRINT 8$/m);
  await page.keyboard.press("Enter");
  await expectScreen(page, /^PRINT 8\n 8$/m);
});

visitorTest("Tab leads from the screen through the page, and letters lead back", async (page) => {
  await expectReady(page);
  await page.keyboard.down("Shift");
  await page.keyboard.press("Tab");
  await page.keyboard.up("Shift");
  assert.ok(!(await page.evaluate(() => document.activeElement.classList.contains("keyboard"))));
  await page.evaluate(() => document.activeElement.blur());
  await page.keyboard.type("A");
  await expectScreen(page, /^A$/m);
  // In the order of the page, from the first button on.
  await page.evaluate(() => document.activeElement.blur());
  await page.$eval("#files-button", (button) => button.focus());
  const order = [];
  for (let count = 0; count < 9; ++count) {
    order.push(await page.evaluate(() => document.activeElement.id));
    await page.keyboard.press("Tab");
  }
  assert.deepEqual(order, ["files-button", "share", "paste", "copy", "picture", "as-text", "full-screen", "size", "reset"]);
});

// ---- What the machine draws and makes ---------------------------------------------------------------------------

// The colours of places in a PNG picture, as RRGGBB: decoded by the browser, in a page of its own without our policy.
async function coloursOf(context, picture, places) {
  const page = await context.newPage();
  const colours = await page.evaluate(async (data, wanted) => {
    const bitmap = await createImageBitmap(await (await fetch(`data:image/png;base64,${data}`)).blob());
    const canvas = new OffscreenCanvas(bitmap.width, bitmap.height);
    const drawing = canvas.getContext("2d");
    drawing.drawImage(bitmap, 0, 0);
    return wanted.map(([x, y]) => [...drawing.getImageData(x, y, 1, 1).data.slice(0, 3)]
      .map((part) => part.toString(16).padStart(2, "0")).join("").toUpperCase());
  }, Buffer.from(picture).toString("base64"), places);
  await page.close();
  return colours;
}

visitorTest("what is drawn is seen in its exact colours, and saved in them", async (page, visit, context) => {
  await expectReady(page);
  await typeLine(page, "10 CLS: LINE (100, 100)-(199, 199), &HFF8000, BF: LINE (200, 100)-(299, 199), &H123456, BF");
  await typeLine(page, "20 CIRCLE (450, 300), 60, 12: PAINT (450, 300), 10, 12");
  await typeLine(page, "RUN");
  await expectScreen(page, /^Ready\.(?![^]*RUN)/); // in the first row: CLS has taken the rest away
  await new Promise((resolve) => setTimeout(resolve, 300));
  const places = [[100, 100], [199, 199], [200, 100], [299, 199], [99, 100], [300, 150], [450, 300], [510, 300]];
  const colours = ["FF8000", "FF8000", "123456", "123456", "000000", "000000", "55FF55", "FF5555"];
  await takePicture(page, "drawing");
  // At this size of the window a pixel of the machine is one of the picture.
  const box = await (await page.$("canvas")).boundingBox();
  assert.equal(box.width, 800);
  const seen = await page.screenshot({ clip: box });
  assert.deepEqual(await coloursOf(context, seen, places), colours);
  await page.bringToFront();
  await press(page, "Save picture");
  assert.deepEqual(await coloursOf(context, await downloaded(FOLDER, "korvane.png"), places), colours);
  fs.rmSync(path.join(FOLDER, "korvane.png"));
});

// How many pixels of two PNG pictures differ.
async function differingPixels(context, one, other) {
  const page = await context.newPage();
  const count = await page.evaluate(async (...pictures) => {
    const [first, second] = await Promise.all(pictures.map(async (data) => {
      const bitmap = await createImageBitmap(await (await fetch(`data:image/png;base64,${data}`)).blob());
      const drawing = new OffscreenCanvas(bitmap.width, bitmap.height).getContext("2d");
      drawing.drawImage(bitmap, 0, 0);
      return new Uint32Array(drawing.getImageData(0, 0, bitmap.width, bitmap.height).data.buffer);
    }));
    if (first.length !== second.length) return Infinity;
    return first.reduce((sum, pixel, place) => sum + (pixel === second[place] ? 0 : 1), 0);
  }, Buffer.from(one).toString("base64"), Buffer.from(other).toString("base64"));
  await page.close();
  return count;
}

for (const name of ["plotter", "mandelbrot", "maze", "dashboard"]) {
  // The pictures of the manual are those of the same session on the hosted firmware, as its tests see to.
  visitorTest(`the picture of ${name}.bas is that of the manual, pixel by pixel`, async (page, visit, context) => {
    await expectReady(page);
    await addFiles(page, file("startup.bas", fs.readFileSync(path.join(ROOT, `examples/${name}.bas`))));
    await expectListed(page, /^STARTUP\.BAS$/m);
    await page.close();
    const again = await visit();
    const expected = fs.readFileSync(path.join(ROOT, `docs/pictures/${name}.png`));
    let differing = Infinity;
    for (let tries = 0; differing > 0 && tries < 30; ++tries) {
      await new Promise((resolve) => setTimeout(resolve, 500));
      await again.bringToFront();
      const box = await (await again.waitForSelector("canvas")).boundingBox();
      assert.equal(box.width, 640);
      differing = await differingPixels(context, await again.screenshot({ clip: box }), expected);
    }
    await takePicture(again, name);
    assert.equal(differing, 0);
  }, { width: 700, height: 700 });
}

visitorTest("CREATEEFI makes the image for PCs, which boots into the program", async (page) => {
  const program = [[10, 'PRINT "MADE IN A BROWSER"'], [20, "GOTO 20"]];
  await expectReady(page);
  for (const [number, text] of program) await typeLine(page, `${number} ${text}`);
  await command(page, 'CREATEEFI "GAME"', "Created GAME\\.efi\\n");
  await expectListed(page, /^GAME\.efi$/m);
  await press(page, "Download GAME.efi");
  const image = await downloaded(FOLDER, "GAME.efi");
  // The image, then the lines as {number, length, text}, then a mark and the length of all that.
  const numbers = (...values) => Buffer.from(Uint32Array.from(values).buffer);
  const packed = Buffer.concat([Buffer.from("BAS2"), numbers(program.length),
    ...program.flatMap(([number, text]) => [numbers(number, text.length), Buffer.from(text)])]);
  const whole = Buffer.concat([fs.readFileSync(path.join(WEB, "korvane.efi")), packed, Buffer.from("KORVANE2-PACKED!"), numbers(packed.length, 0)]);
  assert.ok(whole.equals(image), "the image, the packed program and the trailer");
  execFileSync("python3", [path.join(ROOT, "tests/web/boot_image.py"), path.join(FOLDER, "GAME.efi"), "MADE IN A BROWSER"]);
});

// ---- The volume --------------------------------------------------------------------------------------------------

visitorTest("what is saved is there after a reload, and the examples are", async (page, visit) => {
  await expectReady(page);
  await typeLine(page, '10 PRINT "KEPT"');
  await command(page, 'SAVE "KEPT.BAS"');
  await expectListed(page, /^KEPT\.BAS$/m);
  assert.equal((await listedFiles(page)).length, fs.readdirSync(path.join(ROOT, "examples")).filter((name) => /\.bas$/.test(name)).length + 1);
  assert.match(await page.$eval(".state", (state) => state.textContent), /Kept in this browser/);
  await page.close();
  const later = await visit();
  await expectReady(later);
  await command(later, 'LOAD "KEPT"');
  await command(later, "RUN", "KEPT\\n");
});

visitorTest("files are added and dropped, and downloaded again", async (page) => {
  await expectReady(page);
  await addFiles(page, file("hello.bas", '10 PRINT "caf\u00e9"\n'), file("\u00dcbung 1.txt", "abc"));
  await expectSentence(page, /2 files are on the volume\. "\u00dcbung 1\.txt" is UBUNG 1\.TXT there\./);
  await takePicture(page, "files");
  await focusScreen(page);
  await command(page, 'LOAD "HELLO"');
  await command(page, "RUN", "caf\u00e9\\n");
  await dropFiles(page, file("dropped.bas", '10 PRINT "DROPPED"\n'));
  await expectSentence(page, /DROPPED\.BAS is on the volume: LOAD "DROPPED" loads it\./);
  await focusScreen(page);
  await command(page, 'LOAD "DROPPED"');
  await command(page, "RUN", "DROPPED\\n");
  await press(page, "Download HELLO.BAS");
  assert.equal(String(await downloaded(FOLDER, "HELLO.BAS")), '10 PRINT "caf\u00e9"\n');
});

visitorTest("a file that is there is replaced only when the person says so", async (page) => {
  await expectReady(page);
  await addFiles(page, file("a.txt", "first"));
  await expectListed(page, /^A\.TXT$/m);
  await addFiles(page, file("b/a.txt", "second one"));
  await page.waitForSelector("dialog[open]");
  await takePicture(page, "replace");
  await press(page, "Cancel");
  assert.match(await page.$eval(".files", (list) => list.textContent), /A\.TXT5 bytes/);
  await addFiles(page, file("b/a.txt", "second one"));
  await press(page, "Replace");
  await page.waitForFunction(() => /A\.TXT10 bytes/.test(document.querySelector(".files").textContent), { polling: 50 });
});

visitorTest("the volume goes into a zip archive and comes back from it", async (page, visit) => {
  await expectReady(page);
  await typeLine(page, '10 PRINT "IN THE ARCHIVE"');
  await command(page, 'SAVE "MINE.BAS"');
  await addFiles(page, file("more.zip", zipSync({ "games/one.bas": bytes('10 PRINT "ONE"\n'), "data.bin": Uint8Array.of(0, 1, 255) })));
  await expectListed(page, /^GAMES\/ONE\.BAS$/m);
  await press(page, "Download all as zip");
  const archive = await downloaded(FOLDER, "korvane-volume.zip");
  const files = unzipSync(new Uint8Array(archive));
  assert.equal(String(Buffer.from(files["MINE.BAS"])), '10 PRINT "IN THE ARCHIVE"\r\n');
  assert.deepEqual([...files["DATA.BIN"]], [0, 1, 255]);
  assert.ok("GAMES/ONE.BAS" in files && "MAZE.BAS" in files);
  execFileSync("python3", ["-m", "zipfile", "-t", path.join(FOLDER, "korvane-volume.zip")]);
});

visitorTest("hostile and damaged archives, folders and a file of 1 GiB give a sentence, and nothing is lost", async (page) => {
  await expectReady(page);
  const before = await listedFiles(page);
  await addFiles(page, file("evil.zip", zipSync({ "fine.bas": bytes("10 END"), "../../evil.bas": bytes("10 END") })));
  await expectSentence(page, /"evil\.zip" was not taken: it holds a file with the name "\.\.\/\.\.\/evil\.bas"\. Nothing has changed\./);
  await takePicture(page, "hostile-archive");
  await addFiles(page, file("broken.zip", "no archive"));
  await expectSentence(page, /"broken\.zip" was not taken: it is damaged, or no zip archive\./);
  const huge = path.join(FOLDER, "huge.bin");
  fs.closeSync(fs.openSync(huge, "w"));
  fs.truncateSync(huge, 1024 ** 3);
  await dropFiles(page, huge);
  await expectSentence(page, /"huge\.bin" was not taken: it has 1 GiB, and a file may have 64 MiB\. Nothing has changed\./);
  await addFiles(page, file("wide.bas", Buffer.from("\ufeff10 END", "utf16le")));
  await expectSentence(page, /"wide\.bas" was not taken: it is in UTF-16/);
  fs.mkdirSync(path.join(FOLDER, "folder"), { recursive: true });
  await dropFiles(page, path.join(FOLDER, "folder"));
  await expectSentence(page, /"folder" was not taken: it cannot be read; a folder can be taken as a zip archive/);
  assert.deepEqual(await listedFiles(page), before);
  await focusScreen(page);
  await command(page, "PRINT 7", " 7\\n");
});

visitorTest("reset keeps the files and forgets the program, after asking", async (page) => {
  await expectReady(page);
  await typeLine(page, '10 PRINT "LOST"');
  await command(page, 'SAVE "SAVED.BAS"');
  await press(page, "Reset");
  await press(page, "Cancel");
  await focusScreen(page);
  await command(page, "LIST", '10 PRINT "LOST"\\n');
  await press(page, "Reset");
  await takePicture(page, "reset");
  await (await page.waitForSelector('dialog button[value="yes"]')).click();
  await expectReady(page);
  await page.waitForFunction(() => !document.querySelector(".screen-text").textContent.includes("LOST"), { polling: 50 });
  await command(page, "LIST", "(?=Ready)");
  await command(page, 'LOAD "SAVED"');
  await command(page, "RUN", "LOST\\n");
});

visitorTest("erasing the volume asks, and leaves the examples", async (page, visit) => {
  await expectReady(page);
  await typeLine(page, '10 PRINT "GONE"');
  await command(page, 'SAVE "GONE.BAS"');
  await command(page, 'KILL "MAZE.BAS"');
  await expectListed(page, /^GONE\.BAS$/m);
  await press(page, "Erase the volume...");
  await press(page, "Cancel");
  await expectListed(page, /^GONE\.BAS$/m);
  await press(page, "Erase the volume...");
  await takePicture(page, "erase");
  await press(page, "Erase");
  await page.waitForFunction(() => !document.querySelector(".files").textContent.includes("GONE.BAS"), { polling: 50 });
  await expectListed(page, /^MAZE\.BAS$/m);
  await page.close();
  const later = await visit();
  await expectReady(later);
  assert.ok(!(await listedFiles(later)).includes("GONE.BAS"));
});

visitorTest("an example that was deleted does not come back by itself", async (page, visit) => {
  await expectReady(page);
  await command(page, 'KILL "MAZE.BAS"');
  await page.waitForFunction(() => true);
  await openFiles(page);
  await page.waitForFunction(() => !document.querySelector(".files").textContent.includes("MAZE.BAS"), { polling: 50 });
  await page.close();
  const later = await visit();
  await expectReady(later);
  assert.ok(!(await listedFiles(later)).includes("MAZE.BAS"));
});

visitorTest("a second tab works on a copy, and says so", async (page, visit) => {
  await expectReady(page);
  const second = await visit();
  await expectReady(second);
  await expectSentence(second, /open in another tab, and this one works on a copy: /);
  await typeLine(second, '10 PRINT "SECOND"');
  await command(second, 'SAVE "SECOND.BAS"');
  await expectListed(second, /^SECOND\.BAS$/m);
  assert.match(await second.$eval(".state", (state) => state.textContent), /only until this page is closed/);
  await second.close();
  await page.close();
  const later = await visit();
  await expectReady(later);
  assert.ok(!(await listedFiles(later)).includes("SECOND.BAS"));
});

visitorTest("a storage that refuses gives a sentence, and the session goes on", async (page) => {
  await expectReady(page);
  await expectSentence(page, /does not let the page keep anything: what is on the volume is gone when the page is closed/);
  await takePicture(page, "storage-refused");
  await typeLine(page, '10 PRINT "IN MEMORY"');
  await command(page, 'SAVE "M.BAS"');
  await typeLine(page, "NEW");
  await command(page, 'LOAD "M"');
  await command(page, "RUN", "IN MEMORY\\n");
}, {
  prepare: (page) => page.evaluateOnNewDocument(() => {
    IDBFactory.prototype.open = () => {
      throw new DOMException("", "SecurityError");
    };
  }),
});

visitorTest("a storage that does not answer is waited for no longer than some seconds", async (page) => {
  await expectReady(page);
  await expectSentence(page, /does not let the page keep anything/);
}, {
  prepare: (page) => page.evaluateOnNewDocument(() => {
    IDBFactory.prototype.open = () => new EventTarget();
  }),
});

visitorTest("a storage that is full gives a sentence, what it kept stays, and the session goes on", async (page, visit) => {
  await expectReady(page);
  await addFiles(page, file("small.dat", "kept"));
  await expectListed(page, /^SMALL\.DAT$/m);
  await page.evaluate(() => {
    const put = IDBObjectStore.prototype.put;
    IDBObjectStore.prototype.put = function (entry, ...key) {
      if (entry.bytes?.length > 1000000) throw new DOMException("", "QuotaExceededError");
      return put.call(this, entry, ...key);
    };
  });
  await addFiles(page, file("small2.dat", "not kept"), file("big.dat", Buffer.alloc(4 * 1024 * 1024, 1)));
  await expectSentence(page, /no more room for the page: what is on the volume is gone when the page is closed/);
  await expectListed(page, /^BIG\.DAT$/m);
  await focusScreen(page);
  await command(page, "PRINT 7", " 7\\n");
  await page.close();
  const later = await visit();
  await expectReady(later);
  const files = await listedFiles(later);
  assert.ok(files.includes("SMALL.DAT") && !files.includes("SMALL2.DAT") && !files.includes("BIG.DAT"));
});

// ---- Browsers that lack something -------------------------------------------------------------------------------

const REFUSAL = /^This browser cannot run the machine: it needs WebAssembly with stack switching/;

async function expectRefusal(page) {
  await page.waitForSelector(".refused");
  assert.match(await page.$eval(".refused", (sentence) => sentence.textContent), REFUSAL);
  await expectAccessible(page);
  // What needs no machine is still of use.
  await expectListed(page, /^MAZE\.BAS$/m);
}

visitorTest("a browser that does not know the module's instructions is told what is missing", async (page) => {
  await expectRefusal(page);
  await takePicture(page, "refused");
}, {
  prepare: (page) => page.evaluateOnNewDocument(() => {
    const refuse = () => Promise.reject(new WebAssembly.CompileError("invalid opcode 0x13"));
    Object.assign(WebAssembly, { compile: refuse, compileStreaming: refuse });
  }),
});

test("a server that does not know what the module is makes no difference", async () => {
  const plain = await serve({}, { ".wasm": "application/octet-stream" });
  const context = await browser.createBrowserContext();
  try {
    const page = await openPage(context, plain.address);
    await expectReady(page);
    assert.deepEqual(page.troubles, []);
  } finally {
    await context.close();
    await plain.close();
  }
});

test("a browser without stack switching is told what is missing", async () => {
  const instead = {
    "machine/worker.js": file("without/worker.js", 'import "./without.js"; import "./whole_worker.js";'),
    "machine/without.js": file("without/without.js", "delete WebAssembly.Suspending; delete WebAssembly.promising;"),
    "machine/whole_worker.js": path.join(WEB, "machine/worker.js"),
  };
  const poor = await serve(instead);
  const context = await browser.createBrowserContext();
  try {
    await expectRefusal(await openPage(context, poor.address));
  } finally {
    await context.close();
    await poor.close();
  }
});

// ---- Links -------------------------------------------------------------------------------------------------------

const LINKED = '10 PRINT "FROM THE LINK"\r\n';

visitorTest("a link opens its program listed, and runs it when the person says so", async (page) => {
  await expectScreen(page, /^10 PRINT "FROM THE LINK"$/m);
  await new Promise((resolve) => setTimeout(resolve, 500));
  assert.doesNotMatch(await screenText(page), /^FROM THE LINK$/m);
  await takePicture(page, "link");
  await expectAccessible(page);
  await press(page, "Run it");
  await expectScreen(page, /^FROM THE LINK$/m);
  assert.ok(!(await listedFiles(page)).includes("LINKED.BAS"), "it is kept only when the person saves it");
  assert.ok(await page.$eval("#offer", (offer) => offer.hidden));
}, { fragment: "#" + (await fragmentOf("LINKED.BAS", bytes(LINKED))) });

visitorTest("a link never takes the place of a file, nor of what runs at the start", async (page, visit) => {
  await expectScreen(page, /^LOAD "MAZE2\.BAS"$/m);
  await page.close();
  const start = await visit({ fragment: "#" + (await fragmentOf("STARTUP.BAS", bytes(LINKED))) });
  await expectScreen(start, /^LOAD "LINK\.BAS"$/m);
  await start.close();
  const hostile = await visit({ fragment: "#" + (await fragmentOf('../X":RUN', bytes(LINKED))) });
  await expectScreen(hostile, /^LOAD "LINK\.BAS"$/m);
  await expectScreen(hostile, /^10 PRINT/m);
}, { fragment: "#" + (await fragmentOf("maze.bas", bytes(LINKED))) });

visitorTest("a program that is shared comes out of its link as it was", async (page, visit, context) => {
  await allowClipboard(page, context);
  await expectReady(page);
  await typeLine(page, '10 PRINT "SHARED \u00e9"');
  await command(page, 'SAVE "SHARED.BAS"');
  await press(page, "Share");
  await page.waitForSelector("dialog[open]");
  await takePicture(page, "share");
  assert.equal(await page.$eval("#shared-program", (select) => select.value), "/SHARED.BAS", "the newest is chosen");
  await press(page, "Copy the link");
  await expectSentence(page, /The link is copied/);
  const link = await page.evaluate(() => navigator.clipboard.readText());
  assert.ok(link.startsWith(server.address + "#"));
  await page.close();
  const other = await visit({ fragment: new URL(link).hash });
  await expectScreen(other, /^10 PRINT "SHARED \u00e9"$/m);
});

visitorTest("a broken link gives a sentence, and everything else is there", async (page) => {
  await expectReady(page);
  await expectSentence(page, /This link is broken/);
  await takePicture(page, "broken-link");
  await expectAccessible(page);
  await command(page, "PRINT 7", " 7\\n");
  await page.evaluate(() => (location.hash = "program=AAAA"));
  await expectSentence(page, /This link is broken/);
}, { fragment: "#name=A.BAS&program=" + (await fragmentOf("A.BAS", bytes(LINKED))).split("program=")[1].slice(3) });

visitorTest("a link that is opened in the same tab asks first", async (page) => {
  await expectReady(page);
  await typeLine(page, '10 PRINT "OLD"');
  const hash = await fragmentOf("NEW.BAS", bytes(LINKED));
  await page.evaluate((fragment) => (location.hash = fragment), hash);
  await press(page, "Cancel");
  await focusScreen(page);
  await command(page, "LIST", '10 PRINT "OLD"\\n');
  await page.evaluate((fragment) => (location.hash = fragment), hash + "&again=1");
  await press(page, "Open");
  await expectScreen(page, /^10 PRINT "FROM THE LINK"$/m);
});

// ---- Looks -------------------------------------------------------------------------------------------------------

// Colours of the page, as [paper, ink].
function pageColours(page) {
  return page.evaluate(() => {
    const style = getComputedStyle(document.body);
    return [style.backgroundColor, style.color];
  });
}

for (const [scheme, paper] of [["light", "rgb(255, 255, 255)"], ["dark", "rgb(23, 23, 27)"]]) {
  visitorTest(`the page is ${scheme} where the system is, and accessible in every state`, async (page) => {
    await expectReady(page);
    assert.equal((await pageColours(page))[0], paper);
    await expectAccessible(page);
    await openFiles(page);
    await page.waitForSelector(".files li");
    await expectAccessible(page);
    await press(page, "Reset");
    await page.waitForSelector("dialog[open]");
    await expectAccessible(page);
    await press(page, "Cancel");
    await press(page, "Share");
    await page.waitForSelector("dialog[open]");
    await expectAccessible(page);
    await press(page, "Close");
    await press(page, "As text");
    await expectAccessible(page);
    await takePicture(page, `as-text-${scheme}`);
    await press(page, "As text");
    await takePicture(page, `files-${scheme}`);
    assert.equal(await page.$eval("html", (html) => html.lang), "en");
    assert.equal(await page.title(), "Korvane BASIC");
  }, { prepare: (page) => page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: scheme }]) });
}

visitorTest("on a phone everything is in reach", async (page) => {
  await expectReady(page);
  await takePicture(page, "phone");
  const { width, keys, overflow } = await page.evaluate(() => ({
    width: document.querySelector("canvas").getBoundingClientRect().width,
    keys: [...document.querySelectorAll("#keys button")].map((button) => button.getBoundingClientRect().height),
    overflow: document.documentElement.scrollWidth - innerWidth,
  }));
  assert.ok(width > 380 && width <= 390, `the screen is ${width} wide`);
  assert.equal(keys.length, 9);
  assert.ok(keys.every((height) => height >= 40));
  assert.equal(overflow, 0);
  await page.tap(".screen-text");
  await page.keyboard.type("PRINTX 7");
  for (let count = 0; count < 2; ++count) await (await page.$('#keys button[aria-label="Left"]')).tap();
  await page.keyboard.press("Backspace");
  await page.keyboard.press("Enter");
  await expectScreen(page, /^PRINT 7\n 7$/m);
  await expectAccessible(page);
  await openFiles(page);
  await page.waitForSelector(".files li");
  await takePicture(page, "phone-files");
  await expectAccessible(page);
}, { width: 390, height: 844, deviceScaleFactor: 3, isMobile: true, hasTouch: true });

visitorTest("the screen has whole pixels, at any zoom", async (page) => {
  await expectReady(page);
  for (const [width, height, density] of [[1280, 800, 1], [1366, 640, 1], [2000, 1300, 1], [1280, 800, 2], [1000, 700, 1.5]]) {
    await page.setViewport({ width, height, deviceScaleFactor: density });
    await new Promise((resolve) => setTimeout(resolve, 200));
    const { shown, rendering, overflow } = await page.evaluate(() => {
      const canvas = document.querySelector("canvas");
      return {
        shown: canvas.getBoundingClientRect().width * devicePixelRatio, rendering: getComputedStyle(canvas).imageRendering,
        overflow: document.documentElement.scrollHeight - innerHeight,
      };
    });
    assert.ok(shown > 300, `${width}x${height}: ${shown}`);
    assert.equal(rendering, shown >= 800 ? "pixelated" : "auto");
    assert.equal(overflow, 0);
  }
});

visitorTest("the picture on the screen is saved", async (page) => {
  await expectReady(page);
  await press(page, "Save picture");
  const picture = await downloaded(FOLDER, "korvane.png");
  assert.equal(picture.subarray(1, 4).toString(), "PNG");
  assert.deepEqual([picture.readUInt32BE(16), picture.readUInt32BE(20)], [800, 600]);
});

visitorTest("the full screen is entered and left", async (page) => {
  await expectReady(page);
  await press(page, "Full screen");
  await page.waitForFunction(() => document.documentElement.classList.contains("full"));
  await takePicture(page, "full-screen");
  assert.ok(await page.evaluate(() => document.activeElement.classList.contains("keyboard")));
  await page.keyboard.type("PRINT 7");
  await page.keyboard.press("Enter");
  await expectScreen(page, /^PRINT 7\n 7$/m);
  await page.evaluate(() => document.exitFullscreen());
  await page.waitForFunction(() => !document.documentElement.classList.contains("full"));
});

visitorTest("another size of the screen asks, and is remembered", async (page, visit) => {
  const size = (of) => of.waitForFunction((wide) => document.querySelector("canvas").width === wide, { polling: 50 }, 1024);
  await expectReady(page);
  await page.select("#size", "1024x768");
  await press(page, "Cancel");
  await page.waitForFunction(() => document.querySelector("#size").value === "", { polling: 50 });
  await page.select("#size", "1024x768");
  await press(page, "Start anew");
  await size(page).catch(() => {});
  await expectReady(page);
  await page.close();
  const later = await visit();
  await expectReady(later);
  assert.equal(await later.$eval("#size", (select) => select.value), "1024x768");
});

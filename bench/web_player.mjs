// Runs programs in the machine for browsers, in Debian's Chromium, and measures the processor time that each takes from RUN to the prompt:
// reads the path of a program from each line of its input, and answers with a line of JSON, {seconds, text}.
//
// KORVANE_WEB=build/web KORVANE_WEB_PACKAGES=build/web-tests node bench/web_player.mjs WIDTH HEIGHT

import fs from "node:fs";
import readline from "node:readline";
import { openBrowser, processorTime, serve } from "../tests/web/page_browser.mjs";

const [width, height] = process.argv.slice(2).map(Number);
const server = await serve();
const browser = await openBrowser();
const page = await browser.newPage();
await page.goto(`${server.address}examples.json`);
// Compiled once, as on the page: what has become fast code for one machine is so for those that follow.
await page.evaluate(async () => {
  globalThis.module = await WebAssembly.compileStreaming(fetch("korvane.wasm"));
});

// Starts a machine of its own for a program, in a worker of its own, and loads it.
function load(text) {
  return page.evaluate((options) => new Promise((resolve, reject) => {
    const canvas = document.createElement("canvas");
    document.body.replaceChildren(canvas);
    const surface = canvas.transferControlToOffscreen();
    globalThis.worker = new Worker("machine/worker.js", { type: "module" });
    let waits = 0;
    worker.onmessage = ({ data }) => {
      if (data.type === "failed") reject(new Error(data.message));
      if (data.type !== "waiting" || !data.waiting) return;
      if (++waits === 1) worker.postMessage({ type: "text", text: "LOAD \"TASK.BAS\"\n" });
      else resolve();
    };
    worker.postMessage({
      type: "start", module, width: options.width, height: options.height, canvas: surface, image: null,
      files: [{ path: "/TASK.BAS", bytes: new TextEncoder().encode(options.text), modified: Date.now() }],
    }, [surface]);
  }), { text, width, height });
}

// Runs it; the text on the screen when the prompt is back.
function run() {
  return page.evaluate(() => new Promise((resolve, reject) => {
    worker.onmessage = ({ data }) => {
      if (data.type === "failed") reject(new Error(data.message));
      if (data.type === "waiting" && data.waiting) resolve();
    };
    worker.postMessage({ type: "text", text: "RUN\n" });
  }));
}

function shown() {
  return page.evaluate(() => new Promise((resolve) => {
    worker.onmessage = ({ data }) => {
      if (data.type !== "rows") return;
      worker.terminate();
      resolve(data.rows.join("\n"));
    };
    worker.postMessage({ type: "text-of-screen" });
  }));
}

async function play(text) {
  await load(text);
  await new Promise((done) => setTimeout(done, 300));  // what follows a start is not the program's
  const before = processorTime(browser);
  await run();
  const seconds = processorTime(browser) - before;
  return { seconds, text: await shown() };
}

for await (const file of readline.createInterface({ input: process.stdin })) {
  console.log(JSON.stringify(await play(fs.readFileSync(file, "utf8"))));
}
await browser.close();
await server.close();

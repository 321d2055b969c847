// Runs korvane-test.wasm in Debian's Chromium for the player of transcripts, which talks with it through standard input and
// output: a length of eight bytes, then orders or an answer as parcel.h has them. They are passed on to and from a page.
//
// KORVANE_WEB_PACKAGES=build/web-tests node browser_server.mjs korvane-test.wasm

import fs from "node:fs";
import http from "node:http";
import { fileURLToPath } from "node:url";
import { openBrowser, packageOfTests } from "../chromium.mjs";

const { WebSocketServer } = packageOfTests("ws");

const beside = (name) => fileURLToPath(new URL(name, import.meta.url));
const FILES = new Map([
  ["/", ["text/html", null]], // HTML
  ["/browser_page.mjs", ["text/javascript", beside("browser_page.mjs")]],
  ["/browser_worker.mjs", ["text/javascript", beside("browser_worker.mjs")]],
  ["/test_machine.mjs", ["text/javascript", beside("test_machine.mjs")]],
  ["/module.wasm", ["application/wasm", process.argv[2]]],
]);

const HTML = `<!DOCTYPE html><title>Machines of transcripts</title><link rel="icon" href="data:,">
<script type="module" src="browser_page.mjs"></script>`;

// With these two the browser's clock is fine enough to tell a machine that waits from one that works.
const ISOLATED = { "Cross-Origin-Opener-Policy": "same-origin", "Cross-Origin-Embedder-Policy": "require-corp" };

async function servePage() {
  const server = http.createServer((request, response) => {
    const [type, file] = FILES.get(request.url) ?? [null, null];
    response.writeHead(type === null ? 404 : 200, { ...ISOLATED, "Content-Type": type ?? "text/plain" });
    response.end(file === null ? HTML : fs.readFileSync(file));
  });
  await new Promise((resolve) => server.listen(0, "127.0.0.1", resolve));
  return server;
}

// The connection with the page.
async function openPage(browser, server) {
  const connected = new Promise((resolve) => {
    new WebSocketServer({ server, maxPayload: 2 ** 30 }).on("connection", resolve);
  });
  const page = await browser.newPage();
  page.on("console", (message) => process.stderr.write(`${message.text()}\n`));
  await page.goto(`http://127.0.0.1:${server.address().port}/`);
  return connected;
}

// Hands out what comes in whole: a length of eight bytes and as many more.
function onOrders(stream, take) {
  let held = Buffer.alloc(0);
  stream.on("data", (bytes) => {
    held = held.length === 0 ? bytes : Buffer.concat([held, bytes]);
    while (held.length >= 8) {
      const size = Number(held.readBigUInt64LE());
      if (held.length < 8 + size) return;
      take(held.subarray(8, 8 + size));
      held = held.subarray(8 + size);
    }
  });
}

const server = await servePage();
const browser = await openBrowser();
const player = await openPage(browser, server);

async function end() {
  await browser.close();
  process.exit(0);
}

onOrders(process.stdin, (orders) => player.send(orders));
process.stdin.on("end", end);
player.on("message", (answer) => {
  const size = Buffer.alloc(8);
  size.writeBigUInt64LE(BigInt(answer.length));
  process.stdout.write(size);
  process.stdout.write(answer);
});
player.on("close", end);

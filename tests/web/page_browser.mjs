// Debian's Chromium with the built pages in it, served from a folder of a plain file server: no header but the type of a
// file, as the simplest places for pages have them.
//
// KORVANE_WEB names the folder of the pages, KORVANE_WEB_PACKAGES that of the packages (chromium.mjs), KORVANE_WEB_PICTURES
// one that gets pictures of what the tests see (none are made without it).

import assert from "node:assert";
import fs from "node:fs";
import http from "node:http";
import path from "node:path";
import { placeOfPackage } from "./chromium.mjs";

export { openBrowser } from "./chromium.mjs";

const AXE = placeOfPackage("axe-core/axe.min.js");

export const WEB = path.resolve(process.env.KORVANE_WEB);
const PICTURES = process.env.KORVANE_WEB_PICTURES;

// How long something may take that is waited for: much longer than it does on a machine that has nothing else to do.
const PATIENCE_MS = Number(process.env.KORVANE_WEB_PATIENCE_MS ?? 20000);

// Where the pages lie on the server: nothing may depend on that.
const FOLDER = "/some/folder/";

const TYPES = {
  ".css": "text/css", ".efi": "application/octet-stream", ".html": "text/html", ".js": "text/javascript", ".json": "application/json",
  ".png": "image/png", ".svg": "image/svg+xml", ".txt": "text/plain", ".wasm": "application/wasm",
  ".webmanifest": "application/manifest+json",
};

// Serves the pages: {address, close()}. `instead` gives files that stand in for others, by their path below the pages, `types`
// what other servers call files with such endings.
export async function serve(instead = {}, types = {}) {
  const server = http.createServer((request, response) => {
    const { pathname } = new URL(request.url, "http://server");
    let name = decodeURIComponent(pathname);
    name = name.startsWith(FOLDER) ? name.slice(FOLDER.length) : null;
    if (name !== null && (name === "" || name.endsWith("/"))) name += "index.html";
    const file = name !== null && (instead[name] ?? path.join(WEB, name));
    if (!file || !fs.existsSync(file)) {
      response.writeHead(404).end();
      return;
    }
    response.writeHead(200, { "Content-Type": { ...TYPES, ...types }[path.extname(name)] ?? "application/octet-stream" });
    fs.createReadStream(file).pipe(response);
  });
  await new Promise((resolve) => server.listen(0, "127.0.0.1", resolve));
  return {
    address: `http://127.0.0.1:${server.address().port}${FOLDER}`,
    close: () => new Promise((resolve) => {
      server.close(resolve);
      server.closeAllConnections();
    }),
  };
}

// The processor time of a browser and all its processes so far, in seconds: what else the computer does is not in it.
export function processorTime(browser) {
  const children = new Map();
  const times = new Map();
  for (const name of fs.readdirSync("/proc").filter((name) => /^\d+$/.test(name))) {
    try {
      const fields = fs.readFileSync(`/proc/${name}/stat`, "latin1").replace(/^.*\) /s, "").split(" ");
      const parent = Number(fields[1]);
      children.set(parent, [...(children.get(parent) ?? []), Number(name)]);
      times.set(Number(name), (Number(fields[11]) + Number(fields[12])) / 100);
    } catch {
      // It has ended meanwhile.
    }
  }
  const sum = (process) => (times.get(process) ?? 0) + (children.get(process) ?? []).reduce((all, child) => all + sum(child), 0);
  return sum(browser.process().pid);
}

// A page that tells what goes wrong in it: whatever its console complains about, and every request that leaves the server.
// `prepare(page)` comes before the page is opened.
export async function openPage(browser, address, { width = 1280, height = 800, prepare = async () => {}, ...viewport } = {}) {
  const page = await browser.newPage();
  page.troubles = [];
  await page.setViewport({ width, height, ...viewport });
  page.on("console", (message) => ["error", "warn"].includes(message.type()) && page.troubles.push(message.text()));
  page.on("pageerror", (error) => page.troubles.push(String(error)));
  page.on("request", (request) => {
    const { protocol, origin } = new URL(request.url());
    if (!["data:", "blob:"].includes(protocol) && origin !== new URL(address).origin) page.troubles.push(`asked for ${request.url()}`);
  });
  page.setDefaultTimeout(PATIENCE_MS);
  await prepare(page);
  await page.goto(address);
  return page;
}

// The text on the machine's screen.
export function screenText(page) {
  return page.$$eval(".screen-text > div", (rows) => rows.map((row) => row.textContent.trimEnd()).join("\n").trimEnd());
}

// Waits until the text on the screen fits; shows it when it does not come to that.
export async function expectScreen(page, pattern) {
  try {
    await page.waitForFunction((source, flags) => {
      const rows = [...document.querySelectorAll(".screen-text > div")].map((row) => row.textContent.trimEnd());
      return new RegExp(source, flags).test(rows.join("\n"));
    }, { polling: 50 }, pattern.source, pattern.flags);
  } catch {
    assert.match(await screenText(page), pattern);
  }
}

// Waits until the page's sentences fit, and can be seen.
export async function expectSentence(page, pattern) {
  try {
    await page.waitForFunction((source) => {
      const place = document.querySelector("#notices p");
      return place.checkVisibility() && new RegExp(source).test(place.textContent);
    }, { polling: 50 }, pattern.source);
  } catch {
    assert.match(await page.$eval("#notices p", (place) => (place.checkVisibility() ? place.textContent : "")), pattern);
  }
}

export async function expectReady(page) {
  await expectScreen(page, /^Ready\.$/m);
}

// Types a line as a person does, and waits until the machine has answered it with another "Ready.".
export async function typeLine(page, line) {
  await page.keyboard.type(line);
  await page.keyboard.press("Enter");
}

export async function command(page, line, answer = "") {
  await typeLine(page, line);
  const quoted = (text) => text.replace(/[.*+?^${}()|[\]\\]/g, "\\$&");
  await expectScreen(page, new RegExp(`^${quoted(line)}$\\n${answer}[^]*^Ready\\.$(?![^]*^${quoted(line)}$)`, "m"));
}

// A picture for people who want to see what the tests see.
export async function takePicture(page, name) {
  if (!PICTURES) return;
  fs.mkdirSync(PICTURES, { recursive: true });
  await page.screenshot({ path: path.join(PICTURES, `${name}.png`) });
}

// Everything that axe-core finds wrong.
export async function expectAccessible(page) {
  // The policy keeps scripts of others out of the page; the tests come in through the debugger.
  await page.evaluate(fs.readFileSync(AXE, "utf8"));
  const { violations } = await page.evaluate(() => globalThis.axe.run(document));
  assert.deepEqual(violations.map(({ id, nodes }) => `${id}: ${nodes.map(({ target, failureSummary }) => `${target} ${failureSummary}`).join(" | ")}`), []);
}

// The content of a file that is being downloaded into a folder, once it is whole.
export async function downloaded(folder, name) {
  const file = path.join(folder, name);
  for (let waited = 0; waited < PATIENCE_MS && !fs.existsSync(file); waited += 50) await new Promise((resolve) => setTimeout(resolve, 50));
  return fs.readFileSync(file);
}

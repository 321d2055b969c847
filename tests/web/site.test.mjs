// The built pages as files: what the browser is told to load, where links lead, how large everything is.
//
// KORVANE_WEB=build/web node --test tests/web/site.test.mjs

import assert from "node:assert";
import fs from "node:fs";
import path from "node:path";
import test from "node:test";
import zlib from "node:zlib";

const WEB = path.resolve(process.env.KORVANE_WEB);
const ROOT = path.resolve(path.dirname(new URL(import.meta.url).pathname), "../..");

function filesBelow(folder) {
  return fs.readdirSync(folder, { withFileTypes: true }).flatMap((entry) => {
    const place = path.join(folder, entry.name);
    return entry.isDirectory() ? filesBelow(place) : [place];
  });
}

const files = filesBelow(WEB).map((file) => path.relative(WEB, file));
const pages = new Map(files.filter((file) => file.endsWith(".html"))
  .map((file) => [file, fs.readFileSync(path.join(WEB, file), "utf8")]));
const read = (file) => fs.readFileSync(path.join(WEB, file), "utf8");
const unescaped = (text) => text.replaceAll("&quot;", '"').replaceAll("&lt;", "<").replaceAll("&gt;", ">").replaceAll("&amp;", "&");

function attributes(html, name) {
  return [...html.matchAll(new RegExp(`\\s${name}="([^"]*)"`, "g"))].map(([, value]) => unescaped(value));
}

test("every page of docs/ is a page of the site, and the first page leads to all of them", () => {
  const sources = filesBelow(path.join(ROOT, "docs")).filter((file) => file.endsWith(".md"));
  const names = sources.map((file) => "manual/" + path.relative(path.join(ROOT, "docs"), file).replace(/\.md$/, ".html"));
  assert.deepEqual([...pages.keys()].filter((file) => file.startsWith("manual/")).sort(), names.sort());
  const linked = attributes(/<nav class="pages"[^]*?<\/nav>/.exec(pages.get("manual/index.html"))[0], "href");
  assert.deepEqual(linked.map((target) => "manual/" + target).sort(), names.sort());
});

test("all links within the site lead somewhere", () => {
  for (const [file, html] of pages) {
    for (const target of [...attributes(html, "href"), ...attributes(html, "src")]) {
      if (/^(https?|mailto):/.test(target)) continue;
      const [name, anchor] = target.split("#");
      const there = name === "" ? file : path.posix.normalize(path.posix.join(path.posix.dirname(file), name));
      assert.ok(files.includes(there), `${file}: nothing is at ${target}`);
      if (anchor) assert.ok(attributes(pages.get(there), "id").includes(anchor), `${file}: ${target} has no such place`);
    }
  }
});

test("places in a page have a name of their own", () => {
  for (const [file, html] of pages) assert.equal(new Set(attributes(html, "id")).size, attributes(html, "id").length, file);
  const addresses = JSON.parse(read("manual/search.json")).map(({ address }) => address);
  assert.equal(new Set(addresses).size, addresses.length);
});

test("nothing is loaded from elsewhere, no script and no style stands in a page, and the policy says so", () => {
  for (const [file, html] of pages) {
    assert.match(html, /<meta http-equiv="Content-Security-Policy" content="default-src 'none'; script-src 'self' 'wasm-unsafe-eval'; style-src 'self';/, file);
    assert.doesNotMatch(html, /unsafe-inline|<style|\sstyle=|\son\w+="|javascript:/, file);
    for (const [script] of html.matchAll(/<script[^]*?<\/script>/g)) assert.match(script, /^<script type="module" src="[^":]+"><\/script>$/, file);
    for (const target of [...attributes(html, "src"), ...[...html.matchAll(/<link[^>]* href="([^"]*)"/g)].map(([, value]) => value)]) {
      assert.doesNotMatch(target, /^([a-z]+:|\/)/, `${file}: ${target}`);
    }
  }
  for (const file of files.filter((name) => /\.(js|css)$/.test(name))) {
    const source = read(file);
    assert.doesNotMatch(source, /@import|url\(["']?(https?:|\/)/, file);
    for (const [, target] of source.matchAll(/(?:\bimport\s*\(\s*|\b(?:from|import)\s+)"([^"]+)"/g)) {
      assert.ok(target.startsWith(".") && files.includes(path.posix.join(path.posix.dirname(file), target)), `${file}: ${target}`);
    }
  }
});

test("the browser is told at once of everything that the machine's page loads, and of nothing else", () => {
  const needed = new Set(["page/main.js"]);
  for (const file of needed) {
    for (const [, target] of read(file).matchAll(/^import\b[^;]*?"(\.[^"]+)";$/gm)) needed.add(path.posix.join(path.posix.dirname(file), target));
  }
  const links = (kind) => [...pages.get("index.html").matchAll(new RegExp(`<link rel="${kind}" href="([^"]+)"`, "g"))].map(([, target]) => target);
  assert.ok(needed.size > 10);
  assert.deepEqual(["page/main.js", ...links("modulepreload")].sort(), [...needed].sort());
  assert.deepEqual(links("preload"), ["korvane.wasm", "korvane.efi"]);
});

test("every page has a language, a title, a viewport and one first heading", () => {
  for (const [file, html] of pages) {
    assert.match(html, /<html lang="en">/, file);
    assert.match(html, /<title>[^<]+<\/title>/, file);
    assert.match(html, /<meta name="viewport"/, file);
    assert.equal(html.split("<h1").length, 2, file);
  }
});

test("every example of the manual can be run", () => {
  const sources = filesBelow(path.join(ROOT, "docs")).filter((file) => file.endsWith(".md"));
  let examples = 0;
  const leftToPeople = [];
  for (const source of sources) {
    const html = pages.get("manual/" + path.relative(path.join(ROOT, "docs"), source).replace(/\.md$/, ".html"));
    const blocks = [...fs.readFileSync(source, "utf8").matchAll(/^```basic\n([^]*?)^```$/gm)].map(([, text]) => text);
    const programs = source.endsWith("examples.md") ? fs.readdirSync(path.join(ROOT, "examples")).length : 0;
    const buttons = [...html.matchAll(/data-example="([^"]*)"/g)].map(([, value]) => JSON.parse(unescaped(value)));
    assert.equal(buttons.length, blocks.length + programs, source);
    examples += blocks.length;
    if (programs > 0) continue;
    buttons.forEach(({ steps }, index) => {
      const typed = blocks[index].split("\n").filter((line) => line.startsWith("> ")).map((line) => line.slice(2));
      const lines = steps.filter(({ line }) => line !== undefined).map(({ line }) => line);
      assert.deepEqual(lines, typed.slice(0, lines.length), source);
      if (lines.length < typed.length) leftToPeople.push([typed[0], lines.at(-1)]);
    });
  }
  assert.ok(examples > 200, `${examples} examples`);
  assert.deepEqual(leftToPeople, [['LOAD "GUESS"', "RUN"]], "its number is another one each time");
});

test("examples bring their files", () => {
  const example = (page, line) => [...pages.get(page).matchAll(/data-example="([^"]*)"/g)]
    .map(([, value]) => JSON.parse(unescaped(value))).find(({ steps }) => steps.some((step) => step.line === line));
  assert.deepEqual(example("manual/reference/files.html", '10 OPEN "NAMES.TXT" FOR INPUT AS #1').files, { "NAMES.TXT": "ADA\r\nGRACE\r\n" });
  const { "DOT.BMP": dot } = example("manual/reference/graphics.html", 'LOADBMP 0, "DOT.BMP"').files;
  assert.equal(dot.length, 58, "a header of 54 bytes and one row of one pixel, filled up to 4");
  assert.deepEqual([...dot.slice(54)].map((sign) => sign.charCodeAt(0)), [0, 0x80, 0xff, 0]);
  assert.deepEqual(example("manual/tour.html", "10 GOTO 10").steps,
    [{ line: "10 GOTO 10" }, { later: ["Escape"] }, { line: "RUN" }]);
});

test("the search knows every heading", () => {
  const known = new Set(JSON.parse(read("manual/search.json")).map(({ address }) => "manual/" + address));
  for (const [file, html] of pages) {
    if (!file.startsWith("manual/")) continue;
    for (const [, anchor] of html.matchAll(/<h[1-6] id="([^"]*)"/g)) assert.ok(known.has(`${file}#${anchor}`), `${file}#${anchor}`);
  }
});

test("all files are kept in the browser, under a version of their own", () => {
  const worker = read("service-worker.js");
  assert.deepEqual(JSON.parse(/^const FILES = (.*);$/m.exec(worker)[1]).sort(), files.filter((file) => file !== "service-worker.js").sort());
  assert.match(worker, /^const VERSION = "[0-9a-f]{16}";$/m);
});

test("the licences of everything on the pages are there", () => {
  const licences = read("licences.txt");
  for (const name of ["LICENSE", "LICENSE.font.txt", "fflate", "minisearch"]) assert.match(licences, new RegExp(`^== ${name.replace(".", "\\.")} ==$`, "m"));
});

// The pieces of a WebAssembly module that tell how many bits addresses have: the flags of its memories' and tables' limits.
function flagsOfLimits(module) {
  const flags = [];
  let at = 8;
  const number = () => {
    let value = 0;
    for (let shift = 0; ; shift += 7) {
      const byte = module[at++];
      value += (byte & 0x7f) * 2 ** shift;
      if (byte < 0x80) return value;
    }
  };
  const text = () => {
    const length = number();
    at += length;
  };
  const limits = () => {
    flags.push(module[at++]);
    for (let count = 1 + (flags.at(-1) & 1); count > 0; --count) number();
  };
  const imported = {
    0: number, 1: () => (++at, limits()), 2: limits, 3: () => (at += 2),
  };
  while (at < module.length) {
    const section = module[at++];
    const size = number();
    const end = at + size;
    for (let count = [2, 4, 5].includes(section) ? number() : 0; count > 0; --count) {
      if (section === 2) {
        text();
        text();
        imported[module[at++]]();
      } else {
        at += section === 4;
        limits();
      }
    }
    at = end;
  }
  return flags;
}

test("no memory and no table of the machine needs a browser with addresses of 64 bits", () => {
  const flags = flagsOfLimits(fs.readFileSync(path.join(WEB, "korvane.wasm")));
  assert.ok(flags.length >= 2, `${flags}`);
  for (const flag of flags) assert.equal(flag & 4, 0);
});

test("the machine with its page, its examples and its image is at most 400 KiB compressed", (context) => {
  const sizes = files.filter((file) => !file.startsWith("manual/"))
    .map((file) => [file, zlib.gzipSync(fs.readFileSync(path.join(WEB, file)), { level: 9 }).length]).sort(([, one], [, other]) => other - one);
  const total = sizes.reduce((sum, [, size]) => sum + size, 0);
  context.diagnostic(`${total} bytes: ${sizes.slice(0, 5).map(([file, size]) => `${file} ${size}`).join(", ")}`);
  assert.ok(files.includes("korvane.wasm") && files.includes("korvane.efi") && files.includes("examples.json"));
  assert.ok(total <= 400 * 1024, `${total} bytes: ${sizes.slice(0, 8).map(([file, size]) => `${file} ${size}`).join(", ")}`);
});

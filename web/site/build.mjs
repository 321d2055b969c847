// Makes the browser's pages in OUT, which holds the machine already: the machine's own page, the manual as a site, and the
// service worker that keeps all of it.
//
// node build.mjs ROOT OUT
//
// It is run from a copy beside the packages that package.json names; what it reads is ROOT's.

import crypto from "node:crypto";
import fs from "node:fs";
import path from "node:path";
import { fileURLToPath } from "node:url";
import { buildSync } from "esbuild";
import { examplePrograms } from "./examples.mjs";
import { layout } from "./layout.mjs";
import { renderPage } from "./markdown.mjs";

const HERE = path.dirname(fileURLToPath(import.meta.url));
const [root, out] = process.argv.slice(2).map((folder) => path.resolve(folder));
const SITE = path.join(root, "web/site");

function write(file, content) {
  const place = path.join(out, file);
  fs.mkdirSync(path.dirname(place), { recursive: true });
  fs.writeFileSync(place, content);
}

function filesBelow(folder) {
  return fs.readdirSync(folder, { withFileTypes: true }).flatMap((entry) => {
    const place = path.join(folder, entry.name);
    return entry.isDirectory() ? filesBelow(place) : [place];
  }).sort();
}

// What is needed of a library, as one module without imports.
function bundle(file, source) {
  buildSync({
    stdin: { contents: source, resolveDir: HERE }, bundle: true, minify: true, format: "esm",
    legalComments: "none", outfile: path.join(out, file),
  });
}

// The modules that a script needs, one after another, as far as `out` has them: browsers learn of each from the one before.
function modulesOf(script, found = new Set([script])) {
  for (const [, target] of fs.readFileSync(path.join(out, script), "utf8").matchAll(/^import [^;]*?"([^"]+)";$/gm)) {
    const file = path.posix.join(path.posix.dirname(script), target);
    if (!found.has(file)) modulesOf(file, found.add(file));
  }
  return [...found];
}

// Tells the browser at once what the machine's page will ask for.
function announceParts() {
  const modules = modulesOf("page/main.js").slice(1).map((file) => `<link rel="modulepreload" href="${file}">`);
  const data = ["korvane.wasm", "korvane.efi"].map((file) => `<link rel="preload" href="${file}" as="fetch" crossorigin>`);
  const page = fs.readFileSync(path.join(out, "index.html"), "utf8");
  write("index.html", page.replace("<script ", [...data, ...modules, "<script "].join("\n")));
}

function copyPage() {
  const here = new Set(["index.html", "icon.svg", "manifest.webmanifest"]);
  for (const file of fs.readdirSync(path.join(root, "web/page"))) {
    if (file === "service_worker.js") continue;
    write(here.has(file) ? file : `page/${file}`, fs.readFileSync(path.join(root, "web/page", file)));
  }
  bundle("page/fflate.js", 'export { unzipSync, zipSync } from "fflate";');
  write("examples.json", JSON.stringify(examplePrograms(root)));
  announceParts();
}

// ---- The manual --------------------------------------------------------------------------------------------------

// The pages in the order in which the manual's first page and the reference's name them.
function pageOrder(docs) {
  const linked = (page) => [...fs.readFileSync(path.join(docs, page), "utf8").matchAll(/\]\(([\w/-]+\.md)\)/g)]
    .map(([, target]) => path.posix.join(path.posix.dirname(page), target));
  const found = ["index.md"];
  for (const page of found) {
    if (!/(^|\/)index\.md$/.test(page)) continue;
    const next = linked(page).filter((target) => !found.includes(target));
    found.splice(found.indexOf(page) + 1, 0, ...new Set(next));
  }
  const others = filesBelow(docs).map((file) => path.relative(docs, file))
    .filter((file) => file.endsWith(".md") && !found.includes(file));
  return [...found, ...others];
}

function makeManual() {
  const docs = path.join(root, "docs");
  const pages = pageOrder(docs).map((page) => ({
    file: page.replace(/\.md$/, ".html"), ...renderPage(page, fs.readFileSync(path.join(docs, page), "utf8")),
  }));
  for (const page of pages) {
    write(`manual/${page.file}`, layout({ ...page, pages, up: "../".repeat(page.file.split("/").length - 1) }));
  }
  write("manual/search.json", JSON.stringify(pages.flatMap(({ file, title, sections }) =>
    sections.map(({ heading, anchor, text }) => ({
      address: anchor ? `${file}#${anchor}` : file, title, heading: heading || title, text: text.replace(/\s+/g, " ").trim(),
    })))));
  for (const picture of filesBelow(path.join(docs, "pictures"))) {
    write(`manual/${path.relative(docs, picture)}`, fs.readFileSync(picture));
  }
  for (const file of ["manual.css", "manual.js", "search.js", "example_player.js"]) {
    write(`manual/${file}`, fs.readFileSync(path.join(SITE, file)));
  }
  bundle("manual/minisearch.js", 'export { default } from "minisearch";');
}

// ---- Licences, and what is kept in the browser ------------------------------------------------------------------

// Whoever gets the pages gets the licences of what they hold.
function writeLicences() {
  const own = ["LICENSE", "LICENSE.font.txt"].map((file) => [file, path.join(root, file)]);
  const others = ["fflate", "minisearch"].map((name) => {
    const folder = path.join(HERE, "node_modules", name);
    return [name, path.join(folder, fs.readdirSync(folder).find((file) => /^licen[cs]e/i.test(file)))];
  });
  write("licences.txt", [...own, ...others].map(([name, file]) => `== ${name} ==\n\n${fs.readFileSync(file, "utf8").trim()}\n`).join("\n"));
}

function writeServiceWorker() {
  const hash = crypto.createHash("sha256");
  const files = filesBelow(out).map((file) => path.relative(out, file)).filter((file) => file !== "service-worker.js");
  for (const file of files) hash.update(file).update("\0").update(fs.readFileSync(path.join(out, file)));
  const version = hash.digest("hex").slice(0, 16);
  write("service-worker.js", `const VERSION = ${JSON.stringify(version)};\nconst FILES = ${JSON.stringify(files)};\n\n` +
    fs.readFileSync(path.join(root, "web/page/service_worker.js"), "utf8"));
}

copyPage();
makeManual();
writeLicences();
writeServiceWorker();

// Archives of files, which need no browser, but the library in the built pages: KORVANE_WEB names their folder.
//
// KORVANE_WEB=build/web node --test tests/web/archive_units.test.mjs

import assert from "node:assert";
import path from "node:path";
import test from "node:test";
import { pathToFileURL } from "node:url";

const page = (name) => import(pathToFileURL(path.resolve(process.env.KORVANE_WEB, "page", name)));
const { archiveOf, filesOfArchive, RefusedArchive } = await page("archive.js");
const { LARGEST_FILE } = await page("volume.js");
const { zipSync } = await page("fflate.js");

const bytes = (text) => new TextEncoder().encode(text);

test("an archive of the volume comes back as the same files", () => {
  const entries = [
    { path: "/GAMES", folder: true }, { path: "/GAMES/NIM.BAS", bytes: Uint8Array.of(0x31, 0x82), modified: Date.now() },
    { path: "/OLD.DAT", bytes: Uint8Array.of(0, 255, 26), modified: 0 },
  ];
  const files = filesOfArchive(archiveOf(entries), 5);
  assert.deepEqual(files.map(({ path, bytes: codes, modified }) => ({ path, bytes: codes, modified })), [
    { path: "/GAMES/NIM.BAS", bytes: Uint8Array.of(0x31, 0x82), modified: 5 },
    { path: "/OLD.DAT", bytes: Uint8Array.of(0, 255, 26), modified: 5 },
  ]);
});

test("one hostile name, and nothing of the archive is taken", () => {
  for (const name of ["../evil.bas", "/evil.bas", "a/../../evil.bas", "C:/evil.bas", "..\\evil.bas", "a\u0001b"]) {
    assert.throws(() => filesOfArchive(zipSync({ "good.bas": bytes("10 END"), [name]: bytes("x") }), 0),
      (error) => error instanceof RefusedArchive && /it holds a file with the name/.test(error.message), name);
  }
});

test("names that are one on the volume, or none, are refused", () => {
  assert.throws(() => filesOfArchive(zipSync({ "a.bas": bytes("1"), "A.BAS": bytes("2") }), 0), /the same name/);
  assert.throws(() => filesOfArchive(zipSync({ ["x".repeat(200)]: bytes("1") }), 0), /no name that can be written/);
});

test("what systems put into archives for themselves is left out", () => {
  const files = filesOfArchive(zipSync({ "a.bas": bytes("1"), "__MACOSX/._a.bas": bytes("2"), "sub/.DS_Store": bytes("3") }), 0);
  assert.deepEqual(files.map(({ path }) => path), ["/A.BAS"]);
});

test("damaged archives, and those that claim too much, are refused", () => {
  const archive = zipSync({ "a.bas": bytes("10 END\r\n".repeat(100)) });
  assert.throws(() => filesOfArchive(bytes("no archive at all"), 0), RefusedArchive);
  assert.throws(() => filesOfArchive(archive.subarray(0, archive.length - 30), 0), RefusedArchive);
  // The size that the central directory claims stands 24 bytes into its entry.
  const claims = archive.slice();
  const entry = Buffer.from(claims.buffer).indexOf(Buffer.from("PK\x01\x02", "latin1"));
  new DataView(claims.buffer).setUint32(entry + 24, LARGEST_FILE + 1, true);
  assert.throws(() => filesOfArchive(claims, 0), /too large/);
});

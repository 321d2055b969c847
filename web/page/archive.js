// The volume as a zip archive, and archives as files for the volume.

import { unzipSync, zipSync } from "./fflate.js";
import { isHostile, pathOnVolume, sameKey } from "./names.js";
import { readFile, writeFile } from "./program_text.js";
import { LARGEST_FILE, LARGEST_VOLUME } from "./volume.js";

// The years that archives can tell.
const FIRST_TIME = Date.UTC(1980, 0, 2);
const LAST_TIME = Date.UTC(2099, 11, 30);

// What systems put into archives for themselves.
const SYSTEMS_OWN = /(^|\/)(__MACOSX\/|\.DS_Store$|Thumbs\.db$|desktop\.ini$)/i;

export class RefusedArchive extends Error {}

// The bytes of an archive of all entries of a volume.
export function archiveOf(entries) {
  const archive = {};
  for (const { path, bytes, modified, folder } of entries) {
    const name = path.slice(1);
    if (folder) archive[name + "/"] = new Uint8Array();
    else archive[name] = [writeFile(name, bytes), { mtime: Math.min(Math.max(modified ?? Date.now(), FIRST_TIME), LAST_TIME) }];
  }
  return zipSync(archive, { level: 6 });
}

export function isArchive(name) {
  return /\.zip$/i.test(name);
}

// What an archive's names and sizes allow: true for an entry that is to be unpacked. Throws for one that must not be.
function admit({ name, originalSize }, total) {
  if (isHostile(name)) throw new RefusedArchive(`it holds a file with the name "${name.replace(/[^ -~]/g, "?").slice(0, 80)}"`);
  if (name.endsWith("/") || SYSTEMS_OWN.test(name)) return false;
  total.size += originalSize;
  if (originalSize > LARGEST_FILE || total.size > LARGEST_VOLUME) throw new RefusedArchive("what it holds is too large");
  return true;
}

// The files of an archive as [{path, bytes, modified, name, lost}]. Throws RefusedArchive, whose message says why none of them
// can be taken.
export function filesOfArchive(archive, now) {
  const total = { size: 0 };
  let unpacked;
  try {
    // Everything is looked at before anything is unpacked.
    const admitted = new Set();
    unzipSync(archive, { filter: (entry) => admit(entry, total) && admitted.add(entry.name) && false });
    unpacked = unzipSync(archive, { filter: ({ name }) => admitted.has(name) });
  } catch (error) {
    throw error instanceof RefusedArchive ? error : new RefusedArchive("it is damaged, or no zip archive");
  }
  const paths = new Map();
  return Object.entries(unpacked).map(([name, packed]) => {
    const path = pathOnVolume(name);
    if (path === null) throw new RefusedArchive(`"${name.slice(0, 80)}" is no name that can be written in BASIC`);
    const other = paths.get(sameKey(path));
    if (other !== undefined) throw new RefusedArchive(`"${other}" and "${name}" are the same name on the volume`);
    paths.set(sameKey(path), name);
    const { bytes, lost, fault } = readFile(name, packed);
    if (fault) throw new RefusedArchive(`"${name}": ${fault}`);
    return { path, bytes, modified: now, name, lost };
  });
}

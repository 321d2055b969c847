// Files from elsewhere on their way onto the volume: dropped, chosen, or in an archive. Whatever cannot be taken is told in a
// sentence, and leaves everything as it is.

import { filesOfArchive, isArchive, RefusedArchive } from "./archive.js";
import { ask } from "./dialogs.js";
import { isHostile, nameOf, pathOnVolume, readableSize } from "./names.js";
import { readFile } from "./program_text.js";
import { LARGEST_FILE, LARGEST_VOLUME } from "./volume.js";

function refusal(name, reason) {
  return `"${name}" was not taken: ${reason}. Nothing has changed.`;
}

// Reads the files of a person's choice: {files, sentences}. Sizes are looked at before anything is read.
async function read(chosen, now) {
  const files = [];
  const sentences = [];
  for (const file of chosen) {
    const most = isArchive(file.name) ? LARGEST_VOLUME : LARGEST_FILE;
    if (file.size > most) {
      sentences.push(refusal(file.name, `it has ${readableSize(file.size)}, and a file may have ${readableSize(most)}`));
      continue;
    }
    let bytes;
    try {
      bytes = new Uint8Array(await file.arrayBuffer());
    } catch {
      sentences.push(refusal(file.name, "it cannot be read; a folder can be taken as a zip archive"));
      continue;
    }
    try {
      files.push(...(isArchive(file.name) ? filesOfArchive(bytes, now) : [single(file, bytes)]));
    } catch (error) {
      if (!(error instanceof RefusedArchive)) throw error;
      sentences.push(refusal(file.name, error.message));
    }
  }
  return { files, sentences };
}

function single(file, contents) {
  const path = isHostile(file.name) ? null : pathOnVolume(file.name);
  if (path === null) throw new RefusedArchive("it has no name that can be written in BASIC");
  const { bytes, lost, fault } = readFile(file.name, contents);
  if (fault) throw new RefusedArchive(fault);
  return { path, bytes, modified: file.lastModified, name: file.name, lost };
}

// What is on the volume now, in words.
function summary(files) {
  if (files.length === 0) return [];
  const sentences = [];
  const [{ path }] = files;
  const name = nameOf(path);
  if (files.length > 1) sentences.push(`${files.length} files are on the volume.`);
  else if (/\.BAS$/i.test(name)) sentences.push(`${name} is on the volume: LOAD "${path.slice(1).replace(/\.BAS$/i, "")}" loads it.`);
  else sentences.push(`${name} is on the volume.`);
  for (const file of files) {
    const given = file.name.split(/[\\/]/).pop();
    if (nameOf(file.path) !== given.toUpperCase()) sentences.push(`"${given}" is ${nameOf(file.path)} there.`);
    if (file.lost) sentences.push(`${nameOf(file.path)} holds "${file.lost}", which the machine does not have: it is read as "?".`);
  }
  // What goes beyond a few lines nobody reads.
  return sentences.length > 6 ? [...sentences.slice(0, 6), "..."] : sentences;
}

// Puts files of a person's choice (File objects) onto the volume and into the machine.
export async function takeFiles(chosen, { volume, machine, say }) {
  const { files, sentences } = await read(chosen, Date.now());
  sentences.forEach(say);
  if (files.length === 0) return;
  const obstacle = volume.obstacle(files.map(({ path, bytes }) => ({ path, size: bytes.length })));
  if (obstacle) {
    say(refusal(files.length === 1 ? files[0].name : "What was chosen", obstacle));
    return;
  }
  const replaced = files.filter(({ path }) => volume.get(path)).map(({ path }) => path.slice(1));
  if (replaced.length > 0) {
    const names = replaced.length > 5 ? `${replaced.slice(0, 5).join(", ")} and ${replaced.length - 5} more` : replaced.join(", ");
    if (!(await ask("Replace files?", `On the volume already: ${names}. What they hold now is lost when they are replaced.`,
      "Replace"))) return;
  }
  const changes = volume.put(files.map(({ path, bytes, modified }) => ({ path, bytes, modified })));
  changes.forEach((change) => machine.put(change));
  summary(files).forEach(say);
}

// The volume as the page knows it: all files in memory, and a store that keeps them between visits as far as there is one.

import { foldersAbove, readableSize, sameKey } from "./names.js";

// What the machine's memory has room for beside everything else.
export const LARGEST_FILE = 64 * 1024 * 1024;
export const LARGEST_VOLUME = 256 * 1024 * 1024;

const UNTIL_CLOSED = "what is on the volume is gone when the page is closed. Download what you want to keep.";

export class Volume {
  // say(sentence) tells the person something; changed() is called when there is something else to be seen.
  constructor({ say, changed }) {
    this.say = say;
    this.changed = changed;
    this.entries = new Map(); // key of the path: {path, bytes, modified} or {path, folder: true}
    this.store = null;
    this.reason = null; // why nothing is kept
    this.writing = Promise.resolve();
  }

  // Takes the files that the store has. Gives whether this is the first visit, on which the volume is still empty.
  async open({ store, reason }) {
    this.store = store;
    let used = false;
    try {
      const kept = store ? await store.read() : { entries: [], used: false };
      used = kept.used;
      for (const { key, ...entry } of kept.entries) this.entries.set(key, entry);
    } catch {
      reason = "What was kept in this browser cannot be read";
      this.store = null;
    }
    if (reason || !this.store?.writable) this.keepNothing(reason);
    this.changed();
    return !used;
  }

  // From now on everything stays in memory only.
  keepNothing(reason) {
    this.store = null;
    this.reason = reason;
    this.say(`${reason}: ${UNTIL_CLOSED}`);
    this.changed();
  }

  isKept() {
    return this.store !== null;
  }

  list() {
    return [...this.entries.values()].sort((one, other) => (one.path < other.path ? -1 : 1));
  }

  files() {
    return this.list().filter((entry) => !entry.folder);
  }

  get(path) {
    return this.entries.get(sameKey(path));
  }

  size() {
    return this.files().reduce((size, { bytes }) => size + bytes.length, 0);
  }

  // Why files of these paths and sizes cannot be put onto the volume, or null.
  obstacle(files) {
    let size = this.size();
    for (const { path, size: bytes } of files) {
      const there = this.get(path);
      if (there?.folder) return `there is a folder named ${there.path}`;
      const inTheWay = foldersAbove(path).find((folder) => this.get(folder) && !this.get(folder).folder);
      if (inTheWay) return `${inTheWay} is a file, and not a folder`;
      if (bytes > LARGEST_FILE) return `it has ${readableSize(bytes)}, and a file may have ${readableSize(LARGEST_FILE)}`;
      size += bytes - (there?.bytes.length ?? 0);
    }
    return size > LARGEST_VOLUME ? `the volume has room for ${readableSize(LARGEST_VOLUME)} in all` : null;
  }

  // Takes over what has changed, in the machine's words: {path, bytes, modified}, {path, folder: true} or
  // {path, gone: true}. All changes of one call are kept together. Gives when they are kept.
  apply(changes) {
    const entries = new Map();
    const gone = new Set();
    for (const change of changes) {
      const key = sameKey(change.path);
      if (change.gone) {
        this.entries.delete(key);
        entries.delete(key);
        gone.add(key);
      } else {
        const { path, bytes, modified, folder } = change;
        const entry = folder ? { path, folder } : { path, bytes, modified };
        this.entries.set(key, entry);
        entries.set(key, { key, ...entry });
        gone.delete(key);
      }
    }
    this.changed();
    return this.keep([...entries.values()], [...gone]);
  }

  // Puts files onto the volume, with the folders that they need; gives all changes that are made by that.
  put(files) {
    const changes = [];
    for (const file of files) {
      for (const folder of foldersAbove(file.path)) {
        if (!this.get(folder) && !changes.some(({ path }) => sameKey(path) === sameKey(folder))) {
          changes.push({ path: folder, folder: true });
        }
      }
      // A file that is replaced keeps its spelling, so that the machine knows it again.
      changes.push({ ...file, path: this.get(file.path)?.path ?? file.path });
    }
    this.apply(changes);
    return changes;
  }

  // Forgets everything, then takes these files.
  replaceAll(files) {
    this.entries = new Map(files.map((file) => [sameKey(file.path), file]));
    this.changed();
    return this.keep(files.map((file) => ({ key: sameKey(file.path), ...file })), [], true);
  }

  // Has the store write, one change after the other.
  keep(entries, gone, everything = false) {
    this.writing = this.writing.then(async () => {
      if (!this.store) return;
      try {
        await this.store.write(entries, gone, everything);
      } catch (error) {
        this.keepNothing(error.name === "QuotaExceededError"
          ? "The browser has no more room for the page" : "The browser has stopped keeping files");
      }
    });
    return this.writing;
  }
}

// Where the volume's files are kept between visits: a database of the browser. Where it has none, or may not have one, or has
// one that is full, nothing is kept, and the reason is there to be told.

const FILES = "files";
const SETTINGS = "settings";

// A database that does not answer for so long never will, as some browsers' do in private windows.
const PATIENCE_MS = 5000;

function result(request) {
  return new Promise((resolve, reject) => {
    request.onsuccess = () => resolve(request.result);
    request.onerror = () => reject(request.error);
  });
}

function finished(transaction) {
  return new Promise((resolve, reject) => {
    transaction.oncomplete = () => resolve();
    transaction.onabort = () => reject(transaction.error ?? new DOMException("", "AbortError"));
  });
}

function inTime(promise) {
  return Promise.race([promise, new Promise((_, reject) => {
    setTimeout(() => reject(new DOMException("", "TimeoutError")), PATIENCE_MS);
  })]);
}

// The lock that only one page at a time has, for as long as it is open: true when it is ours now. Browsers without locks give
// it to everybody.
function takeLock(name) {
  if (!navigator.locks) return Promise.resolve(true);
  return new Promise((resolve, reject) => {
    navigator.locks.request(name, { ifAvailable: true }, (lock) => {
      resolve(lock !== null);
      return lock && new Promise(() => {}); // never given back: it ends with the page
    }).catch(reject);
  });
}

function open(name) {
  const request = indexedDB.open(name, 1);
  request.onupgradeneeded = () => {
    request.result.createObjectStore(FILES, { keyPath: "key" });
    request.result.createObjectStore(SETTINGS);
  };
  return result(request);
}

export class Store {
  constructor(database, writable) {
    this.database = database;
    this.writable = writable;
  }

  // All entries, and whether anything was ever kept here.
  async read() {
    const transaction = this.database.transaction([FILES, SETTINGS], "readonly");
    const [entries, used] = await Promise.all([
      result(transaction.objectStore(FILES).getAll()), result(transaction.objectStore(SETTINGS).get("used")),
    ]);
    return { entries, used: used === true };
  }

  // Keeps entries and forgets keys, all of it or nothing. `everything`: forgets what was there before.
  async write(entries, gone, everything = false) {
    const transaction = this.database.transaction([FILES, SETTINGS], "readwrite");
    const done = finished(transaction);
    try {
      const files = transaction.objectStore(FILES);
      if (everything) files.clear();
      for (const key of gone) files.delete(key);
      for (const entry of entries) files.put(entry);
      transaction.objectStore(SETTINGS).put(true, "used");
    } catch (error) {
      done.catch(() => {});
      transaction.abort();
      throw error;
    }
    await done;
  }
}

// The store of this copy of the page: {store, reason}. Without a store the reason says why; with one that must not be
// written, too.
export async function openStore(name) {
  try {
    const database = await inTime(open(name));
    const ours = await takeLock(name);
    // Another page, of a later version, may want to change the database: it goes first.
    database.onversionchange = () => database.close();
    return ours
      ? { store: new Store(database, true) }
      : { store: new Store(database, false), reason: "The volume is open in another tab, and this one works on a copy" };
  } catch {
    return { store: null, reason: "This browser does not let the page keep anything" };
  }
}

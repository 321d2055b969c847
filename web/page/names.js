// Names of files on the volume: what the world calls a file, and what BASIC can write.

// The interpreter keeps so many characters of a name.
const LONGEST_PATH = 127;

// What the file system gives a meaning, or none.
const FORBIDDEN = /[\\/:*?"<>|]/g;

// Names are the same whatever their capitals.
export function sameKey(path) {
  return path.toUpperCase();
}

export function nameOf(path) {
  return path.slice(path.lastIndexOf("/") + 1);
}

export function folderOf(path) {
  return path.slice(0, path.lastIndexOf("/"));
}

// All folders that a path needs, the outermost first.
export function foldersAbove(path) {
  const folders = [];
  for (let folder = folderOf(path); folder !== ""; folder = folderOf(folder)) folders.unshift(folder);
  return folders;
}

// One step of a path as BASIC can write it: letters without their accents, other signs as "_". Upper case, as names on
// volumes of this kind are. An empty text when nothing is left.
function plainName(name) {
  return name.normalize("NFD").replace(/\p{Mn}/gu, "").replace(FORBIDDEN, "_").replace(/[^ -~]/gu, "_")
    .replace(/[. ]+$/, "").trimStart().toUpperCase();
}

// Whether a name from elsewhere tries to lead out of the volume, or is none.
export function isHostile(path) {
  const steps = path.replaceAll("\\", "/").replace(/\/$/, "").split("/");
  return /[\0-\x1f\x7f]/.test(path) || /^[a-z]:/i.test(path) || steps.some((step) => /^\s*$|^\.+\s*$/.test(step));
}

// The path on the volume for a path from elsewhere, which is not hostile; null when it cannot be made.
export function pathOnVolume(path) {
  const steps = path.replaceAll("\\", "/").replace(/\/$/, "").split("/").map(plainName);
  const made = "/" + steps.join("/");
  return steps.some((step) => step === "") || made.length > LONGEST_PATH ? null : made;
}

// A path in the same folder that nothing has yet: NAME.BAS, NAME2.BAS, NAME3.BAS.
export function freePath(path, isTaken) {
  const dot = path.lastIndexOf(".");
  const [stem, extension] = dot > path.lastIndexOf("/") ? [path.slice(0, dot), path.slice(dot)] : [path, ""];
  for (let number = 1; ; ++number) {
    const candidate = number === 1 ? path : stem + number + extension;
    if (!isTaken(candidate)) return candidate;
  }
}

// A size for people.
export function readableSize(bytes) {
  const units = ["bytes", "KiB", "MiB", "GiB", "TiB"];
  let unit = 0;
  while (bytes >= 1024 && unit < units.length - 1) {
    bytes /= 1024;
    ++unit;
  }
  return `${unit === 0 || bytes >= 100 ? Math.round(bytes) : Math.round(bytes * 10) / 10} ${units[unit]}`;
}

// The examples of the manual as what a machine is given: files for its volume, and steps that type and press keys.
// tools/manual.py plays the same examples as tests and tells how they are written.

import fs from "node:fs";
import path from "node:path";

const KEY_NAMES = {
  ESC: "Escape", UP: "ArrowUp", DOWN: "ArrowDown", LEFT: "ArrowLeft", RIGHT: "ArrowRight", HOME: "Home", END: "End",
  INS: "Insert", DEL: "Delete", PGUP: "PageUp", PGDN: "PageDown", BS: "Backspace", ENTER: "Enter",
};

// Steps and options that are about testing: a person looks at the screen, and has a clock that goes.
const PASSED_OVER = new Set(["@pixel", "@rows", "@expect-file", "@time", "@own-start"]);

function unescaped(text) {
  const signs = { r: "\r", n: "\n", t: "\t", 0: "\0", "\\": "\\" };
  return text.replace(/\\(x[0-9A-F]{2}|.)/gi, (_, sign) =>
    (sign.length === 3 ? String.fromCharCode(parseInt(sign.slice(1), 16)) : signs[sign]));
}

// A line of a file as the transcripts write it: it ends with CR LF unless it ends with "\c".
function fileLine(text) {
  const open = text.endsWith("\\c");
  return unescaped(open ? text.slice(0, -2) : text) + (open ? "" : "\r\n");
}

// Keys as a list of names and single characters: "ab{ESC}" is ["a", "b", "Escape"].
export function keysOf(text) {
  return [...text.matchAll(/\{(\w+)\}|[^]/g)].map(([sign, name]) => {
    if (name === undefined) return sign;
    if (!(name in KEY_NAMES)) throw new Error(`no key ${sign}`);
    return KEY_NAMES[name];
  });
}

// The files that an example's options put onto the volume: {NAME: text of codes}.
function filesOf(options) {
  const files = {};
  let name = null;
  for (const option of options) {
    const [word, argument] = option.split(" ");
    if (word === "@file") {
      name = argument;
      files[name] = "";
    } else if (option.startsWith("|") && name !== null) {
      files[name] += fileLine(option.slice(1));
    } else if (word !== "@example" && !PASSED_OVER.has(word)) { // the examples lie on every volume
      throw new Error(`an example's option that the browser knows nothing of: ${option}`);
    }
  }
  return files;
}

// The steps of an example: {line} is typed with Enter, {keys} are pressed, {later} are pressed while the next line's program
// runs.
function stepsOf(lines) {
  const steps = [];
  for (const line of lines) {
    const [word, ...words] = line.split(" ");
    if (word === ">") steps.push({ line: line.slice(2) });
    else if (word === "@keys") steps.push({ keys: keysOf(line.slice("@keys ".length)) });
    else if (word === "@at-poll") steps.push({ later: keysOf(words.slice(1).join(" ")) });
    else if (word === "@") continue;
    else if (word.startsWith("@") && !PASSED_OVER.has(word)) throw new Error(`a step that the browser knows nothing of: ${line}`);
  }
  return steps;
}

// Where the tests' clock stands still, random numbers are known beforehand. Here they are not: the person plays on after RUN.
function upToRun(steps) {
  const run = steps.findIndex(({ line }) => line === "RUN");
  return run < 0 ? steps : steps.slice(0, run + 1);
}

// The example in a fenced block, with the options of the comment in front of it.
export function readExample(options, lines) {
  const steps = stepsOf(lines);
  const clockStands = options.some((option) => option.startsWith("@time "));
  return { files: filesOf(options), steps: clockStands ? upToRun(steps) : steps };
}

// The steps that run a program of examples/.
export function runProgram(name) {
  return { files: {}, steps: [{ line: `LOAD "${name.replace(/\.bas$/, "").toUpperCase()}"` }, { line: "RUN" }] };
}

// The programs of examples/ by their names on the volume.
export function examplePrograms(root) {
  const folder = path.join(root, "examples");
  const names = fs.readdirSync(folder).filter((name) => name.endsWith(".bas")).sort();
  return Object.fromEntries(names.map((name) => [name.toUpperCase(), fs.readFileSync(path.join(folder, name), "utf8")]));
}

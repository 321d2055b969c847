// The machine in a worker of its own: runs korvane.wasm, draws its screen, and talks with the page by messages.
//
// The page makes it with `new Worker("machine/worker.js", {type: "module"})`, sends "start" first, and ends it with
// terminate(): there is no message for a reset, a new worker is one. All paths are those of the volume, with slashes, and
// begin with one: "/NAME.BAS", "/GAMES/NIM.BAS". Times are milliseconds since 1970, as Date.now() gives them.
//
// From the page:
//
//   {type: "start", module, width, height, image, files, canvas}
//       `module` is a WebAssembly.Module, or the URL of korvane.wasm (relative to this file). `width` and `height` are
//       pixels, 640x480 at least; the nearest screen that fits inside is taken, and "resized" tells which. `image` is the
//       ArrayBuffer of korvane.efi, which CREATEEFI packs; without it CREATEEFI fails as on a PC whose image cannot be
//       read. `files` are [{path, bytes: Uint8Array, modified}, {path, folder: true}...], folders before what they hold.
//       `canvas` is an OffscreenCanvas (transferred), or null where nothing is to be drawn.
//   {type: "key", scan, character}
//       a key as UEFI firmware has it: `scan` is the scan code (1 up, 2 down, 3 right, 4 left, 5 Home, 6 End, 7 Insert,
//       8 Delete, 9 Page Up, 10 Page Down, 11 to 20 F1 to F10, 23 Escape), 0 for a character; `character` the UTF-16
//       unit (13 Enter, 8 Backspace, 9 Tab, 1 to 26 control letters), 0 with a scan code.
//   {type: "text", text}
//       text to be typed, a paste for instance. Line ends become Enter; it is handed out a line at a time, each when the
//       machine waits for a key. Characters outside code page 437 are left out, and "unknown" tells them. A key typed
//       meanwhile comes before what is left of the text; Escape drops it.
//   {type: "put", path, bytes, modified}     puts a file on the volume, in the place of one of that name
//   {type: "put", path, folder: true}        makes a folder
//   {type: "remove", path}                   removes a file, or a folder with all it holds
//   {type: "picture"}                        asks for the screen as a PNG
//   {type: "text-of-screen"}                 asks for "rows" now, changed or not
//   {type: "visible", visible}               false while nobody can see the screen: nothing is drawn then
//
// To the page:
//
//   {type: "resized", width, height}         the screen's size in pixels: once before "ready", then when it changes
//   {type: "ready"}                          the first prompt is there
//   {type: "rows", rows, columns, cursor}    the text on the screen: `rows` are all its rows in Unicode, blanks at their ends
//                                            left out; `cursor` is {row, column}, from 0. Ten times a second at most, but
//                                            for the first prompt, and only when something has changed
//   {type: "waiting", waiting}               true: it waits for a key; false: a program (or command) runs. Told on changes
//   {type: "volume", changes}                what has changed on the volume: [{path, bytes, modified}, {path, folder: true,
//                                            modified}, {path, gone: true}], in the order in which it is to be done again;
//                                            told after a file is closed or flushed, a folder made, something removed or
//                                            renamed (which is "gone" and the new one). Not told for what the page put.
//   {type: "picture", blob}                  the answer to "picture"
//   {type: "unknown", characters}            characters of a "text" that the machine does not have, each once
//   {type: "rejected", path}                 a file of "start" or "put" that a FAT volume cannot hold under this name
//   {type: "refused", reason}                the machine cannot start; `reason` is "jspi" where the browser lacks
//                                            what it needs (waiting in WebAssembly)
//   {type: "ended", status}                  the interpreter has returned to its firmware; status 0 is success
//   {type: "failed", message}                something broke; what is on the screen stays. The worker is of no more use
//
// While a program runs without asking for keys, messages are looked at every 8 to 25 ms or so; nothing in a program can keep
// Escape from coming through. While the machine waits, the worker sleeps.

import {Machine, whatIsMissing} from "./machine.js";
import {Pace} from "./pace.js";

// Pictures are drawn, and the text is told, no more often than this, in milliseconds.
const pictureInterval = 1000 / 60;
const textInterval = 100;

const enter = 13;
const escape = 23;

let machine = null;
let canvas = null;
let context = null;
let visible = true;
let ready = false;
let waiting = false;
let size = "";
let changes = [];      // of the volume, not told yet
let heldText = [];     // characters of pasted text that are to be typed when the machine waits
const pace = new Pace();
let lastText = 0;
let textIsOld = false;
let later = null;      // the timer of an update that would have come too soon

const tell = (message, transferred = []) => postMessage(message, transferred);

// ---- The screen ----

function draw(picture) {
    const image = new ImageData(picture.pixels, picture.width, picture.height);
    context.putImageData(image, 0, 0, picture.left, picture.top, picture.columns, picture.rows);
}

function tellSize(picture) {
    const now = `${picture.width}x${picture.height}`;
    if (now === size) return;
    size = now;
    if (canvas !== null) {
        canvas.width = picture.width;
        canvas.height = picture.height;
    }
    tell({type: "resized", width: picture.width, height: picture.height});
}

// Shows what has changed, as far as it is time; what is not is shown soon.
function update(now = performance.now()) {
    clearTimeout(later);
    later = null;
    if (!visible) return;
    if (pace.isDue(now)) {
        const picture = machine.updatePicture();
        if (picture === null) return;
        tellSize(picture);
        if (picture.columns !== 0) {
            pace.drawn(now);
            textIsOld = true;
            if (context !== null) draw(picture);
        } else {
            pace.unchanged(now);
        }
        if (textIsOld && now - lastText >= textInterval) tellText(now);
        if (!textIsOld || !waiting) return;
    }
    if (waiting) later = setTimeout(update, textIsOld ? textInterval : pictureInterval);
}

function tellText(now, isAsked = false) {
    const text = machine.updateText(isAsked);
    textIsOld = false;
    if (text === null) return;
    lastText = now;
    tell({type: "rows", ...text});
}

// Shows everything that has changed, whether it is time or not; null before there is a screen.
function showNow() {
    const picture = machine.updatePicture();
    if (picture === null) return null;
    tellSize(picture);
    if (picture.columns !== 0 && context !== null) draw(picture);
    textIsOld ||= picture.columns !== 0;
    return picture;
}

async function tellPicture() {
    const picture = showNow();
    if (picture === null) return;
    const copy = new OffscreenCanvas(picture.width, picture.height);
    copy.getContext("2d").putImageData(new ImageData(picture.pixels, picture.width, picture.height), 0, 0);
    tell({type: "picture", blob: await copy.convertToBlob({type: "image/png"})});
}

// ---- Keys ----

// The machine's keyboard gives the codes of its own characters. Null for one that it does not have.
const codeOf = (character) => (character < 32 || character === 0x7F ? character : machine.codeOf(character));

function press(scan, character) {
    const code = scan === 0 ? codeOf(character) : 0;
    if (code === null) return tell({type: "unknown", characters: String.fromCharCode(character)});
    if (scan === escape) heldText = [];
    machine.press(scan, code);
}

function holdText(text) {
    const unknown = new Set();
    for (const character of text.replace(/\r\n?|\n/g, "\r")) {
        const code = codeOf(character.codePointAt(0));
        if (code === null || (code < 32 && code !== enter && code !== 9)) unknown.add(character);
        else heldText.push(code);
    }
    if (unknown.size !== 0) tell({type: "unknown", characters: [...unknown].join("")});
    if (waiting) typeHeldLine();
}

function typeHeldLine() {
    const end = heldText.indexOf(enter);
    for (const code of heldText.splice(0, end < 0 ? heldText.length : end + 1)) machine.press(0, code);
}

// ---- The machine ----

function tellChanges() {
    if (changes.length === 0) return;
    tell({type: "volume", changes});
    changes = [];
}

const told = {
    turn() {
        tellChanges();
        update();
        return !visible || pace.isQuiet;
    },
    waits(isWaiting) {
        if (isWaiting && heldText.length !== 0) return typeHeldLine();
        if (waiting === isWaiting) return;
        waiting = isWaiting;
        pace.wake();
        if (isWaiting && !ready) {
            ready = true;
            pace.hurry();
            lastText = -textInterval;
            update();
            tell({type: "ready"});
        }
        tell({type: "waiting", waiting});
        update();
    },
    changed(change) {
        changes.push(change);
    },
    fail(message) {
        tell({type: "failed", message});
    },
};

function put({path, bytes, modified, folder}) {
    const isThere = folder ? machine.putFolder(path) : machine.putFile(path, bytes, modified);
    if (!isThere) tell({type: "rejected", path});
}

// What WebAssembly says when the machine breaks its rules, as a person can read it.
function explain(error) {
    return error instanceof WebAssembly.RuntimeError ? `Machine fault: ${error.message}` : error.message;
}

async function start(message) {
    const missing = whatIsMissing();
    if (missing !== null) return tell({type: "refused", reason: missing});
    try {
        const module = message.module instanceof WebAssembly.Module
            ? message.module
            : await WebAssembly.compileStreaming(fetch(new URL(message.module, import.meta.url)));
        machine = new Machine(module, told);
        canvas = message.canvas ?? null;
        context = canvas?.getContext("2d", {alpha: false}) ?? null;
        if (message.image) machine.lendImage(new Uint8Array(message.image));
        for (const file of message.files ?? []) put(file);
        const status = await machine.run(message.width, message.height);
        waiting = true;  // nothing will change any more: what is left to show is shown soon
        pace.wake();
        told.turn();
        tell({type: "ended", status});
    } catch (error) {
        if (machine !== null) tellChanges();
        tell({type: "failed", message: explain(error)});
    }
}

const handlers = {
    start,
    key: ({scan, character}) => press(scan, character),
    text: ({text}) => holdText(text),
    put,
    remove: ({path}) => machine.remove(path),
    picture: tellPicture,
    "text-of-screen"() {
        if (showNow() !== null) tellText(performance.now(), true);
    },
    visible(message) {
        visible = message.visible;
        pace.wake();
        if (visible) update();
    },
};

// Nothing but "start" has a meaning before the machine is there.
onmessage = ({data}) => {
    if (data.type === "start" || machine !== null) handlers[data.type]?.(data);
};

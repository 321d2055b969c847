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
//                                            left out; `cursor` is {row, column}, from 0. Ten times a second at most, and
//                                            only when something has changed
//   {type: "waiting", waiting}               true: it waits for a key; false: a program (or command) runs. Told on changes
//   {type: "volume", changes}                what has changed on the volume: [{path, bytes, modified}, {path, folder: true,
//                                            modified}, {path, gone: true}], in the order in which it is to be done again;
//                                            told after a file is closed or flushed, a folder made, something removed or
//                                            renamed (which is "gone" and the new one). Not told for what the page put.
//   {type: "picture", blob}                  the answer to "picture"
//   {type: "unknown", characters}            characters of a "text" that the machine does not have, each once
//   {type: "refused", reason}                the machine cannot start; `reason` is "memory64" or "jspi" where the browser
//                                            lacks what it needs (64-bit memory, or waiting in WebAssembly)
//   {type: "ended", status}                  the interpreter has returned to its firmware (SYSTEM); status 0 is success
//   {type: "failed", message}                something broke; what is on the screen stays. The worker is of no more use
//
// While a program runs without asking for keys, messages are looked at every 8 ms or so; nothing in a program can keep
// Escape from coming through. While the machine waits, the worker sleeps.

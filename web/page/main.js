// The machine's own page.

import { Console } from "./console.js";
import { ask, download, Notices } from "./dialogs.js";
import { FilesPanel } from "./files_panel.js";
import { takeFiles } from "./intake.js";
import { exampleFiles, prepareMachine } from "./machine.js";
import { keepSite } from "./offline.js";
import { preference, setPreference } from "./preferences.js";
import { openShareDialog, programOfAddress } from "./sharing.js";
import { openStore } from "./store.js";
import { makeTouchBar } from "./touch_bar.js";
import { Volume } from "./volume.js";

const byId = (id) => document.getElementById(id);

const notices = new Notices(byId("notices"));
const say = (sentence) => notices.say(sentence);
const stage = new Console(byId("screen"), say);
const { machine, keyboard, screen } = stage;
const volume = new Volume({ say, changed: () => panel.update() });
const intake = { volume, machine, say };
const panel = new FilesPanel(byId("files-panel"), { volume, take: (files) => takeFiles(files, intake), erase });

// Two copies of the page in different folders of a server have a volume each.
const STORE = `korvane ${new URL("..", import.meta.url).pathname}`;

function chosenSize() {
  const size = preference("size").split("x").map(Number);
  return size.length === 2 && size.every((pixels) => pixels > 0) ? size : undefined;
}

function start() {
  keyboard.focus();
  return stage.start(volume.list(), chosenSize());
}

// ---- What would lose something asks first ------------------------------------------------------------------------

async function reset() {
  if (await ask("Reset the machine?", "The program in memory is lost. The files on the volume stay.", "Reset")) start();
}

async function erase() {
  const sure = await ask("Erase the volume?",
    "All files on the volume are deleted, and so is the program in memory. The machine starts anew, with nothing but the examples.",
    "Erase");
  if (!sure) return;
  machine.stop();
  await volume.replaceAll([]);
  await placeExamples();
  start();
}

async function changeSize(select) {
  const sure = await ask("Start anew?", "The machine starts with a screen of that size. The program in memory is lost; SCREEN " +
    "changes the size without that.", "Start anew");
  if (sure) setPreference("size", select.value);
  else select.value = preference("size");
  if (sure) start();
}

async function placeExamples() {
  try {
    volume.put(await exampleFiles());
  } catch {
    say("The examples could not be fetched.");
  }
}

// ---- Programs that come with a link ------------------------------------------------------------------------------

// Loads and lists the program of a link. It lies on the machine's volume until the machine is started anew, and is not kept.
function openProgram(program) {
  const name = program.path.slice(1);
  machine.put(program);
  machine.type(`LOAD "${name}"\nLIST\n`);
  byId("offer").querySelector("p").textContent =
    `${name} came with the link. It is listed and has not been run; SAVE keeps it on the volume.`;
  byId("offer").hidden = false;
}

function closeOffer() {
  byId("offer").hidden = true;
  keyboard.focus();
}

byId("run-link").addEventListener("click", () => {
  keyboard.press("Escape"); // the listing may wait for a key
  machine.type("RUN\n");
  closeOffer();
});
byId("leave-link").addEventListener("click", closeOffer);

addEventListener("hashchange", async () => {
  const program = await programOfAddress(intake);
  if (!program) return;
  const sure = await ask("Open the link's program?", "The program in memory is lost when it is loaded.", "Open");
  if (!sure) return;
  keyboard.press("Escape");
  openProgram(program);
});

// ---- Buttons -----------------------------------------------------------------------------------------------------

const ACTIONS = {
  reset,
  share: () => openShareDialog(intake),
  copy: () => copyText(),
  paste: () => pasteText(),
  picture: async () => download("korvane.png", await machine.picture()),
  "as-text": () => toggle("as-text", "aria-pressed", (pressed) => screen.showAsText(pressed)),
  "files-button": () => toggle("files-button", "aria-expanded", (open) => {
    byId("files-panel").hidden = !open;
    panel.update();
  }),
  "full-screen": () => (document.fullscreenElement ? document.exitFullscreen() : fullScreen()),
};

function toggle(id, attribute, show) {
  const on = byId(id).getAttribute(attribute) !== "true";
  byId(id).setAttribute(attribute, String(on));
  show(on);
}

async function copyText() {
  try {
    await navigator.clipboard.writeText(screen.copyOfText());
    say("The text on the screen is copied.");
  } catch {
    say("The browser does not let the page copy: select the text on the screen, and copy it with Ctrl-C.");
  }
  keyboard.focus();
}

async function pasteText() {
  try {
    keyboard.pasteText(await navigator.clipboard.readText());
  } catch {
    say("The browser does not let the page read what was copied: click on the screen, and paste with Ctrl-V.");
  }
  keyboard.focus();
}

async function fullScreen() {
  try {
    await document.documentElement.requestFullscreen();
    // Escape belongs to the machine where the browser can be asked for that; held down it still leaves the full screen.
    await navigator.keyboard?.lock?.(["Escape"]);
  } catch {
    say("The browser does not show the page on the full screen.");
  }
  keyboard.focus();
}

for (const [id, action] of Object.entries(ACTIONS)) byId(id).addEventListener("click", action);
byId("full-screen").hidden = !document.fullscreenEnabled;
byId("size").value = preference("size");
byId("size").addEventListener("change", (event) => changeSize(event.target));
document.addEventListener("fullscreenchange", () =>
  document.documentElement.classList.toggle("full", document.fullscreenElement !== null));
makeTouchBar(byId("keys"), keyboard);

// ---- Files that are dropped, keys that nothing else has ---------------------------------------------------------

addEventListener("dragover", (event) => event.preventDefault());
addEventListener("drop", (event) => {
  event.preventDefault();
  if (event.dataTransfer.files.length > 0) takeFiles([...event.dataTransfer.files], intake);
  else keyboard.pasteText(event.dataTransfer.getData("text/plain"));
});
document.addEventListener("keydown", (event) => {
  if (event.target !== document.body) return;
  keyboard.focus();
  keyboard.keyDown(event);
});

// ---- Beginning ---------------------------------------------------------------------------------------------------

machine.on("volume", ({ changes }) => volume.apply(changes));
machine.on("rejected", ({ path }) => {
  say(`The machine's volume cannot hold ${path.slice(1)} under this name.`);
  volume.apply([{ path, gone: true }]);
});

async function begin() {
  prepareMachine();
  if (await volume.open(await openStore(STORE))) await placeExamples();
  const program = await programOfAddress(intake);
  if (program) machine.addEventListener("ready", () => openProgram(program), { once: true });
  await start();
  keepSite();
}

begin();

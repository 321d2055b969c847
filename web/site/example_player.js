// The "Run" buttons: a machine beside the text that starts anew for each example, with the example's files on its volume, and
// is typed into what the example shows.

import { Console } from "../page/console.js";
import { exampleFiles, loadParts } from "../page/machine.js";
import { makeTouchBar } from "../page/touch_bar.js";

// The next step follows when the machine has waited for so long, or when nothing has changed on the screen for so long: a
// program that asks for keys by INKEY$ never waits. A program is left alone for a while before a key that stops it.
const WAITING_MS = 300;
const QUIET_MS = 1500;
const BEFORE_LATER_KEYS_MS = 1000;

const wait = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

function bytesOf(codes) {
  return Uint8Array.from(codes, (character) => character.charCodeAt(0));
}

function button(label, action) {
  const made = Object.assign(document.createElement("button"), { type: "button", textContent: label });
  made.addEventListener("click", action);
  return made;
}

class Player {
  constructor() {
    this.run = 0; // counts the examples: what belongs to an earlier one stops
    this.panel = document.createElement("aside");
    this.panel.id = "player";
    this.panel.setAttribute("aria-label", "The machine");
    this.message = document.createElement("p");
    this.message.setAttribute("role", "status");
    const bar = document.createElement("div");
    bar.className = "bar";
    bar.append(this.message, button("Again", () => this.play(this.example)), button("Close", () => this.close()));
    const place = document.createElement("div");
    place.className = "place";
    const keys = document.createElement("div");
    keys.className = "keys";
    keys.setAttribute("role", "group");
    keys.setAttribute("aria-label", "Keys");
    this.panel.append(bar, place, keys);
    document.body.append(this.panel);
    this.console = new Console(place, (sentence) => (this.message.textContent = sentence));
    this.console.machine.on("rows", () => (this.changed = performance.now()));
    makeTouchBar(keys, this.console.keyboard);
  }

  close() {
    ++this.run;
    this.console.machine.stop();
    this.panel.hidden = true;
    document.body.classList.remove("with-player");
    this.opener?.focus();
  }

  async play(example) {
    const run = ++this.run;
    this.example = example;
    this.panel.hidden = false;
    document.body.classList.add("with-player");
    this.message.textContent = "A machine of its own: what it keeps is gone with the page.";
    const files = Object.entries(example.files)
      .map(([name, codes]) => ({ path: "/" + name, bytes: bytesOf(codes), modified: Date.now() }));
    const { machine, keyboard } = this.console;
    loadParts().catch(() => {}); // on its way with the examples; the start tells what goes wrong
    const ready = new Promise((resolve) => machine.addEventListener("ready", resolve, { once: true }));
    // An example's own files take the place of programs of the same name.
    const others = (await exampleFiles()).filter(({ path }) => !files.some((file) => file.path === path));
    if (run !== this.run) return;
    this.console.start([...others, ...files]);
    keyboard.focus();
    await ready;
    let later = null;
    for (const step of example.steps) {
      if (run !== this.run) return;
      if (step.later) {
        later = step.later;
      } else if (step.keys) {
        step.keys.forEach((key) => this.press(key));
        await this.settled();
      } else {
        machine.type(step.line + "\n");
        if (later) await wait(BEFORE_LATER_KEYS_MS);
        if (run === this.run) later?.forEach((key) => this.press(key));
        later = null;
        await this.settled();
      }
    }
  }

  press(key) {
    const { keyboard } = this.console;
    if (key.length > 1) keyboard.press(key);
    else keyboard.stroke({ scan: 0, character: key.charCodeAt(0) });
  }

  // Waits until the machine has done what it was told.
  async settled() {
    let waiting = 0;
    this.changed = performance.now();
    while (waiting < WAITING_MS && performance.now() - this.changed < QUIET_MS) {
      await wait(50);
      waiting = this.console.machine.waiting ? waiting + 50 : 0;
    }
  }
}

// Connects all "Run" buttons of the page.
export function playExamples() {
  let player = null;
  document.addEventListener("click", (event) => {
    const run = event.target.closest("button.run");
    if (!run) return;
    player ??= new Player();
    player.opener = run;
    player.play(JSON.parse(run.dataset.example));
  });
}

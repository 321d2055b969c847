// A machine with its screen and keyboard, in one place of a page: what the machine's own page and the manual's examples have
// in common.

import { Keyboard } from "./keyboard.js";
import { strokeOf } from "./keys.js";
import { Machine } from "./machine.js";
import { Screen } from "./screen.js";

// Sizes of the screen, and how they are chosen when nobody chooses: the largest that fits into the room without being
// reduced. Beyond the last one letters get small, and larger pixels are better than more.
const FITTING = [[1024, 768], [800, 600], [640, 480]];

export function fittingSize({ width, height }) {
  return FITTING.find(([wide, high]) => wide <= width && high <= height) ?? FITTING.at(-1);
}

export class Console {
  // `place` is the element for the screen; say(sentence) tells the person something.
  constructor(place, say) {
    this.place = place;
    this.screen = new Screen(place);
    this.machine = new Machine();
    this.keyboard = new Keyboard({
      stroke: (stroke) => this.machine.key(stroke), paste: (text) => this.machine.type(text), say,
    });
    this.screen.frame.append(this.keyboard.field);
    this.machine.on("rows", ({ rows }) => this.screen.show(rows))
      .on("resized", ({ width, height }) => this.screen.resized(width, height))
      .on("unknown", ({ characters }) => say(`Left out, because the machine does not have it: ${characters}`))
      .on("ended", () => say("The machine has ended. Reset starts it again."))
      .on("failed", ({ message }) => say(`The machine has stopped: ${message} Reset starts it again; the volume is as it was.`));
    // A machine may start in a tab that nobody sees.
    this.machine.on("ready", () => this.machine.visible(!document.hidden));
    this.machine.on("refused", ({ reason }) => this.refuse(reason));
    this.listen();
  }

  listen() {
    // A click goes on to the keyboard, unless it was made to select text.
    for (const event of ["mouseup", "touchend"]) {
      this.screen.text.addEventListener(event, () => {
        if (document.getSelection().isCollapsed) setTimeout(() => this.keyboard.focus());
      });
    }
    // Whoever has selected text goes on typing at once; what moves through the text stays with it.
    this.screen.text.addEventListener("keydown", (event) => {
      const stroke = strokeOf(event);
      if (!stroke || (stroke.scan !== 0 && event.key !== "Escape")) return;
      this.keyboard.focus();
      this.keyboard.keyDown(event);
    });
    document.addEventListener("visibilitychange", () => this.machine.visible(!document.hidden));
  }

  refuse(reason) {
    this.screen.frame.hidden = true;
    this.place.append(Object.assign(document.createElement("p"), { className: "refused", textContent: reason }));
  }

  // Starts the machine with these files on its volume, on a screen of this size, or of one that fits.
  start(files, size) {
    this.screen.frame.hidden = false;
    this.place.querySelector(".refused")?.remove();
    const [width, height] = size ?? fittingSize({ width: this.place.clientWidth, height: this.place.clientHeight });
    return this.machine.start({ canvas: this.screen.newCanvas(width, height), width, height, files });
  }
}

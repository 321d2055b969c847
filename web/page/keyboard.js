// The keyboard: a field that nobody sees takes what is typed and pasted, also by the keyboards of touch screens.

import { isBreak, strokeOf, strokeOfName, strokesOfText } from "./keys.js";

// What always stands in the field, so that a touch keyboard's Backspace has something to take away.
const FILLING = "  ";

// What a paste may bring at most, in characters: more than any program that fits into memory by hand.
export const LONGEST_PASTE = 4 * 1024 * 1024;

function commonLength(one, other) {
  let length = 0;
  while (length < one.length && length < other.length && one[length] === other[length]) ++length;
  return length;
}

export class Keyboard {
  // stroke(stroke) is called for every key, paste(text) for pasted text; say(sentence) tells the person something.
  constructor({ stroke, paste, say }) {
    this.stroke = stroke;
    this.paste = paste;
    this.say = say;
    this.typed = ""; // what the field held beside its filling, and has been told
    this.waitsForComposition = false;
    this.lastKey = "";
    this.field = document.createElement("textarea");
    Object.assign(this.field, {
      className: "keyboard", value: FILLING, autocomplete: "off", autocapitalize: "none", spellcheck: false,
    });
    for (const [name, value] of Object.entries({
      "aria-label": "Keyboard of the machine. Tab leaves it.", autocorrect: "off", enterkeyhint: "enter", inputmode: "text",
    })) this.field.setAttribute(name, value);
    this.field.addEventListener("keydown", (event) => this.keyDown(event));
    this.field.addEventListener("compositionstart", () => this.beginComposition());
    this.field.addEventListener("compositionend", () => this.endComposition());
    this.field.addEventListener("input", (event) => this.input(event));
    this.field.addEventListener("paste", (event) => this.pasted(event));
  }

  focus() {
    this.field.focus({ preventScroll: true });
  }

  press(name) {
    this.stroke(strokeOfName(name));
  }

  keyDown(event) {
    this.lastKey = event.key;
    if (isBreak(event, !document.getSelection().isCollapsed)) {
      event.preventDefault();
      this.press("Escape");
      return;
    }
    const stroke = strokeOf(event);
    if (!stroke) return;
    event.preventDefault();
    this.stroke(stroke);
  }

  // Dead keys and input methods show steps on the way to a character, which are not meant for the machine. The keyboards of
  // touch screens compose whole words, of which each letter is meant to appear at once.
  beginComposition() {
    this.waitsForComposition = this.lastKey !== "Unidentified" && this.lastKey !== "";
  }

  endComposition() {
    this.waitsForComposition = false;
    this.tell();
    this.clear();
  }

  input(event) {
    if (this.waitsForComposition) return;
    this.tell();
    if (!event.isComposing) this.clear();
  }

  // Tells what has changed in the field since the last time.
  tell() {
    const value = this.field.value;
    if (!value.startsWith(FILLING)) {
      for (let taken = value.length; taken < FILLING.length + this.typed.length; ++taken) this.press("Backspace");
      this.clear();
      return;
    }
    const text = value.slice(FILLING.length);
    const kept = commonLength(text, this.typed);
    for (let taken = kept; taken < this.typed.length; ++taken) this.press("Backspace");
    strokesOfText(text.slice(kept)).forEach((stroke) => this.stroke(stroke));
    this.typed = text;
  }

  clear() {
    this.field.value = FILLING;
    this.typed = "";
  }

  pasted(event) {
    event.preventDefault();
    this.pasteText(event.clipboardData.getData("text/plain"));
  }

  pasteText(text) {
    if (text.length > LONGEST_PASTE) {
      this.say("That is too much to be pasted: add it to the volume as a file instead.");
    } else if (text !== "") {
      this.paste(text);
    }
  }
}

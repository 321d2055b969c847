// What the browser tells of a key, as the key strokes of the firmware's text input.

const NOTHING = 0;

// Keys that are no characters, by their name in KeyboardEvent.key, with their scan codes.
export const SCAN_CODES = {
  ArrowUp: 1, ArrowDown: 2, ArrowRight: 3, ArrowLeft: 4, Home: 5, End: 6, Insert: 7, Delete: 8, PageUp: 9, PageDown: 10,
  F1: 11, F2: 12, F3: 13, F4: 14, F5: 15, F6: 16, F7: 17, F8: 18, F9: 19, F10: 20, Escape: 23,
};

// Keys that have a name and are characters all the same.
const NAMED_CHARACTERS = { Enter: 13, Backspace: 8 };

// What people need of the browser itself stays with it: reload here, and Tab everywhere, so that the keyboard leads out of
// the screen again.
const BROWSERS_KEYS = new Set(["F5"]);

// The letters that give control characters with Ctrl. The others are the browser's: copying, pasting, cutting, tabs,
// windows, reloading, its address, finding, printing.
const CONTROL_LETTERS = new Set("abdeghijkmoqsuyz");

function isLetterOrDigit(character) {
  return /^[a-z0-9]$/i.test(character);
}

// The strokes of the keys of a text, line ends of all systems being one Enter.
export function strokesOfText(text) {
  return Array.from(text.replace(/\r\n?|\n/g, "\r"), (character) => ({ scan: NOTHING, character: character.codePointAt(0) }));
}

// The stroke of a named key ("Escape", "ArrowUp", "Enter"), or null.
export function strokeOfName(name) {
  if (name in SCAN_CODES) return { scan: SCAN_CODES[name], character: NOTHING };
  if (name in NAMED_CHARACTERS) return { scan: NOTHING, character: NAMED_CHARACTERS[name] };
  return null;
}

// Whether a key stops the program: Escape, and Ctrl-C where nothing is there to be copied.
export function isBreak(event, somethingSelected) {
  return event.ctrlKey && !event.altKey && !event.metaKey && event.key.toLowerCase() === "c" && !somethingSelected;
}

// The stroke of a keydown event, or null when the key is not for the machine: the browser's own, a dead key, a step of an
// input method.
export function strokeOf(event) {
  if (event.isComposing || event.metaKey) return null;
  const withAltGraph = event.getModifierState("AltGraph") || (event.ctrlKey && event.altKey);
  if (event.ctrlKey && !withAltGraph) {
    const letter = event.key.toLowerCase();
    return CONTROL_LETTERS.has(letter) ? { scan: NOTHING, character: letter.charCodeAt(0) & 31 } : null;
  }
  if (BROWSERS_KEYS.has(event.key) || (event.key === "Insert" && event.shiftKey)) return null;
  const named = strokeOfName(event.key);
  if (named) return event.altKey && !withAltGraph ? null : named;
  if (Array.from(event.key).length !== 1) return null;
  // Alt writes characters on some keyboards (Option-L is "@") and calls the browser's menus on others.
  if (event.altKey && !withAltGraph && isLetterOrDigit(event.key)) return null;
  return strokesOfText(event.key)[0];
}

// The keys that the keyboards of touch screens lack.

const KEYS = [
  ["Escape", "Esc", "Esc: stop the program"], ["ArrowLeft", "←", "Left"], ["ArrowUp", "↑", "Up"], ["ArrowDown", "↓", "Down"],
  ["ArrowRight", "→", "Right"], ["Insert", "Ins", "Ins: insert"], ["Delete", "Del", "Del: delete"], ["Home", "Home", "Home"],
  ["End", "End", "End"],
];

const REPEATS_AFTER_MS = 400;
const REPEATS_EVERY_MS = 60;

// Fills `bar` with buttons that press keys, again and again while they are held.
export function makeTouchBar(bar, keyboard) {
  for (const [name, label, meaning] of KEYS) {
    const button = document.createElement("button");
    button.type = "button";
    button.textContent = label;
    button.setAttribute("aria-label", meaning);
    let timer = 0;
    const repeat = () => {
      keyboard.press(name);
      timer = setTimeout(repeat, REPEATS_EVERY_MS);
    };
    const release = () => clearTimeout(timer);
    button.addEventListener("pointerdown", (event) => {
      event.preventDefault(); // the keyboard on the screen stays where it is
      keyboard.press(name);
      timer = setTimeout(repeat, REPEATS_AFTER_MS);
    });
    for (const end of ["pointerup", "pointercancel", "pointerleave"]) button.addEventListener(end, release);
    // By a key, or by what speaks for a person: there was no pointer then.
    button.addEventListener("click", (event) => event.detail === 0 && keyboard.press(name));
    button.addEventListener("contextmenu", (event) => event.preventDefault());
    bar.append(button);
  }
}

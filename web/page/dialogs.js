// Questions and sentences.

// Makes an element: attributes by name, children as elements or texts.
export function element(name, attributes = {}, ...children) {
  const made = document.createElement(name);
  for (const [attribute, value] of Object.entries(attributes)) made.setAttribute(attribute, value);
  made.append(...children);
  return made;
}

// Opens a dialog with these children and buttons {label, value, default}; gives the value of the button, null when the
// person turns away from it.
export function openDialog(title, children, buttons) {
  const dialog = element("dialog", { "aria-labelledby": "dialog-title" }, element("h2", { id: "dialog-title" }, title), ...children);
  const row = element("form", { method: "dialog", class: "buttons" });
  for (const { label, value, first } of buttons) {
    const button = element("button", { value }, label);
    if (first) button.autofocus = true;
    row.append(button);
  }
  dialog.append(row);
  document.body.append(dialog);
  const before = document.activeElement;
  dialog.showModal();
  return new Promise((resolve) => {
    dialog.addEventListener("close", () => {
      dialog.remove();
      before?.focus({ preventScroll: true });
      resolve(dialog.returnValue === "" ? null : dialog.returnValue);
    });
  });
}

// Asks before something is lost; gives whether it may be.
export async function ask(title, text, yes) {
  const answer = await openDialog(title, [element("p", {}, text)], [
    { label: yes, value: "yes" }, { label: "Cancel", value: "", first: true },
  ]);
  return answer === "yes";
}

// The line that tells the person what has happened. Sentences that come together stand together.
export class Notices {
  constructor(place) {
    this.place = place;
    this.text = element("p", { role: "status" });
    this.close = element("button", { type: "button", "aria-label": "Hide the message" }, "×");
    this.close.addEventListener("click", () => this.clear());
    this.close.hidden = true;
    place.append(this.text, this.close);
    this.last = 0;
  }

  say(sentence) {
    const together = performance.now() - this.last < 1500 && this.text.textContent !== "";
    this.last = performance.now();
    this.text.textContent = together ? `${this.text.textContent} ${sentence}` : sentence;
    this.close.hidden = false;
  }

  clear() {
    this.text.textContent = "";
    this.close.hidden = true;
  }
}

// Gives the person a file.
export function download(name, content, type = "application/octet-stream") {
  const address = URL.createObjectURL(content instanceof Blob ? content : new Blob([content], { type }));
  const link = element("a", { href: address, download: name });
  link.click();
  setTimeout(() => URL.revokeObjectURL(address), 60000);
}

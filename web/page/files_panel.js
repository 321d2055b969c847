// The list of what is on the volume, with what can be done about it.

import { archiveOf } from "./archive.js";
import { download, element } from "./dialogs.js";
import { nameOf, readableSize } from "./names.js";
import { writeFile } from "./program_text.js";

export class FilesPanel {
  // take(files) puts files onto the volume; erase() asks and erases it.
  constructor(panel, { volume, take, erase }) {
    this.panel = panel;
    this.volume = volume;
    this.list = panel.querySelector(".files");
    this.state = panel.querySelector(".state");
    const chooser = panel.querySelector("input[type=file]");
    chooser.addEventListener("change", () => {
      take([...chooser.files]);
      chooser.value = ""; // so that the same file can be chosen again
    });
    panel.querySelector(".add").addEventListener("click", () => chooser.click());
    panel.querySelector(".download-all").addEventListener("click", () =>
      download("korvane-volume.zip", archiveOf(volume.list()), "application/zip"));
    panel.querySelector(".erase").addEventListener("click", erase);
  }

  // Shows what is there now, once for all changes that come together.
  update() {
    if (this.panel.hidden || this.due) return;
    this.due = true;
    requestAnimationFrame(() => {
      this.due = false;
      this.render();
    });
  }

  render() {
    const files = this.volume.files();
    this.list.replaceChildren(...files.map((file) => this.row(file)));
    const sizes = `${files.length} files, ${readableSize(this.volume.size())}.`;
    this.state.textContent = this.volume.isKept()
      ? `${sizes} Kept in this browser, and sent nowhere.` : `${sizes} Kept only until this page is closed.`;
  }

  row({ path, bytes }) {
    const button = element("button", { type: "button", "aria-label": `Download ${path.slice(1)}` }, "Download");
    button.addEventListener("click", () => download(nameOf(path), writeFile(path, bytes)));
    return element("li", {}, element("span", { class: "name" }, path.slice(1)),
      element("span", { class: "size" }, readableSize(bytes.length)), button);
  }
}

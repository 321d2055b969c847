// The machine's screen on the page: the canvas that the machine draws on, as large and as sharp as there is room for, and
// the text on it, which lies over it unseen, to be selected, copied and read aloud.

const CELL_WIDTH = 8;
const CELL_HEIGHT = 16;

// Whole multiples of a pixel look best, as long as they do not waste more room than this.
const LEAST_USED = 0.75;

// How large a picture of this size is shown in this room, both in CSS pixels, on a display with so many of its own pixels in
// each.
export function shownScale(width, height, room, density) {
  const scale = Math.min(room.width / width, room.height / height) * density;
  const whole = Math.floor(scale);
  return (whole >= 1 && whole / scale >= LEAST_USED ? whole : scale) / density;
}

export class Screen {
  // `place` is the element that holds the screen.
  constructor(place) {
    this.place = place;
    this.width = 640;
    this.height = 480;
    this.rows = [];
    this.frame = document.createElement("div");
    this.frame.className = "frame";
    this.text = document.createElement("section");
    this.text.className = "screen-text";
    this.text.tabIndex = 0;
    this.text.setAttribute("aria-label", "Text on the screen");
    this.text.setAttribute("aria-live", "off");
    this.frame.append(this.text);
    this.place.append(this.frame);
    this.canvas = null;
    new ResizeObserver(() => this.fit()).observe(this.place);
    // The density changes with the browser's zoom and when the window goes to another display.
    addEventListener("resize", () => this.fit());
  }

  // A canvas for a machine that starts: one that has been given away cannot be taken back.
  newCanvas(width, height) {
    this.canvas?.remove();
    this.canvas = document.createElement("canvas");
    this.canvas.setAttribute("aria-hidden", "true");
    this.canvas.width = width;
    this.canvas.height = height;
    this.frame.prepend(this.canvas);
    this.show([]);
    this.resized(width, height);
    return this.canvas;
  }

  resized(width, height) {
    this.width = width;
    this.height = height;
    this.fit();
  }

  fit() {
    const room = { width: this.place.clientWidth, height: this.place.clientHeight };
    if (room.width === 0 || room.height === 0) return;
    const scale = shownScale(this.width, this.height, room, devicePixelRatio);
    this.frame.style.width = `${this.width * scale}px`;
    this.frame.style.height = `${this.height * scale}px`;
    this.frame.classList.toggle("reduced", scale * devicePixelRatio < 1);
    this.fitText(scale);
  }

  // Lays the letters over the cells of the screen: their own width is the font's affair.
  fitText(scale) {
    const size = CELL_HEIGHT * scale * 0.8;
    this.text.style.fontSize = `${size}px`;
    this.text.style.lineHeight = `${CELL_HEIGHT * scale}px`;
    const context = (this.measure ??= document.createElement("canvas").getContext("2d"));
    context.font = `${size}px monospace`;
    this.text.style.letterSpacing = `${CELL_WIDTH * scale - context.measureText("M").width}px`;
  }

  // Shows the text of the screen. Rows that are as they were stay untouched, and with them what is selected there.
  show(rows) {
    rows.forEach((row, index) => {
      const text = row.trimEnd();
      if (this.rows[index] === text) return;
      if (!this.text.children[index]) this.text.append(document.createElement("div"));
      this.text.children[index].textContent = text === "" ? "\n" : text;
      this.rows[index] = text;
    });
    while (this.text.children.length > rows.length) this.text.lastElementChild.remove();
    this.rows.length = rows.length;
  }

  // The whole text, without the empty rows at its end.
  copyOfText() {
    return this.rows.join("\n").trimEnd();
  }

  // Shows the text as text, in place of the picture.
  showAsText(asText) {
    this.place.classList.toggle("as-text", asText);
    this.fit();
  }
}

// The machine: a worker that runs the interpreter, and the canvas it draws on. What is here knows the messages between
// page and worker; ../machine/worker.js tells what they mean.

const WORKER = new URL("../machine/worker.js", import.meta.url);
const MODULE = new URL("../korvane.wasm", import.meta.url);
const IMAGE = new URL("../korvane.efi", import.meta.url);
const EXAMPLES = new URL("../examples.json", import.meta.url);

export const NO_MACHINE =
  "This browser cannot run the machine: it needs WebAssembly with stack switching, which Chrome, Edge and other browsers " +
  "of that kind have from version 137 on.";

let parts = null;
let spare = null; // a worker that no machine has yet

async function fetched(url) {
  const response = await fetch(url);
  if (!response.ok) throw new Error(`${url.pathname}: ${response.status}`);
  return response;
}

// Compiled while it comes in, where the server calls the module what it is.
async function compiled(response) {
  const type = response.headers.get("Content-Type") ?? "";
  return type.startsWith("application/wasm") ? WebAssembly.compileStreaming(response) : WebAssembly.compile(await response.arrayBuffer());
}

// What all machines of a page have in common, fetched once: the compiled module, and the image that CREATEEFI packs.
export function loadParts() {
  parts ??= Promise.all([
    fetched(MODULE).then(compiled),
    fetched(IMAGE).then((response) => response.arrayBuffer()),
  ]).catch((error) => {
    parts = null; // the next start tries again
    throw error;
  });
  return parts;
}

// Gets ready what the first machine needs, before it is known what lies on its volume. What goes wrong the start tells.
export function prepareMachine() {
  loadParts().catch(() => {});
  spare = new Worker(WORKER, { type: "module" });
  spare.onerror = () => (spare = null);
}

function takeWorker() {
  const worker = spare ?? new Worker(WORKER, { type: "module" });
  spare = null;
  return worker;
}

// The example programs as files for a volume.
export async function exampleFiles() {
  const examples = await (await fetched(EXAMPLES)).json();
  const encoder = new TextEncoder();
  return Object.entries(examples).map(([name, text]) => ({
    path: "/" + name, bytes: encoder.encode(text), modified: Date.now(),
  }));
}

// The events of a machine are the worker's messages by their type, and "failed" with a `message` for whatever ends it.
export class Machine extends EventTarget {
  constructor() {
    super();
    this.worker = null;
    this.starts = 0;
    this.waiting = false;
    this.pictures = [];
  }

  on(type, listener) {
    this.addEventListener(type, (event) => listener(event.detail));
    return this;
  }

  tell(type, detail) {
    this.dispatchEvent(new CustomEvent(type, { detail }));
  }

  // Starts the machine anew: on a canvas that has never been used, with these files on its volume.
  async start({ canvas, width, height, files }) {
    this.stop();
    const start = ++this.starts;
    let module, image;
    try {
      [module, image] = await loadParts();
    } catch (error) {
      if (start === this.starts) {
        if (error instanceof WebAssembly.CompileError) this.tell("refused", { reason: NO_MACHINE });
        else this.tell("failed", { message: "The machine could not be fetched: is there a connection?" });
      }
      return;
    }
    if (start !== this.starts) return; // started once more in the meantime
    const worker = takeWorker();
    this.worker = worker;
    worker.onmessage = ({ data }) => {
      if (worker === this.worker) this.hear(data);
    };
    worker.onerror = (event) => {
      if (worker === this.worker) this.tell("failed", { message: event.message || "The machine could not be started." });
    };
    const surface = canvas.transferControlToOffscreen();
    worker.postMessage({ type: "start", module, width, height, image: image.slice(0), files, canvas: surface }, [surface]);
  }

  hear(message) {
    if (message.type === "waiting") this.waiting = message.waiting;
    if (message.type === "picture") this.pictures.shift()?.(message.blob);
    if (message.type === "refused") message = { ...message, reason: NO_MACHINE };
    this.tell(message.type, message);
  }

  // Ends the machine, whatever it is doing.
  stop() {
    this.worker?.terminate();
    this.worker = null;
    this.waiting = false;
    this.pictures = [];
  }

  send(message) {
    this.worker?.postMessage(message);
  }

  key({ scan, character }) {
    this.send({ type: "key", scan, character });
  }

  // Types a text; line ends are Enter.
  type(text) {
    this.send({ type: "text", text });
  }

  put({ path, bytes, modified, folder }) {
    this.send(folder ? { type: "put", path, folder } : { type: "put", path, bytes, modified });
  }

  // The picture on the screen, as a PNG.
  picture() {
    return new Promise((resolve) => {
      this.pictures.push(resolve);
      this.send({ type: "picture" });
    });
  }

  visible(visible) {
    this.send({ type: "visible", visible });
  }
}

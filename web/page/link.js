// A link that carries a program: its text, compressed, behind the "#", which browsers send to nobody.

import { programOfText, textOfProgram } from "./program_text.js";

// What a link may unpack to. A program as long as this is no longer sent in a link, and a few bytes can claim to be gigabytes.
export const LARGEST_PROGRAM = 1024 * 1024;

const NAME = "name";
const PROGRAM = "program";

export class BrokenLink extends Error {}

function toBase64Url(bytes) {
  let text = "";
  for (let at = 0; at < bytes.length; at += 0x8000) text += String.fromCharCode(...bytes.subarray(at, at + 0x8000));
  return btoa(text).replaceAll("+", "-").replaceAll("/", "_").replace(/=+$/, "");
}

function fromBase64Url(text) {
  if (!/^[A-Za-z0-9_-]*$/.test(text)) throw new BrokenLink();
  return Uint8Array.from(atob(text.replaceAll("-", "+").replaceAll("_", "/")), (character) => character.charCodeAt(0));
}

// Sends bytes through a stream and gives what comes out, at most so many bytes.
async function through(stream, bytes, most) {
  const parts = [];
  let size = 0;
  const reader = new Blob([bytes]).stream().pipeThrough(stream).getReader();
  for (;;) {
    const { done, value } = await reader.read();
    if (done) break;
    size += value.length;
    if (size > most) {
      reader.cancel().catch(() => {});
      throw new BrokenLink();
    }
    parts.push(value);
  }
  return new Uint8Array(await new Blob(parts).arrayBuffer());
}

// The fragment for a program of the volume, without its "#".
export async function fragmentOf(name, bytes) {
  const text = new TextEncoder().encode(textOfProgram(bytes));
  const packed = await through(new CompressionStream("deflate-raw"), text, Infinity);
  return new URLSearchParams({ [NAME]: name, [PROGRAM]: toBase64Url(packed) }).toString();
}

// The program of a fragment: {name, bytes}; null when the fragment is about something else. Throws BrokenLink.
export async function programOfFragment(fragment) {
  const fields = new URLSearchParams(fragment.replace(/^#/, ""));
  const packed = fields.get(PROGRAM);
  if (packed === null) return null;
  try {
    const unpacked = await through(new DecompressionStream("deflate-raw"), fromBase64Url(packed), LARGEST_PROGRAM);
    const text = new TextDecoder("utf-8", { fatal: true }).decode(unpacked);
    if (text === "") throw new BrokenLink();
    return { name: fields.get(NAME) ?? "", bytes: programOfText(text).bytes };
  } catch {
    throw new BrokenLink();
  }
}

// Program files as people have them, and as the interpreter reads them: its bytes are codes of code page 437, the world's
// files are UTF-8.

const LOW_GRAPHICS = Array.from(" ☺☻♥♦♣♠•◘○◙♂♀♪♫☼►◄↕‼¶§▬↨↑↓→←∟↔▲▼");
const HIGH_HALF = Array.from(
  "ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒáíóúñÑªº¿⌐¬½¼¡«»" +
  "░▒▓│┤╡╢╖╕╣║╗╝╜╛┐└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀" +
  "αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00a0");

const TAB = 9;
const LINE_FEED = 10;
const RETURN = 13;
const CONTROL_Z = 26;
const HOUSE = 127;
const QUESTION_MARK = 63;

function codeToUnicode(code) {
  if (code === TAB || code === LINE_FEED || code === RETURN) return String.fromCharCode(code);
  if (code === 0) return "\0";
  if (code < LOW_GRAPHICS.length) return LOW_GRAPHICS[code];
  if (code === HOUSE) return "⌂";
  return code < 128 ? String.fromCharCode(code) : HIGH_HALF[code - 128];
}

const CHARACTERS = Array.from({ length: 256 }, (_, code) => codeToUnicode(code));
// Code 255 looks like a blank, and so does the blank of texts that must not be broken there; people mean a blank.
const CODES = new Map([...CHARACTERS.map((character, code) => [character, code]), ["\u00a0", 32]]);

// The code that looks like a character, or undefined.
export function codeOf(character) {
  return CODES.get(character);
}

// A program's bytes as text. What marks the end of a file on old systems is left out.
export function textOfProgram(bytes) {
  let end = bytes.length;
  while (end > 0 && bytes[end - 1] === CONTROL_Z) --end;
  return Array.from(bytes.subarray(0, end), (code) => CHARACTERS[code]).join("");
}

// A text as a program's bytes: {bytes, lost}, `lost` being the first character that the code page lacks, which becomes a
// question mark.
export function programOfText(text) {
  const codes = [];
  let lost;
  for (const character of text) {
    const code = codeOf(character);
    if (code === undefined) lost ??= character;
    codes.push(code ?? QUESTION_MARK);
  }
  return { bytes: Uint8Array.from(codes), lost };
}

// Programs begin with a digit or a blank: a zero byte beside it is the other half of the character.
function isUtf16(bytes) {
  if (bytes.length < 2) return false;
  const mark = (bytes[0] << 8) | bytes[1];
  return mark === 0xfffe || mark === 0xfeff || (bytes[0] === 0) !== (bytes[1] === 0);
}

export function hasProgramName(name) {
  return /.\.bas$/i.test(name);
}

// A file of the world as bytes for the volume: {bytes, lost} or {fault}. A program that is UTF-8 throughout is converted;
// any other file is taken as it is.
export function readFile(name, bytes) {
  if (!hasProgramName(name)) return { bytes };
  if (isUtf16(bytes)) return { fault: "it is in UTF-16, which is not understood: save it as UTF-8" };
  try {
    return programOfText(new TextDecoder("utf-8", { fatal: true }).decode(bytes));
  } catch {
    return { bytes }; // no UTF-8: codes already
  }
}

// A file of the volume as bytes for the world.
export function writeFile(name, bytes) {
  return hasProgramName(name) ? new TextEncoder().encode(textOfProgram(bytes)) : bytes;
}

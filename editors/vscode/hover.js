// The text of HELP for the word at a place of a line; knows nothing of the editor.
"use strict";

const texts = require("./words.json");

// Strings, remarks and words, as the interpreter cuts them. What stands in the first two is no word.
const PIECES = /"[^"]*"?|'.*$|\d+\.?\d*(?:[ED][+-]?\d+)?|&[HO][0-9A-F]+|[A-Z][A-Z0-9]*(?:&&|[%!#$&])?/gi;

function hoverAt(line, column) {
  for (const piece of line.matchAll(PIECES)) {
    const name = piece[0].toUpperCase();
    const end = piece.index + name.length;
    if (column >= piece.index && column < end) {
      return Object.hasOwn(texts, name) ? { texts: texts[name], start: piece.index, end } : undefined;
    }
    if (name === "REM") {
      return undefined;
    }
  }
  return undefined;
}

module.exports = { hoverAt };

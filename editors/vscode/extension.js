// Shows the text of HELP when the mouse rests on a word.
"use strict";

const vscode = require("vscode");
const { hoverAt } = require("./hover");

function provideHover(document, position) {
  const found = hoverAt(document.lineAt(position.line).text, position.character);
  if (!found) {
    return undefined;
  }
  const shown = new vscode.MarkdownString();
  found.texts.forEach((text) => shown.appendCodeblock(text, "plaintext"));
  return new vscode.Hover(shown, new vscode.Range(position.line, found.start, position.line, found.end));
}

function activate(context) {
  context.subscriptions.push(vscode.languages.registerHoverProvider("korvane", { provideHover }));
}

module.exports = { activate, deactivate() {} };

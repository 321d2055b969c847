// What the extension shows for a word, in an editor that is made up here.
import assert from "node:assert";
import fs from "node:fs";
import path from "node:path";
import Module, { createRequire } from "node:module";

const folder = process.argv[2];
const require = createRequire(path.join(folder, "package.json"));

// The files that the extension names are there.
const { main, contributes } = require("./package.json");
const named = [main, ...contributes.languages.map((language) => language.configuration),
  ...contributes.grammars.map((grammar) => grammar.path), ...contributes.snippets.map((snippets) => snippets.path)];
named.forEach((name) => assert.ok(fs.existsSync(path.join(folder, name)), name));

let provider;
const editor = {
  MarkdownString: class { text = ""; appendCodeblock(text) { this.text += text + "\n"; } },
  Hover: class { constructor(contents, range) { Object.assign(this, { contents, range }); } },
  Range: class { constructor(...places) { this.places = places; } },
  languages: { registerHoverProvider(language, made) { assert.equal(language, "korvane"); provider = made; return {}; } },
};
const load = Module._load;
Module._load = (name, ...rest) => (name === "vscode" ? editor : load(name, ...rest));

const context = { subscriptions: [] };
require("./extension.js").activate(context);
assert.equal(context.subscriptions.length, 1);

function shown(line, character) {
  return provider.provideHover({ lineAt: () => ({ text: line }) }, { line: 7, character });
}

const line = "10 for I=1 TO LEN(A$): PRINT \"GOTO\": REM GOTO 10";
assert.equal(shown(line, 3).contents.text, "FOR var=start TO limit [STEP step] - begin a counted loop\n");
assert.deepEqual(shown(line, 5).range.places, [7, 3, 7, 6]);
assert.match(shown(line, 14).contents.text, /^LEN\(/);
assert.match(shown(line, 24).contents.text, /^PRINT/);
for (const column of [0, 2, 6, 7, 8, 18, 31, 42]) {
  assert.equal(shown(line, column), undefined, `column ${column}`);
}
assert.match(shown(line, 37).contents.text, /^REM/);
assert.match(shown("A$=left$(B$,1)", 4).contents.text, /^LEFT\$\(/);
assert.equal(shown("TOTAL=1", 1), undefined);
assert.equal(shown("' GOTO", 3), undefined);
assert.equal(shown("X=&HFELSE", 7), undefined);
assert.equal(shown("constructor=1", 3), undefined);
assert.equal(shown("ON TIMER(1)", 4).contents.text.split("\n").length, 3);  // HELP has two entries of that name

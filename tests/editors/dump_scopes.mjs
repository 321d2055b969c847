// Writes the innermost scopes of every character of a file, found with the packages that Visual Studio Code finds them
// with: one line for each line, one scope for each character. Run in the folder that has the packages.
//
// node dump_scopes.mjs GRAMMAR FILE OUTPUT
import fs from "node:fs";
import path from "node:path";
import { createRequire } from "node:module";

const require = createRequire(path.join(process.cwd(), "package.json"));
const oniguruma = require("vscode-oniguruma");
const textmate = require("vscode-textmate");

const [grammarFile, file, output] = process.argv.slice(2);
await oniguruma.loadWASM(fs.readFileSync(require.resolve("vscode-oniguruma/release/onig.wasm")).buffer);
const registry = new textmate.Registry({
  onigLib: Promise.resolve({
    createOnigScanner: (patterns) => new oniguruma.OnigScanner(patterns),
    createOnigString: (text) => new oniguruma.OnigString(text),
  }),
  loadGrammar: async () => textmate.parseRawGrammar(fs.readFileSync(grammarFile, "utf8"), grammarFile),
});
const grammar = await registry.loadGrammar("source.korvane");

let stack = textmate.INITIAL;
const lines = [];
for (const line of fs.readFileSync(file, "utf8").replace(/\n$/, "").split("\n")) {
  const { tokens, ruleStack } = grammar.tokenizeLine(line, stack);
  stack = ruleStack;
  lines.push(tokens.flatMap(({ startIndex, endIndex, scopes }) =>
    Array(Math.min(endIndex, line.length) - startIndex).fill(scopes.at(-1))).join(" "));
}
fs.writeFileSync(output, lines.join("\n") + "\n");

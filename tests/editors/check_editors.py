"""Compares how the editors show programs with what their characters are.

usage: check_editors.py vim | textmate FOLDER-WITH-NODE-MODULES

Both show places.txt, all examples and all listings of the tests. What the characters of places.txt are is worked out by
hand; of the programs the lexer tells it, which has to know the places as well.
"""

import json
import re
import subprocess
import sys
import tempfile
from pathlib import Path

from lexer import letters_of

FOLDER = Path(__file__).resolve().parent
ROOT = FOLDER.parent.parent

VIM_LETTERS = {
    "LineNumber": "n", "Reference": "j", "Flow": "k", "Word": "w", "Operator": "o", "String": "s", "Data": "d",
    "Comment": "c", "Function": "f", "System": "y", "UserFunction": "u", "Name": "v", "Number": "#", "Error": "x",
    "Comma": ".",
}
SCOPE_LETTERS = (
    ("constant.numeric.line-number.reference", "j"), ("constant.numeric.line-number", "n"), ("constant.numeric", "#"),
    ("keyword.control", "k"), ("keyword.other", "w"), ("keyword.operator", "o"), ("string.quoted", "s"),
    ("string.unquoted.data", "d"), ("comment.line", "c"), ("support.function", "f"), ("support.variable", "y"),
    ("entity.name.function", "u"), ("variable.other", "v"), ("invalid.illegal", "x"), ("punctuation", "."),
    ("source.korvane", "."),
)


def places():
    """(line, letters) of places.txt."""
    rows = (FOLDER / "places.txt").read_text().split("\n\n", 1)[1].splitlines()
    return list(zip(rows[::2], rows[1::2], strict=True))


def programs():
    """(line, letters) of all programs."""
    found = []
    for path in sorted([*ROOT.glob("examples/*.bas"), *ROOT.glob("tests/listings/*.bas")]):
        found += [(line, letters_of(line)) for line in path.read_text(encoding="ascii").splitlines()]
    return found


def by_vim(lines, folder):
    """The letters of every line as Vim shows it."""
    program, output = folder / "program.bas", folder / "names.txt"
    program.write_text("\n".join(lines) + "\n")
    subprocess.run(["vim", "-es", "-Nu", "NONE", "--cmd", f"set runtimepath^={ROOT}/editors/vim",
                    "-S", FOLDER / "dump_syntax.vim", program, output],
                   stdin=subprocess.DEVNULL, check=True, timeout=600)
    kind, *rows = output.read_text().splitlines()
    if kind != "korvane":
        raise ValueError(f"Vim takes a program for {kind or 'nothing'}")
    return ["".join("." if name == "-" else VIM_LETTERS[name.removeprefix("korvane")] for name in row.split())
            for row in rows]


def by_textmate(lines, folder, packages):
    """The letters of every line as Visual Studio Code shows it."""
    program, output = folder / "program.bas", folder / "scopes.txt"
    program.write_text("\n".join(lines) + "\n")
    extension = ROOT / "editors/vscode"
    grammar = extension / "syntaxes/korvane.tmLanguage.json"
    subprocess.run(["node", FOLDER / "dump_scopes.mjs", grammar, program, output],
                   cwd=packages, check=True, timeout=600)
    subprocess.run(["node", FOLDER / "hover_test.mjs", extension], check=True, timeout=60)
    letter_of = {scope: next(letter for start, letter in SCOPE_LETTERS if scope.startswith(start))
                 for scope in set(output.read_text().split())}
    return ["".join(letter_of[scope] for scope in row.split()) for row in output.read_text().splitlines()]


def snippet_problems():
    """Snippets that are no programs when their places keep what is proposed for them."""
    snippets = json.loads((ROOT / "editors/vscode/snippets/korvane.json").read_text())
    for name, snippet in snippets.items():
        typed = re.sub(r"\$\{\d\|(\w+)[^}]*\}|\$\{\d:([^}]*)\}|\$0",
                       lambda place: place[1] or place[2] or "", snippet["body"])
        word = name.lower()
        if "$" in typed or "x" in letters_of(typed) or snippet["prefix"] != word or name not in snippet["description"]:
            yield f"snippet {name}: {typed}"


def differences(who, expected, shown):
    """A report of each line that is shown otherwise. Blanks and the commas of DATA have no look of their own."""
    if len(expected) != len(shown):
        return [f"{who} shows {len(shown)} of {len(expected)} lines"]
    found = []
    for (line, letters), others in zip(expected, shown):
        if len(line) != len(letters) or len(line) != len(others):
            found.append(f"{who}: lengths differ\n  {line}\n  {letters}\n  {others}")
        elif any(letter != other and not character.isspace() and (character, other) != (",", "d")
                 for character, letter, other in zip(line, letters, others)):
            found.append(f"{who}\n  {line}\n  {letters}\n  {others}")
    return found


def main(kind, *packages):
    expected = places() + programs()
    lines = [line for line, _ in expected]
    with tempfile.TemporaryDirectory(prefix="korvane-editors-") as folder:
        shown = by_vim(lines, Path(folder)) if kind == "vim" else by_textmate(lines, Path(folder), *packages)
    found = differences("lexer", places(), [letters_of(line) for line, _ in places()])
    found += differences(kind, expected, shown)
    found += snippet_problems() if kind == "textmate" else []
    print("\n".join(found))
    print(f"{kind}: {len(places())} places and {len(lines) - len(places())} lines of programs, {len(found)} differ")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

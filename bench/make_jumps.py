"""The task "jumps": a program of some 750 lines that does little but GOSUB, RETURN and GOTO, for each language.

    python3 bench/make_jumps.py FOLDER     writes FOLDER/korvane.bas, FOLDER/lua.lua and so on

Blocks of three lines are visited in an order that has nothing to do with their places; each calls a subroutine
of its own.
"""

import pathlib
import random
import sys

BLOCKS = 150
REPETITIONS = {"korvane": 50000, "lua": 50000, "brandy": 20000, "yabasic": 20000, "bwbasic": 1}


def visiting_order():
    """Block numbers from 1, each once, beginning with 1."""
    order = list(range(2, BLOCKS + 1))
    random.Random(1).shuffle(order)
    return [1] + order


def successors():
    """The block that follows each block; 0 after the last."""
    order = visiting_order()
    return dict(zip(order, order[1:] + [0]))


def basic_lines(language):
    """(line number, statement) pairs that the BASICs share, subroutines last."""
    follows = successors()
    lines = [(10, f"R = {REPETITIONS[language]}"), (20, "FOR K = 1 TO R"), (30, "C = 0")]
    for block in range(1, BLOCKS + 1):
        first = 100 + block * 10
        target = 100 + follows[block] * 10 if follows[block] else 5000
        lines += [(first, f"C = C + {block}"), (first + 1, f"GOSUB {6000 + block * 10}"), (first + 2, f"GOTO {target}")]
    lines.append((5000, "NEXT" if language == "brandy" else "NEXT K"))
    lines += [(5010 + i * 10, text) for i, text in enumerate(ENDINGS[language])]
    for block in range(1, BLOCKS + 1):
        lines += [(6000 + block * 10, f"C = C + {block % 7}"), (6001 + block * 10, "RETURN")]
    return lines


ENDINGS = {
    "korvane": ['PRINT "CHECK"; C', 'PRINT "REPEATED"; R', "END"],
    "bwbasic": ['PRINT "CHECK"; C', 'PRINT "REPEATED"; R', "SYSTEM"],
    "yabasic": ['print "CHECK ", c', 'print "REPEATED ", r', "end"],
    "brandy": [
        'F% = OPENOUT("CHECK.TXT")',
        'BPUT#F%, "CHECK " + STR$(C)',
        'BPUT#F%, "REPEATED " + STR$(R)',
        "CLOSE#F%",
        "QUIT",
    ],
}


def numbered(lines):
    return "".join(f"{number} {text}\n" for number, text in lines)


def yabasic_text():
    """Only lines that are jumped to have labels: a label costs time."""
    lines = basic_lines("yabasic")
    targets = {int(text.split()[1]) for _, text in lines if text.startswith(("GOTO", "GOSUB"))}
    return "".join((f"{number} " if number in targets else "") + f"{text.lower()}\n"
                   if not text.startswith("print") else f"{text}\n" for number, text in lines)


def lua_text():
    follows = successors()
    text = "local c = 0\n"
    for block in range(1, BLOCKS + 1):
        text += f"local function s{block}() c = c + {block % 7} end\n"
    text += f"local r = {REPETITIONS['lua']}\nfor k = 1, r do\n  c = 0\n  goto b1\n"
    for block in range(1, BLOCKS + 1):
        target = f"b{follows[block]}" if follows[block] else "done"
        text += f"  ::b{block}::\n  c = c + {block}\n  s{block}()\n  goto {target}\n"
    return text + '  ::done::\nend\nprint("CHECK " .. c)\nprint("REPEATED " .. r)\n'


def write_programs(folder):
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "korvane.bas").write_text(numbered(basic_lines("korvane")))
    (folder / "bwbasic.bas").write_text(numbered(basic_lines("bwbasic")))
    (folder / "brandy.bbc").write_text(numbered(basic_lines("brandy")))
    (folder / "yabasic.yab").write_text(yabasic_text())
    (folder / "lua.lua").write_text(lua_text())


if __name__ == "__main__":
    write_programs(sys.argv[1])

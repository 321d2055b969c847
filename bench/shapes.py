"""Measures what a statement of each specialised shape takes, in nanoseconds, and prints a table.

    python3 bench/shapes.py [--rounds N] [--only WORD]... [--image KORVANE.EFI] [--beside KORVANE.EFI]

Each statement stands ten times in a loop; the time of the same loop without it is taken off. The second image is the
one without specialised statements (./dev bench builds it), or any other that is to be compared with the first. Both run
in turns within a round; the table shows medians.
"""

import argparse
import pathlib
import statistics
import sys
import tempfile

import compare

ROOT = pathlib.Path(__file__).resolve().parent.parent
COPIES = 10  # of a statement in the loop
SETUP = ("DIM A(9), A2(9, 9), B%(9), C!(9), D$(9): A = 3: B = 4: C = 5: I = 2: J = 3: "
         "F! = 3: G! = 4: H! = 5: I% = 3: J% = 4: L& = 3: M& = 4: N&& = 3: S$ = \"AB\": T$ = \"CD\": "
         "DEF FNA(P) = P * 2")

# What a shape is, and a statement of it; {next} is the number of the line behind. Those that take string space say so by
# a smaller number of turns.
SHAPES = [
    ("DOUBLE = leaf", "X = A"),
    ("DOUBLE = leaf + leaf", "X = A + B"),
    ("DOUBLE = leaf / leaf", "X = A / B"),
    ("DOUBLE = three leaves", "X = A * B + C"),
    ("DOUBLE = leaf + chain", "X = A + B * C"),
    ("DOUBLE = chain * chain", "X = (A + B) * (B + C)"),
    ("DOUBLE = leaf + INTEGER", "X = A + I%"),
    ("DOUBLE = sign", "X = -A"),
    ("DOUBLE = power", "X = A ^ B"),
    ("SINGLE = leaf", "X! = F!"),
    ("SINGLE = leaf + leaf", "X! = F! + G!"),
    ("SINGLE = three leaves", "X! = F! * G! + H!"),
    ("SINGLE = DOUBLE", "X! = A"),
    ("INTEGER = literal", "X% = 5"),
    ("INTEGER = leaf + literal", "X% = I% + 1"),
    ("INTEGER = leaf AND leaf", "X% = I% AND J%"),
    ("INTEGER = DOUBLE", "X% = A"),
    ("LONG = leaf + leaf", "X& = L& + M&"),
    ("LONG = leaf MOD literal", "X& = L& MOD 2"),
    ("INT64 = leaf * leaf", "X&& = N&& * N&&"),
    ("DOUBLE element, one subscript", "A(I) = B"),
    ("DOUBLE element, two subscripts", "A2(I, J) = B"),
    ("INTEGER element = literal", "B%(I) = 1"),
    ("SINGLE element = leaf", "C!(I) = F!"),
    ("DOUBLE = element, one subscript", "X = A(I)"),
    ("DOUBLE = element, two subscripts", "X = A2(I, J)"),
    ("DOUBLE = element, computed subscript", "X = A(I + 1)"),
    ("INTEGER = element", "X% = B%(I)"),
    ("DOUBLE = function", "X = SQR(A)"),
    ("DOUBLE = INT", "X = INT(A)"),
    ("DOUBLE = user function", "X = FNA(A)"),
    ("DOUBLE = relation", "X = A < B"),
    ("IF leaf < leaf THEN line", "IF A < B THEN {next}"),
    ("IF leaf > leaf THEN line, false", "IF A > B THEN {next}"),
    ("IF leaf = literal THEN statement", "IF A = 3 THEN X = A"),
    ("IF SINGLE < SINGLE THEN line", "IF F! < G! THEN {next}"),
    ("IF INTEGER < literal THEN line", "IF I% < 9 THEN {next}"),
    ("IF relation AND relation", "IF A < B AND B < C THEN {next}"),
    ("IF leaf THEN line", "IF A THEN {next}"),
    ("IF THEN ELSE", "IF A > B THEN X = A ELSE X = B"),
    ("IF text = text", "IF S$ = T$ THEN {next}"),
    ("GOTO", "GOTO {next}"),
    ("GOSUB and RETURN", "GOSUB 900"),
    ("FOR and NEXT, one turn", "FOR Z = 1 TO 1: NEXT"),
    ("FOR and NEXT, ten turns", "FOR Z = 1 TO 10: NEXT"),
    ("WHILE, false", "WHILE A > B: WEND"),
    ("SWAP", "SWAP A, B"),
    ("READ and RESTORE", "RESTORE: READ X"),
    ("text = text", "X$ = S$", 100_000),
    ("text = text + text", "X$ = S$ + T$", 100_000),
    ("text element = text", "D$(I) = S$", 100_000),
    ("text = MID$", "X$ = MID$(S$, 1, 1)", 100_000),
    ("INTEGER = ASC", "X% = ASC(S$)"),
    ("colon and remark", ": REM"),
]
TURNS = 2_000_000
SLOW = 0.25  # seconds that a tenth of the turns may take to be repeated with all of them


def program(statement, turns):
    lines = [f"10 {SETUP}", f"20 FOR K = 1 TO {turns}"]
    for copy in range(COPIES):
        number = 100 + 10 * copy
        if statement:
            lines.append(f"{number} {statement.format(next=number + 10)}")
    return "\n".join([*lines, "200 NEXT", "210 END", "900 RETURN", "910 DATA 1", ""])


def seconds_of(interpreter, folder, statement, turns):
    path = folder / "shape.bas"
    path.write_text(program(statement, turns))
    seconds, printed = compare.run(interpreter, path, folder)
    if " in " in printed or "rror" in printed:
        raise compare.RunFailed(f"{statement}: {printed}")
    return seconds


def nanoseconds(interpreter, folder, statement, turns):
    """What the statement takes: one run with it, and one of the loop around it."""
    if turns == TURNS and seconds_of(interpreter, folder, statement, turns // 10) > SLOW:
        turns //= 10
    seconds = seconds_of(interpreter, folder, statement, turns) - seconds_of(interpreter, folder, None, turns)
    return seconds / turns / COPIES * 1e9


def main():
    parser = argparse.ArgumentParser(description="Measures specialised shapes.", allow_abbrev=False)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--only", action="append", help="shapes with this word; may be given again")
    parser.add_argument("--image", type=pathlib.Path, default=ROOT / "build/korvane.efi")
    parser.add_argument("--beside", type=pathlib.Path, default=ROOT / "build/general/korvane.efi")
    arguments = parser.parse_args()
    images = [compare.interpreters(path.resolve())["korvane"] for path in (arguments.image, arguments.beside)]
    print("| shape | statement | ns | beside | ratio |\n|---|---|---:|---:|---:|")
    with tempfile.TemporaryDirectory() as name:
        for shape, statement, *turns in SHAPES:
            if arguments.only and not any(word in shape for word in arguments.only):
                continue
            rounds = [[nanoseconds(image, pathlib.Path(name), statement, *(turns or [TURNS])) for image in images]
                      for _ in range(arguments.rounds)]
            ours, others = (statistics.median(column) for column in zip(*rounds))
            ratio = f"{ours / others:.2f}" if others > 0 else "-"
            print(f"| {shape} | `{statement}` | {ours:.1f} | {others:.1f} | {ratio} |", flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())

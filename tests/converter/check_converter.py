"""Converts listings and looks at what becomes of them.

usage: check_converter.py KORVANE-TERMINAL KORVANE.EFI

- The listings of this folder, in the style of the 1970s and 80s, print what stands beside them in NAME.out.
- Programs that run as they are stay as they are, to the letter.
- The listings of tests/listings with all their blanks taken out become the same programs again.
- Whatever is converted, what stands in quotes, remarks and DATA stays.
- Lines of CASES become what stands there, and the reports are those.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

FOLDER = Path(__file__).resolve().parent
ROOT = FOLDER.parent.parent
sys.path[:0] = [str(ROOT / "tools"), str(ROOT / "tests/editors")]

from convert_listing import Listing
from lexer import letters_of

OPTIONS = {"cents": {"single": True}}

# Statements whose words could be found in two ways, lines at their limits, what cannot be translated: listings with
# what becomes of them and how the reports begin, "!" in front of those that are for the user to do.
LONG = 'PRINT "' + "X" * 113 + '"'  # 121 characters
TOKENS = "A=1:" * 31 + "B=2"  # 31 * 4 + 3 = 127
CASES = [
    ("10 FORI=1TO10:NEXTI", "10 FOR I=1 TO 10:NEXT I", ["10: words"]),
    ("10 IFA=BTHENC=D", "10 IF A=B THEN C=D", ["10: words"]),
    ("10 A=BANDC", "10 A=B AND C", ["10: words"]),
    ("10 BANDC=1\n20 A=BANDC", "10 BANDC=1\n20 A=BANDC", []),
    ("10 LETTER=5:PRINT LETTER", "10 LETTER=5:PRINT LETTER", []),
    ("10 LETA=5:PRINTA", "10 LET A=5:PRINT A", ["10: words"]),
    ("10 IFA=1GOTO10", "10 IF A=1 GOTO 10", ["10: words"]),
    ("10 READ SCORE: PRINT SCORE: DATA SC OR E", "10 READ SCORE: PRINT SCORE: DATA SC OR E", []),
    ("10 ONERRORGOTO30\n20 RESUMENEXT\n30 END", "10 ON ERROR GOTO 30\n20 RESUME NEXT\n30 END",
     ["10: words", "20: words"]),
    ("10 ONX-1GOTO10,10:FORI=1TOLEN(A$):NEXT", "10 ON X-1 GOTO 10,10:FOR I=1 TO LEN(A$):NEXT", ["10: words"]),
    ("10 IFMID$(A$,I,1)=\"A\"ORB=1THEN10", "10 IF MID$(A$,I,1)=\"A\" OR B=1 THEN 10", ["10: words"]),
    ("10 FORT=STOE:FORI=NTO1STEP-1:NEXT:NEXT", "10 FOR T=S TO E:FOR I=N TO 1 STEP-1:NEXT:NEXT", ["10: words"]),
    ("10 IFA=BORC=DTHEN10:IFNOTA=BTHEN10", "10 IF A=B OR C=D THEN 10:IF NOT A=B THEN 10", ["10: words"]),
    ("10 IFRND(1)>.5THENPRINTPOS(0):RANDOMIZETIMER", "10 IF RND(1)>.5 THEN PRINT POS(0):RANDOMIZE TIMER",
     ["10: words"]),
    ("10 points=5:forj=1topoints:next", "10 points=5:for j=1 to points:next", ["10: words"]),
    ("10 PRINTA$+B$:LINEINPUT\"X\";A$:INPUT#1,A$:CLOSE1", "10 PRINT A$+B$:LINE INPUT\"X\";A$:INPUT#1,A$:CLOSE 1",
     ["10: words"]),
    ("10 DEFINTA-Z:DEFSTRS:SWAPA,B:WHILEA<5:WEND", "10 DEFINT A-Z:DEFSTR S:SWAP A,B:WHILE A<5:WEND", ["10: words"]),
    ("10 X%=Y%MOD5:FORK%=1TO5:NEXTK%", "10 X%=Y% MOD 5:FOR K%=1 TO 5:NEXT K%", ["10: words"]),
    ("10 IFA=1THENB=2:C=3:ELSED=4", "10 IF A=1 THEN B=2:C=3:ELSE D=4", ["10: words"]),
    ("10 IFA=1THEN20:ELSEPRINT\"X\":ELSEIFA=2THEN20\n20 END", "10 IF A=1 THEN 20:ELSE PRINT\"X\":ELSE IF A=2 THEN 20\n20 END",
     ["10: words"]),
    ("10 ELSED=4:IF A THEN ELSED=5", "10 ELSED=4:IF A THEN ELSED=5", []),
    ("10 IF A THEN B=1:ELSEWHERE=2\n20 PRINT ELSEWHERE", "10 IF A THEN B=1:ELSEWHERE=2\n20 PRINT ELSEWHERE", []),
    ("10 GETA$:IFA$=\"\"THEN10", "10 GET A$:IF A$=\"\" THEN 10", ["10: words", "!10: GET reads a file"]),
    ("10 GET #1,5:GET (0,0)-(9,9),A%\n20 DIM A%(9)", "10 GET #1,5:GET (0,0)-(9,9),A%\n20 DIM A%(9)", []),
    ("10 POKE 53280,0:PRINT PEEK(65)", "10 POKE 53280,0:PRINT PEEK(65)", ["!10: POKE", "!10: PEEK"]),
    ("10 A&&=1:PRINT PEEK(A&&+1)", "10 A&&=1:PRINT PEEK(A&&+1)", []),
    ("10 IF A THEN10ELSE10", "10 IF A THEN 10 ELSE 10", ["10: words"]),
    ("10 FORX=.5TO-.5STEP-.5:NEXT", "10 FOR X=.5 TO-.5 STEP-.5:NEXT", ["10: words"]),
    ("10 REMFORI=1TO10", "10 REM FORI=1TO10", []),
    ("10 REM: NEXT Y,X: \"", "10 REM: NEXT Y,X: \"", []),
    ("10 A=1'NEXT Y,X", "10 A=1'NEXT Y,X", []),
    ("10 IF A THENREM NEXT Y,X", "10 IF A THEN REM NEXT Y,X", []),
    ("10 REMARK=1:DATABASE(2)=3\n20 DIM DATABASE(5):PRINT REMARK",
     "10 REMARK=1:DATABASE(2)=3\n20 DIM DATABASE(5):PRINT REMARK", []),
    ("10 DATANEXT Y,\"A:B\",X:A=1", "10 DATA NEXT Y,\"A:B\",X:A=1", []),
    ("10 PRINT \"NEXT Y,X  ", "10 PRINT \"NEXT Y,X  \"", ["10: a closing quote"]),
    ("10 NEXT Z,Y,X", "10 NEXT Z: NEXT Y: NEXT X", ["10: NEXT"]),
    ("10 IF A=<B OR B=>C OR C><A THEN 10", "10 IF A<=B OR B>=C OR C<>A THEN 10", ["10: >< is", "10: =<", "10: =>"]),
    ("10 GO TO 20\n20 GO  SUB 10", "10 GOTO 20\n20 GOSUB 10", []),
    ("10 NAME$=\"A\":NAME2$=\"B\"", "10 NAME3$=\"A\":NAME2$=\"B\"", ["10: NAME$ is called NAME3$"]),
    ("10 A.B=1:PRINT A.B,AB", "10 AB2=1:PRINT AB2,AB", ["10: A.B is called AB2"]),
    ("10 DIR=1:DIR \"*.*\":PRINT DIR", "10 DIR2=1:DIR \"*.*\":PRINT DIR2", ["10: DIR is called DIR2"]),
    ("10 HIMEM=5:PRINT HIMEM", "10 HIMEM2=5:PRINT HIMEM2", ["10: HIMEM is called"]),
    ("10 PRINT HIMEM;TIME$", "10 PRINT HIMEM;TIME$", []),
    ("10 LEFT$=\"A\":PRINT LEFT$;LEFT$(\"AB\",1)", "10 LEFT$=\"A\":PRINT LEFT$;LEFT$(\"AB\",1)", []),
    # 121 + 1 + 122 characters are just as many as fit.
    (f"10 {LONG}:{LONG[:-1]}X\"", f"10 {LONG}:{LONG[:-1]}X\"", []),
    (f"10 {LONG}:{LONG[:-1]}XX\"\n20 END", f"10 {LONG}\n15 {LONG[:-1]}XX\"\n20 END", ["10: too long, split"]),
    (f"10 {LONG}:{LONG[:-1]}XX\"\n11 END", f"10 {LONG}:{LONG[:-1]}XX\"\n11 END", ["!10: too long, and there is no"]),
    (f"10 IF A THEN {LONG}:{LONG}", f"10 IF A THEN {LONG}:{LONG}", ["!10: the IF and what belongs to it"]),
    (f"10 A=1:IF A THEN {LONG}:{LONG[:-17]}\":B=2\n20 END", f"10 A=1\n15 IF A THEN {LONG}:{LONG[:-17]}\":B=2\n20 END",
     ["10: too long, split"]),
    (f"10 {TOKENS}", f"10 {TOKENS}", []),
    (f"10 {TOKENS}:'", f"10 {TOKENS}\n20 '", ["10: too long, split"]),
    ("10 REM " + "X" * 241, "10 REM " + "X" * 241, ["!10: a remark"]),
    ("10 DATA " + "1," * 63 + "1", "10 DATA " + "1," * 63 + "1", ["!10: a DATA statement has more than 127"]),
    ("10 DATA " + "1," * 62 + "1", "10 DATA " + "1," * 62 + "1", []),
    ("10 DATA 5%3, A_B", "10 DATA 5%3, A_B", ["!10: the _ in DATA"]),
    ("10 BEEP:LPRINT \"X\"", "10 BEEP:LPRINT \"X\"", ["!10: BEEP", "!10: LPRINT"]),
    ("10 X=USR(5)+INP(3)", "10 X=USR(5)+INP(3)", ["!10: there is no function USR", "!10: there is no function INP"]),
    ("10 A(3)=1:B(1,2)=3", "10 A(3)=1:B(1,2)=3",
     ["!10: every array needs DIM: put DIM A(10)", "!10: every array needs DIM: put DIM B(10, 10)"]),
    ("10 RUN 100", "10 RUN 100", ["!10: RUN works at the prompt only"]),
    ("10 CLEAR 1000", "10 CLEAR 1000", ["!10: CLEAR takes no values"]),
    ("10 DEF SEG=0", "10 DEF SEG=0", ["!10: there is no DEF SEG"]),
    ("10 GOTO 500", "10 GOTO 500", ["!10: GOTO 500: there is no such line"]),
    ("10 ON ERROR GOTO 0", "10 ON ERROR GOTO 0", []),
    ("10 ON A GOSUB 10,20", "10 ON A GOSUB 10,20", ["!10: GOSUB 20: there"]),
    ("10 SCREEN 1:COLOR 7,0,0:CIRCLE (5,5),3,1,,,2", "10 SCREEN 1:COLOR 7,0,0:CIRCLE (5,5),3,1,,,2",
     ["!10: SCREEN", "!10: COLOR", "!10: CIRCLE"]),
    ("10 SCREEN 640,480:COLOR 7,0:CIRCLE (5,5),3,1", "10 SCREEN 640,480:COLOR 7,0:CIRCLE (5,5),3,1", []),
    ("10 OPEN \"O\",#1,\"F\":CLOSE", "10 OPEN \"O\",#1,\"F\":CLOSE", ["!10: OPEN names", "!10: CLOSE alone"]),
    ("10 OPEN \"O\" FOR OUTPUT AS #1:CLOSE #1", "10 OPEN \"O\" FOR OUTPUT AS #1:CLOSE #1", []),
    ("10 IF A THEN IF B THEN 10 ELSE 10", "10 IF A THEN IF B THEN 10 ELSE 10", ["!10: ELSE belongs"]),
    ("10 IF A THEN 10 ELSE IF B THEN 10 ELSE 10", "10 IF A THEN 10 ELSE IF B THEN 10 ELSE 10", []),
    ("10 IF A THEN GOSUB 10 ELSE 10", "10 IF A THEN GOSUB 10 ELSE 10", ["!10: GOSUB in front of ELSE"]),
    ("10 TIME$=\"00:00:00\"", "10 TIME$=\"00:00:00\"", ["!10: TIME$ cannot be set"]),
    ("10 WIDTH80", "10 WIDTH 80", ["10: words", "!10: WIDTH is no word"]),
    ("10 PRINT@64,\"X\"", "10 PRINT@64,\"X\"", ["!10: PRINT @n"]),
    ("10 A=1\nPRINT A", "10 A=1", ["!10: what follows this line has no line number"]),
    ("20 B=1\r\n10 A=1\r\n20 C=1\r\n\x1a", "10 A=1\n20 C=1", []),
    ("10 X=.1", "10 X=.1", ["10: .1 is a SINGLE"]),
    ("10 X=.5:Y=0.1#:Z=.10000000", "10 X=.5:Y=0.1#:Z=.10000000", []),
]


def converted(text, **options):
    listing = Listing(text, **options)
    lines = listing.convert()
    said = [("!" if by_hand else "") + f"{number}: {what}" for number, by_hand, what in dict.fromkeys(listing.said)]
    return "".join(f"{number} {line}\n" for number, line in lines), said


def protected(text):
    """What stands in quotes, remarks and DATA, without the words themselves."""
    found = []
    for line in text.splitlines():
        letters = letters_of(line)
        found += [character for character, letter in zip(line, letters) if letter in "scd" and character != " "]
    return "".join(found)


def squeezed(text):
    """A program without the blanks that its words are kept apart by."""
    rows = []
    for line in text.splitlines():
        number, rest = line.split(" ", 1)
        letters = letters_of(line)[len(number) + 1:]
        rows.append(number + " " + "".join(character for character, letter in zip(rest, letters)
                                           if character not in " \t" or letter in "scd"))
    return "\n".join(rows)


def tokens(text):
    """A program as the tokenizer cuts it."""
    found = []
    for line in text.splitlines():
        row, last = [], ""
        for character, letter in zip(line, letters_of(line)):
            if character == " " and letter not in "scd":
                last = ""
                continue
            mark = letter in ".ox"
            if letter == last and not mark:
                row[-1] += character
            else:
                row.append(character)
            last = letter
        found.append(row)
    return found


def check_cases():
    for text, expected, reports in CASES:
        program, said = converted(text)
        if program != expected + "\n":
            yield f"{text}\nbecomes\n{program}and not\n{expected}"
        if len(said) != len(reports) or any(not any(line.startswith(report) for line in said) for report in reports):
            yield f"{text}\nis reported as {said}\nand not {reports}"


def check_programs():
    for path in sorted([*ROOT.glob("examples/*.bas"), *ROOT.glob("tests/listings/*.bas")]):
        text = path.read_text(encoding="latin-1")
        program, said = converted(text)
        if program != text:
            yield f"{path.name} does not stay as it is"
        # PRINT @ means a place on the screen in old listings.
        to_do = [line for line in said if line.startswith("!") and "PRINT @" not in line]
        if to_do:
            yield f"{path.name}: {to_do}"
    for path in sorted(ROOT.glob("tests/listings/*.bas")):
        text = path.read_text(encoding="latin-1")
        tight = squeezed(text)
        program, _ = converted(tight)
        if tight == text or tokens(program) != tokens(text):
            yield f"{path.name} without blanks does not become itself"
        if protected(program) != protected(text):
            yield f"{path.name}: texts are changed"
    for path in sorted(FOLDER.glob("*.bas")):
        text = path.read_text(encoding="latin-1")
        program, _ = converted(text)
        if converted(program)[0] != program:
            yield f"{path.name} changes when it is converted once more"


def check_runs(terminal, image):
    listings = sorted(FOLDER.glob("*.bas"))
    if {path.stem for path in listings} != {path.stem for path in FOLDER.glob("*.out")}:
        yield "a listing without what it prints, or the reverse"
    for path in listings:
        program, said = converted(path.read_text(encoding="latin-1"), **OPTIONS.get(path.stem, {}))
        if any(line.startswith("!") for line in said):
            yield f"{path.name}: {said}"
        with tempfile.TemporaryDirectory(prefix="korvane-converted-") as volume:
            copy = Path(volume) / path.name
            copy.write_text(program, encoding="latin-1")
            done = subprocess.run([terminal, "--image", image, copy], stdin=subprocess.DEVNULL, capture_output=True,
                                  text=True, timeout=60, check=False)
        rows = [row.rstrip() for row in done.stdout.split("\n")]
        rows = rows[rows.index("RUN") + 1:] if "RUN" in rows else rows
        expected = [row.rstrip() for row in path.with_suffix(".out").read_text().splitlines()] + ["Ready."]
        if [row for row in rows if row] != expected:
            yield f"{path.name} prints {rows}\nand not {expected}"


def main(terminal, image):
    found = [*check_cases(), *check_programs(), *check_runs(terminal, image)]
    print("\n".join(found))
    print(f"converter: {len(CASES)} cases, {len(found)} failures")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

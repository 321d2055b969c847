"""Measures statements that once took far longer than their neighbours, beside other interpreters and, where one is
named, beside another image, and prints a table.

    python3 bench/even.py [--rounds N] [--only WORD]... [--peers lua,brandy] [--image KORVANE.EFI] [--beside KORVANE.EFI]
                          [--without-native KORVANE.EFI] [--seconds S]

A statement stands ten times in a loop; the time of the same loop without it is taken off. Each language repeats the loop
until it takes so many seconds. In a round all of them run one after the other; the table shows medians of the
times and of the rounds' ratios. X is a checksum, the same in all languages. Where no other language has the statement, or
none does the same work for it, a neighbour of it stands for what a statement of its kind may take: both in the image without
native code, for what is compared is the general path with a specialised one, and the neighbour may be a few machine
instructions otherwise. An image without specialised statements as the other one tells what the general handlers take.
"""

import argparse
import pathlib
import statistics
import sys
import tempfile

import compare
import machine_facts

ROOT = pathlib.Path(__file__).resolve().parent.parent
COPIES = 10  # of a statement in the loop
BASIC_GOAL = 0.5  # at most so many times as long as the fastest BASIC
LUA_GOAL = 1.5
NEIGHBOUR_GOAL = 15
GROWTH = 4  # of the number of turns while it is looked for

SETUP = {
    "korvane": 'DIM A(9), B(9), G&(17): J = 7: L = 1: M = 3: N& = 9: S$ = "ABCD": X = 0: P = VARPTR(A(0)): GET (0,0)-(3,3), G&',
    "brandy": 'DIM A(9), B(9): J = 7: L = 1: M = 3: N% = 9: S$ = "ABCD": T$ = "": X = 0',
    "yabasic": 'dim a(9), b(9)\nj = 7: l = 1: m = 3: n = 9: s$ = "ABCD": x = 0',
    "lua": 'local j, l, m, n, s, x, y, t, f = 7, 1, 3, 9, "ABCD", 0, 0, "", math.floor\n',
}

# What it is, the statement in each language that has it ({next}: the line behind it) and its neighbour, a line in front that
# the neighbour does not have, and, for those that take memory, how often at most the loop is repeated.
SUM = "X = X + J"
FUNCTION = "Y = ABS(J)"
ELEMENT = "A(L) = 0"
STATEMENTS = [
    ("a number compared with MOD", {
        "korvane": "IF J MOD 3 = L THEN X = X + 1", "brandy": "IF J MOD 3 = L THEN X = X + 1",
        "yabasic": "if mod(j, 3) = l then x = x + 1 endif", "lua": "if j % 3 == l then x = x + 1 end"}),
    ("a number compared with AND", {
        "korvane": "IF (J AND M) = M THEN X = X + 1", "brandy": "IF (J AND M) = M THEN X = X + 1",
        "yabasic": "if and(j, m) = m then x = x + 1 endif", "lua": "if j & m == m then x = x + 1 end"}),
    ("a number compared with LEN", {
        "korvane": "I = 1: WHILE I <= LEN(S$): I = I + 1: WEND", "brandy": "I = 1: WHILE I <= LEN(S$): I = I + 1: ENDWHILE",
        "yabasic": "i = 1: while i <= len(s$): i = i + 1: wend", "lua": "y = 1 while y <= #s do y = y + 1 end"}),
    ("a number compared with ASC", {
        "korvane": "IF ASC(MID$(S$, 2, 1)) = 66 * L THEN X = X + 1", "brandy": "IF ASC(MID$(S$, 2, 1)) = 66 * L THEN X = X + 1",
        "yabasic": "if asc(mid$(s$, 2, 1)) = 66 * l then x = x + 1 endif",
        "lua": "if s:sub(2, 2):byte() == 66 * l then x = x + 1 end"}),
    ("a sum while a timer is on", {
        "korvane": SUM, "neighbour": SUM, "ahead": "TIMER(0) = 100000: ON TIMER(0) GOSUB 900: TIMER(0) ON"}),
    ("a sum while other lines are traced", {"korvane": SUM, "neighbour": SUM, "ahead": "TRON 900-901"}),
    ("RND", {
        "korvane": "Y = INT(RND * 6) + 1", "brandy": "Y = INT(RND(1) * 6) + 1", "yabasic": "y = int(ran() * 6) + 1",
        "lua": "y = f(math.random() * 6) + 1"}),
    ("PEEK", {"korvane": "Y = PEEK(P)", "neighbour": FUNCTION}),
    ("PEEK64", {"korvane": "Y = PEEK64(P)", "neighbour": FUNCTION}),
    ("POKE", {"korvane": "POKE P, 0", "neighbour": ELEMENT}),
    ("POKE at a computed place", {"korvane": "POKE P + J, J AND 255", "neighbour": ELEMENT}),
    ("POINT", {"korvane": "Y = POINT(5, 5)", "neighbour": FUNCTION}),
    ("TIMER", {"korvane": "Y = TIMER", "neighbour": FUNCTION}),
    ("ERR", {"korvane": "Y = ERR", "neighbour": FUNCTION}),
    ("ERL", {"korvane": "Y = ERL", "neighbour": FUNCTION}),
    ("CDBL", {"korvane": "Y = CDBL(N&)", "neighbour": FUNCTION}),
    ("CSNG", {"korvane": "Y = CSNG(J)", "neighbour": FUNCTION}),
    ("CVI", {"korvane": "Y = CVI(S$)", "neighbour": FUNCTION}),
    ("CVS", {"korvane": "Y = CVS(S$)", "neighbour": FUNCTION}),
    ("CSRLIN", {"korvane": "Y = CSRLIN", "neighbour": FUNCTION}),
    ("POS", {"korvane": "Y = POS(0)", "neighbour": FUNCTION}),
    ("HEX$", {
        "korvane": "T$ = HEX$(J)", "brandy": "T$ = STR$~(J)", "yabasic": "t$ = hex$(j)",
        "lua": 't = string.format("%X", j)'}, 200_000),
    ("MID$ assigned to", {
        "korvane": 'MID$(S$, 2, 1) = "x"', "brandy": 'MID$(S$, 2, 1) = "x"', "yabasic": 'mid$(s$, 2, 1) = "x"'}),
    ("ON GOTO", {"korvane": "ON L GOTO {next}, 20", "brandy": "ON L GOTO {next}, 20"}),
    ("ON GOSUB", {
        "korvane": "ON L GOSUB 900, 20", "brandy": "ON L GOSUB 900, 20", "yabasic": "on l gosub back, back"}),
    ("a function without parameters", {
        "korvane": "Y = FNZ", "brandy": "Y = FNZ", "yabasic": "y = fnz()", "lua": "y = fnz()"}),
    ("a function of two", {
        "korvane": "Y = FNT(J, L)", "brandy": "Y = FNT(J, L)", "yabasic": "y = fnt(j, l)", "lua": "y = fnt(j, l)"}),
    ("a function of three", {
        "korvane": "Y = FNV(J, L, M)", "brandy": "Y = FNV(J, L, M)", "yabasic": "y = fnv(j, l, m)", "lua": "y = fnv(j, l, m)"}),
    ("a function of texts", {
        "korvane": "T$ = FNW$(S$)", "brandy": "T$ = FNW(S$)", "yabasic": "t$ = fnw$(s$)", "lua": "t = fnw(s)"}, 200_000),
    ("WHILE that joins texts", {
        "korvane": 'WHILE S$ + "x" = T$: WEND', "brandy": 'WHILE S$ + "x" = T$: ENDWHILE',
        "yabasic": 'while s$ + "x" = t$: wend', "lua": 'while s .. "x" == t do end'}, 200_000),
    ("a comparison that joins texts", {
        "korvane": 'IF S$ + "x" = T$ THEN X = X + 1', "brandy": 'IF S$ + "x" = T$ THEN X = X + 1',
        "yabasic": 'if s$ + "x" = t$ then x = x + 1 endif', "lua": 'if s .. "x" == t then x = x + 1 end'}, 200_000),
    ("divided by -1", {
        "korvane": "N& = N& \\ -1", "brandy": "N% = N% DIV -1", "yabasic": "n = int(n / -1)", "lua": "n = n // -1"}),
    ("READ of an INT64", {"korvane": "RESTORE: READ R&&", "neighbour": "RESTORE: READ R#"}),
    ("PSET at a computed place", {
        "korvane": "PSET (320 + A(3) * 50 / (B(3) + 1), 100), 3", "neighbour": "Y = 320 + A(3) * 50 / (B(3) + 1)"}),
    ("LINE between computed places", {
        "korvane": "LINE (320 + A(3) * 50, 100)-(321 + B(3), 101), J", "neighbour": "LINE (320, 100)-(321, 101), 7"}),
    ("CIRCLE at a computed place", {
        "korvane": "CIRCLE (320 + A(3) * 50, 100 + J), M, L", "neighbour": "CIRCLE (320, 107), 3, 1"}),
    ("PUT at a computed place", {
        "korvane": "PUT (320 + A(3) * 50, 100 + J), G&, PSET", "neighbour": "PUT (320, 107), G&, PSET"}),
    ("LOCATE at a computed place", {"korvane": "LOCATE J MOD 3 + 1, L * 2", "neighbour": "LOCATE 2, 2"}),
    ("PRINT of a computed number", {"korvane": "LOCATE 2, 2: PRINT J * 2 + L", "neighbour": "LOCATE 2, 2: PRINT 15"}),
    ("VAL of a large exponent", {
        "korvane": 'Y = VAL("1.5E100")', "brandy": 'Y = VAL("1.5E100")', "yabasic": 'y = val("1.5E100")',
        "lua": 'y = tonumber("1.5E100")'}),
    ("VAL of a small number", {
        "korvane": 'Y = VAL("1.234567E-200")', "brandy": 'Y = VAL("1.234567E-200")', "yabasic": 'y = val("1.234567E-200")',
        "lua": 'y = tonumber("1.234567E-200")'}),
    ("STR$ of a large exponent", {
        "korvane": "T$ = STR$(1.5D100)", "brandy": "T$ = STR$(1.5E100)", "yabasic": "t$ = str$(1.5E100)",
        "lua": "t = tostring(1.5E100)"}, 100_000),
    # Brandy's FOR makes one turn at least.
    ("FOR without a turn", {
        "korvane": "FOR I = 1 TO 0: NEXT", "yabasic": "for i = 1 to 0: next i", "lua": "for i = 1, 0 do end"}),
    ("TAN", {
        "korvane": "Y = TAN(J)", "brandy": "Y = TAN(J)", "yabasic": "y = tan(j)", "lua": "y = math.tan(j)"}),
    ("RESTORE to 100 lines before the DATA", {
        "korvane": "RESTORE 1000: READ Y", "brandy": "RESTORE 1000: READ Y"}),
    ("an array that comes and goes", {
        "korvane": "DIM Q(3): Q(1) = 2: ERASE Q", "neighbour": "A(1) = 0: A(2) = 0: A(3) = 0: B(1) = 2"}, 100_000),
    ("a text built of 60 letters", {
        "korvane": 'T$ = "": FOR I = 1 TO 60: T$ = T$ + "x": NEXT', "brandy": 'T$ = "": FOR I = 1 TO 60: T$ = T$ + "x": NEXT',
        "yabasic": 't$ = "": for i = 1 to 60: t$ = t$ + "x": next i',
        "lua": 't = "" for i = 1, 60 do t = t .. "x" end'}, 2000),
]

FAR_LINES = "\n".join(f'{1000 + i} PRINT "Result"; A(1), S$' for i in range(100)) + "\n1900 DATA 1\n"
HEAD = {"korvane": "10 DEF FNZ = 4\n11 DEF FNT(U, V) = U * 2 + V\n12 DEF FNV(U, V, W) = U * V + W\n"
                   "13 DEF FNW$(U$) = LEFT$(U$, 2)\n",
        "brandy": "", "yabasic": "",
        "lua": "local function fnz() return 4 end\nlocal function fnt(u, v) return u * 2 + v end\n"
               "local function fnv(u, v, w) return u * v + w end\nlocal function fnw(u) return u:sub(1, 2) end\n"}
TAIL = {
    "korvane": '200 NEXT K\n210 CLS: PRINT "CHECK"; X\n220 END\n900 RETURN\n' + FAR_LINES,
    "brandy": '200 NEXT K\n210 C% = OPENOUT("CHECK.TXT"): BPUT#C%, "CHECK " + STR$(X): CLOSE#C%\n220 QUIT\n900 RETURN\n'
              "910 DEF FNZ = 4\n920 DEF FNT(U, V) = U * 2 + V\n930 DEF FNV(U, V, W) = U * V + W\n"
              "940 DEF FNW(U$) = LEFT$(U$, 2)\n" + FAR_LINES,
    "yabasic": 'next k\nprint "CHECK ", str$(x, "%.0f")\nend\nlabel back\nreturn\nsub fnz()\nreturn 4\nend sub\n'
               "sub fnt(u, v)\nreturn u * 2 + v\nend sub\nsub fnv(u, v, w)\nreturn u * v + w\nend sub\n"
               "sub fnw$(u$)\nreturn left$(u$, 2)\nend sub\n",
    "lua": 'end\nprint(string.format("CHECK %.0f", x))\n',
}
LOOP = {"korvane": "20 FOR K = 1 TO {turns}\n", "brandy": "20 FOR K = 1 TO {turns}\n", "yabasic": "for k = 1 to {turns}\n",
        "lua": "for k = 1, {turns} do\n"}


def program(language, statement, turns, ahead=""):
    numbered = language in ("korvane", "brandy")
    lines = []
    for copy in range(COPIES if statement else 0):
        number = 100 + 10 * copy
        line = statement.replace("{next}", str(number + 10))
        lines.append((f"{number} " if numbered else "") + line + "\n")
    setup = ("15 " if numbered else "") + SETUP[language] + "\n" + (f"16 {ahead}\n" if ahead else "")
    return HEAD[language] + setup + LOOP[language].format(turns=turns) + "".join(lines) + TAIL[language]


class Subject:
    """One language's way to run a statement."""

    def __init__(self, interpreter, language, folder, long_enough, kind=None):
        self.interpreter = interpreter
        self.language = language
        self.kind = kind or language  # which of the statements
        self.path = folder / ("even" + pathlib.Path(interpreter.program).suffix)
        self.folder = folder
        self.long_enough = long_enough  # seconds that the loop takes
        self.startup = min(self.run(None, 1)[0] for _ in range(3))

    def run(self, statement, turns, ahead=""):
        """The seconds that a loop takes, and its checksum for each turn."""
        self.path.write_text(program(self.language, statement, turns, ahead))
        seconds, text = compare.run(self.interpreter, self.path, self.folder)
        return seconds, compare.printed_number("CHECK", text, self.interpreter, statement) / turns

    def turns_for(self, statement, most):
        turns = 50
        while turns < most and self.run(statement, turns)[0] - self.startup < self.long_enough:
            turns = min(turns * GROWTH, most)
        return turns

    def nanoseconds(self, statements, turns):
        ahead = "" if self.kind == "neighbour" else statements.get("ahead", "")
        seconds, checksum = self.run(statements[self.kind], turns, ahead)
        return max(seconds - self.run(None, turns)[0], 1e-9) / turns / COPIES * 1e9, checksum


def median_ratio(rounds, subject, other):
    ratios = [times[subject] / times[other] for times in rounds if subject in times and other in times]
    return statistics.median(ratios) if ratios else None


def measure(subjects, statements, count, most=10_000_000):
    """The rounds of one statement: nanoseconds by subject."""
    chosen = {name: subject for name, subject in subjects.items()
              if subject.kind in statements and (name != "specialised" or "neighbour" in statements)}
    turns = {name: subject.turns_for(statements[subject.kind], most) for name, subject in chosen.items()}
    rounds = []
    for _ in range(count):
        results = {name: subject.nanoseconds(statements, turns[name]) for name, subject in chosen.items()}
        if len({checksum for _, checksum in results.values()}) > 1:
            raise compare.RunFailed(f"{statements}: the checksums differ: {results}")
        rounds.append({name: time for name, (time, _) in results.items()})
    return rounds


PEERS = ("beside", "brandy", "yabasic", "lua")
# A tangent that is nearly always the nearest number takes as long as those of the others, which are not.
OWN_BASIC_GOALS = {"TAN": 1.25}


def row(what, rounds):
    time = statistics.median(times["korvane"] for times in rounds)
    ratios = {peer: median_ratio(rounds, "korvane", peer) for peer in PEERS}
    ratios["neighbour"] = median_ratio(rounds, "specialised", "neighbour")
    basics = [ratio for ratio in (ratios["brandy"], ratios["yabasic"]) if ratio is not None]
    missed = (max(basics, default=0) > OWN_BASIC_GOALS.get(what, BASIC_GOAL) or (ratios["lua"] or 0) > LUA_GOAL
              or (ratios["neighbour"] or 0) > NEIGHBOUR_GOAL)
    cells = [what, f"{time:.1f}", *(compare.shown(ratio, "{:.2f}") for ratio in ratios.values()), "missed" if missed else ""]
    return "| " + " | ".join(cells) + " |", missed


def parse_arguments():
    parser = argparse.ArgumentParser(description="Measures statements that may fall behind.", allow_abbrev=False)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--only", action="append", help="statements with this word; may be given again")
    parser.add_argument("--peers", default="brandy,yabasic,lua", help="separated by commas")
    parser.add_argument("--image", type=pathlib.Path, default=ROOT / "build/korvane.efi")
    parser.add_argument("--seconds", type=float, default=0.2, help="that a loop takes at least")
    parser.add_argument("--beside", type=pathlib.Path, help="another image")
    parser.add_argument("--without-native", type=pathlib.Path, default=ROOT / "build/without-native/korvane.efi",
                        help="the image in which neighbours are compared")
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    image = arguments.image.resolve()
    seconds = arguments.seconds
    chosen = compare.interpreters(image)
    print("\n".join(machine_facts.machine_lines(image, arguments.rounds)) + "\n")
    print("| statement | ns | to the other image | to brandy | to yabasic | to lua | to its neighbour | goal |\n"
          "|---|---:|---:|---:|---:|---:|---:|---|")
    failures = missed = 0
    with tempfile.TemporaryDirectory(prefix="korvane-bench-") as name:
        folder = pathlib.Path(name)
        plain = compare.interpreters(arguments.without_native.resolve())["korvane"]
        subjects = {"korvane": Subject(chosen["korvane"], "korvane", folder, seconds),
                    "specialised": Subject(plain, "korvane", folder, seconds),
                    "neighbour": Subject(plain, "korvane", folder, seconds, "neighbour")}
        if arguments.beside:
            other = compare.interpreters(arguments.beside.resolve())["korvane"]
            subjects["beside"] = Subject(other, "korvane", folder, seconds)
        for peer in filter(None, arguments.peers.split(",")):
            subjects[peer] = Subject(chosen[peer], peer, folder, seconds)
        for what, statements, *most in STATEMENTS:
            if arguments.only and not any(word in what for word in arguments.only):
                continue
            try:
                line, is_missed = row(what, measure(subjects, statements, arguments.rounds, *most))
                print(line, flush=True)
                missed += is_missed
            except compare.RunFailed as reason:
                failures += 1
                print(reason, file=sys.stderr)
    print(f"\nGoals: at most {BASIC_GOAL} of the fastest BASIC's time, {LUA_GOAL} of Lua's, {NEIGHBOUR_GOAL} times a "
          f"neighbour's; {missed} missed", flush=True)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())

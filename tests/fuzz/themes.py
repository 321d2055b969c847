"""Random sessions from a seed, each about one way in which statements can get into each other's way. A theme has a
relation (relations.py) that its sessions must keep."""

import random

from hot_loops import hot_loops
from players import SHORT_FILLING

SMALL = "0 1 2 3 5".split()
NAMES = ["A", "B", "C", "X", "Y", "N%", "S!"]


class Maker:
    """Parts that the themes share; all choices come from one generator."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def chance(self, percent):
        return self.random.random() * 100 < percent

    def choose(self, *things):
        return self.random.choice(things)

    def some(self, least, most, make):
        return [make() for _ in range(self.random.randint(least, most))]

    def name(self):
        return self.choose(*NAMES)

    def value(self):
        return self.choose(*SMALL, "A", "B", "C", "A+1", "B*2", "-1", ".5", "M(1)", "X")

    def comparison(self):
        """Tails of these are assignments of their own when something starts in their middle."""
        name, other = self.name(), self.name()
        return self.choose(
            f"{name}={other}", f"{name}={self.value()}", f"{name}={other} AND {self.name()}",
            f"0+{name}={self.value()}", f"{name}={other}={self.name()}", f"({name}={other})", f"NOT {name}={other}",
            f"M({name}=B)={self.value()}", f"A$=B$", f"A$=B$+\"x\"", f"{name}<{self.value()}", f"{name}>{other}",
            f"1 OR {name}={other}", f"FNA({name})={self.value()}", f"{name}+{other}={self.value()}")

    def print_item(self):
        return self.choose('"x"', '"EQ"', "A", "B;C", "1;2;X", self.comparison(), "A$", "M(1);M(2)")

    def simple(self):
        name = self.name()
        return self.choose(
            f"{name}={self.value()}", f"{name}={name}+1", f"{name}={self.comparison()}", f"PRINT {self.print_item()}",
            f"PRINT {self.print_item()};", f"M({self.choose('1', '2', 'A=B', 'A')})={self.value()}",
            'A$=B$+"q"', "A$=\"x\"", "SWAP A,B", "READ C", "B$=A$", f"{name}={self.value()}*{self.value()}+1",
            f"PRINT {self.print_item()}")

    def rich(self):
        """A statement with much in it that is specialised."""
        condition = self.comparison()
        return self.choose(
            f"IF {condition} THEN {self.simple()}", f"IF {condition} THEN {self.simple()} ELSE {self.simple()}",
            f"IF {condition} THEN {self.simple()}:{self.simple()} ELSE {self.simple()}:{self.simple()}",
            f"PRINT {condition}", f"X={condition}", f"FOR I={condition} TO 2:{self.simple()}:NEXT",
            f"W=0:WHILE W<2 AND ({condition}) OR W<1:W=W+1:{self.simple()}:WEND", f"M({condition})={self.value()}",
            self.simple(), self.simple(), f"ON 1+({condition}) GOTO {self.target()},{self.target()}",
            f"IF {condition} THEN {self.target()} ELSE {self.target()}", f"IF {condition} GOTO {self.target()}")

    targets = ["900"]

    def target(self):
        return self.choose(*self.targets)

    def line(self, number, colons=4):
        text = ":" * self.random.randint(0, colons) if self.chance(60) else ""
        return f"{number} {text}" + ":".join(self.some(1, 2, self.rich))


# ---- Lines that are watched

def watched(maker):
    """Breakpoints, TRON's range and TRACE around loops and jumps of all kinds: set, moved and taken back between runs,
    continuations and edits, and by the program itself."""
    choose, chance = maker.choose, maker.chance
    maker.targets = ["20", "40", "60", "80", "900"]

    def line(number, text):
        return f"{number} {':' * choose(0, 0, 0, 1, 2)}{text}"

    def body():
        return ":".join(maker.some(1, 2, lambda: choose(
            maker.simple(), maker.simple(), maker.rich(), "GOSUB 200", "GOSUB 200:A=A+1", "DIM D(2):ERASE D",
            f"TRON {choose(30, 50, 70)}-{choose(70, 80, 210)}", "TROFF", "TRACE A,B", "TRACE OFF", "X=FNA(X)",
            f"IF {maker.comparison()} THEN GOSUB 200 ELSE B=B+1")))

    def count():
        return "V=V+1:IF V>15 THEN 900"

    lines = ["5 DIM M(9):DEF FNA(X)=X+1" + ":ON ERROR GOTO 300" * chance(40)]
    lines += [line(20, f"{count()}:{body()}"), line(30, choose("FOR I=1 TO 3", "FOR I=3 TO 1 STEP -1", "I=1")),
              line(40, f"{body()}"), line(50, choose("NEXT", "NEXT:A=A+1", "IF I<3 THEN I=I+1:GOTO 40")),
              line(60, choose("WHILE W<3", f"WHILE W<2 AND ({maker.comparison()}) OR W<1", "W=0")),
              line(70, f"{count()}:W=W+1:{body()}"), line(80, choose("WEND", "WEND:PRINT 8;", f"W=W+1:IF W<3 THEN {maker.target()}")),
              line(90, f"ON {choose(1, 2, 'A', 'V')} GOSUB 200,210:{body()}"), "100 PRINT A;B;X:END",
              line(200, body().replace("GOSUB 200", "N%=N%+1")), line(210, "RETURN"),
              "300 V=V+1:IF V>20 THEN 900 ELSE RESUME" + " NEXT" * chance(70), "900 PRINT V:END", "950 DATA 1,2,3,4,5,6,7"]

    def watch():
        number = choose(5, 20, 30, 40, 50, 60, 70, 80, 90, 200, 210, 300, 900)
        return choose(f"BREAK {number}", f"BREAK {number},40", f"BREAK DELETE {number}", "BREAK CLEAR", f"TRON {number}",
                      f"TRON 40-{choose(50, 70, 210)}", "TRON", "TROFF", "TRACE A,V", "TRACE OFF", f"TRACE {maker.name()}")

    lines += maker.some(0, 2, watch)
    for _ in range(maker.random.randint(1, 3)):
        lines.append(choose("RUN", "RUN", "GOTO 20", "GOSUB 200"))
        for _ in range(maker.random.randint(0, 5)):
            lines += maker.some(0, 1, watch) + ["CONT"]
        if chance(40):
            lines.append(choose(line(choose(40, 70, 95), body()), "RENUM", "V=0:W=0", "DELETE 90", "CLEAR"))
        lines += maker.some(0, 2, watch)
    return lines + ["RUN", "VARINFO FULL"]


# ---- Edits between runs

def edits(maker):
    """Something keeps a position (RETURN, NEXT, WEND, RESUME, CONT); the program is changed; the position is used."""
    choose, chance = maker.choose, maker.chance
    lines = ["DIM M(9):A=1:B=1:C=1"] * chance(30)
    taker = choose("GOSUB 100", "FOR J=1 TO 3", "WHILE V<3", "ERROR 5", "GOSUB 100:PRINT 7")
    before = ":".join(maker.some(0, 3, maker.simple))
    first = choose(10, 20)
    text = f"{before}:{taker}" if before and chance(50) else taker
    setup = "DIM M(9):DEF FNA(X)=X+1"
    if taker == "ERROR 5":
        setup += ":ON ERROR GOTO 100"
    lines += [f"5 {setup}"] * chance(80) + [f"{first} {text}"]
    if first == 10 and chance(50):
        lines.append(maker.line(20))
    if taker.startswith("FOR") or taker.startswith("WHILE"):
        lines.append(f"30 V=V+1:{choose('STOP', 'ERROR 7', 'END')}:" + choose("NEXT", "WEND"))
    else:
        lines.append(f"30 {choose('PRINT 3:', '')}END")
    lines += [f"100 {choose('STOP', 'END', 'ERROR 7', 'PRINT 1:STOP:RETURN')}", "900 PRINT 900:END",
              "950 DATA 1,2,3,4,5"]
    lines.append("RUN")
    if chance(60):
        # A line in the taker's place, run before and after the position is used.
        number = choose(first, 7)
        lines += [f"{number} {':' * choose(0, 0, 1, 1, 2, 3)}{maker.rich()}", f"A={choose(0, 1)}:B=1:C=1"]
        again, back = f"GOTO {number}", {"G": "RETURN", "F": "NEXT", "W": "WEND", "E": "RESUME"}[taker[0]]
        return lines + [again, back, again] + [back, again] * chance(50) + ["VARINFO FULL"]
    for _ in range(maker.random.randint(1, 3)):
        for _ in range(maker.random.randint(0, 2)):
            number = choose(1, 5, 7, 10, 10, 15, 20, 20, 25)
            lines.append(choose(maker.line(number), maker.line(number), f"{number} {maker.simple()}", str(number)))
        if chance(60):
            lines.append("A=1:B=1:C=1" if chance(60) else maker.simple())
        if chance(20):
            lines.append("DIM M(9)")
        again = f"GOTO {choose(10, 10, 15, 20, 20)}"
        back = choose("RETURN", "NEXT", "WEND", "RESUME", "RESUME NEXT", "CONT", "RUN")
        back = {"GOSUB": "RETURN", "FOR": "NEXT", "WHILE": "WEND", "ERROR": "RESUME"}[taker.split()[0]] if chance(
            75) else back
        lines += [again] * chance(80) + [back] + [again] * chance(90) + [back, again] * chance(30)
    return lines + ["VARINFO FULL"]


def state(maker):
    """Sessions on both sides of NEW, with direct lines, READ, runs and edits in each."""
    choose, chance = maker.choose, maker.chance

    def part():
        lines = []
        for number in maker.random.sample([10, 20, 30, 40, 50], maker.random.randint(1, 4)):
            text = choose(
                "DATA 1,2,3", "DATA 4,5,6:?1 ELSE ?22", "DATA 7,8:PRINT 1", "A=1:ELSE", "READ A:PRINT A",
                ":" * maker.random.randint(0, 5) + choose("TROFF", "ELSE", "?1", "CLEAR") + ":" + choose("ELSE", "?2"),
                "Y=0", "IF Y=0 THEN Y=1", "IF 1 THEN A=1", "IF A THEN ?1 ELSE ?2", maker.rich(), maker.rich(),
                "DATA 1,2,3,4" + ":" * maker.random.randint(0, 4) + "?1 ELSE ?22", "RESTORE:READ B:PRINT B",
                f"?1{choose(' ', ':')}ELSE ?2", "GOSUB 900", "IF A=0 THEN IF B THEN ?1 ELSE ?2")
            lines.append(f"{number} {text}")
        if chance(70):
            lines.append("900 RETURN")
        return lines

    def use():
        return choose("RUN", "RUN", "GOTO 10", "GOTO 20", "READ A:PRINT A", "READ A,B:PRINT A;B", "A=1", "RUN")

    first = part() + maker.some(1, 3, use)
    if chance(30):
        return first + part() + maker.some(1, 4, use)
    return first + part() * chance(30) + ["NEW"] + part() + maker.some(1, 4, lambda: choose(
        "READ A:PRINT A", "READ B:PRINT B", "RUN", "RUN", "PRINT A;B;Y"))


def stale(maker):
    """Lines with ELSE and jumps where another program had THEN parts before: nothing of those is known any more."""
    choose, chance = maker.choose, maker.chance

    def conditionals():
        text = choose("IF 1 THEN A=1", "IF Y=0 THEN Y=1", "IF A THEN A=1:B=2", "IF A=0 THEN B=1 ELSE C=1",
                      "IF 1 THEN ?1;",
                      "IF Y THEN IF A THEN Y=1", "IF A THEN GOSUB 900", "FOR I=1 TO 2:NEXT", "IF 1 THEN B=5 C=6",
                      maker.rich())
        return choose([f"10 {text}"], [f"10 {text}"], ["10 Y=0", f"20 {text}"], [f"10 {text}", f"20 {maker.rich()}"])

    def others():
        fill = choose(":" * maker.random.randint(0, 8), "DATA 1,2,3,4", "?1;", "B=1",
                      ":" * choose(0, 1, 2, 3, 4) + "TROFF",
                      "TROFF:TROFF", "?1;2;3;", "B=2+1")
        rest = choose("ELSE", "ELSE ?22", "ELSE B=1", "RETURN", "?1 ELSE ?2")
        return [f"10 {fill}{choose(':', ':', ' ', ':?1 ')}{rest}"]

    use = lambda: choose("RUN", "RUN", "GOTO 10", "GOTO 10")
    first = conditionals()
    lines = ["A=1"] * chance(50) + first + ["900 RETURN"] * chance(30) + [use()] + [use()] * chance(50)
    lines += ["NEW"] if chance(40) else ["20"] * (len(first) > 1)
    return lines + others() + [use(), use()]


def repeated(maker):
    """Programs whose lines are typed again while positions in them are kept; nothing is continued."""
    return [line for line in edits(maker) if line != "CONT"]


# ---- Statements side by side

def branches(maker):
    """THEN and ELSE parts with statements that no colon parts, jumps in them, and returns into them."""
    choose, chance = maker.choose, maker.chance
    maker.targets = ["100", "200", "300", "100"]

    def plain():
        name = choose("B", "C", "X")
        return choose(f"{name}={maker.value()}", f"{name}={name}+1", "PRINT 6;", "PRINT B;C;", "GOSUB 100",
                      "GOSUB 200",
                      "B=5", "GOTO 300", "IF B THEN C=C+1", "PRINT \"t\";", "SWAP B,C", "M(1)=M(1)+1", "PRINT K;",
                      "A$=A$+\"z\"", "ON K GOSUB 100,200", "ON K GOTO 300,50", "READ C", "TROFF", "ELSE PRINT 9;",
                      "REM", "RETURN", "NEXT", "B=B-1", "ON B GOSUB 200,100,200")

    def several():
        text = plain()
        for _ in range(choose(0, 1, 1, 2)):
            text += choose(" ", " ", ":", ": ") + plain()
        return text

    def conditional():
        condition = choose("K", "K=2", "K>1", "B", "C=0", "K AND 1", "1", "0")
        text = f"IF {condition} THEN {choose(several(), several(), '300')}"
        if chance(70):
            text += f" ELSE {choose(several(), several(), '300')}"
        return text

    lines = ["5 DIM M(3)", f"10 {choose('B=0', 'B=1', 'C=2', 'REM')}:FOR K=1 TO {choose(2, 3, 4)}"]
    lines.append(f"20 {conditional()}")
    if chance(40):
        lines.append(f"25 {choose(conditional(), several())}")
    lines += ["30 NEXT", f"40 PRINT B;C;X;K{choose('', ':END')}"]
    lines += ["50 END"] * chance(70)
    lines += [f"100 {choose('RETURN', 'B=B+1:RETURN', 'PRINT 7;:RETURN', 'X=X+1 RETURN')}", "200 C=C+2:RETURN",
              f"300 Q=Q+1:IF Q<4 THEN {choose('30', '20', 'NEXT', 'PRINT 3;:GOTO 30')}",
              "310 PRINT B;C;X;K;M(1);A$:END",
              "400 DATA 1,2,3,4,5,6,7,8"]
    return lines + ["RUN"] + choose([], [conditional().replace("K", "1")], ["RUN"]) + ["VARINFO FULL"]


# ---- A full token cache

def full_cache(maker):
    """Programs of many lines and jumps, which run from the execution buffer when the cache is full."""
    choose, chance = maker.choose, maker.chance
    count = maker.random.randint(4, 10)
    numbers = [9000 + 10 * i for i in range(count)]
    lines = []
    if chance(40):
        # Some lines still find room in the cache.
        lines += maker.random.sample([str(number) for number in SHORT_FILLING], 2)
    lines.append("8900 DIM M(9):DEF FNA(X)=X+1:N=0")
    for place, number in enumerate(numbers):
        later = numbers[place + 1:] + [9500]
        maker.targets = [str(choose(*later)) for _ in range(2)]
        target, other = maker.target(), maker.target()
        text = choose(
            f"N=N+1:GOTO {target}", f"IF N=0 THEN {target} ELSE {other}", f"IF N THEN {target}",
            f"GOSUB {9700 + choose(0, 10)}",
            f"ON {choose('1', '2', 'N', '3')} GOTO {target},{other}", f"ON 1+N AND 1 GOSUB 9700,9710:N=N+1",
            maker.rich(),
            f"V=5:IF V=5 THEN {target}", f"N=N+1:IF N<3 THEN GOTO {target}:PRINT 4 ELSE {other}", "PRINT 1;2;N;V",
            f"FOR I=1 TO 3:GOSUB 9700:NEXT:GOTO {target}", f"FOR I=1 TO 2:N=N+1",
            "W=0:WHILE W<3:W=W+1:GOSUB 9710:WEND",
            f"IF V THEN GOSUB 9700:PRINT N ELSE GOSUB 9710:PRINT V", "PRINT N;", f"ON ERROR GOTO 9600:N=N+FNB(1)",
            maker.simple())
        lines.append(f"{number} {text}")
    lines += ["9500 PRINT N;V;I;W;A$:Q=Q+1:IF Q<3 THEN " + str(choose(*numbers)), "9510 END", "9600 RESUME NEXT",
              f"9700 N=N+1:{choose('', 'PRINT N;:', 'V=V+N:')}RETURN", "9710 V=V+2:RETURN", "9800 DATA 1,2,3,4,5"]
    # Each run first passes the lines that fill the cache.
    return lines + choose(["RUN"], ["RUN", "GOTO 9000"], ["RUN", maker.line(9005), "RUN"])


# ---- Programs that change while they run

def merges(maker):
    """MERGE, DELETE and CHAIN in loops of direct lines and programs: what a line remembers of its targets is over."""
    choose, chance = maker.choose, maker.chance
    lines = []
    for name in "AB":
        number = choose(1, 2, 3, 15, 20, 25, 30)
        text = choose("REM", 'PRINT "W":END', "PRINT I;:NEXT", "PRINT 5", 'PRINT "Q";:RETURN', "Z=Z+1")
        lines += [f"{number} {text}", f'SAVE "{name}.BAS"', "NEW"]
    lines += [f"20 {choose('PRINT I;:NEXT', 'PRINT I;:RETURN', 'PRINT Z;:NEXT', 'Z=Z+1:NEXT')}", '25 PRINT "END":END',
              "30 PRINT 30;:" + choose("NEXT", "RETURN", "END")]
    jump = choose("GOTO 20", "GOTO 30", "IF 1 THEN 20", "IF I=1 THEN 20 ELSE 30", "GOSUB 20", "ON I GOTO 20,30",
                  "ON 1 GOTO 20", "IF I THEN GOTO 20", "IF I=3 THEN 30 ELSE 20", "ON I GOSUB 20,30")
    change = choose('MERGE CHR$(64+I)+".BAS"', 'MERGE CHR$(64+I)+".BAS"', 'MERGE "A.BAS"', "DELETE 25",
                    'IF I=2 THEN MERGE "B.BAS"')
    direct = f"FOR I=1 TO {choose(2, 2, 3)}:{change}:{jump}"
    lines += [direct] + [direct] * chance(30)
    return lines + [choose("RUN", "LIST NOWAIT", "PRINT I;Z")]


# ---- Breaks

def input_breaks(maker):
    """Escape in INPUT$, which stands in statements of every kind; "@break N KEYS" marks where."""
    choose, chance = maker.choose, maker.chance
    handled = chance(40)
    uses = [
        ('IF INPUT$(1)="y" THEN PRINT "yes" ELSE PRINT "no"', ["y", "n"]),
        ("FOR I=1 TO VAL(INPUT$(1)):PRINT I;:NEXT:PRINT", ["3", "1"]),
        ("GOTO 500+VAL(INPUT$(1))", ["1", "2"]),
        ("GOSUB 500+VAL(INPUT$(1)):PRINT 8", ["3", "4"]),
        ("KILL INPUT$(3)", ["K.1", "K.2"]),
        ("OPEN INPUT$(3) FOR OUTPUT AS 1:PRINT #1,7:CLOSE 1", ["K.1", "K.3"]),
        ('OPEN "K.4" FOR OUTPUT AS 1:PRINT #1,1:PRINT #1,INPUT$(3);"]":CLOSE 1', ["abc", "xyz"]),
        ("DIM D(VAL(INPUT$(2))):PRINT 2", ["12", "07"]),
        ("A$=INPUT$(1)+INPUT$(1):PRINT A$", ["ab", "qr"]),
        ("PRINT INPUT$(2)", ["ab", "12"]),
        ("X=VAL(INPUT$(1)):PRINT X", ["5", "7"]),
        ('WHILE INPUT$(1)<>"q":WEND:PRINT 4', ["q", "q"]),
        ("ON VAL(INPUT$(1)) GOTO 501,502", ["1", "2"]),
        ("ON VAL(INPUT$(1)) GOSUB 503,504:PRINT 5", ["1", "2"]),
        ("M(VAL(INPUT$(1)))=5:PRINT M(1);M(2)", ["1", "2"]),
        ("PRINT LEN(INPUT$(3));9", ["abc", "  x"]),
        ("MKDIR INPUT$(2)", ["DA", "DB"]),
        ("NAME \"K.1\" AS INPUT$(3)", ["K.5", "K.6"]),
        ("SAVE INPUT$(3)", ["S.1", "S.2"]),
        ("IF VAL(INPUT$(1)) THEN 501 ELSE 502", ["0", "1"]),
        ('DEF FNB(X)=X+VAL(INPUT$(1)):PRINT 3*FNB(1)', ["4", "5"]),
        ("ERASE M:DIM M(VAL(INPUT$(1))):PRINT M(0)", ["4", "3"]),
        ('MID$(B$,VAL(INPUT$(1)))="!":PRINT B$', ["1", "2"]),
        ("SWAP M(VAL(INPUT$(1))),X:PRINT X", ["1", "2"]),
        ("READ M(VAL(INPUT$(1))):PRINT M(1)", ["1", "2"]),
        ("WRITE INPUT$(2)", ["uv", "zz"]),
        ("CHDIR INPUT$(1)", ["D", "D"]),
        ("A$=INPUT$(2):IF A$=\"go\" THEN PRINT 1;A$ ELSE PRINT A$", ["go", "no"]),
        ("ERROR VAL(INPUT$(1)):PRINT 0", ["5", "6"]),
        ("B$=STR$(1)+INPUT$(1)+CHR$(65):PRINT B$", ["x", "y"]),
        ("IF 1 THEN A$=INPUT$(1):PRINT A$ ELSE PRINT 2", ["e", "f"]),
        ("RESTORE 700+VAL(INPUT$(1)):READ A:PRINT A", ["0", "0"]),
        ("LOCATE CSRLIN,VAL(INPUT$(1)):PRINT 1", ["3", "4"]),
        ("PRINT USING INPUT$(2);7", ["##", "#!"]),
        ("COLOR VAL(INPUT$(1)):COLOR 7:PRINT 1", ["3", "4"]),
        ("KILL INPUT$(1)+\".1\"", ["K", "K"]),
        ("RANDOMIZE VAL(INPUT$(2)):PRINT RND", ["12", "34"]),
    ]
    lines = ['OPEN "K.1" FOR OUTPUT AS 1:PRINT #1,"keep":CLOSE 1', 'OPEN "K.2" FOR OUTPUT AS 1:PRINT #1,"me":CLOSE 1',
             'MKDIR "D"', '10 DIM M(9):B$="abc":ON ERROR GOTO 800']
    if handled:
        lines.append("20 ON BREAK GOTO 900")
    keys = []
    for number in range(30, 30 + 10 * maker.random.randint(1, 4), 10):
        text, answers = choose(*uses)
        answer = choose(*answers)
        if chance(25):
            text = f"X=1:{text}"
        lines.append(f"{number} {text}")
        keys.append(f"@break {maker.random.randrange(len(answer))} {answer}" if chance(75) else f"@keys {answer}")
    lines += ['400 PRINT "end";X;A$:END', "501 PRINT 501:END", "502 PRINT 502:END", "503 PRINT 503:RETURN",
              "504 RETURN",
              "700 DATA 9,8,7", "800 PRINT ERL:RESUME NEXT", "900 RESUME"]
    return lines + ["RUN", *keys, "@files", "PRINT 6*7", "VARINFO"]


def poll_breaks(maker):
    """Escape at some look for a key between statements, then CONT: the program shows what it shows without."""
    choose, chance = maker.choose, maker.chance
    lines = ["5 DIM M(9):DEF FNA(X)=X+1:ON ERROR GOTO 800"]
    if chance(30):
        lines.append("6 ON BREAK GOTO 900")
    count = choose(100, 300, 700)
    body = choose(
        "IF Y>2 THEN X=X+1:A=A+2", "X=X+1", "GOSUB 500", "IF 1 THEN GOSUB 500:A=A+1", "M(1)=M(1)+I:A=A+M(1)",
        "::X=X+I",
        "FOR J=1 TO 2:X=X+J:NEXT", "W=0:WHILE W<2:W=W+1:X=X+W:WEND", "ON 1+(I AND 1) GOSUB 500,510",
        "IF X<50 THEN X=X+1",
        "IF Y=0 THEN Y=1", "A=A+1 B=B+1", "IF 1 THEN IF 1 THEN X=X+1:B=B+1", "A$=LEFT$(A$+\"x\",5)", "N=FNA(N)",
        "SWAP A,B",
        "IF I MOD 50=0 THEN ERROR 5", "IF I MOD 70=0 THEN PRINT I", "READ C:RESTORE")
    more = choose("", ":X=X+1", ":B=B+X", ":GOSUB 510")
    loop = choose(f"10 FOR I=1 TO {count}:{body}{more}:NEXT", None, None)
    if loop:
        lines.append(loop)
    else:
        lines += [f"10 I=0", f"20 I=I+1:{body}{more}", f"30 IF I<{count} THEN 20"]
        if chance(30):
            lines[-2:] = [f"20 WHILE I<{count}:I=I+1", f"25 {body}{more}", "30 WEND"]
    lines += ["400 PRINT A;B;C;X;Y;N;I;J;W;M(1);A$:END", "500 A=A+1:RETURN", "510 B=B+1:X=X+B:RETURN", "600 DATA 4",
              "800 RESUME NEXT", "900 RESUME"]
    return lines + [f"@break-at {choose(1, 1, 2, 3, 4, 5)}", "RUN", "PRINT A;B;X;Y"]


def counted_loops(maker):
    """Endless loops that count in Y the statements they execute, those with counting included."""
    choose, chance = maker.choose, maker.chance
    inner = lambda: choose(
        "Y=Y+1", "IF 1 THEN Y=Y+2", "IF Y>=0 THEN Y=Y+2", "IF 0 THEN Z=1 ELSE Y=Y+2", "GOSUB 100", ":::Y=Y+1",
        "IF 1 THEN Y=Y+3:Z=0", "IF 1 THEN Y=Y+3 Z=0", "FOR I=1 TO 3:Y=Y+2:NEXT", "Y=Y+2 Z=0", "ON 1 GOSUB 100,100",
        "IF Y>=0 THEN IF 1 THEN Y=Y+3", "IF Z THEN 400 ELSE Y=Y+2", "W=0:WHILE W<3:W=W+1:Y=Y+4:WEND", "LET Y=Y+1",
        "A$=B$:Y=Y+2", "IF 1 THEN Y=Y+1:GOSUB 100", "READ Z:RESTORE:Y=Y+3", "IF 1 THEN Y=Y+1 GOSUB 100")
    counting = (20, 22, 24)[:choose(1, 1, 2, 3)]
    lines = ["10 Y=0"] + [f"{number} {':'.join(maker.some(1, 2, inner))}" for number in counting]
    lines.append(choose("30 Y=Y+2:GOTO 20", "30 Y=Y+2:IF 1 THEN 20", "30 IF 1 THEN Y=Y+3:GOTO 20",
                        "30 Y=Y+2:ON 1 GOTO 20", "30 Y=Y+2 GOTO 20", "30 Y=Y+2:IF Y<0 THEN 400 ELSE 20",
                        "30 GOTO 20"))
    if chance(30):
        lines = ["10 Y=0", f"20 {choose('WHILE 1', 'FOR K=1 TO 2 STEP 0')}:" + ":".join(maker.some(1, 3, inner))]
        lines.append("30 WEND" if "WHILE 1" in lines[1] else "30 NEXT K")
    return lines + ["100 Y=Y+3:RETURN", "400 END", "500 DATA 0", f"@escape {choose(1, 1, 2, 3)}", "RUN", "PRINT Y"]


# ---- The specialiser's own work

def deep(maker):
    """Long and deep expressions, and chains of functions."""
    choose, chance = maker.choose, maker.chance
    kind = choose("relations", "functions", "functions", "brackets", "operators", "relations", "logic")
    if kind == "functions":
        functions = maker.random.randint(2, 25)
        brackets = maker.random.randint(1, 58)
        lines = []
        for i in range(functions):
            inner = f"FN{chr(66 + i)}(X)" if i < functions - 1 else choose("X", "X+1", "X*X")
            before = choose("", "1+", "-", "NOT ")
            lines.append(f"{10 + i} DEF FN{chr(65 + i)}(X)={'(' * brackets}{before}{inner}{')' * brackets}")
        use = choose("Y=FNA(1)", "PRINT FNA(1)", "IF FNA(1)=1 THEN PRINT 1", "Y=FNA(FNA(1))", "M(FNA(1))=1")
        lines += ["100 X=1:DIM M(9)", f"110 FOR I=1 TO 3:{use}:NEXT", "120 PRINT Y;X"]
        return lines + ["RUN", "Y=FNA(1)", "PRINT Y"]
    names = [name + choose("", "!", "#", "%", "&") for name in "AB"]
    operators = {"relations": ["<", ">", "=", "<=", "<>"], "logic": [" AND ", " OR ", " XOR ", " IMP "],
                 "operators": ["+", "-", "*", "/", "^"], "brackets": ["+", "-", "<"]}[kind]
    count = maker.random.randint(2, 55)
    text, alike = choose(*names), chance(50)
    for _ in range(count):
        text += choose(*operators) + (text[:2].rstrip("".join(operators)) if alike else choose(*names, "1", "2"))
    if kind == "brackets":
        depth = maker.random.randint(1, 50)
        text = "(" * depth + "A" + choose("<", "+", "=") + "1" + ")" * depth
        text = choose("", "-", "NOT ") * choose(1, 1, 30) + text
    use = choose(f"X={text}", f"IF {text} THEN X=X+1", f"PRINT {text}", f"M(0)={text}", f"WHILE X<0 AND {text}:WEND")
    lines = [f"10 DIM M(1):{names[0]}=1:{names[1]}=2:X=0:FOR I=1 TO 3", f"20 {use[:230]}", "30 NEXT:PRINT X;M(0)"]
    return lines + ["RUN", "PRINT X"]


# ---- Program files that fail

def failing_files(maker):
    """A statement in braces that fails where ERROR could stand, in loops, subroutines, handlers and readers."""
    choose, chance = maker.choose, maker.chance
    bad = choose("missing", "missing", "direct")
    lines = []
    if bad == "direct":
        # A file whose first line is a bare statement.
        lines += ['OPEN "BAD.BAS" FOR OUTPUT AS 1:PRINT #1,"PRINT 1":CLOSE 1']
    name = "BAD.BAS" if bad == "direct" else "NOSUCH"
    removes = choose("15-16", "10-16", "11-12", "15-")
    removed = removes if removes != "15-" else "15-16"
    statement = choose(f'CHAIN MERGE "{name}",,ALL,DELETE {removed}', f'CHAIN MERGE "{name}",,ALL,DELETE {removed}',
                       'CHAIN "NOSUCH",,ALL', f'CHAIN MERGE "{name}",,ALL', 'LOAD "NOSUCH"', 'MERGE "NOSUCH"',
                       f'CHAIN MERGE "{name}",50,ALL,DELETE {removed}')
    failing = "{" + statement + "}"
    # The lines that may go are behind the program when it fails.
    head = ["10 REM", "11 A=1", "12 REM", "15 A=A+1", "16 REM"]
    trap = ["5 ON ERROR GOTO 100"] * chance(80)
    body = choose(
        [f"40 {failing}", "50 PRINT 50", "60 PRINT 60;A"],
        [f"40 PRINT 4:{failing}:PRINT 41", "50 PRINT 50"],
        ["30 GOSUB 80", "40 PRINT 40", "50 END", f"80 {failing}", "90 PRINT 90:RETURN"],
        ["30 FOR I=1 TO 3", f"40 {failing}", "50 PRINT I;", "60 NEXT"],
        ["30 W=0:WHILE W<3:W=W+1", f"40 {failing}", "50 WEND:PRINT W"],
        ["30 READ A:PRINT A", f"40 {failing}", "50 READ A:PRINT A", "60 DATA 7,8,9"],
        ["20 DATA 7,8", "30 READ A:PRINT A", f"40 {failing}", "50 READ A:PRINT A", "60 DATA 9"],
        [f"40 IF 1 THEN {failing} ELSE PRINT 3", "50 PRINT 50"],
        ["30 FOR I=1 TO 2:GOSUB 80:NEXT", "40 PRINT 40", "50 END", "80 READ A", f"85 {failing}", "90 PRINT A:RETURN",
         "95 DATA 4,5,6"],
        ["30 ON 1 GOSUB 80", "40 PRINT 40:END", f"80 FOR J=1 TO 2:{failing}:PRINT J:NEXT:RETURN"],
    )
    tail = ["70 END", f"100 PRINT ERL;:RESUME {choose('NEXT', 'NEXT', 'NEXT', '70')}"]
    keys = {line.split()[0]: line for line in trap + head + tail + body}
    lines += [keys[number] for number in sorted(keys, key=int)]
    lines += ["RUN"] + choose([], ["RETURN"], ["NEXT"], ["READ A:PRINT A"], ["CONT"])
    return lines


def chains(maker):
    """A program that COMMON variables reach by CHAIN."""
    choose, chance = maker.choose, maker.chance
    first = ["10 " + choose("DIM A(3)", "REM", "DEFINT X-Z", "FOR I=1 TO 3", "GOSUB 20", "ON ERROR GOTO 90",
                            "WHILE 1", "DIM A(2),B(2)")]
    names = [name for name in ("P", "Q%", "R$") if chance(50)]
    values = {"P": "1.5", "Q%": "7", "R$": '"text"'}
    common = ":".join(f"{name}={values[name]}" for name in names)
    if names:
        first.append("20 COMMON " + ",".join(names) + ":" + common)
    if chance(40):
        first.append("30 READ Z1:DATA 1,2,3")
    if not names:
        first.append("20 REM")
    first += ['40 CHAIN "N.BAS"', "90 PRINT \"trap\":END"]
    second = ["10 " + choose("OPTION BASE 1", "DIM A(2)", "READ A:PRINT A", "NEXT", "RETURN", "WEND", "PRINT P;Q%;R$",
                             "X=1.5:PRINT X",
                             "PRINT A", "RESUME"), f"20 {maker.rich()}", "30 PRINT P;Q%;R$", "40 END", "50 DATA 5,6",
              "900 PRINT 900:END"]
    return first + ["@program"] + second + ["PRINT P;Q%;R$", "READ A:PRINT A"]


# ---- What statements cost

def costs(maker):
    """Loops of statements that make what others remember out of date, with few or many variables."""
    choose, chance = maker.choose, maker.chance
    turns = choose(300, 600)
    statement = lambda: choose("ERASE A:DIM A(3)", "DEF FNA(X)=X+1", "X=X+A(1)", "X=FNA(I)", "A$=STR$(I)",
                               "IF X<5 THEN X=X+1",
                               "SWAP X,Y", "ERASE A:DIM A(3):X=A(1)", "DIM Z(1):ERASE Z", "GOSUB 100", "Y=X*2-I/3",
                               "READ Q:RESTORE",
                               "Q=FNB(X,I)", "PRINT LEFT$(A$,0);", "FOR J=1 TO 2:Y=Y+J:NEXT", "ON 1 GOSUB 100",
                               "IF X=Y AND X=0 OR Q<>1 THEN X=Y")
    lines = ["10 DIM A(3):DEF FNA(X)=X*2:DEF FNB(X,Y)=X+Y*FNA(X)"]
    if chance(50):
        count = choose(300, 1500, 3000)
        lines += ['OPEN "V.BAS" FOR OUTPUT AS 1',
                  f'FOR I=1 TO {count // 20}:PRINT #1,9+I;:FOR J=1 TO 20:PRINT #1,":V"+MID$(STR$(I),2)+"X"+'
                  'MID$(STR$(J),2)+"=1";:NEXT:PRINT #1,"":NEXT',
                  "CLOSE 1"]
    body = ":".join(maker.some(1, 3, statement))
    return lines + [f"50 FOR I=1 TO {turns}:{body}:NEXT", "60 PRINT X;Y;A(1):END", "100 Y=Y+1:RETURN",
                    "200 DATA 1"] + (
        ["RUN"] if len(lines) == 1 else ['MERGE "V.BAS"', "RUN"])


# ---- Direct lines

def direct(maker):
    """Loops typed at the prompt, alone and with a program, which they enter and which leads back into them; then other
    lines, in which what is still open leads to any place."""
    choose, chance = maker.choose, maker.chance
    maker.targets = ["20", "40", "60", "900"]

    def inner():
        return choose(maker.simple(), maker.simple(), maker.rich(), "GOSUB 40", "GOTO 20", "PRINT I;", "X=X+I", "STOP", "A(I)=I",
                      "IF I=2 THEN 20 ELSE B=B+1", "IF I=2 THEN PRINT 2; ELSE PRINT 3;", "ON I GOTO 20,60", "ON I GOSUB 40,60",
                      "NEXT", "WEND", "ERASE M:DIM M(9)", "Q1=Q2+1", "CLEAR", "NEW", "END", 'MERGE "E.BAS"', "RETURN", "DEF FNA(X)=X+2",
                      "A=1/B", "RESTORE:READ C", "TROFF", "DATA 1", "PRINT CSRLIN*0+I;", "FOR J=1 TO 2", 'CHAIN "E.BAS"', "CONT")

    def typed():
        body = ":".join(maker.some(1, 3, inner))
        return choose("", "", ":", "::", "IF 1 THEN ", "PRINT 8;:", "A=5 ") + choose(
            f"FOR I=1 TO {choose(0, 2, 3, 5)}:{body}:NEXT", f"FOR I=1 TO 3:{body}:NEXT I", f"FOR I=1 TO 3:{body}",
            f"W=0:WHILE W<3:W=W+1:{body}:WEND", f"W=0:WHILE W<3:W=W+1:{body}", f"FOR I=1 TO 3:FOR J=1 TO 2:{body}:NEXT:NEXT",
            f"FOR I=3 TO 1 STEP -1:{body}:NEXT:PRINT I", body, "NEXT", "WEND", "RETURN", f"{body}:NEXT", f"{body}:WEND",
            f"IF A THEN {body} ELSE {inner()}", "CONT")

    lines = ['1 PRINT "E";:B=B+1:IF B>3 THEN END ELSE NEXT', 'SAVE "E.BAS"', "NEW"]
    lines += ["5 DIM M(9):DEF FNA(X)=X+1:A=1", f"10 {choose('REM', 'FOR I=1 TO 2', 'GOSUB 40', 'WHILE W<2')}",
              f"20 PRINT {choose('I', 'A', 'W')};:V=V+1:IF V>12 THEN END",
              f"30 {choose('NEXT', 'WEND', 'END', 'STOP', 'NEXT:PRINT 7', 'IF I<3 THEN NEXT')}", f"40 {inner()}:RETURN",
              f"60 Y=Y+1:{choose('RETURN', 'NEXT', 'WEND', 'STOP')}", "900 PRINT V:END", "950 DATA 1,2,3,4,5"]
    lines += ["DIM M(9):DEF FNA(X)=X+1:B=1"] * chance(70) + ["RUN"] * chance(30)
    for _ in range(maker.random.randint(2, 6)):
        lines.append(typed())
        lines += [choose("V=0", "15 A=A+1", "15", "DIM M(9)", "V=0:B=0", "30 NEXT")] * chance(40)
    return lines + ["VARINFO FULL"]


def shared_loops(maker):
    """Long loops that lie half in typed lines and half in the program, one after the other. What a line means has to end with
    it: the next one lies in the same place, is as long, and often differs in nothing but a name or a number."""
    choose, chance = maker.choose, maker.chance
    turns = lambda: maker.random.randint(600, 900)
    shapes = {
        "for": lambda name, step: f"FOR I=1 TO {turns()}:{name}={name}+{step}:GOTO 100",
        "back": lambda name, step: f"FOR I={turns()} TO 1 STEP -1:{name}={name}+{step}:GOTO 100",
        "called": lambda name, step: f"FOR I=1 TO {turns()}:GOSUB 200:{name}={name}+{step}:NEXT",
        "chosen": lambda name, step: f"FOR I=1 TO {turns()}:IF I AND 1 THEN {name}={name}+{step}:GOTO 100 ELSE GOTO 100",
        "while": lambda name, step: f"W=0:WHILE W<{turns()}:{name}={name}+{step}:W=W+1:GOTO 120",
        "inner": lambda name, step: f"FOR J=1 TO 3:FOR I=1 TO {turns() // 2}:{name}={name}+{step}:GOTO 100",
        "whole": lambda name, step: f"FOR I=1 TO {turns()}:{name}={name}+{step}:NEXT:GOTO 110",
        "jump": lambda name, step: f"I=0:{name}={name}+{step}:GOTO 130",
        "text": lambda name, step: f'FOR I=1 TO {turns()}:{name}={name}+{step}:A$="{choose("x", "y")}":GOTO 100',
    }
    show = "PRINT A;B;C;X;Y;N%;S!;I;A$"
    lines = ["5 A=0", f"100 {choose('NEXT', 'NEXT I', 'Y=Y+1:NEXT')}", f"110 {show}:END",
             f"120 {choose('WEND', 'X=X+1:WEND')}", f"125 {show}:END", f"130 I=I+1:X=X+I:IF I<{turns()} THEN 130", f"140 {show}:END",
             f"200 {choose('X=X+1', 'A=A+2', 'N%=N%+1', 'S!=S!*2')}:RETURN"]
    kinds = [choose(*shapes) for _ in range(choose(1, 1, 2))]
    lines += [choose("GOTO 110", "DIM M(9)", "RUN")] * chance(40)
    for _ in range(maker.random.randint(3, 6)):
        lines.append(":" * choose(0, 0, 0, 1) + shapes[choose(*kinds)](choose("A", "B", "C", "N%", "S!"), choose(*"123")))
        lines += [choose(show, "NEXT", "WEND", "150 REM", "GOTO 100", "A=0", "A$=A$", "DEFINT B", "100 NEXT", "CLEAR")] * chance(25)
    return lines + [show, "VARINFO FULL"]


# ---- Arguments that are held

def arguments(maker):
    """Statements without a specialised form, whose arguments are computed: what these are made of, and what they find,
    changes between their executions."""
    choose, chance = maker.choose, maker.chance

    def number(depth=2):
        if depth == 0 or chance(20):
            return choose("A", "B", "C", "N%", "S!", "L&", "H&&", "I", "2", "3", ".5", "M(1)", "K%(I)", "LEN(A$)", "NW1", "-I",
                          "FNZ", "1E308", "9223372036854775807")
        inner = lambda: number(depth - 1)
        return choose(f"{inner()}+{inner()}", f"{inner()}-{inner()}", f"{inner()}*{inner()}", f"{inner()}/{inner()}",
                      f"({inner()})", f"({inner()}+1)*{inner()}", f"M({inner()})", f"K%(ABS({inner()}) MOD 4)", f"{inner()} AND 7",
                      f"-{inner()}", f"NOT {inner()}", f"INT({inner()})", f"SQR({inner()})", f"FNA({inner()})",
                      f"FNT({inner()},{inner()})", f"RND*{inner()}", f"INSTR({text(1)},{text(0)})", f"LEN({text(1)})",
                      f"ASC({text(1)})", f"POINT({inner()},{inner()})+1", f"VAL({text(0)})", f"{inner()}<{inner()}",
                      f"{text(0)}={text(1)}", f"{inner()} MOD 5", f"{inner()}\\3", f"{inner()}^2", f"FRE(0)-FRE(0)")

    def text(depth=1):
        if depth == 0:
            return choose("A$", "B$", '"x"', "T$(1)", "NW$")
        return choose(f"{text(0)}+{text(0)}", f"MID$({text(0)},{number(0)},2)", f"LEFT$({text(0)},I)", f"CHR$(65+{number(0)})",
                      f"STR$({number(0)})", f"T$({number(0)})", f"FNU$({text(0)})", f"STRING$(2,{text(0)})")

    small = lambda: choose(f"({number(1)}) MOD 9", f"ABS({number(1)}) AND 7", "I*2+1", "LEN(A$)+I", "M(1)*2", "K%(I)+1")
    statement = lambda: choose(
        f"PRINT {number()};", f"PRINT {number()};{text()};{number(1)}", f"PRINT {text()};", f"PSET ({small()},{small()}),I+1",
        f"LINE ({small()},{small()})-({small()},{small()}),{small()}", f"POKE VARPTR(K%(0))+{choose('0', '2', 'I*2')},{number(1)} AND 127",
        f"LOCATE 20+{small()},5+{small()}", f"CIRCLE (30+{small()},40),{small()}+1,2", f"PRINT USING \"###.#\";{number(1)};",
        f"WRITE {number(1)},{text()}", f"MID$(A$,{small()})={text()}", f"MID$(A$,LEN(A$)-1,{small()})={text(0)}",
        f"ON {small()} GOSUB 500,510,520", f"RANDOMIZE {small()}", f"COLOR 7+({small()})*0", f"PRINT TAB({small()});",
        f"IF POINT({small()},{small()})={number(1)} THEN PRINT {number(1)} ELSE PSET ({small()},{small()}),{number(1)}",
        f"X=POINT({small()},{small()})*{number(1)}", f"T$(POINT(0,0)*0+{small()})={text()}", f"SWAP M({small()}),M(1)",
        f"RESTORE 900+0*{number(1)}:READ C", f"IF POINT(1,1)>=0 THEN X={number()}", f"M(POINT(9,9)*0+I)={number()}")
    change = lambda: choose("A=A+1", "NW1=5", 'NW$="n"', "B=0", 'A$=A$+"y"', "ERASE M:DIM M(9):M(1)=I", "N%=N%+1000", "C=C*1E200",
                            "DEF FNA(X)=X*3", "DEFINT N", "CLEAR:DIM M(9),K%(4),T$(3)", "H&&=H&&*3", "V1=1:V2=2", "L&=2000000000")
    lines = ["5 DIM M(9),K%(4),T$(3):DEF FNA(X)=X*X+1:DEF FNZ=4:DEF FNT(X,Y)=X-Y*2:DEF FNU$(X$)=X$+\"u\"",
             '6 A=1:B=2:C=.25:N%=3:S!=1.5:L&=70000:H&&=5:A$="abc":B$="q":T$(1)="t":M(1)=3:K%(2)=6',
             "7 " + choose("ON ERROR GOTO 800", "ON ERROR GOTO 800", "REM")]
    body = ":".join(maker.some(1, 3, statement))
    lines += [f"10 FOR I=1 TO {choose(2, 3, 4, 6)}", f"20 {body}"]
    lines += [f"30 {':'.join(maker.some(1, 2, statement))}"] * chance(50)
    lines += [f"40 {choose('', 'IF I=3 THEN ')}{change()}"] * chance(60)
    lines += ["50 NEXT", "60 PRINT A$;T$(1);RND;FRE(0);POINT(3,3);POINT(5,5):END", "500 PRINT 5;:RETURN", "510 Q=Q+1:RETURN",
              "520 RETURN", "800 E=E+1:IF E<9 THEN RESUME NEXT ELSE END", "900 DATA 1,2,3"]
    lines += ["RUN"]
    if chance(50):
        lines += [change().split(":")[0], "GOTO 10", "VARINFO FULL"]
    return lines + ["RUN"] * chance(30)


THEMES = {
    "edits": ("images", edits), "repeated": ("repeated", repeated), "state": ("fresh", state),
    "stale": ("images", stale), "watched": ("images", watched),
    "branches": ("images", branches), "full cache": ("full cache", full_cache), "merges": ("computed targets", merges),
    "input breaks": ("interrupted", input_breaks), "poll breaks": ("interrupted", poll_breaks),
    "counted loops": ("bound", counted_loops), "deep": ("images", deep), "hot loops": ("images", hot_loops),
    "failing files": ("fails like ERROR", failing_files), "chains": ("chained", chains),
    "arguments": ("images", arguments), "direct": ("images", direct),
    "shared loops": ("images", shared_loops), "costs": ("costs", costs),
}


def make_session(theme, seed):
    """The session's lines; the same theme and seed always give the same."""
    return [line[:250] for line in THEMES[theme][1](Maker(f"{theme} {seed}"))]

"""Random BASIC programs from a seed: assignments, expressions of all types, conditions, loops, subroutines and
errors, which the program reports and passes over. Every program ends by itself, prints its variables and saves the
used parts of the data arena to VARIABLES.BIN, ARRAYS.BIN and STRINGS.BIN.
"""

import random

NUMBERS = ["A", "B", "C%", "D%", "E&", "F&", "G!", "H!", "I", "J", "K&&", "L#", "M!", "X"]
STRINGS = ["S$", "T$", "U$"]
ARRAYS = [("P", 1), ("Q%", 1), ("R&", 2), ("V!", 1), ("W", 2), ("Z&&", 1)]  # name, dimensions
LITERALS = (
    "0 1 2 3 5 7 9 10 .1 .5 1.5 .25 2.5 3.7 100 32767 40000 123456789 0.0001 1E3 1E20 1E38! -1 1# 2! 5% "
    "70000& 2147483647& 5000000000&& 9223372036854775807&& &H10 &HFF "
    "9007199254740991 9007199254740992# 9007199254740993&&"
).split()
TEXT_LITERALS = ['"abc"', '"X"', '""', '"hello world"']
NUMBER_TEXTS = ['"12"', '" -3.5x"', '"1E3"', '"&H1F"', '"1E400"', '"12D1"', '".5"', '""']
COUNTS = ["0", "1", "3", "I", "C%", "-1"]
RELATIONS = ["=", "<", ">", "<=", ">=", "<>"]
LOOP_VARIABLES = ["I", "J", "C%", "E&", "G!", "K&&"]
DRAWS = ["RND", "RND*9", "INT(RND*6)", "RND(1)", "RND(0)", "RND(-C%)", "FNR(6)", "RND+RND", "RND<RND", "RND>.5"]
# A name and what makes it overflow in a few turns.
GROWING = [("A", "*1E60"), ("G!", "*1E9!"), ("C%", "+9999"), ("E&", "*700&"), ("K&&", "*70000&&"), ("L#", "*L#+1E9"),
           ("F&", "-999999999"), ("D%", "-D%*3-1"), ("K&&", "-4611686018427387904&&"), ("H!", "/.0000001")]
STEPS = ["", " STEP 2", " STEP .5", " STEP -1", " STEP 3"]
# Arrays that go and come back, some of another size, at the end of the table of variables.
PASSING_ARRAYS = [
    "ERASE Q%: DIM Q%(5)", "ERASE P: DIM P(5)", "ERASE P: DIM P(J AND 7)", "ERASE N$,V!: DIM N$(5),V!(6)",
    "ERASE W: DIM W(4,5)", "ERASE V!,P: DIM P(5),V!(5)",
]


class ProgramMaker:
    """Makes one program; all choices come from its seed. `depth` bounds how deeply an expression nests."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.targets = [8000]  # lines behind the one being made; some do not exist

    def pick(self, weighted):
        """Calls one of the (weight, function) pairs."""
        weights = [weight for weight, _ in weighted]
        return self.random.choices([function for _, function in weighted], weights)[0]()

    # ---- Expressions

    def leaf(self):
        return self.random.choice([self.random.choice(LITERALS)] + [self.random.choice(NUMBERS) for _ in range(3)])

    def number(self, depth):
        if depth <= 0:
            return self.leaf()
        choose, inner = self.random.choice, lambda: self.number(depth - 1)
        return self.pick([
            (30, self.leaf),
            (32, lambda: inner() + choose(["+", "-", "*", "+", "-", "*", "/", "\\", " MOD "]) + inner()),
            (6, lambda: f"({inner()})"),
            (4, lambda: "-" + inner()),
            (2, lambda: inner() + "^" + choose(["2", "3", ".5", "-1", "0"])),
            (6, lambda: inner() + choose([" AND ", " OR ", " XOR ", " EQV ", " IMP "]) + inner()),
            (2, lambda: "NOT " + inner()),
            (5, lambda: f"({self.relation(depth - 1)})"),
            (6, lambda: self.element(depth)),
            (3, lambda: f"{choose(['INT', 'ABS', 'SGN', 'FIX', 'CINT', 'SQR', 'SIN'])}({inner()})"),
            (2, lambda: f"{choose(['FNA', 'FNC', 'FND%', 'FNG!', 'FNK&&', 'FNH'])}({inner()})"),
            (1, lambda: choose([f"FNL({self.text(depth - 1)})", f"FNM%({self.text(0)},{inner()})", "FNQ"])),
            (1, lambda: f"FNB({inner()},{inner()})"),
            (2, lambda: f"{choose(['LEN', 'ASC'])}({self.text(depth - 1)})"),
            (2, lambda: f"INSTR({choose(['', '', self.number(0) + ','])}{self.text(depth - 1)},{self.text(0)})"),
            (1, lambda: f"VAL({choose([self.text(depth - 1), self.random.choice(NUMBER_TEXTS)])})"),
            (4, lambda: choose(DRAWS)),
            (2, lambda: choose(["ERR", "ERL", "CSRLIN", "POS(0)", "FRE(0)", "PEEK(FREETOP)", "PEEK16(VARPTR(B))"])),
            (2, lambda: f"{choose(['CDBL', 'CSNG', 'RND'])}({inner()})"),
            (1, lambda: f"{choose(['CVI', 'CVS', 'CVD'])}({self.text(0)})"),
        ])

    def subscript(self, depth):
        return self.pick([
            (50, lambda: self.random.choice("01234")),
            (30, lambda: self.random.choice(["I", "J", "C%"])),
            (20, lambda: self.number(depth - 1)),
        ])

    def element(self, depth):
        name, dimensions = self.random.choice(ARRAYS)
        return f"{name}({','.join(self.subscript(depth - 1) for _ in range(dimensions))})"

    def text(self, depth):
        plain = lambda: self.random.choice(STRINGS + TEXT_LITERALS)
        if depth <= 0:
            return plain()
        inner = lambda: self.text(depth - 1)
        length = lambda: self.random.choice(["", "," + self.number(0)])
        return self.pick([
            (50, plain),
            (20, lambda: inner() + "+" + inner()),
            (10, lambda: f"MID$({inner()},{self.number(0)}{length()})"),
            (10, lambda: f"{self.random.choice(['LEFT$', 'RIGHT$'])}({inner()},{self.number(0)})"),
            (5, lambda: f"CHR$(65+{self.random.choice('12I')})"),
            (4, lambda: f"{self.random.choice(['STR$', 'STR$', 'HEX$', 'OCT$'])}({self.number(1)})"),
            (3, lambda: f"{self.random.choice(['UCASE$', 'LCASE$'])}({inner()})"),
            (2, lambda: f"SPACE$({self.random.choice(COUNTS)})"),
            (2, lambda: f"STRING$({self.random.choice(COUNTS)},{self.pick([(1, inner), (1, lambda: '45')])})"),
            (5, lambda: f"N$({self.subscript(1)})"),
            (2, lambda: f"FNT$({inner()},{self.number(0)})"),
        ])

    def relation(self, depth):
        sides = self.pick([(70, lambda: self.number), (20, lambda: self.text), (10, lambda: self.number_of_text)])
        return sides(depth - 1) + self.random.choice(RELATIONS) + sides(depth - 1)

    def number_of_text(self, depth):
        """A number that takes string space; some are too large for a double."""
        return self.random.choice([
            f"LEN({self.text(depth)}+T$)", f"ASC(MID$({self.text(0)},{self.random.choice(COUNTS)}))",
            "(FREETOP AND 255)", "(FRE(0) AND 255)",  # what those beside it have taken
            f"VAL({self.random.choice(NUMBER_TEXTS)}+S$)", f"(LEN(STR$({self.number(0)}))*9007199254740993&&)",
        ])

    # ---- Statements

    def conditional(self):
        condition = self.pick([(80, lambda: self.relation(3)), (20, lambda: self.number(2))])
        more = ":" + self.statement(0) if self.random.random() < 0.3 else ""
        otherwise = "".join(" ELSE " + self.branch() for chance in (0.5, 0.05) if self.random.random() < chance)
        return f"IF {condition} THEN {self.branch()}{more}{otherwise}"

    def branch(self):
        """What stands behind THEN or ELSE. Line numbers are further on, so that every program ends."""
        return self.pick([
            (75, lambda: self.statement(0)),
            (8, lambda: str(self.random.choice(self.targets))),
            (3, lambda: f"GOTO {self.random.choice(self.targets)}"),
            (6, lambda: f"IF {self.relation(1)} THEN {self.statement(0)}"),
            (2, lambda: "RETURN"),
            (2, lambda: "WEND"),
            (2, lambda: ""),
        ])

    def loop(self):
        """FOR with bounds of any kind; when they are far apart, NEXT stands behind a condition that ends it."""
        name = self.random.choice(LOOP_VARIABLES)
        step = self.random.choice(STEPS)
        if self.random.random() < 0.5:
            # No statement assigns to these.
            counter = self.random.choice(["T3", "T3%", "T3&", "T3!", "T3&&"])
            start = self.random.choice(["0", "1", "2.5", "-1", "SGN(C%)"])
            # An integer would stay at -1 for ever, since -0.5 is rounded away from zero.
            if step == " STEP .5":
                start = start.replace("-1", "0").replace("SGN(C%)", "ABS(SGN(C%))")
            return f"FOR {counter}={start} TO 4{step.replace('-1', '1')}: {self.statement(0)}: NEXT"
        return (f"T1=0: FOR {name}={self.number(1)} TO {self.number(1)}{step}: "
                f"T1=T1+1: {self.statement(0)}: IF T1<20 THEN NEXT {name}")

    def hot_text(self, counter):
        """What native code does with texts, and what it calls: some of it fails at a turn that is not the first."""
        choose, text = self.random.choice, self.random.choice(STRINGS)
        return choose([
            f"{text}={text}+{self.text(1)}:IF LEN({text})>200 THEN {text}=MID$({text},{counter},9)",
            f"{text}=MID$({self.text(1)},{counter},{choose('0123')})+CHR$({choose(['65', '250', '-3'])}+{counter})",
            f"N$({choose([counter, counter + ' MOD 6'])})={self.text(2)}",
            "IF N$(I)<N$(J) THEN SWAP N$(I),N$(J)", f"IF {self.text(1)}{choose(RELATIONS)}{self.text(1)} THEN X=X+1",
            f"IF MID$({text},{counter},1)=\"{choose('abxX')}\" THEN B=B+1 ELSE {text}={self.text(2)}",
            self.swap(), f"SWAP N$({counter} AND {choose('37')}),{text}", f"SWAP P({counter} MOD 6),A",
            self.read() + f":IF {counter} MOD 5=0 THEN RESTORE", f"READ N$({counter} MOD 6)",
            f"ON {counter} MOD 4 GOSUB 9000,9100,9000", f"ON {self.number(1)} GOSUB 9100,9000",
            f"ON {counter} GOTO 8000,8010,8010",
            f"X=X+LEN({text})*ASC({self.text(0)})+INSTR({text},\"a\")", f"A={choose(DRAWS)}+{counter}",
            f"P(INT(RND*6))={choose(['RND', self.number(1)])}",
            f"Q%(LEN({self.text(1)}))={choose(['FRE(0)', counter])}",
            f"X=FNL({text})+FNM%({text},{counter})+FNQ", f"{text}=FNT$({self.text(1)},{counter})",
            f"G!=FNG!({counter})+FND%({counter}):K&&=FNK&&({counter})+FNH(X)",
            f"X=PEEK(FREETOP)+PEEK16(VARPTR(B))+POS(0)+VAL(STR$({counter}))", f"IF RND>.5 THEN {text}={self.text(1)}",
        ])

    def hot_loop(self):
        """A loop of many turns over what native code is made for: sums, elements in and out of bounds, overflow."""
        choose = self.random.choice
        name, growth = choose(GROWING)
        counter = choose(["T4", "T4%", "T4&", "T4!", "T4&&"])
        body = self.hot_text(counter) if self.random.random() < 0.5 else choose([
            f"{name}={name}{growth}", f"{name}={self.number(2)}", f"P(T4 AND 7)=P({choose(['I', 'J', 'T4 AND 3'])})+{self.number(1)}",
            f"Q%({counter})={self.number(1)}", f"W({choose('012I')},{counter} MOD 6)={self.element(1)}+{name}",
            f"IF {self.relation(2)} THEN {name}={name}+1 ELSE J={self.number(1)}", "GOSUB 9100",
            self.at_the_edge(counter), self.at_the_edge(counter), f"IF {self.relation(1)} THEN {name}=0", f"V!({self.subscript(1)})=V!({self.subscript(1)})*3+{name}",
        ])
        # A handler that resumes, or a RETURN or WEND among the statements, may keep control in the loop.
        body += ":T6=T6+1:ON -(T6>700) GOTO 8000"
        more = choose(["", f":{self.statement(0)}", f":{choose(NUMBERS)}={self.number(2)}"])
        kind = self.random.randint(0, 2)
        if kind == 0:
            return f"FOR {counter}=0 TO {choose([6, 20, 60])}:{body}{more}:NEXT {choose(['', counter])}"
        if kind == 1:
            limit = choose(["6", "20", "60", "LEN(S$)+5", "LEN(S$+T$)+9", "9+RND*9"])
            return f"{counter}=0:WHILE {counter}<{limit}:{counter}={counter}+1:{body}{more}:WEND"
        return f"FOR T5=1 TO 3:FOR {counter}=T5 TO {choose([3, 9])}:{body}:NEXT{more}:NEXT"

    def at_the_edge(self, counter):
        """A loop of which one turn leaves the range of 64 bits: there are no more."""
        turn, name = self.random.choice("1357"), self.random.choice(["K&&", "Z&&(I AND 3)", "L#", "X", "E&", "C%"])
        top = "9223372036854775807&&"
        least = f"(-{top}-1+ABS({turn}-CINT({counter})))"
        whole = self.random.choice([
            f"{top}-{turn}+CINT({counter})", f"-{top}-1+{turn}-CINT({counter})", f"-{least}", f"{least}\\-1", f"{least} MOD -1",
            f"{least}*-1", f"ABS{least}", f"0-{least}", f"CINT({counter})*3074457345618258603&&", f"{least}+{self.number(1)}",
            f"1\\(CINT({counter})-{turn})", f"9223372036854765568#*1+CINT({counter})*1024",
        ])
        return self.random.choice([
            f"{name}={whole}", f"{name}={whole}", f"IF {whole}<{self.number(1)} THEN X=X+1 ELSE B=B+1",
            f"K&&={top}-{turn}:FOR T7=1 TO 9:K&&=K&&{self.random.choice(['+1', '*3&&', '-&HFFFF', '+K&&'])}:NEXT",
            f"FOR K&&={top}-{turn} TO {top}:X=X+1:NEXT",
        ])

    def statement(self, nesting=1):
        simple = [
            (35, lambda: self.random.choice(["", "", "LET "]) + f"{self.random.choice(NUMBERS)}={self.number(3)}"),
            (10, lambda: f"{self.element(2)}={self.number(3)}"),
            (8, lambda: f"{self.random.choice(STRINGS)}={self.text(3)}"),
            (3, lambda: f"N$({self.subscript(1)})={self.text(2)}"),
            (3, lambda: f"MID$({self.random.choice(STRINGS + ['N$(I)'])},{self.number(0)}"
                        f"{self.random.choice(['', ',' + self.number(0)])})={self.text(2)}"),
            (7, lambda: f"PRINT {self.pick([(1, lambda: self.number(2)), (1, lambda: self.text(2))])}"
                        + self.random.choice(["", ";", ","])),
            (4, self.swap),
            (4, lambda: "GOSUB 9000"),
            (2, lambda: "GOSUB 9100"),
            (3, self.read),
            (1, lambda: "RESTORE"),
            (4, lambda: self.random.choice(PASSING_ARRAYS)),
            (2, lambda: "PRINT FRE(0)"),
            (1, lambda: f"DEF FNA(X)=X*2+{self.number(1)}"),
            (2, lambda: "PRINT"),
        ]
        nested = [
            (12, self.conditional),
            (6, self.loop),
            (6, self.hot_loop),
            (3, lambda: f"T2=0: WHILE T2<3: T2=T2+1: {self.statement(0)}: WEND"),
            (1, lambda: f"T2=0: WHILE T2<RND*9+LEN(STR$(T2)): T2=T2+3: {self.statement(0)}: WEND"),
        ]
        return self.pick(simple + (nested if nesting else []))

    def swap(self):
        """Two places, mostly of one type; elements may be out of range."""
        if self.random.random() < 0.1:
            return f"SWAP {self.random.choice(NUMBERS + STRINGS)},{self.random.choice(NUMBERS + STRINGS)}"
        text, real = lambda: f"N$({self.subscript(1)})", lambda: f"P({self.subscript(1)})"
        return self.random.choice([
            f"SWAP A,{self.random.choice('BIJX')}", "SWAP S$,T$", "SWAP C%,D%", "SWAP E&,F&", "SWAP G!,H!",
            f"SWAP {text()},{text()}", f"SWAP U$,{text()}", f"SWAP {real()},{real()}", f"SWAP {real()},B",
            f"SWAP Q%({self.subscript(1)}),C%", f"SWAP R&({self.subscript(1)},1),F&",
        ])

    def read(self):
        element = lambda: self.random.choice([f"N$({self.subscript(1)})", self.element(1)])
        place = lambda: self.random.choice(NUMBERS + STRINGS)
        return "READ " + self.pick([
            (4, place), (3, element), (2, lambda: place() + "," + place()), (1, lambda: place() + "," + element()),
        ])

    # ---- The program

    def program(self):
        lines = [
            "1 ON ERROR GOTO 9500",
            "2 DIM P(5),Q%(5),R&(4,4),V!(5),W(4,4),Z&&(5),N$(5)",
            "3 DEF FNA(X)=X*2+1: DEF FNB(X,Y%)=X/2+Y%: DEF FNC(M!)=FNA(M!)+1: DEF FNR(X)=INT(RND*X)+1",
            "4 DEF FND%(X%)=X%*3: DEF FNG!(X!)=X!/3: DEF FNK&&(X&&)=X&&*X&&-1: DEF FNH(X)=X+LEN(S$)+RND",
            "5 DEF FNL(T$)=LEN(T$+U$): DEF FNM%(T$,X%)=ASC(T$)+X%: DEF FNQ=RND+A: DEF FNT$(T$,X)=MID$(T$,X)+S$",
            "6 CNT=0: Y$=STRING$(3,45)",  # so that some string space is in use
        ]
        count = self.random.randint(5, 25)
        for number in range(10, 10 + 10 * count, 10):
            self.targets = [number + 10, number + 20, number + 30, number + 15, 8000]
            second = ":" + self.statement() if self.random.random() < 0.25 else ""
            lines.append(f"{number} {self.statement()}{second}")
        if self.random.random() < 0.6:
            target = 10 * self.random.randint(1, count)
            lines.append(f"{10 + 10 * count} CNT=CNT+1: IF CNT<4 THEN {target}")
        return "\n".join(lines + ENDING) + "\n"


ENDING = [
    "8000 PRINT A;B;C%;D%;E&;F&;G!;H!;I;J;K&&;L#;M!;X;RND: PRINT S$;\"|\";T$;\"|\";U$",
    "8010 PRINT FRE(0): VARINFO FULL",
    # The table has 4096 entries of 64 bytes; a program here has fewer than 128 variables.
    '8020 BSAVE "VARIABLES.BIN",KORVANEADR("VARTABLE"),8192',
    '8025 BSAVE "ARRAYS.BIN",KORVANEADR("VARTABLE")+262144,KORVANEADR("FREEBOT")-KORVANEADR("VARTABLE")-262144',
    '8030 BSAVE "STRINGS.BIN",KORVANEADR("FREETOP"),KORVANEADR("HIMEM")-KORVANEADR("FREETOP")',
    "8040 END",
    "9000 A=A+1: RETURN",
    "9100 FOR II=1 TO 3: B=B+II: NEXT: RETURN",
    '9200 DATA 1,2.5,"x",4E3,70000,-5,abc,9: DATA "two words",, 3 ,-0',
    '9210 DATA 12,1E39,&HFF,7!,9007199254740991,-9007199254740993,9007199254740992',
    "9500 ECNT=ECNT+1: IF ECNT=31 THEN RESUME 8000",
    '9510 PRINT "E";ERR;ERL: RESUME NEXT',
]

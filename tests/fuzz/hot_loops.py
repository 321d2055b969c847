"""The theme "hot loops": loops of what native code is made for, and every way out of it. Numbers of all types grow until
they overflow or leave the bounds of an array; texts are cut, joined, compared and swapped; arrays come and go, functions
are defined anew and handlers resume while the loops run; the program is broken off, looked at, edited and gone on with."""

SUFFIXES = ["", "#", "!", "%", "&", "&&"]
# A value from which a few doublings or squarings overflow, for each type.
LARGE = {"": "1E300", "#": "1E300#", "!": "1E30!", "%": "30000", "&": "2000000000&", "&&": "9000000000000000000&&"}
ARRAYS = [("M", 1), ("M%", 1), ("M&", 1), ("M!", 1), ("M&&", 1), ("N", 2), ("N%", 2), ("N&", 2)]
# The largest of each integer type. What takes a step beyond it, or beyond the smallest, at some turn: of the operators that
# are computed in 64 bits a product, sum or difference becomes a real one there, and the others are errors.
TOPS = {"%": "32767", "&": "2147483647&", "&&": "9223372036854775807&&"}
BOUND = 6  # of each dimension


class Loops:
    """Makes the parts of one program."""

    def __init__(self, maker):
        self.maker, self.choose, self.chance = maker, maker.choose, maker.chance
        self.kinds = [self.choose(*SUFFIXES) for _ in range(self.choose(1, 2, 3))]
        self.growing = self.chance(50)

    def suffix(self):
        return self.choose(*self.kinds)

    def variable(self):
        return self.choose(*"ABC") + self.suffix()

    def literal(self):
        return self.choose("0", "1", "2", "3", "7", "-1", ".5", "2.5", "1.75", "100", "-32768", "32767", "65536",
                           "4294967296&&", "1E10", "&HFF", "3%", "5&", "2!", LARGE[self.suffix()] if self.growing else "4")

    def leaf(self):
        return self.choose(self.variable(), self.variable(), self.variable(), "I", "J", self.literal(), self.literal(),
                           self.element(), self.called() if self.chance(50) else "A")

    def text(self):
        number = self.choose("I", "J", "2", "0", "A", "B%", "J-2")
        return self.choose("S$", "T$", "U$", f"P$({number})", '"abc"', 'S$+"x"', f"MID$(S$,{number},2)", f"LEFT$(T$,{number})",
                           f"RIGHT$(S$,{number})", "CHR$(65+I)", "STR$(J)", "FND$(T$)", "T$+P$(J)+U$")

    def called(self):
        """A number that native code has a function for, or a step."""
        return self.choose("RND", "RND(1)", "INT(RND*6)", "PEEK(VARPTR(A))", f"LEN({self.text()})", f"ASC({self.text()})",
                           f'INSTR({self.text()},"x")', "VAL(STR$(I))", "ERR", "FNC%(B)", f"FNE!(A,{self.text()})", "FNG",
                           'CVI(S$+"ab")')

    def subscript(self):
        return self.choose("I", "J", "1", "0", str(BOUND), "I AND 3", "I MOD 5", "A%", "J-1", "I+1", "K",
                           str(BOUND + 1) if self.chance(10) else "2", "-1" if self.chance(10) else "3",
                           f"{BOUND}.5" if self.chance(10) else ".5", "B&&" if self.chance(20) else "I")

    def element(self):
        name, dimensions = self.choose(*ARRAYS)
        return f"{name}({','.join(self.subscript() for _ in range(dimensions))})"

    def number(self, depth=2):
        if depth == 0 or self.chance(25):
            return self.leaf()
        left, right = self.number(depth - 1), self.number(depth - 1)
        return self.choose(
            f"{left}+{right}", f"{left}-{right}", f"{left}*{right}", f"{left}/{right}", f"{left}\\{right}",
            f"{left} MOD {right}", f"({left}+{right})*{self.leaf()}", f"{self.leaf()}/({left}*{right})", f"-{left}", f"{left} AND {right}",
            f"{left} OR {right}", f"{left} XOR {right}", f"NOT {left}", f"({self.condition(0)})", f"{left}^2",
            f"{self.function()}({left})", f"{left}+{self.literal()}", f"{left}*{self.literal()}", f"FNA({left})",
            f"FNB({left},{self.leaf()})")

    def function(self):
        return self.choose("INT", "ABS", "SGN", "FIX", "CINT", "SQR", "SIN", "COS", "ATN", "EXP", "LOG", "CSNG", "CDBL")

    def condition(self, depth=1):
        sides = [self.number(depth), self.choose("=", "<>", "<", ">", "<=", ">="), self.number(depth)]
        more = self.choose("", "", " AND ", " OR ")
        if self.chance(15):
            return f"{self.text()}{sides[1]}{self.text()}"
        return "".join(sides) + (more + self.condition(0) if more else "")

    def assignment(self):
        target = self.element() if self.chance(30) else self.variable()
        if self.chance(30):
            return f"{target}={target}{self.choose('+', '*', '-')}{self.leaf()}"
        return f"{'LET ' * self.chance(5)}{target}={self.number()}"

    def at_the_edge(self):
        """N&& counts the turns; at the one that is drawn an integer leaves its range."""
        suffix = self.choose("%", "&", "&&", "&&", "&&")
        turn, top = self.choose("1", "2", "5", "9", "20"), TOPS[suffix]
        below, above = f"{top}-{turn}+N&&", f"-{top}-1+{turn}-N&&"
        least = f"(-{top}-1+ABS({turn}-N&&))"  # at that turn the smallest, before and after it a larger one
        whole = self.choose(
            below, above, f"-{least}", f"{least}\\-1", f"{least} MOD -1", f"{least}*-1", f"ABS{least}", f"0-{least}", f"{least}-1",
            f"{below}-({above})", f"N&&*{self.choose('922337203685477581&&', '4611686018427387904&&', '-3037000500&&*3037000500&&')}",
            f"N&&*{top}", f"{self.choose('9223372036854765568#', '-9223372036854765568#')}*1+N&&*{self.choose('1024', '-1024')}",
            f"1\\(N&&-{turn})", f"7 MOD (N&&-{turn})", f"({below}) AND {self.literal()}", f"NOT ({above})")
        use = self.choose(
            f"{self.choose(*'ABC')}{suffix}={whole}", f"{self.choose('X', 'A!', 'B#', self.variable(), self.element())}={whole}",
            f"IF {whole}{self.choose('<', '=', '>=')}{self.choose('0', self.literal(), top)} THEN X=X+1 ELSE X=X-1",
            f"ON {whole} GOSUB 500,520", f"M&&(J AND 3)={whole}", f"A=FNA({whole})")
        growing, shrunk = self.real_edge(turn)
        real = f"IF {growing}{self.choose('<', '=', '>=')}{self.choose('0', shrunk)} THEN X=X+1 ELSE X=X-1"
        use = self.choose(use, use, use, use, real, f"{self.choose('X', 'A!', 'B#', 'C&', self.element())}={self.choose(growing, shrunk)}",
                          f"IF {growing} THEN X=X+1", f"FOR N#={growing} TO {shrunk}:X=X+1:NEXT", f"M(J AND 3)={shrunk}")
        counted = self.choose(f"N&&=T:{use}", f"N&&=N&&+1:{use}", f"N&&=T:{use}")
        return self.choose(
            counted, counted, counted,
            f"FOR N{suffix}={top}-{self.choose(0, 2)} TO {top}{self.choose('', ' STEP 2')}:X=X+1:NEXT",
            # One less than the smallest of 64 bits would be rounded to it again, for ever.
            f"FOR N{suffix}=-{top}+4095 TO -{top}-1 STEP -4096:X=X+1:NEXT")

    def real_edge(self, turn):
        """A real number that leaves its range at that turn, and what would be a small one again if it were not looked at."""
        growing = self.choose(f"1E155*10^(152+N&&-{turn})", f"-1E300*N&&*(1.8E8/{turn})", f"1E30!*N&&*(3.4E8!/{turn})",
                              f"SQR({turn}-N&&)", f"LOG({turn}-N&&)", f"EXP(709.78+(N&&-{turn})*.01)")
        return growing, self.choose(f"1/({growing})", f"SGN({growing})", f"ATN({growing})", f"({growing})^-1", f"({growing})^0",
                                    f"2/(1+({growing}))*3", f"({growing})-({growing})", f"EXP(-({growing}))")

    def statement(self, nested=True):
        """One statement, or a few that belong together."""
        plain = [
            *[self.assignment] * 12, *[self.at_the_edge] * 2, lambda: "GOSUB 500", lambda: "GOSUB 520", lambda: f"ON 1+(I AND 1) GOSUB 500,520",
            lambda: f"SWAP A{self.kinds[0]},B{self.kinds[0]}", lambda: "READ D:RESTORE",
            lambda: self.choose('S$=S$+"x"', "T$=LEFT$(S$,3)", "U$=S$", "SWAP S$,T$", 'S$="abc"'),
            lambda: f"{self.choose('S$', 'T$', 'P$(I)', 'P$(I AND 3)')}={self.text()}"
                    ':IF LEN(S$+T$)>99 THEN S$="":T$=S$',
            lambda: self.choose("IF P$(I)<P$(J) THEN SWAP P$(I),P$(J)", f"SWAP P$({self.subscript()}),U$",
                                "READ P$(J):RESTORE",
                                f"READ {self.variable()}", f"ON {self.leaf()} GOSUB 500,520",
                                f"SWAP M({self.subscript()}),M(J)", f"{self.variable()}={self.called()}"),
            lambda: self.choose("ERASE M%:DIM M%(6)", "DIM L(2):ERASE L", f"DEF FNA(X)=X+{self.literal()}", "CN=CN+1",
                                f"Z{self.choose('1', '2', '3')}={self.literal()}", "PRINT A;", "X=FRE(0)",
                                f"ERROR {self.choose(5, 77)}"),
        ]
        inner = [
            lambda: f"IF {self.condition()} THEN {self.statement(False)}",
            lambda: f"IF {self.condition()} THEN {self.statement(False)} ELSE {self.statement(False)}",
            lambda: f"IF {self.condition()} THEN {self.choose(200, 210, 220)}",
            lambda: f"IF {self.condition()} GOTO {self.choose(200, 210, 220)}",
            lambda: f"FOR K=1 TO {self.choose('3', 'I', '4 STEP 2', '1 STEP -1', '.3 STEP .1')}:{self.statement(False)}:NEXT",
            lambda: f"W=0:WHILE W<3 AND {self.condition(0)}:W=W+1:{self.statement(False)}:WEND",
            lambda: f"IF {self.condition(0)} THEN IF {self.condition(0)} THEN {self.statement(False)}",
        ]
        return self.choose(*plain, *(inner if nested else []))()

    def lines(self):
        """A loop from line 100 to 220 that ends: T counts its turns."""
        turns = self.choose(3, 8, 12, 30)
        kind = self.choose("for", "while", "goto")
        start, step = self.choose(("1", ""), ("0", ""), (str(turns), " STEP -1"), ("0", " STEP .5"), ("-3", ""))
        end = "1" if "-1" in step else self.choose(str(turns), f"{turns}.5")
        counter = "I" + (self.choose(*SUFFIXES) if self.chance(40) else "")
        heads = {"for": f"FOR {counter}={start} TO {end}{step}", "while": f"I=0:WHILE I<{turns}", "goto": "I=0"}
        tails = {"for": self.choose("NEXT", f"NEXT {counter}"), "while": "I=I+1:WEND", "goto": f"I=I+1:IF I<{turns} THEN 110"}
        body = [f"{number} {':'.join(self.maker.some(1, 2, self.statement))}"
                for number in (120, 130, 140, 150)[:self.choose(1, 2, 4)]]
        if self.chance(40):
            body = ["115 FOR J=1 TO " + self.choose("2", "5", "I", "3")] + body + ["190 NEXT J"]
        return [f"100 {heads[kind]}", "110 T=T+1:IF T>150 THEN 400", *body, f"200 {self.statement()}",
                "210 " + self.choose("REM", "X=X+1", "::"), f"220 {tails[kind]}"]


def hot_loops(maker):
    loops, choose, chance = Loops(maker), maker.choose, maker.chance
    dimensions = ",".join(f"{name}({','.join([str(BOUND)] * count)})" for name, count in [*ARRAYS, ("P$", 1)])
    lines = [f"10 DIM {dimensions}:T=0:E=0", "20 DEF FNA(X)=X*2+1:DEF FNB(X,Y)=X-Y/2",
             "25 DEF FNC%(X%)=X%*3:DEF FND$(S$)=S$+\"!\":DEF FNE!(X!,S$)=X!/3+LEN(S$):DEF FNG=RND+A"]
    lines += ["30 ON ERROR GOTO 600"] * chance(85)
    lines += [f"40 {name}={loops.literal()}" for name in [choose("A", "B%", "C&", "B!", "A&&")]] * chance(50)
    # What memory holds may be no number.
    lines += [f"45 POKE64 VARPTR({choose('A', 'B#', 'M(3)')}),{choose('&H7FF8000000000000', '&H7FF0000000000000', '-1')}"] * chance(4)
    lines += [f"46 POKE32 VARPTR({choose('A!', 'M!(3)')}),{choose('&H7FC00000', '&HFF800000')}"] * chance(4)
    lines += [choose("50 ON TIMER(1) GOSUB 560:TIMER ON", "50 ON TIMER(.01) GOSUB 560:TIMER ON")] * chance(5)
    lines += loops.lines()
    lines += ["400 PRINT T;E;I;J;K;X;D;CN:VARINFO FULL", "410 END",
              f"500 {loops.assignment()}", "510 RETURN", f"520 X=X+1:{loops.assignment()}:RETURN",
              "560 RETURN", "590 DATA 4,5,6",
              "600 E=E+1:IF E<9 THEN PRINT \"E\";ERR;ERL", f"610 IF E>60 THEN RESUME 400 ELSE RESUME {choose('NEXT', 'NEXT', '220')}"]
    watch = lambda: choose(f"BREAK {choose(110, 120, 200, 500)}", "BREAK CLEAR", f"TRON {choose(120, 200)}-{choose(200, 220)}",
                           "TRON", "TROFF", "TRACE A,T", "TRACE OFF")
    lines += maker.some(0, 1, watch) if chance(25) else []
    lines.append("RUN")
    for _ in range(choose(0, 0, 1, 2)):
        lines.append(choose(f"120 {loops.statement()}", f"200 {loops.statement()}", "A=1:B=2:C=3", "CLEAR", watch(), "ERASE N",
                            "PRINT A;B;C;I;T", "DELETE 120", "RENUM 100", "I=1"))
        lines.append(choose("CONT", "RUN", "GOTO 110", "GOTO 100"))
    return lines + ["PRINT T;E;I;J;K;X;D;A;B;C;A%;B%;C%;A&;B&;C&;A!;B!;C!;A&&;B&&;C&&", "VARINFO FULL"]

"""Cuts the lines of classic listings into pieces.

Classic BASICs of the 1970s found their words anywhere, also inside of what looks like a name: FORI=1TO10, IFA=BTHEN50.
Others, and this one, take words whole: SCORE is a name although there is an OR in it. The same statement can be cut in
both ways here; listing_reading.py tells which of them was meant.
"""

import re
from dataclasses import dataclass

import listing_language

KEYWORDS, CALLED, BARE, SYSTEM = listing_language.words().values()

# Words of other BASICs that this one has not. They are words all the same: no names of variables.
FOREIGN_STATEMENTS = {
    "BEEP", "SOUND", "PLAY", "LPRINT", "LLIST", "WIDTH", "KEY", "CALL", "OUT", "WAIT", "MOTOR", "SYSTEM", "SHELL",
    "PALETTE", "PCOPY", "CLOAD", "CSAVE", "SET", "RESET", "HOME", "HTAB", "VTAB", "GR", "HGR", "HPLOT", "PLOT", "TEXT",
    "INVERSE", "NORMAL", "FLASH", "PEN", "STRIG", "IOCTL", "ENVIRON", "LOCK", "UNLOCK", "POP", "MAT", "CHANGE",
}
FOREIGN_FUNCTIONS = {
    "USR", "INP", "STICK", "STRIG", "PEN", "LPOS", "PMAP", "EXTERR", "VARPTR$", "ERDEV", "ERDEV$", "ENVIRON$", "IOCTL$",
    "MEM", "SCRN", "PDL",
}

# The words that are found inside of others: those that listings without blanks are made of.
JOINED_WORDS = sorted((
    "END FOR NEXT DATA INPUT DIM READ LET GOTO RUN IF RESTORE GOSUB RETURN REM STOP PRINT CLEAR NEW AND OR NOT "
    "XOR ON DEF TO STEP THEN ELSE TAB SPC USING CLS POKE PEEK SGN INT ABS SQR RND SIN COS TAN ATN EXP LOG LEN "
    "STR$ VAL ASC CHR$ LEFT$ RIGHT$ MID$ INKEY$ INPUT$ RANDOMIZE SWAP WHILE WEND MOD OPEN CLOSE ERROR RESUME "
    "LOCATE COLOR LINE LPRINT HEX$ OCT$ STRING$ SPACE$ INSTR FIX DEFINT DEFSNG DEFDBL DEFSTR GET PUT FIELD LSET "
    "RSET WRITE ERASE TRON TROFF PSET PRESET CIRCLE PAINT SOUND BEEP OPTION BASE SCREEN OUTPUT APPEND WIDTH"
).split(), key=len, reverse=True)

# Words of PRINT, which are names elsewhere.
PRINT_WORDS = {"WRAP", "JUSTIFY"}

NUMBER = re.compile(r"(?:\d+\.?\d*|\.\d+)(?:[ED][+-]?\d+)?(?:&&|[%!#&])?|&(?:H[0-9A-F]+|O[0-7]+)[%&]?", re.I)
RUN = re.compile(r"[A-Za-z][A-Za-z0-9]*")
DOTTED = re.compile(r"(?:\.[A-Za-z0-9]+)+")
SUFFIX = re.compile(r"&&|[%!#$]|&(?![HOho])")
BLANKS = re.compile(r"[ \t]+")

REMARK, DATA, STRING, WORD, NAME, LITERAL, MARK, BLANK = "remark data string word name number mark blank".split()
OPERANDS = (STRING, NAME, LITERAL)


@dataclass
class Piece:
    """A piece of a statement. `text` is as written, `value` in capitals; a name's value has its suffix."""

    kind: str
    text: str

    @property
    def value(self):
        return self.text.upper()

    def is_word(self, *words):
        return self.kind == WORD and self.value in words


def is_function(name):
    return name in CALLED or name in BARE or name in SYSTEM or name in FOREIGN_FUNCTIONS or name == "INPUT$"


def is_word(text):
    return text in KEYWORDS or text in FOREIGN_STATEMENTS


def suffix_at(text, at):
    found = SUFFIX.match(text, at)
    return found[0] if found else ""


def whole_word(text, at):
    """The word or name that begins at a place, read whole."""
    run = RUN.match(text, at)[0]
    end = at + len(run)
    word = run.upper()
    suffix = suffix_at(text, end)
    if is_word(word) and not (word == "INPUT" and suffix == "$"):
        # "#" behind a word begins a file's number, "&" a number; the others show that it is a variable.
        if suffix in ("$", "%", "!"):
            return Piece(NAME, text[at:end + 1])
        return Piece(WORD, text[at:end])
    dotted = DOTTED.match(text, end)
    if dotted:
        end = dotted.end()
        suffix = suffix_at(text, end)
    return Piece(NAME, text[at:end + len(suffix)])


def joined_word(text, at, kept):
    """The word or name that begins at a place, when words are found anywhere. Names in `kept` are left whole."""
    whole = whole_word(text, at)
    if whole.value in kept or whole.kind == WORD or is_function(whole.value) or whole.value in PRINT_WORDS:
        return whole
    run_end = RUN.match(text, at).end()
    for end in range(at, run_end + 1):
        for word in JOINED_WORDS:
            if text[end:end + len(word)].upper() != word or end + len(word) > run_end + word.endswith("$"):
                continue
            if end == at:
                kind = NAME if is_function(word) else WORD
                return Piece(kind, text[at:at + len(word)])
            if text[at:at + 2].upper() != "FN" or end > at + 2:
                return Piece(NAME, text[at:end])
    return whole


def cut(text, joined=False, kept=frozenset()):
    """The pieces of a statement without its remark."""
    pieces, at = [], 0
    while at < len(text):
        character = text[at]
        blanks, number = BLANKS.match(text, at), NUMBER.match(text, at)
        if blanks:
            piece = Piece(BLANK, blanks[0])
        elif character == "\"":
            end = text.find("\"", at + 1)
            piece = Piece(STRING, text[at:end + 1] if end >= 0 else text[at:])
        elif number:
            piece = Piece(LITERAL, number[0])
        elif RUN.match(text, at):
            piece = joined_word(text, at, kept) if joined else whole_word(text, at)
        else:
            piece = Piece(MARK, character)
        pieces.append(piece)
        at += len(piece.text)
    return pieces


def names_like_remarks(lines):
    """The names that begin with REM or DATA and that the listing asks for somewhere inside of a statement."""
    found = set()
    for _, text in lines:
        plain = re.sub(r"\"[^\"]*\"?", "\"\"", text)
        for name in re.findall(r"(?:[^\s:A-Za-z0-9][ \t]*|\w[ \t]+)((?:REM|DATA)[A-Za-z0-9]+)", plain, re.I):
            found.add(name.upper())
    return found


def begins_with(text, word, names):
    """Whether a statement begins with REM or DATA, with or without a blank behind it."""
    run = RUN.match(text)
    if not run or not run[0].upper().startswith(word):
        return False
    is_name = run[0].upper() in names and text[run.end():].lstrip("$%!# \t")[:1] in ("=", "(")
    return run[0].upper() == word or not is_name


def statement_end(text, at):
    """Where the statement that begins at a place ends: at a ":", or where a remark begins."""
    quoted = False
    while at < len(text):
        character = text[at]
        if character == "\"":
            quoted = not quoted
        elif not quoted:
            if character in ":'":
                return at
            run = RUN.match(text, at)
            if run:
                remark = re.search(r"^REM$|(?:THEN|ELSE)REM", run[0], re.I)
                if remark:
                    return at + remark.end() - 3
                at = run.end()
                continue
        at += 1
    return at


def data_end(text, at):
    quoted = False
    for place in range(at, len(text)):
        quoted ^= text[place] == "\""
        if text[place] == ":" and not quoted:
            return place
    return len(text)


def statements(text, names=frozenset()):
    """(kind, text, separator) of the statements of a line: kind is REMARK, DATA or "". The separator is what stands in
    front of it: ":", or nothing. `names` begin with REM or DATA and are none."""
    found, at, separator = [], 0, ""
    while True:
        start = at + len(text[at:]) - len(text[at:].lstrip(" \t"))
        rest = text[start:]
        if rest.startswith("'") or begins_with(rest, "REM", names):
            return [*found, (REMARK, text[at:], separator)]
        kind = DATA if begins_with(rest, "DATA", names) else ""
        end = data_end(text, start) if kind else statement_end(text, at)
        found.append((kind, text[at:end], separator))
        if end == len(text):
            return found
        separator = ":" if text[end] == ":" else ""
        at = end + len(separator)

"""Finds what of a classic listing does not work here, and says what to do about it."""

import re

from listing_reading import closing, is_assignment, starts
from listing_words import (CALLED, FOREIGN_FUNCTIONS, FOREIGN_STATEMENTS, LITERAL, NAME, WORD, is_function)

PROMPT_ONLY = ("RUN", "LIST", "AUTO", "RENUM", "BREAK", "DELETE", "EDIT", "MERGE", "CREATEEFI", "NEW")
JUMPS = ("GOTO", "GOSUB", "THEN", "ELSE", "RESTORE", "RESUME")
# What may stand in DATA outside of quotes: the tokenizer reads it like any other text.
READABLE = re.compile("\"[^\"]*\"?|[A-Za-z][A-Za-z0-9]*(?:&&|[%!#$&])?|&(?:[Hh][0-9A-Fa-f]+|[Oo][0-7]+)[%&]?|"
                      "(?:[0-9]+\\.?[0-9]*|\\.[0-9]+)(?:[EeDd][+-]?[0-9]+)?(?:&&|[%!#&])?|[ \t#()*+,./:;<=>@\\\\^?'-]")
EVENTS = ("KEY", "PEN", "PLAY", "STRIG", "COM")


def arguments(pieces, at):
    """How many values follow a word at a place, counted by the commas outside of parentheses."""
    depth, count = 0, 0
    for piece in pieces[at + 1:]:
        if depth == 0 and piece.is_word("ELSE"):
            break
        depth += {"(": 1, ")": -1}.get(piece.text, 0)
        count = max(count, 1) + (piece.text == "," and depth == 0)
    return count


def statement_problems(pieces, at):
    """What is wrong with the statement that begins at a place."""
    piece = pieces[at]
    following = pieces[at + 1] if at + 1 < len(pieces) else None
    if piece.kind == NAME and not is_assignment(pieces, at) and piece.value not in ("FIND", "TIMER"):
        yield f"{piece.value} begins no statement"
    if piece.value in ("TIME$", "DATE$") and following and following.text == "=":
        yield f"{piece.value} cannot be set"
    if piece.kind != WORD:
        return
    word = piece.value
    if word == "GET" and len(pieces) == at + 2 and following.kind == NAME:
        yield f"GET reads a file or the screen; a key is read by {following.text}=INKEY$"
    if word == "POKE":
        yield "POKE writes into the real machine's memory, where nothing is what it was in the old one"
    if word in FOREIGN_STATEMENTS:
        yield f"{word} is no word of the language"
    elif word in PROMPT_ONLY:
        yield "NEW keeps a program that runs" if word == "NEW" else f"{word} works at the prompt only"
    elif word == "DEF" and following and following.value in ("SEG", "USR"):
        yield f"there is no DEF {following.value}: addresses have 64 bits, and there are no machine-language calls"
    elif word == "CLEAR" and following and following.text != ":" and not following.is_word("ELSE"):
        yield "CLEAR takes no values"
    elif word == "SCREEN" and arguments(pieces, at) == 1:
        yield "SCREEN sets a width and a height here; there are no screen modes"
    elif word == "COLOR" and arguments(pieces, at) == 3 and following.text != "@":
        yield "COLOR with three values mixes red, green and blue; there is no border"
    elif word == "CIRCLE" and arguments(pieces, at) > 3:
        yield "CIRCLE draws whole circles only"
    elif word == "PRINT" and following and following.text == "@":
        yield "PRINT @n prints into window n; LOCATE moves the cursor"
    elif word == "CLOSE" and not following:
        yield "CLOSE alone closes nothing: name the files, or let END close all"
    elif word == "OPEN" and following and following.text[1:] in ('I"', 'O"', 'R"', 'A"') and arguments(pieces, at) > 2:
        yield "OPEN names the file first: OPEN file$ FOR INPUT AS #n"
    elif word == "ON" and following and following.value in EVENTS:
        yield f"there are no events of {following.value}"


def if_problems(pieces):
    """ELSE that does something else here."""
    words = [piece.value for piece in pieces if piece.kind == WORD]
    if "ELSE" not in words:
        return
    before = words[:words.index("ELSE")]
    if before.count("IF") > 1:
        yield "ELSE belongs to the first IF that is false, not to the nearest one"
    if "THEN" in before and "GOSUB" in before[before.index("THEN"):]:
        yield "GOSUB in front of ELSE: RETURN comes back to the ELSE, a Syntax Error; put it on a line of its own"


def jump_targets(pieces):
    """The line numbers that are jumped to."""
    for at, piece in enumerate(pieces):
        if not piece.is_word(*JUMPS):
            continue
        place = at + 1
        while place < len(pieces) and pieces[place].kind == LITERAL and pieces[place].text.isdigit():
            target = int(pieces[place].text)
            if target != 0 or not (piece.value == "RESUME" or (at and pieces[at - 1].is_word("ERROR", "BREAK"))):
                yield target, piece.value
            if place + 1 >= len(pieces) or pieces[place + 1].text != ",":
                break
            place += 2


def dimensioned(pieces):
    """The arrays that a DIM makes."""
    for at, piece in enumerate(pieces):
        if not piece.is_word("DIM"):
            continue
        place = at + 1
        while place + 1 < len(pieces) and pieces[place].kind == NAME and pieces[place + 1].text == "(":
            yield pieces[place].value
            place = closing(pieces, place + 1) + 1


def arrays(pieces):
    """(name, number of subscripts) of what stands in front of "(" and is no function."""
    for at, piece in enumerate(pieces[:-1]):
        if piece.kind == NAME and pieces[at + 1].text == "(" and not piece.value.startswith("FN"):
            if piece.value not in CALLED and not is_function(piece.value):
                yield piece.value, arguments(pieces[at + 1:closing(pieces, at + 1) - 1], 0)


def foreign_functions(pieces):
    for at, piece in enumerate(pieces):
        # An address of this language is in a variable of 64 bits.
        own = any(other.text.endswith("&&") for other in pieces[at:closing(pieces, at + 1)])
        if piece.kind == NAME and piece.value == "PEEK" and not own and pieces[at + 1:] and pieces[at + 1].text == "(":
            yield "PEEK reads the real machine's memory, where nothing is what it was in the old one"
        if piece.kind == NAME and piece.value in FOREIGN_FUNCTIONS:
            array_like = at + 1 < len(pieces) and pieces[at + 1].text == "("
            if array_like and not is_assignment(pieces, at):
                yield f"there is no function {piece.value}"


def strange_characters(pieces):
    for piece in pieces:
        if len(piece.text) == 1 and not piece.text.isalnum() and piece.text not in " \t\"#()*+,-./:;<=>@\\^?'":
            yield f"the character {piece.text} begins nothing here"


def data_problems(text):
    """Why DATA cannot be read or, when a program runs into it, be passed over."""
    at = 0
    while at < len(text):
        found = READABLE.match(text, at)
        if not found:
            return [f"the {text[at]} in DATA begins nothing here: put the item in quotes"]
        if found[0] == "'":
            break
        if found[0].startswith("\"") and not found[0].endswith("\"", 1):
            return ["a quote in DATA is not closed"]
        at = found.end()
    return []


def is_trapped_literal(piece):
    """Whether a literal is a SINGLE that is not exact, so that a DOUBLE variable shows digits behind."""
    if piece.kind != LITERAL or "." not in piece.text or piece.text[-1] in "#!" or "D" in piece.value:
        return False
    if sum(character.isdigit() for character in piece.value.split("E")[0]) >= 8:
        return False
    return float(piece.text) * 2 ** 20 % 1 != 0


def problems(lines):
    """(line number, text) of all problems. `lines` are (number, statements), each statement a list of pieces without
    blanks; from an IF on a line is one statement."""
    found = []
    numbers = {number for number, _ in lines}
    made = {name for _, statements in lines for pieces in statements for name in dimensioned(pieces)}
    missing = set()
    for number, statements in lines:
        texts = []
        for pieces in statements:
            for at in starts(pieces):
                if at < len(pieces) and pieces[at].kind != LITERAL:
                    texts += statement_problems(pieces, at)
            texts += [*if_problems(pieces), *foreign_functions(pieces), *strange_characters(pieces)]
            texts += [f"{word} {target}: there is no such line" for target, word in jump_targets(pieces)
                      if target not in numbers]
            for name, subscripts in arrays(pieces):
                if name not in made | missing:
                    missing.add(name)
                    bounds = ", ".join(["10"] * max(subscripts, 1))
                    texts.append(f"every array needs DIM: put DIM {name}({bounds}) in front of its first use")
        found += [(number, text) for text in dict.fromkeys(texts)]
    return found


def notes(lines):
    """(line number, text) of what may matter."""
    for number, statements in lines:
        trapped = [piece.text for pieces in statements for piece in pieces if is_trapped_literal(piece)]
        if trapped:
            return [(number, f"{trapped[0]} is a SINGLE and variables are DOUBLE: --single makes these SINGLE too")]
    return []


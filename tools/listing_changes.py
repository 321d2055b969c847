"""What is rewritten in the statements of a classic listing, and how lines that are too long are split."""

import re

from listing_reading import is_assignment, solid, starts
from listing_words import (BARE, BLANK, CALLED, DATA, KEYWORDS, MARK, NAME, NUMBER, REMARK, RUN, STRING, SYSTEM, WORD,
                           Piece, suffix_at)

LONGEST_LINE = 244
MOST_TOKENS = 127
LONGEST_NAME = 37
# Words that an operand follows.
BEFORE_OPERANDS = tuple("AND OR NOT XOR MOD TO STEP IF PRINT INPUT NEXT READ DIM SWAP".split())
COMPARISONS = {"=<": "<=", "=>": ">=", "><": "<>"}


def mended(pieces):
    """The pieces of a statement in this language's spelling, and what was done to them."""
    done = []
    out = []
    for piece in pieces:
        left = out[-1] if out else None
        if piece.kind == STRING and (len(piece.text) == 1 or not piece.text.endswith("\"")):
            piece = Piece(STRING, piece.text + "\"")
            done.append("a closing quote is put at the end of the line")
        if left and left.text + piece.text in COMPARISONS:
            out[-1:] = [Piece(MARK, character) for character in COMPARISONS[left.text + piece.text]]
            done.append(f"{left.text}{piece.text} is written {COMPARISONS[left.text + piece.text]}")
            continue
        if piece.is_word("TO") or piece.value == "SUB":
            before = [other for other in out if other.kind != BLANK]
            if before and before[-1].value == "GO":
                while out.pop().value != "GO":
                    pass
                piece = Piece(WORD, "GOTO" if piece.value == "TO" else "GOSUB")
        out.append(piece)
    return with_single_next(out, done), done


def with_single_next(pieces, done):
    """NEXT J,I as NEXT J: NEXT I."""
    out, inside = [], None
    for piece in pieces:
        if piece.is_word("NEXT"):
            inside = piece
        elif piece.kind == WORD or piece.text == ":":
            inside = None
        if inside and piece.text == ",":
            out += [Piece(MARK, ":"), Piece(BLANK, " "), Piece(WORD, inside.text), Piece(BLANK, " ")]
            done.append("NEXT with several variables is split")
        elif not (inside and piece.kind == BLANK and out and out[-1].kind == BLANK):
            out.append(piece)
    return out


# ---- Names -----------------------------------------------------------------------------------------------------

def in_operand_place(pieces, at):
    """Whether a word at a place can only be a variable."""
    left = pieces[at - 1] if at else None
    if at + 1 < len(pieces) and pieces[at + 1].text == "=" and (at in starts(pieces) or left.is_word("FOR", "LET")):
        return True
    return left is not None and (left.text in "=<>+-*/\\^(,;" or left.is_word(*BEFORE_OPERANDS))


def is_unreadable(name):
    """Whether the tokenizer does not read a name as one."""
    plain = name.rstrip("%!#$&")
    return "." in plain or len(plain) > LONGEST_NAME or (plain in KEYWORDS and name != "INPUT$")


def unreadable_names(all_pieces):
    """The names, and the words used as names, that need another spelling."""
    found = set()
    for pieces in all_pieces:
        for at, piece in enumerate(pieces):
            if piece.kind == NAME and is_unreadable(piece.value):
                found.add(piece.value)
            starts_here = at in starts(pieces) or (at and pieces[at - 1].is_word("FOR", "LET", "DIM"))
            if not starts_here or not (is_assignment(pieces, at) or (at and pieces[at - 1].is_word("DIM"))):
                continue
            array = at + 1 < len(pieces) and pieces[at + 1].text == "("
            if piece.kind == WORD and (is_assignment(pieces, at) and not array):
                found.add(piece.value)
            elif piece.kind == NAME and piece.value in SYSTEM | (BARE - {"TIMER", "TIME$", "DATE$"}):
                found.add(piece.value)
            elif piece.kind == NAME and array and piece.value in CALLED - {"MID$"} and piece.value != "TIMER":
                found.add(piece.value + "(")
    return found


def new_names(all_pieces):
    """The new spelling of each name that needs one; array names of functions end in "("."""
    taken = {piece.value.rstrip("(") for pieces in all_pieces for piece in pieces if piece.kind in (NAME, WORD)}
    spelled = {}
    for name in sorted(unreadable_names(all_pieces)):
        array = name.endswith("(")
        plain = name.rstrip("(")
        stem = plain.rstrip("%!#$&")
        suffix = plain[len(stem):]
        stem = stem.replace(".", "")[:LONGEST_NAME - 3]
        candidate, number = stem, 1
        while candidate + suffix in taken or candidate in KEYWORDS or candidate + suffix in SYSTEM | BARE | CALLED:
            number += 1
            candidate = stem + str(number)
        taken.add(candidate + suffix)
        spelled[name] = candidate + suffix + ("(" if array else "")
    return spelled


def renamed(pieces, spelled):
    """The pieces with the new names."""
    places = solid(pieces)
    out = []
    at = -1
    for piece in pieces:
        if piece.kind == BLANK:
            out.append(piece)
            continue
        at += 1
        array = piece.value + "(" in spelled and at + 1 < len(places) and places[at + 1].text == "("
        if array:
            piece = Piece(NAME, spelled[piece.value + "("][:-1])
        elif piece.value in spelled and (piece.kind == NAME or (piece.kind == WORD and in_operand_place(places, at))):
            piece = Piece(NAME, spelled[piece.value])
        out.append(piece)
    return out


# ---- Long lines ------------------------------------------------------------------------------------------------

def tokens(text):
    """How many records the tokenizer makes of a text, without the one at the end."""
    count = at = 0
    while at < len(text):
        number, run = NUMBER.match(text, at), RUN.match(text, at)
        if text[at] in " \t":
            at += 1
            continue
        count += 1
        if text[at] == "'" or (run and run[0].upper() == "REM"):
            return count
        if text[at] == "\"":
            at = text.find("\"", at + 1) + 1 or len(text)
        elif number:
            at = number.end()
        elif run:
            at = run.end() + len(suffix_at(text, run.end()))
        else:
            at += 1
    return count


def fits(text):
    return len(text) <= LONGEST_LINE and tokens(text) <= MOST_TOKENS


def joined_statements(parts):
    """The text of statements with what stands between them."""
    return "".join((separator if at else "") + text for at, (_, text, separator) in enumerate(parts))


def units(parts):
    """The statements that must stay together: those from an IF on belong to it."""
    found, conditional = [], False
    for kind, text, separator in parts:
        if conditional or (found and separator != ":"):
            found[-1].append((kind, text, separator))
        else:
            found.append([(kind, text, separator)])
        conditional = conditional or (kind not in (REMARK, DATA) and re.match(r"\s*IF\b", text, re.I) is not None)
    return found


def split(number, parts, next_number):
    """[(number, text)] of a line that is too long, and what could not be done."""
    lines = []
    for unit in units(parts):
        if lines and fits(joined_statements(lines[-1] + unit)):
            lines[-1] += unit
        else:
            lines.append(list(unit))
    problems = [problem for line in lines for problem in [why_too_long(line)] if problem]
    if problems:
        return [(number, joined_statements(parts))], problems
    free = (next_number if next_number is not None else number + 10 * len(lines)) - number - 1
    if free < len(lines) - 1:
        return [(number, joined_statements(parts))], ["too long, and there is no free line number behind it"]
    step = min(10, (free + 1) // len(lines))
    return [(number + at * step, joined_statements(line).lstrip()) for at, line in enumerate(lines)], []


def why_too_long(line):
    text = joined_statements(line).lstrip()
    if fits(text):
        return ""
    limit = f"{LONGEST_LINE} characters" if len(text) > LONGEST_LINE else f"{MOST_TOKENS} words and marks"
    kinds = {kind for kind, _, _ in line}
    what = {(REMARK,): "a remark", (DATA,): "a DATA statement"}.get(tuple(kinds), "a statement")
    if re.match(r"\s*IF\b", text, re.I):
        what = "the IF and what belongs to it"
    return f"{what} has more than {limit}: split it by hand"


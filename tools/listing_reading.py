"""Tells which way of cutting a statement of a classic listing was meant."""

from listing_words import (BLANK, DATA, LITERAL, NAME, OPERANDS, REMARK, STRING, WORD, cut, is_function,
                           names_like_remarks, statements)

BINARY_WORDS = {"AND", "OR", "XOR", "EQV", "IMP", "MOD"}
# Words that nothing may follow.
LONELY = {"END", "STOP", "RETURN", "CLS", "WEND", "NEW", "TRON", "TROFF", "BEEP"}
PRINTING = {"PRINT", "LPRINT", "INPUT", "WRITE", "LINE", "?"}
# Words that stand in the middle of statements, so that none begins with them.
INNER = BINARY_WORDS | {"NOT", "TO", "STEP", "THEN", "ELSE", "USING", "AS", "BASE", "OUTPUT", "APPEND"}


def solid(pieces):
    return [piece for piece in pieces if piece.kind != BLANK]


def is_operand_end(piece):
    return piece.kind in OPERANDS or piece.text == ")"


def is_operand_start(piece):
    return piece.kind in OPERANDS or piece.text in ("(", "+", "-") or piece.is_word("NOT")


def closing(pieces, at):
    """The place behind the parenthesis that is opened at a place."""
    depth = 0
    for place in range(at, len(pieces)):
        depth += {"(": 1, ")": -1}.get(pieces[place].text, 0)
        if depth == 0:
            return place + 1
    return len(pieces)


def is_assignment(pieces, at):
    """Whether a value is assigned to the name at a place."""
    end = at + 1
    if end < len(pieces) and pieces[end].text == "(":
        end = closing(pieces, end)
    return end < len(pieces) and pieces[end].text == "="


def starts(pieces):
    """The places where statements begin."""
    return [0] + [at + 1 for at, piece in enumerate(pieces) if piece.is_word("THEN", "ELSE")]


def start_faults(pieces, at, after_if=False):
    if at >= len(pieces):
        return 0
    piece = pieces[at]
    if piece.kind == LITERAL:
        return int(at == 0)
    if piece.kind == NAME:
        return int(not is_assignment(pieces, at) and piece.value not in ("FIND", "GO"))
    if piece.kind == WORD:
        in_place = after_if and at == 0 and piece.value == "ELSE"
        faults = int(piece.value in INNER and not in_place and not (at + 1 < len(pieces) and pieces[at + 1].text == "="))
        follower = pieces[at + 1] if at + 1 < len(pieces) else None
        if piece.value in LONELY and follower and not follower.is_word("ELSE"):
            faults += 1
        if piece.value == "IF":
            faults += not any(other.is_word("THEN", "GOTO") for other in pieces[at:])
        if piece.value == "FOR":
            faults += not any(other.is_word("TO") for other in pieces[at:]) or not is_assignment(pieces, at + 1)
        return faults
    return int(piece.text not in ("?", "'"))


def faults(statement, after_if=False):
    """How much there is in a statement that no BASIC would have taken. Behind an IF of its line it may begin with ELSE."""
    pieces = solid(statement)
    count = sum(start_faults(pieces, at, after_if) for at in starts(pieces))
    words = {piece.value for piece in pieces if piece.kind == WORD}
    printing = bool(words & PRINTING) or any(piece.text == "?" for piece in pieces)
    for left, right in zip(pieces, pieces[1:]):
        if is_operand_end(left) and right.kind in OPERANDS:
            count += not printing or not (STRING in (left.kind, right.kind) or left.text == ")")
    for at, piece in enumerate(pieces):
        left = pieces[at - 1] if at else None
        right = pieces[at + 1] if at + 1 < len(pieces) else None
        if piece.kind == WORD and piece.value in BINARY_WORDS | {"TO", "THEN"} and not (right and right.text == "="):
            count += not (left and is_operand_end(left)) and not (left and left.value in ("GO", "PRINT"))
        if piece.kind == WORD and piece.value in BINARY_WORDS | {"TO", "NOT"}:
            count += not (right and is_operand_start(right))
        if piece.is_word("TO"):
            count += not words & {"FOR", "VIEW"} and not (left and left.value == "GO")
        if piece.kind == NAME and is_function(piece.value) and piece.value in ("INT", "ABS", "SIN", "COS", "TAN", "LOG",
                                                                              "EXP", "SQR", "LEN", "VAL", "ASC"):
            count += not (right and right.text in ("(", "="))
    return count


def same(one, other):
    return [piece.text for piece in one] == [piece.text for piece in other]


def is_joined(name):
    """Whether there are words inside of a name."""
    return len(cut(name, joined=True)) > 1


def has_if(statement):
    return any(piece.is_word("IF") for piece in cut(statement, joined=True))


def plain_statements(lines):
    """The statements of all lines that are neither remarks nor DATA: as written, read whole, and whether an IF stands in
    front of them."""
    names = names_like_remarks(lines)
    for _, text in lines:
        after_if = False
        for kind, statement, _ in statements(text, names):
            if kind not in (REMARK, DATA):
                yield statement, solid(cut(statement)), after_if
                after_if = after_if or has_if(statement)


def assigned(pieces):
    """The names that a statement gives values to."""
    for at in starts(pieces):
        if at >= len(pieces):
            continue
        first = pieces[at]
        rest = pieces[at + 1:]
        if first.kind == NAME and is_assignment(pieces, at):
            yield first.value, True
        elif first.is_word("LET", "FOR", "DEF") and rest:
            yield rest[0].value, False
        elif first.is_word("INPUT", "READ", "DIM", "SWAP", "LINE", "COMMON"):
            depth = 0
            for piece in rest:
                depth += {"(": 1, ")": -1}.get(piece.text, 0)
                if piece.kind == NAME and depth == 0:
                    yield piece.value, False


def names_of(lines):
    """The names with words in them that are meant as names: the listing gives them values as a whole."""
    wholes = list(plain_statements(lines))
    used = {}
    for _, pieces, _ in wholes:
        targets = {at for at in starts(pieces) if at < len(pieces)}
        for at, piece in enumerate(pieces):
            if piece.kind == NAME and at not in targets:
                used[piece.value] = used.get(piece.value, 0) + 1
    kept = set()
    for statement, pieces, after_if in wholes:
        if faults(pieces, after_if):
            continue
        for name, by_assignment in assigned(pieces):
            # LETTER=5 may be LET TER=5, if nobody asks for LETTER.
            doubtful = by_assignment and not faults(cut(statement, joined=True), after_if)
            if is_joined(name) and (not doubtful or used.get(name)):
                kept.add(name)
    return kept


def read(statement, kept, after_if=False):
    """The pieces of a statement, cut as it was meant, and whether its words were run together."""
    whole, joined = cut(statement), cut(statement, joined=True, kept=kept)
    if same(whole, joined):
        return whole, False
    doubtful = any(piece.kind == NAME and piece.value not in kept and is_joined(piece.text) for piece in whole)
    whole_faults, joined_faults = faults(whole, after_if), faults(joined, after_if)
    if joined_faults < whole_faults or (doubtful and whole_faults == joined_faults == 0):
        return joined, True
    return whole, False


def with_blanks(pieces):
    """The text of pieces with blanks where words would run together."""
    text = ""
    for at, piece in enumerate(pieces):
        left = pieces[at - 1] if at else None
        if left and BLANK not in (left.kind, piece.kind):
            wordy = WORD in (left.kind, piece.kind)
            if piece.text[:1].isalnum() and (text[-1:].isalnum() or (wordy and text[-1:] in ")$%!#\"")):
                text += " "
            elif left.kind == WORD and piece.kind == LITERAL:  # THEN.5, TO&H10
                text += " "
        text += piece.text
    return text


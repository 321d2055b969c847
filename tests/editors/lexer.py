"""Tells what each character of a line is, by the rules of the interpreter's tokenizer.

The letters are those of places.txt. It shares nothing with the patterns of the editors but the tables of words.
"""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent.parent / "tools"))

import word_table

KEYWORDS = set(word_table.keywords())
CALLED, BARE, SYSTEM = (set(names) for names in word_table.functions())
DIGITS = "0123456789"
BITS = {"H": DIGITS + "ABCDEF", "O": "01234567"}


def run_of(text, at, allowed):
    while at < len(text) and text[at] in allowed:
        at += 1
    return at


def suffix_end(text, at, allowed):
    if text.startswith("&&", at) and "&" in allowed:
        return at + 2
    return at + 1 if at < len(text) and text[at] in allowed else at


def number_end(text, at):
    """Where the number that begins at a place ends."""
    if text[at] == "&":
        return suffix_end(text, run_of(text, at + 2, BITS[text[at + 1]]), "%&")
    at = run_of(text, at, DIGITS)
    if text.startswith(".", at):
        at = run_of(text, at + 1, DIGITS)
    if at < len(text) and text[at] in "ED":
        sign = at + 1 if text[at + 1:at + 2] in ("+", "-") else at
        end = run_of(text, sign + 1, DIGITS)
        at = end if end > sign + 1 else at
    return suffix_end(text, at, "%!#&")


def begins_number(text, at):
    if text[at] == "&":
        return text[at + 1:at + 2] in ("H", "O") and text[at + 2:at + 3] != "" and text[at + 2] in BITS[text[at + 1]]
    return text[at] in DIGITS or (text[at] == "." and text[at + 1:at + 2].isdigit())


def data_letters(text, at):
    """The letters of the text of DATA from a place to its end; commas count for nothing."""
    letters, quoted = "", False
    for character in text[at:]:
        if character == ":" and not quoted:
            break
        letters += "s" if quoted or character == "\"" else "." if character == "," else "d"
        quoted ^= character == "\""
    return letters


def word_letter(word, text, end):
    if word in word_table.OPERATORS:
        return "o"
    return "k" if word in word_table.FLOW else "w"


def name_letter(name, text, end):
    called = text[end:].lstrip(" \t").startswith("(")
    if (name in CALLED and called) or name in BARE:
        return "f"
    if name in SYSTEM:
        return "y"
    return "u" if name.startswith("FN") and name[2:3].isalnum() else "v"


def letters_of(line):
    """One letter for each character of the line."""
    text = line.upper()
    at = run_of(text, 0, " ")
    end = run_of(text, at, DIGITS)
    letters = "." * at + "n" * (end - at)
    reference = False  # a number would be that of a line
    while len(letters) < len(text):
        at = len(letters)
        character = text[at]
        if character in " \t":
            letters += "."
            continue
        if character.isalpha() and character.isascii():
            end = run_of(text, at, "ABCDEFGHIJKLMNOPQRSTUVWXYZ" + DIGITS)
            word = text[at:end]
            if word == "REM":
                return letters + "c" * (len(text) - at)
            if word in KEYWORDS and not (word == "INPUT" and text.startswith("$", end)):
                letters += ("w" if word == "DATA" else word_letter(word, text, end)) * (end - at)
                if word == "DATA":
                    letters += data_letters(text, end)
                # Without a blank the digits would belong to the word.
                reference = word in word_table.JUMPS
                continue
            end = suffix_end(text, end, "%!#$&")
            letters += name_letter(text[at:end], text, end) * (end - at)
        elif character == "'":
            return letters + "c" * (len(text) - at)
        elif character == "\"":
            end = text.find("\"", at + 1) + 1 or len(text)
            letters += "s" * (end - at)
        elif begins_number(text, at):
            end = number_end(text, at)
            whole = all(digit in DIGITS for digit in text[at:end])
            letters += ("j" if reference and whole else "#") * (end - at)
            if reference and whole:
                after = text[end:].lstrip(" \t")
                reference = after.startswith(",") and after[1:].lstrip(" \t")[:1] in list(DIGITS)
                continue
        elif character in "+-*/\\^<>=":
            letters += "o"
        elif character == ",":
            letters += "."
            continue
        else:
            letters += "w" if character == "?" else "." if character in "#():;.@" else "x"
        reference = False
    return letters

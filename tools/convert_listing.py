#!/usr/bin/env python3
"""Makes a program of Korvane BASIC from a listing for a BASIC of the 1970s and 80s.

usage: convert_listing.py LISTING.BAS [-o PROGRAM.BAS] [--single] [--keep NAME,NAME...]

Puts blanks where words are run together, splits NEXT with several variables and lines that are too long, gives names
that would not be read as one another spelling. The text of strings, remarks and DATA is never changed. What was done,
and what has to be done by hand, is told on standard error, with the numbers of the lines.

  -o FILE      where the program goes, else to standard output
  --single     makes all variables single precision, as most of those BASICs had them, by DEFSNG A-Z at the top
  --keep NAMES are names, although there are words inside of them

The exit status is 0, or 1 when something has to be done by hand, or 2 when there is nothing to be converted.
"""

import argparse
import re
import sys
from pathlib import Path

import listing_changes
import listing_report
from listing_reading import has_if, names_of, read, solid, with_blanks
from listing_words import DATA, REMARK, RUN, names_like_remarks, statements

NAME = Path(sys.argv[0]).name  # installed it is called otherwise


class Listing:
    """A listing on its way. Texts are the file's bytes, each taken as a character."""

    def __init__(self, text, keep=(), single=False):
        self.said = []  # (line number, whether it is for the user to do, text)
        self.single = single
        self.lines = self.numbered(text)
        self.not_remarks = names_like_remarks(self.lines)
        self.kept = names_of(self.lines) | set(keep)

    def say(self, number, text, by_hand=False):
        self.said.append((number, by_hand, text))

    def numbered(self, text):
        """(number, text) of the lines, in the order of their numbers; the last of several with one number."""
        lines, last = {}, 0
        for row in re.split(r"\r\n|\r|\n", text.removeprefix("\xef\xbb\xbf").rstrip("\x1a")):
            found = re.match(r"[ \t]*(\d+)[ \t]?(.*)", row)
            if found and int(found[1]) <= 4294967294:
                last = int(found[1])
                if found[2].strip():
                    lines[last] = found[2]
            elif row.strip():
                self.say(last, f"what follows this line has no line number and is left out: {row.strip()[:30]}", True)
        return sorted(lines.items())

    def pieces_of(self, number, text):
        """(kind, text or pieces, separator) of the statements of a line, in this language's spelling."""
        out, joined_words, after_if = [], False, False
        for kind, statement, separator in statements(text, self.not_remarks):
            if kind in (REMARK, DATA):
                out.append((kind, self.with_word_apart(statement, "REM" if kind == REMARK else "DATA"), separator))
                continue
            pieces, joined = read(statement, self.kept, after_if)
            joined_words |= joined
            after_if = after_if or has_if(statement)
            pieces, done = listing_changes.mended(pieces)
            for what in done:
                self.say(number, what)
            out.append((kind, pieces, separator))
        if joined_words:
            self.say(number, "words that were run together are separated")
        return out

    def with_word_apart(self, statement, word):
        """A remark or DATA with a blank behind its word; nothing else is changed."""
        start = len(statement) - len(statement.lstrip(" \t"))
        run = RUN.match(statement, start)
        if run and len(run[0]) > len(word):
            end = start + len(word)
            return statement[:end] + " " + statement[end:]
        return statement

    def convert(self):
        """The program's lines as (number, text)."""
        rows = [(number, self.pieces_of(number, text)) for number, text in self.lines]
        self.rename(rows)
        self.report(rows)
        out = []
        for at, (number, parts) in enumerate(rows):
            texts = [(kind, text if kind in (REMARK, DATA) else with_blanks(text), separator)
                     for kind, text, separator in parts]
            texts = [(kind, apart(texts[place - 1][1], text) if place and not separator else text, separator)
                     for place, (kind, text, separator) in enumerate(texts)]
            whole = listing_changes.joined_statements(texts)
            if listing_changes.fits(whole):
                out.append((number, whole))
                continue
            next_number = rows[at + 1][0] if at + 1 < len(rows) else None
            lines, problems = listing_changes.split(number, texts, next_number)
            for problem in problems:
                self.say(number, problem, True)
            if len(lines) > 1:
                self.say(number, f"too long, split into the lines {', '.join(str(line) for line, _ in lines)}")
            out += lines
        return self.with_types(out)

    def rename(self, rows):
        statements_of = [solid(pieces) for _, parts in rows for kind, pieces, _ in parts if kind not in (REMARK, DATA)]
        spelled = listing_changes.new_names(statements_of)
        for number, parts in rows:
            for place, (kind, pieces, separator) in enumerate(parts):
                if kind in (REMARK, DATA) or not spelled:
                    continue
                new = listing_changes.renamed(pieces, spelled)
                for old, now in zip(pieces, new):
                    if old.text != now.text:
                        self.say(number, f"{old.value} is called {now.value}")
                parts[place] = (kind, new, separator)

    def report(self, rows):
        lines = []
        for number, parts in rows:
            together = []
            for kind, pieces, _ in parts:
                if kind == DATA:
                    for problem in listing_report.data_problems(pieces):
                        self.say(number, problem, True)
                if kind in (REMARK, DATA) or not solid(pieces):
                    continue
                belongs = together and any(piece.is_word("IF") for piece in together[-1])
                if belongs:
                    together[-1] = together[-1] + solid(pieces)
                else:
                    together.append(solid(pieces))
            lines.append((number, together))
        for number, text in listing_report.problems(lines):
            self.say(number, text, True)
        if not self.single:
            for number, text in listing_report.notes(lines):
                self.say(number, text)

    def with_types(self, lines):
        if not self.single or not lines:
            return lines
        if lines[0][0] == 0:
            self.say(0, "no line number is left in front for DEFSNG A-Z", True)
            return lines
        return [(lines[0][0] - 1, "DEFSNG A-Z"), *lines]

    def reports(self):
        """What was said, in the order of the lines."""
        for number, by_hand, text in sorted(dict.fromkeys(self.said), key=lambda said: said[0]):
            yield f"{number}: {'TO DO: ' if by_hand else ''}{text}"


def apart(before, text):
    """A remark apart from the word in front of it."""
    return " " + text if before[-1:].isalnum() and text[:1].isalnum() else text


def fail(what):
    print(f"{NAME}: {what}", file=sys.stderr)
    sys.exit(2)


def main():
    summary, _, rest = __doc__.split("\n\n", 2)
    parser = argparse.ArgumentParser(description=f"{summary}\n\n{rest}",
                                     formatter_class=argparse.RawDescriptionHelpFormatter,
                                     prog=NAME, usage=f"{NAME} LISTING.BAS [-o FILE] [--single] [--keep NAME,...]",
                                     allow_abbrev=False)
    parser.add_argument("listing")
    parser.add_argument("-o", "--output")
    parser.add_argument("--single", action="store_true")
    parser.add_argument("--keep", default="")
    options = parser.parse_args()
    try:
        text = Path(options.listing).read_bytes().decode("latin-1")
    except OSError as error:
        fail(error)
    if text.startswith(("\xff\xfe", "\xfe\xff")) or "\0" in text[:2]:
        fail(f"{options.listing} is in UTF-16, which is not understood: save it as UTF-8")
    listing = Listing(text, [name for name in options.keep.upper().split(",") if name], options.single)
    lines = listing.convert()
    if not lines:
        fail(f"there is no line with a number in {options.listing}")
    program = "".join(f"{number} {text}\n" for number, text in lines).encode("latin-1")
    try:
        if options.output:
            Path(options.output).write_bytes(program)
        else:
            sys.stdout.buffer.write(program)
            sys.stdout.flush()
    except OSError as error:
        fail(error)
    for line in listing.reports():
        print(line, file=sys.stderr)
    return 1 if any(by_hand for _, by_hand, _ in listing.said) else 0


if __name__ == "__main__":
    sys.exit(main())

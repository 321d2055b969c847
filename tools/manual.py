#!/usr/bin/env python3
"""Keeps the manual true.

The pages of docs/reference have a section "## NAME" for every entry of HELP, in the order of HELP's table, with the
entry's text as an indented line below it and at least one example.

An example is a fenced block of the language "basic" in any page of docs/: lines that begin with "> " are typed, the
others are what the screen shows then. It is a case of the transcript runner (tests/language/README.md tells all that
it may hold). Options that only prepare it (files, a clock) stand in an HTML comment in front of the block, so that the
reader does not see them; "@example NAME.BAS" puts a program of examples/ on the volume:

    <!-- example
    @file NAMES.TXT
    |Ada
    -->

    tools/manual.py --write                  puts HELP's texts into the reference
    tools/manual.py --check                  tells where the manual differs from the sources, and broken links
    tools/manual.py --cases FILE             writes all examples as cases of the transcript runner
    tools/manual.py --test RUNNER OPTION...  checks, then plays all examples with the runner, and asks HELP for everything
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
DOCS = ROOT / "docs"
REFERENCE = DOCS / "reference"
STRING = r'"(?:[^"\\]|\\.)*"'
FENCE = "```"
SCREEN_WIDTH = 80  # of the transcript runner


def unquote(literals):
    """The text of adjacent C++ string literals."""
    return "".join(re.sub(r"\\(.)", r"\1", literal[1:-1]) for literal in re.findall(STRING, literals))


def help_entries():
    """(category, name, text) of every entry of HELP, in order."""
    source = (ROOT / "src/help/help_table.cpp").read_text()
    pattern = r"\{(%s),\s*(%s),\s*((?:%s\s*)+)\}" % (STRING, STRING, STRING)
    return [tuple(unquote(part) for part in match.groups()) for match in re.finditer(pattern, source)]


def sections(page):
    """The preface and the (heading, lines) of each "## " section of a page's lines."""
    preface, found, fenced = [], [], False
    for line in page:
        fenced ^= line.startswith(FENCE)
        if line.startswith("## ") and not fenced:
            found.append((line[3:], []))
        else:
            (found[-1][1] if found else preface).append(line)
    return preface, found


def categories(entries):
    """The entries by category, in order."""
    grouped = {}
    for category, name, text in entries:
        grouped.setdefault(category, []).append((name, text))
    return grouped


def page_of(category):
    return REFERENCE / (category.lower() + ".md")


def with_text(lines, text):
    """A section's lines with HELP's text as its only indented line at the top."""
    rest = list(lines)
    while rest and (not rest[0] or rest[0].startswith("    ")):
        rest.pop(0)
    return ["", "    " + text, ""] + rest


def write():
    for category, entries in categories(help_entries()).items():
        preface, found = sections(page_of(category).read_text().splitlines())
        texts = dict(entries)
        out = preface
        for heading, lines in found:
            out += ["## " + heading] + with_text(lines, texts.get(heading, ""))
        page_of(category).write_text("\n".join(out).rstrip() + "\n")


def problems():
    found = []
    entries = help_entries()
    for category, wanted in categories(entries).items():
        page = page_of(category)
        if not page.exists():
            found.append("%s is missing" % page.name)
            continue
        _, present = sections(page.read_text().splitlines())
        if [heading for heading, _ in present] != [name for name, _ in wanted]:
            names = {name for name, _ in wanted}
            headings = {heading for heading, _ in present}
            found.append("%s: entries missing: %s; unknown: %s; else the order differs"
                         % (page.name, sorted(names - headings), sorted(headings - names)))
        texts = dict(wanted)
        for heading, lines in present:
            if lines[:2] != ["", "    " + texts.get(heading, "")]:
                found.append("%s: %s does not show HELP's text; tools/manual.py --write mends it" % (page.name, heading))
            if FENCE + "basic" not in lines:
                found.append("%s: %s has no example" % (page.name, heading))
    return found + undescribed_messages() + unlisted_examples() + broken_links()


def undescribed_messages():
    """Error messages that docs/errors.md leaves out. Those that begin alike share a row."""
    page = (DOCS / "errors.md").read_text()
    messages = re.findall(r"inline constexpr char \w+\[\] = (%s);" % STRING, (ROOT / "src/program/messages.h").read_text())
    return ["errors.md: %s is missing" % message for message in messages
            if not unquote(message).startswith(("Expected ", "Too many ")) and unquote(message) not in page]


def unlisted_examples():
    """Programs that docs/examples.md leaves out, and those that it names in vain."""
    named = set(re.findall(r"`(\w+\.bas)`", (DOCS / "examples.md").read_text()))
    there = {path.name for path in (ROOT / "examples").glob("*.bas")}
    return ["examples.md: %s is missing here or in examples/" % name for name in sorted(named ^ there)]


def without_fences(page):
    """A page's lines outside of fenced blocks."""
    fenced = False
    for line in page.read_text().splitlines():
        fenced ^= line.startswith(FENCE)
        if not fenced:
            yield line


def anchors(page):
    """What a link may name behind "#": the headings, in small letters, without marks and with hyphens for blanks."""
    titles = [re.sub(r"^#+ ", "", line) for line in without_fences(page) if re.match(r"#+ ", line)]
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def broken_links():
    """Links between the pages that lead nowhere."""
    found = []
    for page in sorted(DOCS.rglob("*.md")) + [ROOT / "README.md"]:
        text = "\n".join(without_fences(page))
        for target, anchor in re.findall(r"\]\(([^)#:,\s]*)(?:#([^)\s]*))?\)", text):
            there = page.parent / target if target else page
            if not there.exists():
                found.append("%s: nothing is at %s" % (page.relative_to(ROOT), target))
            elif anchor and anchor not in anchors(there):
                found.append("%s: %s has no heading %s" % (page.relative_to(ROOT), target or "it", anchor))
    return found


def examples(page):
    """(line number, options, lines) of every example of a page."""
    options, block, start, inside_comment = [], None, 0, False
    for number, line in enumerate(page.read_text().splitlines(), 1):
        if block is not None:
            if line == FENCE:
                yield start, options, block
                options, block = [], None
            else:
                block.append(line)
        elif line == "<!-- example":
            inside_comment = True
        elif inside_comment:
            if line == "-->":
                inside_comment = False
            else:
                options.append(line)
        elif line == FENCE + "basic":
            block, start = [], number


def with_programs(options):
    """The options with the programs of examples/ written out as files."""
    out = []
    for option in options:
        if option.startswith("@example "):
            name = option.split()[1]
            lines = (ROOT / "examples" / name).read_text().splitlines()
            out += ["@file " + name.upper()] + ["|" + line.replace("\\", "\\\\") for line in lines]
        else:
            out.append(option)
    return out


def help_cases():
    """Cases that ask HELP for every entry; a name that stands in two categories shows the first."""
    unreachable = {"ELSE", "REM"}  # they end the statement HELP
    entries = {name: text for _, name, text in reversed(help_entries()) if name not in unreachable}
    out = []
    for number, (name, text) in enumerate(reversed(entries.items())):
        if number % 20 == 0:  # a screen holds 128 rows
            out += ["", "=== HELP shows the reference's lines, from %s on" % name]
        # A full row has wrapped already, so that the line end behind it leaves an empty one.
        rows = [text[at : at + SCREEN_WIDTH].rstrip() for at in range(0, len(text) + 1, SCREEN_WIDTH)]
        out += ["> HELP " + name] + [row or "|" for row in rows]
    return out + [""]


def cases():
    """All examples as cases of the transcript runner."""
    out = help_cases()
    for page in sorted(DOCS.rglob("*.md")):
        for number, options, lines in examples(page):
            out.append("=== %s:%d" % (page.relative_to(DOCS), number))
            out += with_programs(options) + lines + [""]
    return "\n".join(out)


def test(runner):
    failures = problems()
    for failure in failures:
        print(failure)
    with tempfile.NamedTemporaryFile("w", suffix=".txt") as file:
        file.write(cases())
        file.flush()
        played = subprocess.run(runner + [file.name], check=False)
    return 1 if failures else played.returncode


def main(words):
    if words == ["--write"]:
        write()
        return 0
    if words == ["--check"]:
        print("\n".join(problems()))
        return 1 if problems() else 0
    if len(words) == 2 and words[0] == "--cases":
        Path(words[1]).write_text(cases())
        return 0
    if len(words) >= 2 and words[0] == "--test":
        return test(words[1:])
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

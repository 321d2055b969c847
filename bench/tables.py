"""Puts what a measurement has printed into the page that tells of it.

A part's section of the page has the lines that describe the machine and a table; both are replaced by those that the part has
printed, and all around them stays. Where a part prints several tables, they are put in the place of as many.
"""

import re

SECTIONS = {"tasks": "## Tasks", "screen": "## Screen", "editor": "## The program's lines", "growth": "## Growth",
            "startup": "## Start-up", "code": "## Making machine code", "shapes": "## Shapes", "even": "## Evenly fast", "web": "## In the browser"}

TABLE = re.compile(r"(?:^\|.*\n)+", re.MULTILINE)
MACHINE = re.compile(r"^Processor: .*\n(?:^(?:Image|Peers): .*\n)*", re.MULTILINE)


def section_bounds(page, heading):
    start = page.find(f"\n{heading}\n")
    end = page.find("\n## ", start + 1)
    return start, len(page) if end < 0 else end


def replaced(section, pattern, pieces):
    """The section with its first pieces replaced, one by one, and those that it does not have at its end."""
    at = 0
    for piece in pieces:
        found = pattern.search(section, at)
        if found:
            section = section[:found.start()] + piece + section[found.end():]
            at = found.start() + len(piece)
        else:
            section = section.rstrip("\n") + "\n\n" + piece
            at = len(section)
    return section


def put_into(page, part, output):
    """The page with what the part has printed in its section."""
    if f"\n{SECTIONS[part]}\n" not in page:
        page += f"\n{SECTIONS[part]}\n"
    start, end = section_bounds(page, SECTIONS[part])
    section = replaced(page[start:end], MACHINE, MACHINE.findall(output)[:1])
    section = replaced(section, TABLE, TABLE.findall(output))
    return page[:start] + section.rstrip("\n") + "\n" + page[end:]

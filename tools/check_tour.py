#!/usr/bin/env python3
"""Checks that docs/inside.md and CONTRIBUTING.md name only files, folders and names that there are, and that the tour
shows every room of src/.

A path is what stands in backticks and has a slash or ends like a source: it is looked for in the checkout, in src/, and
beside the file named before it on the line. "*" stands for any name. A name is what stands in backticks and has an
underscore or a parenthesis behind it: it must be a word of some source, build file or script.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGES = ["docs/inside.md", "CONTRIBUTING.md"]
PATH = re.compile(r"`((?:[\w.*-]+/)*[\w*-]+(?:\.(?:h|cpp|py|sh|cmake|md)|/))`")
# Shown as what they would be called, or made by a build.
EXAMPLES = {"tests/language/FOLDER", "build/web/", "do_xxx", "KW_"}
NAME = re.compile(r"`([A-Za-z_][\w.:]*)(\([^`]*\))?`")
SOURCES = {".h", ".cpp", ".py", ".sh", ".cmake", ".txt", ".json"}
SOURCE_FOLDERS = ["src", "host", "tests", "bench", "tools", "cmake"]


def exists(name, folders):
    return any(next(folder.glob(name.rstrip("/")), None) for folder in folders)


def missing_paths(page):
    """The paths that a page names and nobody has, as lines of text."""
    faults = []
    for number, line in enumerate((ROOT / page).read_text(encoding="utf-8").splitlines(), 1):
        folders = [ROOT, ROOT / "src"]
        for name in PATH.findall(line):
            if name not in EXAMPLES and not exists(name, folders):
                faults.append(f"{page}:{number}: there is no {name}")
            folders += [(base / name).parent for base in (ROOT, ROOT / "src") if (base / name).exists()]
    return faults


def known_words():
    """Every word of the sources and of what builds them."""
    paths = [path for folder in SOURCE_FOLDERS for path in (ROOT / folder).rglob("*") if path.suffix in SOURCES]
    paths += [ROOT / "CMakeLists.txt", ROOT / "CMakePresets.json"]
    return {word for path in paths for word in re.findall(r"\w+", path.read_text(encoding="utf-8", errors="replace"))}


def unknown_names(page, words):
    """The names of functions, variables and options that a page gives and no source has, as lines of text."""
    return [
        f"{page}:{number}: nothing is called {name}"
        for number, line in enumerate((ROOT / page).read_text(encoding="utf-8").splitlines(), 1)
        for name, arguments in NAME.findall(line)
        if name not in EXAMPLES and ("_" in name or arguments) and not set(re.findall(r"\w+", name)) <= words
    ]


def unnamed_rooms():
    """The folders of src/ that hold sources and are not in the tour's table."""
    tour = (ROOT / "docs/inside.md").read_text(encoding="utf-8")
    named = set(re.findall(r"^\| `([\w/]+)/` \|", tour, re.MULTILINE))
    rooms = {str(path.parent.relative_to(ROOT / "src")) for path in (ROOT / "src").rglob("*.h")} - {"."}
    return [
        f"docs/inside.md: the table of rooms lacks {room}"
        for room in sorted(rooms)
        if room not in named and room.split("/")[0] not in named and room != "statements"
    ]


def main():
    words = known_words()
    faults = [fault for page in PAGES for fault in missing_paths(page) + unknown_names(page, words)] + unnamed_rooms()
    print("\n".join(faults) or "the tour names what there is")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()

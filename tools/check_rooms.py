#!/usr/bin/env python3
"""Checks the floors of src/: what a folder may include, that no two units include each other, and that primitives
know no tokens.

A unit is a header together with the source of the same name. Prints what is wrong and ends with status 1, or
says how many includes it looked at.
"""
import pathlib
import re
import sys

# From the ground up: a folder includes its own files and those of the folders in front of it. The files that lie
# in src/ itself are the roof.
FLOORS = [
    "platform",
    "numbers",
    "screen",
    "program",
    "values",
    "files",
    "run",
    "fast",
    "native",
    "statements",
    "help",
    "prompt",
    "explorer",
    "image",
    "",
]
# What draws, counts and stores is told what to do: only statements read the program's tokens.
WITHOUT_TOKENS = {"platform", "numbers", "screen", "files"}
TOKENS = re.compile(r'\bCursor\b|^#include "program/(?:token|parse)\.h"', re.MULTILINE)
COMMENT = re.compile(r"//.*")
MOST_FILES = 50  # a folder with more has two subjects
INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)


def floor_of(path):
    """The index of the floor on which a file lies, by its path below src/."""
    return FLOORS.index(path.parts[0] if len(path.parts) > 1 else "")


def read_includes(source_folder):
    """{path: [included paths]} of all sources, relative to the folder."""
    includes = {}
    for path in sorted(source_folder.rglob("*")):
        if path.suffix in (".h", ".cpp"):
            names = INCLUDE.findall(path.read_text(encoding="utf-8"))
            includes[path.relative_to(source_folder)] = [pathlib.PurePath(name) for name in names]
    return includes


def upward_includes(includes):
    """The includes that lead to a higher floor, as lines of text."""
    return [
        f"{path} includes {included}, which lies above it"
        for path, names in includes.items()
        for included in names
        if floor_of(included) > floor_of(path)
    ]


def token_readers(source_folder, includes):
    """The files that name tokens on a floor that knows none, as lines of text."""
    return [
        f"{path} names tokens: what reads them belongs to statements"
        for path in includes
        if path.parts[0] in WITHOUT_TOKENS
        and TOKENS.search(COMMENT.sub("", (source_folder / path).read_text(encoding="utf-8")))
    ]


def unit_graph(includes):
    """{unit: units that it includes}."""
    graph = {path.with_suffix(""): set() for path in includes}
    for path, names in includes.items():
        unit = path.with_suffix("")
        graph[unit] |= {name.with_suffix("") for name in names} - {unit}
    return graph


def cycles(graph):
    """The groups of units that include each other, by Tarjan's algorithm for strongly connected components."""
    index, lowest, stack, groups = {}, {}, [], []

    def visit(unit):
        index[unit] = lowest[unit] = len(index)
        stack.append(unit)
        for other in sorted(graph.get(unit, ())):
            if other not in index:
                visit(other)
                lowest[unit] = min(lowest[unit], lowest[other])
            elif other in stack:
                lowest[unit] = min(lowest[unit], index[other])
        if lowest[unit] == index[unit]:
            start = stack.index(unit)
            group, stack[start:] = stack[start:], []
            if len(group) > 1:
                groups.append(sorted(group))

    for unit in sorted(graph):
        if unit not in index:
            visit(unit)
    return groups


def crowded_folders(includes):
    """The folders that hold too many files, as lines of text."""
    counts = {}
    for path in includes:
        counts[path.parent] = counts.get(path.parent, 0) + 1
    return [
        f"{folder} holds {count} files: {MOST_FILES} are the most that one subject needs"
        for folder, count in sorted(counts.items())
        if count > MOST_FILES
    ]


def main():
    source_folder = pathlib.Path(sys.argv[1])
    includes = read_includes(source_folder)
    strangers = {path.parts[0] for path in includes if len(path.parts) > 1} - set(FLOORS)
    if strangers:
        sys.exit(f"no floor is named for the folders {', '.join(sorted(strangers))}: add them to FLOORS")
    faults = upward_includes(includes) + crowded_folders(includes) + token_readers(source_folder, includes)
    faults += ["these include each other: " + ", ".join(map(str, group)) for group in cycles(unit_graph(includes))]
    for fault in faults:
        print(fault)
    print(f"{sum(map(len, includes.values()))} includes in {len(includes)} files, {len(faults)} faults")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Runs clang-tidy over all sources of src/, in two thirds of the processor time that it takes for one after the other.

usage: run_tidy.py FOLDER      of the build tree, with compile_commands.json

Most of the time goes into the standard library's headers, which every check walks through for each source. So the
sources of a folder are looked at together, as parts of one that includes them. What follows a program's paths, and
what depends on what else is in the file, is looked at in each source by itself. Sources that have names in common, and
those that do not compile together, are not put together. The status is 1 when something is found.
"""

import concurrent.futures
import fnmatch
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
CONFIGURATION = f"-config-file={ROOT / '.clang-tidy'}"
ALONE = ["clang-analyzer-*", "bugprone-suspicious-include", "misc-unused-*-decls", "readability-redundant-declaration"]
# What begins at the left margin and is named there: functions, variables, types, enumerators' types.
DEFINED = re.compile(r"^(?!namespace|[#/} ])[^\n;=({]*?\b(\w+)\s*[;=({\[]|^(?:struct|class|enum(?: class)?|using) (\w+)", re.MULTILINE)
# One process looks at so many sources, each by itself: starting is a fifth of what one takes.
AT_A_TIME = 10
BROKEN = "[clang-diagnostic-error"


def checks_to_do():
    """The checks that .clang-tidy chooses, as what clang-tidy's option takes: for sources together, and for each alone."""
    listed = subprocess.run(["clang-tidy", "--list-checks", CONFIGURATION], check=True, capture_output=True, text=True)
    chosen = [line.strip() for line in listed.stdout.splitlines() if line.startswith(" ")]
    alone = [check for check in chosen if any(fnmatch.fnmatch(check, pattern) for pattern in ALONE)]
    return ",".join("-" + check for check in alone), ",".join(["-*", *alone])


def defined_names(source):
    return {first or second for first, second in DEFINED.findall(source.read_text())}


def groups_of(sources):
    """The sources of each folder, in lists without common names."""
    groups = []
    for folder in sorted({source.parent for source in sources}):
        in_folder = []
        for source in sorted(source for source in sources if source.parent == folder):
            names = defined_names(source)
            for members, taken in in_folder:
                if not names & taken:
                    members.append(source)
                    taken |= names
                    break
            else:
                in_folder.append(([source], names))
        groups += [members for members, _ in in_folder]
    return groups


class Tidy:
    def __init__(self, tree):
        self.folder = tree / "tidy"
        self.folder.mkdir(exist_ok=True)
        commands = json.loads((tree / "compile_commands.json").read_text())
        self.commands = {
            pathlib.Path(entry["file"]): entry for entry in commands if (ROOT / "src") in pathlib.Path(entry["file"]).parents
        }

    def write_database(self, groups):
        """Files that include the groups' sources, compiled as their first ones are."""
        entries = []
        for number, members in enumerate(groups):
            together = self.folder / f"{number}.cpp"
            text = "".join(f'#include "{source}"\n' for source in members)
            if not together.exists() or together.read_text() != text:
                together.write_text(text)
            entry = self.commands[members[0]]
            command = entry["command"].replace(entry["file"], str(together))
            entries.append({**entry, "file": str(together), "command": command})
        (self.folder / "compile_commands.json").write_text(json.dumps(entries, indent=1))

    def run(self, sources, checks, database):
        # Warnings that GCC does not have are none of ours.
        done = subprocess.run(
            ["clang-tidy", "-quiet", "-extra-arg=-Wno-error", f"-checks={checks}", CONFIGURATION, "-p", str(database), *map(str, sources)],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
        )  # fmt: skip
        # What it counts and does not show goes to the other stream; so does why it could not run.
        return done.returncode, done.stdout if done.stdout or not done.returncode else done.stderr

    def look_at(self, sources, checks):
        return self.run(sources, checks, self.folder.parent)

    def look_together(self, number, members, checks):
        result = self.run([self.folder / f"{number}.cpp"], checks, self.folder)
        return self.look_at(members, checks) if BROKEN in result[1] else result


def main():
    tidy = Tidy(pathlib.Path(sys.argv[1]).resolve())
    groups = groups_of(list(tidy.commands))
    tidy.write_database(groups)
    together, alone = checks_to_do()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        tasks = [pool.submit(tidy.look_together, number, members, together) for number, members in enumerate(groups)]
        sources = sorted(tidy.commands)
        tasks += [pool.submit(tidy.look_at, sources[at : at + AT_A_TIME], alone) for at in range(0, len(sources), AT_A_TIME)]
        results = [task.result() for task in tasks]
    found = sorted({text for _, text in results if text})
    print("".join(found), end="")
    print(f"{len(tidy.commands)} sources, {len(groups)} looked at together")
    sys.exit(1 if any(status for status, _ in results) else 0)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Do the tests bite? Changes one place of src/ at a time, builds the image and the interpreter's library from a copy, and
lets the quick tests find the change.

usage: mutate.py [--seed N] [--count N] [--folder FOLDER] [--list]
                 [--targets TARGET...] [--tests REGEX]      build and run a part only
       mutate.py --table            what has come of all mutants so far, by folder

A mutant is an operator, a bound, a condition, a call or an assignment changed; the seed chooses the places. Results are
added to build/mutants/results.jsonl, so that a campaign adds up over many runs and goes on where it was stopped. A mutant
that does not compile is none. One that makes the same image as the unchanged sources is equivalent. The rest are noticed
by the first test that fails, or survive: each survivor is read, and gets a test or is shown to be equivalent.

It works in a copy of what is committed, build/mutants/tree, with the compilers that ./dev build needs.
"""

import argparse
import collections
import hashlib
import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
WORK = ROOT / "build/mutants"
TREE = WORK / "tree"
RESULTS = WORK / "results.jsonl"
PATIENCE = 900  # seconds of one step: a mutant may make anything hang
# Texts and tables whose places are no code.
NO_CODE = {"help/help_table.cpp", "numbers/kernel_tables.cpp", "fast/general_only.cpp"}

# What is changed, and into what. Each pattern has one group, which is replaced.
CHANGES = [
    ("comparison", r" (==) ", ["!="]),
    ("comparison", r" (!=) ", ["=="]),
    ("bound", r" (<) ", ["<="]),
    ("bound", r" (<=) ", ["<"]),
    ("bound", r" (>) ", [">="]),
    ("bound", r" (>=) ", [">"]),
    ("operator", r"[\w)\]] (\+) ", ["-"]),
    ("operator", r"[\w)\]] (-) ", ["+"]),
    ("operator", r"[\w)\]] (\*) ", ["+"]),
    ("operator", r"[\w)\]] (&) ", ["|"]),
    ("condition", r" (&&) ", ["||"]),
    ("condition", r" (\|\|) ", ["&&"]),
    ("condition", r"\bif \((?!constexpr)(.+)\) (?:return|continue|break|\{)", ["true", "false"]),
    ("condition", r"\((!)\w", [""]),
    ("constant", r"[ (](\d+)[;,) ]", ["+1", "-1"]),
    ("truth", r"\b(true)\b", ["false"]),
    ("truth", r"\b(false)\b", ["true"]),
    ("call", r"^ +((?!return|if|for|while|else|case)[\w.:>-]+\([^;{}]*\);)$", [""]),
    ("assignment", r"^ +((?!return|const|auto|static)[\w.>\[\]-]+ [+|-]?= [^;{}]*;)$", [""]),
    ("increment", r"(\+\+)\w", ["--"]),
]  # fmt: skip


def without_strings_and_comments(line):
    """The same length, so that places stay."""
    line = re.sub(r'"(?:[^"\\]|\\.)*"', lambda text: '"' + "_" * (len(text[0]) - 2) + '"', line)
    return re.sub(r"//.*$", lambda text: " " * len(text[0]), line)


def places(folder):
    """All places: file, line number, columns, new text, kind."""
    for file in sorted((ROOT / "src").rglob("*.cpp")):
        name = str(file.relative_to(ROOT / "src"))
        if name in NO_CODE or (folder and not name.startswith(folder.rstrip("/") + "/")):
            continue
        for number, line in enumerate(file.read_text().split("\n")):
            plain = without_strings_and_comments(line)
            if plain.lstrip().startswith(("#", "static_assert", "template")):
                continue
            for kind, pattern, news in CHANGES:
                for match in re.finditer(pattern, plain):
                    for new in news:
                        old = line[match.start(1) : match.end(1)]
                        text = str(int(old) + int(new)) if kind == "constant" else new
                        if not (kind == "constant" and text.startswith("-")):
                            yield (name, number, match.start(1), match.end(1), text, kind)


def run(command):
    environment = dict(os.environ, CCACHE_BASEDIR=str(TREE), CCACHE_NOHASHDIR="1")
    try:
        return subprocess.run(command, cwd=TREE, capture_output=True, text=True, timeout=PATIENCE, env=environment)
    except subprocess.TimeoutExpired:
        return None


# What is built and run; nothing is everything.
part = argparse.Namespace(targets=[], tests="")


def prepare():
    """A tree of its own, with what is committed, configured and built once."""
    if TREE.exists():
        shutil.rmtree(TREE)
    WORK.mkdir(parents=True, exist_ok=True)
    subprocess.run(["git", "clone", "--quiet", "--no-hardlinks", str(ROOT), str(TREE)], check=True)
    launcher = ["-D", "CMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
    for preset in ("image", "host"):
        subprocess.run(["cmake", "--preset", preset, *launcher], cwd=TREE, check=True, capture_output=True)
    built = build()
    if built:
        sys.exit(f"mutate.py: the unchanged sources do not build: {built}")
    failed = test()
    if failed:
        sys.exit(f"mutate.py: the unchanged sources fail {failed}")


def build():
    """Nothing, or what went wrong."""
    for preset in ("image", "host"):
        targets = part.targets if preset == "host" else []
        done = run(["ninja", "-C", f"build/{preset}", *targets])
        if done is None or done.returncode != 0:
            return "time" if done is None else done.stdout[-2000:]
    return ""


def image_sum():
    return hashlib.sha256((TREE / "build/korvane.efi").read_bytes()).hexdigest()


def test():
    """The name of a test that fails, or nothing. Tests of the sources' looks are left out."""
    done = run(["ctest", "--test-dir", "build/host", "-LE", "full", "-E", "^(format|rooms|tour|tail_calls|editor_|completions)",
                "-R", part.tests or ".", "--stop-on-failure", "-j", "2", "--timeout", "300"])  # fmt: skip
    if done is None:
        return "time"
    if done.returncode == 0:
        return ""
    found = re.findall(r"^\s*\d+ - (\S+) \(", done.stdout, re.MULTILINE)
    return found[0] if found else "some test"


def judge(place, unchanged):
    name, number, begin, end, new, kind = place
    path = TREE / "src" / name
    content = path.read_text()
    lines = content.split("\n")
    lines[number] = lines[number][:begin] + new + lines[number][end:]
    path.write_text("\n".join(lines))
    start = time.monotonic()
    try:
        if build():
            outcome, by = "none", "compiler"
        elif image_sum() == unchanged:
            outcome, by = "equivalent", "same image"
        else:
            by = test()
            outcome = "noticed" if by else "survived"
    finally:
        path.write_text(content)
    return {
        "file": name, "line": number + 1, "kind": kind, "old": content.split("\n")[number][begin:end], "new": new,
        "column": begin, "outcome": outcome, "by": by, "seconds": round(time.monotonic() - start, 1),
    }  # fmt: skip


def results():
    if not RESULTS.exists():
        return []
    return [json.loads(line) for line in RESULTS.read_text().splitlines()]


def print_table():
    rows = collections.defaultdict(collections.Counter)
    for one in results():
        folder = one["file"].split("/")[0] if "/" in one["file"] else "src itself"
        rows[folder][one["outcome"]] += 1
        rows["all"][one["outcome"]] += 1
    print("| Folder | Mutants | Noticed | Survived | Same image | Noticed of those that differ |")
    print("|---|---:|---:|---:|---:|---:|")
    for folder in sorted(rows, key=lambda name: (name == "all", name)):
        row = rows[folder]
        differ = row["noticed"] + row["survived"]
        share = f"{100 * row['noticed'] / differ:.1f} %" if differ else ""
        print(f"| {folder} | {differ + row['equivalent']} | {row['noticed']} | {row['survived']} | {row['equivalent']} | {share} |")
    for one in results():
        if one["outcome"] == "survived":
            print(f"src/{one['file']}:{one['line']}: {one['kind']} {one['old']!r} became {one['new']!r}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, default=10, help="mutants that compile")
    parser.add_argument("--folder", default="", help="of src/")
    parser.add_argument("--list", action="store_true", help="only show the places that the seed chooses")
    parser.add_argument("--table", action="store_true")
    parser.add_argument("--targets", nargs="*", default=[], help="of the host tree")
    parser.add_argument("--tests", default="", help="of ctest")
    options = parser.parse_args()
    part.targets, part.tests = options.targets, options.tests
    if options.table:
        print_table()
        return
    chosen = list(places(options.folder))
    random.Random(options.seed).shuffle(chosen)
    if options.list:
        print(f"{len(chosen)} places")
        for name, number, begin, end, new, kind in chosen[: options.count]:
            line = (ROOT / "src" / name).read_text().split("\n")[number]
            print(f"src/{name}:{number + 1}: {kind} {line[begin:end]!r} -> {new!r}   {line.strip()}")
        return
    known = {(one["file"], one["line"], one["column"], one["new"]) for one in results()}
    prepare()
    unchanged = image_sum()
    made = 0
    for place in chosen:
        if made == options.count:
            break
        if (place[0], place[1] + 1, place[2], place[4]) in known:
            continue
        one = judge(place, unchanged)
        with open(RESULTS, "a") as file:
            file.write(json.dumps(one) + "\n")
        made += one["outcome"] != "none"
        print(f"{one['outcome']:10} src/{one['file']}:{one['line']} {one['old']!r} -> {one['new']!r} ({one['by']}, {one['seconds']} s)", flush=True)
    print_table()


if __name__ == "__main__":
    main()

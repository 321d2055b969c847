#!/usr/bin/env python3
"""Do the tests bite? Changes one place of src/ at a time, compiles that file, and lets the quick tests find the change:
those first that found changes of the same folder soonest, up to the first that fails.

usage: mutate.py [--seed N] [--count N] [--folder FOLDER] [--list]
       mutate.py --again            the survivors once more, after tests have been added
       mutate.py --table            what has come of all mutants so far, by folder
options: --hours H                  begin no mutant after so long
         --no-image                 leave out the tests that play the image itself, not the interpreter linked into them

A mutant is an operator, a bound, a condition, a call or an assignment changed; the seed chooses the places. Results are
added to build/mutants/results.jsonl, so that a campaign adds up over many runs and goes on where it was stopped. A mutant
that does not compile is none. One that compiles to the same object is equivalent. The rest are noticed by the first test
that fails, or survive: each survivor is read, and gets a test or is shown to be equivalent, which
tests/mutants/equivalent.txt tells.

It works in a copy of what is committed, build/mutants/tree, which is kept from run to run. What ninja and the tests say
is in build/mutants/log.
"""

import argparse
import collections
import fcntl
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

from mutation_places import folder_of, places

ROOT = pathlib.Path(__file__).resolve().parents[1]
WORK = ROOT / "build/mutants"
TREE = WORK / "tree"
HOST = TREE / "build/host"
RESULTS = WORK / "results.jsonl"
BASELINE = WORK / "baseline.json"
CLEAN = WORK / "clean"  # the unchanged programs
EQUIVALENT = ROOT / "tests/mutants/equivalent.txt"
USUAL_SECONDS = {"failing-services": 10, "image": 30, "korvane-replay": 1, "hosted_tests": 1}  # until they are known
STEP = "20000"  # milliseconds that a transcript's step may take: on a busy machine only what hangs takes them
# Checks of the tests' own tools, of random numbers by the million, of the host: nothing of src/ is in them.
LEFT_OUT = re.compile(r"^(HostileFolder|Linux|Terminal)")


class Test:
    """One step of the search: a program of the tests, and which of its cases."""

    def __init__(self, name, program, words, environment=None):
        self.name, self.program, self.words, self.environment = name, program, words, environment or {}


def say(text):
    print(text, flush=True)


def run(command, seconds=None, **environment):
    """Status and output; status None after too long."""
    everything = dict(os.environ, CCACHE_BASEDIR=str(TREE), CCACHE_NOHASHDIR="1", **environment)
    with open(WORK / "log", "a") as log:
        log.write(f"\n$ {' '.join(map(str, command))}\n")
        process = subprocess.Popen(
            command, cwd=TREE, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            errors="replace", env=everything, start_new_session=True,
        )  # fmt: skip
        try:
            output, _ = process.communicate(timeout=seconds)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, 9)
            process.communicate()
            log.write("too long\n")
            return None, ""
        log.write(output[-4000:])
    return process.returncode, output


def ninja(*targets, preset="host"):
    status, output = run(["ninja", "-C", TREE / "build" / preset, *targets])
    return "" if status == 0 else output


def prepare():
    """The tree with what is committed, configured and built."""
    WORK.mkdir(parents=True, exist_ok=True)
    (WORK / "log").write_text("")
    if not TREE.exists():
        subprocess.run(["git", "clone", "--quiet", "--no-hardlinks", str(ROOT), str(TREE)], check=True)
    subprocess.run(["git", "fetch", "--quiet", "origin", "HEAD"], cwd=TREE, check=True)
    subprocess.run(["git", "reset", "--quiet", "--hard", "FETCH_HEAD"], cwd=TREE, check=True)
    launcher = ["-D", "CMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
    # The interpreter is linked into the players of transcripts: a changed file is compiled once, for all of them.
    linked = ["-D", "CMAKE_EXE_LINKER_FLAGS=-Wl,-u,_ModuleEntryPoint"]
    for preset, more in (("image", []), ("host", linked)):
        if not (TREE / "build" / preset / "build.ninja").exists():
            status, output = run(["cmake", "--preset", preset, *launcher, *more])
            if status != 0:
                sys.exit(f"mutate.py: {output}")
    say("building the unchanged sources")
    for preset, targets in (("image", []), ("host", sorted(PROGRAMS))):
        output = ninja(*targets, preset=preset)
        if output:
            sys.exit(f"mutate.py: the unchanged sources do not build:\n{output[-3000:]}")


PROGRAMS = {
    "language_tests": "tests/language_tests",
    "hosted_tests": "tests/hosted_tests",
    "unit_tests": "tests/unit_tests",
    "failing-services": "tests/fuzz/failing-services",
    "korvane-replay": "tests/fuzz/korvane-replay",
    "korvane-companion": "tests/fuzz/korvane-companion",
    "korvane-terminal": "host/korvane-terminal",
    "take_picture": "tests/take_picture",
}


COMPANION = "korvane-companion"


def all_tests(with_image):
    transcripts = ["--linked", "--image", "build/korvane.efi", "--jobs", "1", "--patience", STEP, "--first-failure"]
    files = sorted((TREE / "tests/language").glob("*/*.txt")) + sorted((TREE / "tests/fuzz/found").glob("*.txt"))
    for file in files:
        yield Test(f"{file.parent.name}/{file.stem}", "language_tests", [*transcripts, file.relative_to(TREE)])
    for program in ("hosted_tests", "unit_tests"):
        _, listing = run([HOST / PROGRAMS[program], "--gtest_list_tests"])
        for suite in re.findall(r"^([\w/]+)\.", listing, re.MULTILINE):
            if not LEFT_OUT.match(suite):
                yield Test(f"{program}:{suite}", program, [f"--gtest_filter={suite}.*", "--gtest_fail_fast"])
    yield Test("fuzz_corpora", "korvane-replay", ["--companion", COMPANION, "--all", "tests/fuzz/corpus"])
    yield Test("failing_services", "failing-services", [])
    if with_image:
        yield Test("image", "image", [])


def play(test, clean=False, seconds=None):
    """Whether the test fails, on the mutant or on the unchanged programs. The tests that play the image itself are one,
    by ctest."""
    if test.program == "image":
        if not clean and ninja(preset="image"):
            return True
        names = "^(manual|listings|converter|picture_.*|example_.*)$"
        command = ["ctest", "--test-dir", HOST, "-LE", "full", "-R", names, "--stop-on-failure", "--timeout", "600"]
    else:
        words = [program_of(word, clean) if word == COMPANION else word for word in test.words]
        command = [program_of(test.program, clean), *words]
    status, _ = run(command, seconds, **test.environment)
    return status != 0


def program_of(name, clean):
    return CLEAN / name if clean else HOST / PROGRAMS[name]


class Baseline:
    """Which tests the unchanged sources pass, and how long they take. A test is tried when it first fails for a mutant. One
    that fails without any, because the interpreter's stack frames are larger here than in the image, takes no part."""

    def __init__(self):
        commit = subprocess.run(["git", "rev-parse", "HEAD"], cwd=TREE, capture_output=True, text=True, check=True)
        self.known = json.loads(BASELINE.read_text()) if BASELINE.exists() else {}
        if self.known.get("commit") != commit.stdout.strip():
            self.known = {"commit": commit.stdout.strip(), "seconds": {}, "failed": []}
            if CLEAN.exists():
                shutil.rmtree(CLEAN)
            CLEAN.mkdir()
            for name, path in PROGRAMS.items():
                shutil.copy(HOST / path, CLEAN / name)
            self.write()

    def write(self):
        BASELINE.write_text(json.dumps(self.known))

    def passes(self, test):
        if test.name not in self.known["seconds"] and test.name not in self.known["failed"]:
            begin = time.monotonic()
            if test.program != "image" and play(test, clean=True):
                self.known["failed"].append(test.name)
            else:
                self.known["seconds"][test.name] = round(time.monotonic() - begin, 2)
            self.write()
        return test.name not in self.known["failed"]

    def seconds(self, test):
        return self.known["seconds"].get(test.name, USUAL_SECONDS.get(test.program, 0.3))


def results():
    """The latest of each mutant."""
    latest = {}
    if RESULTS.exists():
        for line in RESULTS.read_text().splitlines():
            one = json.loads(line)
            latest[key_of(one)] = one
    return list(latest.values())


def key_of(one):
    return (one["file"], one["line"], one["column"], one["new"], one["source"])


def in_order(tests, baseline, name):
    """Those first that are likely to notice a change of this file, for what they cost."""
    folder = folder_of(name)
    noticed = collections.Counter()
    mutants = collections.Counter()
    for one in results():
        kin = folder_of(one["file"]) == folder
        for counter, key in ((noticed, one["by"]), (mutants, "")):
            counter[key] += 4 if kin else 1

    def worth(test):
        last = name.split("/")[-1].removesuffix(".cpp")
        words = set(re.split(r"[/_]|s\b", name.removesuffix(".cpp").lower())) - {""}
        kin = not words.isdisjoint(re.split(r"[/_:]|s\b", test.name.lower())) or last.replace("_", "") in test.name.lower()
        expected = noticed[test.name] + (2 if kin else 0.3)
        return expected / (mutants[""] + 5) / (baseline.seconds(test) + 0.5)

    return sorted(tests, key=worth, reverse=True)


def object_of(name):
    kind = "interpreter" if name.startswith("fast/") else "interpreter_objects"
    return f"CMakeFiles/{kind}.dir/src/{name}.o"


def sum_of(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def judge(place, tests, baseline):
    name, number, begin, end, new, kind = place
    path, made = TREE / "src" / name, HOST / object_of(name)
    content = path.read_text()
    lines = content.split("\n")
    one = {
        "file": name, "line": number + 1, "column": begin, "source": lines[number].strip(), "kind": kind,
        "old": lines[number][begin:end], "new": new, "by": "",
    }  # fmt: skip
    lines[number] = lines[number][:begin] + new + lines[number][end:]
    start = time.monotonic()
    ninja(object_of(name))
    unchanged = sum_of(made)
    path.write_text("\n".join(lines))
    built = set()
    try:
        if ninja(object_of(name)):
            one |= {"outcome": "none", "by": "compiler"}
        elif sum_of(made) == unchanged:
            one |= {"outcome": "equivalent", "by": "same object"}
        else:
            one["outcome"] = "survived"
            for test in in_order(tests, baseline, name):
                needed = {test.program} & PROGRAMS.keys() | ({"korvane-companion"} if test.name == "fuzz_corpora" else set())
                if not needed <= built:
                    built |= needed
                    if output := ninja(*needed):
                        sys.exit(f"mutate.py: {output[-3000:]}")
                if test.name in baseline.known["failed"]:
                    continue
                if play(test, seconds=max(600, 20 * baseline.seconds(test))) and baseline.passes(test):
                    one |= {"outcome": "noticed", "by": test.name}
                    break
    finally:
        path.write_text(content)
    one["seconds"] = round(time.monotonic() - start, 1)
    return one


def known_equivalents():
    """Places that were read and make no difference that anyone could see: file, the line's text, old and new."""
    if not EQUIVALENT.exists():
        return set()
    known = set()
    for line in EQUIVALENT.read_text().splitlines():
        if line and not line.startswith("#"):
            known.add(tuple(line.split("\t")[:4]))
    return known


def is_known_equivalent(one, known):
    return (one["file"], one["source"], one["old"], one["new"]) in known


def print_table():
    rows = collections.defaultdict(collections.Counter)
    known = known_equivalents()
    left = []
    for one in results():
        outcome = one["outcome"]
        if outcome == "survived":
            outcome = "shown" if is_known_equivalent(one, known) else "survived"
            if outcome == "survived":
                left.append(one)
        for row in (folder_of(one["file"]), "all"):
            rows[row][outcome] += 1
    print("| Folder | Mutants | Noticed | Survived | Shown equivalent | Same object | Noticed of those that differ |")
    print("|---|---:|---:|---:|---:|---:|---:|")
    for folder in sorted(rows, key=lambda name: (name == "all", name)):
        row = rows[folder]
        differ = row["noticed"] + row["survived"]
        share = f"{100 * row['noticed'] / differ:.1f} %" if differ else ""
        count = differ + row["equivalent"] + row["shown"]
        print(f"| {folder} | {count} | {row['noticed']} | {row['survived']} | {row['shown']} | {row['equivalent']} | {share} |")
    for one in left:
        print(f"src/{one['file']}:{one['line']}: {one['old']!r} became {one['new']!r}: {one['source']}")


def chosen_places(options, root):
    """What is to be played of the sources below `root`, without what has been."""
    if options.again:
        known = known_equivalents()
        survivors = [one for one in results() if one["outcome"] == "survived" and not is_known_equivalent(one, known)]
        wanted = {(one["file"], one["source"], one["old"], one["new"]) for one in survivors}
        for place in places(root, ""):
            name, number, begin, end, new, _ = place
            line = (root / "src" / name).read_text().split("\n")[number]
            if (name, line.strip(), line[begin:end], new) in wanted:
                yield place
        return
    chosen = list(places(root, options.folder))
    random.Random(options.seed).shuffle(chosen)
    played = {(one["file"], one["source"], one["column"], one["new"]) for one in results()}
    for place in chosen:
        name, number, begin, _, new, _ = place
        line = (root / "src" / name).read_text().split("\n")[number]
        if (name, line.strip(), begin, new) not in played:
            yield place


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, default=10, help="mutants that compile")
    parser.add_argument("--folder", default="", help="of src/")
    parser.add_argument("--hours", type=float, default=1000)
    parser.add_argument("--list", action="store_true", help="only show the places that the seed chooses")
    parser.add_argument("--again", action="store_true")
    parser.add_argument("--table", action="store_true")
    parser.add_argument("--no-image", action="store_true")
    options = parser.parse_args()
    if options.table:
        print_table()
        return
    if options.list:
        for number, place in zip(range(options.count), chosen_places(options, ROOT)):
            name, line, begin, end, new, kind = place
            text = (ROOT / "src" / name).read_text().split("\n")[line]
            print(f"src/{name}:{line + 1}: {kind} {text[begin:end]!r} -> {new!r}   {text.strip()}")
        return
    end = time.monotonic() + options.hours * 3600
    WORK.mkdir(parents=True, exist_ok=True)
    lock = open(WORK / "lock", "w")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except OSError:
        sys.exit("mutate.py: another one is at work in build/mutants")
    prepare()
    tests = list(all_tests(not options.no_image))
    baseline = Baseline()
    made = 0
    for place in chosen_places(options, TREE):
        if (made == options.count and not options.again) or time.monotonic() > end:
            break
        one = judge(place, tests, baseline)
        with open(RESULTS, "a") as file:
            file.write(json.dumps(one) + "\n")
        made += one["outcome"] != "none"
        say(f"{one['outcome']:10} src/{one['file']}:{one['line']} {one['old']!r} -> {one['new']!r} ({one['by']}, {one['seconds']} s)")
    print_table()


if __name__ == "__main__":
    main()

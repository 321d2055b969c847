#!/usr/bin/env python3
"""Do the tests bite? Changes one place of src/ at a time, compiles that file, and lets the tests that reach it find the
change, up to the first that fails.

usage: mutate.py [--seed N] [--count N] [--folder FOLDER] [--list]
       mutate.py --again            the survivors once more, after tests have been added, and to all tests that reach them
       mutate.py --table            what has come of all mutants so far, by folder
       mutate.py --again --since COMMIT
                                    the same, first to the tests of files that have changed since then, then to
                                    --others N (120) that they have not been shown to
options: --jobs N                   mutants at a time (2)
         --hours H                  begin no mutant after so long

A mutant is an operator, a bound, a condition, a call or an assignment changed; the seed chooses the places. Results are
added to build/mutants/results.jsonl, so that a campaign adds up over many runs and goes on where it was stopped. A mutant
that does not compile is none. One that compiles to the same object is equivalent. The rest are noticed by the first test
that fails, or survive: each survivor is read, and gets a test or is shown to be equivalent, which
tests/mutants/equivalent.txt tells.

The tests are the transcripts and the manual's examples, the unit tests and those that look into the interpreter. One run
of all of them tells which reach what (mutation_reach.py); a mutant is shown to those alone that reach its place or its
function, those first that reach little else, and the first time not to all when there are many. --again shows it to all
of them, and has every firmware service fail.

It works in a copy of what is committed, build/mutants/tree, which is kept from run to run. What ninja and the tests say
is in build/mutants/log.
"""

import argparse
import collections
import concurrent.futures
import fcntl
import itertools
import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import threading
import time

from mutation_build import NATIVE, NATIVE_AT_ONCE, THRESHOLDS, Builder, sum_of
from mutation_places import folder_of, places
from mutation_reach import THE_START, Collector, NotedPrograms, find_reach

ROOT = pathlib.Path(__file__).resolve().parents[1]
WORK = ROOT / "build/mutants"
TREE = WORK / "tree"
HOST = TREE / "build/host"
RESULTS = WORK / "results.jsonl"
FAILING = WORK / "failing.json"
EQUIVALENT = ROOT / "tests/mutants/equivalent.txt"
PLAYING = ["--linked", "--image", "build/korvane.efi"]
STEP = "3000"  # milliseconds of processor time that a transcript's step may take: what takes more hangs
NOTED_STEP = "12000"
FIRST_CASES = 60  # the cases that are played before the unit tests
MOST_CASES = 150  # that a mutant is shown to the first time
SUITE_SECONDS = 60  # of processor time
LONGEST = 900  # seconds for one program of the tests, however busy the machine is
MOST_FILE_BYTES = 1 << 28  # that a test which has gone mad may write
# Checks of the tests' own tools, of random numbers by the million, of the host: nothing of src/ is in them.
LEFT_OUT = re.compile(r"^(HostileFolder|Linux|Terminal)")
SUITES = {"unit_tests": "tests/unit", "hosted_tests": "tests/hosted"}
TARGETS = ["tests/language_tests", *(f"tests/{name}" for name in SUITES), "tests/fuzz/failing-services"]


def say(text):
    print(text, flush=True)


def run(command, seconds=None, **environment):
    """Status and output; status None after too long."""
    everything = dict(os.environ, CCACHE_BASEDIR=str(TREE), CCACHE_NOHASHDIR="1", TMPDIR=str(WORK / "tmp"), **environment)
    process = subprocess.Popen(
        [str(word) for word in command], cwd=TREE, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT, text=True, errors="replace", env=everything, start_new_session=True,
    )  # fmt: skip
    try:
        output, _ = process.communicate(timeout=seconds)
        status = process.returncode
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        process.communicate()
        status, output = None, "too long\n"
    with open(WORK / "log", "a") as log:
        log.write(f"\n$ {' '.join(map(str, command))}\n{output[-4000:]}")
    return status, output


def prepare():
    """The tree with what is committed, configured and built."""
    for folder in (WORK, WORK / "tmp"):
        folder.mkdir(parents=True, exist_ok=True)
    (WORK / "log").write_text("")
    if not TREE.exists():
        subprocess.run(["git", "clone", "--quiet", "--no-hardlinks", str(ROOT), str(TREE)], check=True)
    subprocess.run(["git", "fetch", "--quiet", "origin", "HEAD"], cwd=TREE, check=True)
    subprocess.run(["git", "reset", "--quiet", "--hard", "FETCH_HEAD"], cwd=TREE, check=True)
    launcher = ["-D", "CMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
    say("building the unchanged sources")
    # The image is what transcripts copy that need the file.
    for preset, targets in (("image", ["korvane.efi"]), ("host", TARGETS)):
        if not (TREE / "build" / preset / "build.ninja").exists():
            status, output = run(["cmake", "--preset", preset, *launcher])
            if status != 0:
                sys.exit(f"mutate.py: {output}")
        status, output = run(["ninja", "-C", TREE / "build" / preset, *targets])
        if status != 0:
            sys.exit(f"mutate.py: the unchanged sources do not build:\n{output[-3000:]}")


def commit_of(*paths):
    command = ["git", "rev-parse", *(f"HEAD:{path}" for path in paths)]
    return subprocess.run(command, cwd=TREE, capture_output=True, text=True, check=True).stdout


def limited(seconds, command):
    return ["prlimit", f"--cpu={seconds}", f"--fsize={MOST_FILE_BYTES}", "--core=0", *command]


class Tests:
    """All tests, and the reach of each."""

    def __init__(self, builder, jobs):
        manual = WORK / "manual.txt"
        subprocess.run([TREE / "tools/manual.py", "--cases", manual], check=True)
        files = [*sorted((TREE / "tests/language").glob("*/*.txt")), *sorted((TREE / "tests/fuzz/found").glob("*.txt"))]
        self.files = [*(str(file.relative_to(TREE)) for file in files), os.path.relpath(manual, TREE)]
        suites = {}
        for program in SUITES:
            _, listing = run([HOST / "tests" / program, "--gtest_list_tests"])
            names = [name for name in re.findall(r"^([\w/]+)\.", listing, re.MULTILINE) if not LEFT_OUT.match(name)]
            suites[program] = {f"{program}:{name}": [f"--gtest_filter={name}.*"] for name in names}
        collector = Collector(WORK / "reach.pickle", commit_of("src"))
        words = [*PLAYING, "--jobs", str(jobs), "--patience", NOTED_STEP]
        programs = NotedPrograms(builder, WORK / "noted", jobs, collector.sources)
        say("finding out which tests reach what")
        self.reach = find_reach(collector, programs, (words, self.files), suites, sums_of_suites(), run)
        known = json.loads(FAILING.read_text()) if FAILING.exists() else {}
        key = commit_of("src", "tests")
        self.key, self.verdicts = key, known["verdicts"] if known.get("key") == key else {}
        self.lock = threading.Lock()

    def verdict(self, test, play):
        """What playing the test with the unchanged sources came to; it is played the first time."""
        with self.lock:
            if test not in self.verdicts:
                self.verdicts[test] = play()
                FAILING.write_text(json.dumps({"key": self.key, "verdicts": self.verdicts}))
            return self.verdicts[test]


class Bench:
    """Where one mutant is built and played: a folder with its programs."""

    def __init__(self, builder, folder):
        self.builder, self.folder = builder, folder
        folder.mkdir(parents=True, exist_ok=True)
        self.changed, self.built = {}, set()

    def begin(self, changed):
        self.changed, self.built = changed, set()

    def program(self, program):
        made = self.folder / program.split("/")[-1]
        if program not in self.built:
            linked = self.builder.link(program, made, self.changed)
            if linked.returncode != 0:
                raise RuntimeError(linked.stderr[-2000:])
            self.built.add(program)
        return made

    def first_failing(self, cases):
        """The name of the first of the cases that fails, "" when all pass."""
        while cases:
            (self.folder / "cases").write_text("".join(case + "\n" for case in cases))
            files = sorted({case.split(": ")[0] for case in cases})
            words = [*PLAYING, "--jobs", "1", "--patience", STEP, "--first-failure", "--named", self.folder / "cases"]
            command = limited(600, [self.program("tests/language_tests"), *words, *files])
            status, output = run(command, LONGEST)
            if status == 0:
                return ""
            failed = re.search(r"^FAILED (.*)$", output, re.MULTILINE)
            if not failed or failed[1] not in cases:
                return "" if status is None and not output else cases[0]
            return failed[1]
        return ""

    def fails(self, test):
        """Whether a suite of GoogleTest fails."""
        program, suite = test.split(":")
        words = [f"--gtest_filter={suite}.*", "--gtest_fail_fast", "--gtest_brief=1"]
        status, _ = run(limited(SUITE_SECONDS, [self.program(f"tests/{program}"), *words]), LONGEST)
        return status != 0


def is_suite(test):
    return test.split(":")[0] in SUITES


def words_of(path):
    """The words of a path, in the singular."""
    return set(re.split(r"[/_.]|s\b", path)) - {"", "cpp", "txt", "test", "language"}


class Variant:
    """The unchanged interpreter that a mutant is compared with: it makes machine code as the image does, or at once."""

    def __init__(self, campaign, name, flags):
        self.campaign, self.name, self.flags = campaign, name, flags
        folder = WORK / name
        folder.mkdir(exist_ok=True)
        self.sums = {}
        self.objects = {THRESHOLDS: folder / "thresholds.o"}
        if not self.compile(THRESHOLDS, campaign.builder.source(THRESHOLDS), self.objects[THRESHOLDS]):
            sys.exit(f"mutate.py: {THRESHOLDS} does not compile with {flags}")
        self.bench = Bench(campaign.builder, folder)
        self.bench.begin(self.objects)
        for program in TARGETS:
            self.bench.program(program)

    def compile(self, name, text, made):
        return self.campaign.builder.compile(name, text, made, self.flags if name == THRESHOLDS else ())

    def clean_sum(self, name, made):
        if name not in self.sums:
            self.compile(name, self.campaign.builder.source(name), made)
            self.sums[name] = sum_of(made)
        return self.sums[name]

    def passes(self, test):
        """Whether the unchanged sources pass a test that a mutant fails: it is tried the first time. One that fails
        without any mutant, because stack frames are larger here than in the image, takes no part."""
        return self.campaign.tests.verdict(f"{self.name} {test}", lambda: not noticing(self.bench, [test]))

    def is_known_to_fail(self, test):
        return not self.campaign.tests.verdicts.get(f"{self.name} {test}", True)


def suites_in(file):
    """The suites of GoogleTest that a source defines."""
    return set(re.findall(r"^TEST(?:_[FP])?\((\w+),", file.read_text(), re.MULTILINE))


def sums_of_suites():
    """Of each suite the sum of the source that it is in."""
    sums = {}
    for program, folder in SUITES.items():
        for file in (TREE / folder).glob("*.cpp"):
            sums |= {f"{program}:{suite}": sum_of(file) for suite in suites_in(file)}
    return sums


def tests_since(commit):
    """The files of cases and the suites of unit tests that have changed since a commit."""
    command = ["git", "diff", "--name-only", commit, "HEAD", "--", "tests"]
    files = subprocess.run(command, cwd=TREE, capture_output=True, text=True, check=True).stdout.split()
    changed = set(files)
    for program, folder in SUITES.items():
        for file in files:
            if file.startswith(folder + "/") and (TREE / file).exists():
                changed |= {f"{program}:{suite}" for suite in suites_in(TREE / file)}
    return changed


class Campaign:
    def __init__(self, options):
        self.builder, self.thorough, self.second = Builder(TREE), options.again, options.others
        self.changed = tests_since(options.since) if options.since else None
        self.tests = Tests(self.builder, options.jobs)
        self.usual = Variant(self, "usual", NATIVE)
        self.at_once = Variant(self, "native-at-once", NATIVE_AT_ONCE)

    def judge(self, place, bench):
        name, number, begin, end, new, kind = place
        lines = self.builder.source(name).split("\n")
        one = {
            "file": name, "line": number + 1, "column": begin, "source": lines[number].strip(), "kind": kind,
            "old": lines[number][begin:end], "new": new, "by": "",
        }  # fmt: skip
        start = time.monotonic()
        lines[number] = lines[number][:begin] + new + lines[number][end:]
        made = bench.folder / "changed.o"
        variant = self.at_once if folder_of(name) == "native" else self.usual
        unchanged = variant.clean_sum(name, made)
        if not variant.compile(name, "\n".join(lines), made):
            one |= {"outcome": "none", "by": "compiler"}
        elif sum_of(made) == unchanged:
            one |= {"outcome": "equivalent", "by": "same object"}
        else:
            bench.begin({**variant.objects, name: made})
            by, played = self.search(bench, variant, self.parts(name, number + 1))
            one |= {"outcome": "noticed" if by else "survived", "by": by, "played": played}
        one["seconds"] = round(time.monotonic() - start, 1)
        return one

    def parts(self, name, line):
        """The tests in the order that they are played, part by part."""
        near, others = self.tests.reach.of(name, line)
        suites = [test for test in near + others if is_suite(test)]
        if folder_of(name) == "native":
            # Which statements there is machine code of has not been noted: of those, most likely, that are specialised.
            near, others = self.tests.reach.everything("/native/", "fast/")
        elif THE_START in near + others or not near + others:  # what comes of it may be seen anywhere
            known = {*near, *others}
            others += [test for test in self.tests.reach.everything("", "")[0] if test not in known]
        cases = [test for test in near + others if not is_suite(test) and test != THE_START]
        if self.changed is not None:
            is_ordered_anew = folder_of(name) == "native" or THE_START in near + others
            rest = cases if is_ordered_anew else cases[MOST_CASES:]
            rest = sorted(rest, key=lambda test: -len(words_of(name) & words_of(test.split(": ")[0])))
            changed, new = ([test for test in part if test.split(": ")[0] in self.changed] for part in (cases, suites))
            others = [test for test in suites if self.second and test.startswith("unit_tests") and test not in new]
            return [changed, new, others, [test for test in rest if test not in changed][: self.second]]
        if not self.thorough:
            quick = [test for test in suites if test.startswith("unit_tests")]
            return [cases[:FIRST_CASES], quick, cases[FIRST_CASES:MOST_CASES]]
        return [cases[:FIRST_CASES], suites, cases[FIRST_CASES:], ["failing-services"]]

    @staticmethod
    def search(bench, variant, parts):
        """The test that notices, and how many were played at most."""
        for part in parts:
            part = [test for test in part if not variant.is_known_to_fail(test)]
            while by := noticing(bench, part):
                if variant.passes(by):
                    return by, sum(map(len, parts))
                part.remove(by)
        return "", sum(map(len, parts))


def noticing(bench, part):
    """The first of the tests that fails."""
    if part == ["failing-services"]:
        command = limited(10 * SUITE_SECONDS, [bench.program("tests/fuzz/failing-services")])
        return part[0] if run(command, LONGEST)[0] != 0 else ""
    if part and is_suite(part[0]):
        return next((test for test in part if bench.fails(test)), "")
    return bench.first_failing(part)


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


def known_equivalents():
    """Places that were read and make no difference that anyone could see: file, line, its text, column, old and new."""
    if not EQUIVALENT.exists():
        return set()
    known = set()
    for line in EQUIVALENT.read_text().splitlines():
        if line and not line.startswith("#"):
            known.add(tuple(line.split("\t")[:6]))
    return known


def is_known_equivalent(one, known):
    return (one["file"], str(one["line"]), one["source"], str(one["column"]), one["old"], one["new"]) in known


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
        wanted = {(one["file"], one["source"], one["column"], one["new"]) for one in survivors}
        for place in places(root, ""):
            name, number, begin, _, new, _ = place
            line = (root / "src" / name).read_text().split("\n")[number]
            if (name, line.strip(), begin, new) in wanted:
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


def work(campaign, chosen, options):
    """Judges the places, several at a time, until as many as wanted have compiled."""
    end = time.monotonic() + options.hours * 3600
    lock = threading.Lock()
    made = 0

    def worker(number):
        nonlocal made
        bench = Bench(campaign.builder, WORK / f"bench-{number}")
        while time.monotonic() < end:
            with lock:
                place = next(chosen, None)
                if place is None or (made >= options.count and not options.again):
                    return
            one = campaign.judge(place, bench)
            with lock:
                with open(RESULTS, "a") as file:
                    file.write(json.dumps(one) + "\n")
                made += one["outcome"] != "none"
                change = f"{one['old']!r} -> {one['new']!r}"
                say(f"{one['outcome']:10} src/{one['file']}:{one['line']} {change} ({one['by']}, {one['seconds']} s)")

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for job in [pool.submit(worker, number) for number in range(options.jobs)]:
            job.result()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, default=10, help="mutants that compile")
    parser.add_argument("--folder", default="", help="of src/")
    parser.add_argument("--hours", type=float, default=1000)
    parser.add_argument("--jobs", type=int, default=2, help="mutants at a time")
    parser.add_argument("--list", action="store_true", help="only show the places that the seed chooses")
    parser.add_argument("--again", action="store_true")
    parser.add_argument("--since", default="", help="a commit")
    parser.add_argument("--others", type=int, default=120, help="cases")
    parser.add_argument("--table", action="store_true")
    options = parser.parse_args()
    if options.table:
        print_table()
        return
    if options.list:
        for name, line, begin, end, new, kind in itertools.islice(chosen_places(options, ROOT), options.count):
            text = (ROOT / "src" / name).read_text().split("\n")[line]
            print(f"src/{name}:{line + 1}: {kind} {text[begin:end]!r} -> {new!r}   {text.strip()}")
        return
    WORK.mkdir(parents=True, exist_ok=True)
    lock = open(WORK / "lock", "w")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except OSError:
        sys.exit("mutate.py: another one is at work in build/mutants")
    prepare()
    work(Campaign(options), chosen_places(options, TREE), options)
    print_table()


if __name__ == "__main__":
    main()

"""Which tests reach which lines of src/: one run of all of them with an interpreter that notes it.

A test is a case of the transcripts ("tests/language/print/print.txt: PRINT separates with zones") or a suite of
GoogleTest ("unit_tests:Console"). What is reached is known by the pieces of code that the compiler made, so of a changed
line it tells which tests reached the piece that it is in, or the function."""

import collections
import concurrent.futures
import os
import pickle
import re
import shutil
import subprocess

from mutation_build import NATIVE, NOTED, THRESHOLDS, sum_of

THE_START = "the start"  # of the machines that cases are played on, in place of a case
NAME_BYTES = 4096  # before the bits, in a file of tests/mutants/reached.cpp
PLACED = re.compile(rb"[^\0]")


class Reach:
    """`lines` has the tests that reached a line, `functions` from which line to which they go, by file; `breadth` tells
    how much a test reaches in all."""

    def __init__(self, lines, functions, breadth):
        self.lines, self.functions, self.breadth = lines, functions, breadth

    def of(self, name, line):
        """The tests that may notice a change of this line: those that reach it, then the others of its function, then
        those of its file, for what is compiled into its callers, or is no code, leaves no piece of its own. Of each kind
        those first that reach little, for they are meant for what they reach, and of every file in turn."""
        around = [(end - begin, begin, end) for begin, end in self.functions.get(name, ()) if begin <= line <= end]
        lines = self.lines.get(name, {})
        known = sorted(lines)
        if around:
            _, begin, end = min(around)
            known = [number for number in known if begin <= number <= end]
        before = [number for number in known if number <= line]
        near = lines[before[-1]] if around and before else set()
        others = set().union(*(lines[number] for number in known)) - near
        rest = set().union(*lines.values()) - near - others
        return self.in_turn(near), self.in_turn(others) + self.in_turn(rest)

    def everything(self, first, folder):
        """All tests: those whose name holds `first`, then the others, those first that reach most of a folder of src/."""
        reached = collections.Counter()
        for name, lines in self.lines.items():
            if name.startswith(folder):
                for tests in lines.values():
                    reached.update(tests)
        tests = self.in_turn(self.breadth)
        others = [test for test in tests if first not in test]
        return [test for test in tests if first in test], sorted(others, key=lambda test: -reached[test])

    def in_turn(self, tests):
        files = collections.defaultdict(list)
        for test in sorted(tests, key=lambda test: (self.breadth[test], test)):
            files[test.split(": ")[0]].append(test)
        queues, ordered = list(files.values()), []
        for turn in range(max(map(len, queues), default=0)):
            ordered += [queue[turn] for queue in queues if turn < len(queue)]
        return ordered


def places_of(program, tree):
    """Of every piece of code: where it begins, and the files, lines and functions that it is from, the innermost
    first."""
    listing = subprocess.run(
        ["objdump", "-d", "--no-show-raw-insn", program], capture_output=True, text=True, check=True
    ).stdout.split("\n")
    starts = []
    for here, behind in zip(listing, listing[1:]):
        if "__sanitizer_cov_trace_pc" in here and "call" in here and (start := re.match(r" *([0-9a-f]+):", behind)):
            starts.append(int(start[1], 16))
    asked = "\n".join(hex(start - 1) for start in starts)
    symbolizer = shutil.which("llvm-symbolizer-19") or shutil.which("llvm-symbolizer") or "llvm-symbolizer"
    answer = subprocess.run(
        [symbolizer, "--inlines", "--functions=linkage", f"--obj={program}"],
        input=asked, capture_output=True, text=True, check=True,
    ).stdout  # fmt: skip
    root = str(tree / "src") + "/"
    places = {}
    for start, block in zip(starts, answer.split("\n\n")):
        lines = block.strip().split("\n")
        frames = []
        for function, where in zip(lines[::2], lines[1::2]):
            file, line, _ = where.rsplit(":", 2)
            file = os.path.normpath(file)
            if file.startswith(root) and line.isdigit():
                frames.append((file[len(root) :], int(line), function))
        places[start] = frames
    return places


def base_of(program):
    listing = subprocess.run(["nm", program], capture_output=True, text=True, check=True).stdout
    return int(re.search(r"^([0-9a-f]+) \w __executable_start$", listing, re.MULTILINE)[1], 16)


class Collector:
    """Gathers the files that the tests' processes leave, and keeps what it has for the next time: only tests that have
    changed are played again, as long as the sources of the interpreter have not."""

    def __init__(self, kept, sources):
        self.kept, self.sources = kept, sources
        self.lines = {}  # of each file, of each line: the tests
        self.functions = {}
        self.breadth = {}
        self.sums = {}  # of each file of tests, as they were played
        if kept.exists():
            known = pickle.loads(kept.read_bytes())
            if known["sources"] == sources:
                self.lines, self.functions = known["lines"], known["functions"]
                self.breadth, self.sums = known["breadth"], known["sums"]

    def keep(self):
        names = ("sources", "lines", "functions", "breadth", "sums")
        self.kept.write_bytes(pickle.dumps({name: getattr(self, name) for name in names}))

    def forget(self, files):
        """All tests of some files."""
        old = {test for test in self.breadth if test.split(": ")[0] in files}
        if not old:
            return
        for test in old:
            del self.breadth[test]
        for lines in self.lines.values():
            for tests in lines.values():
                tests -= old

    def note_functions(self, places):
        for frames in places.values():
            for file, line, function in frames:
                known = self.functions.setdefault(file, {})
                begin, end = known.get(function, (line, line))
                known[function] = min(begin, line), max(end, line)

    def read(self, folder, places, base):
        for file in folder.iterdir():
            content = file.read_bytes()
            name = content[:NAME_BYTES].rstrip(b"\0").decode()
            reached = set()
            for byte in PLACED.finditer(content, NAME_BYTES):
                for bit in range(8):
                    if byte[0][0] >> bit & 1:
                        at = base + (byte.start() - NAME_BYTES) * 8 + bit
                        reached |= {(frame[0], frame[1]) for frame in places.get(at, ())}
            for source, line in reached:
                self.lines.setdefault(source, {}).setdefault(line, set()).add(name)
            self.breadth[name] = max(self.breadth.get(name, 0), len(reached))
            file.unlink()

    def result(self):
        return Reach(self.lines, {name: list(known.values()) for name, known in self.functions.items()}, self.breadth)


def compile_noted(builder, folder, jobs, sources):
    """The interpreter's objects, that note what is reached. They are kept as long as the sources stay the same."""
    made_of = {name: folder / (name.replace("/", "-") + ".o") for name in builder.objects}
    mark = folder / "sources"
    if mark.exists() and mark.read_text() == sources:
        return made_of
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)

    def one(name):
        made = made_of[name]
        if not builder.compile(name, builder.source(name), made, [*NOTED, *(NATIVE if name == THRESHOLDS else [])]):
            raise RuntimeError(f"{name} does not compile with {NOTED}")

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        list(pool.map(one, made_of))
    mark.write_text(sources)
    return made_of


class NotedPrograms:
    """The tests' programs with an interpreter that notes what is reached, made when they are needed."""

    def __init__(self, builder, folder, jobs, sources):
        self.builder, self.folder, self.jobs, self.sources = builder, folder, jobs, sources
        self.objects = None

    def make(self, program):
        if self.objects is None:
            self.objects = compile_noted(self.builder, self.folder, self.jobs, self.sources)
            source = self.builder.tree / "tests/mutants/reached.cpp"
            command = ["c++", "-std=gnu++20", "-O2", "-c", source, "-o", self.folder / "reached.o"]
            subprocess.run(command, check=True)
        made = self.folder / program
        linked = self.builder.link(f"tests/{program}", made, self.objects, [self.folder / "reached.o"])
        if linked.returncode != 0:
            raise RuntimeError(linked.stderr[:2000])
        return made


def find_reach(collector, programs, transcripts, suites, sums, run):
    """Plays all tests that have changed. `transcripts` are the files of cases, behind the words that play them; `suites`
    has, of each other program, the words for each of its tests; `sums` tell the state of those that have a known source."""
    words, files = transcripts
    sums = {str(file): sum_of(programs.builder.tree / file) for file in files} | sums
    played = {*map(str, files), *(test for tests in suites.values() for test in tests)}
    collector.forget(collector.sums.keys() - played)
    for program, tests in (("language_tests", map(str, files)), *suites.items()):
        tests = [test for test in tests if sums.get(test, "") != collector.sums.get(test)]
        if not tests:
            continue
        made = programs.make(program)
        places, base = places_of(made, programs.builder.tree), base_of(made)
        collector.note_functions(places)
        noted = programs.folder / "noted"
        noted.mkdir(exist_ok=True)
        collector.forget(set(tests))
        if program == "language_tests":
            run([made, *words, *tests], KORVANE_REACHED=str(noted), KORVANE_REACHED_BY=THE_START)
        else:
            for test in tests:
                run([made, *suites[program][test]], KORVANE_REACHED=str(noted), KORVANE_REACHED_BY=test)
        collector.sums |= {test: sums.get(test, "") for test in tests}
        collector.read(noted, places, base)
        collector.keep()
    return collector.result()

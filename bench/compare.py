"""Runs the tasks of bench/tasks in the shipped image, on the hosted firmware, and in other interpreters, in turns,
and prints a table of the ratios of their times.

    python3 bench/compare.py [--rounds N] [--only NAME]... [--peers lua,brandy] [--image KORVANE.EFI]

A task is a folder with one program for each language. A program prints its checksum ("CHECK n"), which must be the
same in all languages, and how often it repeated its work ("REPEATED n"): slow interpreters repeat less. The time of a
run is the processor time of the process, user and system, less that of an empty program, divided by the repetitions.
Ratios are taken within a round, where all interpreters run one after the other; the table shows their medians.

LuaJIT runs the programs for Lua, but for those with operators that it does not have; "luajit-joff" is its interpreter
alone. What a C compiler makes of three of the tasks shows what machine code can do.
"""

import argparse
import math
import os
import pathlib
import re
import signal
import statistics
import subprocess
import sys
import tempfile
import threading

import machine_facts
import task_programs

ROOT = pathlib.Path(__file__).resolve().parent.parent
TIME_LIMIT = 60  # seconds a run may take
BASICS = ("brandy", "yabasic", "bwbasic")
PEERS = (*BASICS, "lua", "luajit-joff", "luajit", "gcc")
TWINS = {"mandelbrot_single": "mandelbrot", "integers_int64": "integers"}  # typed variants, and what they vary


class Interpreter:
    """How programs of one language are run; `arguments` begin with the command, the program's path comes last."""

    def __init__(self, name, program, empty, arguments, version, output=None, otherwise=None, compiler=None):
        self.name = name
        self.program = program  # file name in a task's folder
        self.otherwise = otherwise  # the file name where there is none of that name
        self.compiler = compiler  # a command that is given the program and the name of the executable to make
        self.empty = empty  # a program that does nothing
        self.arguments = arguments
        self.version = version  # a command that prints it
        self.output = output  # a file that the program writes instead of standard output

    def find(self, task, folder):
        """The program of a task, compiled into the folder if that is to be; None if there is none."""
        for name in filter(None, (self.program, self.otherwise)):
            if (task / name).exists():
                return self.compile(task / name, folder / f"{task.name}-{self.name}") if self.compiler else task / name
        return None

    def compile(self, program, executable):
        if not executable.exists():
            subprocess.run([*self.compiler, str(program), "-o", str(executable)], check=True)
        return executable


def interpreters(image):
    terminal = str(ROOT / "build/host/host/korvane-terminal")
    return {
        # Firmware's memory is there before a program begins. What that costs the host belongs to the start-up.
        "korvane": Interpreter("korvane", "korvane.bas", "10 END\n",
                               [terminal, "--image", str(image), "--present", "80"], None),
        "brandy": Interpreter("brandy", "brandy.bbc", "10 QUIT\n", ["brandy", "-quit"], "brandy", "CHECK.TXT"),
        "yabasic": Interpreter("yabasic", "yabasic.yab", "end\n", ["yabasic"], "yabasic"),
        "bwbasic": Interpreter("bwbasic", "bwbasic.bas", "10 SYSTEM\n", ["bwbasic"], "bwbasic"),
        "lua": Interpreter("lua", "lua.lua", "\n", ["lua5.4"], "lua5.4"),
        "luajit-joff": Interpreter("luajit-joff", "luajit.lua", "\n", ["luajit", "-joff"], None, otherwise="lua.lua"),
        "luajit": Interpreter("luajit", "luajit.lua", "\n", ["luajit"], "luajit", otherwise="lua.lua"),
        "gcc": Interpreter("gcc", "gcc.c", "int main(void) { return 0; }\n", [], "gcc", compiler=["gcc", "-O2"]),
    }


class RunFailed(Exception):
    pass


def run(interpreter, program, folder):
    """Runs a program with `folder` as the current one; gives processor seconds and what it printed."""
    environment = dict(os.environ, SDL_VIDEODRIVER="dummy", SDL_AUDIODRIVER="dummy", LC_ALL="C", TERM="dumb")
    if interpreter.output:
        (folder / interpreter.output).unlink(missing_ok=True)
    with open(folder / "output", "w+b") as output:
        process = subprocess.Popen(interpreter.arguments + [str(program)], cwd=folder, env=environment,
                                   stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.DEVNULL)
        limit = threading.Timer(TIME_LIMIT, os.kill, (process.pid, signal.SIGKILL))
        limit.start()
        _, status, usage = os.wait4(process.pid, 0)
        limit.cancel()
        process.returncode = os.waitstatus_to_exitcode(status)
        output.seek(0)
        text = output.read().decode("latin-1")
    if process.returncode == -signal.SIGKILL:
        raise RunFailed(f"{interpreter.name} {program}: longer than {TIME_LIMIT} s")
    if interpreter.output:
        result = folder / interpreter.output
        text = result.read_text() if result.exists() else ""
    return usage.ru_utime + usage.ru_stime, text


def printed_number(label, text, interpreter, program):
    match = re.search(rf"^{label}\s*(-?\d+(\.0*)?)\s*$", text, re.MULTILINE)
    if not match:
        raise RunFailed(f"{interpreter.name} {program}: printed no {label}")
    return int(float(match[1]))


class Bench:
    def __init__(self, chosen, folder):
        self.interpreters = chosen
        self.folder = folder  # for scratch files
        self.startup = {}

    def measure_startup(self, rounds):
        for interpreter in self.interpreters.values():
            program = self.folder / ("empty" + pathlib.Path(interpreter.program).suffix)
            program.write_text(interpreter.empty)
            if interpreter.compiler:
                program = interpreter.compile(program, program.with_suffix(".out"))
            times = [run(interpreter, program, self.folder)[0] for _ in range(max(3, rounds))]
            self.startup[interpreter.name] = statistics.median(times)

    def one_round(self, task):
        """The seconds that one repetition takes in each language, and the checksum."""
        times, checksums = {}, {}
        for name, interpreter in self.interpreters.items():
            program = interpreter.find(task, self.folder)
            if program is None:
                continue
            used, text = run(interpreter, program, self.folder)
            checksums[name] = printed_number("CHECK", text, interpreter, program)
            repeated = printed_number("REPEATED", text, interpreter, program)
            times[name] = max(used - self.startup[name], 1e-6) / repeated
        if len(set(checksums.values())) > 1:
            raise RunFailed(f"{task.name}: the checksums differ: {checksums}")
        return times, next(iter(checksums.values()))


class TaskResult:
    """The rounds of one task."""

    def __init__(self, name):
        self.name = name
        self.rounds = []
        self.checksum = None

    def median(self, language):
        times = [times[language] for times in self.rounds if language in times]
        return statistics.median(times) if times else None

    def microseconds(self):
        return self.median("korvane") * 1e6

    def ratio(self, peer):
        """Median over the rounds of our time to the peer's."""
        ratios = [times["korvane"] / times[peer] for times in self.rounds if peer in times]
        return statistics.median(ratios) if ratios else None

    def fastest_basic(self):
        ratios = [r for r in map(self.ratio, BASICS) if r is not None]
        return max(ratios) if ratios else None


def geometric_mean(numbers):
    return math.exp(sum(map(math.log, numbers)) / len(numbers)) if numbers else None


# ---- The table -------------------------------------------------------------------------------------------------


def shown(number, format_string="{:.3f}"):
    return "-" if number is None else format_string.format(number)


def peer_line(chosen):
    versions = [machine_facts.package_version(item.version) for item in chosen.values() if item.version]
    return "Peers: " + ", ".join(versions)


def table_lines(results, peers):
    lines = ["| task | us/repetition | " + " | ".join(f"to {p}" for p in peers) + " | to fastest BASIC |",
             "|---|---:|" + "---:|" * (len(peers) + 1)]
    for result in results:
        cells = [result.name, shown(result.microseconds(), "{:.1f}")]
        cells += [shown(result.ratio(peer)) for peer in peers]
        lines.append("| " + " | ".join(cells + [shown(result.fastest_basic())]) + " |")
    means = [geometric_mean([r for r in (result.ratio(peer) for result in results) if r]) for peer in peers]
    fastest = geometric_mean([r for r in (result.fastest_basic() for result in results) if r])
    lines.append("| **geometric mean** | | " + " | ".join(map(shown, means)) + f" | {shown(fastest)} |")
    return lines


def twin_lines(results):
    """SINGLE and INT64 programs beside their DOUBLE and LONG twins."""
    by_name = {result.name: result for result in results}
    lines = []
    for variant, original in TWINS.items():
        if variant in by_name and original in by_name:
            ratios = [v["korvane"] / o["korvane"]
                      for v, o in zip(by_name[variant].rounds, by_name[original].rounds)]
            lines.append(f"{variant} takes {statistics.median(ratios):.2f} times as long as {original}")
    return lines


def parse_arguments():
    parser = argparse.ArgumentParser(description="Compares the image's speed with other interpreters.")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--only", action="append", help="a task; may be given again")
    parser.add_argument("--peers", default=",".join(PEERS), help="separated by commas")
    parser.add_argument("--image", type=pathlib.Path, default=ROOT / "build/korvane.efi")
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    image = arguments.image.resolve()
    wanted = ["korvane"] + [peer for peer in arguments.peers.split(",") if peer]
    chosen = {name: item for name, item in interpreters(image).items() if name in wanted}
    print("\n".join(machine_facts.machine_lines(image, arguments.rounds) + [peer_line(chosen)]))
    print(flush=True)
    failures = 0
    with tempfile.TemporaryDirectory(prefix="korvane-bench-") as scratch:
        folder = pathlib.Path(scratch)
        tasks = task_programs.write_tasks(folder / "tasks")
        if arguments.only:
            tasks = [task for task in tasks if task.name in arguments.only]
        bench = Bench(chosen, folder)
        bench.measure_startup(arguments.rounds)
        results = {task: TaskResult(task.name) for task in tasks}
        for number in range(arguments.rounds):
            for task, result in results.items():
                print(f"\rround {number + 1}: {task.name:24}", end="", file=sys.stderr, flush=True)
                try:
                    times, result.checksum = bench.one_round(task)
                    result.rounds.append(times)
                except RunFailed as reason:
                    failures += 1
                    print(f"\r{reason}", file=sys.stderr)
        print("\r" + " " * 40 + "\r", end="", file=sys.stderr)
    done = [result for result in results.values() if result.rounds]
    print("\n".join(table_lines(done, [peer for peer in PEERS if peer in chosen]) + [""] + twin_lines(done)))
    print("start-up, s: " + ", ".join(f"{name} {seconds:.3f}" for name, seconds in bench.startup.items()))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Plays all inputs that a campaign and the repository hold on a build that watches something, and tells what it saw.

usage: corpus_reports.py coverage      what of src/ they reach, by folder (the preset 'fuzz-coverage')
       corpus_reports.py integers      where integers wrap around or lose bits unwanted (the preset 'fuzz-integers');
                                       tests/fuzz/wanted_wrapping.txt tells where it is wanted
"""

import collections
import itertools
import json
import os
import pathlib
import re
import subprocess
import sys

from campaign import CAMPAIGN, KEPT, ROOT, prepare


def replay(preset, native=False):
    return ROOT / "build" / preset / "tests/fuzz" / f"korvane{'-native' * native}-replay"


def inputs():
    """Each target with its folders of inputs."""
    for kept in sorted(KEPT.iterdir()):
        folders = (kept, CAMPAIGN / "corpus" / kept.name, CAMPAIGN / "seeds" / kept.name)
        yield kept.name, [folder for folder in folders if folder.exists()]


def coverage():
    programs = [replay("fuzz-coverage", native) for native in (False, True)]
    profiles = ROOT / "build/fuzz/profiles"
    profiles.mkdir(parents=True, exist_ok=True)
    raw = []
    for (target, folders), program in itertools.product(inputs(), programs):
        raw.append(profiles / f"{target}-{program.name}.profraw")
        environment = dict(os.environ, LLVM_PROFILE_FILE=str(raw[-1]))
        done = subprocess.run([program, "--target", target, *folders], env=environment, stderr=subprocess.DEVNULL)
        if done.returncode != 0:
            sys.exit(f"corpus_reports.py: {target} ends with {done.returncode}")
    merged = profiles / "all.profdata"
    subprocess.run(["llvm-profdata-19", "merge", "-sparse", "-o", merged, *raw], check=True)
    export = ["llvm-cov-19", "export", "-summary-only", f"-instr-profile={merged}", programs[0], "-object", programs[1]]
    files = json.loads(subprocess.run(export, check=True, capture_output=True).stdout)["data"][0]["files"]
    print_coverage([file for file in files if file["filename"].startswith(str(ROOT / "src") + "/")])


def print_coverage(files):
    rows = collections.defaultdict(collections.Counter)
    for file in files:
        name = pathlib.Path(file["filename"]).relative_to(ROOT / "src")
        folder = name.parts[0] if len(name.parts) > 1 else "src itself"
        for row in (folder, "all"):
            for kind in ("lines", "functions", "branches"):
                rows[row][kind] += file["summary"][kind]["count"]
                rows[row]["reached " + kind] += file["summary"][kind]["covered"]
    print("| Folder | Lines | Lines reached | Functions reached | Branches reached |")
    print("|---|---:|---:|---:|---:|")
    for folder in sorted(rows, key=lambda name: (name == "all", name)):
        row = rows[folder]
        shares = [f"{100 * row['reached ' + kind] / max(row[kind], 1):.1f} %" for kind in ("lines", "functions", "branches")]
        print(f"| {folder} | {row['lines']} | {' | '.join(shares)} |")
    low = [(file["summary"]["lines"]["percent"], file) for file in files if file["summary"]["lines"]["percent"] < 60]
    for percent, file in sorted(low, key=lambda one: one[0]):
        print(f"{percent:5.1f} % of {file['summary']['lines']['count']} lines: {pathlib.Path(file['filename']).relative_to(ROOT)}")


def wanted_wrapping():
    """Pairs of a check and a file, or the folder of files, that it is not to tell."""
    check = ""
    for line in (ROOT / "tests/fuzz/wanted_wrapping.txt").read_text().splitlines():
        if line.startswith("["):
            check = line.strip("[]")
        elif line and not line.startswith("#"):
            yield check, line


def check_of(message):
    """The name of the check that tells this."""
    if message.startswith("unsigned integer overflow") or message.startswith("negation"):
        return "unsigned-integer-overflow"
    if message.startswith("left shift"):
        return "unsigned-shift-base"
    bits = [int(one) for one in re.findall(r"\((\d+)-bit", message)]
    return "implicit-integer-sign-change" if len(bits) == 2 and bits[1] >= bits[0] else "implicit-integer-truncation"


def integers():
    """Findings are told by their place and kind, once each."""
    seen = collections.Counter()
    wanted = set(wanted_wrapping())
    for target, folders in inputs():
        environment = dict(os.environ, UBSAN_OPTIONS="print_stacktrace=0:report_error_type=1")
        process = subprocess.Popen(
            [replay("fuzz-integers"), "--target", target, *folders], env=environment, stdout=subprocess.DEVNULL,
            stderr=subprocess.PIPE, text=True, errors="replace",
        )  # fmt: skip
        for line in process.stderr:
            # The path of the input that is played stands in front of it.
            if found := re.search(r"((?:src|/usr)/\S+?):(\d+:\d+): runtime error: (.*)", line):
                place, message = f"{found[1]}:{found[2]}", found[3]
                if any(check == check_of(message) and found[1].startswith(file) for check, file in wanted):
                    continue
                if place not in seen:
                    print(f"{target}: {place}: {message}", flush=True)
                seen[place] += 1
        if process.wait() != 0:
            sys.exit(f"corpus_reports.py: {target} ends with {process.returncode}")
    print(f"{len(seen)} places")
    return 1 if seen else 0


def main():
    if sys.argv[1:] not in (["coverage"], ["integers"]):
        sys.exit(__doc__)
    prepare()
    return coverage() if sys.argv[1] == "coverage" else integers()


if __name__ == "__main__":
    sys.exit(main())

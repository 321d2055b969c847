#!/usr/bin/env python3
"""Lets the fuzzer run, target after target, and keeps what it does in build/fuzz/campaign, so that a campaign adds up
over many runs.

usage: campaign.py [TARGET] [MINUTES]      fuzz one target, or all in turns; 10 minutes when none are said
       campaign.py --counts                what has been played in all runs together
       campaign.py --keep                  write the smallest inputs that reach all that is known into tests/fuzz/corpus
options: --plain                           the build without sanitizers, which is many times quicker
         --native                          the interpreter that makes machine code of what is met again
         --mixed                           inputs mixed of known ones, unguided, which is several times quicker still

build/fuzz/campaign/corpus/TARGET   inputs that reach something new
build/fuzz/campaign/found/TARGET    inputs that broke something, made smaller
build/fuzz/campaign/counts          what each process has played
"""

import collections
import json
import os
import pathlib
import secrets
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
CAMPAIGN = ROOT / "build/fuzz/campaign"
COMPANION = ROOT / "build/host/tests/fuzz/korvane-companion"
TYPISTS = [ROOT / "build/host/tests/fuzz" / name for name in ("korvane-typist", "korvane-native-typist")]
NATIVE_COMPARED = "2"  # by the second one, which is for what is compared
KEPT = ROOT / "tests/fuzz/corpus"
MINUTES_EACH = 3  # of a target's turn
COMPARED_WHEN_PLAIN = "8"  # only one of so many inputs is played by both interpreters, which takes twice as long
MIXED_SECONDS = collections.defaultdict(lambda: 40, session=240)  # the same for unguided ones
MOST_BREAKS = 10  # in one turn: the same again and again is nothing new
LONGEST = {"session": 3000, "explorer": 1000, "program": 6000, "packed-image": 4000, "disk": 4096}
TYPED = ("session", "explorer")  # all others are read
WITH_PROGRAMS = ("session", "program", "startup")
LONGEST_KEPT = 4000  # bytes of an input in the repository
MOST_KEPT = {"session": 150, "explorer": 50}  # inputs of a target in the repository
MOST_KEPT_ELSE = 25


class Fuzzer:
    """Which of the programs is guided by what it reaches."""

    def __init__(self, plain, native):
        self.plain = plain
        self.program = ROOT / "build" / ("fuzz-plain" if plain else "fuzz") / "tests/fuzz" / f"korvane{'-native' * native}-fuzzer"

    def environment(self):
        compared = {"KORVANE_FUZZ_COMPARED": COMPARED_WHEN_PLAIN} if self.plain else {}
        return dict(os.environ, KORVANE_FUZZ_COUNTS=str(CAMPAIGN / "counts"), KORVANE_FUZZ_COMPANION=str(COMPANION), **compared)


def target_names():
    return sorted(folder.name for folder in KEPT.iterdir())


def counts():
    total = collections.defaultdict(collections.Counter)
    for file in (CAMPAIGN / "counts").glob("*.json"):
        one = json.loads(file.read_text())
        for key in ("inputs", "lines", "compared", "native", "seconds"):
            total[one["target"]][key] += one.get(key, 0)
    return total


def print_counts():
    total = counts()
    rows = [(target, total[target]) for target in sorted(total)]
    for target, one in [*rows, ("all", sum(total.values(), collections.Counter()))]:
        print(
            f"{target:16} {one['inputs']:>12,} inputs {one['lines']:>13,} lines {one['compared']:>12,} compared "
            f"{one['native']:>10,} with native code {one['seconds'] / 3600:8.2f} hours"
        )
    read = sum(one["inputs"] for target, one in total.items() if target not in TYPED)
    print(f"{read:,} inputs are files, records, disks, tables and the like")


def prepare():
    for folder in ("counts", "corpus", "found"):
        (CAMPAIGN / folder).mkdir(parents=True, exist_ok=True)
    words = subprocess.run([sys.executable, ROOT / "tests/fuzz/make_dictionary.py"], capture_output=True, check=True)
    (CAMPAIGN / "words.dict").write_bytes(words.stdout)
    subprocess.run([sys.executable, ROOT / "tests/fuzz/make_seeds.py", CAMPAIGN / "seeds"], check=True, stdout=subprocess.DEVNULL)


def run(target, seconds, fuzzer):
    """One turn. What breaks the interpreter does not end it; gives how many inputs did."""
    corpus, found = CAMPAIGN / "corpus" / target, CAMPAIGN / "found" / target
    corpus.mkdir(exist_ok=True)
    found.mkdir(exist_ok=True)
    end = time.monotonic() + seconds
    breaks = 0
    while (rest := end - time.monotonic()) > 3 and breaks < MOST_BREAKS:
        before = set(found.iterdir())
        command = [
            fuzzer.program, f"--target={target}", f"-dict={CAMPAIGN / 'words.dict'}", f"-max_total_time={int(rest)}",
            f"-max_len={LONGEST.get(target, 2048)}", "-timeout=60", "-report_slow_units=60", "-rss_limit_mb=3000", "-print_final_stats=1",
            f"-artifact_prefix={found}/", corpus,
        ]  # fmt: skip
        command += [folder for folder in (KEPT / target, CAMPAIGN / "seeds" / target) if folder.exists()]
        log = CAMPAIGN / f"{target}.log"
        with open(log, "w") as output:
            ended = subprocess.run(command, stdout=output, stderr=output, env=fuzzer.environment())
        if ended.returncode == 0:
            break
        breaks += 1
        for file in sorted(set(found.iterdir()) - before):
            file.with_name("why-" + file.name).write_bytes(log.read_bytes()[-8000:])
            make_smaller(target, file, fuzzer)
    return breaks


def folders_of(target):
    folders = (KEPT / target, CAMPAIGN / "corpus" / target, CAMPAIGN / "seeds" / target)
    return [folder for folder in folders if folder.exists() and any(folder.iterdir())]


def run_mixed(target, seconds, native):
    """One turn without guidance; what breaks the interpreter is left as it is."""
    found = CAMPAIGN / "found" / target
    found.mkdir(exist_ok=True)
    end = time.monotonic() + seconds
    breaks = 0
    while (rest := end - time.monotonic()) > 3 and breaks < MOST_BREAKS:
        log = CAMPAIGN / f"mixed-{target}.log"
        command = [
            TYPISTS[native], "--target", target, "--seconds", str(rest), "--seed", str(secrets.randbelow(2**31)),
            "--companion", COMPANION, "--compared", NATIVE_COMPARED if native else COMPARED_WHEN_PLAIN,
            "--counts", CAMPAIGN / "counts", "--found", found, *folders_of(target),
        ]  # fmt: skip
        before = set(found.iterdir())
        with open(log, "w") as output:
            ended = subprocess.run(command, stdout=output, stderr=output)
        if ended.returncode == 0:
            break
        breaks += 1
        for file in set(found.iterdir()) - before:
            file.with_name("why-" + file.name).write_bytes(log.read_bytes()[-8000:])
    return breaks


def make_smaller(target, file, fuzzer):
    small = file.with_name("small-" + file.name)
    command = [
        fuzzer.program, f"--target={target}", "-minimize_crash=1", "-max_total_time=30",
        f"-exact_artifact_path={small}", file,
    ]  # fmt: skip
    subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=fuzzer.environment())


def mixed_campaign(names, minutes):
    prepare()
    names = names or [name for other in target_names() if other != "session" for name in ("session", other)]
    # Each has had its turn at the end, however few minutes there are.
    seconds = minutes * 60
    turn = min(1, seconds / sum(MIXED_SECONDS[target] for target in names))
    end = time.monotonic() + seconds
    found = 0
    while (rest := end - time.monotonic()) > 5:
        target = names[0]
        names = names[1:] + names[:1]
        with_native = target in WITH_PROGRAMS and secrets.randbelow(4) == 0
        fresh = run_mixed(target, min(MIXED_SECONDS[target] * turn, rest), with_native)
        found += fresh
        if fresh:
            print(f"{target}: {fresh} found", flush=True)
    print_counts()
    return 1 if found else 0


def campaign(names, minutes, fuzzer):
    prepare()
    # Sessions hold most of the interpreter: every other turn is theirs.
    names = names or [name for other in target_names() if other != "session" for name in ("session", other)]
    end = time.monotonic() + minutes * 60
    found = 0
    turn = max(20, min(MINUTES_EACH * 60, minutes * 60 / len(names)))
    while (rest := end - time.monotonic()) > 5:
        target = names[0]
        names = names[1:] + names[:1]
        fresh = run(target, min(turn, rest), fuzzer)
        found += fresh
        print(f"{target}: {fresh} found" if fresh else f"{target}: nothing found", flush=True)
    print_counts()
    return 1 if found else 0


def keep(fuzzer):
    """Of a small set that reaches everything, those that are not long, spread over all lengths."""
    prepare()
    for target in target_names():
        sources = [folder for folder in (KEPT / target, CAMPAIGN / "seeds" / target, CAMPAIGN / "corpus" / target) if folder.exists()]
        merged = CAMPAIGN / "merged" / target
        merged.mkdir(parents=True, exist_ok=True)
        for file in merged.iterdir():
            file.unlink()
        subprocess.run([fuzzer.program, f"--target={target}", "-set_cover_merge=1", merged, *sources], stderr=subprocess.DEVNULL)
        folder = KEPT / target
        folder.mkdir(parents=True, exist_ok=True)
        for file in folder.iterdir():
            if not file.name.startswith("found-"):
                file.unlink()
        short = [file for file in merged.iterdir() if file.stat().st_size <= LONGEST_KEPT]
        short.sort(key=lambda one: (one.stat().st_size, one.name))
        number = min(len(short), MOST_KEPT.get(target, MOST_KEPT_ELSE))
        for index in range(number):
            file = short[index * len(short) // number]
            (folder / file.name[:12]).write_bytes(file.read_bytes())
        print(f"{target}: {number} inputs kept", flush=True)


def main():
    words = sys.argv[1:]
    fuzzer, mixed = Fuzzer("--plain" in words, "--native" in words), "--mixed" in words
    words = [word for word in words if word not in ("--plain", "--native", "--mixed")]
    if words == ["--counts"]:
        print_counts()
        return 0
    if words == ["--keep"]:
        keep(fuzzer)
        return 0
    names = [word for word in words if not word.replace(".", "").isdigit()]
    minutes = [float(word) for word in words if word not in names]
    unknown = [name for name in names if name not in target_names()]
    if unknown or len(minutes) > 1 or len(names) > 1:
        sys.exit(f"campaign.py: there are the targets {', '.join(target_names())}")
    minutes = minutes[0] if minutes else 10
    return mixed_campaign(names, minutes) if mixed else campaign(names, minutes, fuzzer)


if __name__ == "__main__":
    sys.exit(main())

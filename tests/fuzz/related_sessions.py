"""Plays random sessions and checks what must hold between each and its variants.

    python3 tests/fuzz/related_sessions.py PLAYER IMAGE GENERAL-IMAGE NATIVE-IMAGE [options]

PLAYER is the program session_player. A failure is printed with its theme and seed and the smallest session found that
still fails; --theme THEME --first SEED --count 1 plays it again. --found FILE plays the sessions of a file instead.
"""

import argparse
import sys
import time

from players import Player
from relations import RELATIONS
from themes import THEMES, make_session

BATCH = 10


class Machines:
    """One player for each name that the relations use, started when it is first needed."""

    def __init__(self, arguments):
        self.arguments, self.players = arguments, {}

    def player(self, name):
        if name not in self.players:
            image = getattr(self.arguments, name.split()[0])
            self.players[name] = Player(self.arguments.player, image, filled="filled" in name,
                                        patience=self.arguments.patience)
        return self.players[name]

    def play(self, wanted):
        """The results of (player, lines) pairs, in their order. All players play at the same time."""
        names = sorted({name for name, _ in wanted})
        for name in names:
            self.player(name).begin([lines for player, lines in wanted if player == name])
        results = {name: iter(self.player(name).end()) for name in names}
        return [next(results[name]) for name, _ in wanted]

    def close(self):
        for player in self.players.values():
            player.close()


def judge(machines, cases):
    """For each (relation name, lines): what is wrong, or None."""
    verdicts = judge_once(machines, cases)
    for i, case in enumerate(cases):
        for _ in range(RELATIONS[case[0]].repeats - 1):
            if verdicts[i]:
                verdicts[i] = judge_once(machines, [case])[0]
    return verdicts


def judge_once(machines, cases):
    relations = [RELATIONS[name]() for name, _ in cases]
    variants = [relation.variants(lines) for relation, (_, lines) in zip(relations, cases)]
    results = iter(machines.play([variant for several in variants for variant in several]))
    verdicts = []
    for relation, several in zip(relations, variants):
        mine = [next(results) for _ in several]
        faults = [f"{name}: {result.fault}" for (name, _), result in zip(several, mine) if result.fault]
        verdicts.append(faults[0] if faults else relation.difference(mine))
    return verdicts


def kind_of(verdict):
    """Shrinking must not turn one kind of failure into another."""
    for kind in ("machine fault", "does not end", "misuse"):
        if kind in verdict:
            return kind
    return "difference"


def shrink(machines, relation, lines, verdict):
    """Leaves out lines, then statements, while the session still fails in its way."""
    kind = kind_of(verdict)

    def shorter_ones(current):
        size = len(current)
        for length in sorted({max(size // 2, 1), max(size // 4, 1), 1}, reverse=True):
            for start in range(0, size - length + 1, length):
                yield current[:start] + current[start + length:]
        for i, line in enumerate(current):
            parts = line.split(":")
            for part in range(len(parts) if len(parts) > 1 else 0):
                yield current[:i] + [":".join(parts[:part] + parts[part + 1:])] + current[i + 1:]

    for _ in range(40):
        candidates = list(shorter_ones(lines))
        verdicts = judge(machines, [(relation, candidate) for candidate in candidates])
        better = [(candidate, found) for candidate, found in zip(candidates, verdicts)
                  if found and kind_of(found) == kind]
        if not better:
            break
        lines, verdict = min(better, key=lambda pair: sum(map(len, pair[0])) + len(pair[0]))
    return lines, verdict


def read_found(path):
    """Sessions apart by empty lines, each behind a line "# RELATION: remark"."""
    cases = []
    for block in open(path, encoding="utf-8").read().split("\n\n"):
        lines = [line for line in block.splitlines() if line]
        if lines:
            cases.append((lines[0][1:].partition(":")[0].strip(), lines[1:]))
    return cases


def parse_arguments():
    parser = argparse.ArgumentParser(description="Plays related sessions.")
    parser.add_argument("player")
    parser.add_argument("image")
    parser.add_argument("general", help="runs every statement by its general handler")
    parser.add_argument("native", help="makes native code of a statement as soon as it can")
    parser.add_argument("--theme", action="append", choices=THEMES, help="all themes when left out")
    parser.add_argument("--no-costs", action="store_true", help="compare no processor times: for busy machines")
    parser.add_argument("--first", type=int, default=1, help="seed of the first session of each theme")
    parser.add_argument("--random", action="store_true", help="let the clock choose the first seed")
    parser.add_argument("--count", type=int, default=10**9, help="sessions of each theme")
    parser.add_argument("--seconds", type=float, default=20, help="no new sessions after so long")
    parser.add_argument("--patience", type=int, help="milliseconds of processor time for one step")
    parser.add_argument("--failures", type=int, default=10, help="end after so many")
    parser.add_argument("--found", help="a file of sessions")
    parser.add_argument("--print", action="store_true", help="only print the sessions")
    parser.add_argument("--no-shrink", action="store_true")
    return parser.parse_args()


def report(machines, arguments, title, relation, lines, verdict):
    print(f"FAILED {title}: {verdict}")
    if not arguments.no_shrink:
        lines, verdict = shrink(machines, relation, lines, verdict)
        print(f"smallest: {verdict}")
    print("".join(f"    {line}\n" for line in lines), flush=True)


def play_random(machines, arguments):
    themes = arguments.theme or [theme for theme in THEMES if theme != "costs" or not arguments.no_costs]
    deadline = time.monotonic() + arguments.seconds

    # However slow the machine is, every theme has its turn.
    def is_time_up():
        return time.monotonic() >= deadline and all(played.values())

    played, failures = dict.fromkeys(themes, 0), 0
    first = arguments.first
    while not is_time_up() and first < arguments.first + arguments.count:
        seeds = range(first, min(first + BATCH, arguments.first + arguments.count))
        for theme in themes:
            if is_time_up() or failures >= arguments.failures:
                break
            relation = THEMES[theme][0]
            cases = [(relation, make_session(theme, seed)) for seed in seeds]
            for seed, (_, lines), verdict in zip(seeds, cases, judge(machines, cases)):
                played[theme] += 1
                if verdict and failures < arguments.failures:
                    failures += 1
                    report(machines, arguments, f'--theme "{theme}" --first {seed}', relation, lines, verdict)
        first += BATCH
        if failures >= arguments.failures:
            break
    print(", ".join(f"{count} {theme}" for theme, count in played.items()) + f": {failures} failed")
    return 1 if failures or not all(played.values()) else 0


def play_found(machines, arguments):
    cases = [case for case in read_found(arguments.found) if case[0] != "costs" or not arguments.no_costs]
    failures = 0
    for (relation, lines), verdict in zip(cases, judge(machines, cases)):
        if verdict:
            failures += 1
            print(f"FAILED {relation}: {verdict}\n" + "".join(f"    {line}\n" for line in lines))
    print(f"{len(cases)} sessions, {failures} failed")
    return 1 if failures or not cases else 0


def main():
    arguments = parse_arguments()
    if arguments.print:
        for theme in arguments.theme or THEMES:
            for seed in range(arguments.first, arguments.first + min(arguments.count, 100)):
                print("\n".join(make_session(theme, seed)) + "\n")
        return 0
    if arguments.random:
        arguments.first = time.time_ns() // 10**6
    machines = Machines(arguments)
    try:
        return (play_found if arguments.found else play_random)(machines, arguments)
    finally:
        machines.close()


if __name__ == "__main__":
    sys.exit(main())

"""What must hold between sessions: each relation derives variants from a session and says what they must share.

A variant is (player, lines): the lines are typed on that player's machine. Everything is played in the image, in the
one that runs every statement by its general handler and in the one that makes native code at once, and no variant may
meet a fault or a step without end.
"""

import re

PLAYERS = ("image", "general", "native")


class Relation:
    """Variants of a session whose results must agree; this one compares the images."""

    repeats = 1  # times that a failure must show again, alone, before it counts

    def variants(self, lines):
        return [(player, lines) for player in PLAYERS]

    def difference(self, results):
        return first_difference([comparable_steps(result) for result in results])


def comparable_steps(result):
    """The rows of each step, up to the first that Escape had to end: where it meets a program is nobody's promise."""
    steps = []
    for step in result.steps:
        if step.kind == "broken":
            return steps, step.polls
        steps.append(step.rows)
    return steps, None


def first_difference(several):
    (first, first_broken), *others = several
    for other, other_broken in others:
        for left, right in zip(first, other):
            if left != right:
                return "shows\n" + indented(left) + "and\n" + indented(right)
        if len(first) != len(other) and first_broken is None and other_broken is None:
            return f"{len(first)} and {len(other)} steps"
        # A step that Escape ended in one and that took little in the other.
        shorter = min((first, other), key=len)
        if len(first) != len(other) and (first_broken is None or other_broken is None):
            return f"step {len(shorter) + 1} ends in one only"
    return None


def indented(rows):
    return "".join(f"    {row}\n" for row in rows)


class Images(Relation):
    pass


class FullCache(Relation):
    """The same with a token cache that earlier lines of the program have filled, as good as."""

    def variants(self, lines):
        return [(player, lines) for player in (*PLAYERS, *(f"{player} filled" for player in PLAYERS))]

    def difference(self, results):
        several = [comparable_steps(result) for result in results]
        # The lines in front take statements of their own.
        length = min(len(steps) for steps, _ in several)
        return first_difference([(steps[:length], None) for steps, _ in several])


class ComputedTargets(Relation):
    """A line number behind GOTO, THEN or ELSE may as well be computed."""

    def variants(self, lines):
        computed = [re.sub(r"\b(THEN|ELSE) (\d+)", r"\1 GOTO 0+\2", line) for line in lines]
        computed = [re.sub(r"(?<!ERROR )(?<!BREAK )\b(GOTO|GOSUB) (\d+)(?![\d,])", r"\1 0+\2", line)
                    if not re.search(r"\bON [^:]*\bGO", line) else line for line in computed]
        return [(player, variant) for variant in (lines, computed) for player in PLAYERS]

    def difference(self, results):
        return first_difference([comparable_steps(result) for result in results])


class Fresh(Relation):
    """What follows NEW shows the same as on a machine that has just started."""

    def variants(self, lines):
        if "NEW" not in lines:
            return super().variants(lines)
        after = lines[lines.index("NEW") + 1:]
        return [(player, variant) for variant in (lines, after) for player in PLAYERS]

    def difference(self, results):
        several = [comparable_steps(result) for result in results]
        length = min(len(steps) for steps, _ in several)
        plain, after = several[:len(PLAYERS)], several[len(PLAYERS):]
        same_kind = first_difference(plain) or (first_difference(after) if after else None)
        if same_kind or not after:
            return same_kind
        if any(broken for _, broken in several):
            return None
        return first_difference([(tail(steps, length), None) for steps, _ in several])


def tail(steps, length):
    return steps[len(steps) - length:]


class Repeated(Relation):
    """Typing a program line once more, as it is, changes nothing (but that CONT is refused)."""

    def variants(self, lines):
        again = []
        stored = {}
        for count, line in enumerate(lines):
            again.append(line)
            number = re.match(r"\d+", line)
            if number:
                stored[number.group()] = line
            elif stored:
                # After every direct line another of the lines is typed again.
                again.append(sorted(stored.values())[count % len(stored)])
        return [(player, variant) for variant in (lines, again) for player in PLAYERS]


class Interrupted(Relation):
    """Escape and CONT (or a handler that resumes) leave no trace: "@break N KEYS" presses N of the keys and Escape
    first; "@break-at N" in front of a line is Escape at its N-th look for a key."""

    def variants(self, lines):
        self.lines = lines
        handled = any("ON BREAK" in line for line in lines)
        plain, broken = [], []
        going_on = None
        for line in lines:
            keys = re.match(r"@break (\d+) (.*)", line)
            poll = re.match(r"@break-at (\d+)", line)
            if keys:
                plain.append("@keys " + keys[2])
                broken.append("@keys " + keys[2][:int(keys[1])] + "{ESC}")
                if not handled:
                    broken.append("CONT")
                broken.append("@keys " + keys[2])
            elif poll:
                broken.append("@escape " + poll[1])
                going_on = None if handled else "CONT"
            else:
                plain.append(line)
                broken.append(line)
                if going_on:
                    broken.append(going_on)
                going_on = None
        return [(player, variant) for variant in (plain, broken) for player in PLAYERS]

    def difference(self, results):
        ends = [all(step.kind == "shown" for step in result.steps) for result in results]
        # A session whose keys do not fit its program says nothing.
        if not all(ends[:len(PLAYERS)]) or not any(line.startswith("@break") for line in self.lines):
            return None
        if not all(ends):
            odd = sorted({step.kind for result in results for step in result.steps} - {"shown"})
            return "other keys are asked for, or a step does not end: " + ", ".join(odd)
        return first_difference([([told(result)], None) for result in results])


def told(result):
    """All rows that a program printed; what Escape and CONT themselves show is left out."""
    rows = [row for step in result.steps for row in step.rows]
    rows = [re.sub(r"CONT$|Break( in \d+)?$|Can't continue$|Ready\.$", "", row) for row in rows]
    return [row for row in rows if row]


COUNTED_AHEAD = 4  # statements that a session counts before it executes them


class Bound(Relation):
    """Escape at the N-th look for a key ends the run within 256 statements of the look before: the counter that the
    last line prints counts statements."""

    def variants(self, lines):
        self.polls = next((int(line.split()[1]) for line in lines if line.startswith("@escape ")), 0)
        return super().variants(lines)

    def difference(self, results):
        for result in results:
            rows = [row for row in result.steps[-1].rows if re.match(r" \d+$", row)] if result.steps else []
            if rows and self.polls and int(rows[-1]) > 256 * self.polls + COUNTED_AHEAD:
                return f"{rows[-1].strip()} statements until look {self.polls}"
        return None


class FailsLikeError(Relation):
    """A CHAIN, MERGE or LOAD that fails is as if ERROR stood there; "{...}" holds the statement."""

    def variants(self, lines):
        failing = [re.sub(r"[{}]", "", line) for line in lines]
        raising = [re.sub(r"\{.*\}", "ERROR 99", line) for line in lines]
        return [(player, variant) for variant in (failing, raising) for player in PLAYERS]

    def difference(self, results):
        several = [comparable_steps(result) for result in results]
        return first_difference([([self.errors_alike(rows) for rows in steps], broken) for steps, broken in several])

    @staticmethod
    def errors_alike(rows):
        return [FAILURES.sub("error", row) for row in rows]


FAILURES = re.compile("File not found|Direct statement in file|Illegal direct|Illegal function call|"
                      "Undefined line number|User-defined error")


class Chained(Relation):
    """A program reached by CHAIN runs as after typing it, with the variables of COMMON, which are assigned behind it:
    "@program" begins the lines of the chained program."""

    def variants(self, lines):
        if not any('CHAIN "N.BAS"' in line for line in lines) or "@program" not in lines:
            return []
        place = lines.index("@program")
        first, second = lines[:place], lines[place + 1:]
        common = next((match[1] for match in (re.search(r"COMMON [^:]*:(.*)", line) for line in first) if match), "")
        program = [line for line in second if re.match(r"\d", line)]
        direct = [line for line in second if not re.match(r"\d", line)]
        chained = program + ['SAVE "N.BAS"', "NEW"] + first + ["RUN"] + direct
        typed = ["1 " + common] * bool(common) + program + ["RUN"] + direct
        return [(player, variant) for variant in (chained, typed) for player in PLAYERS]

    def difference(self, results):
        if not results:
            return None
        several = [comparable_steps(result) for result in results]
        length = min(len(steps) for steps, _ in several)
        return first_difference([(tail(steps, length), None) for steps, _ in several])


class Costs(Relation):
    """The specialised image takes no more processor time than the general one, apart from what measuring is off."""

    turns = 4
    repeats = 3

    def variants(self, lines):
        return [(player, lines) for player in ("image", "general")] * self.turns

    def difference(self, results):
        if any(step.kind == "broken" for result in results for step in result.steps):
            return None
        times = [min((sum(step.microseconds for step in result.steps) for result in results[i::2])) for i in (0, 1)]
        if times[0] > 1.35 * times[1] + 300:
            return f"{times[0]} microseconds where {times[1]} do"
        return first_difference([comparable_steps(result) for result in results])


RELATIONS = {
    "images": Images, "full cache": FullCache, "computed targets": ComputedTargets, "fresh": Fresh,
    "repeated": Repeated, "interrupted": Interrupted, "bound": Bound, "fails like ERROR": FailsLikeError,
    "chained": Chained, "costs": Costs,
}

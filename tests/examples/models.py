"""What the example programs must show: each computed here by other means, or written out where it is a story."""

import calendar as gregorian
import itertools
import math


class Random:
    """The interpreter's generator: 24 bits, seeded by RANDOMIZE with 16."""

    def __init__(self, seed):
        self.state = (seed & 0xFFFF) * 256 + 0x50

    def next(self):
        self.state = -(self.state * 179203 + 3957053) % 2**24
        return self.state / 2**24


def number(value):
    """An integer as PRINT shows it."""
    return f"{value: d} "


def quicksort(_answers):
    random = Random(42)
    values = [int(random.next() * 100) for _ in range(16)]
    swaps = steps = deepest = 0

    def sort(part, low, high, depth):
        nonlocal swaps, steps, deepest
        deepest = max(deepest, depth)
        if low >= high:
            return
        pivot, i, j = part[(low + high) // 2], low, high
        while i <= j:
            while part[i] < pivot:
                i, steps = i + 1, steps + 1
            while part[j] > pivot:
                j, steps = j - 1, steps + 1
            if i <= j:
                part[i], part[j] = part[j], part[i]
                swaps, i, j = swaps + 1, i + 1, j - 1
        sort(part, low, j, depth + 1)
        sort(part, i, high, depth + 1)

    # The program counts positions from 1, which decides where the middle lies.
    counted = [None, *values]
    sort(counted, 1, 16, 1)
    assert counted[1:] == sorted(values)
    yield "Before:" + "".join(map(number, values))
    yield "After: " + "".join(map(number, sorted(values)))
    yield f"{number(swaps)}swaps,{number(steps)}steps, recursion{number(deepest)}levels deep"
    yield ""
    for value in sorted(values):
        yield f"{value:3} " + "*" * (value // 2)


def bakery(_answers):
    random = Random(1987)

    def pause(mean):
        return -mean * math.log(1 - random.next())

    hours = [[] for _ in range(8)]
    free = busy = longest = 0.0
    served = unlucky = 0
    arrival = pause(4)
    while arrival < 480:
        begin = max(arrival, free)
        service = pause(3)
        free, busy = begin + service, busy + service
        served += 1
        wait = begin - arrival
        hours[int(arrival // 60)].append(wait)
        if wait > longest:
            longest, unlucky = wait, served
        arrival += pause(4)
    yield "Hour   Customers   Mean wait (minutes)"
    for hour, waits in enumerate(hours):
        mean = sum(waits) / len(waits) if waits else 0
        yield f"{8 + hour:2}:00     {len(waits):3}        {tenths(mean)}  " + "=" * math.floor(mean + 0.5)
    yield ""
    yield f"Customers served:{number(served)}"
    yield f"The baker was busy {tenths(100 * busy / 480)} % of the day"
    yield f"The longest wait was {tenths(longest)} minutes, for customer{number(unlucky)}"
    if free > 480:
        yield f"The last one left {tenths(free - 480)} minutes after closing time"


def tenths(value):
    """The field ##.# of PRINT USING, for positive numbers."""
    rounded = math.floor(value * 10 + 0.5)
    return f"{rounded // 10:2}.{rounded % 10}"


def life(_answers):
    rows, columns = 12, 38
    patterns = [(1, 2, ".O. ..O OOO"), (3, 12, "OOO"), (8, 3, "OO OO"), (5, 24, ".OO OO. .O.")]
    cells = {(row + r, column + c) for row, column, pattern in patterns for r, line in enumerate(pattern.split())
             for c, mark in enumerate(line) if mark == "O"}
    inside = set(itertools.product(range(1, rows + 1), range(1, columns + 1)))
    for generation in range(7):
        for row in range(1, rows + 1):
            yield "".join("O" if (row, column) in cells else "." for column in range(1, columns + 1))
        yield f"generation{number(generation)}has{number(len(cells))}cells"
        yield ""
        around = {cell: sum((cell[0] + r, cell[1] + c) in cells for r in (-1, 0, 1) for c in (-1, 0, 1)
                            if (r, c) != (0, 0)) for cell in inside}
        cells = {cell for cell, count in around.items() if count == 3 or (count == 2 and cell in cells)}


def hanoi(answers):
    question = "How many disks (1 to 6)? "
    for answer in answers[:-1]:
        yield question + answer
        yield "No such tower"
    disks = int(answers[-1])
    yield question + answers[-1]
    pegs = {1: list(range(disks, 0, -1)), 2: [], 3: []}

    def picture():
        for row in reversed(range(disks)):
            line = ""
            for peg in pegs.values():
                width = peg[row] if row < len(peg) else 0
                line += ("=" * width + "|" + "=" * width).center(15) + " "
            yield line.rstrip()
        yield "-" * 48

    yield from picture()
    moves = []
    # The well-known solution without recursion: move m takes the disk that its lowest set bit tells.
    for move in range(1, 2**disks):
        disk = (move & -move).bit_length()
        source = next(peg for peg in pegs if pegs[peg] and pegs[peg][-1] == disk)
        step = 1 if (disks - disk) % 2 else 2
        target = (source - 1 + step) % 3 + 1
        assert not pegs[target] or pegs[target][-1] > disk
        pegs[target].append(pegs[source].pop())
        moves.append(f"disk {disk} from {source} to {target}")
    for first in range(0, len(moves), 4):
        yield "  ".join(moves[first:first + 4])
    yield from picture()
    yield f"{number(len(moves))}moves; a tower of 64 disks takes 1.84467440737096D+19"


def calendar(answers):
    for answer in answers[:-1]:
        yield "First month, year? " + answer
        yield "There is no such month here"
    yield "First month, year? " + answers[-1]
    month, year = map(int, answers[-1].split(","))
    for _ in range(3):
        title = f"{gregorian.month_name[month]} {year}"
        yield " " * ((27 - len(title)) // 2) + title
        yield "  Mo  Tu  We  Th  Fr  Sa  Su"
        for week in gregorian.Calendar().monthdayscalendar(year, month):
            yield "".join(f"{day or '':>4}" for day in week).rstrip()
        yield ""
        month, year = (month + 1, year) if month < 12 else (1, year + 1)


CAVE = """
You are at the mouth of a cave.
I see the LAMP.
> dance
I do not know how to DANCE.
> n
There is only rock.
> light
You have no LAMP.
> take lamp
You have the LAMP.
> light
With what?
> east
I do not know how to EAST.
> e
You are in a long, low passage.
> e
It is too dark to see.
> e
You stumble back.
> w
You are in a long, low passage.
> n
You are in a chamber full of bats.
I see the MATCHES.
> take crown
I see no CROWN here.
> take matches
You have the MATCHES.
> light lamp
The lamp burns.
You are in a chamber full of bats.
> drop matches
You drop the MATCHES.
> drop matches
You have no MATCHES.
> look
You are in a chamber full of bats.
I see the MATCHES.
> s
You are in a long, low passage.
> e
You are in a dark hall.
> e
You are in the treasury.
I see the CROWN.
> take crown
You have the CROWN.
> w
You are in a dark hall.
> w
You are in a long, low passage.
> w
You are at the mouth of a cave.
You leave with the crown, after 24 moves.
"""


def cave(answers):
    story = CAVE.strip().split("\n")
    assert [line[2:] for line in story if line.startswith("> ")] == answers
    return story


def ledger(_answers):
    entries = [("Wages", 185000), ("Rent", -64050), ("Food", -31275), ("Flea market", 4550), ("Bicycle", -99)]
    yield "File not found in 50"
    yield "User-defined error in 100"
    yield "  record 3 has no amount: a line that somebody scribbled"
    yield "User-defined error in 110"
    yield "  record 5 is no number: -sixty"
    yield ""
    yield "Entry                  Amount     Balance"
    balance = 0
    for name, cents in entries:
        balance += cents
        # The sign takes no position of its own.
        yield f"{name:18} {signed(cents, 9)} {signed(balance, 10)}"
    yield f"{len(entries):2} entries,  2 records left out"
    share = 100 * balance / sum(cents for _, cents in entries if cents > 0)
    yield f"saved {math.floor(share * 10 + 0.5) / 10:5.1f} % of the income"
    yield "Division by zero in 270"
    yield "  no income, so no share"
    yield "saved   0.0 % of the income"
    yield "The book is closed."


def signed(cents, width):
    """A field of PRINT USING with a leading plus: blanks up to the width, then the sign, then the digits."""
    body = f"{abs(cents) / 100:.2f}"
    return " " * (width - len(body)) + ("-" if cents < 0 else "+") + body


def kitchen(_answers):
    pots = {3: "soft egg", 8: "spaghetti", 12: "potatoes"}
    yield "All pots are on the stove."
    for tick in range(1, max(pots) + 1):
        if tick in pots:
            yield f"Tick{number(tick)}: the {pots[tick]} must come off."
        if tick % 5 == 0:
            yield f"Tick{number(tick)}"
    yield f"Dinner is served after{number(max(pots))}ticks."
    primes = [n for n in range(2, 5000) if all(n % d for d in range(2, math.isqrt(n) + 1))]
    yield f"Meanwhile: prime number 400 is{number(primes[399])}"


def nim(answers):
    random = Random(3)
    heaps = [3, 5, 7]
    yield "I win if you let me. Type heap and number, as in 2,3."
    mine = False
    for answer in answers:
        for place, stones in enumerate(heaps, 1):
            yield f"{number(place)}: " + "o" * stones
        yield "Your move? " + answer
        heap, count = map(float, answer.split(","))
        if heap not in (1, 2, 3) or count != int(count) or not 1 <= count <= heaps[int(heap) - 1]:
            yield "That cannot be done."
            continue
        heaps[int(heap) - 1] -= int(count)
        mine = False
        if not any(heaps):
            break
        # A winning move, found by trying all: it leaves heaps whose sum without carries is 0.
        winning = [(place, stones) for place in range(3) for stones in range(1, heaps[place] + 1)
                   if not xor(heaps[:place] + [heaps[place] - stones] + heaps[place + 1:])]
        if winning:
            place, stones = winning[0]
        else:
            stones = 1
            place = int(random.next() * 3)
            while heaps[place] == 0:
                place = int(random.next() * 3)
        heaps[place] -= stones
        mine = True
        yield f"I take{number(stones)}from heap{number(place + 1)}and {'smile' if winning else 'frown'}."
    assert not any(heaps)
    yield "The last stone is mine." if mine else "The last stone is yours. Well played!"


def xor(values):
    total = 0
    for value in values:
        total ^= value
    return total


def cipher(answers):
    wheels = ["QWERTYUIOPASDFGHJKLZXCVBNM", "ZYXWVUTSRQPONMLKJIHGFEDCBA", "BDFHJLCPRTXVZNYEIWGAKMUSQO"]
    starts = [4, 17, 9]
    plain = [letter for letter in answers[0].upper() if letter.isascii() and letter.isalpha()]
    secret = []
    for position, letter in enumerate(plain):
        turns = [starts[0] + position, starts[1] + position // 26, starts[2] + 3 * (position // 5)]
        code = ord(letter) - ord("A")
        for wheel, turn in zip(wheels, turns):
            code = ord(wheel[(code + turn) % 26]) - ord("A")
        secret.append(chr(code + ord("A")))
    yield "Message: " + answers[0]
    for title, letters in (("Secret: ", secret), ("Again:  ", plain)):
        text = "".join(letters)
        yield title + " ".join(text[first:first + 5] for first in range(0, len(text), 5))
    most = max(map(secret.count, secret))
    best = min(letter for letter in secret if secret.count(letter) == most)
    yield f"The letter {best} comes most often:{number(most)}of{number(len(secret))}"


EXAMPLES = {
    "quicksort": (quicksort, []),
    "bakery": (bakery, []),
    "life": (life, []),
    "hanoi": (hanoi, ["7", "2.5", "4"]),
    "calendar": (calendar, ["13,2000", "1,1500", "12,1999"]),
    "cave": (cave, [line[2:] for line in CAVE.split("\n") if line.startswith("> ")]),
    "ledger": (ledger, []),
    "kitchen": (kitchen, []),
    "nim": (nim, ["2,6", "0,1", "1,1", "2,1", "1,1", "3,3", "2,3", "1,1"]),
    "cipher": (cipher, ["Meet me at the old mill at midnight, and bring the book"]),
}

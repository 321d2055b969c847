"""What the listings must print: each worked out here by other means than the listing's own where there are any."""

import calendar
import math
import string


def n(*values):
    """Numbers as PRINT shows them one after the other: a sign place in front and a blank behind."""
    return "".join(f"{number_text(value)} " for value in values)


def number_text(value):
    if value == int(value):
        return f"{int(value): d}"
    text = f"{abs(value):.10f}".rstrip("0")
    return ("-" if value < 0 else " ") + (text[1:] if text.startswith("0.") else text)


def zones(*texts):
    """PRINT with commas between the items."""
    return "".join(text.ljust(14) for text in texts)


class Answers:
    """The typed answers in their order; ask() gives the row that question and answer share."""

    def __init__(self, answers):
        self.left = list(answers)

    def ask(self, question, kind=str):
        answer = self.left.pop(0)
        values = [kind(part) for part in answer.split(",")] if kind is not str else [answer]
        return f"{question}? {answer}", values[0] if len(values) == 1 else values


def hilo(answers):
    yield " " * 9 + "HIGHER OR LOWER"
    yield ""
    row, state = answers.ask("YOUR LUCKY NUMBER", int)
    yield row
    total = 0
    for game in (1, 2, 3):
        state = (state * 137 + 29) % 1021
        secret = state % 100 + 1
        yield f"NUMBER{n(game)}IS BETWEEN 1 AND 100."
        tries = 0
        while True:
            row, guess = answers.ask("GUESS", int)
            yield row
            tries += 1
            if guess == secret:
                break
            yield "LOWER." if guess > secret else "HIGHER."
        yield f"RIGHT, WITH{n(tries)}GUESSES"
        yield "PURE LUCK!" if tries == 1 else "GOOD." if tries < 5 else "TOO MANY."
        total += tries
    yield f"THAT IS{n(total / 3)}ON AVERAGE."


def lander(answers):
    while True:
        height, speed, fuel, second = 120, 20, 90, 0
        yield "SECONDS       HEIGHT        SPEED         FUEL"
        while True:
            yield zones(n(second), n(height), n(speed), n(fuel))
            burn = 0
            if fuel:
                while True:
                    row, burn = answers.ask("BURN", int)
                    yield row
                    if burn >= 0:
                        break
                    yield "NOT POSSIBLE"
            burn = min(burn, 30, fuel)
            fuel -= burn
            after = speed + 5 - burn
            fall = (speed + after) / 2
            second += 1
            if fall >= height:
                break
            height, speed = height - fall, after
        yield f"CONTACT AFTER{n(second)}SECONDS, SPEED{n(after)}"
        if abs(after) <= 15:
            yield "A PERFECT LANDING" if abs(after) <= 5 else "ROUGH, BUT ALIVE"
            yield f"FUEL LEFT{n(fuel)}"
        else:
            yield f"A NEW CRATER,{n(after * after // 10)}FEET DEEP"
        again = ""
        while again not in ("Y", "YES", "N"):
            row, again = answers.ask("AGAIN (Y/N)")
            yield row
        if again == "N":
            return


def cannon(answers):
    hits = 0
    for target, distance in enumerate((6000, 9300), 1):
        yield f"TARGET{n(target)}AT{n(distance)}YARDS"
        for shell in range(1, 6):
            while True:
                row, angle = answers.ask("ELEVATION", float)
                yield row
                if 1 <= angle <= 89:
                    break
                yield "BETWEEN 1 AND 89."
            miss = math.floor(10000 * math.sin(math.radians(2 * angle)) + 0.5) - distance
            if abs(miss) < 100:
                yield f"*** HIT *** WITH SHELL{n(shell)}"
                hits += 1
                break
            yield f"{'SHORT' if miss < 0 else 'OVER'} BY{n(abs(miss))}YARDS"
        else:
            yield "THE TARGET HAS MOVED AWAY."
    yield f"{n(hits)}OF{n(2)}TARGETS"


CAVES = {1: (2, 5, 6), 2: (1, 3, 7), 3: (2, 4, 8), 4: (3, 5, 9), 5: (4, 1, 10),
         6: (1, 8, 9), 7: (2, 9, 10), 8: (3, 10, 6), 9: (4, 6, 7), 10: (5, 7, 8)}


def beast(answers):
    row, state = answers.ask("A NUMBER TO BEGIN", int)
    yield row

    def chance():
        nonlocal state
        state = (state * 67 + 11) % 257
        return state % 10 + 1

    me, arrows = 1, 3
    monster = next(cave for cave in iter(chance, None) if cave != me)
    pit = next(cave for cave in iter(chance, None) if cave not in (me, monster))
    while True:
        yield ""
        yield f"YOU ARE IN CAVE{n(me)}"
        for cave in CAVES[me]:
            if cave == monster:
                yield "A BAD SMELL!"
            if cave == pit:
                yield "A COLD DRAUGHT!"
        yield f"TUNNELS TO{n(*CAVES[me])}"
        while True:
            row, (what, where) = answers.ask("MOVE OR SHOOT, AND WHERE", lambda part: part)
            where = int(where)
            yield row
            if where not in CAVES[me]:
                yield "NO TUNNEL LEADS THERE."
            elif what[0] not in "MS":
                yield "WHAT?"
            else:
                break
        end = None
        if what[0] == "M":
            me = where
            end = "THE BEAST GETS YOU." if me == monster else "YOU FALL FOR EVER." if me == pit else None
        elif where == monster:
            yield "THE BEAST IS DEAD. YOU WIN!"
            return
        else:
            arrows -= 1
            yield "MISSED."
            if arrows:
                monster = CAVES[monster][chance() % 3]
            end = "NO ARROWS LEFT." if not arrows else "THE BEAST COMES TO YOU." if monster == me else None
        if end:
            yield end
            yield "YOU LOSE."
            return


def deal(answers):
    row, state = answers.ask("CUT THE CARDS (1-200)", int)
    yield row
    deck = [rank + suit for suit in "CDHS" for rank in "23456789TJQKA"]
    for place in range(51, 0, -1):
        state = (state * 75 + 74) % 65537
        other = state % (place + 1)
        deck[place], deck[other] = deck[other], deck[place]
    best, winner = 0, None
    for player in range(4):
        hand = deck[player:20:4]
        # Exchanging each card with every later one that is higher does not keep the order of equals.
        for first in range(4):
            for second in range(first + 1, 5):
                if value(hand[second]) > value(hand[first]):
                    hand[first], hand[second] = hand[second], hand[first]
        points = sum(max(0, value(card) - 8) for card in hand)
        yield f"PLAYER{n(player + 1)}: {' '.join(hand)}".ljust(29) + f"{n(points)}POINTS"
        if points > best:
            best, winner = points, player + 1
    yield f"PLAYER{n(winner)}WINS." if winner else "NOBODY HAS ANYTHING."


def value(card):
    return "23456789TJQKA".index(card[0])


def bars(_answers):
    rain = dict(JAN=52, FEB=38, MAR=45, APR=60, MAY=71, JUN=80, JUL=96, AUG=88, SEP=64, OCT=55, NOV=57, DEC=50)
    for month, amount in rain.items():
        yield f"{month}  {'#' * (amount // 4)}{n(amount)}"
    yield ""
    for level in range(96, 0, -12):
        left = f"{level:3} +" if level % 48 == 0 else "    !"
        yield left + "".join(" **" if amount >= level else "   " for amount in rain.values())
    yield "    +" + "-" * 36
    yield "     " + "".join(f" {month[:2]}" for month in rain)
    yield f"MOST IN {max(rain, key=rain.get)}, MEAN{n(sum(rain.values()) / 12)}"


def dates(answers):
    while True:
        row, (month, year) = answers.ask("MONTH,YEAR", int)
        yield row
        if month == 0:
            yield "BYE"
            return
        if not 1 <= month <= 12 or year < 1583:
            yield "CANNOT DO THAT"
            continue
        yield "SUN MON TUE WED THU FRI SAT"
        for week in calendar.Calendar(firstweekday=6).monthdayscalendar(year, month):
            yield " ".join(f"{day or '':>3}" for day in week)
        yield ""


def burrow(answers):
    row, (width, height) = answers.ask("WIDTH, HEIGHT", int)
    yield row
    while not (2 <= width <= 15 and 2 <= height <= 10):
        row, (width, height) = answers.ask("WIDTH, HEIGHT", int)
        yield row
    row, state = answers.ask("MAZE NUMBER", int)
    yield row
    opens_west = {}
    for y in range(height):
        for x in range(width):
            state = (state * 171 + 7) % 30269
            opens_west[x, y] = x > 0 and (y == 0 or state // 100 % 2 == 1)
    for y in range(height):
        yield "".join("+  " if y > 0 and not opens_west[x, y] else "+--" for x in range(width)) + "+"
        yield "".join("   " if opens_west[x, y] else "!  " for x in range(width)) + "!"
    yield "+--" * width + "+"
    x, y, way = width - 1, height - 1, ""
    while (x, y) != (0, 0):
        west = opens_west[x, y]
        way += "W" if west else "N"
        x, y = (x - 1, y) if west else (x, y - 1)
    yield f"THE WAY OUT TAKES{n(len(way))}STEPS:"
    yield way


def sorts(_answers):
    numbers = [503, 87, 512, 61, 908, 170, 897, 275, 653, 426, 154, 509, 612, 677, 765, 703]

    def bubble(a):
        comparisons = moves = 0
        while True:
            changed = False
            for i in range(len(a) - 1):
                comparisons += 1
                if a[i] > a[i + 1]:
                    a[i], a[i + 1], changed = a[i + 1], a[i], True
                    moves += 1
            if not changed:
                return comparisons, moves

    def gaps(a, several):
        comparisons = moves = 0
        for gap in several:
            for i in range(gap, len(a)):
                x, j = a[i], i
                while j >= gap:
                    comparisons += 1
                    if a[j - gap] <= x:
                        break
                    a[j], j = a[j - gap], j - gap
                    moves += 1
                a[j] = x
        return comparisons, moves

    def selection(a):
        moves = 0
        for i in range(len(a) - 1):
            k = a.index(min(a[i:]))
            moves += k != i
            a[i], a[k] = a[k], a[i]
        return len(a) * (len(a) - 1) // 2, moves

    for name, sort in (("BUBBLE", bubble), ("INSERTION", lambda a: gaps(a, [1])), ("SELECTION", selection),
                       ("SHELL", lambda a: gaps(a, [8, 4, 2, 1]))):
        copy = list(numbers)
        comparisons, moves = sort(copy)
        assert copy == sorted(numbers)
        yield zones(name) + f"{n(comparisons)}COMPARISONS,{n(moves)}MOVES"
    yield n(*sorted(numbers))


def matrix(answers):
    a, b = [[2, 1, 1], [4, 3, 3], [8, 7, 9]], [[1, 0, 2], [-1, 3, 1], [2, 2, -2]]
    product = [[sum(x * y for x, y in zip(row, column)) for column in zip(*b)] for row in a]
    for row in product:
        yield "".join(n(entry).ljust(7 if j == 0 else 8) for j, entry in enumerate(row))
    yield "TRANSPOSED"
    for column in zip(*product):
        yield "".join(f"{entry:6}" for entry in column)
    yield f"DETERMINANT{n(4)}"  # 2*(27-21) - (36-24) + (28-24)
    row, (p, q, r) = answers.ask("RIGHT HAND SIDE", int)
    yield row
    # Solved by hand: the second row less twice the first is y + z, the third less four times it 3y + 5z.
    z = ((r - 4 * p) - 3 * (q - 2 * p)) / 2
    y = (q - 2 * p) - z
    x = (p - y - z) / 2
    for i, solution in enumerate((x, y, z), 1):
        yield f"X{i} ={n(solution)}"


def quiz(answers):
    questions = [("WHAT RIVER FLOWS THROUGH VIENNA, LINZ AND ULM", "DANUBE"), ("THE METAL WITH THE SIGN FE", "IRON"),
                 ("7 TIMES 8", "56"), ("THE LARGEST PLANET", "JUPITER")]
    points = 0
    for number, (question, right) in enumerate(questions, 1):
        yield ""
        yield f"QUESTION{n(number)}: {question}"
        tries = 0
        while True:
            row, answer = answers.ask("YOUR ANSWER")
            yield row
            tries += 1
            answer = answer.upper().replace(" ", "")
            if answer == right:
                yield {1: "RIGHT AT ONCE!", 2: "RIGHT.", 3: "AT LAST."}[tries]
                points += 4 - tries
            elif answer == "HINT":
                yield f"IT HAS{n(len(right))}LETTERS, THE FIRST IS {right[0]}"
                continue
            elif tries < 2:
                yield "NO, TRY AGAIN."
                continue
            else:
                yield f"NO, IT IS {right}."
            break
    yield ""
    grade = "WONDERFUL" if points == 12 else "NOT BAD" if points >= 6 else "LEARN MORE"
    yield f"{n(points)}POINTS OF{n(12)}- {grade}"


def secret(answers):
    row, keyword = answers.ask("KEYWORD")
    yield row
    more = "Y"
    while more == "Y":
        row, message = answers.ask("MESSAGE")
        yield row
        coded, used = "", 0
        for letter in message:
            if letter in string.ascii_uppercase:
                shift = string.ascii_uppercase.index(keyword[used % len(keyword)])
                place = (string.ascii_uppercase.index(letter) + shift) % 26
                coded, used = coded + string.ascii_uppercase[place], used + 1
            else:
                coded += letter
        yield f"CODED:   {coded}"
        yield f"DECODED: {message}"
        letters = "".join(letter for letter in message if letter in string.ascii_uppercase)
        yield "IT READS THE SAME BACKWARDS." if letters == letters[::-1] else f"BACKWARDS: {letters[::-1]}"
        row, more = answers.ask("MORE (Y/N)")
        yield row


def gallow(answers):
    words = ["LANTERN", "TELESCOPE", "PARROT", "BICYCLE", "MISSISSIPPI"]
    beam, head = "  +--+", "  !  O"
    pictures = [[beam], [beam, head], [beam, head, "  !  !"], [beam, head, "  ! /!"], [beam, head, "  ! /!\\"],
                [beam, head, "  ! /!\\", "  ! / \\"]]
    again = "YES"
    while again == "YES":
        row, number = answers.ask("WORD NUMBER 1 TO 5", int)
        yield row
        word, used, wrong = words[number - 1], "", 0
        while True:
            shown = "".join(letter if letter in used else "-" for letter in word)
            yield shown
            if shown == word:
                yield "YOU HAVE IT."
                break
            while True:
                row, letter = answers.ask("LETTER")
                yield row
                if len(letter) != 1:
                    yield "ONE LETTER!"
                elif letter in used:
                    yield f"YOU HAD THAT. SO FAR: {used}"
                else:
                    break
            used += letter
            if letter in word:
                yield f"{n(word.count(letter))}TIMES"
                continue
            yield f"NO {letter}"
            yield from pictures[wrong]
            wrong += 1
            if wrong == 6:
                yield f"THE WORD WAS {word}"
                break
        row, again = answers.ask("ANOTHER")
        yield row


def flip(answers):
    row, state = answers.ask("START (1-99)", int)
    yield row
    digits = [1, 2, 3, 4, 5, 6]
    for i in range(6, 1, -1):
        state = (state * 33 + 5) % 101
        j = state % i + 1
        digits[i - 1], digits[j - 1] = digits[j - 1], digits[i - 1]
    turns = 0
    yield n(*digits)
    while True:
        row, count = answers.ask("HOW MANY", int)
        yield row
        if count == 0:
            yield "A PITY."
            return
        if not 2 <= count <= 6:
            yield f"TWO TO{n(6)}"
            continue
        turns += 1
        digits[:count] = reversed(digits[:count])
        yield n(*digits)
        if digits == sorted(digits):
            yield f"DONE IN{n(turns)}TURNS."
            return


def deduce(answers):
    row, state = answers.ask("GAME NUMBER", int)
    yield row
    secret_digits = ""
    while len(secret_digits) < 4:
        state = (state * 61 + 17) % 509
        if str(state % 10) not in secret_digits:
            secret_digits += str(state % 10)
    for attempt in range(1, 9):
        while True:
            row, guess = answers.ask("GUESS")
            yield row
            if len(guess) == 4:
                break
            yield "FOUR DIGITS"
        placed = sum(a == b for a, b in zip(guess, secret_digits))
        elsewhere = sum(a in secret_digits for a in guess) - placed
        if placed == 4:
            yield f"FOUND, TRY{n(attempt)}"
            return
        yield " " * 9 + ("+" * placed + "*" * elsewhere or "NOTHING")
    yield f"IT WAS {secret_digits}"


def wave(_answers):
    for t in range(25):
        marks = {30: "!"}
        star, circle = math.floor(30.5 + 20 * math.sin(t / 4)), math.floor(30.5 + 15 * math.cos(t / 3))
        marks.update({star: "*", circle: "O"} if star != circle else {star: "X"})
        yield "".join(marks.get(column, " ") for column in range(1, max(marks) + 1))


def ruler(answers):
    while True:
        row, rule = answers.ask("RULE", int)
        yield row
        if rule < 0:
            return
        if rule > 255:
            yield "0 TO 255"
            continue
        cells = "." * 20 + "#" + "." * 20
        for _ in range(12):
            yield cells
            wide = "." + cells + "."
            cells = "".join("#" if rule >> sum((wide[i + k] == "#") << (2 - k) for k in range(3)) & 1 else "."
                            for i in range(41))


def divide(answers):
    while True:
        row, number = answers.ask("NUMBER", float)
        yield row
        if number == 0:
            break
        if number < 2 or number != int(number):
            yield "A WHOLE NUMBER ABOVE 1"
            continue
        factors, rest = [], int(number)
        for divisor in range(2, int(number) + 1):
            while rest % divisor == 0:
                factors.append(divisor)
                rest //= divisor
        yield f"{n(number)}={'*'.join(n(factor) for factor in factors)}"
        if len(factors) == 1:
            yield "A PRIME"
    row, (a, b) = answers.ask("TWO NUMBERS", int)
    yield row
    yield f"GCD{n(math.gcd(a, b))}LCM{n(a * b // math.gcd(a, b))}"
    for candidate in range(2, 501):
        if sum(d for d in range(1, candidate) if candidate % d == 0) == candidate:
            yield f"{n(candidate)}IS PERFECT"


def coins(answers):
    till = {1000: 3, 500: 2, 100: 4, 50: 2, 25: 3, 10: 2, 5: 1, 1: 9}
    while True:
        row, (price, paid) = answers.ask("PRICE, PAID", lambda part: round(float(part) * 100))
        yield row
        if price == 0:
            break
        change = paid - price
        if change <= 0:
            yield "EXACTLY." if change == 0 else "THAT IS NOT ENOUGH."
            continue
        yield f"CHANGE {change / 100:6.2f}"
        for coin in till:
            count = min(change // coin, till[coin])
            if count:
                till[coin] -= count
                change -= count * coin
                name = n(coin // 100) + "DOLLAR" if coin >= 100 else n(coin) + "CENT"
                yield f"{n(count)}* {name}{'S' * (count > 1)}"
        if change:
            yield f"THE TILL LACKS{n(change)}CENTS"
    yield f"LEFT IN THE TILL:{n(sum(coin * count for coin, count in till.items()) / 100)}"


ROMAN = [(1000, "M"), (900, "CM"), (500, "D"), (400, "CD"), (100, "C"), (90, "XC"), (50, "L"), (40, "XL"), (10, "X"),
         (9, "IX"), (5, "V"), (4, "IV"), (1, "I")]


def to_roman(number):
    return "".join("" if not count else sign * count for sign, count in roman_parts(number))


def roman_parts(number):
    for worth, sign in ROMAN:
        yield sign, number // worth
        number %= worth


def roman(answers):
    numerals = {to_roman(number): number for number in range(1, 4000)}
    while True:
        row, text = answers.ask("NUMBER OR NUMERAL")
        yield row.rstrip()
        if not text:
            return
        if text[0].isdigit():
            known = 1 <= int(text) <= 3999
            yield f"{n(int(text))}IS {to_roman(int(text))}" if known else "NO SUCH NUMERAL"
        elif text in numerals:
            yield f"{text} IS{n(numerals[text])}"
        else:
            # Read from the left, each sign as often as it stands there, never going back to a larger one.
            rest = text
            for _, sign in ROMAN:
                while rest.startswith(sign):
                    rest = rest[len(sign):]
            yield f"CANNOT READ {rest}" if rest else f"{text} IS{n(loose_value(text))}"


def loose_value(text):
    total = 0
    for worth, sign in ROMAN:
        while text.startswith(sign):
            total, text = total + worth, text[len(sign):]
    return total


def sticks(answers):
    left = 23
    row, first = answers.ask("WILL YOU BEGIN")
    yield row
    mine = first.startswith("N")
    while True:
        yield "I" * left + n(left)
        if mine:
            take = (left - 1) % 4 or 1
            yield f"I TAKE{n(take)}"
            left -= take
            if left == 0:
                yield "I TOOK THE LAST. YOU WIN!"
                return
            mine = False
            continue
        while True:
            row, take = answers.ask("YOU TAKE", float)
            yield row
            if take not in (1, 2, 3):
                yield "ONE, TWO OR THREE!"
            elif take > left:
                yield "THERE ARE NOT SO MANY."
            else:
                break
        left -= int(take)
        if left == 0:
            yield "YOU HAD TO TAKE THE LAST. I WIN."
            return
        if left == 1:
            yield "ONE IS LEFT FOR ME. YOU WIN!"
            return
        mine = True


def queens(answers):
    row, size = answers.ask("SIZE OF BOARD (4-8)", int)
    yield row
    boards, trials = [], 0

    def place(columns):
        nonlocal trials
        if len(columns) == size:
            boards.append(columns)
            return
        for column in range(size):
            trials += 1
            if all(column != other and abs(column - other) != len(columns) - i for i, other in enumerate(columns)):
                place([*columns, column])
        trials += 1  # the try that runs off the board

    place([])
    for i, queen in enumerate(boards[0]):
        yield "".join(" Q" if j == queen else " :" if (i + j) % 2 else " ." for j in range(size))
    yield f"{n(len(boards))}SOLUTIONS,{n(trials)}TRIALS"


def savings(answers):
    row, (capital, percent, years) = answers.ask("CAPITAL, PERCENT, YEARS", float)
    yield row
    yield "YEAR   INTEREST     CAPITAL"
    cents, interest = round(capital * 100), 0
    for year in range(1, int(years) + 1):
        # Half a cent is rounded up.
        earned = math.floor(cents * percent / 100 + 0.5)
        cents, interest = cents + earned, interest + earned
        yield f"{year:2}  {earned / 100:10.2f}  {cents / 100:11.2f}"
    yield f"TOTAL INTEREST {interest / 100:8.2f}"
    if interest > cents - interest:
        yield "MORE INTEREST THAN CAPITAL"


def words(_answers):
    text = ("THE MILL BY THE RIVER STOOD STILL; NO WIND, NO WATER, NO WILL. THE MILLER SAT DOWN BY THE MILL")
    all_words = "".join(c if c in string.ascii_uppercase else " " for c in text).split()
    counts = {word: all_words.count(word) for word in all_words}
    yield f"{n(len(all_words))}WORDS,{n(len(counts))}DIFFERENT ONES"
    yield "".join(f"{word}{n(count)}" for word, count in counts.items() if count > 1)
    yield f"LONGEST: {max(all_words, key=len)}"
    for letter in string.ascii_uppercase:
        if letter in text:
            yield letter + "*" * text.count(letter)


def knight(answers):
    row, (start_row, start_column) = answers.ask("FROM ROW, COLUMN", int)
    yield row
    jumps = [(1, 2), (2, 1), (2, -1), (1, -2), (-1, -2), (-2, -1), (-2, 1), (-1, 2)]
    visited = {}
    here = (start_row, start_column)

    def free(place):
        return [(place[0] + r, place[1] + c) for r, c in jumps if 1 <= place[0] + r <= 6 and 1 <= place[1] + c <= 6
                and (place[0] + r, place[1] + c) not in visited]

    while here:
        visited[here] = len(visited) + 1
        here = min(free(here), key=lambda place: len(free(place)), default=None)
    for r in range(1, 7):
        yield "".join(f"{visited.get((r, c), 0):4}" for c in range(1, 7))
    yield "ALL FIELDS" if len(visited) == 36 else f"STUCK AFTER{n(len(visited))}"


def realm(answers):
    people, grain, acres, dead, state = 100, 2800, 1000, 0, 17

    def chance():
        nonlocal state
        state = (state * 205 + 29) % 4096
        return state // 8

    for year in range(1, 6):
        yield ""
        yield f"YEAR{n(year)}- PEOPLE{n(people)}GRAIN{n(grain)}ACRES{n(acres)}"
        price = 17 + chance() % 10
        yield f"LAND COSTS{n(price)}"

        def decide(question, possible):
            while True:
                row, amount = answers.ask(question, int)
                rows.append(row)
                if possible(amount):
                    return amount
                rows.append("THINK AGAIN.")

        rows = []
        bought = decide("BUY (OR -SELL)", lambda b: b * price <= grain and b + acres >= 0)
        acres, grain = acres + bought, grain - bought * price
        food = decide("FOOD", lambda f: 0 <= f <= grain)
        grain -= food
        sown = decide("SOW ACRES", lambda s: s <= acres and s // 2 <= grain and s <= 10 * people)
        grain -= sown // 2
        yield from rows
        harvest = 1 + chance() % 5
        grain += harvest * sown
        eaten = grain // 10 if chance() % 3 == 0 else 0
        grain -= eaten
        yield f"THE HARVEST WAS{n(harvest)}AN ACRE" + (f", RATS ATE{n(eaten)}" if eaten else ".")
        starved = max(0, people - food // 20)
        if starved * 20 > people * 9:
            yield "THEY DRIVE YOU OUT."
            break
        came = chance() % 8
        people += came - starved
        dead += starved
        yield (f"{n(starved)}STARVED," if starved else "") + f"{n(came)}CAME."
    else:
        yield ""
        yield f"YOU LEAVE{n(people)}PEOPLE WITH{n(acres // people)}ACRES EACH"
    yield f"{n(dead)}DIED."


def bases(answers):
    while True:
        row, (number, base) = answers.ask("NUMBER, BASE", int)
        yield row
        if base == 0:
            break
        if not 2 <= base <= 16:
            yield "BASE 2 TO 16"
            continue
        digits, rest = "", number
        while rest or not digits:
            digits, rest = "0123456789ABCDEF"[rest % base] + digits, rest // base
        assert int(digits, base) == number
        yield f"{n(number)}= {digits} ({base}) CHECKED"
    yield zones(" A AND B", "A OR B", "A XOR B")
    for a in (5, 6, 7):
        for b in (2, 3):
            yield zones(n(a & b), n(a | b), n(a ^ b))
    yield "BEEF 777 " + n(255, 15)


# What is typed; several runs of a listing are several lists.
LISTINGS = {
    hilo: [["5", "50", "25", "12", "15", "50", "60", "53", "75", "60"], ["12", "53", "50", "25", "30", "27", "50",
                                                                         "25", "12", "22"],
           ["33", "50", "75", "62", "68", "65", "66", "67", "70", "87"]],
    lander: [["5", "5", "5", "5", "10", "-1", "10", "10", "0", "Y", "0", "0", "0", "0", "?", "N"],
             ["0", "0", "40", "5", "30", "10", "5", "5", "5", "5", "5", "5", "5", "5", "N"]],
    cannon: [["0", "18", "19", "18.5", "90", "30", "34.1"], ["17.5", "18.1", "1", "2", "3", "88", "75"]],
    beast: [["7", "M,3", "M,2", "M,3", "X,2", "M,4"], ["20", "S,2", "S,5", "S,6"], ["3", "M,5", "M,10", "M,7", "S,9",
                                                                                    "S,2"]],
    deal: [["1"], ["77"], ["200"]],
    bars: [[]],
    dates: [["2,2024", "13,2000", "1,1582", "2,1900", "2,2000", "10,1999", "8,2021", "0,0"]],
    burrow: [["1,5", "15,11", "8,5", "4711"], ["15,10", "12"], ["2,2", "0"]],
    sorts: [[]],
    matrix: [["1,2,3"], ["7,17,45"], ["0,0,0"], ["-5,10,1000"]],
    quiz: [["danube", " i r o n ", "54", "56", "hint", "JUPITER"], ["RHINE", "HINT", "LEAD", "hint", "IRON", "1", "2",
                                                                    "MARS", "SATURN"],
           ["Danube", "Iron", "56", "Jupiter"]],
    secret: [["LEMON", "ATTACK AT DAWN!", "Y", "MADAM I'M ADAM", "N"], ["ABC", "ZZZ 999 YXW", "Y", "Q", "N"]],
    gallow: [["1", "A", "E", "EE", "A", "N", "T", "L", "R", "YES", "3", "X", "Y", "Z", "Q", "W", "V", "NO"],
             ["5", "S", "I", "O", "U", "P", "M", "NO"], ["4", "C", "B", "K", "A", "N", "D", "T", "F", "NO"]],
    flip: [["7", "1", "7", "2", "3", "4", "5", "6", "0"], ["42", "6", "0"]],
    deduce: [["9", "1234", "5678", "90", "9012", "3456", "7890", "2468", "1357", "8024"], ["100", "0123",
                                                                                           "4567"] + ["8901"] * 6],
    wave: [[]],
    ruler: [["90", "300", "30", "110", "-1"], ["0", "255", "1", "-1"]],
    divide: [["360", "97", "1", "2.5", "1001", "65536", "0", "84,36"], ["0", "17,5"], ["999", "2", "0", "1071,462"]],
    coins: [["3.99,5", "12.5,20", "7,7", "8,5", "0.01,10", "1,50", "0,0"], ["2.37,2.4", ".5,1", "0,0"]],
    roman: [["1984", "MCMLXXXIV", "4000", "0", "XLII", "IXX", "HELLO", "3999", "MMMM", "12", ""]],
    sticks: [["NO", "1", "5", "2", "3", "1.5", "3", "1", "2", "1"], ["YES", "2", "3", "2", "1", "3", "2", "1"]],
    queens: [["4"], ["5"], ["6"]],
    savings: [["1000,5,10"], ["250.5,3.5,7"], ["100,25,6"]],
    words: [[]],
    knight: [["1,1"], ["3,4"], ["6,2"]],
    realm: [["0", "2000", "1000", "0", "1900", "900", "10", "2000", "800", "-50", "1800", "900", "0", "1700", "800"],
            ["200", "10", "0", "9999", "500"]],
    bases: [["255,16", "255,2", "10,1", "4095,8", "0,7", "123456789,16", "5,0"]],
}

#!/usr/bin/env python3
"""Writes src/numbers/kernel_tables.cpp, the constants of the numeric kernels, from their definitions.

Everything is computed with Python's integers as fixed-point numbers of `bits` fraction bits, by Taylor series
and integer square roots, so the tables need no trust in any mathematical library. Run from the repository's
root; the output is committed. With --check nothing is written, and the committed tables must be what the script
computes.
"""

import sys
from fractions import Fraction
from math import isqrt

bits = 1600
one = 1 << bits


def arctangent(x: Fraction) -> Fraction:
    """atan(x) for |x| <= 1, through atan(x) = 2 atan(x / (1 + sqrt(1 + x^2))) until the series is quick."""
    fixed = x.numerator * one // x.denominator
    doublings = 0
    while abs(fixed) > one >> 8:
        root = isqrt((one + fixed * fixed // one) * one)
        fixed = fixed * one // (one + root)
        doublings += 1
    square = fixed * fixed // one
    power, total, n = fixed, 0, 0
    while power:
        term = power // (2 * n + 1)
        total += -term if n % 2 else term
        power = power * square // one if power > 0 else -(-power * square // one)
        n += 1
    return Fraction(total << doublings, one)


def sine_and_cosine(x: Fraction) -> tuple:
    fixed = x.numerator * one // x.denominator
    term, n, sums = one, 0, [0, 0]
    while term:
        sums[n % 2] += -term if n % 4 >= 2 else term
        n += 1
        term = term * fixed // one // n
    return Fraction(sums[1], one), Fraction(sums[0], one)


def logarithm(x: Fraction) -> Fraction:
    """ln x = 2 atanh((x - 1) / (x + 1)), for x near 1."""
    z = (x - 1) / (x + 1)
    fixed = z.numerator * one // z.denominator
    square = fixed * fixed // one
    total, power, n = 0, abs(fixed), 0
    while power:
        total += power // (2 * n + 1)
        power = power * square // one
        n += 1
    return Fraction(2 * total if fixed > 0 else -2 * total, one)


pi = 4 * arctangent(Fraction(1))
ln2 = logarithm(Fraction(2))


def nearest(x: Fraction) -> float:
    return x.numerator / x.denominator  # Python's division of integers is correctly rounded


def pair(x: Fraction) -> tuple:
    """x as the unevaluated sum of two binary64 numbers."""
    high = nearest(x)
    return high, nearest(x - Fraction(high))


def cut(x: Fraction, fraction_bits: int) -> Fraction:
    """x rounded to a multiple of 2^-fraction_bits."""
    return Fraction(round(x * (1 << fraction_bits)), 1 << fraction_bits)


def row(numbers) -> str:
    return "{" + ", ".join(number.hex() for number in numbers) + "}"


def table(declaration: str, rows: list) -> str:
    lines = [f"const {declaration} = {{{{"]
    for start in range(0, len(rows), 2):
        lines.append("    " + " ".join(text + "," for text in rows[start : start + 2]))
    lines.append("}};")
    return "\n".join(lines)


def two_over_pi_words() -> str:
    digits = 64 * 19
    value = int((2 / pi) * (1 << digits))
    words = [0] + [(value >> (digits - 64 * (i + 1))) & (2**64 - 1) for i in range(19)]
    return table("std::array<std::uint64_t, 20> two_over_pi_bits", [f"0x{word:016x}u" for word in words])


def exponential_rows() -> list:
    rows = []
    root = 2 * one  # 2 as fixed point; seven square roots give 2^(1/128)
    for _ in range(7):
        root = isqrt(root * one)
    power = one
    for _ in range(128):
        rows.append(row(pair(Fraction(power, one))))
        power = power * root // one
    return rows


def logarithm_rows() -> list:
    rows = []
    for i in range(129):
        node = Fraction(128 + i, 128)
        if i >= 53:  # 1 + 53/128 is the first node above the square root of 2
            node /= 2
        reciprocal = cut(1 / node, 15)
        value = logarithm(1 / reciprocal)
        high = cut(value, 42)
        rows.append(row((nearest(reciprocal), nearest(high), nearest(value - high))))
    return rows


def sine_rows() -> list:
    rows = []
    for i in range(16, 102):
        sine, cosine = sine_and_cosine(Fraction(i, 128))
        rows.append(row((*pair(sine), *pair(cosine))))
    return rows


def arctangent_rows() -> list:
    return [row(pair(arctangent(Fraction(i, 128)))) for i in range(16, 129)]


def scalar(name: str, value: float) -> str:
    return f"constexpr double {name} = {value.hex()};"


def main() -> None:
    ln2_high = cut(ln2, 42)
    step_high = cut(ln2 / 128, 42)
    half_pi = pair(pi / 2)
    half_pi_first = cut(pi / 2, 35)
    half_pi_second = cut(pi / 2 - half_pi_first, 71)
    header = [
        "// Constants of the numeric kernels. Written by tools/make_kernel_tables.py; do not edit.",
        "#pragma once",
        "",
        "#include <array>",
        "#include <cstdint>",
        "",
        "namespace korvane {",
        "",
        "// pi/2 as the sum of two binary64 numbers.",
        scalar("half_pi_high", half_pi[0]),
        scalar("half_pi_low", half_pi[1]),
        "",
        "// pi/2 once more: multiples of 2^-35 and 2^-71, whose products with 17-bit integers are exact, and the rest.",
        scalar("half_pi_first", nearest(half_pi_first)),
        scalar("half_pi_second", nearest(half_pi_second)),
        scalar("half_pi_rest", nearest(pi / 2 - half_pi_first - half_pi_second)),
        "",
        "// 2/pi.",
        scalar("two_over_pi", nearest(2 / pi)),
        "",
        "// ln 2: a multiple of 2^-42, whose products with binary exponents are exact, and the rest.",
        scalar("ln2_high", nearest(ln2_high)),
        scalar("ln2_low", nearest(ln2 - ln2_high)),
        "",
        "// (ln 2)/128: a multiple of 2^-42, whose products with 18-bit integers are exact, and the rest.",
        scalar("exponential_step_high", nearest(step_high)),
        scalar("exponential_step_low", nearest(ln2 / 128 - step_high)),
        "",
        "// 128/(ln 2).",
        scalar("exponential_steps_per_unit", nearest(128 / ln2)),
        "",
        "// A number as the unevaluated sum of two binary64 numbers.",
        "struct PairRow {",
        "    double high;",
        "    double low;",
        "};",
        "",
        "// A node: reciprocal is about 1/c in 16 bits, high + low its negated logarithm (about log c), high a",
        "// multiple of 2^-42. Near c, log x is high + low plus log(x * reciprocal).",
        "struct LogarithmRow {",
        "    double reciprocal;",
        "    double high;",
        "    double low;",
        "};",
        "",
        "// Sine and cosine of one angle, each as the sum of two binary64 numbers.",
        "struct SineRow {",
        "    double sine_high;",
        "    double sine_low;",
        "    double cosine_high;",
        "    double cosine_low;",
        "};",
        "",
        "// The binary digits of 2/pi after the point, highest word first, behind one word of zeros.",
        "extern const std::array<std::uint64_t, 20> two_over_pi_bits;",
        "",
        "// 2^(i/128) for i from 0 to 127.",
        "extern const std::array<PairRow, 128> exponential_rows;",
        "",
        "// Nodes 1 + i/128 for i from 0 to 128, halved from i = 53 on, so that they lie around 1.",
        "extern const std::array<LogarithmRow, 129> logarithm_rows;",
        "",
        "// Angles i/128 for i from 16 to 101, in order.",
        "extern const std::array<SineRow, 86> sine_rows;",
        "",
        "// atan(i/128) for i from 16 to 128, in order.",
        "extern const std::array<PairRow, 113> arctangent_rows;",
        "",
        "}  // namespace korvane",
        "",
    ]
    source = [
        "// Written by tools/make_kernel_tables.py; do not edit.",
        '#include "numbers/kernel_tables.h"',
        "",
        "namespace korvane {",
        "",
        "// clang-format off",
        two_over_pi_words(),
        "",
        table("std::array<PairRow, 128> exponential_rows", exponential_rows()),
        "",
        table("std::array<LogarithmRow, 129> logarithm_rows", logarithm_rows()),
        "",
        table("std::array<SineRow, 86> sine_rows", sine_rows()),
        "",
        table("std::array<PairRow, 113> arctangent_rows", arctangent_rows()),
        "// clang-format on",
        "",
        "}  // namespace korvane",
        "",
    ]
    files = {"src/numbers/kernel_tables.h": header, "src/numbers/kernel_tables.cpp": source}
    for name, lines in files.items():
        if "--check" in sys.argv:
            with open(name, encoding="ascii") as file:
                if file.read() != "\n".join(lines):
                    sys.exit(f"{name} is not what tools/make_kernel_tables.py computes")
        else:
            with open(name, "w", encoding="ascii") as file:
                file.write("\n".join(lines))


main()

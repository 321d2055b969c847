#!/usr/bin/env python3
"""Gives a WebAssembly module whose addresses have 64 bits a memory and tables with addresses of 32.

    python3 tools/narrow_memory.py MODULE.wasm RESULT.wasm

The interpreter's pointers have 64 bits, as the firmware's records have them. Where a browser's memory has such addresses,
its compiler compares each with the end of the memory before it is used; with 32 bits it leaves that to the processor's
page tables. The memory is smaller than 4 GiB, so no address in it has more: whatever takes one from the stack is given
its lower half. What the module keeps in its memory, and what it hands to its imports, stays as it is.
"""

import pathlib
import sys

I32, I64, F32, F64, V128 = 0x7F, 0x7E, 0x7D, 0x7C, 0x7B
WRAP = b"\xa7"      # i32.wrap_i64
EXTEND_SIGNED = b"\xac"
EXTEND = b"\xad"    # i64.extend_i32_u
CONSTANT = b"\x42"  # i64.const

MEMORY_64 = 0x04    # of limits
TYPES, IMPORTS, FUNCTIONS, TABLES, MEMORIES, ELEMENTS, CODE, DATA = 1, 2, 3, 4, 5, 9, 10, 11

# The types of the values that stores take, by their opcodes.
STORED = {0x36: I32, 0x37: I64, 0x38: F32, 0x39: F64, 0x3A: I32, 0x3B: I32, 0x3C: I64, 0x3D: I64, 0x3E: I64}


class Unknown(Exception):
    """The module has something that is not expected of the compiler."""


def unsigned(value):
    coded = bytearray()
    while True:
        coded.append(value & 0x7F | (0x80 if value > 0x7F else 0))
        value >>= 7
        if value == 0:
            return bytes(coded)


def signed(value):
    coded = bytearray()
    while True:
        byte = value & 0x7F
        value >>= 7
        if value == (-1 if byte & 0x40 else 0):
            coded.append(byte)
            return bytes(coded)
        coded.append(byte | 0x80)


class Reader:
    """Takes a part of a module piece by piece."""

    def __init__(self, data, at=0, end=None):
        self.data, self.at, self.end = data, at, len(data) if end is None else end

    def more(self):
        return self.at < self.end

    def byte(self):
        self.at += 1
        return self.data[self.at - 1]

    def number(self):
        value = shift = 0
        while True:
            byte = self.byte()
            value |= (byte & 0x7F) << shift
            shift += 7
            if byte < 0x80:
                return value

    def signed_number(self):
        start = self.at
        value = self.number()
        bits = 7 * (self.at - start)
        return value - (1 << bits) if value >> bits - 1 else value

    def take(self, count):
        self.at += count
        return self.data[self.at - count:self.at]

    def skip_numbers(self, count):
        for _ in range(count):
            while self.byte() >= 0x80:
                pass


def narrow_limits(reader):
    flags = reader.byte()
    numbers = [reader.number() for _ in range(1 + (flags & 1))]
    return bytes([flags & ~MEMORY_64]) + b"".join(unsigned(number) for number in numbers)


def narrow_constant(value):
    """The lower half of a constant, as one of 32 bits."""
    return b"\x41" + signed((value + (1 << 31)) % (1 << 32) - (1 << 31))


def narrow_offset(reader):
    """Where a segment lies."""
    if reader.take(1) != CONSTANT:
        raise Unknown("a segment without a constant place")
    value = reader.signed_number()
    if reader.byte() != 0x0B:
        raise Unknown("a segment whose place is computed")
    return narrow_constant(value) + b"\x0b"


def narrow_imports(reader):
    made = [unsigned(count := reader.number())]
    for _ in range(count):
        start = reader.at
        for _ in range(2):
            reader.take(reader.number())
        kind = reader.byte()
        if kind in (1, 2):  # a table, a memory
            reader.at += kind == 1
            head = reader.data[start:reader.at]
            made.append(head + narrow_limits(reader))
            continue
        reader.skip_numbers(1)
        reader.at += kind == 3  # whether a global can change
        made.append(reader.data[start:reader.at])
    return b"".join(made)


def narrow_tables(reader):
    made = [unsigned(count := reader.number())]
    for _ in range(count):
        made += [reader.take(1), narrow_limits(reader)]
    return b"".join(made)


def narrow_memories(reader):
    count = reader.number()
    return unsigned(count) + b"".join(narrow_limits(reader) for _ in range(count))


def narrow_elements(reader):
    made = [unsigned(count := reader.number())]
    for _ in range(count):
        if reader.number() != 0:
            raise Unknown("a segment of a table that is not filled at the start")
        made += [unsigned(0), narrow_offset(reader)]
        start = reader.at
        reader.skip_numbers(reader.number())
        made.append(reader.data[start:reader.at])
    return b"".join(made)


def narrow_data(reader):
    made = [unsigned(count := reader.number())]
    for _ in range(count):
        flags = reader.number()
        made.append(unsigned(flags))
        if flags == 0:
            made.append(narrow_offset(reader))
        elif flags != 1:
            raise Unknown("a segment of another memory")
        size = reader.number()
        made += [unsigned(size), reader.take(size)]
    return b"".join(made)


class Function:
    """Copies a function's code, with addresses of 32 bits where it uses them."""

    def __init__(self, reader, parameters):
        self.reader = reader
        self.locals = []  # (how many, type)
        for _ in range(reader.number()):
            count = reader.number()
            self.locals.append((count, reader.byte()))
        self.next_local = parameters + sum(count for count, _ in self.locals)
        self.held = {}  # the locals that hold values meanwhile, by (type, which)
        self.made = []

    def code(self):
        while self.reader.more():
            made = self.instruction()
            # A constant is narrowed here.
            if made.startswith(WRAP) and self.made and self.made[-1].startswith(CONSTANT):
                self.made[-1] = narrow_constant(Reader(self.made[-1], 1).signed_number())
                made = made[1:]
            self.made.append(made)
        groups = [*self.locals, *((1, kind) for kind, _ in self.held)]
        return b"".join([unsigned(len(groups)), *(unsigned(count) + bytes([kind]) for count, kind in groups), *self.made])

    def local(self, kind, which=0):
        if (kind, which) not in self.held:
            self.held[kind, which] = self.next_local
            self.next_local += 1
        return unsigned(self.held[kind, which])

    def wrap_below(self, kind):
        """For an address that has a value of the type above it."""
        place = self.local(kind)
        return b"\x21" + place + WRAP + b"\x20" + place

    def wrap_three(self, second):
        """For a place, something of the type `second`, and a size."""
        place, size = self.local(second, 1), self.local(I64)
        return (b"\x21" + size + b"\x21" + place + WRAP + b"\x20" + place + (WRAP if second == I64 else b"") +
                b"\x20" + size + WRAP)

    def instruction(self):
        """The next one, with what it needs around it."""
        reader, start = self.reader, self.reader.at
        opcode = reader.byte()
        if 0x28 <= opcode <= 0x3E:
            return (WRAP if opcode < 0x36 else self.wrap_below(STORED[opcode])) + self.with_offset(start)
        if opcode == 0xFC:
            return self.numeric_or_bulk(reader.number(), start)
        if opcode == 0xFD:
            return self.vector(reader.number(), start)
        before = after = b""
        if opcode in (0x11, 0x13):  # call_indirect, return_call_indirect
            before = WRAP
            reader.skip_numbers(2)
        elif opcode in (0x3F, 0x40):  # memory.size; memory.grow, whose -1 stays one
            before, after = (b"", EXTEND) if opcode == 0x3F else (WRAP, EXTEND_SIGNED)
            reader.skip_numbers(1)
        else:
            self.pass_operands(opcode)
        return before + reader.data[start:reader.at] + after

    def with_offset(self, start):
        """What has been read of an instruction, with its alignment and its offset, which has room for 64 bits."""
        opcode = self.reader.data[start:self.reader.at]
        return opcode + unsigned(self.reader.number()) + unsigned(self.reader.number())

    def pass_operands(self, opcode):
        reader = self.reader
        if opcode in (0x02, 0x03, 0x04, 0x0C, 0x0D, 0x10, 0x12, 0x20, 0x21, 0x22, 0x23, 0x24, 0x41, 0x42, 0xD0, 0xD2):
            reader.skip_numbers(1)
        elif opcode == 0x0E:  # br_table
            reader.skip_numbers(reader.number() + 1)
        elif opcode == 0x1C:  # select
            reader.skip_numbers(reader.number())
        elif opcode in (0x43, 0x44):
            reader.take(4 if opcode == 0x43 else 8)
        elif not (opcode in (0x00, 0x01, 0x05, 0x0B, 0x0F, 0x1A, 0x1B) or 0x45 <= opcode <= 0xC4):
            raise Unknown(f"the opcode {opcode:#x}")

    def numeric_or_bulk(self, opcode, start):
        before = b""
        if opcode in (10, 11):  # memory.copy, memory.fill
            before = self.wrap_three(I64 if opcode == 10 else I32)
            self.reader.skip_numbers(2 if opcode == 10 else 1)
        elif opcode > 7:
            raise Unknown(f"the opcode 0xfc {opcode}")
        return before + self.reader.data[start:self.reader.at]

    def vector(self, opcode, start):
        reader = self.reader
        if opcode <= 10 or opcode in (92, 93):
            return WRAP + self.with_offset(start)
        if opcode == 11:
            return self.wrap_below(V128) + self.with_offset(start)
        if 84 <= opcode <= 91:  # of a lane
            return self.wrap_below(V128) + self.with_offset(start) + reader.take(1)
        if opcode in (12, 13):  # v128.const, i8x16.shuffle
            reader.take(16)
        elif 21 <= opcode <= 34:  # of a lane, without memory
            reader.take(1)
        return reader.data[start:reader.at]


def parameter_counts(reader):
    counts = []
    for _ in range(reader.number()):
        if reader.byte() != 0x60:
            raise Unknown("a type that is not a function's")
        counts.append(reader.number())
        reader.take(counts[-1])
        reader.take(reader.number())
    return counts


def narrow_code(reader, types, parameters):
    made = [unsigned(count := reader.number())]
    for index in range(count):
        size = reader.number()
        code = Function(Reader(reader.data, reader.at, reader.at + size), parameters[types[index]]).code()
        reader.at += size
        made += [unsigned(len(code)), code]
    return b"".join(made)


def narrow(module):
    whole = Reader(module, 8)
    made = [module[:8]]
    parameters, types = [], []
    plain = {IMPORTS: narrow_imports, TABLES: narrow_tables, MEMORIES: narrow_memories, ELEMENTS: narrow_elements,
             DATA: narrow_data}
    while whole.more():
        section, size = whole.byte(), whole.number()
        reader = Reader(module, whole.at, whole.at + size)
        content = whole.take(size)
        if section == TYPES:
            parameters = parameter_counts(reader)
        elif section == FUNCTIONS:
            types = [reader.number() for _ in range(reader.number())]
        elif section == CODE:
            content = narrow_code(reader, types, parameters)
        elif section in plain:
            content = plain[section](reader)
        made += [bytes([section]), unsigned(len(content)), content]
    return b"".join(made)


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.split("\n\n")[1].strip())
    source, result = map(pathlib.Path, sys.argv[1:])
    try:
        result.write_bytes(narrow(source.read_bytes()))
    except Unknown as reason:
        sys.exit(f"{source} has what nobody expects there: {reason}")


if __name__ == "__main__":
    main()

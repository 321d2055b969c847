#include "native/assembler.h"

namespace korvane::native {
namespace {

constexpr std::uint8_t rex = 0x40;
constexpr std::uint8_t rex_w = 8;
constexpr std::uint8_t rex_r = 4;
constexpr std::uint8_t rex_x = 2;
constexpr std::uint8_t rex_b = 1;

constexpr bool fits_byte(std::int64_t number) {
    return number == static_cast<std::int8_t>(number);
}

}  // namespace

void Assembler::put(std::uint8_t value) {
    if (used == room.size()) {
        overrun = true;
        return;
    }
    room[used++] = static_cast<std::byte>(value);
}

void Assembler::put_32(std::uint32_t value) {
    for (int i = 0; i < 4; ++i)
        put(static_cast<std::uint8_t>(value >> 8 * i));
}

void Assembler::put_64(std::uint64_t value) {
    put_32(static_cast<std::uint32_t>(value));
    put_32(static_cast<std::uint32_t>(value >> 32));
}

void Assembler::align(std::size_t boundary) {
    constexpr std::uint8_t breakpoint = 0xCC;
    while (used % boundary != 0 && !overrun)
        put(breakpoint);
}

std::uint32_t Assembler::read_32(std::size_t position) const {
    std::uint32_t value;
    __builtin_memcpy(&value, room.data() + position, sizeof value);
    return value;
}

void Assembler::write_32(std::size_t position, std::uint32_t value) {
    __builtin_memcpy(room.data() + position, &value, sizeof value);
}

// The bytes that say what the second operand is, behind the opcode.
void Assembler::put_place(unsigned field, Operand operand) {
    const unsigned low = operand.number() & 7U;
    const unsigned reg = (field & 7U) << 3;
    if (operand.is_register()) {
        put(static_cast<std::uint8_t>(0xC0 | reg | low));
        return;
    }
    // With rbp or r13 as the base the shortest form means something else.
    const bool none = operand.displacement() == 0 && low != 5;
    const bool short_one = fits_byte(operand.displacement());
    const unsigned mode = none ? 0 : short_one ? 0x40 : 0x80;
    if (operand.index() != Operand::no_index) {
        put(static_cast<std::uint8_t>(mode | reg | 4));
        put(static_cast<std::uint8_t>(operand.shift() << 6 | (operand.index() & 7U) << 3 | low));
    } else {
        put(static_cast<std::uint8_t>(mode | reg | low));
        if (low == 4) put(0x24);  // rsp or r12: "no index" has to be said
    }
    if (none) return;
    if (short_one)
        put(static_cast<std::uint8_t>(operand.displacement()));
    else
        put_32(static_cast<std::uint32_t>(operand.displacement()));
}

void Assembler::encode(std::uint32_t operation, unsigned field, Operand operand) {
    constexpr std::uint8_t prefixes[] = {0, 0x66, 0xF2, 0xF3};
    const std::uint8_t prefix = prefixes[operation >> 8 & 3];
    if (prefix != 0) put(prefix);
    unsigned bits = 0;
    if ((operation & wide) != 0) bits |= rex_w;
    if (field >= 8) bits |= rex_r;
    const bool has_index = !operand.is_register() && operand.index() != Operand::no_index;
    if (has_index && operand.index() >= 8) bits |= rex_x;
    if (operand.number() >= 8) bits |= rex_b;
    // Without this byte the low bytes of rsp to rdi would be the second bytes of rax to rbx.
    const bool is_byte = (operation & low_byte) != 0 && operand.is_register() && operand.number() >= 4;
    if (bits != 0 || is_byte) put(static_cast<std::uint8_t>(rex | bits));
    if ((operation & escape_0f) != 0) put(0x0F);
    put(static_cast<std::uint8_t>(operation));
    put_place(field, operand);
}

void Assembler::emit(std::uint32_t with_first, Operand second) {
    encode(with_first & 0xFFFF, with_first >> 16, second);
}

void Assembler::emit_registers(std::uint32_t packed_form) {
    encode(packed_form & 0xFFFF, packed_form >> 16 & 15, static_cast<Register>(packed_form >> 20 & 15));
}

void Assembler::emit(WithNumber operation, Operand operand, std::int32_t number) {
    const auto word = static_cast<std::uint32_t>(operation);
    const bool short_one = fits_byte(number);
    encode((word & wide) | (short_one ? 0x83 : 0x81), word >> 16, operand);
    if (short_one)
        put(static_cast<std::uint8_t>(number));
    else
        put_32(static_cast<std::uint32_t>(number));
}

void Assembler::shift(Shift direction, Register which, int bits) {
    encode(wide | 0xC1, static_cast<unsigned>(direction), which);
    put(static_cast<std::uint8_t>(bits));
}

void Assembler::multiply(Register target, Operand operand, std::int32_t number) {
    const bool short_one = fits_byte(number);
    encode(wide | (short_one ? 0x6B : 0x69), static_cast<unsigned>(target), operand);
    if (short_one)
        put(static_cast<std::uint8_t>(number));
    else
        put_32(static_cast<std::uint32_t>(number));
}

void Assembler::set_byte(Condition condition, Register target) {
    encode(escape_0f | low_byte | (0x90U + static_cast<unsigned>(condition)), 0, target);
}

void Assembler::sign_extend_rax() {
    put(rex | rex_w);
    put(0x99);
}

void Assembler::load_number(Register target, std::uint64_t number) {
    const auto which = static_cast<unsigned>(target);
    const bool is_short = number >> 32 == 0;
    const unsigned bits = (is_short ? 0U : rex_w) | (which >= 8 ? rex_b : 0U);
    if (bits != 0) put(static_cast<std::uint8_t>(rex | bits));
    put(static_cast<std::uint8_t>(0xB8 | (which & 7)));
    if (is_short)
        put_32(static_cast<std::uint32_t>(number));
    else
        put_64(number);
}

void Assembler::store_number_8(Operand place, std::uint8_t number) {
    encode(0xC6, 0, place);
    put(number);
}

void Assembler::store_number_32(Operand place, std::uint32_t number) {
    encode(0xC7, 0, place);
    put_32(number);
}

void Assembler::store_number_64(Operand place, std::int32_t number) {
    encode(wide | 0xC7, 0, place);
    put_32(static_cast<std::uint32_t>(number));
}

// ---- Jumps ----------------------------------------------------------------------------------------

// The four bytes that lead to a label, counted from behind them. Until it is bound they lead to the jump
// before.
void Assembler::put_distance(Label& label) {
    const auto here = static_cast<std::int32_t>(used);
    if (label.is_bound()) {
        put_32(static_cast<std::uint32_t>(~label.where - (here + 4)));
        return;
    }
    put_32(static_cast<std::uint32_t>(label.where));
    if (!overrun) label.where = here;
}

void Assembler::load_address(Register target, Label& label) {
    const auto which = static_cast<unsigned>(target);
    put(static_cast<std::uint8_t>(rex | rex_w | (which >= 8 ? rex_r : 0U)));
    put(0x8D);
    put(static_cast<std::uint8_t>((which & 7) << 3 | 5));
    put_distance(label);
}

void Assembler::call(Label& label) {
    put(0xE8);
    put_distance(label);
}

void Assembler::call(const void* function) {
    const auto address = reinterpret_cast<std::intptr_t>(function);
    const std::intptr_t distance = address - reinterpret_cast<std::intptr_t>(room.data() + used + 5);
    if (distance == static_cast<std::int32_t>(distance)) {
        put(0xE8);
        put_32(static_cast<std::uint32_t>(distance));
        return;
    }
    load_number(Register::rax, static_cast<std::uint64_t>(address));
    emit(Unary::call, Register::rax);
}

void Assembler::jump(Label& label) {
    if (label.is_bound()) {
        const std::int64_t distance = ~label.where - (static_cast<std::int64_t>(used) + 2);
        if (fits_byte(distance)) {
            put(0xEB);
            put(static_cast<std::uint8_t>(distance));
            return;
        }
    }
    put(0xE9);
    put_distance(label);
}

void Assembler::jump_if(Condition condition, Label& label) {
    const auto code = static_cast<unsigned>(condition);
    if (label.is_bound()) {
        const std::int64_t distance = ~label.where - (static_cast<std::int64_t>(used) + 2);
        if (fits_byte(distance)) {
            put(static_cast<std::uint8_t>(0x70 | code));
            put(static_cast<std::uint8_t>(distance));
            return;
        }
    }
    put(0x0F);
    put(static_cast<std::uint8_t>(0x80 | code));
    put_distance(label);
}

void Assembler::bind(Label& label) {
    const auto here = static_cast<std::int32_t>(used);
    for (std::int32_t jump = label.where; jump != 0 && !overrun;) {
        const auto place = static_cast<std::size_t>(jump);
        jump = static_cast<std::int32_t>(read_32(place));
        write_32(place, static_cast<std::uint32_t>(here - (static_cast<std::int32_t>(place) + 4)));
    }
    label.where = ~here;
}

}  // namespace korvane::native

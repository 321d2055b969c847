// The encoder of machine code: the few dozen instructions of x86-64 that fragments are made of.
//
// An operation says what is the same in all its forms: prefix, opcode, and whether it works on 64 bits. Its
// first operand is always a register, the second one a register or a place in memory (Operand). What does not
// fit in the room that was given is not written; full() tells, and whoever made the code throws it away.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace korvane::native {

// General registers; xmm registers are numbered the same way.
enum class Register : std::uint8_t {
    rax,
    rcx,
    rdx,
    rbx,
    rsp,
    rbp,
    rsi,
    rdi,
    r8,
    r9,
    r10,
    r11,
    r12,
    r13,
    r14,
    r15
};
enum class Vector : std::uint8_t {
    xmm0,
    xmm1,
    xmm2,
    xmm3,
    xmm4,
    xmm5,
    xmm6,
    xmm7,
    xmm8,
    xmm9,
    xmm10,
    xmm11,
    xmm12,
    xmm13,
    xmm14,
    xmm15
};

// The second operand of an instruction: a register, or a place in memory. It is one word, which for a
// register is no more than its number, because hundreds of them are handed along.
class Operand {
  public:
    static constexpr unsigned no_index = 0xFF;

    constexpr Operand(Register which) : bits(static_cast<std::uint64_t>(which)) {}
    constexpr Operand(Vector which) : bits(static_cast<std::uint64_t>(which)) {}
    // A place at a register and a distance, perhaps with an index, which counts 1 << shift times.
    constexpr Operand(Register base, std::int32_t displacement, unsigned index = no_index, unsigned shift = 0)
        : bits(static_cast<std::uint64_t>(base) | std::uint64_t{index} << 8 | std::uint64_t{shift} << 16 |
               memory | std::uint64_t{static_cast<std::uint32_t>(displacement)} << 32) {}

    constexpr bool is_register() const { return (bits & memory) == 0; }
    constexpr bool is_register(Vector which) const { return bits == static_cast<std::uint64_t>(which); }
    constexpr unsigned number() const { return bits & 0xFF; }  // of the register; of a place, its base
    constexpr unsigned index() const { return bits >> 8 & 0xFF; }
    constexpr unsigned shift() const { return bits >> 16 & 0xFF; }
    constexpr std::int32_t displacement() const { return static_cast<std::int32_t>(bits >> 32); }

    // The same place with an index.
    constexpr Operand with_index(Register index, unsigned shift) const {
        return {static_cast<Register>(number()), displacement(), static_cast<unsigned>(index), shift};
    }

    // The same place some bytes farther on.
    constexpr Operand behind(std::int32_t bytes) const {
        return {static_cast<Register>(number()), displacement() + bytes, index(), shift()};
    }

  private:
    static constexpr std::uint64_t memory = 1U << 24;

    std::uint64_t bits;
};

// A place in memory: at a register and a distance, perhaps with an index (any register but rsp).
constexpr Operand at(Register base, std::int32_t displacement) {
    return {base, displacement};
}
constexpr Operand at(Register base, Register index, int shift, std::int32_t displacement) {
    return at(base, displacement).with_index(index, static_cast<unsigned>(shift));
}

// How an operation is encoded: the opcode in the low byte, then these.
inline constexpr std::uint32_t prefix_66 = 1U << 8;
inline constexpr std::uint32_t prefix_f2 = 2U << 8;
inline constexpr std::uint32_t prefix_f3 = 3U << 8;
inline constexpr std::uint32_t escape_0f = 1U << 10;
inline constexpr std::uint32_t wide = 1U << 11;      // 64 bits
inline constexpr std::uint32_t low_byte = 1U << 12;  // the register is the low byte of one
inline constexpr std::uint32_t real = prefix_f2 | escape_0f;
inline constexpr std::uint32_t narrow = prefix_f3 | escape_0f;
inline constexpr std::uint32_t packed = prefix_66 | escape_0f;

// An operation on a register and an operand. The names are those of the assembler where it has one for the
// form; a store has the register as its source.
enum class Operation : std::uint32_t {
    // Doubles and floats.
    movsd = real | 0x10,  // load; between registers movaps is meant
    movsd_store = real | 0x11,
    movss = narrow | 0x10,
    movss_store = narrow | 0x11,
    movaps = escape_0f | 0x28,
    addsd = real | 0x58,
    mulsd = real | 0x59,
    subsd = real | 0x5C,
    divsd = real | 0x5E,
    sqrtsd = real | 0x51,
    ucomisd = packed | 0x2E,
    // All 128 bits, whatever they hold: those forms are the shortest.
    andps = escape_0f | 0x54,
    orps = escape_0f | 0x56,
    xorps = escape_0f | 0x57,
    cvtsd2ss = real | 0x5A,
    cvtss2sd = narrow | 0x5A,
    cvtsi2sd = real | wide | 0x2A,    // from 64 bits
    cvttsd2si = real | wide | 0x2C,   // to 64 bits
    movq_out = packed | wide | 0x7E,  // the xmm register is the first operand, the general one the second
    movq_in = packed | wide | 0x6E,

    // Integers of 64 bits.
    mov = wide | 0x8B,
    mov_store = wide | 0x89,
    add = wide | 0x03,
    sub = wide | 0x2B,
    cmp = wide | 0x3B,
    and_ = wide | 0x23,
    or_ = wide | 0x0B,
    xor_ = wide | 0x33,
    test = wide | 0x85,
    imul = wide | escape_0f | 0xAF,
    lea = wide | 0x8D,
    movsx_16 = wide | escape_0f | 0xBF,
    movsx_32 = wide | 0x63,

    // Integers of fewer bits.
    mov_32 = 0x8B,
    mov_store_32 = 0x89,
    mov_store_16 = prefix_66 | 0x89,
    cmp_32 = 0x3B,
    movzx_8 = escape_0f | low_byte | 0xB6,
};

// An operation on one operand; `extension` is what stands in the place of a register.
enum class Unary : std::uint32_t {
    neg = wide | 0xF7 | 3U << 16,
    not_ = wide | 0xF7 | 2U << 16,
    idiv = wide | 0xF7 | 7U << 16,
    div_32 = 0xF7 | 6U << 16,
    inc_32 = 0xFF,
    dec_32 = 0xFF | 1U << 16,
    call = 0xFF | 2U << 16,
    jmp = 0xFF | 4U << 16,
};

// An operation on an operand and a number that is extended to 64 bits.
enum class WithNumber : std::uint32_t {
    add = wide | 0U << 16,
    or_ = wide | 1U << 16,
    and_ = wide | 4U << 16,
    sub = wide | 5U << 16,
    xor_ = wide | 6U << 16,
    cmp = wide | 7U << 16,
    cmp_32 = 7U << 16,
};

enum class Shift : std::uint8_t { left = 4, right = 5 };

// What a conditional jump looks at.
enum class Condition : std::uint8_t {
    overflow = 0,
    below = 2,
    not_below = 3,
    equal = 4,
    not_equal = 5,
    not_above = 6,
    above = 7,
    not_sign = 9,
    parity = 10,
    not_parity = 11,
    less = 12,
    not_less = 13,
    not_greater = 14,
    greater = 15,
};
constexpr Condition opposite(Condition condition) {
    return static_cast<Condition>(static_cast<int>(condition) ^ 1);
}

// A place in the code that jumps lead to, before or after it is known.
class Label {
  public:
    bool is_used() const { return where != 0; }
    std::size_t position() const { return ~static_cast<std::uint32_t>(where); }

  private:
    friend class Assembler;
    bool is_bound() const { return where < 0; }

    // Its position, all bits turned over. Until that is known the place of the last jump's distance, where
    // the one before that is kept; 0 at the first one, which cannot be there.
    std::int32_t where = 0;
};

class Assembler {
  public:
    explicit constexpr Assembler(std::span<std::byte> all) : room(all) {}

    std::size_t position() const { return used; }
    bool full() const { return overrun; }

    void emit(Operation operation, Register first, Operand second) {
        emit(with_register(operation, first), second);
    }
    void emit(Operation operation, Vector first, Operand second) {
        emit(with_register(operation, first), second);
    }

    // The operation and its first operand as one number, which keeps calls short where both are known
    // beforehand.
    template <typename First>
    static constexpr std::uint32_t with_register(Operation operation, First first) {
        return static_cast<std::uint32_t>(operation) | static_cast<std::uint32_t>(first) << 16;
    }
    void emit(std::uint32_t with_first, Operand second);

    // Between registers.
    template <typename First, typename Second>
    void emit(Operation operation, First first,
              Second second) requires(std::is_enum_v<First>&& std::is_enum_v<Second>) {
        emit_registers(with_register(operation, first) | static_cast<std::uint32_t>(second) << 20);
    }
    void emit(Unary operation, Operand operand) { emit(static_cast<std::uint32_t>(operation), operand); }
    void emit(Unary operation, Register which) {
        emit_registers(static_cast<std::uint32_t>(operation) | static_cast<std::uint32_t>(which) << 20);
    }
    void emit(WithNumber operation, Operand operand, std::int32_t number);
    void shift(Shift direction, Register which, int bits);
    void multiply(Register target, Operand operand, std::int32_t number);
    void set_byte(Condition condition, Register target);  // its low byte to 1 or 0
    void test_byte(Register which) { encode(low_byte | 0x84, static_cast<unsigned>(which), which); }
    void sign_extend_rax();  // cqo: into rdx
    void load_number(Register target, std::uint64_t number);
    void store_number_8(Operand place, std::uint8_t number);
    void store_number_32(Operand place, std::uint32_t number);
    void store_number_64(Operand place, std::int32_t number);  // which is extended
    void load_address(Register target, Label& label);

    void call(Label& label);
    void return_() { put(0xC3); }
    // Calls a function: directly, which needs no prediction, where the code lies near enough to it. Else its
    // address goes through rax.
    void call(const void* function);
    void jump(Label& label);
    void jump_if(Condition condition, Label& label);
    void bind(Label& label);

    // Data in the code.
    void put_64(std::uint64_t value);
    void align(std::size_t boundary);  // with what is never executed

  private:
    void emit_registers(std::uint32_t packed);
    void put(std::uint8_t value);
    void put_32(std::uint32_t value);
    void put_place(unsigned field, Operand operand);
    void encode(std::uint32_t operation, unsigned field, Operand operand);
    void put_distance(Label& label);
    std::uint32_t read_32(std::size_t position) const;
    void write_32(std::size_t position, std::uint32_t value);

    std::span<std::byte> room;
    std::size_t used = 0;
    bool overrun = false;
};

}  // namespace korvane::native

// The floating variables that a region keeps in registers beside their memory: those that are used most in
// the innermost loops. Those of them that are subscripts more often than they are written have a register for
// the whole number beside it, so that it need not be found at each use.
#pragma once

#include <array>
#include <cstddef>

#include "native/assembler.h"
#include "native/region.h"

namespace korvane::native {

struct KeptVariable {
    const void* storage;
    Type type;  // DOUBLE, or SINGLE, which is kept as the same number in a double
    Vector where;
    // The whole number that it is, or `no_number` when it is none. no_register: it is not wanted.
    Register whole;

    static constexpr Register no_register = Register::rax;
    bool is_subscript() const { return whole != no_register; }
};

// Those that expressions may use: rcx, rsi, rdi, r8 to r11.
inline constexpr int most_whole_registers = 7;

// No array has an element of this number.
inline constexpr std::uint64_t no_number = std::uint64_t{1} << 63;

class VariableRegisters {
  public:
    // Decides by what the rehearsals have told.
    void choose(Region& region);
    void clear() { used = 0; }

    const KeptVariable* find(const void* storage) const;
    std::span<const KeptVariable> all() const { return {kept.data(), used}; }

  private:
    static constexpr std::size_t most = 7;  // xmm7 to xmm13

    std::array<KeptVariable, most> kept;
    std::size_t used = 0;
};

}  // namespace korvane::native

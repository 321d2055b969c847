// The floating variables that a region keeps in registers beside their memory: those that are used most in
// the innermost loops.
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
};

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

// What the language has no portable form for, each in one place: the instructions of the processor, which are
// those of x86-64 in the image, and what stands in for them where the same sources are compiled to
// WebAssembly.
#pragma once

#include <cstdint>

// Marks a return whose call has to be a jump, for a compiler that does not see to that unasked.
#ifdef __clang__
#define KORVANE_JUMP [[clang::musttail]]
#else
#define KORVANE_JUMP
#endif

namespace korvane {

using ByteVector __attribute__((vector_size(16))) = char;
using WordVector __attribute__((vector_size(16))) = std::int32_t;

#ifdef __wasm__

// What the machine around the module supplies.
extern "C" {
__attribute__((import_module("machine"), import_name("ticks"))) double machine_ticks();
__attribute__((import_module("machine"), import_name("halt"))) void machine_halt();
}

inline std::uint64_t processor_ticks() {
    return static_cast<std::uint64_t>(machine_ticks());
}

inline void processor_pause() {}

[[noreturn]] inline void halt_processor() {
    for (;;)
        machine_halt();
}

inline double processor_sqrt(double x) {
    return __builtin_sqrt(x);
}

// The product of integers; true when it does not fit. To multiply with 128 bits takes long there. The product
// of both as doubles is off by some 2^-52 of it, and so tells almost always that it fits.
inline bool multiply_overflows(std::int64_t left, std::int64_t right, std::int64_t& product) {
    constexpr double certain = 9.2e18;  // below 2^63
    const double estimate = static_cast<double>(left) * static_cast<double>(right);
    if (__builtin_expect(__builtin_fabs(estimate) < certain, true)) {
        product =
            static_cast<std::int64_t>(static_cast<std::uint64_t>(left) * static_cast<std::uint64_t>(right));
        return false;
    }
    return __builtin_mul_overflow(left, right, &product);
}

inline std::uint32_t byte_bits(ByteVector comparison) {
    return __builtin_wasm_bitmask_i8x16(
        reinterpret_cast<signed char __attribute__((vector_size(16)))>(comparison));
}

inline std::uint32_t word_bits(WordVector comparison) {
    return __builtin_wasm_bitmask_i32x4(comparison);
}

// An access beyond the module's memory would end the machine. As on a PC, there is nothing there: reads give
// ones, writes are lost.
inline bool is_addressable(std::uint64_t address) {
    constexpr std::uint64_t page_bytes = 65536;
    return address < __builtin_wasm_memory_size(0) * page_bytes;
}

#else

// The time-stamp counter.
inline std::uint64_t processor_ticks() {
    return __builtin_ia32_rdtsc();
}

// Between two looks at something that will change.
inline void processor_pause() {
    __builtin_ia32_pause();
}

// Nothing happens any more.
[[noreturn]] inline void halt_processor() {
    for (;;)
        asm volatile("pause");
}

// Correctly rounded; a NaN for negative numbers.
inline double processor_sqrt(double x) {
    double root;
    asm("sqrtsd %1, %0" : "=x"(root) : "x"(x));
    return root;
}

// The product of integers; true when it does not fit.
inline bool multiply_overflows(std::int64_t left, std::int64_t right, std::int64_t& product) {
    return __builtin_mul_overflow(left, right, &product);
}

// The result of a comparison of bytes or words, whose lanes are all ones or 0, as bits: bit i is lane i's.
inline std::uint32_t byte_bits(ByteVector comparison) {
    return static_cast<std::uint32_t>(__builtin_ia32_pmovmskb128(comparison));
}
inline std::uint32_t word_bits(WordVector comparison) {
    using Floats __attribute__((vector_size(16))) = float;
    return static_cast<std::uint32_t>(__builtin_ia32_movmskps(reinterpret_cast<Floats>(comparison)));
}

// What the processor tells about its address translation. The registers can be read at the highest privilege
// only; anywhere else reading them is a fault.
inline bool has_highest_privilege() {
    std::uint64_t code_segment;
    asm("mov %%cs, %0" : "=r"(code_segment));
    return (code_segment & 3) == 0;
}
inline std::uint64_t processor_control_3() {
    std::uint64_t value;
    asm volatile("mov %%cr3, %0" : "=r"(value));
    return value;
}
inline std::uint64_t processor_control_4() {
    std::uint64_t value;
    asm volatile("mov %%cr4, %0" : "=r"(value));
    return value;
}

// Whether an address may be touched at all without ending everything: nobody knows, and that is deliberate.
constexpr bool is_addressable(std::uint64_t) {
    return true;
}

#endif

}  // namespace korvane

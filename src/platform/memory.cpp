// The memory functions that the compiler calls behind the program's back. Blocks of 16 bytes and more go
// through vector registers; string instructions would be as fast on some processors and slow on others.
#ifdef KORVANE_FREESTANDING

#include <cstddef>
#include <cstdint>

namespace {

typedef long long Vector __attribute__((vector_size(16), aligned(1), may_alias));
typedef char Bytes __attribute__((vector_size(16)));
typedef std::uint64_t Word __attribute__((aligned(1), may_alias));
constexpr std::size_t vector_size = sizeof(Vector);
constexpr std::size_t block_size = 4 * vector_size;

template <typename Unit>
inline Unit unit_at(const std::uint8_t* address) {
    Unit unit;
    __builtin_memcpy(&unit, address, sizeof unit);
    return unit;
}

// A block of one to two units: its first and its last one, which may overlap.
// Both are read before either is written.
template <typename Unit>
inline void copy_ends(std::uint8_t* to, const std::uint8_t* from, std::size_t count) {
    const Unit first = unit_at<Unit>(from);
    const Unit last = unit_at<Unit>(from + count - sizeof(Unit));
    __builtin_memcpy(to, &first, sizeof first);
    __builtin_memcpy(to + count - sizeof(Unit), &last, sizeof last);
}

// Up to 16 bytes.
inline void copy_few(std::uint8_t* to, const std::uint8_t* from, std::size_t count) {
    if (count >= 8) return copy_ends<std::uint64_t>(to, from, count);
    if (count >= 4) return copy_ends<std::uint32_t>(to, from, count);
    if (count == 0) return;
    const std::uint8_t middle = from[count / 2];
    copy_ends<std::uint8_t>(to, from, count);
    to[count / 2] = middle;
}

}  // namespace

// The compiler must not recognise these loops and turn them into calls of the functions they implement.
#define NO_LOOP_IDIOMS __attribute__((optimize("no-tree-loop-distribute-patterns")))

extern "C" {

// The last vector is read first and written last, so that a copy to a place that begins before its source is
// right even where the two overlap.
NO_LOOP_IDIOMS void* memcpy(void* destination, const void* source, std::size_t count) {
    auto* to = static_cast<std::uint8_t*>(destination);
    auto* from = static_cast<const std::uint8_t*>(source);
    if (count <= vector_size) {
        copy_few(to, from, count);
        return destination;
    }
    std::uint8_t* const to_last = to + count - vector_size;
    const Vector last = *reinterpret_cast<const Vector*>(from + count - vector_size);
    while (count > block_size) {
        const Vector a = reinterpret_cast<const Vector*>(from)[0];
        const Vector b = reinterpret_cast<const Vector*>(from)[1];
        const Vector c = reinterpret_cast<const Vector*>(from)[2];
        const Vector d = reinterpret_cast<const Vector*>(from)[3];
        reinterpret_cast<Vector*>(to)[0] = a;
        reinterpret_cast<Vector*>(to)[1] = b;
        reinterpret_cast<Vector*>(to)[2] = c;
        reinterpret_cast<Vector*>(to)[3] = d;
        to += block_size;
        from += block_size;
        count -= block_size;
    }
    while (to < to_last) {
        *reinterpret_cast<Vector*>(to) = *reinterpret_cast<const Vector*>(from);
        to += vector_size;
        from += vector_size;
    }
    *reinterpret_cast<Vector*>(to_last) = last;
    return destination;
}

NO_LOOP_IDIOMS void* memmove(void* destination, const void* source, std::size_t count) {
    auto* to = static_cast<std::uint8_t*>(destination);
    auto* from = static_cast<const std::uint8_t*>(source);
    // Each block is read whole before it is written,
    // so a copy upward in memory is safe for a lower destination.
    if (to <= from || to >= from + count) return memcpy(destination, source, count);
    to += count;
    from += count;
    while (count >= vector_size) {
        to -= vector_size;
        from -= vector_size;
        *reinterpret_cast<Vector*>(to) = *reinterpret_cast<const Vector*>(from);
        count -= vector_size;
    }
    while (count-- != 0)
        *--to = *--from;
    return destination;
}

NO_LOOP_IDIOMS void* memset(void* destination, int byte, std::size_t count) {
    auto* to = static_cast<std::uint8_t*>(destination);
    const auto pattern = static_cast<long long>(0x0101010101010101ULL * static_cast<std::uint8_t>(byte));
    const Vector filler = {pattern, pattern};
    while (count >= vector_size) {
        *reinterpret_cast<Vector*>(to) = filler;
        to += vector_size;
        count -= vector_size;
    }
    while (count-- != 0)
        *to++ = static_cast<std::uint8_t>(byte);
    return destination;
}

NO_LOOP_IDIOMS int memcmp(const void* left, const void* right, std::size_t count) {
    auto* a = static_cast<const std::uint8_t*>(left);
    auto* b = static_cast<const std::uint8_t*>(right);
    for (; count >= sizeof(Word); count -= sizeof(Word), a += sizeof(Word), b += sizeof(Word)) {
        const Word x = *reinterpret_cast<const Word*>(a);
        const Word y = *reinterpret_cast<const Word*>(b);
        // The first difference in memory is the most significant one with the bytes in reverse.
        if (x != y) return __builtin_bswap64(x) < __builtin_bswap64(y) ? -1 : 1;
    }
    for (; count != 0; --count, ++a, ++b)
        if (*a != *b) return *a < *b ? -1 : 1;
    return 0;
}

NO_LOOP_IDIOMS void* memchr(const void* bytes, int value, std::size_t count) {
    auto* at = static_cast<const std::uint8_t*>(bytes);
    const auto wanted = static_cast<std::uint8_t>(value);
    const Bytes pattern = Bytes{} + static_cast<char>(wanted);
    for (; count >= vector_size; count -= vector_size, at += vector_size) {
        const int found = __builtin_ia32_pmovmskb128(unit_at<Bytes>(at) == pattern);
        if (found != 0) return const_cast<std::uint8_t*>(at) + __builtin_ctz(static_cast<unsigned>(found));
    }
    for (; count != 0; --count, ++at)
        if (*at == wanted) return const_cast<std::uint8_t*>(at);
    return nullptr;
}

NO_LOOP_IDIOMS std::size_t strlen(const char* text) {
    const char* end = text;
    while (*end != 0)
        ++end;
    return static_cast<std::size_t>(end - text);
}

}  // extern "C"

// std::string_view calls this when asked for a part beyond its end, which is a mistake of ours; there is
// nobody to throw to.
namespace std {
[[noreturn]] void __throw_out_of_range_fmt(const char*, ...) {
    __builtin_trap();
}
}  // namespace std

#endif

#include "help/text_packing.h"

namespace korvane {
namespace {

constexpr std::size_t all_fragments_size() {
    std::size_t size = 0;
    for (const std::string_view fragment : text_fragments)
        size += fragment.size() + 1;
    return size;
}

// The fragments one behind the other, each with a terminating zero.
constexpr auto all_fragments = [] {
    std::array<char, all_fragments_size()> bytes{};
    std::size_t size = 0;
    for (const std::string_view fragment : text_fragments) {
        for (const char character : fragment)
            bytes[size++] = character;
        bytes[size++] = 0;
    }
    return bytes;
}();

const char* find_fragment(unsigned number) {
    const char* at = all_fragments.data();
    for (; number != 0; ++at)
        if (*at == 0) --number;
    return at;
}

}  // namespace

std::size_t unpack_text(const char*& packed, char* place) {
    const char* const start = place;
    while (const auto byte = static_cast<std::uint8_t>(*packed++)) {
        if (byte < first_fragment_code) {
            *place++ = static_cast<char>(byte);
            continue;
        }
        for (const char* at = find_fragment(byte - unsigned{first_fragment_code}); *at != 0; ++at)
            *place++ = *at;
    }
    return static_cast<std::size_t>(place - start);
}

}  // namespace korvane

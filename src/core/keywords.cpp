#include "core/keywords.h"

namespace korvane {
namespace {

constexpr std::uint8_t first_keyword_code = KW_MOD;

constexpr auto names_by_code = [] {
    std::array<std::string_view, 256> names{};
    for (const KeywordEntry& entry : keyword_table)
        names[entry.code] = entry.name;
    return names;
}();

}  // namespace

std::uint8_t find_keyword(std::string_view word) {
    for (const KeywordEntry& entry : keyword_table) {
        if (entry.name == word) return entry.code;
    }
    return 0;
}

std::string_view keyword_name(std::uint8_t code) {
    return code < first_keyword_code ? std::string_view{} : names_by_code[code];
}

}  // namespace korvane

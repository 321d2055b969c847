#include "core/keywords.h"

namespace korvane {
std::uint8_t find_keyword(std::string_view word) {
    for (const KeywordEntry& entry : keyword_table) {
        if (entry.name == word) return entry.code;
    }
    return 0;
}

std::string_view keyword_name(std::uint8_t code) {
    for (const KeywordEntry& entry : keyword_table) {
        if (entry.code == code) return entry.name;
    }
    return {};
}

}  // namespace korvane

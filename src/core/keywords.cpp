#include "core/keywords.h"

namespace korvane {

namespace {

// The keywords in chains of equal first letters, so that a name is compared with a handful of them. Links are
// indices in the keyword table plus one; 0 ends a chain.
struct LetterChains {
    std::array<std::uint8_t, 26> first{};  // by letter
    std::array<std::uint8_t, keyword_table.size()> next{};
};

constexpr LetterChains chain_keywords() {
    LetterChains chains;
    for (std::size_t i = 0; i < keyword_table.size(); ++i) {
        std::uint8_t& first = chains.first[static_cast<std::size_t>(keyword_table[i].name[0] - 'A')];
        chains.next[i] = first;
        first = static_cast<std::uint8_t>(i + 1);
    }
    return chains;
}
constexpr LetterChains chains = chain_keywords();

}  // namespace

std::uint8_t find_keyword(std::string_view word) {
    std::size_t link = chains.first[static_cast<std::size_t>(word[0] - 'A')];
    for (; link != 0; link = chains.next[link - 1]) {
        const KeywordEntry& entry = keyword_table[link - 1];
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

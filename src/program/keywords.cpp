#include "program/keywords.h"

#include <array>

#include "platform/memory.h"

namespace korvane {
namespace {

// A row holds its name itself: a pointer to it would take more room than the name does.
struct KeywordEntry {
    char name[10];  // upper case, zero-padded
    std::uint8_t code;

    bool is(std::string_view word) const {
        return word.size() < sizeof name && compare_bytes(name, word.data(), word.size()) == 0 &&
               name[word.size()] == 0;
    }
};

constexpr std::array<KeywordEntry, 107> keyword_table = {{
    {"MOD", KW_MOD},
    {"DEFINT", KW_DEFINT},
    {"DEFLNG", KW_DEFLNG},
    {"DEFI64", KW_DEFI64},
    {"DEFSNG", KW_DEFSNG},
    {"DEFDBL", KW_DEFDBL},
    {"DEFSTR", KW_DEFSTR},
    {"END", KW_END},
    {"FOR", KW_FOR},
    {"NEXT", KW_NEXT},
    {"DATA", KW_DATA},
    {"INPUT", KW_INPUT},
    {"DIM", KW_DIM},
    {"READ", KW_READ},
    {"LET", KW_LET},
    {"GOTO", KW_GOTO},
    {"RUN", KW_RUN},
    {"IF", KW_IF},
    {"RESTORE", KW_RESTORE},
    {"GOSUB", KW_GOSUB},
    {"RETURN", KW_RETURN},
    {"REM", KW_REM},
    {"STOP", KW_STOP},
    {"PRINT", KW_PRINT},
    {"CLEAR", KW_CLEAR},
    {"LIST", KW_LIST},
    {"NEW", KW_NEW},
    {"AND", KW_AND},
    {"OR", KW_OR},
    {"NOT", KW_NOT},
    {"XOR", KW_XOR},
    {"EQV", KW_EQV},
    {"IMP", KW_IMP},
    {"RANDOMIZE", KW_RANDOMIZE},
    {"SWAP", KW_SWAP},
    {"PSET", KW_PSET},
    {"PRESET", KW_PRESET},
    {"LINE", KW_LINE},
    {"ELSE", KW_ELSE},
    {"CIRCLE", KW_CIRCLE},
    {"PAINT", KW_PAINT},
    {"GET", KW_GET},
    {"PUT", KW_PUT},
    {"SCREEN", KW_SCREEN},
    {"CLS", KW_CLS},
    {"COLOR", KW_COLOR},
    {"LOCATE", KW_LOCATE},
    {"OPEN", KW_OPEN},
    {"CLOSE", KW_CLOSE},
    {"AS", KW_AS},
    {"OUTPUT", KW_OUTPUT},
    {"APPEND", KW_APPEND},
    {"KILL", KW_KILL},
    {"WHILE", KW_WHILE},
    {"WEND", KW_WEND},
    {"FILES", KW_FILES},
    {"LOAD", KW_LOAD},
    {"SAVE", KW_SAVE},
    {"WRITE", KW_WRITE},
    {"USING", KW_USING},
    {"ON", KW_ON},
    {"DEF", KW_DEF},
    {"EDIT", KW_EDIT},
    {"LOADBMP", KW_LOADBMP},
    {"BITBLT", KW_BITBLT},
    {"TXTWINDOW", KW_TXTWINDOW},
    {"ERROR", KW_ERROR},
    {"BREAK", KW_BREAK},
    {"RESUME", KW_RESUME},
    {"AUTO", KW_AUTO},
    {"POKE", KW_POKE},
    {"RENUM", KW_RENUM},
    {"CHDIR", KW_CHDIR},
    {"MKDIR", KW_MKDIR},
    {"RMDIR", KW_RMDIR},
    {"TO", KW_TO},
    {"STEP", KW_STEP},
    {"THEN", KW_THEN},
    {"OPTION", KW_OPTION},
    {"BASE", KW_BASE},
    {"ERASE", KW_ERASE},
    {"NAME", KW_NAME},
    {"MERGE", KW_MERGE},
    {"DELETE", KW_DELETE},
    {"TRON", KW_TRON},
    {"TROFF", KW_TROFF},
    {"WINDOW", KW_WINDOW},
    {"LSET", KW_LSET},
    {"RSET", KW_RSET},
    {"FIELD", KW_FIELD},
    {"VIEW", KW_VIEW},
    {"DRAW", KW_DRAW},
    {"CONT", KW_CONT},
    {"BLOAD", KW_BLOAD},
    {"BSAVE", KW_BSAVE},
    {"CHAIN", KW_CHAIN},
    {"HELP", KW_HELP},
    {"COMMON", KW_COMMON},
    {"TRACE", KW_TRACE},
    {"VARINFO", KW_VARINFO},
    {"ARRAYINFO", KW_ARRAYINFO},
    {"KORVANE", KW_KORVANE},
    {"POKE16", KW_POKE16},
    {"POKE32", KW_POKE32},
    {"POKE64", KW_POKE64},
    {"DIR", KW_DIR},
    {"CREATEEFI", KW_CREATEEFI},
}};

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
        if (entry.is(word)) return entry.code;
    }
    return 0;
}

std::string_view keyword_name(std::uint8_t code) {
    for (const KeywordEntry& entry : keyword_table)
        if (entry.code == code) return entry.name;
    return {};
}

}  // namespace korvane

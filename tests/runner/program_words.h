// The words behind a program's name: options and what they say, and the files that the program is for.
#pragma once

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace korvane::test {

// An option and where it leaves the word behind it; one that leaves true takes no word. Where there is room
// for many words each is kept, elsewhere the last.
struct ProgramOption {
    using Place =
        std::variant<bool*, unsigned*, std::uint64_t*, double*, std::chrono::milliseconds*,
                     std::chrono::seconds*, std::string*, std::filesystem::path*, std::vector<std::string>*>;

    std::string_view name;
    Place place;
};

using ProgramOptions = std::vector<ProgramOption>;

inline ProgramOptions operator+(ProgramOptions some, const ProgramOptions& others) {
    some.insert(some.end(), others.begin(), others.end());
    return some;
}

// Each leaves a word in its place; false where the word is wrong.
namespace program_words {

template <typename Number>
bool store(Number* place, std::string_view word) {
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), *place);
    return error == std::errc() && end == word.data() + word.size();
}

template <typename Unit>
bool store(std::chrono::duration<std::int64_t, Unit>* place, std::string_view word) {
    std::uint32_t count = 0;
    if (!store(&count, word)) return false;
    *place = std::chrono::duration<std::int64_t, Unit>(count);
    return true;
}

inline bool store(bool* place, std::string_view) {
    return *place = true;
}

inline bool store(std::string* place, std::string_view word) {
    *place = word;
    return true;
}

inline bool store(std::filesystem::path* place, std::string_view word) {
    *place = word;
    return true;
}

inline bool store(std::vector<std::string>* place, std::string_view word) {
    place->emplace_back(word);
    return true;
}

}  // namespace program_words

// Tells how the program is called, and ends it.
[[noreturn]] inline void end_with_usage(const char* usage) {
    std::fputs(usage, stderr);
    std::exit(2);
}

// Follows the options among the words and adds all other words to `files`. A wrong word, which any without an
// option is where there are no `files`, ends the program.
inline void read_program_words(int count, char** words, const char* usage, const ProgramOptions& options,
                               std::vector<std::filesystem::path>* files = nullptr) {
    const std::span<char*> all(words, static_cast<std::size_t>(count));
    for (std::size_t at = 1; at < all.size(); ++at) {
        const std::string_view word = all[at];
        const auto option = std::find_if(options.begin(), options.end(),
                                         [&](const ProgramOption& one) { return one.name == word; });
        if (option == options.end()) {
            if (files == nullptr || word.starts_with("-")) end_with_usage(usage);
            files->emplace_back(word);
            continue;
        }
        const bool takes_word = !std::holds_alternative<bool*>(option->place);
        if (takes_word && ++at == all.size()) end_with_usage(usage);
        const auto store = [&](auto* place) { return program_words::store(place, all[at]); };
        if (!std::visit(store, option->place)) end_with_usage(usage);
    }
}

}  // namespace korvane::test

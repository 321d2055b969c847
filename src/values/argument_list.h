// What the functions take in parentheses.
#pragma once

#include <array>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace korvane {

inline constexpr int most_arguments = 3;

// One list for each of the ways there are: "n" is a number, "t" a text, "a" either; "?" stands in front of an
// argument that may be left out, which is the first or the last one. "*" is what a function reads itself.
inline constexpr char argument_lists[][most_arguments + 2] = {"",   "n",  "t",    "a",    "*",
                                                              "tn", "na", "tn?n", "?ntt", "nn"};

// How many arguments may be given, and how many must be.
struct ArgumentCounts {
    std::uint8_t fewest;
    std::uint8_t most;
};

inline constexpr auto argument_counts = [] {
    std::array<ArgumentCounts, std::size(argument_lists)> counts{};
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const std::string_view text = argument_lists[i];
        bool has_optional = false;  // under the sanitizers the library's search is no constant expression
        for (const char character : text)
            has_optional |= character == '?';
        counts[i].most = static_cast<std::uint8_t>(text.size() - has_optional);
        counts[i].fewest = static_cast<std::uint8_t>(counts[i].most - has_optional);
    }
    return counts;
}();

// One of these lists, kept as its number.
class ArgumentList {
  public:
    // Does not compile where there is no such list.
    explicit consteval ArgumentList(std::string_view text) {
        while (argument_lists[number_] != text)
            ++number_;
    }

    constexpr std::string_view text() const { return argument_lists[number_]; }
    constexpr bool has_one() const { return number_ >= 1 && number_ <= 3; }
    constexpr bool is_read_by_function() const { return number_ == 4; }

    constexpr ArgumentCounts counts() const { return argument_counts[number_]; }

  private:
    std::uint8_t number_ = 0;
};
static_assert(ArgumentList("n").has_one() && ArgumentList("t").has_one() && ArgumentList("a").has_one());
static_assert(ArgumentList("*").is_read_by_function());
static_assert(ArgumentList("tn?n").counts().fewest == 2 && ArgumentList("tn?n").counts().most == 3);

}  // namespace korvane

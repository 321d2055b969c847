// What the functions take in parentheses.
#pragma once

#include <cstdint>
#include <string_view>

namespace korvane {

inline constexpr int most_arguments = 3;

// One list for each of the ways there are: "n" is a number, "t" a text, "a" either; "?" stands in front of an
// argument that may be left out, which is the first or the last one. "*" is what a function reads itself.
inline constexpr char argument_lists[][most_arguments + 2] = {"",   "n",  "t",    "a",    "*",
                                                              "tn", "na", "tn?n", "?ntt", "nn"};

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

    // How many arguments may be given, and how many must be.
    constexpr int most() const { return static_cast<int>(text().size()) - optional(); }
    constexpr int fewest() const { return most() - optional(); }

  private:
    // Counted by hand: under the sanitizers the library's search is no constant expression.
    constexpr int optional() const {
        int count = 0;
        for (const char character : text())
            count += character == '?' ? 1 : 0;
        return count;
    }

    std::uint8_t number_ = 0;
};
static_assert(ArgumentList("n").has_one() && ArgumentList("t").has_one() && ArgumentList("a").has_one());
static_assert(ArgumentList("*").is_read_by_function());
static_assert(ArgumentList("tn?n").fewest() == 2 && ArgumentList("tn?n").most() == 3);

}  // namespace korvane

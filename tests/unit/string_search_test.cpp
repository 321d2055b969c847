// INSTR's search against the standard library's, in texts that nearly match nearly everywhere.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "values/string_functions.h"

namespace korvane {
namespace {

class StringSearch : public testing::Test {
  protected:
    // Long runs of one letter between few others: after some thousand comparisons in vain the search goes
    // another way.
    std::string text_of(std::size_t size) {
        std::string text(size, 'A');
        for (std::size_t at = random_() % 700; at < size; at += 1 + random_() % 700)
            text[at] = random_() % 4 == 0 ? '\xFF' : 'B';
        return text;
    }

    static void expect_same(const std::string& text, const std::string& wanted, std::size_t start) {
        const std::size_t place = text.find(wanted, start - 1);
        const std::int64_t expected = place == std::string::npos ? 0 : static_cast<std::int64_t>(place) + 1;
        EXPECT_EQ(find_text(value_of(text), value_of(wanted), static_cast<std::int64_t>(start)), expected)
            << text.size() << " " << wanted.size() << " from " << start;
    }

    static Value value_of(const std::string& text) {
        return Value::of_string(reinterpret_cast<const std::uint8_t*>(text.data()),
                                static_cast<std::uint32_t>(text.size()));
    }

    std::mt19937 random_{1};
};

TEST_F(StringSearch, FindsWhatIsThere) {
    for (int i = 0; i < 200; ++i) {
        const std::string text = text_of(10'000);
        const std::size_t begin = random_() % text.size();
        expect_same(text, text.substr(begin, 1 + random_() % 900), 1 + random_() % 300);
    }
}

TEST_F(StringSearch, DoesNotFindWhatIsNot) {
    for (int i = 0; i < 200; ++i) {
        const std::string text = text_of(10'000);
        std::string wanted = text.substr(random_() % text.size(), 1 + random_() % 900);
        wanted[random_() % wanted.size()] ^= 1;
        expect_same(text, wanted, 1);
    }
}

TEST_F(StringSearch, EndsAtTheTextsEnd) {
    for (const std::size_t size : {399U, 400U, 401U, 1500U}) {
        const std::string text(size, 'A');
        for (const std::size_t length : {399U, 400U, 401U})
            for (const std::size_t start : {std::size_t{1}, size - 398, size})
                for (const char last : {'A', 'B'})
                    expect_same(text, std::string(length - 1, 'A') + last, start);
    }
}

}  // namespace
}  // namespace korvane

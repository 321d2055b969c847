// Makes inputs out of known ones without looking at what they reach: much quicker than a guided fuzzer, and
// with sessions that are longer than those it likes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "line_mutations.h"

namespace korvane::fuzz {

class Mixer {
  public:
    // Of inputs that are lines (`typed`) or bytes. The same seed makes the same inputs of the same known
    // ones.
    Mixer(bool typed, unsigned seed) : random_(seed), typed_(typed) {}

    // Most of what is known at first makes good inputs.
    void know(std::string text);
    bool knows_nothing() const { return texts_.empty(); }

    // A number below the bound.
    std::size_t below(std::size_t bound) { return fuzz::below(random_, bound); }

    // Lines from several of the known inputs, so many or a few more, some of them changed; without those
    // lines that `is_wanted` refuses.
    std::string mixed_lines(std::size_t count, bool (*is_wanted)(std::string_view line));

    // The lines of one known input, a few of them changed.
    std::string changed_lines(bool (*is_wanted)(std::string_view line));

    // A known input with some bytes changed.
    std::string changed_bytes();

  private:
    std::string changed(std::vector<std::string> lines, bool (*is_wanted)(std::string_view line));
    void change_number(std::string& line);
    void change_bytes(std::string& bytes);

    Random random_;
    bool typed_;
    std::vector<std::string> texts_;
    std::vector<std::vector<std::string>> sessions_;  // their lines
};

}  // namespace korvane::fuzz

// The words behind a program's name, taken one by one.
#pragma once

#include <string>
#include <string_view>

namespace korvane::test {

class ProgramWords {
  public:
    // `usage` tells how the program is called, and ends it.
    ProgramWords(int count, char** words, void (*usage)()) : count_(count), words_(words), usage_(usage) {}

    // Takes the next word; false when there is none.
    bool take(std::string_view& word) {
        if (at_ >= count_) return false;
        word = words_[at_++];
        return true;
    }

    // Takes the word that must follow an option.
    std::string value() {
        if (at_ >= count_) usage_();
        return words_[at_++];
    }

  private:
    int count_;
    char** words_;
    void (*usage_)();
    int at_ = 1;
};

}  // namespace korvane::test

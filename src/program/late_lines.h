// Lines that come out of order, many of them at once.
//
// To store a line in front of others is to move them all, so a file whose lines stand in descending order or
// in none would take a time that grows with the square of its length. From the first line on that does not
// come behind all others they are only put behind the program, as they come, and sorted into it in the end.
// That needs room for all of the program once more; where there is none, each is stored on its own.
#pragma once

#include <cstdint>
#include <string_view>

namespace korvane {

// While it lives nobody may look at the program, but for the errors that store() raises: by then the program
// is what it would be if each line had been stored on its own.
class LateLines {
  public:
    LateLines() = default;
    ~LateLines() { settle(); }
    LateLines(const LateLines&) = delete;
    LateLines& operator=(const LateLines&) = delete;

    // What store_line() does, its errors included.
    void store(std::uint32_t number, std::string_view text);

    // Sorts what has been put behind the program into it. Lines may follow.
    void settle();

  private:
    bool takes(std::uint32_t number, std::string_view text) const;

    std::uint8_t* first_ = nullptr;  // of the records behind the program
    std::uint32_t count_ = 0;
};

}  // namespace korvane

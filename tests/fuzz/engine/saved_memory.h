// Memory that can be put back to what it held at one moment, at the cost of the pages changed since.
//
// Two ways lead back. A page that is given up comes again from the file that holds what was saved, which
// costs a fault or two when it is next used: right for pages that hardly anybody writes. One that most inputs
// write is compared with what was saved, and copied. Which are which is learned from the first inputs.
#pragma once

#include <cstdint>
#include <vector>

namespace korvane::fuzz {

class SavedMemory {
  public:
    // Fresh zeroed memory at a fixed address, with an inaccessible page on either side. Ends the program when
    // the addresses are taken.
    static SavedMemory fresh(std::uint64_t base, std::uint64_t size);

    // Memory of this program that is there already, a variable for example.
    SavedMemory(void* begin, void* end);

    // What the memory holds now is what put_back() brings back. Can be done once. The pages of `untouchable`
    // are those that nobody can read or write; they are left alone.
    void save(const std::vector<std::uint64_t>& untouchable = {});
    void put_back();

    std::uint64_t begin() const { return begin_; }
    std::uint64_t end() const { return end_; }

  private:
    struct Run {
        std::uint64_t begin;
        std::uint64_t end;
    };

    void save_pages();
    void count_written_pages();
    void choose_copied_pages();
    void copy_written_pages() const;

    std::uint64_t begin_;
    std::uint64_t end_;
    // The whole pages between are a private view of a file that holds what was saved.
    std::uint64_t pages_begin_;
    std::uint64_t pages_end_;
    std::vector<std::uint8_t> head_;  // the bytes in front of the first whole page
    std::vector<std::uint8_t> tail_;
    const std::uint8_t* saved_ = nullptr;  // the file's content
    std::uint32_t lessons_ = 0;            // how often it has been put back while it learns
    std::vector<std::uint32_t> written_;   // of each page, after how many inputs it was found written
    std::vector<bool> untouchable_;        // of each page
    std::vector<Run> copied_;
    std::vector<Run> given_up_;
};

}  // namespace korvane::fuzz

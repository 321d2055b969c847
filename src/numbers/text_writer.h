// Putting a number's text together.
#pragma once

#include <cstddef>
#include <span>

namespace korvane {

// Appends characters to a buffer that the caller made large enough.
class TextWriter {
  public:
    explicit TextWriter(std::span<char> text) : text_(text) {}

    void put(char character) { text_[size_++] = character; }
    void put(std::span<const char> characters) {
        for (const char character : characters)
            put(character);
    }
    void put(char character, int count) {
        for (int i = 0; i < count; i++)
            put(character);
    }

    // The buffer behind what has been put, for others to write to, and what they have written there.
    std::span<char> room() const { return text_.subspan(size_); }
    void take_written(std::size_t count) { size_ += count; }

    std::size_t size() const { return size_; }

  private:
    std::span<char> text_;
    std::size_t size_ = 0;
};

}  // namespace korvane

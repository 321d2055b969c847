// Random programs for the screen: statements of all kinds that draw or print,
// with sound, absurd and faulty arguments.
#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace korvane::test {

class RandomDrawing {
  public:
    explicit RandomDrawing(std::uint32_t seed) : random_(seed) {}

    // A program of `statements` random statements in a random screen mode, which goes on after errors. At
    // its end it frees the text, makes room for a line to be typed and sets the variable DONE to `number`.
    std::string program(int statements, int number);

  private:
    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_()) % limit; }
    const char* one_of(std::initializer_list<const char*> choices);

    std::string number();  // a coordinate or radius
    std::string logical();
    std::string colour();
    std::string optional_colour();
    std::string point();
    std::string commands();  // of DRAW
    std::string window();    // bounds of a text window
    std::string drawing_statement();
    std::string area_statement();
    std::string text_statement();

    std::mt19937 random_;
};

}  // namespace korvane::test

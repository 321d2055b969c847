// Reproducible random bits for tests: the splitmix64 generator.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace korvane::test {

class RandomBits {
  public:
    explicit RandomBits(std::uint64_t seed) : state_(seed) {}

    std::uint64_t bits() {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }
    // A number from 0 to limit - 1.
    int below(int limit) { return static_cast<int>(bits() % static_cast<std::uint64_t>(limit)); }
    double unit() { return static_cast<double>(bits() >> 11) * 0x1p-53; }
    double between(double low, double high) { return low + (high - low) * unit(); }
    // Any finite number: every exponent and mantissa equally likely.
    double any() {
        while (true) {
            const double number = std::bit_cast<double>(bits());
            if (std::isfinite(number)) return number;
        }
    }

  private:
    std::uint64_t state_;
};

// How many random arguments a numeric test takes: few by default, KORVANE_NUMERIC_ARGUMENTS in a full run.
inline long numeric_arguments() {
    const char* text = std::getenv("KORVANE_NUMERIC_ARGUMENTS");
    return text == nullptr ? 100000 : std::atol(text);
}

}  // namespace korvane::test

// What the measuring programs have in common: their arguments, medians, and the table they print.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace korvane::bench {

struct Options {
    std::filesystem::path image;
    int rounds = 5;
};

// "[--rounds N] IMAGE". Ends the program with a message when they are anything else.
Options parse_options(int count, char** arguments);

double median(std::vector<double> numbers);

// Two things measured in turns, a round each.
struct Comparison {
    std::vector<double> subject;    // seconds
    std::vector<double> yardstick;  // the same; empty when there is nothing to compare with

    double ratio() const;  // the median of the rounds' ratios
};

// Takes turns for this many rounds. Each function gives the seconds of one execution;
// the yardstick may be empty.
Comparison take_turns(int rounds, const std::function<double()>& subject,
                      const std::function<double()>& yardstick);

// The processor seconds that one of `count` calls takes.
double seconds_each(int count, const std::function<void()>& work);

struct Unit {
    const char* name;
    double per_second;
};
inline constexpr Unit milliseconds{"ms", 1e3};
inline constexpr Unit microseconds{"us", 1e6};
inline constexpr Unit nanoseconds{"ns", 1e9};

// A table in Markdown: a name, its time and the yardstick's, their ratio,
// and the largest ratio that is good enough.
class Table {
  public:
    // Prints the head.
    Table(const std::string& subject, const std::string& yardstick, Unit unit);

    // Prints a row. A goal of 0 is none.
    void row(const std::string& name, const Comparison& comparison, double goal = 0) const;

  private:
    Unit unit_;
};

}  // namespace korvane::bench

#include "rounds.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "session.h"

namespace korvane::bench {

namespace {

[[noreturn]] void explain_usage() {
    std::cerr << "usage: [--rounds N] IMAGE\n";
    std::exit(2);
}

std::string shown(double number) {
    char text[40];
    std::snprintf(text, sizeof text, number < 10 ? "%.2f" : "%.1f", number);
    return text;
}

}  // namespace

Options parse_options(int count, char** arguments) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--rounds" && i + 1 < count)
            options.rounds = std::atoi(arguments[++i]);
        else if (options.image.empty() && !argument.starts_with("-"))
            options.image = argument;
        else
            explain_usage();
    }
    if (options.image.empty() || options.rounds < 1) explain_usage();
    return options;
}

double median(std::vector<double> numbers) {
    std::ranges::sort(numbers);
    const std::size_t middle = numbers.size() / 2;
    return numbers.size() % 2 != 0 ? numbers[middle] : (numbers[middle - 1] + numbers[middle]) / 2;
}

double Comparison::ratio() const {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < yardstick.size(); ++i)
        ratios.push_back(subject[i] / yardstick[i]);
    return median(ratios);
}

Comparison take_turns(int rounds, const std::function<double()>& subject,
                      const std::function<double()>& yardstick) {
    Comparison comparison;
    // One turn for nothing, which brings the memory that both use into being.
    subject();
    if (yardstick) yardstick();
    for (int round = 0; round < rounds; ++round) {
        comparison.subject.push_back(subject());
        if (yardstick) comparison.yardstick.push_back(yardstick());
    }
    return comparison;
}

double seconds_each(int count, const std::function<void()>& work) {
    const double start = processor_seconds();
    for (int i = 0; i < count; ++i)
        work();
    return (processor_seconds() - start) / count;
}

Table::Table(const std::string& subject, const std::string& yardstick, Unit unit) : unit_(unit) {
    std::cout << "| " << subject << " | " << unit.name << " | " << yardstick << ", " << unit.name
              << " | ratio | goal |\n"
              << "|---|---:|---:|---:|---:|\n";
}

void Table::row(const std::string& name, const Comparison& comparison, double goal) const {
    const auto time = [this](const std::vector<double>& seconds) {
        return seconds.empty() ? "" : shown(median(seconds) * unit_.per_second);
    };
    const bool compared = !comparison.yardstick.empty();
    std::cout << "| " << name << " | " << time(comparison.subject) << " | " << time(comparison.yardstick)
              << " | " << (compared ? shown(comparison.ratio()) : "") << " | "
              << (goal != 0 ? shown(goal) : "") << " |" << std::endl;
}

}  // namespace korvane::bench

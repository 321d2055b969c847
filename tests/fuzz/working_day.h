// Working days of somebody who programs: typing and mistyping, editing, running, breaking, saving, loading,
// drawing, looking around in the machine.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "platform/uefi.h"

namespace korvane::fuzz {

// What is done in one go, up to where the interpreter wants the next key.
struct Action {
    std::vector<uefi::InputKey> keys;
    bool runs = false;  // a program, which somebody breaks who loses patience
};

class WorkingDay {
  public:
    explicit WorkingDay(std::uint64_t seed) : random_(seed) {}

    // The day's actions; the last ones clear up, so that every day begins in the same state.
    std::vector<Action> actions();

    // The same on every day: what is measured is compared with that of the first day.
    static std::vector<Action> yardstick();

  private:
    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_() % limit); }
    std::string pick(std::initializer_list<std::string_view> choices);
    std::string number() { return std::to_string(10 * (1 + below(60))); }
    std::string variable() { return pick({"A", "B%", "C&", "D&&", "E!", "F#", "I", "J", "TOTAL"}); }
    std::string text() {
        return pick({"A$", "NAME1$", "\"HELLO\"", "STR$(I)", "LEFT$(A$,3)", "MID$(\"ABCDEF\",2,3)"});
    }
    std::string expression();
    std::string statement();
    std::string file() { return pick({"ONE.BAS", "TWO.BAS", "SUB\\THREE.BAS"}); }

    void type_line(std::string_view line, bool runs = false);
    void press(std::uint16_t scan_code, std::uint32_t times = 1);
    void write_program();
    void edit_lines();
    void run_program();
    void keep_files();
    void write_data();
    void draw();
    void calculate();
    void explore();
    void look_around();
    void clear_up();

    std::mt19937_64 random_;
    std::vector<Action> actions_;
    std::vector<uefi::InputKey> pending_;  // keys of the next action
};

}  // namespace korvane::fuzz

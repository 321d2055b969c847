// Plays the table of limits: each with one less, with exactly as much, and with one more.
//
//     limits [NAME]    only the limits whose name contains NAME
#include "limit_table.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "invariants.h"
#include "player.h"
#include "program/errors.h"
#include "targets.h"

namespace korvane::fuzz {

extern bool memory_files_allowed;
extern bool memory_writes_allowed;

namespace {

using std::string;
using std::string_view;

// Enough for a record behind sixteen million others.
constexpr std::uint64_t room = 64 << 20;

// The text with a quantity in its braces: {n} is the number; {*TEXT} is TEXT so many times; {-5*TEXT} is it
// five times less; {,TEXT} the same with commas between, {:TEXT} with colons, and a "%" in TEXT is which time
// it is.
string with_quantity(string_view text, std::int64_t n) {
    string result;
    while (!text.empty()) {
        if (text.front() != '{') {
            result += text.front();
            text.remove_prefix(1);
            continue;
        }
        const std::size_t end = text.find('}');
        string_view place = text.substr(1, end - 1);
        text.remove_prefix(end + 1);
        if (place == "n") {
            result += std::to_string(n);
            continue;
        }
        std::int64_t times = n;
        if (place.front() == '-') {
            times -= std::atoll(string(place.substr(1)).c_str());
            place.remove_prefix(place.find('*'));
        }
        const char between = place.front();
        place.remove_prefix(1);
        for (std::int64_t i = 1; i <= times; ++i) {
            if (i != 1 && between != '*') result += between;
            for (const char c : place)
                result += c == '%' ? std::to_string(i) : string(1, c);
        }
    }
    return result;
}

class Table {
  public:
    explicit Table(string_view filter) : filter_(filter) {}

    int all() {
        memory_files_allowed = memory_writes_allowed = true;
        prepare(*find_target("session"), true);
        std::set<string_view> names;
        std::vector<Limit> limits = limits_of_programs();
        for (Limit& limit : limits_of_devices())
            limits.push_back(std::move(limit));
        for (const Limit& limit : limits) {
            if (!names.insert(limit.name).second) wrong(limit, "", 0, "it is named twice");
            if (limit.name.find(filter_) == string_view::npos) continue;
            ++limits_;
            for (const Reach& reach : limit.reaches)
                for (const std::int64_t n : {limit.value - 1, limit.value, limit.value + 1})
                    attempt(limit, reach, n);
            if (limit.reaches.empty()) require_elsewhere(limit);
        }
        std::printf("%d limits, %d attempts, %d wrong\n", limits_, attempts_, wrong_);
        return wrong_ == 0 && limits_ != 0 ? 0 : 1;
    }

  private:
    void attempt(const Limit& limit, const Reach& reach, std::int64_t n) {
        ++attempts_;
        begin_input();
        Firmware& firmware = machine->firmware();
        firmware.volume().set_room(room);
        firmware.be_patient_for(Firmware::usual_patience);
        if (reach.prepare != nullptr) reach.prepare(n);
        if (!reach.file.empty()) firmware.volume().put_file("F.BAS", with_quantity(reach.file, n));
        const string typed = with_quantity(reach.typed, n);
        for (string_view rest = typed; !rest.empty();) {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            forget_error();
            errors.message = nullptr;
            if (!type(rest.substr(0, end))) return wrong(limit, reach.typed, n, "it comes to an end");
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
        for (const string& rule : broken_invariants())
            wrong(limit, reach.typed, n, "this does not hold: " + rule);
        const bool is_within = reach.least ? n >= limit.value : n <= limit.value;
        const string expected =
            reach.says != nullptr ? reach.says(n) : string(is_within ? reach.within : reach.beyond);
        const string_view said = errors.message == nullptr ? "" : errors.message;
        if (said != expected) wrong(limit, reach.typed, n, "it says: " + string(said));
        if (reach.shows != nullptr) {
            const string row = reach.shows(n);
            const bool shown = row.front() != '!';
            if (is_on_screen(string_view(row).substr(shown ? 0 : 1)) != shown)
                wrong(limit, reach.typed, n, "the screen is not as it should be: " + row);
        }
        if (reach.holds != nullptr && !reach.holds(n))
            wrong(limit, reach.typed, n, "it is not as it should be");
    }

    // A reason, or a file that is there.
    void require_elsewhere(const Limit& limit) {
        const bool names_file = limit.elsewhere.starts_with("tests/");
        if (limit.elsewhere.empty() || (names_file && !std::filesystem::exists(limit.elsewhere)))
            wrong(limit, "", limit.value, "it is tested nowhere");
    }

    void wrong(const Limit& limit, string_view typed, std::int64_t n, const string& what) {
        ++wrong_;
        std::printf("WRONG: %.*s, %lld (%.*s): %s\n", static_cast<int>(limit.name.size()), limit.name.data(),
                    static_cast<long long>(n), static_cast<int>(typed.size()), typed.data(), what.c_str());
    }

    string_view filter_;
    int limits_ = 0;
    int attempts_ = 0;
    int wrong_ = 0;
};

}  // namespace
}  // namespace korvane::fuzz

int main(int count, char** words) {
    using namespace korvane::fuzz;
    static Machine the_machine;
    return Table(count > 1 ? words[1] : "").all();
}

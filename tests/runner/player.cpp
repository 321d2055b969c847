#include "player.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "machine_builder.h"
#include "unicode.h"

namespace korvane::transcript {

namespace {

using std::chrono::milliseconds;

// An application that is busy for so long, in processor time, where it should halt is considered halted.
constexpr milliseconds halt_time{300};

}  // namespace

Player::Player(const Case& test, std::unique_ptr<host::Machine>& machine, std::filesystem::path scratch,
               host::ImageSource image, PlayOptions options)
    : test_(test),
      machine_(machine),
      scratch_(std::move(scratch)),
      image_(std::move(image)),
      options_(options) {}

std::string Player::play() {
    try {
        line_ = test_.line;
        if (!test_.start_fail_each.empty()) {
            fail_each_start();
        } else {
            if (!machine_started()) start();
            play_steps(0);
        }
    } catch (const Failure&) {
        // The report is there.
    }
    return report_;
}

bool Player::machine_started() const {
    return machine_->firmware().keyboard().polls() != 0;
}

void Player::start() {
    machine_->firmware().faults().arm(test_.start_faults);
    resume();
    machine_->firmware().faults().arm({});
    if (is_waiting()) machine_->learn_waiting_place();
}

void Player::play_steps(std::size_t first) {
    note_start();
    for (std::size_t i = first; i < test_.steps.size(); ++i) {
        if (test_.steps[i].action == Action::fail_each) return fail_each(i);
        play_step(test_.steps[i]);
    }
    check_end();
}

// What the leak check at the end compares with.
// Only a mode change may take pages for good, for its back buffer.
void Player::note_start() {
    host::Firmware& firmware = machine_->firmware();
    buffers_at_start_ = firmware.pool().buffers();
    pages_at_start_ = firmware.memory().allocated_pages();
    mode_changes_at_start_ = mode_changes();
    map_reads_at_start_ = firmware.faults().uses(host::Service::GetMemoryMap);
}

std::uint64_t Player::mode_changes() const {
    const host::Display* display = machine_->firmware().display();
    return display == nullptr ? 0 : display->mode_changes();
}

void Player::play_step(const Step& step) {
    line_ = step.line;
    host::Firmware& firmware = machine_->firmware();
    switch (step.action) {
        case Action::type:
            return type(step);
        case Action::press:
            return press(step);
        case Action::press_at_poll:
            for (std::size_t i = 0; i < step.keys.size(); ++i)
                scheduled_.emplace_back(step.numbers[0], step.keys[i]);
            return;
        case Action::rows:
            return check_rows(step);
        case Action::pixel:
            return check_pixels(step);
        case Action::colours:
            return check_colours(step);
        case Action::cursor:
            return check_cursor(step);
        case Action::file:
            return check_file(step);
        case Action::no_file:
            if (std::filesystem::exists(on_volume(step.name))) fail("there is a file " + step.name);
            return;
        case Action::put_file:
            std::ofstream(on_volume(step.name), std::ios::binary) << step.content;
            return;
        case Action::console:
            if (firmware.text_console().text().find(step.content) == std::string::npos)
                fail("the firmware's console shows:\n" + firmware.text_console().text());
            return;
        case Action::given_back:
            return check_given_back(step);
        case Action::exits:
            return check_exit(step);
        case Action::halts:
            if (last_stop_ == host::Stop::waits_for_key) resume(halt_time);
            if (last_stop_ != host::Stop::timed_out) fail("the application has not halted");
            return;
        case Action::fail:
            faults_.insert(faults_.end(), step.faults.begin(), step.faults.end());
            return firmware.faults().arm(faults_);
        case Action::heal:
            faults_.clear();
            return firmware.faults().arm({});
        case Action::fail_each:
        case Action::in_any_case:
            return;
        case Action::leaves_open:
            files_left_open_ = step.numbers[0];
            return;
        case Action::image_kept:
            return check_image();
        case Action::pull_stick:
            return firmware.pull_stick();
        case Action::plug_stick:
            return plug_stick(step);
        case Action::restart:
            return restart(step);
        case Action::time:
            return firmware.set_time(step.time);
    }
}

// ---- Running

// Lets the machine run until it waits, and says what else may have happened.
void Player::resume(milliseconds patience) {
    const bool expects_halt = patience == halt_time || waits_for_halt();
    screen_.reset();
    last_stop_ = machine_->run(expects_halt ? halt_time : options_.patience);
    if (last_stop_ == host::Stop::fault) fail(machine_->fault_report());
    if (last_stop_ == host::Stop::timed_out && !expects_halt && !tolerant_)
        fail("nothing was waited for within " + std::to_string(options_.patience.count()) + " ms");
}

// True when a step of the case says that the machine halts.
bool Player::waits_for_halt() const {
    return tolerant_start_ || std::any_of(
                                  test_.steps.begin(), test_.steps.end(),
                                  [](const Step& step) { return step.action == Action::halts; });
}

// The screen as it is while the machine stands still; read once for each of its stops.
const ScreenText& Player::screen() {
    host::Display* display = machine_->firmware().display();
    if (display == nullptr) fail("there is no screen");
    if (!screen_) screen_ = read_screen(*display, is_waiting() && !machine_->waits_in_event());
    return *screen_;
}

void Player::begin_step() {
    if (!is_waiting()) fail("the application does not wait for a key");
    for (const auto& [poll, key] : scheduled_)
        machine_->firmware().keyboard().press_at_poll(poll, key);
    scheduled_.clear();
}

void Player::type(const Step& step) {
    begin_step();
    host::Keyboard& keyboard = machine_->firmware().keyboard();
    const ScreenText before = screen();
    std::size_t next_key = 0;
    // Without a visible cursor, the first key that shows on the screen tells where the line is.
    std::optional<CellPosition> place = before.cursor;
    while (!place && next_key < step.keys.size()) {
        keyboard.press(step.keys[next_key++]);
        resume();
        place = first_difference(before, screen());
        const auto unseen = static_cast<std::uint32_t>(next_key - 1);
        if (place) place->column -= std::min(place->column, unseen);
    }
    const bool is_placed = place.has_value();
    if (!place) place = end_of_text(before);
    for (; next_key < step.keys.size(); ++next_key)
        keyboard.press(step.keys[next_key]);
    keyboard.press({0, u'\r'});
    resume();
    const std::size_t below = place->row + (place->column + step.keys.size()) / before.columns + 1;
    if (!is_waiting() && !step.has_rows) return;
    const ScreenText& after = screen();
    show(step, after);
    const bool scrolled = is_placed && !shows_at(after, *place, step.source);
    compare(step, output_rows(after, below, scrolled), true);
}

void Player::press(const Step& step) {
    begin_step();
    const ScreenText before = screen();
    CellPosition place = before.cursor.value_or(end_of_text(before));
    for (const uefi::InputKey& key : step.keys)
        machine_->firmware().keyboard().press(key);
    resume();
    if (!is_waiting() && !step.has_rows) return;
    const ScreenText& after = screen();
    show(step, after);
    // The keys may have changed rows above.
    if (const auto changed = first_difference(before, after)) place.row = std::min(place.row, changed->row);
    if (step.has_rows) compare(step, output_rows(after, place.row, false), true);
}

// True when at least half of the typed text's first row stands on the screen where it was typed: drawings may
// have covered some of it.
bool Player::shows_at(const ScreenText& screen, const CellPosition& place, const std::string& typed) {
    if (place.row >= screen.rows.size() || place.column >= screen.columns) return false;
    const auto codes = [](const std::string& text) { return host::to_utf16(text).value_or(u""); };
    const std::u16string wanted = codes(typed).substr(0, screen.columns - place.column);
    const std::u16string row = codes(screen.rows[place.row]);
    std::size_t marks = 0;
    std::size_t same = 0;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (wanted[i] == u' ') continue;
        ++marks;
        if (place.column + i < row.size() && row[place.column + i] == wanted[i]) ++same;
    }
    return same * 2 >= marks;
}

CellPosition Player::end_of_text(const ScreenText& screen) {
    const std::size_t row = screen.used_rows() == 0 ? 0 : screen.used_rows() - 1;
    return {static_cast<std::uint32_t>(row), 0};
}

std::optional<CellPosition> Player::first_difference(const ScreenText& before, const ScreenText& after) {
    for (std::size_t row = 0; row < std::min(before.rows.size(), after.rows.size()); ++row) {
        const std::string& old_text = before.rows[row];
        const std::string& new_text = after.rows[row];
        if (old_text == new_text) continue;
        // The blanks that end the old row were there before.
        const auto differs =
            std::mismatch(old_text.begin(), old_text.end(), new_text.begin(), new_text.end());
        const auto column =
            std::find_if(differs.second, new_text.end(), [](char byte) { return byte != ' '; });
        return CellPosition{static_cast<std::uint32_t>(row),
                            static_cast<std::uint32_t>(column - new_text.begin())};
    }
    return std::nullopt;
}

// The rows from `first` to where the application waits. Where the screen was cleared or scrolled meanwhile,
// all rows from the top count.
std::vector<std::string> Player::output_rows(const ScreenText& after, std::size_t first, bool scrolled) {
    std::size_t end = after.used_rows();
    if (after.cursor) {
        end = after.cursor->row;
        if (!after.rows[end].empty()) ++end;
        scrolled = scrolled || end < first;
    }
    if (scrolled) first = 0;
    if (first >= end) return {};
    const auto begin = after.rows.begin();
    return {begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(end)};
}

}  // namespace korvane::transcript

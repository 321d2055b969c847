#include "player.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>
#include <tuple>
#include <utility>

#include "forked.h"
#include "machine_builder.h"
#include "screen_cells.h"
#include "text_syntax.h"
#include "unicode.h"

namespace korvane::transcript {

namespace {

using std::chrono::milliseconds;

// An application that is busy for so long, in processor time, where it should halt is considered halted.
constexpr milliseconds halt_time{300};

// The prompt that closes the output of a direct command; transcripts leave it out.
const std::string prompt = "Ready.";

// What a failing use of a service reports in a failure loop: the failure that is the likeliest in practice.
uefi::Status usual_failure(host::Service service) {
    using host::Service;
    switch (service) {
        case Service::AllocatePages:
        case Service::AllocatePool:
            return uefi::out_of_resources;
        case Service::LocateProtocol:
        case Service::LocateHandleBuffer:
        case Service::GetVariable:
            return uefi::not_found;
        case Service::HandleProtocol:
            return uefi::unsupported;
        case Service::FileWrite:
            return uefi::volume_full;
        default:
            return uefi::device_error;
    }
}

bool matches(const ExpectedRow& expected, const std::string& actual) {
    if (!expected.is_pattern) return expected.text == actual;
    return std::regex_match(actual, std::regex(expected.text, std::regex::extended));
}

std::string in_hex(std::uint64_t value) {
    char text[20];
    std::snprintf(text, sizeof text, "%06llX", static_cast<unsigned long long>(value));
    return text;
}

// Bytes of a file as the lines of a transcript would write them.
std::string escape(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (byte == '\r')
            text += "\\r";
        else if (byte == '\n')
            text += "\\n\n";
        else if (byte == '\\')
            text += "\\\\";
        else if (code >= 0x20 && code < 0x7F)
            text += byte;
        else
            text += "\\x" + in_hex(code).substr(4);
    }
    return text;
}

std::string row_text(const ExpectedRow& row) {
    return (row.is_pattern ? "~ " : "") + row.text;
}

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
    buffers_at_start_ = machine_->firmware().pool().buffers();
    map_reads_at_start_ = machine_->firmware().faults().uses(host::Service::GetMemoryMap);
    for (std::size_t i = first; i < test_.steps.size(); ++i) {
        if (test_.steps[i].action == Action::fail_each) return fail_each(i);
        play_step(test_.steps[i]);
    }
    check_end();
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
        case Action::exits:
            if (last_stop_ != host::Stop::returned) fail("the application has not ended");
            if (machine_->status() != step.numbers[0])
                fail("it ended with status " + in_hex(machine_->status()));
            return;
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
            return;
        case Action::leaves_open:
            files_left_open_ = step.numbers[0];
            return;
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
    return tolerant_start_ || std::any_of(test_.steps.begin(), test_.steps.end(),
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

// ---- Comparing

void Player::compare(const Step& step, std::vector<std::string> actual, bool prompt_is_implied) {
    if (tolerant_) return;
    const std::vector<ExpectedRow>& expected = step.rows;
    const bool expects_prompt = !expected.empty() && expected.back().text == prompt;
    if (prompt_is_implied && !expects_prompt && !actual.empty() && actual.back() == prompt) actual.pop_back();
    const auto same = [](const std::string& row, const ExpectedRow& wanted) { return matches(wanted, row); };
    if (std::equal(actual.begin(), actual.end(), expected.begin(), expected.end(), same)) return;

    std::string difference = "the rows differ:\n";
    for (std::size_t i = 0; i < std::max(actual.size(), expected.size()); ++i) {
        const bool in_both = i < actual.size() && i < expected.size();
        if (in_both && matches(expected[i], actual[i])) {
            difference += "      " + actual[i] + "\n";
            continue;
        }
        if (i < expected.size()) difference += "    - " + row_text(expected[i]) + "\n";
        if (i < actual.size()) difference += "    + " + actual[i] + "\n";
    }
    fail(difference);
}

void Player::check_rows(const Step& step) {
    const ScreenText& now = screen();
    show(step, now);
    const std::size_t first = step.numbers[0] - 1;
    if (step.numbers[0] == 0 || first + step.rows.size() > now.rows.size())
        fail("the screen has no such rows");
    const auto begin = now.rows.begin() + static_cast<std::ptrdiff_t>(first);
    compare(step, {begin, begin + static_cast<std::ptrdiff_t>(step.rows.size())}, false);
}

void Player::check_pixels(const Step& step) {
    const host::Display& display = *machine_->firmware().display();
    const auto [left, top, right, bottom] =
        std::tuple{step.numbers[0], step.numbers[1], step.numbers[2], step.numbers[3]};
    if (right >= display.width() || bottom >= display.height()) fail("outside the screen");
    for (std::uint64_t y = top; y <= bottom; ++y) {
        for (std::uint64_t x = left; x <= right; ++x) {
            const std::uint32_t colour =
                display.pixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)) & 0xFFFFFF;
            if (colour != step.numbers[4])
                fail("the pixel at " + std::to_string(x) + ", " + std::to_string(y) + " is " +
                     in_hex(colour) + ", not " + in_hex(step.numbers[4]));
        }
    }
}

void Player::check_colours(const Step& step) {
    const host::Display& display = *machine_->firmware().display();
    const host::Pixels pixels{display.pixels().data(), display.width(), display.height(), display.pitch()};
    if (step.numbers[0] == 0 || step.numbers[0] > host::cell_rows(pixels) || step.numbers[1] == 0 ||
        step.numbers[1] > host::cell_columns(pixels))
        fail("the screen has no such cell");
    const host::Cell cell = host::read_cell(pixels, static_cast<std::uint32_t>(step.numbers[0] - 1),
                                            static_cast<std::uint32_t>(step.numbers[1] - 1));
    if (!cell.is_glyph) fail("the cell shows no character");
    if (cell.ink != step.numbers[2] || cell.paper != step.numbers[3])
        fail("the cell's colours are " + in_hex(cell.ink) + " on " + in_hex(cell.paper));
}

void Player::check_cursor(const Step& step) {
    const ScreenText& now = screen();
    if (!now.cursor) fail("there is no cursor");
    if (now.cursor->row + 1 != step.numbers[0] || now.cursor->column + 1 != step.numbers[1])
        fail("the cursor is at row " + std::to_string(now.cursor->row + 1) + ", column " +
             std::to_string(now.cursor->column + 1));
}

void Player::check_file(const Step& step) {
    std::ifstream stream(on_volume(step.name), std::ios::binary);
    if (!stream) fail("there is no file " + step.name);
    const std::string content(std::istreambuf_iterator<char>(stream), {});
    if (content != step.content)
        fail("the file " + step.name + " holds:\n" + escape(content) + "\nexpected:\n" +
             escape(step.content));
}

// Folders may stay open: the volume's root and the current directory.
void Player::check_end() {
    host::Firmware& firmware = machine_->firmware();
    const std::vector<std::string> complaints = firmware.complaints();
    if (!complaints.empty()) fail("misuse of the firmware: " + complaints.front());
    if (!is_waiting()) return;
    std::uint64_t files = 0;
    std::uint64_t folders = 0;
    for (const auto& volume : firmware.volumes())
        for (const host::OpenFile* file : volume->open_files())
            ++(file->directory ? folders : files);
    if (files != files_left_open_) fail(std::to_string(files) + " files are left open");
    if (folders > 2) fail(std::to_string(folders) + " folders are left open");
    // The explorer keeps the memory map that it has read first.
    const bool kept_map = firmware.faults().uses(host::Service::GetMemoryMap) != map_reads_at_start_;
    const std::uint64_t buffers = firmware.pool().buffers();
    if (buffers > buffers_at_start_ + (kept_map ? 1 : 0))
        fail(std::to_string(buffers - buffers_at_start_) + " pool buffers are left allocated");
}

// ---- Restarting, and failing services

void Player::restart(const Step& step) {
    host::Config config = build_config(test_, scratch_, false);
    config.image_path = u"\\" + std::u16string(step.name.begin(), step.name.end());
    host::ImageSource image = image_;
    image.path = on_volume(step.name);
    machine_.reset();
    machine_ = std::make_unique<host::Machine>(std::move(config), image);
    machine_->firmware().faults().arm(faults_);
    resume();
    buffers_at_start_ = machine_->firmware().pool().buffers();
    map_reads_at_start_ = machine_->firmware().faults().uses(host::Service::GetMemoryMap);
}

void Player::use_own_copy_of_volume(const std::string& name) {
    const std::filesystem::path copy = scratch_ / name;
    std::filesystem::create_directories(copy);
    std::filesystem::copy(volume_folder(scratch_, 0), volume_folder(copy, 0),
                          std::filesystem::copy_options::recursive);
    machine_->firmware().volumes().front()->replace_folder(volume_folder(copy, 0));
    scratch_ = copy;
}

// Plays the step after `index` once for each use of each service, with that use failing, until no use is left
// to fail. Whatever the step then shows, the steps after it must come out as written.
void Player::fail_each(std::size_t index) {
    if (index + 1 >= test_.steps.size()) fail("no step follows");
    fail_uses_of(test_.steps[index].services, [&](host::Service service, std::uint64_t use) {
        return play_with_failure(index + 1, service, use);
    });
}

void Player::fail_uses_of(const std::vector<host::Service>& services,
                          const std::function<ForkedResult(host::Service, std::uint64_t)>& play) {
    constexpr std::uint64_t most_uses = 2000;
    for (const host::Service service : services) {
        bool goes_on = true;
        for (std::uint64_t use = 1; goes_on; ++use) {
            ForkedResult result = run_forked([&] { return play(service, use); });
            if (result.report.empty() && use == most_uses) result.report = "there is no end of uses\n";
            if (!result.report.empty()) {
                report_ = result.report + "    (with use " + std::to_string(use) + " of " +
                          std::string(host::service_name(service)) + " failing)\n";
                throw Failure{};
            }
            goes_on = result.goes_on;
        }
    }
}

ForkedResult Player::play_with_failure(std::size_t index, host::Service service, std::uint64_t use) {
    ForkedResult result;
    try {
        use_own_copy_of_volume(std::string(host::service_name(service)) + std::to_string(use));
        machine_->firmware().faults().arm({{service, use, 1, usual_failure(service)}});
        tolerant_ = true;
        play_step(test_.steps[index]);
        tolerant_ = false;
        result.goes_on = machine_->firmware().faults().strikes() != 0;
        machine_->firmware().faults().arm({});
        for (std::size_t i = index + 1; i < test_.steps.size(); ++i)
            play_step(test_.steps[i]);
        check_end();
    } catch (const Failure&) {
        result.report = report_;
    }
    return result;
}

// The same for the start of the machine, which must then either reach its prompt, where the steps come out as
// written, or halt with a message on the firmware's console.
void Player::fail_each_start() {
    fail_uses_of(test_.start_fail_each,
                 [&](host::Service service, std::uint64_t use) { return start_with_failure(service, use); });
}

ForkedResult Player::start_with_failure(host::Service service, std::uint64_t use) {
    ForkedResult result;
    try {
        host::ServiceFaults& faults = machine_->firmware().faults();
        faults.arm({{service, use, 1, usual_failure(service)}});
        tolerant_start_ = true;
        resume();
        tolerant_start_ = false;
        result.goes_on = faults.strikes() != 0;
        faults.arm({});
        if (is_waiting())
            play_steps(0);
        else if (last_stop_ == host::Stop::returned)
            fail("the application ended");
        else if (machine_->firmware().text_console().text().find('!') == std::string::npos)
            fail("it halted without a message");
    } catch (const Failure&) {
        result.report = report_;
    }
    return result;
}

// ---- Reporting

void Player::show(const Step& step, const ScreenText& screen) {
    if (!options_.show) return;
    std::string& text = shown_;
    text += test_.file.string() + ":" + std::to_string(step.line) + ": " + step.source + "\n";
    for (std::size_t row = 0; row < screen.used_rows(); ++row)
        text += "    " + std::to_string(row + 1) + "| " + screen.rows[row] + "\n";
    if (screen.cursor)
        text += "    cursor at row " + std::to_string(screen.cursor->row + 1) + ", column " +
                std::to_string(screen.cursor->column + 1) + "\n";
}

void Player::fail(const std::string& what) {
    report_ = test_.file.string() + ":" + std::to_string(line_) + ": " + what;
    if (report_.back() != '\n') report_ += '\n';
    throw Failure{};
}

std::filesystem::path Player::on_volume(const std::string& name) const {
    return volume_folder(scratch_, 0) / name;
}

}  // namespace korvane::transcript

#include "companion.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "complaint.h"
#include "machine.h"
#include "piped_program.h"
#include "player.h"
#include "targets.h"

namespace korvane::fuzz {

namespace {

using test::read_all;
using test::write_all;

constexpr std::uint32_t not_comparable = 0xFFFFFFFF;

bool write_text(int descriptor, std::string_view text) {
    const auto size = static_cast<std::uint32_t>(text.size());
    return write_all(descriptor, &size, sizeof size) && write_all(descriptor, text.data(), text.size());
}

}  // namespace

Companion::Companion(const std::string& program, std::string_view target) {
    const test::PipedProgram other = test::start_piped_program({program, std::string(target)});
    to_ = other.to;
    from_ = other.from;
    signal(SIGPIPE, SIG_IGN);
    // Room for all inputs and states on their way, so that neither side waits for the other for nothing.
    constexpr int room = 1 << 20;
    if (fcntl(to_, F_SETPIPE_SZ, room) >= room && fcntl(from_, F_SETPIPE_SZ, room) >= room) most_begun_ = 64;
}

void Companion::begin(std::string_view input) {
    if (!write_text(to_, input)) complain("the interpreter without specialised statements breaks down");
}

std::optional<std::string> Companion::end() {
    std::uint32_t size = 0;
    if (!read_all(from_, &size, sizeof size))
        complain("the interpreter without specialised statements breaks down");
    if (size == not_comparable) return std::nullopt;
    std::string state(size, '\0');
    if (!read_all(from_, state.data(), size)) complain("the companion breaks off");
    return state;
}

int serve_companion() {
    std::uint32_t size = 0;
    while (read_all(STDIN_FILENO, &size, sizeof size)) {
        std::string input(size, '\0');
        if (!read_all(STDIN_FILENO, input.data(), size)) return 1;
        const bool played = play_only(input);
        if (played && is_comparable(input)) {
            if (!write_text(STDOUT_FILENO, describe_state())) return 1;
        } else if (!write_all(STDOUT_FILENO, &not_comparable, sizeof not_comparable)) {
            return 1;
        }
    }
    return 0;
}

bool is_alike_everywhere(std::string_view text) {
    // Addresses of the interpreter's own variables differ too, and what it has learned about its tokens.
    constexpr std::array<std::string_view, 6> words = {"TIME",   "KORVANE",   "PEEK",
                                                       "RANDOM", "CREATEEFI", "VARINFO"};
    std::string upper(text);
    std::transform(
        upper.begin(), upper.end(), upper.begin(),
        [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return std::none_of(words.begin(), words.end(),
                        [&](std::string_view word) { return upper.find(word) != std::string::npos; });
}

bool is_comparable(std::string_view input) {
    if (!current_target().comparable) return false;
    if (machine->firmware().depends_on_looks() ||
        input.find_first_of("\x1c\x1d\x1f") != std::string_view::npos)
        return false;
    return is_alike_everywhere(input);
}

void compare(std::string_view own, std::string_view other, bool has_code) {
    ++counts.compared;
    if (has_code) ++counts.native;
    if (own == other) return;
    const auto [here, there] = std::mismatch(own.begin(), own.end(), other.begin(), other.end());
    const auto line_of = [](std::string_view text, std::string_view::const_iterator at) {
        const std::size_t position = static_cast<std::size_t>(at - text.begin());
        const std::size_t begin = text.rfind('\n', position == 0 ? 0 : position - 1) + 1;
        return std::string(text.substr(begin, text.find('\n', position) - begin));
    };
    complain("specialised: " + line_of(own, here) + "\n       in general: " + line_of(other, there));
}

}  // namespace korvane::fuzz

#include "keyboard.h"

#include <algorithm>
#include <utility>

#include "host_clock.h"

namespace korvane::host {

namespace {

// An image that spins asks again within this many ticks of the time-stamp counter: the line editor, and a
// program that does nothing but look for a key, whose looks alternate with those for the break key. One that
// only polls between statements does hundreds of statements in between, which are machine code at best: looks
// that all come from one place have to follow one another at once. With the sanitizers all of that takes many
// times as long.
#ifdef __SANITIZE_ADDRESS__
constexpr std::uint64_t quick_poll_ticks = 40000;
constexpr std::uint64_t immediate_poll_ticks = 40000;
#else
constexpr std::uint64_t quick_poll_ticks = 2000;
constexpr std::uint64_t immediate_poll_ticks = 120;
#endif

// So many quick polls in a row are waiting, not a program that looks at the keyboard a few times.
constexpr std::uint64_t polls_of_a_spin = 20000;

// An image that has looked so often from one place before it waits on the event is the line editor: programs
// that do nothing but look for a key look for the break key, from another place, at every 256th statement.
constexpr std::uint64_t looks_of_the_editor = 1000;

// True when the instruction before an address in the image's code can be a call: a near call with a 32-bit
// displacement, or one through a pointer with a displacement of 0, 8 or 32 bits.
bool follows_call(std::uint64_t address) {
    const auto* next = reinterpret_cast<const std::uint8_t*>(address);
    return next[-5] == 0xE8 || next[-2] == 0xFF || next[-3] == 0xFF || next[-6] == 0xFF;
}

}  // namespace

Keyboard::Keyboard(ServiceFaults& faults)
    : uefi::SimpleTextInputProtocol{reset, read_key_stroke, nullptr}, faults_(faults) {
    WaitForKey = this;
}

void Keyboard::clear() {
    queue_.clear();
    scheduled_.clear();
}

uefi::Status EFIAPI Keyboard::reset(uefi::SimpleTextInputProtocol* self, std::uint8_t) {
    static_cast<Keyboard*>(self)->queue_.clear();
    return uefi::success;
}

// Reads stack words that belong to the image's frames, which AddressSanitizer would object to.
__attribute__((no_sanitize("address"))) bool Keyboard::is_spinning(const std::uint64_t* frame) {
    const bool same_place = std::all_of(spin_place_.begin(), spin_place_.end(), [=](const StackWord& known) {
        return frame[known.offset] == known.value;
    });
    if (!spin_place_.empty() && same_place) return true;
    const bool from_one_place = looks_from_one_place_ > looks_of_the_editor;
    const bool quick =
        host_ticks() - last_poll_ticks_ < (from_one_place ? immediate_poll_ticks : quick_poll_ticks);
    quick_polls_ = quick ? quick_polls_ + 1 : 0;
    // The host may have been busy with something else between two looks; that tells nothing about the image.
    if (frame != last_frame_)
        looks_from_one_place_ = 0;
    else if (quick || from_one_place)
        ++looks_from_one_place_;
    last_frame_ = frame;
    const std::size_t words = frame < stack_end_ ? static_cast<std::size_t>(stack_end_ - frame) : 0;
    // One by one, for AddressSanitizer looks into every call that copies.
    const volatile std::uint64_t* word = frame;
    for (std::size_t i = 0; i < std::min(words, watched_words); ++i)
        last_words_[i] = word[i];
    return quick_polls_ >= polls_of_a_spin;
}

// The nearest two return addresses tell who polls, wherever its caller's stack begins.
void Keyboard::learn_spin_place(std::uint64_t code_base, std::uint64_t code_size) {
    constexpr std::size_t nearest = 2;
    spin_place_.clear();
    if (last_frame_ == nullptr) return;
    for (std::size_t offset = 0; offset < watched_words && spin_place_.size() < nearest; ++offset) {
        const std::uint64_t value = last_words_[offset];
        const bool in_code = value > code_base + uefi::page_size && value - code_base < code_size;
        if (in_code && follows_call(value)) spin_place_.push_back({offset, value});
    }
    if (spin_place_.size() < nearest) spin_place_.clear();
}

uefi::Status EFIAPI Keyboard::read_key_stroke(uefi::SimpleTextInputProtocol* self, uefi::InputKey* key) {
    auto& keyboard = *static_cast<Keyboard*>(self);
    if (key == nullptr) return uefi::invalid_parameter;
    ++keyboard.polls_;
    while (!keyboard.scheduled_.empty() && keyboard.scheduled_.begin()->first <= keyboard.polls_) {
        keyboard.queue_.push_back(keyboard.scheduled_.begin()->second);
        keyboard.scheduled_.erase(keyboard.scheduled_.begin());
    }
    if (auto failure = keyboard.faults_.strike(Service::ReadKeyStroke)) return *failure;
    if (keyboard.queue_.empty()) {
        const bool spinning =
            keyboard.is_spinning(static_cast<const std::uint64_t*>(__builtin_frame_address(0)));
        if (keyboard.wanted_) keyboard.wanted_(spinning ? KeyWant::spin : KeyWant::poll);
    }
    uefi::Status status = uefi::not_ready;
    if (!keyboard.queue_.empty()) {
        *key = keyboard.queue_.front();
        keyboard.queue_.pop_front();
        keyboard.quick_polls_ = 0;
        keyboard.looks_from_one_place_ = 0;
        status = uefi::success;
    }
    keyboard.last_poll_ticks_ = host_ticks();
    return status;
}

uefi::Status Keyboard::wait() {
    while (queue_.empty()) {
        if (!wanted_) return uefi::unsupported;
        waits_at_prompt_ = looks_from_one_place_ >= looks_of_the_editor;
        wanted_(waits_at_prompt_ ? KeyWant::spin : KeyWant::block);
        waits_at_prompt_ = false;
    }
    return uefi::success;
}

}  // namespace korvane::host

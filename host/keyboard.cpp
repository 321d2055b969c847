#include "keyboard.h"

#include <utility>

namespace korvane::host {

namespace {

// An image that spins asks again within this many ticks of the time-stamp counter: the line editor, and a
// program that does nothing but look for a key, whose looks alternate with those for the break key. One that
// only polls between statements does hundreds of statements in between.
constexpr std::uint64_t quick_poll_ticks = 2000;

// So many quick polls in a row are waiting, not a program that looks at the keyboard a few times.
constexpr std::uint64_t polls_of_a_spin = 20000;

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
    if (frame == spin_frame_) {
        bool same_place = true;
        for (const auto& [word, value] : spin_return_addresses_)
            same_place = same_place && frame[word] == value;
        if (same_place) return true;
    }
    const bool quick = __builtin_ia32_rdtsc() - last_poll_ticks_ < quick_poll_ticks;
    quick_polls_ = quick ? quick_polls_ + 1 : 0;
    last_frame_ = frame;
    return quick_polls_ >= polls_of_a_spin;
}

__attribute__((no_sanitize("address"))) void Keyboard::learn_spin_place(std::uint64_t code_base,
                                                                        std::uint64_t code_size) {
    spin_return_addresses_.clear();
    if (last_frame_ == nullptr) return;  // an image that stopped before it looked for a key
    for (std::size_t word = 0; word < watched_words; ++word)
        if (last_frame_[word] - code_base < code_size) spin_return_addresses_[word] = last_frame_[word];
    spin_frame_ = spin_return_addresses_.size() >= 2 ? last_frame_ : nullptr;
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
        status = uefi::success;
    }
    keyboard.last_poll_ticks_ = __builtin_ia32_rdtsc();
    return status;
}

uefi::Status Keyboard::wait() {
    while (queue_.empty()) {
        if (!wanted_) return uefi::unsupported;
        wanted_(KeyWant::block);
    }
    return uefi::success;
}

}  // namespace korvane::host

// The firmware's keyboard: a queue of key strokes, and the signs that the image waits for one.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "platform/uefi.h"
#include "service_faults.h"

namespace korvane::host {

// How the image asks for a key while the queue is empty.
enum class KeyWant {
    poll,   // in passing; it goes on with other work when there is none
    spin,   // again and again with nothing done in between, as the line editor does: it waits
    block,  // in WaitForEvent: it waits
};

class Keyboard : public uefi::SimpleTextInputProtocol {
  public:
    explicit Keyboard(ServiceFaults& faults);

    // Called, on the image's stack, whenever the image asks for a key and the queue is empty.
    void on_wanted(std::function<void(KeyWant)> wanted) { wanted_ = std::move(wanted); }

    void press(uefi::InputKey key) { queue_.push_back(key); }
    // Puts a key into the queue at the n-th call of ReadKeyStroke from now, counted from 1.
    void press_at_poll(std::uint64_t n, uefi::InputKey key) {
        scheduled_.emplace(polls_ + n + (waits_at_prompt_ ? 1 : 0), key);
    }
    bool empty() const { return queue_.empty(); }
    void clear();

    // Where the image's stack ends; nothing above is looked at.
    void stack_ends_at(const void* end) { stack_end_ = static_cast<const std::uint64_t*>(end); }

    // Calls of ReadKeyStroke so far.
    std::uint64_t polls() const { return polls_; }

    // Called while the image spins: from now on a poll from this very place counts as waiting at once.
    void learn_spin_place(std::uint64_t code_base, std::uint64_t code_size);

    // Waits, through `on_wanted`, until the queue holds a key.
    uefi::Status wait();

  private:
    static uefi::Status EFIAPI reset(uefi::SimpleTextInputProtocol* self, std::uint8_t extended_verification);
    static uefi::Status EFIAPI read_key_stroke(uefi::SimpleTextInputProtocol* self, uefi::InputKey* key);

    bool is_spinning(const std::uint64_t* frame);

    ServiceFaults& faults_;
    std::function<void(KeyWant)> wanted_;
    std::deque<uefi::InputKey> queue_;
    std::multimap<std::uint64_t, uefi::InputKey> scheduled_;  // by poll number
    std::uint64_t polls_ = 0;
    // In the prompt's wait for the event. Its next look takes the key for which it waits, as the look does in
    // which the prompt is found without waiting; only what comes behind it is counted.
    bool waits_at_prompt_ = false;

    // What tells spinning from polling: the time the image takes between two polls, and the stack at them.
    static constexpr std::size_t watched_words = 24;
    std::uint64_t last_poll_ticks_ = 0;       // time stamp when the last poll returned
    std::uint64_t quick_polls_ = 0;           // polls in a row with hardly any time in between
    std::uint64_t looks_from_one_place_ = 0;  // polls since the last key, with hardly any time in between
    const std::uint64_t* stack_end_ = nullptr;
    const std::uint64_t* last_frame_ = nullptr;
    std::array<std::uint64_t, watched_words> last_words_{};  // of the last poll's frame
    struct StackWord {
        std::size_t offset;  // in words above the frame
        std::uint64_t value;
    };
    std::vector<StackWord> spin_place_;  // return addresses
};

}  // namespace korvane::host

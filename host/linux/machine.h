// A machine that runs one UEFI application on the hosted firmware,
// and stops whenever the application wants a key.
//
//     Machine machine(config, ImageSource::file("build/korvane.efi"));
//     while (machine.run() == Stop::waits_for_key) machine.firmware().keyboard().press(...);
//
// The application runs on a stack of its own; between two calls of run() it stands still, so that its screen
// and memory can be looked at, and the process may be forked.
#pragma once

#include <signal.h>
#include <ucontext.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "config.h"
#include "firmware.h"
#include "image_loader.h"
#include "platform/uefi.h"

namespace korvane::host {

using EntryPoint = uefi::Status(EFIAPI*)(uefi::Handle, uefi::SystemTable*);

// The application: a file, or code that is linked into this program.
struct ImageSource {
    // Of the file; with linked code, of the file that stands for it on the volume.
    std::filesystem::path path;
    EntryPoint linked_code = nullptr;  // run instead of the file's code

    static ImageSource file(std::filesystem::path path) { return {std::move(path), nullptr}; }
};

enum class Stop {
    waits_for_key,  // nothing happens before a key is pressed
    polls_key,      // it asked for a key in passing; only when Machine::stop_at_polls asks for it
    timed_out,      // the time limit of run() has passed, see Machine::fault_report; the machine cannot go on
    returned,       // the application ended; see Machine::status
    fault,          // it broke the processor's rules; see Machine::fault_report
};

// Exists in a forked process while it plays on the machine, which is a double of the other process's: memory
// is copied by the fork. Machines elsewhere have to do something about it.
struct MachineDouble {
    MachineDouble() {}
};

class Machine {
  public:
    // Ends the program with a message when the image cannot be loaded.
    Machine(Config config, ImageSource source);
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    Firmware& firmware() { return firmware_; }

    // Starts the application, or lets it go on, until something that `Stop` names. The limit
    // is in processor time; 0 is none.
    Stop run(std::chrono::milliseconds limit = {});

    // True when the application waits in WaitForEvent, false when it asks again and again.
    bool waits_in_event() const { return waits_in_event_; }

    // Makes run() also stop at polls, at most once in this many microseconds; 0 never.
    void stop_at_polls(std::uint64_t microseconds) { poll_interval_ = microseconds; }

    // The status that the application returned.
    uefi::Status status() const { return status_; }
    // What went wrong and where, with the offset in the image.
    const std::string& fault_report() const { return fault_report_; }

    // Called while the application waits in the line editor's loop for a key: later polls from the same
    // place stop the machine at once instead of after some milliseconds.
    void learn_waiting_place();

  private:
    static void on_signal(int number, siginfo_t* information, void* context);
    static void on_time_limit(int number, siginfo_t* information, void* context);
    static void start_on_own_stack();

    void key_wanted(KeyWant want);
    void switch_to_host(Stop stop);
    void switch_to_image();
    void install_signal_handlers();
    bool runs_at(std::uint64_t place) const;
    std::string describe_place(std::uint64_t place) const;
    std::string describe_fault(int number, const siginfo_t& information, const ucontext_t& context) const;

    ImageSource source_;
    Firmware firmware_;
    std::optional<LoadedImage> image_;
    EntryPoint entry_point_ = nullptr;

    bool started_ = false;
    bool waits_in_event_ = false;
    int ticks_past_limit_ = 0;
    ucontext_t host_context_{};
    ucontext_t image_context_{};
    void* host_fiber_ = nullptr;  // AddressSanitizer's notes about the two stacks
    void* image_fiber_ = nullptr;
    const void* host_stack_ = nullptr;
    std::size_t host_stack_size_ = 0;
    std::unique_ptr<std::uint8_t[]> signal_stack_;
    Stop stop_ = Stop::returned;
    uefi::Status status_ = uefi::success;
    std::string fault_report_;
    std::uint64_t stopped_at_ = 0;      // where the time limit passed
    std::uint64_t poll_interval_ = 0;   // microseconds
    std::uint64_t last_poll_stop_ = 0;  // microseconds of the monotonic clock
};

}  // namespace korvane::host

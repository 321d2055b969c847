// The interpreter's image on the hosted firmware, driven by lines typed at its prompt and timed from outside.
//
// Times are processor time of this process, user and system, so that other work on the machine does not count
// as the image's; it still shows in caches and memory.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "machine.h"
#include "temporary_folder.h"

namespace korvane::bench {

// The processor time of this process, in seconds.
double processor_seconds();

// Whatever goes wrong ends the program with a message.
class Session {
  public:
    // Starts the image on a screen of this many pixels, up to its prompt.
    Session(const std::filesystem::path& image, std::uint32_t width, std::uint32_t height);

    host::Machine& machine() { return machine_; }

    // A file on the session's volume.
    std::filesystem::path file(std::string_view name) const { return folder_.path() / name; }

    // Types a line; comes back when the image waits for a key again.
    void enter(std::string_view line);

    // Types a direct command; the seconds from its Return key until the prompt is there again.
    double seconds_of(std::string_view command);

    // The seconds from this key until the image waits for the next one.
    double seconds_after(char key);

    // Tells the keyboard that the image waits for a key where it now stands,
    // so that it need not find out again.
    void learn_waiting_place() { machine_.learn_waiting_place(); }

  private:
    void press(std::string_view keys);
    void run_until_waiting();

    test::TemporaryFolder folder_;
    host::Machine machine_;
};

// A BASIC program that works whenever the host asks for it.
class WaitingProgram {
  public:
    // Loads and starts a program of numbered lines, below 999,990, that waits for a key by INPUT$(1) before
    // each piece of its work, and goes to line 999999 when the key is "q".
    WaitingProgram(Session& session, const std::string& text);

    // Presses that key; a program that an error has ended before is noticed.
    ~WaitingProgram();
    WaitingProgram(const WaitingProgram&) = delete;
    WaitingProgram& operator=(const WaitingProgram&) = delete;

    // The seconds that a piece of work takes.
    double seconds() { return session_.seconds_after(' '); }

  private:
    Session& session_;
};

// A program for WaitingProgram: the lines of `preparation`, numbered from 1000 on, are executed once, the
// statement `count` times at each key. It may end in a loop of its own.
std::string repeating_program(const std::vector<std::string>& preparation, const std::string& statement,
                              int count);

// Ends the program with a message on standard error.
[[noreturn]] void give_up(const std::string& reason);

}  // namespace korvane::bench

// The interpreter linked into a test, running on the hosted firmware: lines are typed, and between them the
// test looks at the interpreter's own state. One session at a time;
// a volume in a scratch folder belongs to it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "machine.h"
#include "temporary_folder.h"

namespace korvane::test {

inline constexpr char escape_key = 27;  // stands for the key, which has no character, among keys

class LinkedSession {
  public:
    // Starts the interpreter in this screen mode, up to its prompt.
    LinkedSession(std::uint32_t width, std::uint32_t height);

    // Runs until the queue is empty and the next key is wanted; as type().
    bool run();

    // Types a line and Enter and runs until the next key is wanted; false when the interpreter broke down,
    // see problem().
    bool type(std::string_view line);

    // Presses Escape and runs until the next key is wanted; as type().
    bool press_escape();

    // Puts keys into the keyboard's queue, to be read whenever the interpreter looks;
    // `escape_key` is Escape.
    void queue_keys(std::string_view keys);

    void write_file(const std::string& name, std::string_view content) const;

    // The folder that is the volume.
    const std::filesystem::path& folder() const { return folder_.path(); }

    // What the firmware complains about, or how the interpreter broke down; empty when all is well.
    std::string problem() const;

    host::Machine& machine() { return machine_; }

  private:
    static host::Config make_config(std::uint32_t width, std::uint32_t height,
                                    const std::filesystem::path& folder);

    TemporaryFolder folder_;
    host::Machine machine_;
    bool broke_down_ = false;
};

}  // namespace korvane::test

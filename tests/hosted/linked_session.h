// The interpreter linked into a test, running on the hosted firmware: lines are typed, and between them the
// test looks at the interpreter's own state. One session at a time; a volume in a scratch folder belongs to
// it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "machine.h"

namespace korvane::test {

class LinkedSession {
  public:
    /// Starts the interpreter in this screen mode, up to its prompt.
    LinkedSession(std::uint32_t width, std::uint32_t height);
    ~LinkedSession();
    LinkedSession(const LinkedSession&) = delete;
    LinkedSession& operator=(const LinkedSession&) = delete;

    /// Types a line and Enter and runs until the next key is wanted; false when the interpreter broke down,
    /// see problem().
    bool type(std::string_view line);

    /// Presses Escape and runs until the next key is wanted; as type().
    bool press_escape();

    void write_file(const std::string& name, std::string_view content) const;

    /// What the firmware complains about, or how the interpreter broke down; empty when all is well.
    std::string problem() const;

    host::Machine& machine() { return machine_; }

  private:
    static host::Config make_config(std::uint32_t width, std::uint32_t height,
                                    const std::filesystem::path& folder);

    std::filesystem::path folder_;
    host::Machine machine_;
    bool broke_down_ = false;
};

}  // namespace korvane::test

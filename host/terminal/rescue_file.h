// Keeps a program that is in no file yet, for the case that the session ends before it is saved.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "folder.h"

namespace korvane::host {

// A file in the volume's folder, hidden while the session lives: however that ends, the file stays. The next
// session in the folder gives it a name that can be loaded. Where the folder cannot be written, a folder of
// the user's is used.
class RescueFile {
  public:
    explicit RescueFile(std::filesystem::path volume);

    // Names what earlier sessions have left; a line that says so, or nothing.
    std::string adopt();

    // Puts this program in the place of the one kept before. False when it cannot be written.
    bool keep(std::string_view program);

    // There is nothing to be kept any more.
    void drop();

  private:
    bool keep_in(const std::filesystem::path& folder, std::string_view program);

    std::filesystem::path volume_;
    std::filesystem::path kept_;  // the file; empty when there is none
    Descriptor lock_;  // the same, open and locked: a file without a lock belongs to a session that is over
};

}  // namespace korvane::host

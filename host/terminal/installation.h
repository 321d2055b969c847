// What a terminal that is installed finds by itself: the image, the examples, and a volume
// at the user's home.
#pragma once

#include <filesystem>
#include <string_view>

namespace korvane::host {

// The version of this program and of the image that is made with it.
extern const std::string_view version;

// What this program was called as: installed it has another name than in a build tree.
std::string_view program_name();

// The image in the folder "share/korvane" beside the one that this program lies in; empty when there is
// none, as in a build tree.
std::filesystem::path installed_image();

// The folder "korvane-files" at the user's home, which begins with the installed examples. Fails with
// std::filesystem::filesystem_error where it cannot be made; empty without a home.
std::filesystem::path volume_at_home();

}  // namespace korvane::host

#include "installation.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace korvane::host {
namespace {

namespace fs = std::filesystem;

// Relative to the program, so that an installation works wherever it has been put.
fs::path shared_folder() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    return program.parent_path().parent_path() / "share" / "korvane";
}

// The installed files may be write-protected; the copies are the user's own. Under another name
// until all are there.
void make_volume(const fs::path& volume) {
    const fs::path unfinished = volume.string() + ".new";
    fs::remove_all(unfinished);
    fs::create_directories(unfinished);
    std::error_code no_examples;
    for (const fs::directory_entry& example :
         fs::directory_iterator(shared_folder() / "examples", no_examples)) {
        const fs::path copy = unfinished / example.path().filename();
        fs::copy_file(example.path(), copy);
        fs::permissions(copy, fs::perms::owner_write, fs::perm_options::add);
    }
    fs::rename(unfinished, volume);
}

}  // namespace

const std::string_view version = KORVANE_VERSION;

std::string_view program_name() {
    return program_invocation_short_name;
}

fs::path installed_image() {
    const fs::path image = shared_folder() / "korvane.efi";
    std::error_code error;
    return fs::is_regular_file(image, error) ? image : fs::path{};
}

fs::path volume_at_home() {
    const char* const home = std::getenv("HOME");
    if (home == nullptr || *home == '\0') return {};
    const fs::path volume = fs::path(home) / "korvane-files";
    if (!fs::exists(volume)) make_volume(volume);
    return volume;
}

}  // namespace korvane::host

#include "rescue_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "host_text.h"

namespace korvane::host {
namespace {

constexpr std::string_view hidden_prefix = ".korvane-unsaved-";
constexpr std::string_view rescued_stem = "RESCUE";

// For users whose volume cannot be written; empty when they have no place either.
std::filesystem::path users_folder() {
    if (const char* state = std::getenv("XDG_STATE_HOME"); state != nullptr && *state == '/')
        return std::filesystem::path(state) / "korvane";
    if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/')
        return std::filesystem::path(home) / ".local" / "state" / "korvane";
    return {};
}

// True for a file, and nothing else of that name, that no session that lives has locked.
bool is_left_over(const std::filesystem::path& file) {
    // A pipe would be waited for.
    const Descriptor opened(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status {};
    return opened && fstat(opened.number(), &status) == 0 && S_ISREG(status.st_mode) &&
           flock(opened.number(), LOCK_EX | LOCK_NB) == 0;
}

std::vector<std::filesystem::path> left_over_files(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(hidden_prefix) && is_left_over(entry.path())) files.push_back(entry.path());
    }
    return files;
}

// Gives the file the first free name; empty when that cannot be done.
std::filesystem::path rename_to_free_name(const std::filesystem::path& file) {
    constexpr int most_names = 1000;
    const std::filesystem::path folder = file.parent_path();
    for (int number = 1; number < most_names; ++number) {
        std::string name(rescued_stem);
        if (number > 1) name += std::to_string(number);
        name += ".BAS";
        if (Folder(folder).find({}, name)) continue;
        if (renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, (folder / name).c_str(), RENAME_NOREPLACE) == 0)
            return folder / name;
    }
    return {};
}

bool write_whole(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t length = write(file, bytes.data(), bytes.size());
        if (length <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(length));
    }
    return true;
}

}  // namespace

RescueFile::RescueFile(std::filesystem::path volume) : volume_(std::move(volume)) {}

std::string RescueFile::adopt() {
    std::string line;
    const auto adopt_in = [&](const std::filesystem::path& folder) {
        if (folder.empty()) return;
        for (const std::filesystem::path& file : left_over_files(folder)) {
            const std::filesystem::path adopted = rename_to_free_name(file);
            if (adopted.empty()) continue;
            const bool can_be_loaded = folder == volume_;
            line = "A program that was not saved has been kept: ";
            line += can_be_loaded ? "LOAD \"" + adopted.stem().string() + '"' : adopted.string();
        }
    };
    adopt_in(users_folder());
    adopt_in(volume_);
    return line;
}

bool RescueFile::keep(std::string_view program) {
    if (keep_in(volume_, program)) return true;
    const std::filesystem::path folder = users_folder();
    std::error_code error;
    if (!folder.empty()) std::filesystem::create_directories(folder, error);
    return keep_in(folder, program);
}

// The old file stays until the new one is complete.
bool RescueFile::keep_in(const std::filesystem::path& folder, std::string_view program) {
    if (folder.empty()) return false;
    const std::filesystem::path file = folder / (std::string(hidden_prefix) + std::to_string(getpid()));
    const std::filesystem::path draft =
        folder / (std::string(own_name_prefix) + "draft-" + std::to_string(getpid()));
    unlink(draft.c_str());  // of a process that had the same number, or whatever else it is
    Descriptor opened(open(draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!opened || flock(opened.number(), LOCK_EX | LOCK_NB) != 0) return false;
    if (!write_whole(opened.number(), to_host_text(program)) ||
        std::rename(draft.c_str(), file.c_str()) != 0) {
        unlink(draft.c_str());
        return false;
    }
    if (!kept_.empty() && kept_ != file) unlink(kept_.c_str());
    kept_ = file;
    lock_ = std::move(opened);
    return true;
}

void RescueFile::drop() {
    if (!kept_.empty()) unlink(kept_.c_str());
    kept_.clear();
    lock_ = {};
}

}  // namespace korvane::host

// A folder of the host as a sandbox: nothing outside it can be reached through any name, link or race.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::host {

// An open file descriptor, closed when its owner goes.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;

    explicit operator bool() const { return number_ >= 0; }
    int number() const { return number_; }

  private:
    int number_ = -1;
};

// Files whose names begin so are the host side's own and not listed.
inline constexpr std::string_view own_name_prefix = ".korvane-";

// The names that lead from the folder to a file, as the host spells them; empty for the folder itself.
using FolderPath = std::vector<std::string>;

// Names match without regard to case, as on FAT. Only regular files and directories with names that FAT
// could hold exist; links and special files do not.
class Folder {
  public:
    // Ends the program with a message when the folder cannot be opened.
    explicit Folder(const std::filesystem::path& folder);

    // The host's spelling of a name in a directory, or nothing when there is no such entry.
    std::optional<std::string> find(const FolderPath& directory, std::string_view name) const;

    std::optional<struct stat> status(const FolderPath& path) const;

    // In the order of creation: first, by name, what was there at the beginning.
    std::vector<std::string> list(const FolderPath& directory) const;

    // No descriptor on failure. `flags` are those of open(2).
    Descriptor open(const FolderPath& path, int flags) const;
    bool create_file(const FolderPath& path);
    bool create_directory(const FolderPath& path);
    // Directories must be empty.
    bool remove(const FolderPath& path);
    // Never replaces an existing entry.
    bool rename(const FolderPath& from, const FolderPath& to);

  private:
    Descriptor open_beneath(const std::string& path, int flags, unsigned mode) const;
    std::optional<std::pair<Descriptor, std::string>> open_parent(const FolderPath& path) const;
    // The names in a directory that FAT could hold, in no order; links and special files are among them.
    std::vector<std::string> names_in(const FolderPath& directory) const;
    // Those of these names in a directory that exist, in the order of the listing.
    std::vector<std::string> in_order(const FolderPath& directory, std::vector<std::string> names) const;
    void note_creation(const FolderPath& path);

    Descriptor root_;
    std::map<std::string, std::uint64_t> creation_;  // of each path made here, the number of its creation
    std::uint64_t creations_ = 0;
};

// Letters A to Z folded; other bytes exactly.
bool same_name(std::string_view left, std::string_view right);

// True for a name that FAT allows, as UTF-8: 1 to 255 characters of UTF-16, none of them a control
// character, one of "*/:<>?\| or of the private or half-width blocks from U+FF80 on; neither "." nor "..".
bool is_legal_name(std::string_view name);

}  // namespace korvane::host

// A folder of the host as a sandbox: nothing outside it can be reached through any name, link or race. And
// the host's files. What host it is, host/linux/folder.cpp and its like know.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host_clock.h"

namespace korvane::host {

// What the host knows of a file or folder.
struct FileStatus {
    bool is_directory;
    bool is_read_only;
    std::uint64_t size;  // bytes
    HostTime modified;
    HostTime accessed;
};

// An open file of the host, closed when its owner goes.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    explicit operator bool() const { return number_ >= 0; }
    int number() const { return number_; }

    // All of these give nothing, or false, on failure.
    std::optional<FileStatus> status() const;
    // How many bytes there were, fewer than `size` only at the file's end.
    std::optional<std::uint64_t> read(void* buffer, std::uint64_t size, std::uint64_t offset) const;
    std::optional<std::uint64_t> write(const void* buffer, std::uint64_t size, std::uint64_t offset) const;
    bool resize(std::uint64_t size) const;

  private:
    int number_ = -1;
};

// A file of the host by its name, or a new one that has none and goes with its descriptor. No descriptor on
// failure.
Descriptor open_host_file(const std::string& name, bool for_writing);
Descriptor make_nameless_file();

// Files whose names begin so are the host side's own and not listed.
inline constexpr std::string_view own_name_prefix = ".korvane-";

// The names that lead from the folder to a file, as the host spells them; empty for the folder itself.
using FolderPath = std::vector<std::string>;

// Names match without regard to case, as on FAT. Only regular files and directories with names that FAT
// could hold exist; links and special files do not.
class Folder {
  public:
    // Ends the program with a message when the folder cannot be opened.
    explicit Folder(const std::string& folder);
    ~Folder();
    Folder(Folder&& other) noexcept;
    Folder& operator=(Folder&& other) noexcept;

    // The host's spelling of a name in a directory, or nothing when there is no such entry.
    std::optional<std::string> find(const FolderPath& directory, std::string_view name) const;

    std::optional<FileStatus> status(const FolderPath& path) const;

    // In the order of creation: first, by name, what was there at the beginning.
    std::vector<std::string> list(const FolderPath& directory) const;

    // No descriptor on failure.
    Descriptor open(const FolderPath& path, bool for_writing) const;
    bool create_file(const FolderPath& path);
    bool create_directory(const FolderPath& path);
    // Directories must be empty.
    bool remove(const FolderPath& path);
    // Never replaces an existing entry.
    bool rename(const FolderPath& from, const FolderPath& to);

    // The bytes of a file are on the volume as they shall be: it was closed, or flushed.
    void settled(const FolderPath& path) const;

  private:
    struct Sandbox;
    std::unique_ptr<Sandbox> sandbox_;
};

}  // namespace korvane::host

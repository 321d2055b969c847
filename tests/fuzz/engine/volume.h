// A volume in memory: the simple file system protocol over a list of files, as quick to put back as to make.
//
// It keeps the rules of FAT that programs can see: names without regard to case, directories with "." and
// "..", a deletion that warns.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/uefi.h"
#include "service_faults.h"

namespace korvane::fuzz {

// What a volume may do without telling.
enum class Lie {
    none,
    half_read,    // half of what was asked for, as at the end of a file
    empty_read,   // nothing, as at the end
    half_write,   // half, and says so by the size alone
    long_name,    // information whose name has no end in it
    huge_size,    // information about a file of nearly 2^64 bytes
    pulled_stick  // the media is gone from then on
};

class Volume : public uefi::SimpleFileSystemProtocol {
  public:
    explicit Volume(host::ServiceFaults& faults);
    Volume(const Volume&) = delete;

    // Adds or replaces a file; the folders in front of the last "/" are made.
    void put_file(std::string_view path, std::string content);
    const std::string* file(std::string_view path) const;
    // Every file by its path, with its content; folders have a "/" at their end, and none.
    std::map<std::string, std::string> files() const;

    // What reading a directory gives instead of its entries: these bytes, a record at each read, until none
    // is left. Each record begins with its length in one byte.
    void set_raw_directory(std::string bytes) { raw_directory_ = std::move(bytes); }
    // Bytes by which files may still grow.
    void set_room(std::uint64_t bytes) { room_ = bytes; }
    // The media has gone: every use fails from now on.
    void pull() { pulled_ = true; }

    // Lies at this use of the volume's services, counted from now.
    void lie_at(std::uint64_t use, Lie lie);
    // Uses of services since lie_at().
    std::uint64_t uses() const { return uses_; }

    std::size_t open_handles() const;

    // What the volume holds now is what put_back() brings back; handles that are open stay open.
    void save();
    void put_back();

  private:
    struct Node {
        std::string name;
        std::string bytes;
        std::size_t parent = 0;
        bool directory = false;
        bool gone = false;
    };
    struct Handle : uefi::FileProtocol {
        Volume* volume = nullptr;
        std::size_t node = 0;
        std::uint64_t position = 0;
        bool open = true;
        bool writable = false;
    };
    struct Services;

    static constexpr std::size_t none = ~std::size_t{0};

    bool lies(Lie lie) const { return lie_ == lie && uses_ == lie_at_; }
    uefi::FileProtocol* add_handle(std::size_t node, bool writable);
    std::size_t find(std::size_t directory, std::string_view name) const;
    std::size_t add_node(std::size_t directory, std::string_view name, bool is_directory);
    bool is_empty(std::size_t directory) const;
    uefi::Status read_entry(Handle& directory, std::uint64_t* size, void* buffer);
    uefi::Status put_information(const Node& node, std::string_view name, std::uint64_t* size,
                                 void* buffer) const;

    host::ServiceFaults& faults_;
    std::vector<Node> nodes_;
    std::vector<Node> saved_nodes_;
    std::deque<Handle> handles_;  // closed ones stay, so that their use is noticed
    std::deque<Handle> saved_handles_;
    std::optional<std::string> raw_directory_;
    std::uint64_t room_ = 1 << 20;
    std::uint64_t saved_room_ = 1 << 20;
    bool changed_ = false;  // since it was saved
    bool pulled_ = false;
    Lie lie_ = Lie::none;
    std::uint64_t lie_at_ = 0;
    std::uint64_t uses_ = 0;
};

}  // namespace korvane::fuzz

// Open files and directories of the firmware, owned and borrowed.
#pragma once

#include <cstdint>
#include <optional>

#include "files/firmware_name.h"
#include "platform/uefi.h"

namespace korvane {

// Transfers and positions of an open file, owned or borrowed. They return false when the firmware reports an
// error and when `file` is null; a warning counts as success.

// Reads or writes at the position. `size` goes in as the bytes wanted and comes out as the bytes done, which
// may be fewer; it is 0 after a failure and never more than was wanted.
bool read_file(uefi::FileProtocol* file, void* buffer, std::uint64_t& size);
bool write_file(uefi::FileProtocol* file, const void* buffer, std::uint64_t& size);

bool set_file_position(uefi::FileProtocol* file, std::uint64_t position);

// The file's length in bytes, found by going to its end; the position is restored.
bool find_file_size(uefi::FileProtocol* file, std::uint64_t& size);

// Owns a firmware file handle; closes it when it goes out of scope. On an empty handle every operation fails.
class FileHandle {
  public:
    FileHandle() = default;
    explicit FileHandle(uefi::FileProtocol* protocol) : protocol_(protocol) {}
    FileHandle(FileHandle&& other) noexcept : protocol_(other.release()) {}
    FileHandle& operator=(FileHandle&& other) noexcept;
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle() { close(); }

    explicit operator bool() const { return protocol_ != nullptr; }
    uefi::FileProtocol* get() const { return protocol_; }

    // Gives the handle away: the caller closes it.
    uefi::FileProtocol* release();
    void close();

    // As the functions above.
    bool read(void* buffer, std::uint64_t& size) const { return read_file(protocol_, buffer, size); }
    bool write(const void* buffer, std::uint64_t& size) const { return write_file(protocol_, buffer, size); }
    bool set_position(std::uint64_t position) const { return set_file_position(protocol_, position); }
    bool find_size(std::uint64_t& size) const { return find_file_size(protocol_, size); }

    // The whole of `size` bytes in one firmware call, or false.
    bool read_exactly(void* buffer, std::uint64_t size) const;
    bool write_exactly(const void* buffer, std::uint64_t size) const;

    // Deletes the file and closes the handle in every case. False also on the firmware's warning that the
    // file is still there.
    bool remove();

  private:
    uefi::FileProtocol* protocol_ = nullptr;
};

// Opens a firmware name (FirmwareName::text, or a name that came from the firmware) below `directory` with a
// firmware open mode and attributes. Empty on any failure, an empty name and a null directory included.
FileHandle open_below(uefi::FileProtocol* directory, const char16_t* name, std::uint64_t firmware_mode,
                      std::uint64_t attributes = 0);

// The attribute mask of a file or directory (uefi::file_directory and so on); nothing for null and when the
// firmware does not tell.
std::optional<std::uint64_t> file_attributes(uefi::FileProtocol* file);

// True when the handle is a directory; false for a file, for null and when the firmware does not tell.
bool IsDirectory(uefi::FileProtocol* file);

// Gives an open file a new name (at most 254 characters), by the firmware's own rules.
bool set_file_name(uefi::FileProtocol& file, const FirmwareName& name);

}  // namespace korvane

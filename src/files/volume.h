// The one path from a BASIC file name to a firmware file handle.
//
// Every file that the interpreter touches lives on one volume: the volume from which its own image was
// loaded. There are no drive letters and no mounting; names that begin with a separator start at the volume's
// root, other names at the current directory when CHDIR has set one, else at the root, and the firmware
// resolves them.
//
// Both directories may go away while the interpreter runs: the current one may be deleted, and a stick may be
// pulled out and put back. Nobody tells, so when a name cannot be opened, it is asked whether its directory
// is still there; if not, the volume is looked for anew, and the current directory by its name.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/uefi.h"
#include "program/token.h"

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

// A name as the firmware takes it: each byte widened as a signed character (so 0x80 becomes 0xFF80), every
// "/" turned into "\", at most 255 characters, zero-terminated. A zero byte ends the name.
struct FirmwareName {
    static constexpr std::uint32_t max_length = 255;

    char16_t text[max_length + 1];
    std::uint32_t length;

    explicit FirmwareName(std::string_view name);
    bool empty() const { return length == 0; }
};

enum class OpenMode : std::uint8_t {
    read,    // an existing file
    create,  // a new, empty file; an existing one is deleted first
    append,  // created when missing; positioned at its end
    update,  // created when missing; read and written from its start
};

struct Volume {
    static constexpr std::uint32_t max_path = 511;  // characters

    uefi::FileProtocol* root;               // the volume's root, or null until first needed; never closed
    uefi::FileProtocol* current_directory;  // set by CHDIR; null also when it has gone
    // Where the current directory was when CHDIR found it: its name from the root. Empty means the root; a
    // name that is too long to be kept is replaced by "?", which is none.
    char16_t current_path[max_path + 1];
};
extern Volume volume;

// Start-up: no root yet, no current directory.
void initialize_volume();

// The root directory of the volume the image came from, or null; a failure is tried again on the next call.
uefi::FileProtocol* GetVolumeRoot();

// Where relative names start: the current directory, else the root; null when there is none or it has gone.
uefi::FileProtocol* base_directory();

// The same after a look whether it is still there.
uefi::FileProtocol* live_base_directory();

// Makes the directory, which was opened under `name`, current and closes the previous one.
void set_current_directory(FileHandle directory, const FirmwareName& name);

// Opens a firmware name (FirmwareName::text, or a name that came from the firmware) below `directory` with a
// firmware open mode and attributes. Empty on any failure, an empty name and a null directory included.
FileHandle open_below(uefi::FileProtocol* directory, const char16_t* name, std::uint64_t firmware_mode,
                      std::uint64_t attributes = 0);

// The same for a name from the user, from the root or the base directory; a directory that has gone is looked
// for anew.
FileHandle open_named(const FirmwareName& name, std::uint64_t firmware_mode, std::uint64_t attributes = 0);

// The same for a firmware name that starts at the root whether it begins with a separator or not.
FileHandle open_from_root(const char16_t* name, std::uint64_t firmware_mode, std::uint64_t attributes = 0);

// Opens a file relative to the base directory. The running image is never created anew. Empty on any failure;
// raises nothing.
FileHandle OpenFileByName(std::string_view name, OpenMode mode);

// True when the file could be opened for writing and deleted. Raises nothing.
bool DeleteFileByName(std::string_view name);

// Gives a file or directory a new name (at most 254 characters), by the firmware's own rules. Raises nothing.
bool RenameFileByName(std::string_view old_name, std::string_view new_name);

// The attribute mask of a file or directory (uefi::file_directory and so on); nothing for null and when the
// firmware does not tell.
std::optional<std::uint64_t> file_attributes(uefi::FileProtocol* file);

// True when the handle is a directory; false for a file, for null and when the firmware does not tell.
bool IsDirectory(uefi::FileProtocol* file);

inline constexpr std::uint32_t path_capacity = 512;  // bytes of a path argument with its terminating zero
inline constexpr std::uint32_t file_name_capacity = 128;  // the same of a file name argument

// A path argument, cut to 511 characters and zero-terminated. Raises "Type mismatch" and, for an empty text,
// "Path not found"; false after an error.
bool GetPathArgument(Cursor& cursor, char (&buffer)[path_capacity]);

// A file name argument of the statements that read and write contents, cut to 127 characters. An empty name
// raises nothing here. On error ("Type mismatch") the length is 0.
struct FileName {
    char text[file_name_capacity];  // zero-terminated
    std::uint32_t length;

    std::string_view view() const { return {text, length}; }

    // Appends ".ext" (given with its dot) when no dot follows the last "/", "\" or ":". Raises "Bad file
    // name" and gives false when the name would reach 128 characters.
    bool add_default_extension(std::string_view extension);
};
FileName read_file_name(Cursor& cursor);

}  // namespace korvane

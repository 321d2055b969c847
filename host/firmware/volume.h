// The simple file system protocol over a folder of the host, with the rules of FAT.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "config.h"
#include "folder.h"
#include "misuse.h"
#include "platform/uefi.h"
#include "service_faults.h"

namespace korvane::host {

class Volume;

// One handle of the file protocol. Handles stay in memory after they are closed,
// so that their use is noticed.
struct OpenFile : uefi::FileProtocol {
    OpenFile(Volume& its_volume, FolderPath its_path);

    Volume& volume;
    FolderPath path;
    Descriptor descriptor;  // of a regular file
    bool directory = false;
    bool writable = false;
    bool closed = false;
    bool lent = false;                 // the folder does not hold it
    bool fresh = false;                // made by this handle, or emptied just before
    bool write_failed = false;         // the last write, unless the position has been set since
    std::uint64_t position = 0;        // bytes in a file, entries in a directory
    std::vector<std::string> entries;  // of a directory, read when its listing begins
};

// A file that is there without the folder holding it; it is not listed. One that is writable is emptied
// where others are deleted.
struct LentFile {
    std::vector<std::string> path;
    std::string source;  // its name on the host
    bool writable = false;
};

class Volume : public uefi::SimpleFileSystemProtocol {
  public:
    Volume(const VolumeConfig& config, ServiceFaults& faults, Misuse& misuse);

    // Puts another folder in the place of this one. Open handles keep their paths.
    void replace_folder(const std::string& folder) { folder_ = Folder(folder); }
    // A file that the folder holds itself is not lent.
    void lend(LentFile file);
    const std::vector<LentFile>& lent() const { return lent_; }

    // What read_program() tells about the program that was opened last for reading, with the file's name.
    struct ProgramNotes {
        std::string fault;
        std::string loss;
    };
    const ProgramNotes& program_notes() const { return program_notes_; }
    void forget_program_notes() { program_notes_ = {}; }

    // The host itself has put so many bytes into the folder's files, or taken them out.
    void host_put(std::uint64_t bytes) { free_bytes_ -= bytes < free_bytes_ ? bytes : free_bytes_; }
    void host_took(std::uint64_t bytes) { free_bytes_ += bytes; }

    // The media has gone: every use of the volume and of its files fails so from now on.
    void lose(uefi::Status status) { lost_ = status; }

    // Handles that are open, the volume's root included; none of a volume that has gone.
    std::vector<const OpenFile*> open_files() const;

  private:
    friend struct FileServices;

    static uefi::Status EFIAPI open_volume(uefi::SimpleFileSystemProtocol* self, uefi::FileProtocol** root);

    OpenFile* add_handle(FolderPath path);

    Folder folder_;
    bool read_only_;
    std::uint64_t size_;
    std::uint64_t free_bytes_;
    std::u16string label_;
    std::vector<LentFile> lent_;
    bool host_programs_;
    ProgramNotes program_notes_;
    uefi::Status lost_ = uefi::success;
    ServiceFaults& faults_;
    Misuse& misuse_;
    std::vector<std::unique_ptr<OpenFile>> handles_;
};

}  // namespace korvane::host

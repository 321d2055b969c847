#include "folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <map>
#include <memory>
#include <utility>

#include "fat_names.h"
#include "give_up.h"

namespace korvane::host {

namespace {

std::string join(const FolderPath& path) {
    std::string joined = ".";
    for (const std::string& name : path)
        joined += '/' + name;
    return joined;
}

FolderPath parent_of(const FolderPath& path) {
    return {path.begin(), path.end() - 1};
}

HostTime to_host_time(const std::timespec& time) {
    return {time.tv_sec, static_cast<std::uint32_t>(time.tv_nsec)};
}

// Nothing when the number is no open file, or one of another kind than files and directories.
std::optional<FileStatus> status_of(const Descriptor& file) {
    struct stat status {};
    if (!file || fstat(file.number(), &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) return std::nullopt;
    return FileStatus{S_ISDIR(status.st_mode), (status.st_mode & S_IWUSR) == 0,
                      static_cast<std::uint64_t>(status.st_size), to_host_time(status.st_mtim),
                      to_host_time(status.st_atim)};
}

std::optional<std::uint64_t> transferred(ssize_t count) {
    if (count < 0) return std::nullopt;
    return static_cast<std::uint64_t>(count);
}

}  // namespace

Descriptor::~Descriptor() {
    if (number_ >= 0) close(number_);
}

std::optional<FileStatus> Descriptor::status() const {
    return status_of(*this);
}

std::optional<std::uint64_t> Descriptor::read(void* buffer, std::uint64_t size, std::uint64_t offset) const {
    return transferred(pread(number_, buffer, size, static_cast<off_t>(offset)));
}

std::optional<std::uint64_t> Descriptor::write(const void* buffer, std::uint64_t size,
                                               std::uint64_t offset) const {
    return transferred(pwrite(number_, buffer, size, static_cast<off_t>(offset)));
}

bool Descriptor::resize(std::uint64_t size) const {
    return ftruncate(number_, static_cast<off_t>(size)) == 0;
}

Descriptor open_host_file(const std::string& name, bool for_writing) {
    return Descriptor(::open(name.c_str(), (for_writing ? O_RDWR : O_RDONLY) | O_CLOEXEC));
}

Descriptor make_nameless_file() {
    return Descriptor(memfd_create("program", MFD_CLOEXEC));
}

struct Folder::Sandbox {
    Descriptor root;
    std::map<std::string, std::uint64_t> creation;  // of each path made here, the number of its creation
    std::uint64_t creations = 0;

    Descriptor open_beneath(const std::string& path, int flags, unsigned mode) const;
    std::optional<std::pair<Descriptor, std::string>> open_parent(const FolderPath& path) const;
    // The names in a directory that FAT could hold, in no order; links and special files are among them.
    std::vector<std::string> names_in(const FolderPath& directory) const;
    // Those of these names in a directory that exist, in the order of the listing.
    std::vector<std::string> in_order(const FolderPath& directory, std::vector<std::string> names) const;
    void note_creation(const FolderPath& path) { creation[join(path)] = ++creations; }
};

Descriptor Folder::Sandbox::open_beneath(const std::string& path, int flags, unsigned mode) const {
    open_how how{};
    // A pipe in the folder must not block; the kernel refuses the flag for a mere path.
    const int no_waiting = (flags & O_PATH) != 0 ? 0 : O_NONBLOCK;
    how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC | no_waiting);
    how.mode = mode;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    return Descriptor(static_cast<int>(syscall(SYS_openat2, root.number(), path.c_str(), &how, sizeof how)));
}

std::optional<std::pair<Descriptor, std::string>> Folder::Sandbox::open_parent(const FolderPath& path) const {
    if (path.empty()) return std::nullopt;
    Descriptor parent = open_beneath(join(parent_of(path)), O_RDONLY | O_DIRECTORY, 0);
    if (!parent) return std::nullopt;
    return std::pair{std::move(parent), path.back()};
}

Folder::Folder(const std::string& folder) : sandbox_(std::make_unique<Sandbox>()) {
    sandbox_->root = Descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!sandbox_->root) give_up("cannot open the folder " + folder);
}

Folder::~Folder() = default;
Folder::Folder(Folder&& other) noexcept = default;
Folder& Folder::operator=(Folder&& other) noexcept = default;

std::optional<FileStatus> Folder::status(const FolderPath& path) const {
    return status_of(sandbox_->open_beneath(join(path), O_PATH | O_NOFOLLOW, 0));
}

std::vector<std::string> Folder::Sandbox::names_in(const FolderPath& directory) const {
    std::vector<std::string> names;
    const Descriptor opened = open_beneath(join(directory), O_RDONLY | O_DIRECTORY, 0);
    if (!opened) return names;
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(fdopendir(dup(opened.number())), closedir);
    if (!stream) return names;
    rewinddir(stream.get());
    while (const dirent* entry = readdir(stream.get())) {
        const std::string_view name = static_cast<const char*>(entry->d_name);
        if (!name.starts_with(own_name_prefix) && is_legal_name(name)) names.emplace_back(name);
    }
    return names;
}

std::vector<std::string> Folder::Sandbox::in_order(const FolderPath& directory,
                                                   std::vector<std::string> names) const {
    std::vector<std::pair<std::uint64_t, std::string>> numbered;
    FolderPath path = directory;
    path.emplace_back();
    for (std::string& name : names) {
        path.back() = name;
        if (!status_of(open_beneath(join(path), O_PATH | O_NOFOLLOW, 0))) continue;
        const auto noted = creation.find(join(path));
        numbered.emplace_back(noted == creation.end() ? 0 : noted->second, std::move(name));
    }
    std::sort(numbered.begin(), numbered.end());
    names.clear();
    for (auto& [number, name] : numbered)
        names.push_back(std::move(name));
    return names;
}

std::vector<std::string> Folder::list(const FolderPath& directory) const {
    return sandbox_->in_order(directory, sandbox_->names_in(directory));
}

std::optional<std::string> Folder::find(const FolderPath& directory, std::string_view name) const {
    if (!is_legal_name(name)) return std::nullopt;
    FolderPath exact = directory;
    exact.emplace_back(name);
    if (status(exact)) return std::string(name);
    // Of several that differ only in case the first of the listing. A look at each file of a large directory
    // would take too long for one name.
    std::vector<std::string> spellings = sandbox_->names_in(directory);
    std::erase_if(spellings, [&](const std::string& entry) { return !same_name(entry, name); });
    spellings = sandbox_->in_order(directory, std::move(spellings));
    return spellings.empty() ? std::nullopt : std::optional(spellings.front());
}

Descriptor Folder::open(const FolderPath& path, bool for_writing) const {
    return sandbox_->open_beneath(join(path), for_writing ? O_RDWR : O_RDONLY, 0);
}

bool Folder::create_file(const FolderPath& path) {
    if (!sandbox_->open_beneath(join(path), O_RDWR | O_CREAT | O_EXCL, 0666)) return false;
    sandbox_->note_creation(path);
    return true;
}

bool Folder::create_directory(const FolderPath& path) {
    const auto parent = sandbox_->open_parent(path);
    if (!parent || mkdirat(parent->first.number(), parent->second.c_str(), 0777) != 0) return false;
    sandbox_->note_creation(path);
    return true;
}

bool Folder::remove(const FolderPath& path) {
    const auto found = status(path);
    const auto parent = sandbox_->open_parent(path);
    if (!found || !parent) return false;
    const int flags = found->is_directory ? AT_REMOVEDIR : 0;
    if (unlinkat(parent->first.number(), parent->second.c_str(), flags) != 0) return false;
    sandbox_->creation.erase(join(path));
    return true;
}

bool Folder::rename(const FolderPath& from, const FolderPath& to) {
    const auto old_parent = sandbox_->open_parent(from);
    const auto new_parent = sandbox_->open_parent(to);
    if (!old_parent || !new_parent) return false;
    // A change of case alone replaces the entry by itself.
    const bool same_entry = from.size() == to.size() && same_name(join(from), join(to));
    const unsigned flags = same_entry ? 0 : RENAME_NOREPLACE;
    if (renameat2(old_parent->first.number(), old_parent->second.c_str(), new_parent->first.number(),
                  new_parent->second.c_str(), flags) != 0)
        return false;
    auto& creation = sandbox_->creation;
    const auto noted = creation.find(join(from));
    if (noted != creation.end()) {
        creation[join(to)] = noted->second;
        if (join(from) != join(to)) creation.erase(join(from));
    }
    return true;
}

// The folder is the kernel's: whoever looks sees everything at once.
void Folder::settled(const FolderPath&) const {}

}  // namespace korvane::host

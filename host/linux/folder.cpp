#include "folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/characters.h"
#include "unicode.h"

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

}  // namespace

Descriptor::~Descriptor() {
    if (number_ >= 0) close(number_);
}

Descriptor::Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
}

bool same_name(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return fold_to_upper(a) == fold_to_upper(b); });
}

bool is_legal_name(std::string_view name) {
    constexpr std::u16string_view forbidden = u"\"*/:<>?\\|";
    const auto text = to_utf16(name);
    if (!text || text->empty() || text->size() > 255 || *text == u"." || *text == u"..") return false;
    return std::all_of(text->begin(), text->end(), [=](char16_t unit) {
        return unit >= 0x20 && unit < 0xFF80 && unit != 0x7F &&
               forbidden.find(unit) == std::u16string_view::npos;
    });
}

Folder::Folder(const std::filesystem::path& folder)
    : root_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (root_) return;
    std::fprintf(stderr, "hosted firmware: cannot open the folder %s\n", folder.c_str());
    std::exit(71);
}

Descriptor Folder::open_beneath(const std::string& path, int flags, unsigned mode) const {
    open_how how{};
    // A pipe in the folder must not block; the kernel refuses the flag for a mere path.
    const int no_waiting = (flags & O_PATH) != 0 ? 0 : O_NONBLOCK;
    how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC | no_waiting);
    how.mode = mode;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    return Descriptor(static_cast<int>(syscall(SYS_openat2, root_.number(), path.c_str(), &how, sizeof how)));
}

std::optional<std::pair<Descriptor, std::string>> Folder::open_parent(const FolderPath& path) const {
    if (path.empty()) return std::nullopt;
    Descriptor parent = open_beneath(join(parent_of(path)), O_RDONLY | O_DIRECTORY, 0);
    if (!parent) return std::nullopt;
    return std::pair{std::move(parent), path.back()};
}

std::optional<struct stat> Folder::status(const FolderPath& path) const {
    const Descriptor file = open_beneath(join(path), O_PATH | O_NOFOLLOW, 0);
    struct stat status {};
    if (!file || fstat(file.number(), &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) return std::nullopt;
    return status;
}

std::vector<std::string> Folder::names_in(const FolderPath& directory) const {
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

std::vector<std::string> Folder::in_order(const FolderPath& directory, std::vector<std::string> names) const {
    std::vector<std::pair<std::uint64_t, std::string>> numbered;
    FolderPath path = directory;
    path.emplace_back();
    for (std::string& name : names) {
        path.back() = name;
        if (!status(path)) continue;
        const auto noted = creation_.find(join(path));
        numbered.emplace_back(noted == creation_.end() ? 0 : noted->second, std::move(name));
    }
    std::sort(numbered.begin(), numbered.end());
    names.clear();
    for (auto& [number, name] : numbered)
        names.push_back(std::move(name));
    return names;
}

std::vector<std::string> Folder::list(const FolderPath& directory) const {
    return in_order(directory, names_in(directory));
}

std::optional<std::string> Folder::find(const FolderPath& directory, std::string_view name) const {
    if (!is_legal_name(name)) return std::nullopt;
    FolderPath exact = directory;
    exact.emplace_back(name);
    if (status(exact)) return std::string(name);
    // Of several that differ only in case the first of the listing. A look at each file of a large directory
    // would take too long for one name.
    std::vector<std::string> spellings = names_in(directory);
    std::erase_if(spellings, [&](const std::string& entry) { return !same_name(entry, name); });
    spellings = in_order(directory, std::move(spellings));
    return spellings.empty() ? std::nullopt : std::optional(spellings.front());
}

Descriptor Folder::open(const FolderPath& path, int flags) const {
    return open_beneath(join(path), flags, 0);
}

void Folder::note_creation(const FolderPath& path) {
    creation_[join(path)] = ++creations_;
}

bool Folder::create_file(const FolderPath& path) {
    if (!open_beneath(join(path), O_RDWR | O_CREAT | O_EXCL, 0666)) return false;
    note_creation(path);
    return true;
}

bool Folder::create_directory(const FolderPath& path) {
    const auto parent = open_parent(path);
    if (!parent || mkdirat(parent->first.number(), parent->second.c_str(), 0777) != 0) return false;
    note_creation(path);
    return true;
}

bool Folder::remove(const FolderPath& path) {
    const auto found = status(path);
    const auto parent = open_parent(path);
    if (!found || !parent) return false;
    const int flags = S_ISDIR(found->st_mode) ? AT_REMOVEDIR : 0;
    if (unlinkat(parent->first.number(), parent->second.c_str(), flags) != 0) return false;
    creation_.erase(join(path));
    return true;
}

bool Folder::rename(const FolderPath& from, const FolderPath& to) {
    const auto old_parent = open_parent(from);
    const auto new_parent = open_parent(to);
    if (!old_parent || !new_parent) return false;
    // A change of case alone replaces the entry by itself.
    const bool same_entry = from.size() == to.size() && same_name(join(from), join(to));
    const unsigned flags = same_entry ? 0 : RENAME_NOREPLACE;
    if (renameat2(old_parent->first.number(), old_parent->second.c_str(), new_parent->first.number(),
                  new_parent->second.c_str(), flags) != 0)
        return false;
    const auto noted = creation_.find(join(from));
    if (noted != creation_.end()) {
        creation_[join(to)] = noted->second;
        if (join(from) != join(to)) creation_.erase(join(from));
    }
    return true;
}

}  // namespace korvane::host

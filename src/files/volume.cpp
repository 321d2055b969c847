#include "files/volume.h"

#include <string_view>

#include "files/boot_volume.h"
#include "platform/memory.h"

namespace korvane {

Volume volume;

namespace {

// A name from the root, whose "." and ".." have been worked off.
class RootedName {
  public:
    // `name` as it is meant in the directory `base`.
    RootedName(const char16_t* base, const char16_t* name) {
        if (name[0] != u'\\') follow(base);
        follow(name);
        if (length_ == 0) text_[length_++] = u'\\';
        text_[length_] = 0;
    }

    const char16_t* text() const { return text_; }
    std::uint32_t length() const { return length_; }

  private:
    void follow(const char16_t* name) {
        while (*name != 0) {
            if (*name == u'\\') {
                ++name;
                continue;
            }
            const char16_t* end = name;
            while (*end != 0 && *end != u'\\')
                ++end;
            follow_part(std::u16string_view(name, static_cast<std::size_t>(end - name)));
            name = end;
        }
    }

    void follow_part(std::u16string_view part) {
        if (part == u".") return;
        if (part == u"..") {
            while (length_ != 0 && text_[--length_] != u'\\') {
            }
            return;
        }
        text_[length_++] = u'\\';
        for (const char16_t unit : part)
            text_[length_++] = unit;
    }

    // Room for a path that is kept, a separator and a name that was converted, and for the lone separator.
    char16_t text_[Volume::max_path + FirmwareName::max_length + 3];
    std::uint32_t length_ = 0;
};

bool knows_current_path() {
    return volume.current_path[0] == u'\\';
}

// Looks for the volume anew when its root has gone. True when it was found. The old root is given up, not
// closed: it belongs to a medium that is no longer there. A second look makes sure of that: firmware may have
// failed only once.
bool renew_root() {
    if (volume.root == nullptr || IsDirectory(volume.root)) return false;
    FileHandle found = find_boot_volume();
    if (!found || IsDirectory(volume.root)) return false;
    volume.root = found.release();
    return true;
}

// Looks for the current directory anew when it has gone. True when it had, whether it was found or not.
bool renew_current_directory() {
    if (volume.current_path[0] == 0 || IsDirectory(volume.current_directory)) return false;
    FileHandle(volume.current_directory).close();
    FileHandle found;
    if (knows_current_path()) found = open_from_root(volume.current_path, uefi::file_mode_read);
    if (!IsDirectory(found.get())) found.close();
    volume.current_directory = found.release();
    return true;
}

}  // namespace

void initialize_volume() {
    volume = Volume{};
    forget_boot_volume();
}

uefi::FileProtocol* GetVolumeRoot() {
    if (volume.root == nullptr) volume.root = open_boot_volume().release();
    return volume.root;
}

uefi::FileProtocol* base_directory() {
    return volume.current_path[0] != 0 ? volume.current_directory : GetVolumeRoot();
}

uefi::FileProtocol* live_base_directory() {
    if (!IsDirectory(base_directory())) {
        renew_root();
        renew_current_directory();
    }
    return base_directory();
}

void set_current_directory(FileHandle directory, const FirmwareName& name) {
    const FileHandle previous(volume.current_directory);
    volume.current_directory = directory.release();
    const bool is_rooted = name.text[0] == u'\\' || volume.current_path[0] == 0 || knows_current_path();
    const RootedName path(volume.current_path, name.text);
    if (is_rooted && path.length() <= Volume::max_path)
        copy_bytes(volume.current_path, path.text(), (path.length() + 1) * sizeof(char16_t));
    else
        volume.current_path[0] = u'?';
}

FileHandle open_from_root(const char16_t* name, std::uint64_t firmware_mode, std::uint64_t attributes) {
    FileHandle opened = open_below(GetVolumeRoot(), name, firmware_mode, attributes);
    if (opened || !renew_root()) return opened;
    return open_below(GetVolumeRoot(), name, firmware_mode, attributes);
}

FileHandle open_named(const FirmwareName& name, std::uint64_t firmware_mode, std::uint64_t attributes) {
    if (name.text[0] == u'\\') return open_from_root(name.text, firmware_mode, attributes);
    FileHandle opened = open_below(base_directory(), name.text, firmware_mode, attributes);
    if (opened || name.empty()) return opened;
    const bool has_root = renew_root();
    if (!renew_current_directory() && !has_root) return opened;
    if (uefi::FileProtocol* base = base_directory())
        return open_below(base, name.text, firmware_mode, attributes);
    // The directory has gone for good, but a name like "..\X" leads out of it.
    if (!knows_current_path()) return opened;
    const RootedName path(volume.current_path, name.text);
    return open_below(GetVolumeRoot(), path.text(), firmware_mode, attributes);
}

}  // namespace korvane

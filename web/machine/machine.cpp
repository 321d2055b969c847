// The module: the interpreter on the hosted firmware, with a browser around it.
//
// The interpreter is entered by run(), which comes back when it ends; on the way it waits, in imports that
// let the event loop go on (machine.js). Whatever else is exported here may be called meanwhile.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "code_page.h"
#include "firmware.h"
#include "imports.h"
#include "memory_folder.h"
#include "picture.h"
#include "program/execution.h"
#include "run/event_timers.h"

extern "C" korvane::uefi::Status EFIAPI _ModuleEntryPoint(korvane::uefi::Handle, korvane::uefi::SystemTable*);

namespace korvane::web {

namespace {

// Everything at addresses above what the compiler lays out, without gaps that would have to be paid for.
constexpr host::MachineLayout browser_layout = {
    .stack = 0x02000000,
    .tables = 0x02100000,
    .platform_tables = 0x02180000,
    .pool = 0x02200000,
    .framebuffer = 0x07000000,
};
constexpr std::uint64_t browser_image_base = 0x03400000;
constexpr std::uint64_t image_pages = 64;

// 256 MiB that become the data arena, as much as in the terminal, and a region from which everything else is
// taken. The browser pays for what is used.
std::vector<host::MemoryRegion> browser_memory() {
    using uefi::MemoryType;
    return {
        {0x04000000, 0x2800, MemoryType::EfiConventionalMemory},
        {0x08000000, 0x10000, MemoryType::EfiConventionalMemory},
    };
}

// What the files of the volume may have together: as much as the page keeps (page/volume.js).
constexpr std::uint64_t volume_size = 256 * 1024 * 1024;

std::uint64_t bytes_in(const Node& node) {
    std::uint64_t sum = node.bytes.size();
    for (const auto& entry : node.entries)
        sum += bytes_in(*entry);
    return sum;
}

std::uint64_t room_on_volume() {
    const Node* volume = find_node("volume");
    return volume_size - std::min(volume_size, volume != nullptr ? bytes_in(*volume) : 0);
}

host::Config browser_config(std::uint32_t width, std::uint32_t height) {
    host::Config config;
    config.layout = browser_layout;
    config.memory = browser_memory();
    config.modes.clear();
    constexpr std::uint32_t sizes[][2] = {{640, 480},  {800, 600},  {1024, 768}, {1280, 720},
                                          {1280, 960}, {1600, 900}, {1920, 1080}};
    config.width = 0;
    for (const auto& [mode_width, mode_height] : sizes) {
        config.modes.push_back({mode_width, mode_height, mode_width});
        const bool fits = config.width == 0 || (mode_width <= width && mode_height <= height);
        if (!fits) continue;
        config.width = mode_width;
        config.height = mode_height;
    }
    config.volumes.push_back({.folder = "volume",
                              .size = volume_size,
                              .capacity = room_on_volume(),
                              .label = u"BROWSER",
                              .host_programs = true});
    return config;
}

std::unique_ptr<host::Firmware> firmware;
Picture picture;

// What is handed over as text or bytes, before the call that takes it.
std::vector<std::uint8_t> parcel;

// The parcel's first bytes as a path on the volume.
std::string parcel_path(std::uint64_t length) {
    return "volume/" + std::string(reinterpret_cast<const char*>(parcel.data()), length);
}

host::HostTime to_host_time(double milliseconds) {
    const auto whole = static_cast<std::int64_t>(milliseconds);
    return {whole / 1000, static_cast<std::uint32_t>(whole % 1000 * 1'000'000)};
}

// The page has put files onto the volume and taken others from it while the machine runs.
void change_room(std::uint64_t put, std::uint64_t taken) {
    if (!firmware) return;
    firmware->volumes().front()->host_took(taken);
    firmware->volumes().front()->host_put(put);
}

// Whether few statements have been executed since the last call, far fewer than a program may execute
// unlooked at. One that waits for a key looks for it itself; how long its statements take differs between
// computers.
bool looks_soon() {
    constexpr std::uint64_t few = 20;
    static std::uint64_t before = 0;
    const std::uint64_t now = execution.statement_count;
    return now - std::exchange(before, now) < few;
}

void key_wanted(host::KeyWant want) {
    if (want == host::KeyWant::block)
        import_wait_for_key();
    else if (import_is_turn_due(looks_soon() ? 1 : 0, event_timers.active == 0 ? 1 : 0) != 0)
        import_turn();
}

}  // namespace

extern "C" {

// Room for a parcel of this size: a path, with a file's bytes behind it.
KORVANE_EXPORT("parcel") std::uint8_t* export_parcel(std::uint64_t size) {
    parcel.resize(size);
    return parcel.data();
}

// The parcel is a path of `length` bytes, with the file's behind it.
// 0 when the path is none that FAT could hold, or something else is there.
KORVANE_EXPORT("put_file") std::uint32_t export_put_file(std::uint64_t length, double modified) {
    const std::string path = parcel_path(length);
    if (!is_legal_path(path)) return 0;
    Node* node = make_node(path, false);
    if (node == nullptr) return 0;
    change_room(parcel.size() - length, node->bytes.size());
    node->bytes.assign(parcel.begin() + static_cast<std::ptrdiff_t>(length), parcel.end());
    node->modified = to_host_time(modified);
    parcel.clear();
    return 1;
}

KORVANE_EXPORT("put_folder") std::uint32_t export_put_folder(std::uint64_t length) {
    const std::string path = parcel_path(length);
    return is_legal_path(path) && make_node(path, true) != nullptr ? 1 : 0;
}

KORVANE_EXPORT("remove") void export_remove(std::uint64_t length) {
    Node* node = find_node(parcel_path(length));
    if (node == nullptr || node->parent == &all_files()) return;
    change_room(0, bytes_in(*node));
    drop(*node);
}

// The image that is packed into standalone programs: the parcel. It lies on the volume unseen.
KORVANE_EXPORT("lend_image") void export_lend_image() {
    make_node("image", false)->bytes = parcel;
}

// Starts the machine; the result is the status that the interpreter ends with.
KORVANE_EXPORT("run") std::uint64_t export_run(std::uint32_t width, std::uint32_t height) {
    firmware = std::make_unique<host::Firmware>(browser_config(width, height));
    firmware->keyboard().on_wanted(key_wanted);
    firmware->place_image(browser_image_base, image_pages * uefi::page_size,
                          find_node("image") != nullptr ? "image" : "");
    return _ModuleEntryPoint(firmware->image_handle(), firmware->system_table());
}

KORVANE_EXPORT("press") void export_press(std::uint32_t scan, std::uint32_t character) {
    firmware->keyboard().press({static_cast<std::uint16_t>(scan), static_cast<char16_t>(character)});
}

// The code of a Unicode character on this machine, -1 for one that it does not have.
KORVANE_EXPORT("code_of") std::int32_t export_code_of(std::uint32_t character) {
    const auto code = host::unicode_to_code(character);
    return code ? *code : -1;
}

// Null until the machine has a screen.
KORVANE_EXPORT("update_picture") const PictureChange* export_update_picture() {
    if (!firmware || firmware->display() == nullptr) return nullptr;
    return &picture.update(*firmware->display());
}

KORVANE_EXPORT("update_text") const PictureText* export_update_text() {
    return &picture.update_text(*firmware->display());
}

}  // extern "C"

}  // namespace korvane::web

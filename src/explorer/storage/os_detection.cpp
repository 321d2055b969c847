#include "explorer/storage/os_detection.h"

#include <array>

#include "explorer/report.h"
#include "explorer/storage/boot_entries.h"
#include "explorer/storage/volumes.h"

namespace korvane {
namespace {

struct Probe {
    const char* path;
    PathKind kind;
    const char* finding;  // the number of the volume follows
};

constexpr std::array<Probe, 6> probes = {{
    {"\\Windows\\System32", PathKind::directory, "  Windows installation on volume "},
    {"\\EFI\\Microsoft\\Boot\\bootmgfw.efi", PathKind::file, "  Windows Boot Manager files on volume "},
    {"\\EFI\\ubuntu", PathKind::directory, "  Ubuntu EFI files on volume "},
    {"\\EFI\\debian", PathKind::directory, "  Debian EFI files on volume "},
    {"\\EFI\\fedora", PathKind::directory, "  Fedora EFI files on volume "},
    {"\\EFI\\opensuse", PathKind::directory, "  openSUSE EFI files on volume "},
}};

std::uint64_t probe_volumes(PagedReport& listing) {
    std::uint64_t findings = 0;
    VolumeWalk volume;
    while (volume.next()) {
        for (const Probe& probe : probes) {
            if (!path_exists(volume.root(), probe.path, probe.kind)) continue;
            ++findings;
            listing.line(LineText().put(probe.finding).put_decimal(volume.number()));
        }
    }
    return findings;
}

}  // namespace

CommandEnd do_os(WordReader&) {
    PagedReport listing;
    listing.line("Best-effort operating-system detection:");
    const std::uint64_t findings = probe_volumes(listing);
    const std::uint64_t entries = list_boot_descriptions(listing);
    if (findings == 0 && entries == 0)
        listing.line("  No recognizable OS was exposed by EFI filesystems/boot entries.");
    listing.line("Detection is heuristic; filesystems without a UEFI driver remain invisible here.");
    return CommandEnd::done;
}

}  // namespace korvane

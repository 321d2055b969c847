// Which interpreter a program plays: that of an image, or the one that is linked into the program.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "machine.h"
#include "program_words.h"

// The entry point of the interpreter when it is linked into this program.
extern "C" __attribute__((weak)) korvane::uefi::Status EFIAPI _ModuleEntryPoint(korvane::uefi::Handle,
                                                                                korvane::uefi::SystemTable*);

namespace korvane::test {

struct PlayedImage {
    std::filesystem::path image = "build/korvane.efi";
    bool linked = false;

    ProgramOptions options() { return {{"--image", &image}, {"--linked", &linked}}; }

    // Ends the program when the interpreter is to be played that is linked into it, and none is: the image
    // would pass for it.
    host::ImageSource source() const {
        if (linked && !_ModuleEntryPoint) {
            std::fputs("--linked: no interpreter is linked into this program\n", stderr);
            std::exit(2);
        }
        return {image, linked ? _ModuleEntryPoint : nullptr};
    }
};

}  // namespace korvane::test

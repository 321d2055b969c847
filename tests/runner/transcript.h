// Transcripts: language tests as text. tests/language/README.md describes the format.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "config.h"
#include "platform/uefi.h"
#include "service_faults.h"

namespace korvane::transcript {

// One line of expectation: a row of text, or a regular expression for a whole row.
struct ExpectedRow {
    std::string text;  // UTF-8, without trailing blanks
    bool is_pattern = false;
};

// What a step does. The comments name the fields of `Step` that count.
enum class Action {
    type,           // types `keys` and enter; expects `rows` below the typed line
    press,          // presses `keys`; expects `rows` from the cursor's row on, when there are any
    press_at_poll,  // arranges for `keys` to be pressed at the `numbers[0]`-th key poll of the next step
    rows,           // expects `rows` from screen row `numbers[0]` on
    pixel,          // expects colour `numbers[4]` in all pixels from (`numbers[0]`, `[1]`) to (`[2]`, `[3]`)
    colours,        // expects ink `numbers[2]` and paper `numbers[3]` in the cell at row `[0]`, column `[1]`
    cursor,         // expects the editor's cursor at row `numbers[0]`, column `[1]`
    file,           // expects the file `name` to hold `content`
    no_file,        // expects no file or folder `name`
    put_file,       // writes `content` to the file `name`
    console,        // expects `content` somewhere on the firmware's text console
    given_back,     // expects a usable text console on a screen of `numbers[0]` by `[1]` pixels
    exits,          // expects that the application has ended with status `numbers[0]`
    halts,          // expects that it neither ends nor asks for a key any more
    fail,           // arms `faults`, in addition to those armed
    heal,           // disarms all faults
    fail_each,      // plays the next step with each use of `services` failing in turn
    in_any_case,  // ends the steps that count only when the failing step of `fail_each` came out as expected
    leaves_open,  // expects `numbers[0]` files other than folders to stay open at the end
    image_kept,   // expects the image file on the volume to be as it was
    pull_stick,   // the stick of the first volume is pulled out
    plug_stick,   // and is back as `numbers[0]`, a host::Replugged, says
    restart,      // starts the image `name` of the volume anew
    time,         // sets the clock to `time`
};

struct Step {
    Action action;
    std::size_t line;  // in the file, from 1
    std::vector<uefi::InputKey> keys;
    std::string source;  // as written, for reports
    std::vector<ExpectedRow> rows;
    bool has_rows = false;
    std::vector<std::uint64_t> numbers;
    std::string name;
    std::string content;
    std::vector<host::ServiceFault> faults;
    std::vector<host::Service> services;
    uefi::Time time{};
};

struct InitialFile {
    std::size_t volume;
    std::string path;     // with "/" between folders
    std::string content;  // of a file
    bool folder;
};

struct DiskPatch {
    std::size_t disk;
    std::uint64_t offset;
    std::string bytes;
};

// One test.
struct Case {
    std::filesystem::path file;
    std::size_t line;
    std::string title;
    // The machine. Folders of volumes and images of disks are filled in when it is built.
    host::Config config;
    std::vector<std::uint64_t> disk_sizes;  // bytes
    std::vector<DiskPatch> disk_patches;
    std::vector<InitialFile> files;
    bool image_on_volume = false;  // the image file lies on the volume, where the image path says
    std::vector<Step> steps;
    std::vector<host::ServiceFault> start_faults;  // armed while the machine starts
    std::vector<host::Service> start_fail_each;    // each use of these while it starts fails in turn
    // The options that shape the machine, as written: cases with the same text can share a started machine.
    std::string machine_key;
    // True when the machine must be started with the case's own files.
    bool own_start = false;
};

// The cases of a file. Mistakes in the file are reported as "file:line: ..." in `problems`.
std::vector<Case> read_transcript(const std::filesystem::path& file, std::vector<std::string>& problems);

}  // namespace korvane::transcript

#include "targets.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "complaint.h"
#include "player.h"

namespace korvane::fuzz {

extern bool memory_files_allowed;

namespace {

using std::string;
using std::string_view;

const Target* prepared = nullptr;

// Takes numbers from an input; zeros when it has come to its end.
class Reader {
  public:
    explicit Reader(string_view input) : rest_(input) {}

    template <typename Number>
    Number take() {
        Number number{};
        const string_view bytes = take_bytes(sizeof number);
        std::memcpy(&number, bytes.data(), bytes.size());
        return number;
    }
    string_view take_bytes(std::size_t count) {
        const string_view bytes = rest_.substr(0, count);
        rest_.remove_prefix(bytes.size());
        return bytes;
    }
    // Bytes behind their number, which is one byte.
    string_view take_counted() { return take_bytes(take<std::uint8_t>()); }
    string_view rest() const { return rest_; }
    bool empty() const { return rest_.empty(); }

  private:
    string_view rest_;
};

// A device path of one node, which names a file.
string file_path(std::u16string_view name) {
    const std::size_t text_size = (name.size() + 1) * sizeof(char16_t);
    string path("\x04\x04", 2);
    path += static_cast<char>(text_size + 4);
    path += '\0';
    for (const char16_t unit : name)
        path += {static_cast<char>(unit), '\0'};
    return path + string("\0\0\x7F\xFF\x04\0", 6);
}

// Every pixel that an input draws is put back, so fuzzers have a small screen; a tall one keeps what is
// printed in view.
bool tall_screen = true;

void start_or_complain() {
    if (machine->start() != Stop::waits) complain("the machine does not start");
}

void prepare_usual() {
    machine->firmware().build(usual_hardware());
    put_usual_files();
    start_or_complain();
}

void prepare_program(std::initializer_list<string_view> lines) {
    prepare_usual();
    for (const string_view line : lines)
        type(line);
}

bool type_all(std::initializer_list<string_view> lines) {
    return std::all_of(
        lines.begin(), lines.end(), [](string_view line) { return type(line); });
}

// ---- Sessions ---------------------------------------------------------------------------------------

void prepare_explorer() {
    prepare_program({"10 A%=1", "20 A$=\"text\"", "RUN", "KORVANE"});
}

// ---- Files ------------------------------------------------------------------------------------------

bool play_program(string_view input) {
    machine->firmware().volume().put_file("F.BAS", string(input));
    return type_all({"LOAD \"F\"", "LIST NOWAIT", "RUN", "MERGE \"F\"", "CHAIN MERGE \"F\",10,ALL",
                     "SAVE \"G\"", "RENUM", "RUN"});
}

void prepare_data() {
    prepare_program({"10 ON ERROR GOTO 90", "20 OPEN \"F.DAT\" FOR INPUT AS 1", "30 INPUT #1,A$,B,C%,D&&",
                     "40 LINE INPUT #1,L$:S$=S$+LEFT$(L$,9)", "50 X$=INPUT$(3,#1):N=N+1:IF N<40 THEN 30",
                     "60 CLOSE:OPEN \"F.DAT\" AS 2 LEN=13:FIELD 2,4 AS P$,2 AS Q$,7 AS R$",
                     "70 FOR I=1 TO 9:GET 2,I:Z=CVS(P$)+CVI(Q$):IF EOF(2) THEN 80",
                     "75 LSET R$=P$:PUT 2,I+1:PRINT LOC(2);LOF(2):NEXT", "80 CLOSE:END",
                     "90 PRINT ERR;ERL:E=E+1:IF E>9 THEN END ELSE RESUME NEXT"});
}

bool play_data(string_view input) {
    machine->firmware().volume().put_file("F.DAT", string(input));
    return type("RUN");
}

bool play_bitmap(string_view input) {
    machine->firmware().volume().put_file("F.BMP", string(input));
    return type_all({"LOADBMP 1,\"F.BMP\"", "BITBLT 1,5,5", "BITBLT 1,-3,1000,255", "BITBLT 1,0,0,0",
                     "BITBLT 1,-1,-1,16777215", "LOADBMP 1,\"F.BMP\""});
}

void prepare_memory_file() {
    prepare_program({"DIM A%(32767),B$(9)", "A$=\"x\""});
    memory_files_allowed = true;
}

// The array has room for the largest image.
bool play_memory_file(string_view input) {
    machine->firmware().volume().put_file("F.BIN", string(input));
    return type_all({"BLOAD \"F.BIN\",VARPTR(A%(0))", "BLOAD \"F.BIN\"", "PRINT A%(0);A%(32767)",
                     "BSAVE \"G.BIN\",VARPTR(A%(0)),65535"});
}

// The input is the image file itself: a program packed behind it, a certificate table.
bool play_packed_image(string_view input) {
    machine->firmware().volume().put_file("EFI/BOOT/BOOTX64.EFI", string(input));
    machine->firmware().build(usual_hardware());
    const Stop why = machine->start();
    if (why != Stop::waits) return false;
    return type_all({"LIST NOWAIT", "CREATEEFI \"N.EFI\""});
}

bool play_directory(string_view input) {
    machine->firmware().volume().set_raw_directory(string(input));
    return type_all({"FILES", "DIR \"*.B?S\"", "FILES \"D\\*\"", "CHDIR \"D\"", "FILES", "RMDIR \"D\"",
                     "KORVANE", "DIRFS 0", "DIRFS 0 D", "OS", "X"});
}

// ---- The machine ------------------------------------------------------------------------------------

// A byte of shape, then what the disk begins with; blocks in the middle and at the end can be given too.
bool play_disk(string_view input) {
    Reader reader(input);
    Disk& disk = machine->firmware().disks().front();
    const auto shape = reader.take<std::uint8_t>();
    disk.media.BlockSize =
        (shape & 128) != 0 ? 128 : std::array<std::uint32_t, 4>{512, 4096, 1024, 2048}[shape & 3];
    disk.media.IoAlign = (shape & 4) != 0 ? 4096 : 0;
    disk.media.RemovableMedia = (shape & 8) != 0;
    disk.media.MediaPresent = (shape & 16) == 0;
    disk.media.LastBlock = (shape & 32) != 0 ? ~std::uint64_t{0} : (shape & 64) != 0 ? 2 : 1000;
    disk.content = string(reader.rest());
    return type_all({"KORVANE", "DISKS", "DISK 0", "PARTITIONS 0", "PARTITION 0 1", "PARTITION 0 5",
                     "SECTOR 0 1 2", "SECTOR 0 FFFFFFFFFFFFFFFF 2", "X"});
}

// Variables: a name's last digits and its data; then BootOrder.
bool play_boot(string_view input) {
    Reader reader(input);
    std::vector<Variable>& variables = machine->firmware().variables();
    variables.clear();
    variables.push_back({u"BootOrder", string(reader.take_counted())});
    while (!reader.empty() && variables.size() < 20) {
        std::u16string name = u"Boot0000";
        name[7] = static_cast<char16_t>(reader.take<std::uint8_t>());
        const std::size_t size = reader.take<std::uint16_t>() % 2048;
        variables.push_back({name, string(reader.take_bytes(size))});
    }
    return type_all({"KORVANE", "BOOT", "OS", "VOLUMES", "X"});
}

// Starts the interpreter on a machine that the input describes.
bool start_on(const Hardware& hardware, std::initializer_list<string_view> lines) {
    machine->firmware().build(hardware);
    const Stop why = machine->start();
    if (why != Stop::waits) return false;
    return type_all(lines);
}

bool play_memory_map(string_view input) {
    Reader reader(input);
    Hardware hardware = usual_hardware();
    hardware.descriptor_stride = 40 + reader.take<std::uint8_t>() % 64;
    while (!reader.empty() && hardware.descriptors.size() < 200) {
        uefi::MemoryDescriptor one{};
        one.Type = static_cast<uefi::MemoryType>(reader.take<std::uint8_t>() % 18);
        one.PhysicalStart = reader.take<std::uint64_t>();
        one.NumberOfPages = reader.take<std::uint64_t>();
        one.Attribute = reader.take<std::uint8_t>();
        // The largest free region must be one that is there: nobody can do without memory.
        if (one.Type == uefi::MemoryType::EfiConventionalMemory)
            one.NumberOfPages %= data_size / uefi::page_size;
        hardware.descriptors.push_back(one);
    }
    return start_on(hardware, {"KORVANE MEMMAP", "KORVANE INFO", "KORVANE LANDMARKS", "KORVANE", "R 0",
                               "R FFFFFFFFFFFFFFFF", "W 30000000", "MAP", "F 38000000 38000010 41",
                               "H 38000000 38000100 41 41", "X", "PRINT FRE(0)"});
}

// Bytes of tables, and where the configuration table says that they stand: at their start or inside.
bool play_platform_tables(string_view input) {
    Reader reader(input);
    Hardware hardware = usual_hardware();
    const std::array<uefi::Guid, 4> kinds = {uefi::acpi_20_table_guid, uefi::acpi_10_table_guid,
                                             uefi::smbios3_table_guid, uefi::smbios_table_guid};
    const auto count = reader.take<std::uint8_t>() % 5;
    for (int i = 0; i < count; ++i) {
        const auto kind = reader.take<std::uint8_t>();
        const std::uint64_t offset = reader.take<std::uint16_t>() % tables_size;
        hardware.entries.push_back(
            {kinds[kind % kinds.size()], reinterpret_cast<void*>(tables_base + offset)});
    }
    hardware.platform_tables = string(reader.rest());
    return start_on(hardware, {"KORVANE INFO", "KORVANE LANDMARKS", "PRINT KORVANEADR(\"ACPI\")",
                               "PRINT KORVANEADR(\"SMBIOS\")", "KORVANE", "W 39000000", "V 39000000", "X"});
}

bool play_command_line(string_view input) {
    Hardware hardware = usual_hardware();
    hardware.has_load_options = true;
    hardware.load_options = string(input);
    return start_on(hardware, {"PRINT COMMANDLINEARGC", "FOR I=0 TO 32:PRINT COMMANDLINEARG$(I):NEXT",
                               "PRINT COMMANDLINEARG$"});
}

// The image's own path, and that of its volume.
bool play_device_path(string_view input) {
    Reader reader(input);
    Hardware hardware = usual_hardware();
    const string_view image_path = reader.take_counted();
    hardware.image_path = string(image_path);
    hardware.device_path = string(reader.rest());
    // Whoever walks a path knows of no end but the one in it, and goes on for 4 KiB without one.
    for (string* path : {&hardware.image_path, &hardware.device_path})
        *path += string(4200, '\0');
    return start_on(hardware, {"FILES", "SAVE \"BOOTX64.EFI\"", "CREATEEFI \"N.EFI\"", "KORVANE", "VOLUMES",
                               "BOOT", "X"});
}

bool play_modes(string_view input) {
    Reader reader(input);
    Hardware hardware = usual_hardware();
    hardware.modes.clear();
    const auto first = reader.take<std::uint8_t>();
    while (!reader.empty() && hardware.modes.size() < 8) {
        GraphicsMode mode{};
        mode.width = reader.take<std::uint16_t>() % 2000 + 1;
        mode.height = reader.take<std::uint16_t>() % 900 + 1;
        mode.pitch = mode.width + reader.take<std::uint8_t>();
        mode.format = static_cast<uefi::PixelFormat>(reader.take<std::uint8_t>() % 5);
        if (mode.format == uefi::PixelFormat::PixelBitMask) mode.masks = reader.take<uefi::PixelBitmask>();
        if (std::uint64_t{mode.pitch} * mode.height * 4 > framebuffer_room) continue;
        hardware.modes.push_back(mode);
    }
    hardware.first_mode = hardware.modes.empty() ? 0 : first % static_cast<unsigned>(hardware.modes.size());
    string change = "SCREEN 640,480";
    if (!hardware.modes.empty())
        change = "SCREEN " + std::to_string(hardware.modes.back().width) + "," +
                 std::to_string(hardware.modes.back().height);
    return start_on(hardware,
                    {"10 FOR I=1 TO 40:PRINT I;\"text\";:NEXT:PRINT", "20 CIRCLE(10,10),50:PAINT(10,10),4",
                     "30 LINE(-5,-5)-(3000,3000),3,BF:GET(0,0)-(20,20),A%:PUT(5,5),A%", "DIM A%(2000)", "RUN",
                     "TXTWINDOW 1,1,4,4", "PRINT STRING$(90,\"x\")", "TXTWINDOW @1,0,0,70,20", change, "RUN",
                     "PRINT @1,\"there\"", "CLS", "LIST NOWAIT"});
}

constexpr std::array<Target, 16> all_targets = {{
    {"session", "typed lines, keys, edits, Escape at any look, failing services", prepare_usual, type_session,
     true, true},
    {"explorer", "the machine explorer's commands", prepare_explorer, type_session, false, true},
    {"program", "program files", prepare_usual, play_program, true, true},
    {"data", "data files, sequential and of records", prepare_data, play_data, true},
    {"bitmap", "BMP files", prepare_usual, play_bitmap, true},
    {"memory-file", "files of BLOAD", prepare_memory_file, play_memory_file},
    {"packed-image", "packed images and certificate tables", nullptr, play_packed_image},
    {"directory", "records of directories", prepare_usual, play_directory},
    {"disk", "partition tables", prepare_usual, play_disk},
    {"boot", "boot variables, load options, their device paths", prepare_usual, play_boot},
    {"memory-map", "the memory map", nullptr, play_memory_map},
    {"platform-tables", "ACPI and SMBIOS tables", nullptr, play_platform_tables},
    {"command-line", "the command line", nullptr, play_command_line},
    {"device-path", "the image's and the volume's device paths", nullptr, play_device_path},
    {"modes", "modes of the graphics output", nullptr, play_modes},
    {"startup", "STARTUP.BAS", nullptr,
     [](string_view input) {
         machine->firmware().volume().put_file("STARTUP.BAS", string(input));
         return start_on(usual_hardware(), {"LIST NOWAIT"});
     },
     false, true},
}};

}  // namespace

Hardware usual_hardware() {
    Hardware hardware;
    if (!tall_screen) hardware.modes.front() = {320, 160, 320};
    hardware.image_path = file_path(u"\\EFI\\BOOT\\BOOTX64.EFI");
    hardware.device_path = string("\x03\x05\x06\0\1\0\x7F\xFF\4\0", 10);
    Disk disk;
    disk.media = {1, 0, 1, 0, 0, 0, 512, 0, 63};
    hardware.disks.push_back(disk);
    hardware.variables = {{u"BootOrder", string("\0\0", 2)},
                          {u"Boot0000", string("\1\0\0\0\4\0B\0\0\0\x7F\xFF\4\0", 14)}};
    return hardware;
}

// Everything that sequences of statements may want to find.
void put_usual_files() {
    Volume& volume = machine->firmware().volume();
    volume.put_file("P.BAS",
                    "10 A=A+1:PRINT A\r\n20 IF A<3 THEN GOTO 10\r\n30 GOSUB 100\r\n40 END\r\n100 RETURN\r\n");
    volume.put_file("Q.BAS", "20 PRINT \"Q\"\r\n50 CHAIN \"P\"\r\n60 DATA 1,2,x\r\n");
    volume.put_file("T.TXT", "12,abc\r\n\"x,y\",5\r\nlast\r\n");
    volume.put_file("D/U.TXT", "u\r\n");
    string bitmap("BM\x46\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\2\0\0\0\2\0\0\0\1\0\x18\0\0\0\0\0\x10\0\0\0", 38);
    bitmap.resize(54 + 16, '\x55');
    volume.put_file("B.BMP", bitmap);
}

std::span<const Target> targets() {
    return all_targets;
}

const Target* find_target(string_view name) {
    const auto* found = std::find_if(all_targets.begin(), all_targets.end(),
                                     [=](const Target& target) { return target.name == name; });
    return found == all_targets.end() ? nullptr : found;
}

void prepare(const Target& target, bool tall) {
    prepared = &target;
    tall_screen = tall;
    if (target.prepare != nullptr)
        target.prepare();
    else
        put_usual_files();
    machine->save();
    note_moment();
}

const Target& current_target() {
    return *prepared;
}

bool play_only(string_view input) {
    begin_input();
    return prepared->play(input);
}

bool play(string_view input) {
    if (!play_only(input)) return false;
    check();
    return true;
}

}  // namespace korvane::fuzz

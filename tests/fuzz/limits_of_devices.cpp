#include <algorithm>
#include <cstring>

#include "limit_table.h"
#include "player.h"
#include "screen/console.h"
#include "screen/graphics.h"
#include "targets.h"

namespace korvane::fuzz {

namespace {

using std::string;

constexpr std::string_view illegal = "Illegal function call";
constexpr std::string_view bad_number = "Bad file number";

Volume& volume() {
    return machine->firmware().volume();
}

// Opening a file whose name has as many characters as are used, below a dot.
string found_at_127(std::int64_t n) {
    return n < 127 ? "File not found" : "";
}
string image_at_127(std::int64_t n) {
    return n < 127 ? "File not found" : "Bad file mode";
}

bool name_of_127(std::int64_t n) {
    return volume().file('.' + string(static_cast<std::size_t>(std::min<std::int64_t>(n, 127) - 1), 'N')) !=
           nullptr;
}

void put_name_of_127(std::int64_t) {
    volume().put_file('.' + string(126, 'N'), "10 REM\r\n");
}

void put_bitmap(std::int64_t width, std::int64_t height) {
    string file(54, '\0');
    const auto put = [&](std::size_t at, std::int64_t value) { std::memcpy(file.data() + at, &value, 4); };
    file.replace(0, 2, "BM");
    put(10, 54);
    put(14, 40);
    put(18, width);
    put(22, height);
    file[26] = 1;
    file[28] = 24;
    file.resize(54 + static_cast<std::size_t>((3 * width + 3) / 4 * 4 * height));
    volume().put_file("W.BMP", file);
}

// The running image is found under a path of so many characters.
void put_image_path(std::int64_t n) {
    const string path = "\\EFI\\BOOT" + string(static_cast<std::size_t>(n) - 20, '\\') + "BOOTX64.EFI";
    const std::size_t size = 4 + (path.size() + 1) * sizeof(char16_t);
    string node("\x04\x04", 2);
    node += {static_cast<char>(size), static_cast<char>(size >> 8)};
    for (const char c : path)
        node += {c, '\0'};
    Hardware hardware = usual_hardware();
    hardware.image_path = node + string("\0\0\x7F\xFF\x04\0", 6);
    machine->firmware().build(hardware);
}

// A GPT of one entry.
void put_partition_table(std::uint64_t entry_size, std::uint64_t entries) {
    string content(512 * 4, '\0');
    const auto put = [&](std::size_t at, std::uint64_t value, std::size_t size) {
        std::memcpy(content.data() + at, &value, size);
    };
    content.replace(512, 8, "EFI PART");
    put(512 + 72, 2, 8);
    put(512 + 80, entries, 4);
    put(512 + 84, entry_size, 4);
    content[1024] = 1;
    machine->firmware().disks().front().content = content;
}

}  // namespace

std::vector<Limit> limits_of_devices() {
    return {
        // ---- Text and screen
        // Beyond, no field is left for the text, which then is no statement.
        {"characters of a PRINT USING format",
         255,
         {{"PRINT USING STRING$({n}-1,45)+\"!\";\"Z\"", "Syntax Error", "", false, "", nullptr, nullptr,
           [](std::int64_t n) {
               return n <= 255 ? string(static_cast<std::size_t>(n) - 241, '-') + 'Z' : string(15, '-');
           }}}},
        {"PRINT WRAP's width",
         65535,
         {{"PRINT WRAP {n},\"a b\"", illegal}, {"PRINT JUSTIFY {n},\"a b\"", illegal}}},
        {"PRINT WRAP's width, least",
         1,
         {{"PRINT WRAP {n},\"a b\"", illegal, "", true}, {"PRINT JUSTIFY {n},\"a b\"", illegal, "", true}}},
        {"words of a line of PRINT WRAP",
         256,
         {},
         "no line of output is wider than 256 columns, which are 128 words"},
        {"a window's number",
         7,
         {{"TXTWINDOW @{n},1,1,2,2", illegal},
          {"TXTWINDOW @7,1,1,2,2:TXTWINDOW @6,1,1,2,2\nPRINT @{n},1", illegal},
          {"TXTWINDOW @7,1,1,2,2:TXTWINDOW @6,1,1,2,2\nCLS @{n}", illegal},
          {"TXTWINDOW @7,1,1,2,2:TXTWINDOW @6,1,1,2,2\nCOLOR @{n},1", illegal},
          {"TXTWINDOW @7,1,1,2,2:TXTWINDOW @6,1,1,2,2\nLOCATE @{n},1,1", illegal}}},
        {"the screen's columns",
         40,
         {{"LOCATE 1,{n}", illegal},
          {"TXTWINDOW 1,1,{n},2", illegal},
          {"TXTWINDOW @1,1,1,{n},2", illegal},
          {"PRINT SCREEN(1,{n})", illegal}}},
        {"the screen's columns, least",
         1,
         {{"LOCATE 1,{n}", illegal, "", true},
          {"TXTWINDOW {n},1,9,2", illegal, "", true},
          {"TXTWINDOW @1,{n},1,9,2", illegal, "", true},
          {"PRINT SCREEN(1,{n})", illegal, "", true}}},
        {"the screen's rows",
         40,
         {{"LOCATE {n}", illegal},
          {"TXTWINDOW 1,1,2,{n}", illegal},
          {"TXTWINDOW @1,1,1,2,{n}", illegal},
          {"VIEW PRINT 1 TO {n}", illegal},
          {"PRINT SCREEN({n},1)", illegal}}},
        {"the screen's rows, least",
         1,
         {{"LOCATE {n}", illegal, "", true},
          {"TXTWINDOW 1,{n},2,9", illegal, "", true},
          {"VIEW PRINT {n} TO 9", illegal, "", true},
          {"PRINT SCREEN({n},1)", illegal, "", true}}},
        {"a text window's columns",
         8,
         {{"TXTWINDOW 3,3,10,12:LOCATE 1,{n}", illegal},
          {"TXTWINDOW @1,3,3,10,12:LOCATE @1,1,{n}", illegal}}},
        {"a text window's rows",
         10,
         {{"TXTWINDOW 3,3,10,12:LOCATE {n}", illegal},
          {"TXTWINDOW @1,3,3,10,12:LOCATE @1,{n},1", illegal},
          {"VIEW PRINT 3 TO 12:LOCATE {n}", illegal}}},

        // ---- Graphics
        {"a colour's number, least",
         0,
         {{"COLOR {n}", illegal, "", true},
          {"COLOR 1,{n}", illegal, "", true},
          {"PSET (1,1),{n}", illegal, "", true},
          {"LINE (1,1)-(2,2),{n}", illegal, "", true},
          {"CIRCLE (9,9),3,{n}", illegal, "", true},
          {"PAINT (1,1),{n}", illegal, "", true},
          {"DRAW \"C{n}\"", illegal, "", true}}},
        {"the palette",
         15,
         {{"COLOR {n}", "", "", false, "", nullptr, nullptr, nullptr,
           [](std::int64_t n) {
               return console.foreground == (n == 14 ? 0xFFFF55U : n == 15 ? 0xFFFFFFU : 0x10U);
           }}}},
        {"a part of a colour",
         255,
         {{"COLOR {n},0,0", illegal},
          {"COLOR 0,0,0,0,0,{n}", illegal},
          {"PSET (1,1),0,{n},0", illegal},
          {"LINE (1,1)-(2,2),0,0,{n}", illegal},
          {"PAINT (1,1),{n},0,0", illegal}}},
        {"a part of a colour, least",
         0,
         {{"COLOR {n},0,0", illegal, "", true}, {"PSET (1,1),0,{n},0", illegal, "", true}}},
        {"a circle's radius, least", 0, {{"CIRCLE (9,9),{n}", illegal, "", true}}},
        {"a view's right edge",
         319,
         {{"VIEW (0,0)-({n},9)", illegal}, {"VIEW SCREEN (0,0)-({n},9)", illegal}}},
        {"a view's lower edge", 639, {{"VIEW (0,0)-(9,{n})", illegal}}},
        {"a view's left and upper edge, least",
         0,
         {{"VIEW ({n},0)-(9,9)", illegal, "", true}, {"VIEW (0,{n})-(9,9)", illegal, "", true}}},
        {"a view's width, least", 11, {{"VIEW (10,10)-({n},20)", illegal, "", true}}},
        {"DRAW's scale", 255, {{"DRAW \"S{n}\"", illegal}}},
        {"DRAW's scale, least", 1, {{"DRAW \"S{n}\"", illegal, "", true}}},
        {"DRAW's quarter turns", 3, {{"DRAW \"A{n}\"", illegal}}},
        {"DRAW's degrees", 360, {{"DRAW \"TA{n}\"", illegal}}},
        {"DRAW's degrees, least", -360, {{"DRAW \"TA{n}\"", illegal, "", true}}},
        {"characters of a DRAW text",
         511,
         {{"CLS\nDRAW SPACE$({n}-2)+\"U9\"", "", "", false, "", nullptr, nullptr, nullptr,
           [](std::int64_t n) { return graphics.last_point.y == 320 - (n <= 511 ? 9 : 1); }}}},
        {"places that PAINT still has to look at", 131072, {}, "tests/unit/paint_test.cpp"},
        {"a bitmap's number",
         31,
         {{"LOADBMP {n},\"B.BMP\"", illegal},
          {"LOADBMP 31,\"B.BMP\":LOADBMP 30,\"B.BMP\"\nBITBLT {n},1,1", illegal}}},
        {"a bitmap's number, least", 0, {{"LOADBMP {n},\"B.BMP\"", illegal, "", true}}},
        {"a bitmap's width",
         8192,
         {{"LOADBMP 1,\"W.BMP\"", illegal, "", false, "", [](std::int64_t n) { put_bitmap(n, 1); }}}},
        {"a bitmap's height",
         8192,
         {{"LOADBMP 1,\"W.BMP\"", illegal, "", false, "", [](std::int64_t n) { put_bitmap(1, n); }}}},
        {"a bitmap's width and height, least",
         1,
         {{"LOADBMP 1,\"W.BMP\"", illegal, "", true, "", [](std::int64_t n) { put_bitmap(n, 1); }},
          {"LOADBMP 1,\"W.BMP\"", illegal, "", true, "", [](std::int64_t n) { put_bitmap(1, n); }}}},
        // 100 pixels and the two sizes are 408 bytes.
        {"elements for a picture", 203, {{"DIM A%({n})\nGET (0,0)-(9,9),A%", illegal, "", true}}},
        {"GET's right edge", 319, {{"DIM A&(999)\nGET (315,0)-({n},0),A&", illegal}}},
        {"GET's lower edge", 639, {{"DIM A&(999)\nGET (0,635)-(0,{n}),A&", illegal}}},
        {"GET's left and upper edge, least",
         0,
         {{"DIM A&(999)\nGET ({n},0)-(5,5),A&", illegal, "", true},
          {"DIM A&(999)\nGET (0,{n})-(5,5),A&", illegal, "", true}}},
        {"PUT's left edge", 310, {{"DIM A&(102)\nGET (0,0)-(9,9),A&\nPUT ({n},0),A&", illegal}}},
        {"PUT's upper edge", 630, {{"DIM A&(102)\nGET (0,0)-(9,9),A&\nPUT (0,{n}),A&", illegal}}},
        {"PUT's left and upper edge, least",
         0,
         {{"DIM A&(102)\nGET (0,0)-(9,9),A&\nPUT ({n},0),A&", illegal, "", true},
          {"DIM A&(102)\nGET (0,0)-(9,9),A&\nPUT (0,{n}),A&", illegal, "", true}}},

        // ---- Files
        {"a file's number",
         15,
         {{"OPEN \"T.TXT\" FOR INPUT AS #{n}", bad_number},
          {"OPEN \"I\",{n},\"T.TXT\"", bad_number},
          {"CLOSE {n}", bad_number},
          {"OPEN \"T.TXT\" FOR INPUT AS {n}\nINPUT #{n},A$", bad_number},
          {"OPEN \"T.TXT\" FOR INPUT AS {n}\nLINE INPUT #{n},A$", bad_number},
          {"OPEN \"T.TXT\" FOR INPUT AS {n}\nPRINT INPUT$(1,{n})", bad_number},
          {"OPEN \"T.TXT\" FOR INPUT AS {n}\nPRINT EOF({n})", bad_number},
          {"OPEN \"T.TXT\" FOR INPUT AS {n}\nPRINT LOC({n})", bad_number},
          {"OPEN \"T.TXT\" FOR INPUT AS {n}\nPRINT LOF({n})", bad_number},
          {"OPEN \"W\" FOR OUTPUT AS {n}\nPRINT #{n},1", bad_number},
          {"OPEN \"W\" FOR OUTPUT AS {n}\nPRINT #{n},USING \"#\";1", bad_number},
          {"OPEN \"W\" FOR OUTPUT AS {n}\nWRITE #{n},1", bad_number},
          {"OPEN \"R\" AS {n}\nFIELD {n},1 AS A$", bad_number},
          {"OPEN \"R\" AS {n}\nGET {n}", bad_number},
          {"OPEN \"R\" AS {n}\nPUT {n}", bad_number}}},
        {"a file's number, least",
         1,
         {{"OPEN \"T.TXT\" FOR INPUT AS {n}", bad_number, "", true}, {"CLOSE {n}", bad_number, "", true}}},
        {"a record's length",
         32767,
         {{"OPEN \"R\" AS 1 LEN={n}", "Bad record length"}, {"OPEN \"R\",1,\"R\",{n}", "Bad record length"}}},
        {"a record's length, least",
         1,
         {{"OPEN \"R\" AS 1 LEN={n}", "Bad record length", "", true},
          {"OPEN \"R\",1,\"R\",{n}", "Bad record length", "", true}}},
        {"a record's number",
         16777215,
         {{"OPEN \"R\" AS 1 LEN=1\nGET 1,{n}", "Bad record number"},
          {"OPEN \"R\" AS 1 LEN=1\nPUT 1,{n}", "Bad record number"}}},
        {"a record's number, least",
         1,
         {{"OPEN \"R\" AS 1 LEN=1\nGET 1,{n}", "Bad record number", "", true},
          {"OPEN \"R\" AS 1 LEN=1\nPUT 1,{n}", "Bad record number", "", true}}},
        {"the width of fields",
         6,
         {{"OPEN \"R\" AS 1 LEN=16\nFIELD 1,10 AS A$,{n} AS B$", "Field overflow"}}},
        {"the width of a field, least",
         0,
         {{"OPEN \"R\" AS 1 LEN=16\nFIELD 1,{n} AS A$", "Field overflow", "", true}}},
        {"characters printed into a record",
         16,
         {{"OPEN \"R\" AS 1 LEN=16\nPRINT #1,STRING$({n},65);", "Field overflow"}}},
        {"bytes of BSAVE", 65535, {{"DIM A%(32767)\nBSAVE \"M.BIN\",VARPTR(A%(0)),{n}", illegal}}},
        {"bytes of BSAVE, least", 1, {{"DIM A%(9)\nBSAVE \"M.BIN\",VARPTR(A%(0)),{n}", illegal, "", true}}},
        {"BSAVE's address, least",
         1,
         {},
         "memory at address 1 is nobody's; tests/language/programs has address 0"},
        {"BLOAD's address, least",
         65536,
         {},
         "memory at 64 KiB is the firmware's; tests/language/programs has 65535"},
        {"characters of a file's name",
         127,
         {{"LOAD \".\"+STRING$({n}-1,78)", "", "", false, "", put_name_of_127, found_at_127},
          {"MERGE \".\"+STRING$({n}-1,78)", "", "", false, "", put_name_of_127, found_at_127},
          {"CHAIN \".\"+STRING$({n}-1,78)", "", "", false, "", put_name_of_127, found_at_127},
          {"OPEN \".\"+STRING$({n}-1,78) FOR INPUT  AS 1", "", "", false, "", put_name_of_127, found_at_127},
          {"KILL \".\"+STRING$({n}-1,78)", "", "", false, "", put_name_of_127, found_at_127},
          {"BLOAD \".\"+STRING$({n}-1,78)", "", "", false, "", put_name_of_127, image_at_127},
          {"LOADBMP 1,\".\"+STRING$({n}-1,78)", "", "", false, "", put_name_of_127, image_at_127},
          {"SAVE \".\"+STRING$({n}-1,78)", "", "", false, "", nullptr, nullptr, nullptr, name_of_127},
          {"10 REM\nCREATEEFI \".\"+STRING$({n}-1,78)", "", "", false, "", nullptr, nullptr, nullptr,
           name_of_127},
          {"A%=1:BSAVE \".\"+STRING$({n}-1,78),VARPTR(A%),1", "", "", false, "", nullptr, nullptr, nullptr,
           name_of_127},
          {"OPEN \".\"+STRING$({n}-1,78) FOR OUTPUT AS 1", "", "", false, "", nullptr, nullptr, nullptr,
           name_of_127},
          {"OPEN \".\"+STRING$({n}-1,78) FOR APPEND AS 1", "", "", false, "", nullptr, nullptr, nullptr,
           name_of_127},
          {"OPEN \".\"+STRING$({n}-1,78) AS 1", "", "", false, "", nullptr, nullptr, nullptr, name_of_127}}},
        {"characters of a name before its extension is added",
         123,
         {{"LOAD STRING$({n},78)", "Bad file name", "File not found"},
          {"10 REM\nCREATEEFI STRING$({n},78)", "Bad file name"}}},
        {"characters of a path for the firmware",
         255,
         {{"MKDIR STRING$({n}-1,92)+\"X\"", "Path/File access error"},
          {"MKDIR \"E\"\nRMDIR STRING$({n}-1,92)+\"E\"", "Path/File access error"},
          {"CHDIR STRING$({n}-1,92)+\"T\"", "", "Path not found"}}},
        {"characters of a path", 511, {}, "the firmware is given 255 of them"},
        {"characters of NAME's new name", 254, {{"NAME \"T.TXT\" AS STRING$({n},78)", "File not found"}}},
        {"characters of FILES' pattern",
         255,
         {{"CLS\nFILES STRING$({n}-1,42)+\"~\"", "", "", false, "", nullptr, nullptr,
           [](std::int64_t n) { return string(n <= 255 ? "!T.TXT" : "T.TXT"); }}}},
        {"folders in folders that FILES shows", 65, {}, "tests/language/files/listing.txt"},

        // ---- The explorer
        {"hexadecimal digits of the explorer's numbers",
         16,
         {{"KORVANE\nV {*F}", "", "", false, "", nullptr, nullptr,
           [](std::int64_t n) { return string(n <= 16 ? "!" : "") + "Bad address or landmark."; }}}},
        {"characters of an explorer line",
         192,
         {{"KORVANE\n> 38000000 41{-14* }7", "", "", false, "", nullptr, nullptr,
           [](std::int64_t n) { return string(n <= 192 ? "Wrote 2 bytes." : "Wrote 1 bytes."); }}}},
        {"bytes of a dump", 65536, {}, "tests/unit/explorer_memory_test.cpp"},
        {"the explorer's bytes",
         255,
         {{"KORVANE\n> 38000000 D:{n}", "", "", false, "", nullptr, nullptr,
           [](std::int64_t n) { return string(n <= 255 ? "Wrote 1 bytes." : "Bad hex byte: D:256"); }},
          {"KORVANE\nH 38000000 38000001 D:{n}", "", "", false, "", nullptr, nullptr,
           [](std::int64_t n) { return string(n <= 255 ? "!" : "") + "Bad hex byte: D:256"; }},
          {"KORVANE\nF 38000000 38000001 D:{n}", "", "", false, "", nullptr, nullptr,
           [](std::int64_t n) { return string(n <= 255 ? "!" : "") + "Usage: F start end byte"; }}}},
        {"blocks of SECTOR", 64, {}, "tests/unit/explorer_disks_test.cpp"},
        {"the last block",
         63,
         {{"KORVANE\nSECTOR 0 D:{n}", "", "", false, "", nullptr, nullptr,
           [](std::int64_t n) { return string(n <= 63 ? "!" : "") + "LBA outside media."; }}}},
        // The message's last letters: it does not fit into a row.
        {"bytes of a partition entry",
         4096,
         {{"KORVANE\nPARTITIONS 0", "", "", false, "", [](std::int64_t n) { put_partition_table(n, 1); },
           nullptr, [](std::int64_t n) { return string(n <= 4096 ? "!" : "") + "ble."; }}}},
        {"bytes of a partition entry, least",
         128,
         {{"KORVANE\nPARTITIONS 0", "", "", true, "", [](std::int64_t n) { put_partition_table(n, 1); },
           nullptr, [](std::int64_t n) { return string(n >= 128 ? "!" : "") + "ble."; }}}},
        {"partition entries",
         4096,
         {{"KORVANE\nPARTITIONS 0", "", "", false, "", [](std::int64_t n) { put_partition_table(128, n); },
           nullptr, [](std::int64_t n) { return string(n <= 4096 ? "!" : "") + "ble."; }}}},
        {"bytes that are hunted", 256, {}, "a line of 192 characters has no room for so many"},
        {"bytes that SECTOR reads", 1048576, {}, "tests/unit/explorer_disks_test.cpp"},

        // ---- At the start
        {"arguments of the command line", 32, {}, "tests/language/startup/command_line.txt"},
        {"characters of an argument", 255, {}, "tests/language/startup/command_line.txt"},
        {"characters of the image's own path",
         511,
         {{"10 REM\nCREATEEFI \"N\"", "File not found", "", false, "", put_image_path, nullptr, nullptr,
           [](std::int64_t) {
               machine->firmware().build(usual_hardware());
               return true;
           }}}},
        {"lines and bytes of a packed program", 65536, {}, "tests/unit/packed_program_test.cpp"},
    };
}

}  // namespace korvane::fuzz

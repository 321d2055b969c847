// What writes files, with the stick pulled out between any two of its calls, and on a disk with room for any
// number of bytes: what docs/files.md promises about the file, about all other files and about the program in
// memory must hold.
#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>

#include "failures.h"
#include "invariants.h"
#include "player.h"
#include "program/errors.h"
#include "program/messages.h"
#include "program/program_store.h"
#include "targets.h"

namespace korvane::fuzz {

extern bool memory_files_allowed;

namespace {

using std::string;
using std::string_view;

using Files = std::map<string, string>;

enum class Change {
    replaces,  // gone, the old file, or a beginning of the new one
    appends,   // the old file and a beginning of what comes behind it
    records,   // each byte is the old one or the new one
    renames,   // one of the two names, with all that was in it
    removes,   // there as it was, or gone
    creates,   // a folder: there or not
};

struct Writing {
    string_view line;
    string_view file;
    Change change;
    string_view message = "";             // said when the disk is full
    std::size_t silent_from = ~0ULL / 2;  // with so many bytes in the file nothing has to be said
    string_view other = "";               // the second name
    string_view setup = "";
    bool explores = false;
};

constexpr string_view disk_error = message::disk_i_o_error;

constexpr Writing writings[] = {
    // SAVE reports no failing write.
    {"SAVE \"P.BAS\"", "P.BAS", Change::replaces, "", 0},
    {"SAVE \"N.BAS\"", "N.BAS", Change::replaces, "", 0},
    {"SAVE \"D\\N1.BAS\",A", "D/N1.BAS", Change::replaces, "", 0},
    // The trailer, of 8 bytes, is not looked at.
    {"BSAVE \"M.BIN\",VARPTR(A%(0)),100", "M.BIN", Change::replaces, disk_error, 107, "", "DIM A%(99)"},
    {"BSAVE \"T.TXT\",VARPTR(A%(0)),30", "T.TXT", Change::replaces, disk_error, 37, "", "DIM A%(99)"},
    {"CREATEEFI \"N.EFI\"", "N.EFI", Change::replaces, disk_error},
    {"CREATEEFI \"T.TXT\"", "T.TXT", Change::replaces, disk_error},
    // Only full buffers of 512 bytes are looked at; what still waits at CLOSE may be lost.
    {"OPEN \"W.TXT\" FOR OUTPUT AS 1:PRINT #1,STRING$(2000,65):CLOSE 1", "W.TXT", Change::replaces,
     disk_error, 1536},
    {"OPEN \"T.TXT\" FOR OUTPUT AS 1:PRINT #1,\"few\":CLOSE 1", "T.TXT", Change::replaces, "", 0},
    {"OPEN \"T.TXT\" FOR APPEND AS 1:PRINT #1,STRING$(700,66):CLOSE 1", "T.TXT", Change::appends, disk_error,
     23 + 512},
    {"OPEN \"T.TXT\" FOR APPEND AS 1:WRITE #1,1,\"x\":CLOSE 1", "T.TXT", Change::appends, "", 0},
    {"OPEN \"T.TXT\" AS 1 LEN=10:FIELD 1,10 AS F$:LSET F$=\"abc\":PUT 1,2:PUT 1,7:CLOSE 1", "T.TXT",
     Change::records, disk_error},
    {"NAME \"T.TXT\" AS \"V.TXT\"", "T.TXT", Change::renames, "", 0, "V.TXT"},
    {"NAME \"T.TXT\" AS \"\\D\\V.TXT\"", "T.TXT", Change::renames, "", 0, "D/V.TXT"},
    {"KILL \"T.TXT\"", "T.TXT", Change::removes},
    {"MKDIR \"M\"", "M/", Change::creates},
    {"RMDIR \"E\"", "E/", Change::removes, "", 0, "", "MKDIR \"E\""},
    {"SAVE X.BIN 38000000 380000FF", "X.BIN", Change::replaces, "", 0, "", "", true},
    {"SAVE T.TXT 38000000 380000FF", "T.TXT", Change::replaces, "", 0, "", "", true},
};

// What docs/files.md tells to make sure that a program has been saved; the program's last line follows.
constexpr string_view look_at_saved = ": WHILE NOT EOF(1): LINE INPUT #1, L$: WEND: CLOSE 1: PRINT L$";

constexpr std::uint64_t plenty = 1 << 20;

bool is_beginning(string_view part, string_view whole) {
    return whole.starts_with(part);
}

const string* find(const Files& files, string_view name) {
    const auto found = files.find(string(name));
    return found == files.end() ? nullptr : &found->second;
}

class Sweep {
  public:
    int all() {
        memory_files_allowed = true;
        prepare(*find_target("session"), true);
        for (const Writing& one : writings)
            sweep(one);
        std::printf("%zu lines, %llu interruptions, %d wrong\n", std::size(writings),
                    static_cast<unsigned long long>(interruptions_), wrong_);
        return wrong_ == 0 && interruptions_ != 0 ? 0 : 1;
    }

  private:
    static Volume& volume() { return machine->firmware().volume(); }
    static string_view said() { return errors.message == nullptr ? "" : errors.message; }

    static string program_text() {
        string text;
        for (std::uint32_t i = 0; i < program.count; ++i)
            text += std::to_string(program.lines[i].number) + ' ' + string(line_text(i)) + "\r\n";
        return text;
    }

    // Takes the machine to where the line is typed. The program in memory differs from all that are saved.
    void begin(const Writing& one) {
        begin_input();
        bool ready = type("LOAD \"P\"") && type("15 REM NOT SAVED") && type("X=6");
        if (!one.setup.empty()) ready = ready && type(one.setup);
        if (one.explores) ready = ready && type("KORVANE");
        if (!ready) wrong(one, "before it", "it comes to an end");
        before_ = volume().files();
        program_ = program_text();
        forget_error();
        errors.message = nullptr;
        volume().lie_at(0, Lie::none);
    }

    void sweep(const Writing& one) {
        begin(one);
        if (!type(one.line) || !said().empty()) wrong(one, "undisturbed", "it fails");
        after_ = volume().files();
        const std::uint64_t uses = volume().uses();
        const string* whole = find(after_, one.file);
        const std::size_t size = whole == nullptr ? 0 : whole->size();

        for (std::uint64_t use = 1; use <= uses; ++use) {
            begin(one);
            volume().lie_at(use, Lie::pulled_stick);
            check(one, "pulled out at use " + std::to_string(use));
        }
        if (one.change == Change::removes || one.change == Change::creates || one.change == Change::renames)
            return;
        for (std::size_t room = 0; room <= size; ++room) {
            begin(one);
            volume().set_room(room);
            const string how = "room for " + std::to_string(room);
            if (!check(one, how)) continue;
            check_full(one, how);
            check_saved_again(one, how);
        }
    }

    // Types the line. What always holds; false when nothing more can be looked at.
    bool check(const Writing& one, const string& how) {
        ++interruptions_;
        if (!type(one.line)) {
            wrong(one, how, "it comes to an end");
            return false;
        }
        said_ = said();
        now_ = volume().files();
        for (const string& rule : broken_invariants())
            wrong(one, how, "this does not hold: " + rule);
        if (program_text() != program_) wrong(one, how, "the program in memory is another one");
        if (!is_promised(one)) wrong(one, how, "the file is not as promised");
        for (const Files* files : {&before_, &now_})
            for (const auto& [name, content] : *files) {
                if (name == one.file || name == one.other) continue;
                const string* old = find(before_, name);
                const string* fresh = find(now_, name);
                if (old == nullptr || fresh == nullptr || *old != *fresh)
                    wrong(one, how, "another file is not what it was: " + name);
            }
        if (!type("X") || !type("CLS") || !type("PRINT 7*X") || !is_on_screen(" 42")) {
            wrong(one, how, "the variables are not what they were");
            return false;
        }
        return true;
    }

    bool is_promised(const Writing& one) const {
        const string* old = find(before_, one.file);
        const string* now = find(now_, one.file);
        const string* whole = find(after_, one.file);
        switch (one.change) {
            case Change::replaces:
                return now == nullptr || (old != nullptr && *now == *old) || is_beginning(*now, *whole);
            case Change::appends:
                return now != nullptr && is_beginning(*old, *now) && is_beginning(*now, *whole);
            case Change::records:
                if (now == nullptr || now->size() < old->size() || now->size() > whole->size()) return false;
                for (std::size_t i = 0; i < now->size(); ++i)
                    if ((*now)[i] != (*whole)[i] && (i >= old->size() || (*now)[i] != (*old)[i]))
                        return false;
                return true;
            case Change::renames: {
                const string* other = find(now_, one.other);
                return (now == nullptr) != (other == nullptr) && (now != nullptr ? *now : *other) == *old;
            }
            case Change::removes:
                return now == nullptr || *now == *old;
            case Change::creates:
                return true;
        }
        return false;
    }

    // On a full disk: the message, and what CREATEEFI clears away.
    void check_full(const Writing& one, const string& how) {
        const string* now = find(now_, one.file);
        const std::size_t size = now == nullptr ? 0 : now->size();
        const bool whole = now_ == after_;
        if (whole && !said_.empty()) wrong(one, how, "it complains about nothing");
        if (!whole && said_ != one.message && (!said_.empty() || size < one.silent_from))
            wrong(one, how, "it says: " + said_);
        if (!whole && one.line.starts_with("CREATEEFI") && now != nullptr)
            wrong(one, how, "an unfinished application is left");
        if (!one.explores && one.line.starts_with("SAVE")) check_look(one, how, whole);
    }

    // The manual's way to see whether the whole program was saved.
    void check_look(const Writing& one, const string& how, bool whole) {
        const string* now = find(now_, one.file);
        // Only the line end of the last line may be missing without anybody's noticing: nothing is lost then.
        const string saved = now == nullptr ? "" : *now;
        const bool loads_whole = whole || program_.substr(0, program_.size() - 2) == saved ||
                                 program_.substr(0, program_.size() - 1) == saved;
        const std::size_t quote = one.line.find('"') + 1;
        const string name(one.line.substr(quote, one.line.find('"', quote) - quote));
        if (!type("CLS") || !type("OPEN \"" + name + "\" FOR INPUT AS 1" + string(look_at_saved)) ||
            is_on_screen("100 RETURN") != loads_whole)
            wrong(one, how, "the look at the saved file tells something else");
    }

    // With room again the same line does all of it.
    void check_saved_again(const Writing& one, const string& how) {
        if (one.change != Change::replaces || now_ == after_) return;
        volume().set_room(plenty);
        if (one.explores) type("KORVANE");
        if (!type("CLOSE 1") || !type(one.line)) return wrong(one, how, "it does not come back");
        if (volume().files() != after_) wrong(one, how, "with room again it does not write all");
    }

    void wrong(const Writing& one, const string& how, const string& what) {
        ++wrong_;
        if (wrong_ <= 60)
            std::printf("WRONG: %.*s (%s): %s\n", static_cast<int>(one.line.size()), one.line.data(),
                        how.c_str(), what.c_str());
    }

    Files before_;
    Files after_;  // undisturbed
    Files now_;
    string program_;
    string said_;
    std::uint64_t interruptions_ = 0;
    int wrong_ = 0;
};

}  // namespace
}  // namespace korvane::fuzz

int main() {
    using namespace korvane::fuzz;
    static Machine the_machine;
    return Sweep().all();
}

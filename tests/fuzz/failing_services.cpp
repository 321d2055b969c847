// Everything fails once: each statement, command and start-up path, with each firmware service that it uses
// failing at each of its uses, once and from there on, with each status, and with a volume that lies.
//
// The table of statements is the one of tests/hosted; which services they use is recorded while they run
// undisturbed, so that none is left out. A statement without a row, and a service without a sweep, is a
// failure.
//
//     failing-services [--list]    --list tells which services each line uses
#include <array>
#include <cstdio>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "complaint.h"
#include "explorer/commands.h"
#include "failures.h"
#include "interrupted_statements.h"
#include "invariants.h"
#include "player.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/program_store.h"
#include "program/tokenizer.h"
#include "run/dispatch.h"
#include "targets.h"

namespace korvane::fuzz {

extern bool memory_files_allowed;

namespace {

using host::Service;
using std::string;
using std::string_view;

// A line with what is typed before it and, where it waits, after it.
struct Tried {
    string setup;
    string line;
    string answer;
    bool explores = false;  // the line is a command of the machine explorer
};

// What a statement may say when the firmware fails under it. Explorer commands say nothing through errors.
constexpr std::array<string_view, 12> stated_messages = {
    message::disk_i_o_error,         message::file_not_found,        message::bad_file_name,
    message::path_not_found,         message::out_of_memory,         message::bad_file_mode,
    message::input_past_end,         message::illegal_function_call, message::field_overflow,
    message::path_file_access_error, message::type_mismatch,         message::expected_array};

// Places without their braces: {5} is 5. A "+" in a place only says that it is a later one.
string without_places(string_view text) {
    string line;
    while (!text.empty()) {
        if (text.front() == '{') {
            const std::size_t end = text.find('}');
            string_view place = text.substr(1, end - 1);
            if (place.starts_with('+')) place.remove_prefix(1);
            line += place;
            text.remove_prefix(end + 1);
        } else {
            line += text.front();
            text.remove_prefix(1);
        }
    }
    return line;
}

std::vector<Tried> tried_lines() {
    std::vector<Tried> all;
    for (const test::InterruptedStatement& one : test::interrupted_statements()) {
        string answer(one.reply);
        if (answer.ends_with('\r')) answer.pop_back();
        all.push_back({string(one.setup), without_places(one.text), answer});
    }
    for (const string_view word : test::words_without_expressions())
        all.push_back({"", string(word), ""});
    for (const char* line :
         {"LIST NOWAIT",
          "LIST",
          "RUN",
          "LOAD \"P\"",
          "SAVE \"P\"",
          "SAVE \"N\"",
          "MERGE \"Q\"",
          "CHAIN \"Q\"",
          "CHAIN MERGE \"Q\",30,ALL",
          "FILES",
          "FILES \"*.TXT\"",
          "DIR",
          "CHDIR \"D\":FILES:CHDIR \"..\":FILES",
          "MKDIR \"M\":CHDIR \"M\":SAVE \"S\":CHDIR \"\\\"",
          "KILL \"P.BAS\"",
          "NAME \"T.TXT\" AS \"D\\V.TXT\"",
          "CREATEEFI \"N.EFI\"",
          "HELP",
          "HELP PRINT",
          "KORVANE MEMMAP",
          "KORVANE INFO",
          "KORVANE LANDMARKS",
          "PRINT DATE$",
          "PRINT TIME$",
          "RANDOMIZE TIMER",
          "A$=INKEY$",
          "SCREEN 640,480",
          "SCREEN 320,240",
          "LOADBMP 1,\"B.BMP\":BITBLT 1,2,3",
          "EDIT 10",
          "AUTO",
          "CLS",
          "OPEN \"T.TXT\" FOR INPUT AS 1:INPUT #1,A,B$:LINE INPUT #1,C$:PRINT EOF(1);LOF(1);LOC(1):CLOSE",
          "OPEN \"W.TXT\" FOR OUTPUT AS 1:PRINT #1,STRING$(2000,65):CLOSE 1",
          "OPEN \"T.TXT\" FOR APPEND AS 1:WRITE #1,1,\"x\":CLOSE",
          "OPEN \"R.DAT\" AS 1 LEN=20:FIELD 1,20 AS F$:LSET F$=\"abc\":PUT 1,3:GET 1,2:GET 1:CLOSE",
          "DIM A%(99):BSAVE \"M.BIN\",VARPTR(A%(0)),100:BLOAD \"M.BIN\",VARPTR(A%(0))"})
        all.push_back({"", line, ""});
    for (const char* line : {"MAP",
                             "L",
                             "I",
                             "?",
                             "M 38000000 20",
                             "M",
                             "M! 38000000 20",
                             "F 38000000 38000010 41",
                             "C 38000000 38000010 38000020",
                             "> 38000000 01 02",
                             "A 38000000 text",
                             "H 38000000 38000100 41",
                             "HA 38000000 38000100 tex",
                             "T 38000000 38000010 38000020",
                             "SAVE X.BIN 38000000 38008000",
                             "LOAD T.TXT 38000000",
                             "R 38000000",
                             "W 38000000",
                             "V 38000000",
                             "DISKS",
                             "DISK 0",
                             "SECTOR 0 0 2",
                             "PARTITIONS 0",
                             "PARTITION 0 1",
                             "VOLUMES",
                             "DIRFS 0",
                             "DIRFS 0 D",
                             "CAT 0 T.TXT",
                             "HEXFILE 0 P.BAS",
                             "BOOT",
                             "OS",
                             "X"})
        all.push_back({"", line, "", true});
    return all;
}

class Sweep {
  public:
    explicit Sweep(bool lists) : lists_(lists) {}

    int all() {
        memory_files_allowed = true;
        prepare(*find_target("session"), true);
        require_every_word();
        for (const Tried& one : tried_lines())
            sweep(one);
        require_every_service();
        std::printf("%llu lines, %llu failures, %d wrong\n", static_cast<unsigned long long>(lines_),
                    static_cast<unsigned long long>(failures_), wrong_);
        return wrong_ == 0 && lines_ != 0 ? 0 : 1;
    }

  private:
    using Arm = std::function<void()>;

    static string program_text() {
        string text;
        for (std::uint32_t i = 0; i < program.count; ++i)
            text += std::to_string(program.lines[i].number) + ' ' + string(line_text(i)) + '\n';
        return text;
    }

    static string_view said() { return errors.message == nullptr ? "" : errors.message; }

    // Types the line with what `arm` prepares. False when the interpreter comes to an end.
    bool play_line(const Tried& one, const Arm& arm) {
        begin_input();
        if (!type("LOAD \"P\"") || (!one.setup.empty() && !type(one.setup))) return false;
        if (one.explores && !type("KORVANE")) return false;
        program_before_ = program_text();
        forget_error();
        errors.message = nullptr;
        arm();
        bool goes_on = type(one.line);
        if (goes_on && !one.answer.empty()) goes_on = type(one.answer);
        machine->firmware().faults().arm({});
        return goes_on;
    }

    void sweep(const Tried& one) {
        ++lines_;
        Uses used;
        const bool goes_on = play_line(one, [&] {
            used.begin();
            machine->firmware().volume().lie_at(0, Lie::none);
        });
        if (!goes_on) {
            wrong(one, "undisturbed", "it comes to an end");
            return;
        }
        program_after_ = program_text();
        said_undisturbed_ = said();
        used.end();
        const std::uint64_t volume_uses = machine->firmware().volume().uses();
        if (lists_) used.print(one.line);
        for (const Service service : used.services())
            fail_service(one, service, std::min(used.of(service), most_uses));
        for (const Lie lie : lies)
            for (std::uint64_t use = 1; use <= std::min(volume_uses, most_uses); ++use)
                try_failure(one, words_for(lie, use), lie == Lie::pulled_stick,
                            [=] { machine->firmware().volume().lie_at(use, lie); });
    }

    void fail_service(const Tried& one, Service service, std::uint64_t count) {
        swept_.insert(service);
        // Each character that is typed is a use.
        if (service == Service::ReadKeyStroke) count = std::min<std::uint64_t>(count, 2);
        for (std::uint64_t use = 1; use <= count; ++use) {
            for (const uefi::Status status : failing_statuses) {
                for (const bool once : {true, false}) {
                    const string how = words_for(service, use, once, status);
                    const std::uint64_t times = once ? 1 : for_good;
                    try_failure(
                        one, how, false,
                        [=] {
                            machine->firmware().faults().arm({{service, use, times, status}});
                        },
                        service == Service::FreePool);
                }
            }
        }
    }

    void try_failure(const Tried& one, const string& how, bool pulled, const Arm& arm,
                     bool keeps_pool = false) {
        ++failures_;
        if (!play_line(one, arm)) {
            wrong(one, how, "it comes to an end");
            return;
        }
        for (const string& rule : broken_invariants())
            wrong(one, how, "this does not hold: " + rule);
        if (!said().empty() && said() != said_undisturbed_ &&
            std::find(stated_messages.begin(), stated_messages.end(), said()) == stated_messages.end())
            wrong(one, how, "it says: " + string(said()));
        if (!is_stated_program(one, program_text())) wrong(one, how, "the program is another one");
        // What is typed first may be taken for the key that a list waits for; Escape ends AUTO, and X
        // explorers.
        const bool back =
            type("\x1b") && type("X") && type("CLS") && type("PRINT 7*6") && is_on_screen(" 42");
        if (!back) {
            wrong(one, how, "it does not come back to the prompt");
            return;
        }
        const string left = resources_left(pulled, keeps_pool);
        if (!left.empty()) wrong(one, how, left);
    }

    // What reads programs keeps the lines that it has read when the file fails in its midst.
    bool is_stated_program(const Tried& one, const string& now) const {
        if (now == program_before_ || now == program_after_) return true;
        bool reads = false;
        for (const string_view word : {"LOAD", "MERGE", "CHAIN"})
            reads = reads || one.line.find(word) != string::npos;
        const string known = '\n' + program_before_ + program_after_;
        for (std::size_t at = 0; reads && at < now.size();) {
            const std::size_t end = now.find('\n', at) + 1;
            reads = known.find('\n' + now.substr(at, end - at)) != string::npos;
            at = end;
        }
        return reads;
    }

    void wrong(const Tried& one, const string& how, const string& what) {
        ++wrong_;
        if (wrong_ <= 60) std::printf("WRONG: %s (%s): %s\n", one.line.c_str(), how.c_str(), what.c_str());
    }

    // Every statement of the table of handlers and every explorer command has a row.
    void require_every_word() {
        std::array<bool, 256> tried{};
        tried[END_OF_LINE] = tried[':'] = true;
        std::set<string> explored;
        for (const Tried& one : tried_lines()) {
            const string word = one.line.substr(0, one.line.find_first_of(" \""));
            if (one.explores) {
                explored.insert(word);
            } else {
                tokenize(reinterpret_cast<const std::uint8_t*>(word.c_str()));
                tried[tokenizer.scratch[0].kind] = true;
            }
        }
        for (std::size_t kind = 0; kind < tried.size(); ++kind)
            if (statement_handlers.numbers[kind] != 0 && !tried[kind])
                wrong({"", string(keyword_name(static_cast<std::uint8_t>(kind))), ""}, "table", "no row");
        for (const ExplorerCommand& command : explorer_commands())
            if (!explored.contains(command.word)) wrong({"", command.word, ""}, "table", "no row");
    }

    // Those that only the start-up uses are swept by failing-startups, those of native code, which this
    // machine does not have, by the tests of the executable memory.
    void require_every_service() {
        const std::set<Service> at_start = {Service::Stall, Service::SetWatchdogTimer, Service::ClearScreen,
                                            Service::SetCursorPosition, Service::OutputString};
        const std::set<Service> of_native_code = {Service::MemoryAttributesGet, Service::MemoryAttributesSet,
                                                  Service::MemoryAttributesClear};
        const std::set<Service> never = {Service::FreePages, Service::CheckEvent,
                                         Service::GetNextVariableName, Service::FileFlush};
        for (std::size_t i = 0; i < host::service_count; ++i) {
            const auto service = static_cast<Service>(i);
            if (swept_.contains(service) || at_start.contains(service) || of_native_code.contains(service))
                continue;
            const bool used = uses_so_far(service) != 0;
            if (never.contains(service) && !used) continue;
            wrong({"", string(host::service_name(service)), ""}, "table", "a service without a sweep");
        }
    }

    bool lists_;
    string program_before_;
    string program_after_;
    string said_undisturbed_;
    std::set<Service> swept_;
    std::uint64_t lines_ = 0;
    std::uint64_t failures_ = 0;
    int wrong_ = 0;
};

}  // namespace
}  // namespace korvane::fuzz

int main(int count, char** words) {
    using namespace korvane::fuzz;
    static Machine the_machine;
    return Sweep(count == 2 && std::string_view(words[1]) == "--list").all();
}

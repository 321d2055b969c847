// Everything fails once while the interpreter starts: each firmware service at each of its uses, once and
// from there on, with each status, and with a volume that lies.
//
// Whatever fails, the interpreter comes to its prompt and works there, or says on the firmware's console why
// it cannot, in one of three stated ways and for a reason that is one; a standalone program runs or returns
// to the firmware.
//
//     failing-startups [--list]    --list tells which services each start uses
#include <array>
#include <cstdio>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "failures.h"
#include "invariants.h"
#include "player.h"
#include "program/arenas.h"
#include "program/program_store.h"
#include "targets.h"

namespace korvane::fuzz {

namespace {

using host::Service;
using std::string;
using std::string_view;

// A machine to start on, with what its volume holds.
struct Start {
    string_view name;
    void (*prepare)(Hardware& hardware);
    Stop undisturbed = Stop::waits;
};

// Without variables: when the firmware has given no memory for them, nothing holds them.
constexpr string_view startup_program = "10 FILES\r\n20 PRINT \"STARTED\"\r\n";

// An image file with one packed line.
string packed_image() {
    constexpr string_view text = "PRINT 1";
    const auto number = [](std::uint64_t value, std::size_t bytes) {
        string digits(bytes, '\0');
        std::memcpy(digits.data(), &value, bytes);
        return digits;
    };
    const string program = "BAS2" + number(1, 4) + number(10, 4) + number(text.size(), 4) + string(text);
    return "MZ" + program + "KORVANE2-PACKED!" + number(program.size(), 8);
}

constexpr std::array<Start, 7> starts = {{
    {"to the prompt", [](Hardware&) {}},
    {"with a start-up program",
     [](Hardware&) { machine->firmware().volume().put_file("STARTUP.BAS", string(startup_program)); }},
    {"as a standalone program",
     [](Hardware&) { machine->firmware().volume().put_file("EFI/BOOT/BOOTX64.EFI", packed_image()); },
     Stop::returned},
    {"with a command line",
     [](Hardware& hardware) {
         hardware.has_load_options = true;
         hardware.load_options = string("a\0 \0b\0", 6);
     }},
    {"in a mode without a framebuffer",
     [](Hardware& hardware) { hardware.modes[0].format = uefi::PixelFormat::PixelBltOnly; }},
    {"in a mode with red and blue the other way round",
     [](Hardware& hardware) {
         // A small one: at each look for a key all pixels are copied as long as nobody knows how long a
         // second is.
         hardware.modes[0].height = 120;
         for (GraphicsMode& mode : hardware.modes)
             mode.format = uefi::PixelFormat::PixelRedGreenBlueReserved8BitPerColor;
     }},
    {"without a framebuffer in any mode",
     [](Hardware& hardware) {
         for (GraphicsMode& mode : hardware.modes)
             mode.format = uefi::PixelFormat::PixelBltOnly;
     },
     Stop::halted},
}};

// Why the interpreter may stop for good, and the services whose failure is a reason for it.
struct LastWords {
    string_view text;
    std::vector<Service> reasons;
};
const std::vector<LastWords> stated_last_words = {
    {"GOP not found!\r\n",
     {Service::LocateProtocol, Service::LocateHandleBuffer, Service::HandleProtocol, Service::QueryMode,
      Service::SetMode}},
    {"Code alloc failed!\r\n", {Service::AllocatePages}},
    {"GetMemoryMap failed!\r\n", {Service::GetMemoryMap, Service::AllocatePool}},
};

class Sweep {
  public:
    explicit Sweep(bool lists) : lists_(lists) {}

    int all() {
        prepare(*find_target("startup"), true);
        for (const Start& start : starts)
            sweep(start);
        require_every_service();
        std::printf(
            "%zu starts, %llu failures: %d come to the prompt, %d stop with a message, %d return; %d wrong\n",
            starts.size(), static_cast<unsigned long long>(failures_), prompts_, stops_, returns_, wrong_);
        return wrong_ == 0 && prompts_ != 0 && stops_ != 0 && returns_ != 0 ? 0 : 1;
    }

  private:
    using Arm = std::function<void()>;

    static Stop start_with(const Start& start, const Arm& arm) {
        begin_input();
        Hardware hardware = usual_hardware();
        start.prepare(hardware);
        machine->firmware().build(hardware);
        arm();
        const Stop why = machine->start();
        machine->firmware().faults().arm({});
        return why;
    }

    void sweep(const Start& start) {
        Uses used;
        const Stop why = start_with(start, [&] {
            used.begin();
            machine->firmware().volume().lie_at(0, Lie::none);
        });
        used.end();
        const std::uint64_t volume_uses = machine->firmware().volume().uses();
        if (lists_) used.print(string(start.name));
        if (why != start.undisturbed) {
            wrong(start, "undisturbed", "it ends elsewhere");
            return;
        }
        if (why == Stop::waits) check_prompt(start, "undisturbed", false, false);
        for (const Service service : used.services())
            fail_service(start, service, std::min(used.of(service), most_uses));
        for (const Lie lie : lies)
            for (std::uint64_t use = 1; use <= std::min(volume_uses, most_uses); ++use)
                try_failure(start, words_for(lie, use), nullptr, lie == Lie::pulled_stick,
                            [=] { machine->firmware().volume().lie_at(use, lie); });
    }

    void fail_service(const Start& start, Service service, std::uint64_t count) {
        swept_.insert(service);
        // The prompt's own looks.
        if (service == Service::ReadKeyStroke) count = std::min<std::uint64_t>(count, 2);
        for (std::uint64_t use = 1; use <= count; ++use)
            for (const uefi::Status status : failing_statuses)
                for (const bool once : {true, false}) {
                    const string how = words_for(service, use, once, status);
                    try_failure(start, how, &service, false, [=] {
                        machine->firmware().faults().arm({{service, use, once ? 1 : for_good, status}});
                    });
                }
    }

    // `service` is the one that fails, null when the volume lies.
    void try_failure(const Start& start, const string& how, const Service* service, bool pulled,
                     const Arm& arm) {
        ++failures_;
        switch (start_with(start, arm)) {
            case Stop::waits:
                ++prompts_;
                check_prompt(start, how, pulled, service != nullptr && *service == Service::FreePool);
                break;
            case Stop::halted:
                ++stops_;
                check_last_words(start, how, service);
                break;
            case Stop::returned:
                ++returns_;
                if (start.undisturbed != Stop::returned) wrong(start, how, "it returns to the firmware");
                break;
            case Stop::given_up:
                wrong(start, how, "it goes on for ever");
                break;
        }
    }

    void check_last_words(const Start& start, const string& how, const Service* service) {
        if (start.undisturbed == Stop::halted) return;
        for (const LastWords& stated : stated_last_words)
            if (stated.text == machine->firmware().last_words() && service != nullptr &&
                std::find(stated.reasons.begin(), stated.reasons.end(), *service) != stated.reasons.end())
                return;
        wrong(start, how, "it stops for good and says: " + machine->firmware().last_words());
    }

    void check_prompt(const Start& start, const string& how, bool pulled, bool keeps_pool) {
        if (!is_stated_program(start)) wrong(start, how, "the program is another one");
        // Without memory for its data the interpreter can still be looked at, no more.
        if (arenas.LOMEM == nullptr) return;
        for (const string& rule : broken_invariants())
            wrong(start, how, "this does not hold: " + rule);
        if (!type("CLS") || !type("X=6:PRINT 7*X") || !is_on_screen(" 42")) {
            wrong(start, how, "the prompt does not work");
            return;
        }
        const string left = resources_left(pulled, keeps_pool);
        if (!left.empty()) wrong(start, how, left);
    }

    // Nothing, what has been read of the start-up program, or the packed line.
    static bool is_stated_program(const Start& start) {
        string text;
        for (std::uint32_t i = 0; i < program.count; ++i)
            text += std::to_string(program.lines[i].number) + ' ' + string(line_text(i)) + "\r\n";
        if (text.empty()) return true;
        if (start.undisturbed == Stop::returned) return text == "10 PRINT 1\r\n";
        return start.name == starts[1].name && startup_program.substr(0, text.size()) == text;
    }

    void wrong(const Start& start, const string& how, const string& what) {
        ++wrong_;
        if (wrong_ <= 60)
            std::printf("WRONG: %.*s (%s): %s\n", static_cast<int>(start.name.size()), start.name.data(),
                        how.c_str(), what.c_str());
    }

    // What the tests of statements leave to these.
    void require_every_service() {
        for (const Service service :
             {Service::Stall, Service::SetWatchdogTimer, Service::ClearScreen, Service::SetCursorPosition,
              Service::OutputString, Service::SetMode, Service::GetMemoryMap, Service::AllocatePages,
              Service::AllocatePool, Service::LocateProtocol, Service::HandleProtocol, Service::OpenVolume})
            if (!swept_.contains(service))
                wrong(starts[0], string(host::service_name(service)), "a service without a sweep");
    }

    bool lists_;
    std::set<Service> swept_;
    std::uint64_t failures_ = 0;
    int prompts_ = 0;
    int stops_ = 0;
    int returns_ = 0;
    int wrong_ = 0;
};

}  // namespace
}  // namespace korvane::fuzz

int main(int count, char** words) {
    using namespace korvane::fuzz;
    static Machine the_machine;
    return Sweep(count == 2 && std::string_view(words[1]) == "--list").all();
}

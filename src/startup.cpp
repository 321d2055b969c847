// Start-up: the image's entry point prepares everything and hands over to the direct mode, or runs the packed
// program and returns to the firmware.
#include "explorer/explorer.h"
#include "files/file_table.h"
#include "files/output.h"
#include "files/program_text.h"
#include "files/volume.h"
#include "image/packed_program.h"
#include "platform/clock.h"
#include "platform/firmware.h"
#include "platform/listener.h"
#include "platform/processor.h"
#include "platform/stack.h"
#include "program/arenas.h"
#include "program/command_line.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/line_starts.h"
#include "program/program_store.h"
#include "program/tokenizer.h"
#include "prompt/auto_numbering.h"
#include "prompt/command_loop.h"
#include "run/breakpoints.h"
#include "run/control_stacks.h"
#include "run/event_timers.h"
#include "run/native.h"
#include "run/run.h"
#include "run/specialised.h"
#include "run/trace.h"
#include "screen/console.h"
#include "screen/graphics.h"
#include "screen/keyboard.h"
#include "screen/line_editor.h"
#include "screen/text_windows.h"
#include "screen/video_mode.h"
#include "start_banner.h"
#include "statements/graphics/bitmaps.h"
#include "values/clear.h"
#include "values/data_items.h"
#include "values/random.h"

namespace korvane {
namespace {

// Without a screen or memory there is nothing to run; the firmware keeps the machine (deliberate: the
// application does not return, so that the message stays on the screen).
[[noreturn]] void stop_for_good(const char16_t* reason) {
    print_on_firmware_console(reason);
    halt_processor();
}

void disable_watchdog() {
    // A firmware without a watchdog may refuse; there is nothing to disable then.
    firmware.boot->SetWatchdogTimer(0, 0, 0, nullptr);
}

void clear_firmware_console() {
    uefi::SimpleTextOutputProtocol* out = firmware.system_table->ConOut;
    if (out == nullptr) return;
    // The framebuffer console takes over in a moment; a failure shows nothing worse than old text.
    out->ClearScreen(out);
    out->SetCursorPosition(out, 0, 0);
}

// The firmware's console as it was before the start: other applications print there.
void give_back_firmware_console() {
    video_end();
    uefi::SimpleTextOutputProtocol* out = firmware.system_table->ConOut;
    if (out == nullptr || out->Mode == nullptr) return;
    out->SetMode(out, out->Mode->Mode);
    clear_firmware_console();
}

// The state of what needs neither the screen nor the arenas, so that nothing depends on what the image's
// memory held before; start() sees to the rest.
void initialize_state() {
    execution = Execution{};
    execution.line = direct_line;
    tokenizer.first_handler = execute_first;
    line_starts = {.handler = leave_at_line_start, .has_breakpoint = nullptr, .is_traced = nullptr};
    errors = ErrorState{};
    forget_error();
    output = Output{};
    command_loop = CommandLoop{};
    auto_numbering = AutoNumbering{};
    initialize_volume();
    initialize_file_table();
    initialize_keyboard();
    initialize_line_editor();
    gfx_start();
    initialize_text_windows();
    initialize_bitmaps();
    initialize_explorer();
    reset_random();
    clear_breakpoints();
    clear_trace();
    reset_run_state();
    native::initialize();
}

void take_memory() {
    if (!allocate_program_arena()) stop_for_good(u"Code alloc failed!\r\n");
    if (!allocate_data_arena()) stop_for_good(u"GetMemoryMap failed!\r\n");
}

bool startup_program_exists() {
    return static_cast<bool>(open_program("STARTUP.BAS"));
}

void run_startup_program() {
    if (!startup_program_exists()) return;
    handle_text("LOAD \"STARTUP.BAS\"");
    if (!error_pending()) handle_text("RUN");
}

void start(bool autostart) {
    calibrate_clock();
    clear_firmware_console();
    if (!video_start()) stop_for_good(u"GOP not found!\r\n");
    find_listener();
    take_memory();
    if (!autostart) announce_data_arena();
    clear_data();
    clear_program();
    con_reset();
    if (!autostart) print_banner();
    read_command_line();
    tell(Happening::starts, reinterpret_cast<std::uint64_t>(&program));
}

}  // namespace
}  // namespace korvane

// The entry point named in the image's header. Returns only when the image carries a packed program. The rest
// of the image relies on a stack that is aligned to 16 bytes, so nothing but this function need trust the
// firmware with it.
extern "C" __attribute__((force_align_arg_pointer)) korvane::uefi::Status EFIAPI
_ModuleEntryPoint(korvane::uefi::Handle image_handle, korvane::uefi::SystemTable* system_table) {
    using namespace korvane;
    initialize_stack();
    firmware_start(image_handle, system_table);
    disable_watchdog();
    initialize_state();
    const bool autostart = detect_packed_program();
    start(autostart);
    if (!autostart) {
        run_startup_program();
        run_command_loop();
    }
    if (load_packed_program()) handle_text("RUN");
    native::give_back_memory();
    give_back_firmware_console();
    return uefi::success;
}

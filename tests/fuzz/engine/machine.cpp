#include "machine.h"

#include <cstring>

#include "interpreter_memory.h"
#include "platform/clock.h"
#include "raw_memory.h"

#ifdef KORVANE_FUZZ_ASAN
#include <sanitizer/common_interface_defs.h>
#endif

extern "C" korvane::uefi::Status EFIAPI _ModuleEntryPoint(korvane::uefi::Handle image_handle,
                                                          korvane::uefi::SystemTable* system_table);

// What is left of a machine at the end of the process is no leak.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}

namespace korvane::fuzz {

Machine* machine = nullptr;

namespace {

#ifdef KORVANE_FUZZ_ASAN
void before_switch(void** save, const void* bottom, std::size_t size) {
    __sanitizer_start_switch_fiber(save, bottom, size);
}
void after_switch(void* saved, const void** old_bottom, std::size_t* old_size) {
    __sanitizer_finish_switch_fiber(saved, old_bottom, old_size);
}
#else
void before_switch(void**, const void*, std::size_t) {}
void after_switch(void*, const void**, std::size_t*) {}
#endif

// AddressSanitizer has one byte of notes for eight bytes of memory.
constexpr std::uint64_t shadow_offset = 0x7FFF8000;
constexpr std::uint64_t bytes_per_shadow_byte = 8;

std::uint8_t* shadow_of(std::uint64_t address) {
    return reinterpret_cast<std::uint8_t*>(address / bytes_per_shadow_byte + shadow_offset);
}

__attribute__((no_sanitize("address"))) void clear_raw(std::uint8_t* to, std::uint64_t count) {
    auto* words = reinterpret_cast<std::uint64_t*>(to);
    for (std::uint64_t i = 0; i < count / 8; ++i)
        if (words[i] != 0) words[i] = 0;
}

// So many ticks are a second: enough for timers to be due now and then.
constexpr std::uint64_t ticks_per_second = 100'000'000;

}  // namespace

Machine::Machine() : stack_(SavedMemory::fresh(stack_base, stack_size)), variables_(interpreter_memory()) {
    machine = this;
    firmware_.on_stop([this](Stop why) { stop(why); });
}

void Machine::run_on_own_stack() {
    after_switch(nullptr, &machine->host_stack_, &machine->host_stack_size_);
    _ModuleEntryPoint(machine->firmware_.image_handle(), machine->firmware_.system_table());
    machine->stop(Stop::returned);
}

// Nobody comes back who has returned, halted or been given up; then only put_back() leads on.
void Machine::stop(Stop why) {
    stop_ = why;
    void* image_fiber = nullptr;
    before_switch(&image_fiber, host_stack_, host_stack_size_);
    swapcontext(&image_context_, &host_context_);
    after_switch(image_fiber, &host_stack_, &host_stack_size_);
}

Stop Machine::resume() {
    before_switch(&host_fiber_, reinterpret_cast<const void*>(stack_.begin()), stack_size);
    swapcontext(&host_context_, &image_context_);
    after_switch(host_fiber_, nullptr, nullptr);
    return stop_;
}

Stop Machine::start() {
    started_ = true;
    getcontext(&image_context_);
    image_context_.uc_stack.ss_sp = reinterpret_cast<void*>(stack_.begin());
    image_context_.uc_stack.ss_size = stack_size;
    image_context_.uc_link = nullptr;
    makecontext(&image_context_, run_on_own_stack, 0);
    const Stop why = resume();
    tsc_clock.ticks_per_second = ticks_per_second;
    return why;
}

Stop Machine::go_on() {
    return resume();
}

void Machine::save() {
    saved_started_ = started_;
    saved_context_ = image_context_;
    if (started_) {
        constexpr std::uint64_t red_zone = 128;
        const auto top = static_cast<std::uint64_t>(image_context_.uc_mcontext.gregs[REG_RSP]) - red_zone;
        saved_stack_from_ = top / bytes_per_shadow_byte * bytes_per_shadow_byte;
        const std::uint64_t size = stack_.end() - saved_stack_from_;
        saved_stack_.resize(size);
        copy_raw(saved_stack_.data(), reinterpret_cast<const std::uint8_t*>(saved_stack_from_), size);
        if (has_address_sanitizer) {
            saved_shadow_.resize(size / bytes_per_shadow_byte);
            copy_raw(saved_shadow_.data(), shadow_of(saved_stack_from_), saved_shadow_.size());
        }
    }
    firmware_.save();
    for (SavedMemory& memory : variables_)
        memory.save();
}

void Machine::put_back() {
    started_ = saved_started_;
    image_context_ = saved_context_;
    if (has_address_sanitizer) clear_raw(shadow_of(stack_.begin()), stack_size / bytes_per_shadow_byte);
    if (started_) {
        copy_raw(reinterpret_cast<std::uint8_t*>(saved_stack_from_), saved_stack_.data(),
                 saved_stack_.size());
        if (has_address_sanitizer)
            copy_raw(shadow_of(saved_stack_from_), saved_shadow_.data(), saved_shadow_.size());
    }
    firmware_.put_back();
    for (SavedMemory& memory : variables_)
        memory.put_back();
}

}  // namespace korvane::fuzz

#include "machine.h"

#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string_view>
#include <utility>

#include "give_up.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif

// The bounds of the program's own code, as the linker defines them.
extern "C" char __executable_start;
extern "C" char etext;

namespace korvane::host {

namespace {

Machine* running = nullptr;  // for the functions that are given no context

constexpr std::size_t signal_stack_size = 64 * 1024;
constexpr int caught_signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP};

#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
void before_switch(void** save, const void* bottom, std::size_t size) {
    __sanitizer_start_switch_fiber(save, bottom, size);
}
void after_switch(void* saved, const void** old_bottom, std::size_t* old_size) {
    __sanitizer_finish_switch_fiber(saved, old_bottom, old_size);
}
#else
constexpr bool sanitized = false;
void before_switch(void**, const void*, std::size_t) {}
void after_switch(void*, const void**, std::size_t*) {}
#endif

std::uint64_t monotonic_microseconds() {
    std::timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

// Calls a handler after some processor time, and then every few milliseconds, while it exists. A busy host
// thus makes nobody late.
class TimeLimit {
  public:
    TimeLimit(std::chrono::milliseconds limit, void (*handler)(int, siginfo_t*, void*))
        : active_(limit.count() > 0) {
        if (!active_) return;
        struct sigaction action {};
        action.sa_sigaction = handler;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER | SA_RESTART;
        sigaction(SIGPROF, &action, nullptr);
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit);
        const std::chrono::microseconds rest = limit - seconds;
        itimerval timer{};
        timer.it_value = {seconds.count(), rest.count()};
        timer.it_interval = {0, 5000};
        setitimer(ITIMER_PROF, &timer, nullptr);
    }
    ~TimeLimit() {
        if (!active_) return;
        const itimerval off{};
        setitimer(ITIMER_PROF, &off, nullptr);
    }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;

  private:
    bool active_;
};

// Linked code may carry a sanitizer, whose stack frames are many times larger.
Config with_stack_for(const ImageSource& source, Config config) {
    constexpr std::uint64_t sanitized_stack = 4 * 1024 * 1024;
    if (source.linked_code != nullptr) config.stack_size = std::max(config.stack_size, sanitized_stack);
    return config;
}

const char* signal_name(int number) {
    switch (number) {
        case SIGSEGV:
            return "memory access";
        case SIGBUS:
            return "bus error";
        case SIGFPE:
            return "arithmetic exception";
        case SIGILL:
            return "illegal instruction";
        default:
            return "trap";
    }
}

}  // namespace

Machine::Machine(Config config, ImageSource source)
    : source_(std::move(source)), firmware_(with_stack_for(source_, std::move(config))) {
    const auto file = read_file(source_.path);
    if (!file && source_.linked_code == nullptr) give_up("cannot read " + source_.path.string());
    if (file) {
        std::string problem;
        image_ = load_image({reinterpret_cast<const std::uint8_t*>(file->data()), file->size()}, image_base,
                            problem);
        if (!image_) give_up("cannot load " + source_.path.string() + ": " + problem);
        entry_point_ = reinterpret_cast<EntryPoint>(image_->entry_point);
        firmware_.place_image(image_base, image_->memory.size(), source_.path);
    }
    if (source_.linked_code != nullptr) entry_point_ = source_.linked_code;
    firmware_.keyboard().on_wanted([this](KeyWant want) { key_wanted(want); });
    const auto stack = firmware_.stack().bytes();
    firmware_.keyboard().stack_ends_at(stack.data() + stack.size());
    firmware_.on_exit([this](uefi::Status status) {
        status_ = status;
        switch_to_host(Stop::returned);
    });
    running = this;
    if (!sanitized) install_signal_handlers();
}

Machine::~Machine() {
    if (running == this) running = nullptr;
    if (!sanitized) {
        for (const int number : caught_signals)
            signal(number, SIG_DFL);
        stack_t off{};
        off.ss_flags = SS_DISABLE;
        sigaltstack(&off, nullptr);
    }
}

void Machine::install_signal_handlers() {
    signal_stack_ = std::make_unique<std::uint8_t[]>(signal_stack_size);
    stack_t stack{};
    stack.ss_sp = signal_stack_.get();
    stack.ss_size = signal_stack_size;
    sigaltstack(&stack, nullptr);
    struct sigaction action {};
    action.sa_sigaction = on_signal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    for (const int number : caught_signals)
        sigaction(number, &action, nullptr);
}

// The image is left where it stands, which is only safe in its own code: services may hold locks of the C
// library. There, the next tick tries again.
void Machine::on_time_limit(int, siginfo_t*, void* context) {
    if (running == nullptr || !running->started_) return;
    const auto& at = *static_cast<const ucontext_t*>(context);
    const auto place = static_cast<std::uint64_t>(at.uc_mcontext.gregs[REG_RIP]);
    if (running->runs_at(place)) {
        running->stopped_at_ = place;
        running->stop_ = Stop::timed_out;
        running->started_ = false;
        before_switch(nullptr, running->host_stack_, running->host_stack_size_);
        setcontext(&running->host_context_);
    }
    constexpr int most_ticks = 100;
    if (++running->ticks_past_limit_ < most_ticks) return;
    constexpr std::string_view message = "hosted firmware: the time limit has passed\n";
    if (write(STDERR_FILENO, message.data(), message.size()) < 0) {
        // Nobody is left to be told.
    }
    _exit(70);
}

void Machine::on_signal(int number, siginfo_t* information, void* context) {
    const auto& at = *static_cast<const ucontext_t*>(context);
    if (running == nullptr || !running->started_) {
        signal(number, SIG_DFL);
        raise(number);
        return;
    }
    running->fault_report_ = running->describe_fault(number, *information, at);
    running->stop_ = Stop::fault;
    running->started_ = false;
    setcontext(&running->host_context_);
}

// Linked code lies between the program's own, which at least is not the C library's. The image may also have
// made code in the machine's memory.
bool Machine::runs_at(std::uint64_t place) const {
    if (firmware_.memory().contains(place)) return true;
    if (source_.linked_code == nullptr) return image_->memory.contains(place);
    return place >= reinterpret_cast<std::uint64_t>(&__executable_start) &&
           place < reinterpret_cast<std::uint64_t>(&etext);
}

std::string Machine::describe_place(std::uint64_t place) const {
    const bool in_image = image_ && image_->memory.contains(place);
    const char* where = in_image                             ? "image offset"
                        : firmware_.memory().contains(place) ? "in the machine's memory at"
                                                             : "outside the image at";
    char text[80];
    std::snprintf(text, sizeof text, ", %s %#llx", where,
                  static_cast<unsigned long long>(in_image ? place - image_->memory.base() : place));
    return text;
}

std::string Machine::describe_fault(int number, const siginfo_t& information,
                                    const ucontext_t& context) const {
    const auto place = static_cast<std::uint64_t>(context.uc_mcontext.gregs[REG_RIP]);
    const auto address = reinterpret_cast<std::uint64_t>(information.si_addr);
    char text[200];
    int length = std::snprintf(text, sizeof text, "machine fault: %s", signal_name(number));
    const auto add = [&](const char* format, std::uint64_t value) {
        const auto used = static_cast<std::size_t>(length);
        length +=
            std::snprintf(text + used, sizeof text - used, format, static_cast<unsigned long long>(value));
    };
    if (number == SIGSEGV || number == SIGBUS) add(" at address %#llx", address);
    length += std::snprintf(text + length, sizeof text - static_cast<std::size_t>(length), "%s",
                            describe_place(place).c_str());
    if (const std::uint64_t base = firmware_.config().layout.stack;
        address < base && base - address <= uefi::page_size)
        add(" (the stack of %llu bytes is exhausted)", firmware_.config().stack_size);
    return text;
}

void Machine::start_on_own_stack() {
    Machine& machine = *running;
    after_switch(nullptr, &machine.host_stack_, &machine.host_stack_size_);
    machine.status_ =
        machine.entry_point_(machine.firmware_.image_handle(), machine.firmware_.system_table());
    machine.switch_to_host(Stop::returned);
}

void Machine::switch_to_host(Stop stop) {
    stop_ = stop;
    if (stop == Stop::returned) started_ = false;
    before_switch(&image_fiber_, host_stack_, host_stack_size_);
    swapcontext(&image_context_, &host_context_);
    after_switch(image_fiber_, &host_stack_, &host_stack_size_);
}

// Nothing else is in this function: what a compiler keeps of it in registers is lost between the two ways
// back.
void Machine::switch_to_image() {
    const auto stack = firmware_.stack().bytes();
    if (!started_) {
        started_ = true;
        getcontext(&image_context_);
        image_context_.uc_stack.ss_sp = stack.data();
        image_context_.uc_stack.ss_size = stack.size();
        image_context_.uc_link = nullptr;
        makecontext(&image_context_, start_on_own_stack, 0);
    }
    before_switch(&host_fiber_, stack.data(), stack.size());
    swapcontext(&host_context_, &image_context_);
    after_switch(host_fiber_, nullptr, nullptr);
}

Stop Machine::run(std::chrono::milliseconds limit) {
    const TimeLimit time_limit(limit, on_time_limit);
    ticks_past_limit_ = 0;
    switch_to_image();
    if (stop_ == Stop::timed_out) fault_report_ = "the time limit has passed" + describe_place(stopped_at_);
    return stop_;
}

void Machine::key_wanted(KeyWant want) {
    waits_in_event_ = want == KeyWant::block;
    if (want == KeyWant::poll) {
        if (poll_interval_ == 0) return;
        const std::uint64_t now = monotonic_microseconds();
        if (now - last_poll_stop_ < poll_interval_) return;
        last_poll_stop_ = now;
        switch_to_host(Stop::polls_key);
        return;
    }
    switch_to_host(Stop::waits_for_key);
}

void Machine::learn_waiting_place() {
    if (!image_ || source_.linked_code != nullptr) return;
    firmware_.keyboard().learn_spin_place(image_->memory.base(), image_->memory.size());
}

}  // namespace korvane::host

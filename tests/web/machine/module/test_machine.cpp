// The machine that transcripts are played on: what the module exports besides what a page needs. Orders come
// in and answers go out (parcel.h); between two of them the machine runs or stands still.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "firmware.h"
#include "folder.h"
#include "imports.h"
#include "memory_folder.h"
#include "parcel.h"
#include "program/execution.h"

extern "C" korvane::uefi::Status EFIAPI _ModuleEntryPoint(korvane::uefi::Handle, korvane::uefi::SystemTable*);

namespace korvane::web {

namespace {

// What an import tells the player between two orders: the machine wants a key.
extern "C" KORVANE_IMPORT("stopped") void import_stopped();

constexpr std::uint64_t image_base = host::image_base;

std::unique_ptr<host::Firmware> firmware;
std::string orders;
std::string answer;
Answer stop = Answer::returned;
uefi::Status status = uefi::success;
std::vector<std::uint32_t> known_pixels;  // what the player has been told; none are all 0

void key_wanted(host::KeyWant want) {
    if (want == host::KeyWant::poll) return;
    stop = want == host::KeyWant::block ? Answer::waits_in_event : Answer::waits_looking;
    import_stopped();
}

void start(Reader& reader) {
    firmware = std::make_unique<host::Firmware>(read_config(reader));
    firmware->keyboard().on_wanted(key_wanted);
    const std::string image(reader.text());
    const std::uint64_t size = reader.number();
    firmware->place_image(image_base, size, image);
}

void put_file(Reader& reader) {
    const std::string path(reader.text());
    const std::string_view bytes = reader.text();
    Node* node = make_node(path, false);
    if (node == nullptr) return;
    node->bytes.assign(bytes.begin(), bytes.end());
    node->is_changed = false;
}

void arm(Reader& reader) {
    std::vector<host::ServiceFault> faults(reader.number());
    for (host::ServiceFault& fault : faults) {
        fault.service = static_cast<host::Service>(reader.number());
        fault.first = reader.number();
        fault.uses = reader.number();
        fault.status = reader.number();
    }
    firmware->faults().arm(std::move(faults));
}

void remove(Reader& reader) {
    if (Node* node = find_node(reader.text())) drop(*node);
}

uefi::InputKey read_key(Reader& reader) {
    const auto scan = static_cast<std::uint16_t>(reader.number());
    return {scan, static_cast<char16_t>(reader.number())};
}

void set_time(Reader& reader) {
    if (reader.number() == 0) return firmware->set_time(std::nullopt);
    firmware->set_time(read_record<uefi::Time>(reader));
}

void follow(Order order, Reader& reader) {
    switch (order) {
        case Order::go_on:
            return;
        case Order::start:
            return start(reader);
        case Order::put_file:
            return put_file(reader);
        case Order::put_folder:
            make_node(reader.text(), true);
            return;
        case Order::remove:
            return remove(reader);
        case Order::press:
            return firmware->keyboard().press(read_key(reader));
        case Order::press_at_poll: {
            const std::uint64_t poll = reader.number();
            return firmware->keyboard().press_at_poll(poll, read_key(reader));
        }
        case Order::arm:
            return arm(reader);
        case Order::set_time:
            return set_time(reader);
        case Order::pull_stick:
            return firmware->pull_stick();
        case Order::plug_stick: {
            const auto where = static_cast<host::Replugged>(reader.number());
            return firmware->plug_stick(where, std::string(reader.text()));
        }
        case Order::replace_folder:
            return firmware->volumes().front()->replace_folder(std::string(reader.text()));
        case Order::double_machine:
        case Order::drop_double:
            return;  // the server's business
    }
}

void count_open_files(std::uint64_t& files, std::uint64_t& folders) {
    for (const auto& volume : firmware->volumes())
        for (const host::OpenFile* file : volume->open_files())
            ++(file->directory ? folders : files);
}

// The rows of pixels from the first to the last one that is not as at the stop before: screens are large, and
// most steps change little of them.
void write_changed_rows(Writer& writer, const host::Display& display) {
    const auto pixels = display.pixels();
    if (known_pixels.size() != pixels.size()) known_pixels.assign(pixels.size(), 0);
    const std::size_t pitch = display.pitch();
    const auto is_known = [&](std::size_t row) {
        return std::memcmp(&pixels[row * pitch], &known_pixels[row * pitch], pitch * sizeof pixels[0]) == 0;
    };
    std::size_t first = 0;
    std::size_t end = pixels.size() / pitch;
    while (first < end && is_known(first))
        ++first;
    while (end > first && is_known(end - 1))
        --end;
    const auto changed = pixels.subspan(first * pitch, (end - first) * pitch);
    std::copy(changed.begin(), changed.end(),
              known_pixels.begin() + static_cast<std::ptrdiff_t>(first * pitch));
    writer.number(pixels.size());
    writer.number(first * pitch);
    writer.text({reinterpret_cast<const char*>(changed.data()), changed.size_bytes()});
}

void write_screen(Writer& writer) {
    const host::Display* display = firmware->display();
    writer.number(display != nullptr);
    if (display == nullptr) return;
    for (const std::uint64_t value : {std::uint64_t{display->width()}, std::uint64_t{display->height()},
                                      std::uint64_t{display->pitch()}, display->mode_changes()})
        writer.number(value);
    write_changed_rows(writer, *display);
}

void write_report(Writer& writer) {
    writer.number(status);
    writer.number(firmware->keyboard().polls());
    write_screen(writer);
    writer.number(firmware->pool().buffers());
    writer.number(firmware->memory().allocated_pages());
    writer.text(firmware->text_console().text());
    writer.number(static_cast<std::uint64_t>(firmware->text_console().modes_set()));
    for (std::size_t i = 0; i < host::service_count; ++i)
        writer.number(firmware->faults().uses(static_cast<host::Service>(i)));
    writer.number(firmware->faults().strikes());
    std::uint64_t files = 0;
    std::uint64_t folders = 0;
    count_open_files(files, folders);
    writer.number(files);
    writer.number(folders);
    const std::vector<std::string> complaints = firmware->complaints();
    writer.number(complaints.size());
    for (const std::string& complaint : complaints)
        writer.text(complaint);
}

}  // namespace

extern "C" {

KORVANE_EXPORT("test_room") void* export_test_room(std::uint64_t size) {
    orders.resize(size);
    return orders.data();
}

// Follows the orders that have been put into the room.
KORVANE_EXPORT("test_follow") void export_test_follow() {
    Reader reader(orders);
    while (!reader.at_end())
        follow(static_cast<Order>(reader.number()), reader);
}

KORVANE_EXPORT("test_run") void export_test_run() {
    status = _ModuleEntryPoint(firmware->image_handle(), firmware->system_table());
    stop = Answer::returned;
}

// Where the answer lies; its size comes from test_answer_size().
KORVANE_EXPORT("test_answer") const char* export_test_answer(std::uint32_t halted) {
    tell_changed(all_files());
    Writer writer;
    writer.number(static_cast<std::uint64_t>(halted != 0 ? Answer::halted : stop));
    write_report(writer);
    answer = writer.bytes();
    return answer.data();
}

KORVANE_EXPORT("test_answer_size") std::uint64_t export_test_answer_size() {
    return answer.size();
}

}  // extern "C"

}  // namespace korvane::web

namespace korvane::host {

namespace {

// Tells what is long again and again from what is long for once, with much that is short in between.
class Repeated {
  public:
    explicit Repeated(int most_between) : most_between_(most_between) {}

    bool is_long(bool now) {
        const bool again = since_ <= most_between_;
        since_ = now ? 0 : since_ + 1;
        return now && again;
    }

  private:
    int most_between_;
    int since_ = 0;
};

}  // namespace

// A browser's clock goes by steps in which an image looks many times: a look takes as much of a step as those
// of the step before it did on average, so that an image that only waits is told from one that works. Where
// the clock is fine, each look has a step of its own. A long step between many short ones is another
// process's. Looks with hundreds of statements between them are those for the break key, however fast these
// are: a program that looks for keys does so much more often.
//
// Asking the browser for the time takes longer than a look does elsewhere, and what has not been compiled for
// speed yet longer still. So a tick is long: a look of up to 4.8 us follows the one before at once.
std::uint64_t host_ticks() {
    constexpr double long_look = 4000;  // nanoseconds
    constexpr double tick = 40;         // nanoseconds
    constexpr std::uint64_t many_statements = 200;
    constexpr double busy_time = 400'000;  // as if so much had passed
    static Repeated steps(20);
    static Repeated runs(8);
    static double last = 0;
    static double time = 0;
    static double pace = 0;
    static double looks = 0;
    static std::uint64_t statements = 0;
    const double now = web::import_ticks();
    ++looks;
    if (now != last) {
        const double found = (now - last) / looks;
        const bool is_long = found > long_look;
        if (steps.is_long(is_long) || !is_long) pace = found;
        last = now;
        looks = 0;
    }
    time += pace;
    const std::uint64_t count = execution.statement_count;
    if (runs.is_long(count - std::exchange(statements, count) >= many_statements)) time += busy_time;
    return static_cast<std::uint64_t>(time / tick);
}

}  // namespace korvane::host

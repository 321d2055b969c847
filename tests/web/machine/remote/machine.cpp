#include "machine.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace korvane::host {

namespace {

using web::Order;

web::Server* server = nullptr;
std::filesystem::path scratch;

void order(web::Writer& writer, Order what) {
    writer.number(static_cast<std::uint64_t>(what));
}

std::string content_of(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The size of an image in memory: its header has it.
std::uint64_t loaded_size(const std::string& image) {
    constexpr std::size_t pe_offset_place = 0x3C;
    constexpr std::size_t size_place = 24 + 56;
    std::uint32_t value = 0;
    const auto number_at = [&](std::size_t place) {
        if (image.size() >= place + sizeof value) std::memcpy(&value, image.data() + place, sizeof value);
        return value;
    };
    return (number_at(number_at(pe_offset_place) + size_place) + 4095ULL) / 4096 * 4096;
}

void order_alone(Order what) {
    constexpr std::chrono::milliseconds patience{60'000};
    web::Writer writer;
    order(writer, what);
    server->ask(writer.bytes(), patience);
}

// Marks a folder among the known files, which no content can begin with by chance: it is longer than any.
const std::string folder_mark = "\x01 folder";

}  // namespace

MachineDouble::MachineDouble() {
    order_alone(Order::double_machine);
}

MachineDouble::~MachineDouble() {
    order_alone(Order::drop_double);
}

void Machine::use(web::Server& used, std::filesystem::path folder) {
    server = &used;
    scratch = std::move(folder);
}

void Keyboard::press(uefi::InputKey key) {
    order(orders_, Order::press);
    orders_.number(key.ScanCode);
    orders_.number(key.UnicodeChar);
}

void Keyboard::press_at_poll(std::uint64_t poll, uefi::InputKey key) {
    order(orders_, Order::press_at_poll);
    orders_.number(poll);
    orders_.number(key.ScanCode);
    orders_.number(key.UnicodeChar);
}

void RemoteFaults::arm(const std::vector<ServiceFault>& faults) {
    order(orders_, Order::arm);
    orders_.number(faults.size());
    for (const ServiceFault& fault : faults) {
        orders_.number(static_cast<std::uint64_t>(fault.service));
        orders_.number(fault.first);
        orders_.number(fault.uses);
        orders_.number(fault.status);
    }
}

Firmware::Firmware(web::Writer& orders) : orders_(orders), keyboard_(orders), faults_(orders) {}

void Firmware::pull_stick() {
    order(orders_, Order::pull_stick);
}

void Firmware::plug_stick(Replugged where, const std::string& folder) {
    order(orders_, Order::plug_stick);
    orders_.number(static_cast<std::uint64_t>(where));
    orders_.text(folder);
}

void Firmware::set_time(const uefi::Time& time) {
    order(orders_, Order::set_time);
    orders_.number(1);
    orders_.text({reinterpret_cast<const char*>(&time), sizeof time});
}

Machine::Machine(const Config& config, const ImageSource& source) : firmware_(orders_) {
    server->ensure_running();
    for (std::size_t i = 0; i < config.volumes.size(); ++i)
        firmware_.volumes_.push_back(std::make_unique<RemoteVolume>(orders_));
    const std::string image = content_of(source.path);
    order(orders_, Order::start);
    web::write_config(orders_, config);
    orders_.text(source.path.string());
    orders_.number(loaded_size(image));
    order(orders_, Order::put_file);
    orders_.text(source.path.string());
    orders_.text(image);
}

// Whatever has been written, made or removed below the scratch folder since the machine has seen it.
void Machine::send_files(web::Writer& writer) {
    std::map<std::string, std::string> now;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(scratch))
        now[entry.path().string()] = entry.is_directory() ? folder_mark : content_of(entry.path());
    for (auto known = known_files_.rbegin(); known != known_files_.rend(); ++known) {
        if (now.contains(known->first)) continue;
        order(writer, Order::remove);
        writer.text(known->first);
    }
    for (const auto& [path, content] : now) {
        const auto known = known_files_.find(path);
        if (known != known_files_.end() && known->second == content) continue;
        order(writer, content == folder_mark ? Order::put_folder : Order::put_file);
        writer.text(path);
        if (content != folder_mark) writer.text(content);
    }
    known_files_ = std::move(now);
}

Stop Machine::run(std::chrono::milliseconds limit) {
    // A process that shares its processor with others has more time than the limit, which is processor time.
    constexpr int leniency = 3;
    web::Writer files;
    send_files(files);
    web::Writer all;
    // The first order, a new machine, makes room for what comes then.
    const std::string& noted = orders_.bytes();
    const bool begins = noted.size() >= 8 && noted[0] == static_cast<char>(Order::start);
    all.number(static_cast<std::uint64_t>(begins ? Order::start : Order::go_on));
    const std::string orders = all.bytes() + files.bytes() + noted;
    orders_ = web::Writer();
    // A machine that halts says so: there is no hurry.
    constexpr std::chrono::milliseconds least{5'000};
    const auto answer = server->ask(orders, std::max(limit * leniency, least));
    if (!answer) return Stop::timed_out;
    web::Reader reader(*answer);
    const auto stop = static_cast<web::Answer>(reader.number());
    if (stop == web::Answer::fault) {
        fault_report_ = reader.text();
        return Stop::fault;
    }
    read_report(reader);
    take_changes(reader);
    waits_in_event_ = stop == web::Answer::waits_in_event;
    if (stop == web::Answer::returned) return Stop::returned;
    return stop == web::Answer::halted ? Stop::timed_out : Stop::waits_for_key;
}

void Machine::read_screen(web::Reader& reader) {
    Display& display = firmware_.display_;
    firmware_.has_display_ = reader.number() != 0;
    if (!firmware_.has_display_) return;
    display.width_ = static_cast<std::uint32_t>(reader.number());
    display.height_ = static_cast<std::uint32_t>(reader.number());
    display.pitch_ = static_cast<std::uint32_t>(reader.number());
    display.mode_changes_ = reader.number();
    // Those that are not as at the stop before.
    const std::uint64_t count = reader.number();
    if (display.pixels_.size() != count) display.pixels_.assign(count, 0);
    const std::uint64_t first = reader.number();
    const std::string_view changed = reader.text();
    std::memcpy(display.pixels_.data() + first, changed.data(), changed.size());
}

void Machine::read_report(web::Reader& reader) {
    static constexpr OpenFile file{false};
    static constexpr OpenFile folder{true};
    status_ = reader.number();
    firmware_.keyboard_.polls_ = reader.number();
    read_screen(reader);
    firmware_.pool_.count = reader.number();
    firmware_.memory_.pages = reader.number();
    firmware_.text_console_.text_ = reader.text();
    firmware_.text_console_.modes_set_ = static_cast<int>(reader.number());
    for (std::uint64_t& uses : firmware_.faults_.uses_)
        uses = reader.number();
    firmware_.faults_.strikes_ = reader.number();
    const std::uint64_t files = reader.number();
    const std::uint64_t folders = reader.number();
    if (!firmware_.volumes_.empty()) {
        auto& open = firmware_.volumes_.front()->open_files_;
        open.assign(files, &file);
        open.insert(open.end(), folders, &folder);
    }
    firmware_.complaints_.resize(reader.number());
    for (std::string& complaint : firmware_.complaints_)
        complaint = reader.text();
}

// Does to the scratch folder what the machine has done to its copy.
void Machine::take_changes(web::Reader& reader) {
    enum class Change : std::uint64_t { file, folder, gone };
    while (!reader.at_end()) {
        const auto change = static_cast<Change>(reader.number());
        const std::string path(reader.text());
        const std::string content(reader.text());
        // Nothing outside is a transcript's.
        if (!path.starts_with(scratch.string() + "/")) continue;
        switch (change) {
            case Change::file:
                std::filesystem::create_directories(std::filesystem::path(path).parent_path());
                std::ofstream(path, std::ios::binary) << content;
                known_files_[path] = content;
                break;
            case Change::folder:
                std::filesystem::create_directories(path);
                known_files_[path] = folder_mark;
                break;
            case Change::gone:
                std::filesystem::remove_all(path);
                std::erase_if(known_files_, [&](const auto& known) {
                    return known.first == path || known.first.starts_with(path + "/");
                });
                break;
        }
    }
}

}  // namespace korvane::host

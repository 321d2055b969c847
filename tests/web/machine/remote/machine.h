// A machine that runs in another process (tests/web/machine/browser_server.mjs), for the player of
// transcripts: as much of the hosted firmware's Machine as that uses, under the same names. What is done to
// it is noted down and done when it goes on; what it is asked is what it told when it stopped.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "config.h"
#include "display.h"
#include "parcel.h"
#include "server.h"
#include "service_faults.h"

namespace korvane::host {

struct ImageSource {
    std::filesystem::path path;

    static ImageSource file(std::filesystem::path path) { return {std::move(path)}; }
};

enum class Stop { waits_for_key, polls_key, timed_out, returned, fault };

enum class Replugged { same_port, other_port, same_handle, other_stick };

struct OpenFile {
    bool directory;
};

class RemoteVolume {
  public:
    explicit RemoteVolume(web::Writer& orders) : orders_(orders) {}

    void replace_folder(const std::string& folder) {
        orders_.number(static_cast<std::uint64_t>(web::Order::replace_folder));
        orders_.text(folder);
    }
    const std::vector<const OpenFile*>& open_files() const { return open_files_; }

  private:
    friend class Machine;

    web::Writer& orders_;
    std::vector<const OpenFile*> open_files_;
};

class Keyboard {
  public:
    explicit Keyboard(web::Writer& orders) : orders_(orders) {}

    void press(uefi::InputKey key);
    void press_at_poll(std::uint64_t poll, uefi::InputKey key);
    std::uint64_t polls() const { return polls_; }

  private:
    friend class Machine;

    web::Writer& orders_;
    std::uint64_t polls_ = 0;
};

class RemoteFaults {
  public:
    explicit RemoteFaults(web::Writer& orders) : orders_(orders) {}

    void arm(const std::vector<ServiceFault>& faults);
    std::uint64_t uses(Service service) const { return uses_[static_cast<std::size_t>(service)]; }
    std::uint64_t strikes() const { return strikes_; }

  private:
    friend class Machine;

    web::Writer& orders_;
    std::array<std::uint64_t, service_count> uses_{};
    std::uint64_t strikes_ = 0;
};

struct RemotePool {
    std::uint64_t count = 0;
    std::uint64_t buffers() const { return count; }
};

struct RemoteMemory {
    std::uint64_t pages = 0;
    std::uint64_t allocated_pages() const { return pages; }
    std::uint64_t executable_pages() const { return 0; }  // there is no native code here
};

class TextConsole {
  public:
    const std::string& text() const { return text_; }
    int modes_set() const { return modes_set_; }

  private:
    friend class Machine;

    std::string text_;
    int modes_set_ = 0;
};

class Firmware {
  public:
    explicit Firmware(web::Writer& orders);

    Display* display() { return has_display_ ? &display_ : nullptr; }
    Keyboard& keyboard() { return keyboard_; }
    RemoteFaults& faults() { return faults_; }
    RemotePool& pool() { return pool_; }
    RemoteMemory& memory() { return memory_; }
    TextConsole& text_console() { return text_console_; }
    std::vector<std::unique_ptr<RemoteVolume>>& volumes() { return volumes_; }
    const std::vector<std::string>& complaints() const { return complaints_; }
    void pull_stick();
    void plug_stick(Replugged where, const std::string& folder);
    void set_time(const uefi::Time& time);

  private:
    friend class Machine;

    web::Writer& orders_;
    bool has_display_ = false;
    Display display_;
    Keyboard keyboard_;
    RemoteFaults faults_;
    RemotePool pool_;
    RemoteMemory memory_;
    TextConsole text_console_;
    std::vector<std::unique_ptr<RemoteVolume>> volumes_;
    std::vector<std::string> complaints_;
};

// While it exists, orders go to a double of the machine.
class MachineDouble {
  public:
    MachineDouble();
    ~MachineDouble();
    MachineDouble(const MachineDouble&) = delete;
    MachineDouble& operator=(const MachineDouble&) = delete;
};

class Machine {
  public:
    Machine(const Config& config, const ImageSource& source);

    Firmware& firmware() { return firmware_; }
    Stop run(std::chrono::milliseconds limit = {});
    bool waits_in_event() const { return waits_in_event_; }
    uefi::Status status() const { return status_; }
    const std::string& fault_report() const { return fault_report_; }
    void learn_waiting_place() {}

    // Whatever all machines of this process run on.
    static void use(web::Server& server, std::filesystem::path scratch);

  private:
    void send_files(web::Writer& writer);
    void read_report(web::Reader& reader);
    void read_screen(web::Reader& reader);
    void take_changes(web::Reader& reader);

    web::Writer orders_;
    Firmware firmware_;
    std::map<std::string, std::string> known_files_;  // what the machine has, by path
    bool waits_in_event_ = false;
    uefi::Status status_ = uefi::success;
    std::string fault_report_;
};

}  // namespace korvane::host

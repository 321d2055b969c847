#include "player.h"

#include <filesystem>
#include <memory>
#include <utility>

#include "forked.h"
#include "machine_builder.h"

namespace korvane::transcript {

namespace {

// What a failing use of a service reports in a failure loop: the failure that is the likeliest in practice.
uefi::Status usual_failure(host::Service service) {
    using host::Service;
    switch (service) {
        case Service::AllocatePages:
        case Service::AllocatePool:
            return uefi::out_of_resources;
        case Service::LocateProtocol:
        case Service::LocateHandleBuffer:
        case Service::GetVariable:
            return uefi::not_found;
        case Service::HandleProtocol:
            return uefi::unsupported;
        case Service::FileWrite:
            return uefi::volume_full;
        default:
            return uefi::device_error;
    }
}

}  // namespace

void Player::restart(const Step& step) {
    host::Config config = build_config(test_, scratch_, false);
    config.image_path = u"\\" + std::u16string(step.name.begin(), step.name.end());
    host::ImageSource image = image_;
    image.path = on_volume(step.name);
    machine_.reset();
    machine_ = std::make_unique<host::Machine>(std::move(config), image);
    machine_->firmware().faults().arm(faults_);
    resume();
    note_start();
}

// Another stick is an empty one.
void Player::plug_stick(const Step& step) {
    const auto where = static_cast<host::Replugged>(step.numbers[0]);
    const bool other = where == host::Replugged::other_stick;
    const std::filesystem::path folder = other ? scratch_ / "other-stick" : volume_folder(scratch_, 0);
    std::filesystem::create_directories(folder);
    machine_->firmware().plug_stick(where, folder);
}

void Player::use_own_copy_of_volume(const std::string& name) {
    const std::filesystem::path copy = scratch_ / name;
    std::filesystem::create_directories(copy);
    std::filesystem::copy(volume_folder(scratch_, 0), volume_folder(copy, 0),
                          std::filesystem::copy_options::recursive);
    machine_->firmware().volumes().front()->replace_folder(volume_folder(copy, 0));
    scratch_ = copy;
}

// Plays the step after `index` once for each use of each service, with that use failing, until no use is left
// to fail. Whatever the step then shows, the steps after it must come out as written.
void Player::fail_each(std::size_t index) {
    if (index + 1 >= test_.steps.size()) fail("no step follows");
    fail_uses_of(test_.steps[index].services, [&](host::Service service, std::uint64_t use) {
        return play_with_failure(index + 1, service, use);
    });
}

void Player::fail_uses_of(const std::vector<host::Service>& services,
                          const std::function<ForkedResult(host::Service, std::uint64_t)>& play) {
    constexpr std::uint64_t most_uses = 2000;
    for (const host::Service service : services) {
        bool goes_on = true;
        for (std::uint64_t use = 1; goes_on; use += options_.every_failure ? 1 : 1 + use / 4) {
            ForkedResult result = run_forked([&] {
                const host::MachineDouble own;
                return play(service, use);
            });
            if (result.report.empty() && use >= most_uses) result.report = "there is no end of uses\n";
            if (!result.report.empty()) {
                report_ = result.report + "    (with use " + std::to_string(use) + " of " +
                          std::string(host::service_name(service)) + " failing)\n";
                throw Failure{};
            }
            goes_on = result.goes_on;
        }
    }
}

// Where to go on after a step that did not come out as expected.
std::size_t Player::after_failure(std::size_t index) const {
    for (std::size_t i = index + 1; i < test_.steps.size(); ++i)
        if (test_.steps[i].action == Action::in_any_case) return i;
    return index + 1;
}

ForkedResult Player::play_with_failure(std::size_t index, host::Service service, std::uint64_t use) {
    ForkedResult result;
    try {
        use_own_copy_of_volume(std::string(host::service_name(service)) + std::to_string(use));
        machine_->firmware().faults().arm({{service, use, 1, usual_failure(service)}});
        tolerant_ = true;
        came_out_as_expected_ = true;
        play_step(test_.steps[index]);
        tolerant_ = false;
        result.goes_on = machine_->firmware().faults().strikes() != 0;
        machine_->firmware().faults().arm({});
        for (std::size_t i = came_out_as_expected_ ? index + 1 : after_failure(index); i < test_.steps.size();
             ++i)
            play_step(test_.steps[i]);
        check_end();
    } catch (const Failure&) {
        result.report = report_;
    }
    return result;
}

// The same for the start of the machine, which must then either reach its prompt, where the steps come out as
// written, or halt with a message on the firmware's console.
void Player::fail_each_start() {
    fail_uses_of(
        test_.start_fail_each,
        [&](host::Service service, std::uint64_t use) { return start_with_failure(service, use); });
}

ForkedResult Player::start_with_failure(host::Service service, std::uint64_t use) {
    ForkedResult result;
    try {
        auto& faults = machine_->firmware().faults();
        faults.arm({{service, use, 1, usual_failure(service)}});
        tolerant_start_ = true;
        resume();
        tolerant_start_ = false;
        result.goes_on = faults.strikes() != 0;
        faults.arm({});
        if (is_waiting())
            play_steps(0);
        else if (last_stop_ == host::Stop::returned)
            fail("the application ended");
        else if (machine_->firmware().text_console().text().find('!') == std::string::npos)
            fail("it halted without a message");
    } catch (const Failure&) {
        result.report = report_;
    }
    return result;
}

}  // namespace korvane::transcript

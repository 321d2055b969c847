// Plays one case on a machine and compares what happens with what is expected.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "forked.h"
#include "machine.h"
#include "screen_text.h"
#include "transcript.h"

namespace korvane::transcript {

struct PlayOptions {
    bool show = false;                           // report the screen after every step
    std::chrono::milliseconds patience{10'000};  // how long one step may take
    // Of the uses of a service that fail in turn, every one; or fewer the later they come, where each takes a
    // machine of its own.
    bool every_failure = true;
};

class Player {
  public:
    // `machine` either has not been started or waits at its first prompt.
    Player(const Case& test, std::unique_ptr<host::Machine>& machine, std::filesystem::path scratch,
           host::ImageSource image, PlayOptions options);

    // Plays all steps. The result is the report of the first failure, empty when there is none.
    std::string play();

    // What --show asked for.
    const std::string& shown() const { return shown_; }

  private:
    struct Failure {};

    bool machine_started() const;
    void start();
    void play_steps(std::size_t first);
    void note_start();
    std::uint64_t mode_changes() const;
    void play_step(const Step& step);

    void resume(std::chrono::milliseconds patience = {});
    bool waits_for_halt() const;
    bool is_waiting() const { return last_stop_ == host::Stop::waits_for_key; }
    const ScreenText& screen();
    void begin_step();
    void type(const Step& step);
    void press(const Step& step);
    static bool shows_at(const ScreenText& screen, const CellPosition& place, const std::string& typed);
    static CellPosition end_of_text(const ScreenText& screen);
    static std::optional<CellPosition> first_difference(const ScreenText& before, const ScreenText& after);
    static std::vector<std::string> output_rows(const ScreenText& after, std::size_t first, bool scrolled);

    void compare(const Step& step, std::vector<std::string> actual, bool prompt_is_implied);
    void check_rows(const Step& step);
    void check_pixels(const Step& step);
    void check_colours(const Step& step);
    void check_cursor(const Step& step);
    void check_file(const Step& step);
    void check_image();
    void check_exit(const Step& step);
    void check_given_back(const Step& step);
    void check_end();

    void restart(const Step& step);
    void plug_stick(const Step& step);
    void use_own_copy_of_volume(const std::string& name);
    void fail_each(std::size_t index);
    std::size_t after_failure(std::size_t index) const;
    void fail_uses_of(const std::vector<host::Service>& services,
                      const std::function<ForkedResult(host::Service, std::uint64_t)>& play);
    ForkedResult play_with_failure(std::size_t index, host::Service service, std::uint64_t use);
    void fail_each_start();
    ForkedResult start_with_failure(host::Service service, std::uint64_t use);

    void show(const Step& step, const ScreenText& screen);
    [[noreturn]] void fail(const std::string& what);
    std::filesystem::path on_volume(const std::string& name) const;

    const Case& test_;
    std::unique_ptr<host::Machine>& machine_;
    std::filesystem::path scratch_;
    host::ImageSource image_;
    PlayOptions options_;
    host::Stop last_stop_ = host::Stop::waits_for_key;
    std::vector<host::ServiceFault> faults_;
    std::vector<std::pair<std::uint64_t, uefi::InputKey>> scheduled_;  // keys for the next step, by poll
    std::uint64_t buffers_at_start_ = 0;
    std::uint64_t pages_at_start_ = 0;
    std::uint64_t mode_changes_at_start_ = 0;
    std::uint64_t map_reads_at_start_ = 0;
    std::uint64_t files_left_open_ = 0;
    bool tolerant_ = false;             // output is not compared while a failure is being injected
    bool came_out_as_expected_ = true;  // the step that was played with a failing service
    bool tolerant_start_ = false;       // the start may end in a halt
    std::size_t line_ = 0;              // of the step being played
    std::optional<ScreenText> screen_;
    std::string report_;
    std::string shown_;
};

}  // namespace korvane::transcript

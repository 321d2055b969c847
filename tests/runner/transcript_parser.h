// Reads a transcript line by line. Directives are found in two tables, one for steps and one for options.
#pragma once

#include <filesystem>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "transcript.h"

namespace korvane::transcript {

using Words = std::vector<std::string>;

class Parser {
  public:
    Parser(const std::filesystem::path& file, std::vector<std::string>& problems)
        : file_(file), problems_(problems) {}

    std::vector<Case> parse(std::istream& stream);

  private:
    struct Directive {
        std::string_view name;
        bool (Parser::*handler)(const Words& words, std::string_view rest);
    };
    static const Directive step_directives[];
    static const Directive option_directives[];

    void problem(const std::string& what) {
        problems_.push_back(file_.string() + ":" + std::to_string(line_number_) + ": " + what);
    }
    void parse_line(const std::string& line);
    void parse_directive(std::string_view text);
    void parse_row(std::string_view text);
    void begin_case(std::string_view title);
    void finish_rows();
    Step& add_step(Action action);
    void typed_line(std::string_view text);

    // Steps
    bool keys(const Words&, std::string_view rest);
    bool at_poll(const Words& words, std::string_view rest);
    bool rows(const Words& words, std::string_view);
    bool pixel(const Words& words, std::string_view);
    bool area(const Words& words, std::string_view);
    bool colours(const Words& words, std::string_view);
    bool cursor(const Words& words, std::string_view);
    bool expect_file(const Words& words, std::string_view);
    bool no_file(const Words& words, std::string_view);
    bool console(const Words&, std::string_view rest);
    bool exits(const Words& words, std::string_view);
    bool given_back(const Words& words, std::string_view);
    bool halts(const Words& words, std::string_view);
    bool fail(const Words& words, std::string_view);
    bool heal(const Words& words, std::string_view);
    bool fail_each(const Words& words, std::string_view);
    static std::optional<host::ServiceFault> fault(const Words& words);
    static bool services(const Words& words, std::vector<host::Service>& into);
    bool in_any_case(const Words& words, std::string_view);
    bool leaves_open(const Words& words, std::string_view);
    bool image_kept(const Words& words, std::string_view);
    bool pull_stick(const Words& words, std::string_view);
    bool plug_stick(const Words& words, std::string_view);
    bool restart(const Words& words, std::string_view);
    // Options, or steps once there is one
    bool time(const Words&, std::string_view rest);
    bool file(const Words& words, std::string_view);
    // Options
    bool folder(const Words& words, std::string_view);
    bool screen(const Words& words, std::string_view);
    bool modes(const Words& words, std::string_view);
    bool options(const Words&, std::string_view rest);
    bool memory(const Words& words, std::string_view);
    bool memory_map(const Words& words, std::string_view);
    bool volumes(const Words& words, std::string_view);
    bool read_only(const Words& words, std::string_view);
    bool capacity(const Words& words, std::string_view);
    bool image_path(const Words& words, std::string_view);
    bool image_on_volume(const Words& words, std::string_view);
    bool stick(const Words& words, std::string_view);
    bool without(const Words& words, std::string_view);
    bool disk(const Words& words, std::string_view);
    bool disk_bytes(const Words& words, std::string_view rest);
    bool disk_text(const Words& words, std::string_view rest);
    bool variable(const Words& words, std::string_view rest);
    bool boot_entry(const Words& words, std::string_view rest);
    bool own_start(const Words& words, std::string_view);
    bool fail_start(const Words& words, std::string_view);
    bool fail_each_start(const Words& words, std::string_view);

    bool numbers(const Words& words, std::size_t from, std::size_t count, std::vector<std::uint64_t>& into);

    std::filesystem::path file_;
    std::vector<std::string>& problems_;
    std::size_t line_number_ = 0;
    std::vector<Case> cases_;
    bool takes_rows_ = false;               // the step before may be followed by rows
    std::string* takes_content_ = nullptr;  // where "|" lines go
    bool memory_given_ = false;
};

}  // namespace korvane::transcript

#include "transcript.h"

#include <algorithm>
#include <fstream>
#include <string_view>

#include "text_syntax.h"
#include "unicode.h"

namespace korvane::transcript {

namespace {

using Words = std::vector<std::string>;

constexpr std::uint64_t default_disk_blocks = 64;

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
    bool halts(const Words& words, std::string_view);
    bool fail(const Words& words, std::string_view);
    bool heal(const Words& words, std::string_view);
    bool fail_each(const Words& words, std::string_view);
    static std::optional<host::ServiceFault> fault(const Words& words);
    static bool services(const Words& words, std::vector<host::Service>& into);
    bool leaves_open(const Words& words, std::string_view);
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
    bool volumes(const Words& words, std::string_view);
    bool read_only(const Words& words, std::string_view);
    bool capacity(const Words& words, std::string_view);
    bool image_path(const Words& words, std::string_view);
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

const Parser::Directive Parser::step_directives[] = {
    {"keys", &Parser::keys},           {"at-poll", &Parser::at_poll},
    {"rows", &Parser::rows},           {"pixel", &Parser::pixel},
    {"area", &Parser::area},           {"colours", &Parser::colours},
    {"cursor", &Parser::cursor},       {"expect-file", &Parser::expect_file},
    {"no-file", &Parser::no_file},     {"console", &Parser::console},
    {"exits", &Parser::exits},         {"halts", &Parser::halts},
    {"fail", &Parser::fail},           {"heal", &Parser::heal},
    {"fail-each", &Parser::fail_each}, {"leaves-open", &Parser::leaves_open},
    {"restart", &Parser::restart},     {"file", &Parser::file},
    {"time", &Parser::time},
};

const Parser::Directive Parser::option_directives[] = {
    {"folder", &Parser::folder},
    {"screen", &Parser::screen},
    {"modes", &Parser::modes},
    {"options", &Parser::options},
    {"memory", &Parser::memory},
    {"volumes", &Parser::volumes},
    {"read-only", &Parser::read_only},
    {"capacity", &Parser::capacity},
    {"image-path", &Parser::image_path},
    {"without", &Parser::without},
    {"disk", &Parser::disk},
    {"disk-bytes", &Parser::disk_bytes},
    {"disk-text", &Parser::disk_text},
    {"variable", &Parser::variable},
    {"boot-entry", &Parser::boot_entry},
    {"own-start", &Parser::own_start},
    {"fail-start", &Parser::fail_start},
    {"fail-each-start", &Parser::fail_each_start},
};

std::vector<Case> Parser::parse(std::istream& stream) {
    std::string line;
    while (std::getline(stream, line)) {
        ++line_number_;
        parse_line(line);
    }
    finish_rows();
    return std::move(cases_);
}

void Parser::parse_line(const std::string& line) {
    if (line.starts_with("=== ")) return begin_case(std::string_view(line).substr(4));
    if (cases_.empty()) {
        if (!line.empty() && !line.starts_with("@ ")) problem("a case begins with \"=== title\"");
        return;
    }
    if (line.starts_with(">"))
        return typed_line(std::string_view(line).substr(line.starts_with("> ") ? 2 : 1));
    if (line == "@" || line.starts_with("@ ")) return;  // a comment
    if (line.starts_with("@")) return parse_directive(std::string_view(line).substr(1));
    parse_row(line);
}

void Parser::begin_case(std::string_view title) {
    finish_rows();
    Case& test = cases_.emplace_back();
    test.file = file_;
    test.line = line_number_;
    test.title = title;
    test.config.width = 640;
    test.config.height = 2048;
    test.config.volumes.resize(1);
    memory_given_ = false;
}

// Blank lines at the end of a step only separate it from the next.
void Parser::finish_rows() {
    takes_content_ = nullptr;
    takes_rows_ = false;
    if (cases_.empty() || cases_.back().steps.empty()) return;
    std::vector<ExpectedRow>& rows = cases_.back().steps.back().rows;
    while (!rows.empty() && rows.back().text.empty() && !rows.back().is_pattern)
        rows.pop_back();
    // A row written as "|" alone is significant also at the end.
    for (ExpectedRow& row : rows)
        if (row.text == std::string(1, '\0')) row.text.clear();
}

Step& Parser::add_step(Action action) {
    finish_rows();
    Step& step = cases_.back().steps.emplace_back();
    step.action = action;
    step.line = line_number_;
    return step;
}

void Parser::typed_line(std::string_view text) {
    Step& step = add_step(Action::type);
    step.source = text;
    if (auto keys = typed_keys(text))
        step.keys = std::move(*keys);
    else
        problem("a character that cannot be typed");
    takes_rows_ = true;
    step.has_rows = true;
}

void Parser::parse_row(std::string_view text) {
    if (takes_content_ != nullptr && text.starts_with("|")) {
        text.remove_prefix(1);
        const bool without_end = text.ends_with("\\c");
        if (without_end) text.remove_suffix(2);
        if (const auto content = unescape(text))
            *takes_content_ += *content + (without_end ? "" : "\r\n");
        else
            problem("unknown escape");
        return;
    }
    if (!takes_rows_) {
        if (!text.empty()) problem("no step takes this row");
        return;
    }
    Step& step = cases_.back().steps.back();
    if (text == "|") {
        step.rows.push_back({std::string(1, '\0'), false});
    } else if (text.starts_with("~")) {
        text.remove_prefix(text.starts_with("~ ") ? 2 : 1);
        step.rows.push_back({std::string(text), true});
    } else {
        if (text.starts_with("|")) text.remove_prefix(1);
        step.rows.push_back({without_trailing_blanks(std::string(text)), false});
    }
    if (!text.empty()) step.has_rows = true;
}

void Parser::parse_directive(std::string_view text) {
    const Words words = split_words(text);
    const std::size_t name_end = std::min(text.find(' '), text.size());
    std::string_view rest = text.substr(name_end);
    if (!rest.empty()) rest.remove_prefix(1);
    const auto run = [&](const Directive& directive) {
        if (!(this->*directive.handler)(words, rest)) problem("bad arguments of @" + words[0]);
    };
    for (const Directive& directive : step_directives)
        if (directive.name == words[0]) return run(directive);
    for (const Directive& directive : option_directives) {
        if (directive.name != words[0]) continue;
        if (!cases_.back().steps.empty()) problem("@" + words[0] + " comes before the first step");
        finish_rows();
        if (directive.name != "folder") cases_.back().machine_key += std::string(text) + "\n";
        return run(directive);
    }
    problem("unknown directive @" + words[0]);
}

bool Parser::numbers(const Words& words, std::size_t from, std::size_t count,
                     std::vector<std::uint64_t>& into) {
    if (words.size() < from + count) return false;
    for (std::size_t i = from; i < from + count; ++i) {
        const auto number = parse_number(words[i]);
        if (!number) return false;
        into.push_back(*number);
    }
    return true;
}

// ---- Steps

bool Parser::keys(const Words&, std::string_view rest) {
    Step& step = add_step(Action::press);
    step.source = rest;
    takes_rows_ = true;
    auto keys = named_keys(rest);
    if (keys) step.keys = std::move(*keys);
    return keys.has_value();
}

bool Parser::at_poll(const Words& words, std::string_view rest) {
    Step& step = add_step(Action::press_at_poll);
    if (words.size() < 3 || !numbers(words, 1, 1, step.numbers)) return false;
    auto keys = named_keys(rest.substr(rest.find(' ') + 1));
    if (keys) step.keys = std::move(*keys);
    return keys.has_value();
}

bool Parser::rows(const Words& words, std::string_view) {
    Step& step = add_step(Action::rows);
    takes_rows_ = true;
    return words.size() == 2 && numbers(words, 1, 1, step.numbers);
}

bool Parser::pixel(const Words& words, std::string_view) {
    Step& step = add_step(Action::pixel);
    const auto colour = words.size() == 5 && words[3] == "=" ? parse_colour(words[4]) : std::nullopt;
    if (!colour || !numbers(words, 1, 2, step.numbers)) return false;
    step.numbers.push_back(step.numbers[0]);
    step.numbers.push_back(step.numbers[1]);
    step.numbers.push_back(*colour);
    return true;
}

bool Parser::area(const Words& words, std::string_view) {
    Step& step = add_step(Action::pixel);
    const auto colour = words.size() == 7 && words[5] == "=" ? parse_colour(words[6]) : std::nullopt;
    if (!colour || !numbers(words, 1, 4, step.numbers)) return false;
    step.numbers.push_back(*colour);
    return true;
}

bool Parser::colours(const Words& words, std::string_view) {
    Step& step = add_step(Action::colours);
    if (words.size() != 6 || words[3] != "=" || !numbers(words, 1, 2, step.numbers)) return false;
    const auto ink = parse_colour(words[4]);
    const auto paper = parse_colour(words[5]);
    if (!ink || !paper) return false;
    step.numbers.push_back(*ink);
    step.numbers.push_back(*paper);
    return true;
}

bool Parser::cursor(const Words& words, std::string_view) {
    return words.size() == 3 && numbers(words, 1, 2, add_step(Action::cursor).numbers);
}

bool Parser::expect_file(const Words& words, std::string_view) {
    Step& step = add_step(Action::file);
    takes_content_ = &step.content;
    if (words.size() != 2) return false;
    step.name = words[1];
    return true;
}

bool Parser::no_file(const Words& words, std::string_view) {
    if (words.size() != 2) return false;
    add_step(Action::no_file).name = words[1];
    return true;
}

bool Parser::console(const Words&, std::string_view rest) {
    const auto content = unescape(rest);
    if (content) add_step(Action::console).content = *content;
    return content.has_value();
}

bool Parser::exits(const Words& words, std::string_view) {
    cases_.back().own_start = true;
    return words.size() == 2 && numbers(words, 1, 1, add_step(Action::exits).numbers);
}

bool Parser::halts(const Words& words, std::string_view) {
    cases_.back().own_start = true;
    add_step(Action::halts);
    return words.size() == 1;
}

// SERVICE FIRST STATUS, or FIRST-LAST, or FIRST- for all from there on
std::optional<host::ServiceFault> Parser::fault(const Words& words) {
    if (words.size() != 4) return std::nullopt;
    const auto service = host::find_service(words[1]);
    const auto status = host::find_status(words[3]);
    if (!service || !status) return std::nullopt;
    const std::size_t dash = words[2].find('-');
    const auto first = parse_number(words[2].substr(0, dash));
    auto last = first;
    if (dash != std::string::npos)
        last = dash + 1 == words[2].size() ? ~std::uint64_t{0} : parse_number(words[2].substr(dash + 1));
    if (!first || !last || *first == 0 || *last < *first) return std::nullopt;
    return host::ServiceFault{*service, *first, *last - *first + 1, *status};
}

bool Parser::fail(const Words& words, std::string_view) {
    const auto given = fault(words);
    if (given) add_step(Action::fail).faults.push_back(*given);
    return given.has_value();
}

bool Parser::fail_start(const Words& words, std::string_view) {
    const auto given = fault(words);
    if (given) cases_.back().start_faults.push_back(*given);
    cases_.back().own_start = true;
    return given.has_value();
}

bool Parser::heal(const Words& words, std::string_view) {
    add_step(Action::heal);
    return words.size() == 1;
}

bool Parser::services(const Words& words, std::vector<host::Service>& into) {
    for (std::size_t i = 1; i < words.size(); ++i) {
        const auto service = host::find_service(words[i]);
        if (!service) return false;
        into.push_back(*service);
    }
    return !into.empty();
}

bool Parser::fail_each(const Words& words, std::string_view) {
    return services(words, add_step(Action::fail_each).services);
}

bool Parser::fail_each_start(const Words& words, std::string_view) {
    cases_.back().own_start = true;
    return services(words, cases_.back().start_fail_each);
}

bool Parser::leaves_open(const Words& words, std::string_view) {
    return words.size() == 2 && numbers(words, 1, 1, add_step(Action::leaves_open).numbers);
}

bool Parser::restart(const Words& words, std::string_view) {
    if (words.size() != 2) return false;
    add_step(Action::restart).name = words[1];
    return true;
}

bool Parser::time(const Words&, std::string_view rest) {
    const auto time = parse_time(rest);
    if (time) add_step(Action::time).time = *time;
    return time.has_value();
}

// @file [VOLUME:]PATH, before the first line typed the file is there from the start
bool Parser::file(const Words& words, std::string_view) {
    if (words.size() != 2) return false;
    std::string path = words[1];
    std::size_t volume = 0;
    if (path.size() > 2 && path[1] == ':' && path[0] >= '0' && path[0] <= '9') {
        volume = static_cast<std::size_t>(path[0] - '0');
        path.erase(0, 2);
    }
    Case& test = cases_.back();
    const bool only_options = std::all_of(test.steps.begin(), test.steps.end(),
                                          [](const Step& step) { return step.action == Action::time; });
    if (!only_options) {
        if (volume != 0) return false;
        Step& step = add_step(Action::put_file);
        step.name = path;
        takes_content_ = &step.content;
        return true;
    }
    finish_rows();
    if (path == "STARTUP.BAS" || volume != 0) test.own_start = true;
    if (volume >= test.config.volumes.size()) return false;
    test.files.push_back({volume, path, "", false});
    takes_content_ = &test.files.back().content;
    return true;
}

// ---- Options

bool Parser::folder(const Words& words, std::string_view) {
    if (words.size() != 2) return false;
    cases_.back().files.push_back({0, words[1], "", true});
    return true;
}

bool Parser::screen(const Words& words, std::string_view) {
    const std::size_t x = words.size() == 2 ? words[1].find('x') : std::string::npos;
    if (x == std::string::npos) return false;
    const auto width = parse_number(words[1].substr(0, x));
    const auto height = parse_number(words[1].substr(x + 1));
    if (!width || !height) return false;
    cases_.back().config.width = static_cast<std::uint32_t>(*width);
    cases_.back().config.height = static_cast<std::uint32_t>(*height);
    return true;
}

// @modes WIDTHxHEIGHT[/PITCH] ...
bool Parser::modes(const Words& words, std::string_view) {
    std::vector<host::GraphicsMode>& modes = cases_.back().config.modes;
    modes.clear();
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::size_t x = words[i].find('x');
        if (x == std::string::npos) return false;
        const std::size_t slash = words[i].find('/');
        const auto width = parse_number(words[i].substr(0, x));
        const auto height =
            parse_number(words[i].substr(x + 1, slash == std::string::npos ? slash : slash - x - 1));
        const auto pitch = slash == std::string::npos ? width : parse_number(words[i].substr(slash + 1));
        if (!width || !height || !pitch) return false;
        modes.push_back({static_cast<std::uint32_t>(*width), static_cast<std::uint32_t>(*height),
                         static_cast<std::uint32_t>(*pitch)});
    }
    return !modes.empty();
}

bool Parser::options(const Words&, std::string_view rest) {
    const auto plain = unescape(rest);
    const auto text = plain ? host::to_utf16(*plain) : std::nullopt;
    if (text) cases_.back().config.load_options = *text;
    return text.has_value();
}

// @memory BASE SIZE [TYPE]; the first one replaces the default memory
bool Parser::memory(const Words& words, std::string_view) {
    std::vector<std::uint64_t> given;
    if (words.size() > 4 || !numbers(words, 1, words.size() - 1, given) || given.size() < 2) return false;
    auto& memory = cases_.back().config.memory;
    if (!memory_given_) memory.clear();
    memory_given_ = true;
    const auto type =
        given.size() == 3 ? static_cast<uefi::MemoryType>(given[2]) : uefi::MemoryType::EfiConventionalMemory;
    memory.push_back({given[0], given[1] / uefi::page_size, type});
    return given[0] % uefi::page_size == 0 && given[1] % uefi::page_size == 0;
}

bool Parser::volumes(const Words& words, std::string_view) {
    std::vector<std::uint64_t> count;
    if (words.size() != 2 || !numbers(words, 1, 1, count) || count[0] > 9) return false;
    cases_.back().config.volumes.resize(count[0]);
    return true;
}

bool Parser::read_only(const Words& words, std::string_view) {
    cases_.back().config.volumes.front().read_only = true;
    return words.size() == 1;
}

bool Parser::capacity(const Words& words, std::string_view) {
    std::vector<std::uint64_t> bytes;
    if (words.size() != 2 || !numbers(words, 1, 1, bytes)) return false;
    cases_.back().config.volumes.front().capacity = bytes[0];
    return true;
}

bool Parser::image_path(const Words& words, std::string_view) {
    const auto path = words.size() == 2 ? host::to_utf16(words[1]) : std::nullopt;
    if (path) cases_.back().config.image_path = *path;
    return path.has_value();
}

bool Parser::without(const Words& words, std::string_view) {
    host::Config& config = cases_.back().config;
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i] == "graphics")
            config.graphics_output = false;
        else if (words[i] == "cpu")
            config.cpu_protocol = false;
        else if (words[i] == "acpi")
            config.acpi_table = false;
        else if (words[i] == "smbios")
            config.smbios_table = false;
        else
            return false;
    }
    return words.size() > 1;
}

// @disk [block=SIZE] [blocks=COUNT] [align=BYTES] [media=ID] [last=LBA] [bad=LBA]... [removable] [absent]
// [partition]
//       [read-only]
bool Parser::disk(const Words& words, std::string_view) {
    host::BlockDeviceConfig device;
    std::uint64_t blocks = default_disk_blocks;
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::size_t equals = words[i].find('=');
        const std::string name = words[i].substr(0, equals);
        std::optional<std::uint64_t> value = 0;
        if (equals != std::string::npos) value = parse_number(words[i].substr(equals + 1));
        if (!value) return false;
        if (name == "block")
            device.block_size = static_cast<std::uint32_t>(*value);
        else if (name == "blocks")
            blocks = *value;
        else if (name == "align")
            device.io_align = static_cast<std::uint32_t>(*value);
        else if (name == "media")
            device.media_id = static_cast<std::uint32_t>(*value);
        else if (name == "last")
            device.last_block = *value;
        else if (name == "bad")
            device.unreadable_blocks.push_back(*value);
        else if (name == "removable")
            device.removable = true;
        else if (name == "absent")
            device.media_present = false;
        else if (name == "partition")
            device.logical_partition = true;
        else if (name == "read-only")
            device.read_only = true;
        else
            return false;
    }
    Case& test = cases_.back();
    test.disk_sizes.push_back(blocks * std::max(device.block_size, 1U));
    test.config.block_devices.push_back(device);
    test.own_start = true;
    return true;
}

// @disk-bytes OFFSET HEX..., into the disk described last
bool Parser::disk_bytes(const Words& words, std::string_view rest) {
    Case& test = cases_.back();
    std::vector<std::uint64_t> offset;
    if (words.size() < 3 || test.disk_sizes.empty() || !numbers(words, 1, 1, offset)) return false;
    const auto bytes = parse_hex_bytes(rest.substr(rest.find(' ')));
    if (bytes) test.disk_patches.push_back({test.disk_sizes.size() - 1, offset[0], *bytes});
    return bytes.has_value();
}

// @disk-text OFFSET TEXT
bool Parser::disk_text(const Words& words, std::string_view rest) {
    Case& test = cases_.back();
    std::vector<std::uint64_t> offset;
    if (words.size() < 3 || test.disk_sizes.empty() || !numbers(words, 1, 1, offset)) return false;
    const auto bytes = unescape(rest.substr(rest.find(' ') + 1));
    if (bytes) test.disk_patches.push_back({test.disk_sizes.size() - 1, offset[0], *bytes});
    return bytes.has_value();
}

// @variable NAME HEX...
bool Parser::variable(const Words& words, std::string_view rest) {
    if (words.size() < 2) return false;
    const std::size_t data_at = rest.find(' ');
    const auto data = parse_hex_bytes(data_at == std::string_view::npos ? "" : rest.substr(data_at));
    const auto name = host::to_utf16(words[1]);
    if (!data || !name) return false;
    host::Variable variable;
    variable.name = *name;
    variable.data.assign(data->begin(), data->end());
    cases_.back().config.variables.push_back(std::move(variable));
    return true;
}

// @boot-entry HHHH ATTRIBUTES DESCRIPTION, the variable Boot#### with an empty device path (UEFI 2.10,
// section 3.1.3)
bool Parser::boot_entry(const Words& words, std::string_view rest) {
    if (words.size() < 4) return false;
    const auto name = host::to_utf16("Boot" + words[1]);
    const auto attributes = parse_number(words[2]);
    const auto description = host::to_utf16(rest.substr(words[1].size() + words[2].size() + 2));
    if (!name || !attributes || !description) return false;
    host::Variable variable;
    variable.name = *name;
    const auto put = [&](std::uint64_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            variable.data.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    };
    put(*attributes, 4);
    put(4, 2);  // bytes of device path
    for (const char16_t unit : *description)
        put(unit, 2);
    put(0, 2);
    put(0x0004FF7F, 4);  // the end of the path
    cases_.back().config.variables.push_back(std::move(variable));
    return true;
}

bool Parser::own_start(const Words& words, std::string_view) {
    cases_.back().own_start = true;
    return words.size() == 1;
}

}  // namespace

std::vector<Case> read_transcript(const std::filesystem::path& file, std::vector<std::string>& problems) {
    std::ifstream stream(file);
    if (!stream) {
        problems.push_back(file.string() + ": cannot be read");
        return {};
    }
    return Parser(file, problems).parse(stream);
}

}  // namespace korvane::transcript

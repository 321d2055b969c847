#include "transcript.h"

#include <algorithm>
#include <fstream>
#include <string_view>
#include <utility>

#include "text_syntax.h"
#include "transcript_parser.h"

namespace korvane::transcript {

const Parser::Directive Parser::step_directives[] = {
    {"keys", &Parser::keys},
    {"at-poll", &Parser::at_poll},
    {"rows", &Parser::rows},
    {"pixel", &Parser::pixel},
    {"area", &Parser::area},
    {"colours", &Parser::colours},
    {"cursor", &Parser::cursor},
    {"expect-file", &Parser::expect_file},
    {"no-file", &Parser::no_file},
    {"console", &Parser::console},
    {"exits", &Parser::exits},
    {"given-back", &Parser::given_back},
    {"halts", &Parser::halts},
    {"fail", &Parser::fail},
    {"heal", &Parser::heal},
    {"fail-each", &Parser::fail_each},
    {"in-any-case", &Parser::in_any_case},
    {"leaves-open", &Parser::leaves_open},
    {"image-kept", &Parser::image_kept},
    {"pull", &Parser::pull_stick},
    {"plug", &Parser::plug_stick},
    {"restart", &Parser::restart},
    {"file", &Parser::file},
    {"time", &Parser::time},
};

const Parser::Directive Parser::option_directives[] = {
    {"folder", &Parser::folder},
    {"screen", &Parser::screen},
    {"modes", &Parser::modes},
    {"options", &Parser::options},
    {"memory", &Parser::memory},
    {"memory-map", &Parser::memory_map},
    {"volumes", &Parser::volumes},
    {"read-only", &Parser::read_only},
    {"capacity", &Parser::capacity},
    {"image-path", &Parser::image_path},
    {"image-on-volume", &Parser::image_on_volume},
    {"stick", &Parser::stick},
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

std::vector<Case> read_transcript(const std::filesystem::path& file, std::vector<std::string>& problems) {
    std::ifstream stream(file);
    if (!stream) {
        problems.push_back(file.string() + ": cannot be read");
        return {};
    }
    return Parser(file, problems).parse(stream);
}

}  // namespace korvane::transcript

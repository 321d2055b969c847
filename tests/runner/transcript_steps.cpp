#include <algorithm>
#include <utility>

#include "firmware.h"
#include "text_syntax.h"
#include "transcript_parser.h"

namespace korvane::transcript {

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

// @given-back WIDTHxHEIGHT
bool Parser::given_back(const Words& words, std::string_view) {
    cases_.back().own_start = true;
    const std::size_t x = words.size() == 2 ? words[1].find('x') : std::string::npos;
    if (x == std::string::npos) return false;
    const auto width = parse_number(words[1].substr(0, x));
    const auto height = parse_number(words[1].substr(x + 1));
    if (!width || !height) return false;
    auto& size = add_step(Action::given_back).numbers;
    size = {*width, *height};
    return true;
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

bool Parser::in_any_case(const Words& words, std::string_view) {
    add_step(Action::in_any_case);
    return words.size() == 1;
}

bool Parser::leaves_open(const Words& words, std::string_view) {
    return words.size() == 2 && numbers(words, 1, 1, add_step(Action::leaves_open).numbers);
}

bool Parser::image_kept(const Words& words, std::string_view) {
    add_step(Action::image_kept);
    return words.size() == 1 && cases_.back().image_on_volume;
}

bool Parser::pull_stick(const Words& words, std::string_view) {
    add_step(Action::pull_stick);
    return words.size() == 1;
}

// @plug [other-port | same-handle | other-stick]
bool Parser::plug_stick(const Words& words, std::string_view) {
    host::Replugged where = host::Replugged::same_port;
    if (words.size() == 2 && words[1] == "other-port")
        where = host::Replugged::other_port;
    else if (words.size() == 2 && words[1] == "same-handle")
        where = host::Replugged::same_handle;
    else if (words.size() == 2 && words[1] == "other-stick")
        where = host::Replugged::other_stick;
    else if (words.size() != 1)
        return false;
    add_step(Action::plug_stick).numbers.push_back(static_cast<std::uint64_t>(where));
    return true;
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

}  // namespace korvane::transcript

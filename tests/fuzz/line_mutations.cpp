#include "line_mutations.h"

#include <algorithm>
#include <cstring>

namespace korvane::fuzz {

namespace {

constexpr std::size_t most_known_lines = 20'000;

std::vector<std::string>& known_lines() {
    static std::vector<std::string> lines;
    return lines;
}

const std::string& any(Random& random, const std::vector<std::string>& from) {
    return from[below(random, from.size())];
}

// A statement of one line becomes, or comes behind, one of another.
void mix_statements(Random& random, std::vector<std::string>& lines) {
    std::string& line = lines[below(random, lines.size())];
    std::vector<std::string> statements = split(line, ':');
    const std::vector<std::string> others = split(any(random, known_lines()), ':');
    if (statements.empty() || others.empty()) return;
    const std::size_t at = below(random, statements.size());
    if (below(random, 2) == 0)
        statements[at] = any(random, others);
    else
        statements.insert(statements.begin() + static_cast<std::ptrdiff_t>(at) + 1, any(random, others));
    line = join(statements, ':');
}

}  // namespace

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

std::string join(const std::vector<std::string>& parts, char separator) {
    std::string text;
    for (const std::string& part : parts) {
        if (&part != &parts.front()) text += separator;
        text += part;
    }
    return text;
}

void learn_line(Random& random, const std::vector<std::string>& lines) {
    const std::string& line = any(random, lines);
    if (line.empty()) return;
    std::vector<std::string>& known = known_lines();
    if (known.size() < most_known_lines)
        known.push_back(line);
    else
        known[below(random, known.size())] = line;
}

void change_one(Random& random, std::vector<std::string>& lines) {
    const auto place = [&](std::size_t at) { return lines.begin() + static_cast<std::ptrdiff_t>(at); };
    const std::size_t at = below(random, lines.size());
    switch (below(random, 7)) {
        case 0:
            lines.insert(place(at), any(random, known_lines()));
            break;
        case 1:
            lines[at] = any(random, known_lines());
            break;
        case 2:
            if (lines.size() > 1) lines.erase(place(at));
            break;
        case 3:
            lines.insert(place(below(random, lines.size() + 1)), std::string(lines[at]));
            break;
        case 4:
            std::swap(lines[at], lines[below(random, lines.size())]);
            break;
        case 5:
            for (std::size_t count = below(random, 12) + 2; count != 0; --count)
                lines.push_back(any(random, known_lines()));
            break;
        default:
            mix_statements(random, lines);
            break;
    }
}

std::size_t change_lines(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    Random random(seed);
    std::vector<std::string> lines = split({reinterpret_cast<const char*>(data), size}, line_end);
    if (lines.empty()) return 0;
    learn_line(random, lines);
    if (known_lines().empty() || below(random, 3) == 0) return 0;
    for (std::size_t changes = below(random, 3) + 1; changes != 0; --changes)
        change_one(random, lines);
    const std::string changed = join(lines, line_end).substr(0, most);
    std::memcpy(data, changed.data(), changed.size());
    return changed.size();
}

}  // namespace korvane::fuzz

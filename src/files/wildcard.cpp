#include "files/wildcard.h"

#include "platform/characters.h"

namespace korvane {

namespace {

// Where the run of "*" at `at` ends. A "*.*" that ends the pattern is part of the run.
std::size_t end_of_stars(std::string_view pattern, std::size_t at) {
    while (at < pattern.size() && pattern[at] == '*')
        ++at;
    if (at + 1 >= pattern.size() || pattern[at] != '.') return at;
    return pattern.find_first_not_of('*', at + 1) == std::string_view::npos ? pattern.size() : at;
}

}  // namespace

bool matches_wildcard(std::string_view pattern, std::string_view name) {
    // Only the last "*" has to be tried at later starting points: what came before it has matched already.
    std::size_t after_star = std::string_view::npos;
    std::size_t retry = 0;
    std::size_t p = 0;
    std::size_t n = 0;
    for (;;) {
        if (p < pattern.size() && pattern[p] == '*') {
            p = after_star = end_of_stars(pattern, p);
            if (p == pattern.size()) return true;
            retry = n;
        } else if (n == name.size()) {
            return p == pattern.size();
        } else if (p < pattern.size() &&
                   (pattern[p] == '?' || fold_to_upper(pattern[p]) == fold_to_upper(name[n]))) {
            ++p;
            ++n;
        } else if (after_star != std::string_view::npos) {
            p = after_star;
            n = ++retry;
        } else {
            return false;
        }
    }
}

}  // namespace korvane

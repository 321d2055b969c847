#include "counted.h"

#include <chrono>
#include <cstdio>
#include <string>

#include "player.h"

namespace korvane::fuzz {

void write_counts(const std::filesystem::path& file, std::string_view target, bool at_once) {
    using Clock = std::chrono::steady_clock;
    static const Clock::time_point begin = Clock::now();
    static Clock::time_point last = begin;
    const Clock::time_point now = Clock::now();
    if (!at_once && now - last < std::chrono::seconds(1)) return;
    last = now;
    const std::string fresh = file.string() + ".new";
    std::FILE* out = std::fopen(fresh.c_str(), "w");
    if (out == nullptr) return;
    std::fprintf(
        out,
        "{\"target\": \"%.*s\", \"inputs\": %llu, \"lines\": %llu, \"compared\": %llu, \"native\": %llu, "
        "\"steps\": %llu, \"seconds\": %.1f}\n",
        static_cast<int>(target.size()), target.data(), static_cast<unsigned long long>(counts.inputs),
        static_cast<unsigned long long>(counts.lines), static_cast<unsigned long long>(counts.compared),
        static_cast<unsigned long long>(counts.native), static_cast<unsigned long long>(counts.most_steps),
        std::chrono::duration<double>(now - begin).count());
    std::fclose(out);
    std::rename(fresh.c_str(), file.c_str());
}

}  // namespace korvane::fuzz

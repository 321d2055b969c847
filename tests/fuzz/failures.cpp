#include "failures.h"

#include <cstdio>

namespace korvane::fuzz {
namespace {

host::Service service_at(std::size_t place) {
    return static_cast<host::Service>(place);
}

}  // namespace

std::uint64_t uses_so_far(host::Service service) {
    return machine->firmware().faults().uses(service);
}

void Uses::begin() {
    for (std::size_t i = 0; i < counts_.size(); ++i)
        counts_[i] = uses_so_far(service_at(i));
}

void Uses::end() {
    for (std::size_t i = 0; i < counts_.size(); ++i)
        counts_[i] = uses_so_far(service_at(i)) - counts_[i];
}

std::vector<host::Service> Uses::services() const {
    std::vector<host::Service> used;
    for (std::size_t i = 0; i < counts_.size(); ++i)
        if (counts_[i] != 0) used.push_back(service_at(i));
    return used;
}

void Uses::print(const std::string& user) const {
    std::printf("%s:", user.c_str());
    for (const host::Service service : services())
        std::printf(" %s %llu", std::string(host::service_name(service)).c_str(),
                    static_cast<unsigned long long>(of(service)));
    std::printf("\n");
}

std::string words_for(host::Service service, std::uint64_t use, bool once, uefi::Status status) {
    return std::string(host::service_name(service)) + " use " + std::to_string(use) +
           (once ? " once" : " and on") + ", status " + std::to_string(status & ~uefi::error_bit);
}

std::string words_for(Lie lie, std::uint64_t use) {
    return "lie " + std::to_string(static_cast<int>(lie)) + " at use " + std::to_string(use);
}

}  // namespace korvane::fuzz

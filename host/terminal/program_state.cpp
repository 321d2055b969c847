#include "program_state.h"

#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <vector>

#include "program/program_store.h"

namespace korvane::host {
namespace {

constexpr std::uint64_t largest_text = 16 * 1024 * 1024;  // the program arena

// Copies memory that a POKE may have led astray: what cannot be read is no error of this program.
bool copy_memory(void* to, std::uint64_t from, std::size_t size) {
    const iovec local{to, size};
    const iovec remote{reinterpret_cast<void*>(from), size};
    return process_vm_readv(getpid(), &local, 1, &remote, 1, 0) == static_cast<ssize_t>(size);
}

template <typename Field>
Field read_field(std::uint64_t address) {
    Field field{};
    copy_memory(&field, address, sizeof field);
    return field;
}

std::uint64_t address_of(const void* pointer) {
    return reinterpret_cast<std::uint64_t>(pointer);
}

}  // namespace

void ProgramState::hear(Happening happening, std::uint64_t value) {
    switch (happening) {
        case Happening::starts:
            store_ = value;
            kept_version_ = version();
            break;
        case Happening::keeps:
            kept_version_ = version();
            break;
        case Happening::prompts:
            at_prompt_ = true;
            line_failed_ = value != 0;
            break;
        case Happening::handles:
            at_prompt_ = false;
            break;
        default:
            break;
    }
}

bool ProgramState::has_unsaved_program() const {
    if (store_ == 0 || version() == kept_version_) return false;
    return read_field<std::uint32_t>(store_ + offsetof(ProgramStore, count)) != 0;
}

std::uint32_t ProgramState::version() const {
    return read_field<std::uint32_t>(store_ + offsetof(ProgramStore, changes));
}

std::string ProgramState::program_text() const {
    const auto count = read_field<std::uint32_t>(store_ + offsetof(ProgramStore, count));
    const auto end = address_of(read_field<std::uint8_t*>(store_ + offsetof(ProgramStore, write)));
    if (store_ == 0 || count == 0 || count > max_program_lines) return {};
    std::vector<LineEntry> lines(count);
    if (!copy_memory(lines.data(), store_ + offsetof(ProgramStore, lines), count * sizeof(LineEntry)))
        return {};
    std::uint64_t begin = end;
    for (const LineEntry& line : lines)
        begin = std::min(begin, address_of(line.record));
    if (end - begin > largest_text) return {};
    std::string records(end - begin, '\0');
    if (!copy_memory(records.data(), begin, records.size())) return {};

    std::string text;
    for (const LineEntry& line : lines) {
        const std::uint64_t at = address_of(line.record) - begin;
        std::uint32_t length = 0;
        if (at > records.size() || records.size() - at < line_record_head) return {};
        std::memcpy(&length, &records[at + sizeof line.number], sizeof length);
        if (length > max_line_text || records.size() - at - line_record_head < length) return {};
        text += std::to_string(line.number) + ' ';
        text.append(records, at + line_record_head, length);
        text += "\r\n";
    }
    return text;
}

}  // namespace korvane::host

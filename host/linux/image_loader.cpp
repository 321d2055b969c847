#include "image_loader.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

#include "platform/uefi.h"

namespace korvane::host {

namespace {

// Places and values are those of the PE/COFF specification, revision 11.
constexpr std::uint16_t machine_x86_64 = 0x8664;
constexpr std::uint16_t magic_pe32_plus = 0x20B;
constexpr std::uint16_t subsystem_efi_application = 10;
constexpr std::size_t file_header_size = 24;  // signature included
constexpr std::size_t optional_header_least_size = 112;
constexpr std::size_t section_header_size = 40;
constexpr std::size_t base_relocation_directory = 5;
constexpr std::uint32_t section_executable = 0x20000000;
constexpr std::uint32_t section_writable = 0x80000000;
constexpr std::uint16_t relocation_none = 0;
constexpr std::uint16_t relocation_dir64 = 10;
constexpr std::uint32_t largest_image = 16 * 1024 * 1024;

// Reads little-endian numbers; a read past the end gives zero and is remembered.
class Reader {
  public:
    explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    template <typename Number>
    Number get(std::size_t offset) {
        Number number = 0;
        if (offset > bytes_.size() || bytes_.size() - offset < sizeof number)
            failed_ = true;
        else
            std::memcpy(&number, bytes_.data() + offset, sizeof number);
        return number;
    }
    bool failed() const { return failed_; }

  private:
    std::span<const std::uint8_t> bytes_;
    bool failed_ = false;
};

struct Section {
    std::uint32_t virtual_size;
    std::uint32_t address;
    std::uint32_t file_size;
    std::uint32_t file_offset;
    std::uint32_t flags;
};

struct Headers {
    std::uint32_t entry_point;
    std::uint64_t preferred_base;
    std::uint32_t image_size;
    std::uint32_t headers_size;
    std::uint32_t relocations;  // offset in the image
    std::uint32_t relocations_size;
    std::vector<Section> sections;
};

std::optional<Headers> read_headers(std::span<const std::uint8_t> file, std::string& problem) {
    Reader reader(file);
    const auto fail = [&](const char* what) {
        problem = what;
        return std::nullopt;
    };
    if (reader.get<std::uint16_t>(0) != 0x5A4D) return fail("no MZ header");
    const auto pe = reader.get<std::uint32_t>(0x3C);
    if (reader.get<std::uint32_t>(pe) != 0x00004550) return fail("no PE signature");
    if (reader.get<std::uint16_t>(pe + 4) != machine_x86_64) return fail("not for x86-64");
    const auto section_count = reader.get<std::uint16_t>(pe + 6);
    const auto optional_size = reader.get<std::uint16_t>(pe + 20);
    const std::size_t optional = pe + file_header_size;
    if (optional_size < optional_header_least_size || reader.get<std::uint16_t>(optional) != magic_pe32_plus)
        return fail("not a PE32+ image");
    if (reader.get<std::uint16_t>(optional + 68) != subsystem_efi_application)
        return fail("not a UEFI application");

    Headers headers{};
    headers.entry_point = reader.get<std::uint32_t>(optional + 16);
    headers.preferred_base = reader.get<std::uint64_t>(optional + 24);
    headers.image_size = reader.get<std::uint32_t>(optional + 56);
    headers.headers_size = reader.get<std::uint32_t>(optional + 60);
    const auto directories = reader.get<std::uint32_t>(optional + 108);
    if (directories > base_relocation_directory) {
        const std::size_t entry = optional + 112 + base_relocation_directory * 8;
        headers.relocations = reader.get<std::uint32_t>(entry);
        headers.relocations_size = reader.get<std::uint32_t>(entry + 4);
    }
    for (std::size_t i = 0; i < section_count; ++i) {
        const std::size_t at = optional + optional_size + i * section_header_size;
        headers.sections.push_back({reader.get<std::uint32_t>(at + 8), reader.get<std::uint32_t>(at + 12),
                                    reader.get<std::uint32_t>(at + 16), reader.get<std::uint32_t>(at + 20),
                                    reader.get<std::uint32_t>(at + 36)});
    }
    if (reader.failed()) return fail("headers are cut off");
    if (headers.image_size == 0 || headers.image_size > largest_image) return fail("unreasonable image size");
    if (headers.headers_size > file.size() || headers.headers_size > headers.image_size)
        return fail("unreasonable header size");
    if (headers.entry_point >= headers.image_size) return fail("entry point outside the image");
    return headers;
}

bool copy_sections(std::span<const std::uint8_t> file, const Headers& headers,
                   std::span<std::uint8_t> memory) {
    std::memcpy(memory.data(), file.data(), headers.headers_size);
    for (const Section& section : headers.sections) {
        const std::uint32_t size = std::min(section.virtual_size, section.file_size);
        if (section.virtual_size > headers.image_size ||
            section.address > headers.image_size - section.virtual_size ||
            section.address % uefi::page_size != 0 || section.file_offset > file.size() ||
            size > file.size() - section.file_offset)
            return false;
        std::memcpy(memory.data() + section.address, file.data() + section.file_offset, size);
    }
    return true;
}

bool relocate(const Headers& headers, std::span<std::uint8_t> memory, std::uint64_t base) {
    const std::uint64_t delta = base - headers.preferred_base;
    const auto image = memory.first(headers.image_size);
    if (headers.relocations > image.size() || headers.relocations_size > image.size() - headers.relocations)
        return false;
    const auto table = image.subspan(headers.relocations, headers.relocations_size);
    Reader reader(table);
    std::size_t block = 0;
    while (table.size() - block >= 8) {
        const auto page = reader.get<std::uint32_t>(block);
        const auto size = reader.get<std::uint32_t>(block + 4);
        if (size < 8 || size > table.size() - block || size % 2 != 0) return false;
        for (std::size_t at = block + 8; at < block + size; at += 2) {
            const auto entry = reader.get<std::uint16_t>(at);
            const std::uint64_t place = std::uint64_t{page} + (entry & 0xFFF);
            const int type = entry >> 12;
            if (type == relocation_none) continue;
            if (type != relocation_dir64 || place > image.size() - 8) return false;
            std::uint64_t value = 0;
            std::memcpy(&value, image.data() + place, sizeof value);
            value += delta;
            std::memcpy(image.data() + place, &value, sizeof value);
        }
        block += size;
    }
    return true;
}

void protect_sections(const Headers& headers, Mapping& memory) {
    const auto whole_pages = [](std::uint64_t bytes) {
        return (bytes + uefi::page_size - 1) / uefi::page_size * uefi::page_size;
    };
    memory.protect(0, memory.size(), Access::read);
    for (const Section& section : headers.sections) {
        Access access = Access::read;
        if ((section.flags & section_writable) != 0)
            access = Access::read_write;
        else if ((section.flags & section_executable) != 0)
            access = Access::read_execute;
        memory.protect(section.address, whole_pages(section.virtual_size), access);
    }
}

}  // namespace

std::optional<LoadedImage> load_image(std::span<const std::uint8_t> file, std::uint64_t base,
                                      std::string& problem) {
    const auto headers = read_headers(file, problem);
    if (!headers) return std::nullopt;
    const std::uint64_t pages = (headers->image_size + uefi::page_size - 1) / uefi::page_size;
    LoadedImage image{Mapping(base, pages * uefi::page_size), base + headers->entry_point};
    if (!copy_sections(file, *headers, image.memory.bytes())) {
        problem = "a section lies outside the file or the image";
        return std::nullopt;
    }
    if (!relocate(*headers, image.memory.bytes(), base)) {
        problem = "the relocations are damaged";
        return std::nullopt;
    }
    protect_sections(*headers, image.memory);
    return image;
}

std::optional<std::string> read_file(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

}  // namespace korvane::host

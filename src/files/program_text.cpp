#include "files/program_text.h"

#include "files/file_handle.h"
#include "files/named_files.h"
#include "numbers/format.h"
#include "platform/characters.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/late_lines.h"
#include "program/messages.h"
#include "program/program_store.h"

namespace korvane {

namespace {

constexpr std::uint64_t block_size = 512;

// Stores one line of the file. False after an error; the file is closed by then.
bool enter_line(std::string_view line, FileHandle& file, LateLines& lines) {
    NumberedLine numbered{};
    if (const char* fault = split_program_line(line, numbered)) {
        file.close();
        lines.settle();
        raise(fault);
        return false;
    }
    lines.store(numbered.number, numbered.text);
    return !error_pending();
}

bool write_text(const FileHandle& file, std::string_view text) {
    return file.write_exactly(text.data(), text.size());
}

bool write_line(const FileHandle& file, std::uint32_t number, std::string_view text) {
    return write_text(file, format_unsigned(number).view()) && write_text(file, " ") &&
           write_text(file, text) && write_text(file, "\r\n");
}

}  // namespace

bool LineAssembler::add(char byte) {
    if (complete_) {
        complete_ = false;
        length_ = 0;
    }
    if (is_line_break(static_cast<std::uint8_t>(byte))) {
        // The LF of a CR LF ends an empty line, and those are ignored.
        complete_ = length_ != 0;
    } else if (length_ < max_file_line) {
        text_[length_++] = byte;
    }
    return complete_;
}

bool LineAssembler::finish() {
    if (complete_) return false;
    complete_ = length_ != 0;
    return complete_;
}

const char* split_program_line(std::string_view line, NumberedLine& numbered) {
    std::size_t at = 0;
    while (at < line.size() && line[at] == ' ')
        ++at;
    if (at == line.size() || !is_digit(line[at])) return message::direct_statement_in_file;

    std::uint64_t number = 0;
    for (; at < line.size() && is_digit(line[at]); ++at) {
        number = number * 10 + static_cast<std::uint64_t>(line[at] - '0');
        if (number > max_line_number) return message::line_number_too_large;
    }
    if (at < line.size() && line[at] == ' ') ++at;
    numbered = {static_cast<std::uint32_t>(number), line.substr(at)};
    return nullptr;
}

FileHandle open_program(std::string_view name) {
    FileHandle file = OpenFileByName(name, OpenMode::read);
    if (IsDirectory(file.get())) file.close();
    return file;
}

void read_program_text(FileHandle file) {
    LineAssembler assembler;
    LateLines lines;
    char block[block_size];
    for (;;) {
        std::uint64_t size = block_size;
        if (!file.read(block, size)) {
            file.close();
            lines.settle();
            raise(message::disk_i_o_error);
            return;
        }
        if (size == 0) break;
        for (std::uint64_t i = 0; i < size; ++i)
            if (assembler.add(block[i]) && !enter_line(assembler.line(), file, lines)) return;
    }
    if (assembler.finish()) enter_line(assembler.line(), file, lines);
}

bool write_program_text(const FileHandle& file) {
    // What would still fit behind a piece that did not is no part of a program.
    for (std::uint32_t i = 0; i < program.count; ++i)
        if (!write_line(file, program.lines[i].number, line_text(i))) return false;
    return true;
}

}  // namespace korvane

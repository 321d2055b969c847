#include "explorer/storage/file_reports.h"

#include <algorithm>
#include <span>

#include "explorer/hex_line.h"
#include "explorer/report.h"
#include "explorer/storage/volume_reports.h"
#include "explorer/storage/volumes.h"
#include "explorer/text_decoder.h"
#include "files/file_handle.h"
#include "platform/firmware.h"

namespace korvane {
namespace {

constexpr std::uint64_t chunk_bytes = 4096;  // a multiple of the bytes of a dump line
constexpr std::size_t tab_width = 8;
constexpr unsigned offset_digits = 8;  // leaves a dump line within 80 columns
constexpr unsigned large_offset_digits = 16;

// The rows of a text as it fills the text area's width.
class TextRows {
  public:
    explicit TextRows(PagedReport& listing)
        : listing_(listing), width_(std::min<std::size_t>(listing.columns(), LineText::capacity)) {}

    // False when the user ended the listing.
    bool put(std::uint8_t character) {
        if (character == TextDecoder::line_end) return end_row();
        if (character == TextDecoder::tab) {
            do {
                if (!put_shown(' ')) return false;
            } while (row_.length() % tab_width != 0);
            return true;
        }
        return put_shown(static_cast<char>(character));
    }

    // Shows a last line that has no end.
    void finish() {
        if (row_.length() != 0) end_row();
    }

  private:
    bool put_shown(char character) {
        // A full row is shown only when more follows, so that a line that just fits takes one row.
        if (row_.length() == width_ && !end_row()) return false;
        row_.put(character);
        return true;
    }

    bool end_row() {
        const bool goes_on = listing_.row(row_.view());
        row_ = LineText();
        return goes_on;
    }

    PagedReport& listing_;
    std::size_t width_;
    LineText row_;
};

// Reads a file in pieces of equal size, but for the last.
class FileChunks {
  public:
    explicit FileChunks(const FileHandle& file) : file_(file), buffer_(chunk_bytes) {
        if (!buffer_) failure_ = "Out of memory.";
    }

    // Reads the next piece; false at the end of the file and after a failure.
    bool next() {
        if (at_end_ || !failure_.empty()) return false;
        offset_ += filled_;
        filled_ = 0;
        while (filled_ < buffer_.size()) {
            std::uint64_t size = buffer_.size() - filled_;
            if (!file_.read(buffer_.data() + filled_, size)) failure_ = "File read error.";
            at_end_ = size == 0;
            if (at_end_) break;
            filled_ += size;
        }
        return filled_ != 0;
    }

    std::span<const std::uint8_t> bytes() const { return {buffer_.data(), filled_}; }
    std::uint64_t offset() const { return offset_; }       // of the piece in the file
    std::string_view failure() const { return failure_; }  // the message to end with, or nothing

  private:
    const FileHandle& file_;
    PoolBuffer buffer_;
    std::uint64_t offset_ = 0;
    std::uint64_t filled_ = 0;
    bool at_end_ = false;
    std::string_view failure_;
};

bool show_text(std::span<const std::uint8_t> bytes, TextDecoder& decoder, TextRows& rows) {
    for (const std::uint8_t byte : bytes) {
        const auto character = decoder.take(byte);
        if (character && !rows.put(*character)) return false;
    }
    return true;
}

void report_text(const FileHandle& file) {
    PagedReport listing;
    TextDecoder decoder;
    TextRows rows(listing);
    FileChunks chunks(file);
    while (chunks.next()) {
        auto bytes = chunks.bytes();
        if (chunks.offset() == 0) bytes = bytes.subspan(decoder.begin(bytes));
        if (!show_text(bytes, decoder, rows)) return;
    }
    rows.finish();
    if (!chunks.failure().empty()) listing.line(chunks.failure());
}

bool show_hex(std::span<const std::uint8_t> bytes, std::uint64_t offset, PagedReport& listing) {
    for (std::uint64_t i = 0; i < bytes.size(); i += hex_line_bytes) {
        const bool is_large = (offset + i) >> (4 * offset_digits) != 0;
        HexLine line{.address = offset + i, .address_digits = is_large ? large_offset_digits : offset_digits};
        line.take(bytes.subspan(i));
        if (!listing.line(format_hex_line(line))) return false;
    }
    return true;
}

void report_hex(const FileHandle& file) {
    PagedReport listing;
    FileChunks chunks(file);
    while (chunks.next())
        if (!show_hex(chunks.bytes(), chunks.offset(), listing)) return;
    if (!chunks.failure().empty()) listing.line(chunks.failure());
}

// Opens the file that `v file` names. Empty after a message, or with the outcome of bad arguments.
FileHandle open_argument(WordReader& arguments, CommandEnd& outcome) {
    std::uint64_t number = 0;
    outcome = CommandEnd::bad_arguments;
    if (!read_numbers(arguments, {&number})) return {};
    outcome = CommandEnd::done;
    const std::string_view path = path_argument(arguments.rest());
    if (path.empty()) {
        print_line("File path required.");
        return {};
    }
    const FileHandle root = open_volume(number);
    if (!root) {
        print_line(volume_not_found);
        return {};
    }
    FileHandle file = open_on_volume(root.get(), path);
    if (!file || IsDirectory(file.get())) {
        print_line("File not found or inaccessible.");
        return {};
    }
    return file;
}

}  // namespace

CommandEnd do_cat(WordReader& arguments) {
    CommandEnd outcome = CommandEnd::done;
    if (const FileHandle file = open_argument(arguments, outcome)) report_text(file);
    return outcome;
}

CommandEnd do_hex_file(WordReader& arguments) {
    CommandEnd outcome = CommandEnd::done;
    if (const FileHandle file = open_argument(arguments, outcome)) report_hex(file);
    return outcome;
}

}  // namespace korvane

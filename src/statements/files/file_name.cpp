#include "statements/files/file_name.h"

#include "files/firmware_name.h"
#include "platform/memory.h"
#include "program/errors.h"
#include "program/messages.h"
#include "values/evaluator.h"

namespace korvane {

bool GetPathArgument(Cursor& cursor, char (&buffer)[path_capacity]) {
    const std::uint32_t length = evaluate_text(cursor, buffer, path_capacity);
    if (error_pending()) return false;
    if (length == 0) raise(message::path_not_found);
    return length != 0;
}

FileName read_file_name(Cursor& cursor) {
    FileName name;
    name.length = evaluate_text(cursor, name.text, file_name_capacity);
    // A zero byte ends a name for the firmware, so it does here.
    name.length = static_cast<std::uint32_t>(up_to_zero(name.view()).size());
    return name;
}

bool FileName::add_default_extension(std::string_view extension) {
    const std::size_t separator = view().find_last_of("/\\:");
    const std::size_t start = separator == std::string_view::npos ? 0 : separator + 1;
    if (view().find('.', start) != std::string_view::npos) return true;
    if (length + extension.size() >= file_name_capacity) {
        raise(message::bad_file_name);
        return false;
    }
    copy_bytes(text + length, extension.data(), extension.size());
    length += static_cast<std::uint32_t>(extension.size());
    text[length] = 0;
    return true;
}

}  // namespace korvane

#include "statements/files/directory_statements.h"

#include <utility>

#include "files/file_handle.h"
#include "files/firmware_name.h"
#include "files/named_files.h"
#include "files/volume.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "statements/files/file_name.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

constexpr std::uint64_t read_write = uefi::file_mode_read | uefi::file_mode_write;

bool remove_directory(const FirmwareName& name) {
    FileHandle directory = open_named(name, read_write);
    return IsDirectory(directory.get()) && directory.remove();
}

bool make_directory(const FirmwareName& name) {
    if (open_named(name, uefi::file_mode_read)) return false;
    return bool(open_named(name, uefi::file_mode_create | read_write, uefi::file_directory));
}

}  // namespace

void do_kill(Cursor& cursor) {
    ++cursor;
    const FileName name = read_file_name(cursor);
    if (error_pending()) return;
    if (!DeleteFileByName(name.view())) raise(message::file_not_found);
}

void do_name(Cursor& cursor) {
    ++cursor;
    char old_name[path_capacity];
    char new_name[path_capacity];
    const std::uint32_t old_length = evaluate_text(cursor, old_name, path_capacity);
    if (error_pending() || !expect(cursor, KW_AS, message::expected_as)) return;
    const std::uint32_t new_length = evaluate_text(cursor, new_name, path_capacity);
    if (error_pending()) return;
    if (!RenameFileByName({old_name, old_length}, {new_name, new_length})) raise(message::file_not_found);
}

void do_mkdir(Cursor& cursor) {
    ++cursor;
    char path[path_capacity];
    if (!GetPathArgument(cursor, path)) return;
    if (!make_directory(FirmwareName(path))) raise(message::path_file_access_error);
}

void do_rmdir(Cursor& cursor) {
    ++cursor;
    char path[path_capacity];
    if (!GetPathArgument(cursor, path)) return;
    if (!remove_directory(FirmwareName(path))) raise(message::path_file_access_error);
}

void do_chdir(Cursor& cursor) {
    ++cursor;
    char path[path_capacity];
    if (!GetPathArgument(cursor, path)) return;
    const FirmwareName name(path);
    FileHandle directory = open_named(name, uefi::file_mode_read);
    if (!IsDirectory(directory.get())) {
        directory.close();
        raise(message::path_not_found);
        return;
    }
    set_current_directory(std::move(directory), name);
}

}  // namespace korvane

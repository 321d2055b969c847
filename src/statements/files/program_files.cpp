#include "statements/files/program_files.h"

#include <utility>

#include "files/file_handle.h"
#include "files/file_table.h"
#include "files/named_files.h"
#include "files/program_text.h"
#include "platform/listener.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/messages.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "run/remembered_lines.h"
#include "statements/files/file_name.h"
#include "values/clear.h"
#include "values/data_items.h"

namespace korvane {

void do_load(Cursor& cursor) {
    ++cursor;
    FileName name = read_file_name(cursor);
    if (error_pending()) return;
    // An empty name finds no file, not even one that is all extension.
    const bool named = name.length != 0;
    if (named && !name.add_default_extension(".bas")) return;
    FileHandle file;
    if (named) file = open_program(name.view());
    if (!file) {
        raise(message::file_not_found);
        return;
    }
    const RememberedLines lines;
    close_all_files();
    clear_data();
    clear_program();
    reset_data_position();
    read_program_text(std::move(file));
    if (error_pending()) {
        lines.follow();
        return;
    }
    tell(Happening::keeps);
    // The program that was running is gone.
    execution.can_continue = false;
    execution.stop = true;
}

void do_save(Cursor& cursor) {
    ++cursor;
    const FileName name = read_file_name(cursor);
    if (error_pending()) return;
    if (accept(cursor, ',')) accept_word(cursor, "A");
    const FileHandle file = OpenFileByName(name.view(), OpenMode::create);
    if (!file) {
        raise(message::bad_file_name);
        return;
    }
    if (write_program_text(file)) tell(Happening::keeps);
}

void do_merge(Cursor& cursor) {
    if (execution.program_running) {
        raise(message::illegal_direct);
        return;
    }
    ++cursor;
    const FileName name = read_file_name(cursor);
    if (error_pending()) return;
    FileHandle file = open_program(name.view());
    if (!file) {
        raise(message::file_not_found);
        return;
    }
    const RememberedLines lines;
    read_program_text(std::move(file));
    if (error_pending()) lines.follow();
    end_run_of_changed_program();
}

}  // namespace korvane

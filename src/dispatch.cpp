#include "run/dispatch.h"

#include "explorer/explorer.h"
#include "help/help.h"
#include "image/create_efi.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "prompt/delete_lines.h"
#include "prompt/edit_line.h"
#include "run/conditions.h"
#include "run/continue.h"
#include "run/event_timers.h"
#include "run/jumps.h"
#include "run/loops.h"
#include "run/run.h"
#include "run/trace.h"
#include "run/traps.h"
#include "statements/data/array_statements.h"
#include "statements/data/assignment.h"
#include "statements/data/data_statements.h"
#include "statements/data/define_function.h"
#include "statements/data/deftype.h"
#include "statements/data/memory_access.h"
#include "statements/data/variable_listing.h"
#include "statements/files/chain.h"
#include "statements/files/directory_statements.h"
#include "statements/files/file_listing.h"
#include "statements/files/memory_image.h"
#include "statements/files/open_statement.h"
#include "statements/files/program_files.h"
#include "statements/files/random_files.h"
#include "statements/files/sequential_input.h"
#include "statements/graphics/bitmaps.h"
#include "statements/graphics/circle.h"
#include "statements/graphics/coordinates.h"
#include "statements/graphics/draw_macro.h"
#include "statements/graphics/image_array.h"
#include "statements/graphics/paint.h"
#include "statements/graphics/plot_statements.h"
#include "statements/graphics/view.h"
#include "statements/text/input_statement.h"
#include "statements/text/print.h"
#include "statements/text/screen_statements.h"
#include "statements/text/write.h"

namespace korvane {
namespace {

void do_nothing(Cursor&) {}

void do_remark(Cursor& cursor) {
    ++cursor;
}

void do_syntax_error(Cursor&) {
    raise(message::syntax_error);
}

void do_identifier(Cursor& cursor) {
    if (cursor[1].kind == '(' && is_word(cursor, "TIMER"))
        do_timer(cursor);
    else
        do_assignment(cursor);
}

// LINE INPUT, or LINE with points.
void do_line_or_line_input(Cursor& cursor) {
    if (cursor[1].kind == KW_INPUT)
        do_line_input(cursor);
    else
        do_line(cursor);
}

// GET and PUT move records of a file, or with a point rectangles of the screen.
bool is_graphic(const Token* at) {
    return at[1].kind == '(' || at[1].kind == KW_STEP;
}

void do_get(Cursor& cursor) {
    if (is_graphic(cursor))
        do_get_graphics(cursor);
    else
        do_get_record(cursor);
}

void do_put(Cursor& cursor) {
    if (is_graphic(cursor))
        do_put_graphics(cursor);
    else
        do_put_record(cursor);
}

struct Row {
    std::uint8_t kind;
    StatementHandler handler;
};

constexpr Row rows[] = {
    {END_OF_LINE, do_nothing},
    {':', do_nothing},
    {IDENTIFIER, do_identifier},
    {KW_REM, do_remark},
    // the program's course
    {KW_END, do_end},
    {KW_STOP, do_stop},
    {KW_CLEAR, do_clear},
    {KW_NEW, do_new},
    {KW_FOR, do_for},
    {KW_NEXT, do_next},
    {KW_WHILE, do_while},
    {KW_WEND, do_wend},
    {KW_IF, do_if},
    {KW_ELSE, do_else},
    {KW_GOTO, do_goto},
    {KW_GOSUB, do_gosub},
    {KW_RETURN, do_return},
    {KW_ON, do_on},
    {KW_ERROR, do_error},
    {KW_RESUME, do_resume},
    // debugging and editing
    {KW_TRON, do_tron},
    {KW_TROFF, do_troff},
    {KW_TRACE, do_trace},
    {KW_CONT, do_cont},
    {KW_DELETE, do_delete},
    {KW_EDIT, do_edit},
    {KW_HELP, do_help},
    // values
    {KW_LET, do_let},
    {KW_SWAP, do_swap},
    {KW_RANDOMIZE, do_randomize},
    {KW_DATA, do_data},
    {KW_READ, do_read},
    {KW_RESTORE, do_restore},
    {KW_DEF, do_def},
    {KW_DIM, do_dim},
    {KW_ERASE, do_erase},
    {KW_OPTION, do_option},
    {KW_DEFINT, do_deftype},
    {KW_DEFLNG, do_deftype},
    {KW_DEFI64, do_deftype},
    {KW_DEFSNG, do_deftype},
    {KW_DEFDBL, do_deftype},
    {KW_DEFSTR, do_deftype},
    {KW_POKE, do_poke},
    {KW_POKE16, do_poke16},
    {KW_POKE32, do_poke32},
    {KW_POKE64, do_poke64},
    {KW_VARINFO, do_varinfo},
    {KW_ARRAYINFO, do_arrayinfo},
    // screen and keyboard
    {KW_PRINT, do_print},
    {KW_WRITE, do_write},
    {KW_INPUT, do_input},
    {KW_CLS, do_cls},
    {KW_COLOR, do_color},
    {KW_LOCATE, do_locate},
    {KW_SCREEN, do_screen},
    {KW_TXTWINDOW, do_txtwindow},
    // graphics
    {KW_PSET, do_pset},
    {KW_PRESET, do_preset},
    {KW_LINE, do_line_or_line_input},
    {KW_CIRCLE, do_circle},
    {KW_PAINT, do_paint},
    {KW_WINDOW, do_window},
    {KW_VIEW, do_view},
    {KW_DRAW, do_draw},
    {KW_LOADBMP, do_loadbmp},
    {KW_BITBLT, do_bitblt},
    {KW_GET, do_get},
    {KW_PUT, do_put},
    // files
    {KW_OPEN, do_open},
    {KW_CLOSE, do_close},
    {KW_FIELD, do_field},
    {KW_LSET, do_lset},
    {KW_RSET, do_rset},
    {KW_FILES, do_files},
    {KW_DIR, do_files},
    {KW_KILL, do_kill},
    {KW_NAME, do_name},
    {KW_CHDIR, do_chdir},
    {KW_MKDIR, do_mkdir},
    {KW_RMDIR, do_rmdir},
    {KW_LOAD, do_load},
    {KW_SAVE, do_save},
    {KW_MERGE, do_merge},
    {KW_CHAIN, do_chain},
    {KW_COMMON, do_common},
    {KW_BLOAD, do_bload},
    {KW_BSAVE, do_bsave},
    // the machine
    {KW_KORVANE, do_korvane},
    {KW_CREATEEFI, do_createefi},
};

}  // namespace

// What has no row (RUN, LIST, THEN, operators, numbers and so on) cannot begin a statement.
constexpr StatementHandlers statement_handlers = [] {
    StatementHandlers table{};
    std::size_t count = 0;
    table.handlers[count++] = do_syntax_error;
    for (const Row& row : rows) {
        table.numbers[row.kind] = static_cast<std::uint8_t>(count);
        table.handlers[count++] = row.handler;
    }
    return table;
}();

}  // namespace korvane

#include "help/help_table.h"

#include <cstdint>

#include "help/text_packing.h"

namespace korvane {
namespace {

struct Row {
    const char* category;
    const char* name;
    const char* text;
};

constexpr Row rows[] = {
    {"PROGRAM", "AUTO", "AUTO [start][,increment] - automatic line numbers"},
    {"PROGRAM", "CHAIN",
     "CHAIN [MERGE] file$[,[line][,[ALL][,DELETE range]]] - load/overlay another program; COMMON controls "
     "transferred variables"},
    {"PROGRAM", "COMMON", "COMMON var[,var...] - variables/arrays passed by CHAIN without ALL"},
    {"PROGRAM", "CONT", "CONT - continue after STOP, a breakpoint or Escape"},
    {"PROGRAM", "DELETE", "DELETE range - remove stored program lines"},
    {"PROGRAM", "EDIT", "EDIT line | EDIT ERL - edit a stored line or the last error line"},
    {"PROGRAM", "FIND",
     "FIND string$[,range] - case-insensitive search of program source; ranges: n, n-m, -m, n-"},
    {"PROGRAM", "END", "END - end the program and close its files"},
    {"PROGRAM", "HELP", "HELP [name] - categorized built-in language reference"},
    {"PROGRAM", "LIST",
     "LIST [range|ERL] [NOWAIT] - list the program; ranges: n, n-m, -m, n-; NOWAIT does not pause"},
    {"PROGRAM", "LOAD",
     "LOAD file$ - load ASCII BASIC program; omitted extension defaults to .BAS; closing quote may be "
     "omitted"},
    {"PROGRAM", "CREATEEFI",
     "CREATEEFI file$ - create standalone UEFI application from the current program; .EFI is added if "
     "omitted"},
    {"PROGRAM", "MERGE", "MERGE file$ - merge ASCII program lines"},
    {"PROGRAM", "NEW", "NEW - delete the program and all variables"},
    {"PROGRAM", "RENUM", "RENUM [new][,old][,increment] - renumber stored lines and the references to them"},
    {"PROGRAM", "RUN", "RUN - clear variables and run the program from its first line"},
    {"PROGRAM", "SAVE", "SAVE file$[,A] - save ASCII BASIC program"},
    {"PROGRAM", "STOP", "STOP - stop the program; CONT continues it"},
    {"PROGRAM", "REM", "REM text - remark to the end of the line; an apostrophe does the same"},
    {"FLOW", "ERROR", "ERROR n - raise error number n, 1 to 255"},
    {"FLOW", "FOR", "FOR var=start TO limit [STEP step] - begin a counted loop"},
    {"FLOW", "GOSUB", "GOSUB line - call the subroutine at a line; RETURN comes back"},
    {"FLOW", "GOTO", "GOTO line - jump to a line"},
    {"FLOW", "IF", "IF condition THEN statements|line [ELSE statements|line] - choose between two paths"},
    {"FLOW", "NEXT", "NEXT [var] - end of a FOR loop; one variable at most"},
    {"FLOW", "ON", "ON expr GOTO/GOSUB ...; ON ERROR/BREAK GOTO line"},
    {"FLOW", "RESUME", "RESUME [NEXT|0|line] - leave an ON ERROR or ON BREAK handler"},
    {"FLOW", "RETURN", "RETURN - return from GOSUB or from a timer handler"},
    {"FLOW", "TROFF", "TROFF - switch line tracing off"},
    {"FLOW", "TRON", "TRON [n[-m]] - show line numbers while the program runs"},
    {"FLOW", "TRACE", "TRACE [OFF|var[,var...]] - show variables at every program line"},
    {"FLOW", "WHILE", "WHILE condition - begin a loop that runs while the condition is true"},
    {"FLOW", "WEND", "WEND - end of a WHILE loop"},
    {"FLOW", "ERL", "ERL - line number of the last error"},
    {"FLOW", "ERR", "ERR - number of the last error"},
    {"FLOW", "VARINFO", "VARINFO [SIMPLE|FULL] - list variables; FULL adds types, values and addresses"},
    {"FLOW", "ARRAYINFO", "ARRAYINFO [SIMPLE|FULL] - list arrays; FULL adds types, sizes and addresses"},
    {"DATA", "CLEAR", "CLEAR - clear all variables, arrays, strings and user functions"},
    {"DATA", "DATA", "DATA item[,item...] - items for READ"},
    {"DATA", "DEF", "DEF FNname[(p[,p...])]=expression - define a function of your own"},
    {"DATA", "DEFDBL", "DEFDBL letter[-letter][,...] - names beginning so are DOUBLE"},
    {"DATA", "DEFI64", "DEFI64 letter[-letter][,...] - names beginning so are INT64"},
    {"DATA", "DEFINT", "DEFINT letter[-letter][,...] - names beginning so are INTEGER"},
    {"DATA", "DEFLNG", "DEFLNG letter[-letter][,...] - names beginning so are LONG"},
    {"DATA", "DEFSNG", "DEFSNG letter[-letter][,...] - names beginning so are SINGLE"},
    {"DATA", "DEFSTR", "DEFSTR letter[-letter][,...] - names beginning so are STRING"},
    {"DATA", "DIM", "DIM array(bound[,bound...])[,...] - create arrays of 1 to 4 dimensions"},
    {"DATA", "ERASE", "ERASE array[,array...] - remove arrays"},
    {"DATA", "OPTION", "OPTION BASE 0|1 - lowest array subscript"},
    {"DATA", "READ", "READ var[,var...] - read DATA items into variables"},
    {"DATA", "RESTORE", "RESTORE [line] - start reading DATA again, from a line if one is given"},
    {"DATA", "SWAP", "SWAP a,b - exchange two variables of the same type"},
    {"DATA", "CDBL", "CDBL(x) - DOUBLE"},
    {"DATA", "CINT", "CINT(x) - convert to integer (round half away from zero)"},
    {"DATA", "CSNG", "CSNG(x) - SINGLE"},
    {"DATA", "CVD", "CVD(s$) - MBF double from 8 bytes"},
    {"DATA", "CVI", "CVI(s$) - integer from 2 bytes"},
    {"DATA", "CVS", "CVS(s$) - MBF single from 4 bytes"},
    {"DATA", "MKD$", "MKD$(x) - 8-byte MBF double"},
    {"DATA", "MKI$", "MKI$(n) - 2-byte integer"},
    {"DATA", "MKS$", "MKS$(x) - 4-byte MBF single"},
    {"DATA", "VARPTR", "VARPTR(variable) - 64-bit address"},
    {"FUNCTIONS", "ABS", "ABS(x) - absolute value"},
    {"FUNCTIONS", "ASC", "ASC(s$) - character code of the first byte"},
    {"FUNCTIONS", "ATN", "ATN(x) - arctangent"},
    {"FUNCTIONS", "CHR$", "CHR$(n) - one-character string"},
    {"FUNCTIONS", "COS", "COS(x) - cosine"},
    {"FUNCTIONS", "EXP", "EXP(x) - exponential"},
    {"FUNCTIONS", "FIX", "FIX(x) - truncate toward zero"},
    {"FUNCTIONS", "HEX$", "HEX$(n) - hexadecimal string"},
    {"FUNCTIONS", "INSTR", "INSTR([start,]string$,search$) - position of search$ in string$"},
    {"FUNCTIONS", "INT", "INT(x) - floor"},
    {"FUNCTIONS", "LCASE$", "LCASE$(s$) - ASCII A-Z to lowercase"},
    {"FUNCTIONS", "UCASE$", "UCASE$(s$) - ASCII a-z to uppercase"},
    {"FUNCTIONS", "LEFT$", "LEFT$(s$,n) - first n bytes"},
    {"FUNCTIONS", "LEN", "LEN(s$) - length"},
    {"FUNCTIONS", "LOG", "LOG(x) - natural logarithm"},
    {"FUNCTIONS", "MID$", "MID$(s$,start[,len]) - substring; MID$(s$,start[,len])=value$ replaces in place"},
    {"FUNCTIONS", "OCT$", "OCT$(n) - octal string"},
    {"FUNCTIONS", "RIGHT$", "RIGHT$(s$,n) - last n bytes"},
    {"FUNCTIONS", "RND", "RND[(x)] - random number from 0 to below 1; x < 0 restarts, 0 repeats the last"},
    {"FUNCTIONS", "SGN", "SGN(x) - sign"},
    {"FUNCTIONS", "SIN", "SIN(x) - sine"},
    {"FUNCTIONS", "SPACE$", "SPACE$(n) - n spaces"},
    {"FUNCTIONS", "SQR", "SQR(x) - square root"},
    {"FUNCTIONS", "STR$", "STR$(x) - number to string"},
    {"FUNCTIONS", "STRING$", "STRING$(n,char) - n copies of a character"},
    {"FUNCTIONS", "TAN", "TAN(x) - tangent"},
    {"FUNCTIONS", "VAL", "VAL(s$) - string to number"},
    {"IO", "CLS", "CLS [@n] - clear the screen, the viewport or text window n"},
    {"IO", "COLOR", "COLOR [f][,b] | @n,f[,b] | [@n,]r,g,b[,r,g,b] - colours: 0 to 15 or 24-bit RGB values"},
    {"IO", "CSRLIN", "CSRLIN - cursor row"},
    {"IO", "INKEY$", "INKEY$ - a key without waiting, or an empty string"},
    {"IO", "INPUT", "INPUT [#n,][\"prompt\"{;|,}]var[,var...] - read values from the keyboard or a file"},
    {"IO", "INPUT$", "INPUT$(count[,[#]n]) - read characters from the keyboard or a file"},
    {"IO", "LOCATE", "LOCATE [row][,column] | LOCATE @n,row,column - move the cursor"},
    {"IO", "POS", "POS(x) - output column"},
    {"IO", "PRINT",
     "PRINT [#n,|@n,][USING format$;|WRAP [w,]|JUSTIFY [w,]]list - print to the screen, a file or text "
     "window n"},
    {"IO", "SPC", "SPC(n) - n spaces in a PRINT list"},
    {"IO", "TAB", "TAB(n) - move to column n in a PRINT list"},
    {"IO", "TXTWINDOW",
     "TXTWINDOW [[@n,]x1,y1,x2,y2] - confine text to a window; @n defines text window 0 to 7"},
    {"IO", "TXTMAXX", "TXTMAXX - text columns of the screen"},
    {"IO", "TXTMAXY", "TXTMAXY - text rows of the screen"},
    {"IO", "WRITE", "WRITE [#n,]list - print values with commas and quotes"},
    {"FILES", "APPEND", "OPEN file$ FOR APPEND AS [#]n - APPEND: write at the end of a file"},
    {"FILES", "AS", "OPEN file$ FOR mode AS [#]n - AS: file number; also NAME ... AS and FIELD ... AS"},
    {"FILES", "BLOAD", "BLOAD file$[,address] - load GW memory image"},
    {"FILES", "BSAVE", "BSAVE file$,address,length - save GW memory image"},
    {"FILES", "CHDIR", "CHDIR path$ - change directory"},
    {"FILES", "CLOSE", "CLOSE [[#]n[,[#]n...]] - close the given file numbers"},
    {"FILES", "EOF", "EOF(n) - true at the end of a file"},
    {"FILES", "FIELD", "FIELD [#]n,width AS s$[,width AS s$...] - lay string variables over a record"},
    {"FILES", "DIR", "DIR [pattern$][,S][,W][,P] - alias for FILES; S recurses, W wide listing, P pauses"},
    {"FILES", "FILES",
     "FILES [pattern$][,S][,W][,P] - wildcards supported; S recurses, W wide listing, P pauses"},
    {"FILES", "GET",
     "GET [#]n[,record] | GET (x1,y1)-(x2,y2),array - read a record, or pixels into an array"},
    {"FILES", "KILL", "KILL file$ - delete file"},
    {"FILES", "LOC", "LOC(n) - position in a file"},
    {"FILES", "LOF", "LOF(n) - length of a file in bytes"},
    {"FILES", "LSET", "LSET s$=value$ - fill a string in place, left-aligned"},
    {"FILES", "MKDIR", "MKDIR path$ - create directory"},
    {"FILES", "NAME", "NAME old$ AS new$ - rename file/directory"},
    {"FILES", "OPEN",
     "OPEN file$ [FOR mode] AS [#]n [LEN=reclen] | OPEN mode$,[#]n,file$[,reclen] - open a file"},
    {"FILES", "OUTPUT", "OPEN file$ FOR OUTPUT AS [#]n - OUTPUT: create a file and write it"},
    {"FILES", "PUT", "PUT [#]n[,record] | PUT (x,y),array[,mode] - write a record, or pixels from an array"},
    {"FILES", "RMDIR", "RMDIR path$ - remove empty directory"},
    {"FILES", "RSET", "RSET s$=value$ - fill a string in place, right-aligned"},
    {"GRAPHICS", "BITBLT", "BITBLT slot,x,y[,transparent] - draw a loaded bitmap on the screen"},
    {"GRAPHICS", "CIRCLE", "CIRCLE [STEP](x,y),r[,colour] - draw a circle"},
    {"GRAPHICS", "DRAW", "DRAW string$ - draw with B N C S A TA U D L R E F G H M commands"},
    {"GRAPHICS", "GRAMAXX", "GRAMAXX - width of the screen in pixels"},
    {"GRAPHICS", "GRAMAXY", "GRAMAXY - height of the screen in pixels"},
    {"GRAPHICS", "GRAPITCH", "GRAPITCH - pixels per framebuffer row"},
    {"GRAPHICS", "LINE",
     "LINE [[STEP](x1,y1)]-[STEP](x2,y2)[,[colour][,B|BF]] - line or box; LINE INPUT [#n,][\"prompt\";]var$ "
     "reads a line"},
    {"GRAPHICS", "LOADBMP", "LOADBMP slot,file$ - load a BMP file into slot 0 to 31"},
    {"GRAPHICS", "PAINT", "PAINT [STEP](x,y)[,paint[,border]] - fill an area"},
    {"GRAPHICS", "POINT", "POINT(x,y) - colour of a pixel, -1 outside the screen"},
    {"GRAPHICS", "PRESET", "PRESET [STEP](x,y)[,colour] - draw a point in the background colour"},
    {"GRAPHICS", "PSET", "PSET [STEP](x,y)[,colour] - draw a point"},
    {"GRAPHICS", "SCREEN",
     "SCREEN width,height - set the resolution; SCREEN(row,column[,mode]) gives the character there"},
    {"GRAPHICS", "SCRNADR", "SCRNADR - address of the framebuffer"},
    {"GRAPHICS", "VIEW",
     "VIEW [[SCREEN](x1,y1)-(x2,y2)[,[fill][,border]]] - graphics viewport; VIEW PRINT [top TO bottom] "
     "confines text"},
    {"GRAPHICS", "WINDOW", "WINDOW [[SCREEN](x1,y1)-(x2,y2)] - logical coordinates"},
    {"SYSTEM", "KORVANE",
     "KORVANE - enter the machine explorer; KORVANE LANDMARKS, MEMMAP or INFO for direct views"},
    {"SYSTEM", "KORVANEADR", "KORVANEADR(name$) - 64-bit address of a named machine landmark"},
    {"SYSTEM", "DATE$", "DATE$ - date as MM-DD-YYYY"},
    {"SYSTEM", "FREEBOT", "FREEBOT - bottom of free data memory"},
    {"SYSTEM", "FREETOP", "FREETOP - top of free data memory"},
    {"SYSTEM", "FRE", "FRE(x) - free BASIC data bytes"},
    {"SYSTEM", "HIMEM", "HIMEM - high memory address"},
    {"SYSTEM", "LOMEM", "LOMEM - low memory address"},
    {"SYSTEM", "PEEK", "PEEK(address) - byte at a 64-bit address"},
    {"SYSTEM", "POKE", "POKE address,value - write a byte to a 64-bit address"},
    {"SYSTEM", "PEEK16", "PEEK16(address) - unsigned 16-bit little-endian value"},
    {"SYSTEM", "PEEK32", "PEEK32(address) - unsigned 32-bit little-endian value"},
    {"SYSTEM", "PEEK64", "PEEK64(address) - raw 64-bit little-endian value as &&"},
    {"SYSTEM", "POKE16", "POKE16 address,value - write 16 bits, least significant byte first"},
    {"SYSTEM", "POKE32", "POKE32 address,value - write 32 bits, least significant byte first"},
    {"SYSTEM", "POKE64", "POKE64 address,value - write 64 bits, least significant byte first"},
    {"SYSTEM", "TIME$", "TIME$ - time as HH:MM:SS"},
    {"SYSTEM", "TIMER",
     "TIMER - seconds since boot; TIMER(n)=ms, TIMER(n) ON and TIMER(n) OFF set event timer n"},
    {"SYSTEM", "STARTUP.BAS",
     "STARTUP.BAS - if present, automatically LOADed and RUN at startup when no explicit autostart program "
     "was supplied"},
    {"SYNTAX", "AND", "a AND b - bitwise and of 64-bit integers"},
    {"SYNTAX", "BASE", "OPTION BASE 0|1 - BASE: lowest array subscript"},
    {"SYNTAX", "BREAK", "BREAK [LIST|CLEAR|n[,n...]|DELETE n[,n...]] - list, set or remove breakpoints"},
    {"SYNTAX", "ELSE",
     "IF condition THEN ... ELSE statements|line - ELSE: what to do when the condition is false"},
    {"SYNTAX", "EQV", "a EQV b - bitwise equivalence"},
    {"SYNTAX", "IMP", "a IMP b - bitwise implication"},
    {"SYNTAX", "LET", "[LET] var=expression - assign a value"},
    {"SYNTAX", "MOD", "a MOD b - remainder of an integer division"},
    {"SYNTAX", "NOT", "NOT a - bitwise complement"},
    {"SYNTAX", "OR", "a OR b - bitwise or"},
    {"SYNTAX", "RANDOMIZE", "RANDOMIZE [n] - seed the random numbers, from the clock without n"},
    {"SYNTAX", "STEP",
     "FOR var=start TO limit STEP step - STEP: loop increment; STEP(x,y) is relative to the last point"},
    {"SYNTAX", "ON",
     "ON TIMER(n) GOSUB line - ON: call a handler when event timer n is due; TIMER(n) ON starts it"},
    {"SYNTAX", "TIMER",
     "TIMER(n)=ms - interval of event timer n, 0 to 7; ON TIMER(n) GOSUB line sets its handler"},
    {"SYNTAX", "THEN", "IF condition THEN statements|line - THEN: what to do when the condition is true"},
    {"SYNTAX", "TO", "FOR var=start TO limit - TO: loop limit; also VIEW PRINT top TO bottom"},
    {"SYNTAX", "USING",
     "PRINT USING format$;list - USING: formatted output with # . , + - $$ ** ^ ! & \\ \\ fields"},
    {"SYNTAX", "XOR", "a XOR b - bitwise exclusive or"},
};

// The rows as the image holds them, without pointers and without the names that begin
// their texts. An entry is
// - a byte: the length of its name where its text begins with it, else 0, plus `begins_category` where it is
//   the first of its category;
// - zero-terminated: the category if it begins one, the name if it does not begin the text, the packed text.
// A final byte `end_of_entries` follows the last.
constexpr std::uint8_t begins_category = 0x80;
constexpr std::uint8_t end_of_entries = 0x7F;

// Receives the packed bytes, and counts them only while there is no place for them.
struct Packer {
    char* place;
    std::size_t size = 0;

    constexpr void put(std::uint8_t byte) {
        if (place != nullptr) place[size] = static_cast<char>(byte);
        ++size;
    }
    constexpr void put(std::string_view text) {
        for (const char character : text)
            put(static_cast<std::uint8_t>(character));
        put(std::uint8_t{0});
    }
};

constexpr std::size_t pack(char* place) {
    Packer packer{place};
    std::string_view category;
    for (const Row& row : rows) {
        const std::string_view name = row.name;
        const bool begins = category != row.category;
        const bool name_in_text = std::string_view(row.text).starts_with(name);
        packer.put(
            static_cast<std::uint8_t>((name_in_text ? name.size() : 0) | (begins ? begins_category : 0)));
        if (begins) packer.put(category = row.category);
        if (!name_in_text) packer.put(name);
        pack_text(row.text, [&packer](std::uint8_t byte) { packer.put(byte); });
        packer.put(std::uint8_t{0});
    }
    packer.put(end_of_entries);
    return packer.size;
}

constexpr auto packed_entries = [] {
    std::array<char, pack(nullptr)> bytes{};
    pack(bytes.data());
    return bytes;
}();

static_assert([] {
    for (const Row& row : rows) {
        if (std::string_view(row.text).size() > longest_help_text) return false;
    }
    return true;
}());

// The zero-terminated text at a place, which is moved behind it.
std::string_view take_text(const char*& at) {
    const std::string_view text(at);
    at += text.size() + 1;
    return text;
}

}  // namespace

HelpWalk::HelpWalk() : at_(packed_entries.data()) {}

bool HelpWalk::next() {
    if (static_cast<std::uint8_t>(*at_) == end_of_entries) return false;
    const auto head = static_cast<std::uint8_t>(*at_++);
    const std::size_t name_length = head & ~begins_category;
    if ((head & begins_category) != 0) entry_.category = take_text(at_);
    if (name_length == 0) entry_.name = take_text(at_);
    entry_.text = {text_.data(), unpack_text(at_, text_.data())};
    if (name_length != 0) entry_.name = entry_.text.substr(0, name_length);
    return true;
}

}  // namespace korvane
